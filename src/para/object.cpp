#include "ormeldb/object.h"

#include <cstdlib>
#include <cstring>

#include "log/log.h"
#include "ormeldb/platform/opbbase.h"
#include "ormeldb/res_att.h"

namespace {

constexpr char kLogFile[] = "ormel_para";

// A value to be copied into an item; a text brings its terminator, which the length leaves out. NULL: no value.
struct Value {
    const void *bytes;
    size_t length;
    bool text;
};

// What became of an item that was to be appended.
enum class Append { ok, missing, full, name, memory };

bool inRange(int32_t count, int32_t capacity) {
    return count >= 0 && count <= capacity;
}

// A count as clearing may use it: one outside its capacity says nothing.
int32_t usable(int32_t count, int32_t capacity) {
    return inRange(count, capacity) ? count : 0;
}

// Stores a copy of the value in the item; false when memory is short.
bool storeValue(ORMEL_OBJECT_ITEM &item, const Value &value) {
    item.pValue = nullptr;
    item.uiLength = static_cast<uint32_t>(value.length);
    if (value.bytes == nullptr)
        return true;
    const size_t size = value.length + (value.text ? 1 : 0);
    item.pValue = value.length < UINT32_MAX ? std::malloc(size) : nullptr;
    if (item.pValue == nullptr)
        return false;
    std::memcpy(item.pValue, value.bytes, size);
    return true;
}

// The body of every setter. A name that does not fit is stored as an empty one, which the check finds, unless it must
// fit.
Append append(ORMEL_OBJECT *obj, const char *name, const Value &value, bool nameMustFit = false) {
    if (obj == nullptr || name == nullptr)
        return Append::missing;
    if (obj->iItemNum < 0 || obj->iItemNum >= ORMEL_MAX_ITEMS)
        return Append::full;
    ORMEL_OBJECT_ITEM &item = obj->astItem[obj->iItemNum];
    if (strcpy_s(item.acName, sizeof item.acName, name) != 0 && nameMustFit)
        return Append::name;
    if (!storeValue(item, value))
        return Append::memory;
    ++obj->iItemNum;
    return Append::ok;
}

uint32_t codeOf(Append outcome) {
    if (outcome == Append::ok)
        return ORMEL_OK;
    return outcome == Append::missing ? ORMEL_ERR_NULL_ARG : ORMEL_ERR_FAILED;
}

Value textOf(const char *text) {
    return {text, std::strlen(text), true};
}

uint32_t setText(ORMEL_OBJECT *obj, const char *name, const char *text) {
    return text == nullptr ? ORMEL_ERR_NULL_ARG : codeOf(append(obj, name, textOf(text)));
}

// Binds an item to its column's entry; false when the column is unknown or the value does not have its width.
bool checkItem(const char *func, ORMEL_OBJECT_ITEM &item, ORMEL_RES_ATT &att) {
    if (item.acName[0] == '\0')
        return false;
    ORMEL_RES_ATT_FIELD *entry = ORMEL_GetResAttInfoByName(&att, item.acName);
    if (entry == nullptr) {
        ORMEL_LOG_AS(func, KPL_LOG_INFO, "pstInfo is NULL fieldname=%.*s.",
                     ormel::textLength(item.acName, sizeof item.acName), item.acName);
        return false;
    }
    const bool noValue = item.pValue == nullptr && item.uiLength == 0;
    if (!noValue && entry->format != 0 && entry->len != 0 && static_cast<uint32_t>(entry->len) != item.uiLength) {
        ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "pstInfo: len=%d, format=%d; pstItem: len:%d", entry->len, entry->format,
                     static_cast<int>(item.uiLength));
        return false;
    }
    item.pstInfo = entry;
    return true;
}

bool checkSelectField(const char *func, const char *name, ORMEL_RES_ATT &att) {
    if (name == nullptr || *name == '\0')
        return false;
    if (ORMEL_GetResAttInfoByName(&att, name) != nullptr)
        return true;
    ORMEL_LOG_AS(func, KPL_LOG_INFO, "pstInfo1 is NULL fieldname=%.*s.", ormel::textLength(name, ORMEL_NAME_SIZE),
                 name);
    return false;
}

