#include <cstdlib>

#include "dao/owners.h"
#include "dao/qdc.h"
#include "dao/sql_text.h"
#include "log/log.h"

namespace {

constexpr char kLogFile[] = "ormel_dao";
constexpr uint32_t kLobSlotSize = 16; // bytes that the client is given for each large-object parameter

bool isLob(uint32_t type) {
    return type == QDC_TYPE_CLOB || type == QDC_TYPE_BLOB;
}

uint32_t lobsAmong(const ORMEL_PARA &para, int32_t first, int32_t end) {
    uint32_t count = 0;
    for (int32_t i = first; i < end; ++i)
        count += isLob(para.type[i]) ? 1 : 0;
    return count;
}

// Writes the value of a large-object parameter. A short write is logged and accepted.
bool writeLob(const char *func, void *stmt, const ORMEL_PARA &para, int32_t slot) {
    const auto pos = static_cast<uint32_t>(slot);
    uint32_t written = 0;
    const uint32_t length = para.length[slot];
    const bool clob = para.type[slot] == QDC_TYPE_CLOB;
    const uint32_t status = clob ? qdc_write_clob(stmt, pos, para.value[slot], length, &written)
                                 : qdc_write_blob(stmt, pos, para.value[slot], length);
    if (status != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_write_clob clob :%s failed ", para.name[slot]);
        return false;
    }
    if (clob && written != length)
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_write_clob failed writeSize=%d, lengths=%d ", static_cast<int>(written),
                     static_cast<int>(length));
    return true;
}

bool bindLob(const char *func, void *stmt, const ORMEL_PARA &para, int32_t slot, void *lob) {
    const uint32_t type = para.type[slot];
    if (qdc_bind_by_pos(stmt, static_cast<uint32_t>(slot), type, lob, kLobSlotSize, nullptr) != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_bind %s failed ",
                     type == QDC_TYPE_CLOB ? "QDC_TYPE_CLOB" : "QDC_TYPE_BLOB");
        return false;
    }
    return para.value[slot] == nullptr || writeLob(func, stmt, para, slot); // a slot that is not written is NULL
}

bool bindValue(const char *func, void *stmt, const ORMEL_PARA &para, int32_t slot) {
    const uint32_t type = para.type[slot];
    const uint32_t length = para.length[slot];
    if (qdc_bind_by_pos(stmt, static_cast<uint32_t>(slot), type, para.value[slot], length, nullptr) != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_bind_by_pos :%d %s failed ", slot, para.name[slot]);
        return false;
    }
    ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "qdc_bind_by_pos :%d, type:%d, len:%d ", slot, static_cast<int>(type),
                 static_cast<int>(length));
    return true;
}

} // namespace

uint32_t dbLobCount(const ORMEL_PARA *pstPara, int32_t iWithFields, int32_t iWithConds) {
    if (pstPara == nullptr || !ormel::countsFit(*pstPara))
        return 0;
    const int32_t fields = pstPara->iFieldNum;
    return (iWithFields != 0 ? lobsAmong(*pstPara, 0, fields) : 0) +
           (iWithConds != 0 ? lobsAmong(*pstPara, fields, fields + pstPara->iCondNum) : 0);
}

void *dbMallocLob(uint32_t uiCount) {
    void *lobs = std::calloc(uiCount, kLobSlotSize);
    if (lobs == nullptr)
        ORMEL_LOG(KPL_LOG_ERROR, "malloc lobData failed");
    return lobs;
}

uint32_t dbBindPara(void *pStmt, const ORMEL_PARA *pstPara, int32_t iWithFields, int32_t iWithConds, int32_t iStart,
                    void **ppLobData) {
    if (pStmt == nullptr || pstPara == nullptr || ppLobData == nullptr || iStart < 0 || !ormel::countsFit(*pstPara))
        return 0;
    const ORMEL_PARA &para = *pstPara;
    int32_t end = iWithConds != 0 ? para.iFieldNum + para.iCondNum : 0;
    if (iWithFields != 0)
        end = para.iFieldNum;
    // A list whose conditions are bound from slot 0 on brings its fields along, which the count leaves out.
    const uint32_t counted = dbLobCount(pstPara, iWithFields, iWithConds);
    const uint32_t bound = lobsAmong(para, iStart, end);
    const uint32_t slots = bound > counted ? bound : counted;
    char *lob = nullptr;
    if (slots > 0 && (lob = static_cast<char *>(dbMallocLob(slots))) == nullptr)
        return 0;
    *ppLobData = lob;
    for (int32_t i = iStart; i < end; ++i) {
        if (!isLob(para.type[i])) {
            if (!bindValue(__func__, pStmt, para, i))
                return 0;
            continue;
        }
        if (!bindLob(__func__, pStmt, para, i, lob))
            return 0;
        lob += kLobSlotSize;
    }
    return 1;
}
