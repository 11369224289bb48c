#include "ormeldb/res_att.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <strings.h>

#include "dao/qdc.h"
#include "log/log.h"
#include "ormeldb/dao.h"
#include "ormeldb/platform/opbbase.h"

ORMEL_RES_ATT *g_pstResAtt;

namespace {

constexpr char kLogFile[] = "ormel_tableattr";

// Number of columns of the probe; 0, with a line in the log, when there are none or they cannot be counted.
uint32_t columnCount(const char *func, void *stmt, const char *table) {
    uint32_t count = 0;
    if (qdc_get_column_count(stmt, &count) != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_get_column_count :%s failed", table);
        return 0;
    }
    if (count == 0)
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_get_column_count :%s failed, count = 0", table);
    return count;
}

ORMEL_RES_ATT *allocate(const char *table, uint32_t columns) {
    if (columns > INT32_MAX)
        return nullptr;
    const size_t size = sizeof(ORMEL_RES_ATT) + columns * sizeof(ORMEL_RES_ATT_FIELD);
    auto *att = static_cast<ORMEL_RES_ATT *>(std::calloc(1, size));
    if (att == nullptr)
        return nullptr;
    strncpy_s(att->acTableName, sizeof att->acTableName, table, sizeof att->acTableName - 1);
    att->iAttNum = static_cast<int32_t>(columns);
    return att;
}

// Describes column i; one that the client cannot describe has no name, type 0 and size 0. False when its offset is too
// large to be counted.
bool describe(void *stmt, ORMEL_RES_ATT &att, int32_t i) {
    QDC_COLUMN_DESC desc = {};
    if (qdc_desc_column_by_id(stmt, static_cast<uint32_t>(i), &desc) != 0)
        desc = {};
    ORMEL_RES_ATT_FIELD &field = att.astField[i];
    if (desc.pcName != nullptr)
        strncpy_s(field.attname, sizeof field.attname, desc.pcName, sizeof field.attname - 1);
    field.atttypid = desc.usType;
    field.attlen = desc.usSize;
    field.len = desc.usSize;
    field.format = desc.ucFormat;
    field.attcolid = i;
    if (i == 0)
        return true;
    const ORMEL_RES_ATT_FIELD &before = att.astField[i - 1];
    return !__builtin_add_overflow(before.offset, before.len, &field.offset);
}

// Where this thread found a name last time. Callers in a loop hand over the same literals again and again, so the
// addresses say where to look first; what is found there is compared all the same, because both may have become others.
struct Place {
    const ORMEL_RES_ATT *att;
    const char *name;
    uint32_t id;
    uint32_t twins;
};

// Counts the descriptors that have a name twice. Of two columns the first is meant, and one that took the place of
// another descriptor may have it elsewhere: what was remembered before is forgotten.
std::atomic<uint32_t> g_twins;
constexpr size_t kPlaces = 256;
thread_local Place t_places[kPlaces];

// Names lie side by side, as a program's literals or an array's elements. So their low bits keep a wide row's apart,
// or, where they lie a power of two apart, the bits above these.
Place &placeOf(const ORMEL_RES_ATT *att, const char *name) {
    const auto block = reinterpret_cast<uintptr_t>(att) / alignof(max_align_t);
    const auto at = reinterpret_cast<uintptr_t>(name);
    return t_places[(block + at + at / 32) % kPlaces];
}

bool hasTwins(const ORMEL_RES_ATT &att) {
    for (int32_t i = 1; i < att.iAttNum; ++i)
        for (int32_t k = 0; k < i; ++k)
            if (strcasecmp(att.astField[i].attname, att.astField[k].attname) == 0)
                return true;
    return false;
}

bool isColumn(const ORMEL_RES_ATT &att, uint32_t id, const char *name) {
    return int64_t{id} < att.iAttNum && strcasecmp(att.astField[id].attname, name) == 0;
}

} // namespace