bool check(const char *func, ORMEL_OBJECT &obj, ORMEL_RES_ATT &att) {
    const size_t nameLength = strnlen(obj.acTableName, sizeof obj.acTableName);
    if (nameLength == 0 || nameLength == sizeof obj.acTableName || !inRange(obj.iItemNum, ORMEL_MAX_ITEMS) ||
        !inRange(obj.iSelectFieldNum, ORMEL_MAX_SELECT_FIELDS))
        return false;
    for (int32_t i = 0; i < obj.iItemNum; ++i)
        if (!checkItem(func, obj.astItem[i], att))
            return false;
    for (int32_t i = 0; i < obj.iSelectFieldNum; ++i)
        if (!checkSelectField(func, obj.apcSelectField[i], att))
            return false;
    return true;
}

} // namespace

uint32_t ORMEL_ObjectNameSet(ORMEL_OBJECT *pstObj, const char *pcTableName) {
    if (pstObj != nullptr)
        strcpy_s(pstObj->acTableName, sizeof pstObj->acTableName, pcTableName);
    return ORMEL_OK;
}

char *ORMEL_ObjectNameGet(ORMEL_OBJECT *pstObj) {
    return pstObj != nullptr ? pstObj->acTableName : nullptr;
}

uint32_t ORMEL_ObjectNameSetForMulti(ORMEL_MULTI_OBJECT *pstMulti, const char *pcTableName) {
    if (pstMulti == nullptr || pcTableName == nullptr)
        return ORMEL_ERR_NULL_ARG;
    strcpy_s(pstMulti->acTableName, sizeof pstMulti->acTableName, pcTableName);
    return ORMEL_OK;
}

char *ORMEL_ObjectNameGetForMulti(ORMEL_MULTI_OBJECT *pstMulti) {
    return pstMulti != nullptr ? pstMulti->acTableName : nullptr;
}

uint32_t ORMEL_ObjectBinarySet(ORMEL_OBJECT *pstObj, const char *pcName, const void *pValue, int32_t iLen) {
    if (pValue == nullptr || iLen < 1)
        return ORMEL_ERR_NULL_ARG;
    return codeOf(append(pstObj, pcName, {pValue, static_cast<size_t>(iLen), false}));
}

uint32_t ORMEL_ObjectInt8Set(ORMEL_OBJECT *pstObj, const char *pcName, int8_t cValue) {
    return ORMEL_ObjectInt32Set(pstObj, pcName, cValue);
}

uint32_t ORMEL_ObjectInt16Set(ORMEL_OBJECT *pstObj, const char *pcName, int16_t sValue) {
    return ORMEL_ObjectInt32Set(pstObj, pcName, sValue);
}

uint32_t ORMEL_ObjectInt32Set(ORMEL_OBJECT *pstObj, const char *pcName, int32_t iValue) {
    return ORMEL_ObjectBinarySet(pstObj, pcName, &iValue, sizeof iValue);
}

uint32_t ORMEL_ObjectInt64Set(ORMEL_OBJECT *pstObj, const char *pcName, int64_t llValue) {
    return ORMEL_ObjectBinarySet(pstObj, pcName, &llValue, sizeof llValue);
}

uint32_t ORMEL_ObjectStrSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue) {
    return setText(pstObj, pcName, pcValue);
}

uint32_t ORMEL_ObjectJsonSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue) {
    return setText(pstObj, pcName, pcValue);
}

uint32_t ORMEL_ObjectJsonbSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue) {
    return setText(pstObj, pcName, pcValue);
}

uint32_t ORMEL_ObjectTextSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue) {
    return setText(pstObj, pcName, pcValue);
}

uint32_t ORMEL_ObjectNullSet(ORMEL_OBJECT *pstObj, const char *pcName) {
    return codeOf(append(pstObj, pcName, {}));
}

