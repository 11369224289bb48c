#include "ormeldb/result.h"

#include <cstring>

#include "log/log.h"
#include "ormeldb/platform/opbbase.h"
#include "para/cell_integer.h"

namespace {

constexpr char kLogFile[] = "ormel_para";

// The place of a column in the rows; -1 when there is none of that name.
int32_t position(const ORMEL_SELECT_RESULT *result, const char *name) {
    return static_cast<int32_t>(ORMEL_GetFieldIdByNameFromResAttr(result->pstResAtt, name));
}

void *getByPos(const ORMEL_SELECT_RESULT *result, uint32_t row, int32_t pos) {
    return result != nullptr ? dbGetValueFromRes(result->pstRes, row, pos) : nullptr;
}

void *getByName(const ORMEL_SELECT_RESULT *result, uint32_t row, const char *name) {
    return result != nullptr ? getByPos(result, row, position(result, name)) : nullptr;
}

bool comparable(const ORMEL_SELECT_RESULT *a, const ORMEL_SELECT_RESULT *b, int32_t max) {
    return a != nullptr && b != nullptr && a->uiRecNum == 1 && b->uiRecNum == 1 &&
           dbGetNfields(a->pstRes) == dbGetNfields(b->pstRes) && int64_t{dbGetNfields(a->pstRes)} <= max;
}

// Whether a column of the first rows differs; a NULL beside a value of no bytes does not.
bool differs(const DB_RESULT *a, const DB_RESULT *b, int32_t column) {
    const uint32_t length = dbGetLengthFromRes(a, 0, column);
    if (length != dbGetLengthFromRes(b, 0, column))
        return true;
    const void *valueOfA = dbGetValueFromRes(a, 0, column);
    const void *valueOfB = dbGetValueFromRes(b, 0, column);
    return valueOfA != nullptr && valueOfB != nullptr && std::memcmp(valueOfA, valueOfB, length) != 0;
}

void clearRows(ORMEL_SELECT_RESULT &result) {
    dbResClear(result.pstRes);
    result.pstRes = nullptr;
    result.uiRecNum = 0;
}

} // namespace

uint32_t ORMEL_ResultNumberGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                               void *pOut, uint32_t uiType) {
    if (pstResult == nullptr || pcFieldName == nullptr || pOut == nullptr)
        return ORMEL_ERR_NULL_ARG;
    const int32_t pos = position(pstResult, pcFieldName);
    if (pos < 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "pos is error fieldname=%s.", pcFieldName);
        return ORMEL_ERR_ABSENT;
    }
    const void *value = dbGetValueFromRes(pstResult->pstRes, uiRow, pos);
    if (value == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "dbGetValueFromRes is NULL fieldname=%s.", pcFieldName);
        return ORMEL_ERR_ABSENT;
    }
    const uint32_t length = dbGetLengthFromRes(pstResult->pstRes, uiRow, pos);
    dbSetFieldValue(pOut, ormel::CellInteger(value, length).bytes(), length, uiType);
    if (length > 0)
        return ORMEL_OK;
    ORMEL_LOG(KPL_LOG_ERROR, "fieldlen is 0 fieldname=%s.", pcFieldName);
    return ORMEL_ERR_EMPTY;
}

uint32_t ORMEL_ResultInt8Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                             int32_t *piOut) {
    return ORMEL_ResultNumberGet(pstResult, uiRow, pcFieldName, piOut, QDC_TYPE_BOOL);
}

uint32_t ORMEL_ResultInt16Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                              int32_t *piOut) {
    return ORMEL_ResultNumberGet(pstResult, uiRow, pcFieldName, piOut, QDC_TYPE_BOOL);
}

uint32_t ORMEL_ResultInt32Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                              int32_t *piOut) {
    return ORMEL_ResultNumberGet(pstResult, uiRow, pcFieldName, piOut, QDC_TYPE_BOOL);
}

uint32_t ORMEL_ResultInt64Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                              int64_t *pllOut) {
    return ORMEL_ResultNumberGet(pstResult, uiRow, pcFieldName, pllOut, QDC_TYPE_INT64);
}

void *ORMEL_ResultBinaryGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos) {
    return getByPos(pstResult, uiRow, iPos);
}

char *ORMEL_ResultTextGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos) {
    return static_cast<char *>(getByPos(pstResult, uiRow, iPos));
}

char *ORMEL_ResultJsonGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos) {
    return static_cast<char *>(getByPos(pstResult, uiRow, iPos));
}

char *ORMEL_ResultJsonbGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos) {
    return static_cast<char *>(getByPos(pstResult, uiRow, iPos));
}

void *ORMEL_ResultBinaryGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName) {
    return getByName(pstResult, uiRow, pcFieldName);
}

char *ORMEL_ResultStrGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName) {
    return static_cast<char *>(getByName(pstResult, uiRow, pcFieldName));
}