ORMEL_RES_ATT *ORMEL_ResAttCreate(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    const std::unique_ptr<void, decltype(&dbFreeStmt)> probe(dbSelectAtt(pConn, pcTableName, pstObj), dbFreeStmt);
    if (probe == nullptr)
        return nullptr;
    const uint32_t columns = columnCount(__func__, probe.get(), pcTableName);
    std::unique_ptr<ORMEL_RES_ATT, decltype(&std::free)> att(columns > 0 ? allocate(pcTableName, columns) : nullptr,
                                                             std::free);
    if (att == nullptr)
        return nullptr;
    for (int32_t i = 0; i < att->iAttNum; ++i)
        if (!describe(probe.get(), *att, i))
            return nullptr;
    if (hasTwins(*att))
        ++g_twins;
    ORMEL_ResAttShow(att.get());
    return att.release();
}

void ORMEL_ResAttFree(ORMEL_RES_ATT *pstResAtt) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    std::free(pstResAtt);
}

void ORMEL_ResAttShow(const void *pstResAtt) {
    const auto *att = static_cast<const ORMEL_RES_ATT *>(pstResAtt);
    if (att != nullptr && !ormel::logs(KPL_LOG_TRACE))
        return;
    ORMEL_LOG(KPL_LOG_TRACE, "=========================================================================");
    ORMEL_LOG(KPL_LOG_TRACE, " NO attname          atttypid attlen atttypmod    (len) (offset) (format)");
    if (att == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "ORMEL_ResAttShow parameter error.");
        return;
    }
    for (int32_t i = 0; i < att->iAttNum; ++i) {
        const ORMEL_RES_ATT_FIELD &field = att->astField[i];
        ORMEL_LOG(KPL_LOG_TRACE, "%3d %-16s %8d %6d  %8d %8d %8d %8d", i, field.attname, field.atttypid, field.attlen,
                  field.atttypmod, field.len, field.offset, field.format);
    }
    ORMEL_LOG(KPL_LOG_TRACE, " ");
}

int ORMEL_ResAttCmp(const void *pstA, const void *pstB) {
    return strcasecmp(static_cast<const ORMEL_RES_ATT *>(pstA)->acTableName,
                      static_cast<const ORMEL_RES_ATT *>(pstB)->acTableName);
}

uint32_t ORMEL_GetFieldIdByNameFromResAttr(const ORMEL_RES_ATT *pstResAtt, const char *pcName) {
    if (pstResAtt == nullptr || pcName == nullptr)
        return ORMEL_INVALID;
    Place &place = placeOf(pstResAtt, pcName);
    const uint32_t twins = g_twins.load(std::memory_order_relaxed);
    if (place.att == pstResAtt && place.name == pcName && place.twins == twins &&
        isColumn(*pstResAtt, place.id, pcName))
        return place.id;
    for (uint32_t id = 0; int64_t{id} < pstResAtt->iAttNum; ++id)
        if (isColumn(*pstResAtt, id, pcName)) {
            place = {pstResAtt, pcName, id, twins};
            return id;
        }
    return ORMEL_INVALID;
}

ORMEL_RES_ATT_FIELD *ORMEL_GetResAttInfoByName(ORMEL_RES_ATT *pstResAtt, const char *pcName) {
    const uint32_t id = ORMEL_GetFieldIdByNameFromResAttr(pstResAtt, pcName);
    return id == ORMEL_INVALID ? nullptr : &pstResAtt->astField[id];
}

uint32_t ORMEL_GetAllFieldByRes(const ORMEL_RES_ATT *pstResAtt, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                uint8_t *pucNum) {
    if (pstResAtt == nullptr || acNames == nullptr || pucNum == nullptr || pstResAtt->iAttNum > iMax)
        return ORMEL_ERR_FAILED;
    for (int32_t i = 0; i < pstResAtt->iAttNum; ++i)
        strcpy_s(acNames[i], ORMEL_NAME_SIZE, pstResAtt->astField[i].attname);
    *pucNum = static_cast<uint8_t>(pstResAtt->iAttNum);
    return ORMEL_OK;
}