uint32_t ORMEL_ObjectStrOptionLikeSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcPattern) {
    if (pcPattern == nullptr)
        return ORMEL_ERR_NULL_ARG;
    const Append outcome = append(pstObj, pcName, textOf(pcPattern), true);
    if (outcome == Append::full)
        ORMEL_LOG(KPL_LOG_ERROR, "ORMEL_ObjectStrOptionLikeSet error. iItemNum is full.");
    else if (outcome == Append::name)
        ORMEL_LOG(KPL_LOG_ERROR, "strcpy_s error in ORMEL_ObjectStrOptionLikeSet.");
    else if (outcome == Append::memory)
        ORMEL_LOG(KPL_LOG_ERROR, "ORMEL_MALLOC error.");
    else if (outcome == Append::ok)
        pstObj->astItem[pstObj->iItemNum - 1].uiOp = ORMEL_OP_LIKE;
    return codeOf(outcome);
}

uint32_t ORMEL_ObjectSelectRowCountSet(ORMEL_OBJECT *pstObj, uint32_t uiIsLimit, uint32_t uiRowCounts,
                                       uint32_t uiOffset) {
    if (pstObj == nullptr)
        return ORMEL_ERR_NULL_ARG;
    pstObj->isLimit = uiIsLimit;
    pstObj->iRowCounts = uiRowCounts;
    pstObj->iOffset = uiOffset;
    return ORMEL_OK;
}

uint32_t ORMEL_ObjectSelectFieldSet(ORMEL_OBJECT *pstObj, const char *pcFieldName) {
    if (pstObj == nullptr || pcFieldName == nullptr)
        return ORMEL_ERR_NULL_ARG;
    const int32_t slot = pstObj->iSelectFieldNum;
    if (slot < 0 || slot >= ORMEL_MAX_SELECT_FIELDS) {
        ORMEL_LOG(KPL_LOG_ERROR, "ORMEL_ObjectSelectFieldSet error. iSelectFieldNum is full.");
        return ORMEL_ERR_FAILED;
    }
    std::free(pstObj->apcSelectField[slot]); // what a refused name left there
    auto *name = static_cast<char *>(std::calloc(1, ORMEL_NAME_SIZE));
    pstObj->apcSelectField[slot] = name;
    if (name == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "ORMEL_MALLOC error. fieldname=%s.", pcFieldName);
        return ORMEL_ERR_FAILED;
    }
    if (strcpy_s(name, ORMEL_NAME_SIZE, pcFieldName) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "strcpy_s error in ORMEL_ObjectSelectFieldSet.");
        return ORMEL_ERR_FAILED;
    }
    ++pstObj->iSelectFieldNum;
    return ORMEL_OK;
}

uint32_t ORMEL_ObjectCheck(ORMEL_OBJECT *pstObj, ORMEL_RES_ATT *pstResAtt) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    const bool passes = pstObj != nullptr && pstResAtt != nullptr && check(__func__, *pstObj, *pstResAtt);
    return passes ? ORMEL_OK : ORMEL_ERR_CHECK;
}

void ORMEL_ObjectParaClear(ORMEL_OBJECT *pstObj) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    if (pstObj == nullptr)
        return;
    const int32_t items = usable(pstObj->iItemNum, ORMEL_MAX_ITEMS);
    for (int32_t i = 0; i < items; ++i) {
        std::free(pstObj->astItem[i].pValue);
        pstObj->astItem[i].pValue = nullptr;
    }
    pstObj->iItemNum = 0;
    // One slot more than are counted: a refused name leaves its block there.
    const int32_t names = usable(pstObj->iSelectFieldNum, ORMEL_MAX_SELECT_FIELDS);
    for (int32_t i = 0; i <= names && i < ORMEL_MAX_SELECT_FIELDS; ++i) {
        std::free(pstObj->apcSelectField[i]);
        pstObj->apcSelectField[i] = nullptr;
    }
    pstObj->iSelectFieldNum = 0;
}