char *ORMEL_ResultTextGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName) {
    return static_cast<char *>(getByName(pstResult, uiRow, pcFieldName));
}

char *ORMEL_ResultJsonGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName) {
    return static_cast<char *>(getByName(pstResult, uiRow, pcFieldName));
}

char *ORMEL_ResultJsonbGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName) {
    return static_cast<char *>(getByName(pstResult, uiRow, pcFieldName));
}

uint32_t ORMEL_SelectResultRecNumGet(const ORMEL_SELECT_RESULT *pstResult) {
    return pstResult != nullptr ? pstResult->uiRecNum : 0;
}

uint32_t ORMEL_ResultGetFieldNum(const ORMEL_SELECT_RESULT *pstResult) {
    return pstResult != nullptr ? dbGetNfields(pstResult->pstRes) : 0;
}

void *ORMEL_ResultGetFieldValue(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol) {
    return getByPos(pstResult, uiRow, iCol);
}

uint32_t ORMEL_ResultGetFieldLengthByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol) {
    if (pstResult == nullptr || pstResult->pstRes == nullptr)
        return ORMEL_INVALID;
    return dbGetLengthFromRes(pstResult->pstRes, uiRow, iCol);
}

uint32_t ORMEL_ResultGetFieldLength(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName) {
    if (pstResult == nullptr || pcFieldName == nullptr)
        return ORMEL_INVALID;
    return ORMEL_ResultGetFieldLengthByPos(pstResult, uiRow, position(pstResult, pcFieldName));
}

uint32_t ORMEL_ResultGetFieldType(const ORMEL_SELECT_RESULT *pstResult, int32_t iCol) {
    return pstResult != nullptr ? dbGetTypeFromRes(pstResult->pstRes, 0, iCol) : 0;
}

uint32_t ORMEL_ResultGetFieldOffset(const ORMEL_SELECT_RESULT *pstResult, int32_t iCol) {
    const ORMEL_RES_ATT *att = pstResult != nullptr ? pstResult->pstResAtt : nullptr;
    if (att == nullptr || iCol < 0 || iCol >= att->iAttNum)
        return ORMEL_INVALID;
    return static_cast<uint32_t>(att->astField[iCol].len);
}

uint32_t ORMEL_ResultSetFieldValue(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol, void *pOut) {
    const void *value = getByPos(pstResult, uiRow, iCol);
    if (value == nullptr || pOut == nullptr)
        return ORMEL_ERR_ABSENT;
    const uint32_t length = dbGetLengthFromRes(pstResult->pstRes, uiRow, iCol);
    dbSetFieldValue(pOut, ormel::CellInteger(value, length).bytes(), length,
                    dbGetTypeFromRes(pstResult->pstRes, uiRow, iCol));
    return ORMEL_OK;
}

uint32_t ORMEL_ResultDiffFieldsGet(const ORMEL_SELECT_RESULT *pstA, const ORMEL_SELECT_RESULT *pstB,
                                   char acNames[][ORMEL_NAME_SIZE], int32_t iMax, uint8_t *pucCount) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    if (!comparable(pstA, pstB, iMax) || acNames == nullptr || pucCount == nullptr)
        return ORMEL_ERR_FAILED;
    uint8_t count = 0;
    const auto columns = static_cast<int32_t>(dbGetNfields(pstA->pstRes));
    for (int32_t column = 0; column < columns; ++column) {
        if (dbGetTypeFromRes(pstA->pstRes, 0, column) != dbGetTypeFromRes(pstB->pstRes, 0, column))
            return ORMEL_ERR_FAILED;
        if (!differs(pstA->pstRes, pstB->pstRes, column))
            continue;
        strcpy_s(acNames[count], ORMEL_NAME_SIZE, dbGetNameFromRes(pstA->pstRes, 0, column));
        ++count; // modulo 256
    }
    *pucCount = count;
    return ORMEL_OK;
}

void ORMEL_SelectResultSet(ORMEL_SELECT_RESULT *pstResult, ORMEL_RES_ATT *pstResAtt, DB_RESULT *pstRes,
                           uint32_t uiRecNum) {
    if (pstResult != nullptr)
        *pstResult = {pstResAtt, pstRes, uiRecNum};
}

void ORMEL_SelectResultClear(ORMEL_SELECT_RESULT *pstResult) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    if (pstResult == nullptr)
        return;
    if (pstResult->pstResAtt != nullptr)
        ORMEL_DestoryResAtt(pstResult->pstResAtt);
    pstResult->pstResAtt = nullptr;
    clearRows(*pstResult);
}

void ORMEL_SelectResultClearForFetch(ORMEL_SELECT_RESULT *pstResult) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    if (pstResult != nullptr)
        clearRows(*pstResult);
}
