#include <cstdlib>
#include <cstring>

#include "dao/owners.h"
#include "log/log.h"

namespace {

const DB_FIELD *cell(const DB_RESULT *res, uint32_t row, int32_t field) {
    // The result of a write counts rows and has none.
    if (dbCheckTupleField(res, row, field) == 0 || res->ppRows == nullptr || res->ppRows[row] == nullptr)
        return nullptr;
    return &res->ppRows[row][field];
}

// A zeroed block that is there even when it holds nothing: an allocation of no bytes may answer NULL.
template <class T> T *zeroed(uint32_t count) {
    return static_cast<T *>(std::calloc(count > 0 ? count : 1, sizeof(T)));
}

} // namespace

DB_RESULT *dbMallocResult(uint32_t uiRows, uint32_t uiFields) {
    ormel::Result res(zeroed<DB_RESULT>(1));
    if (res == nullptr || (res->ppRows = zeroed<DB_FIELD *>(uiRows)) == nullptr)
        return nullptr;
    for (uint32_t row = 0; row < uiRows; ++row) {
        res->ppRows[row] = zeroed<DB_FIELD>(uiFields);
        if (res->ppRows[row] == nullptr)
            return nullptr;
        res->uiRowCount = row + 1; // what the clearing frees when the next row cannot be had
    }
    res->uiRowCount = 0;
    return res.release();
}

void dbFieldClear(DB_FIELD *pstFields, uint32_t uiCount) {
    if (pstFields == nullptr)
        return;
    for (uint32_t i = 0; i < uiCount; ++i) {
        std::free(pstFields[i].pValue);
        pstFields[i].pValue = nullptr;
        pstFields[i].uiLength = 0;
    }
}

void dbResClear(DB_RESULT *pstRes) {
    if (pstRes == nullptr)
        return;
    for (uint32_t row = 0; pstRes->ppRows != nullptr && row < pstRes->uiRowCount; ++row) {
        dbFieldClear(pstRes->ppRows[row], pstRes->uiFieldCount);
        std::free(pstRes->ppRows[row]);
        pstRes->ppRows[row] = nullptr;
    }
    std::free(static_cast<void *>(pstRes->ppRows));
    std::free(pstRes);
}

void dbValueShow(uint32_t uiType, const void *pValue, uint32_t uiLength) {
    ormel::logValue(__func__, uiType, pValue, uiLength);
}

uint32_t dbCheckTupleField(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField) {
    return pstRes != nullptr && iField >= 0 && static_cast<uint32_t>(iField) < pstRes->uiFieldCount &&
           uiRow < pstRes->uiRowCount;
}

void *dbGetValueFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField) {
    const DB_FIELD *field = cell(pstRes, uiRow, iField);
    return field != nullptr ? field->pValue : nullptr;
}

uint32_t dbGetLengthFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField) {
    const DB_FIELD *field = cell(pstRes, uiRow, iField);
    return field != nullptr ? field->uiLength : 0;
}

uint32_t dbGetTypeFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField) {
    const DB_FIELD *field = cell(pstRes, uiRow, iField);
    return field != nullptr ? field->usType : 0;
}

char *dbGetNameFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField) {
    return cell(pstRes, uiRow, iField) != nullptr ? pstRes->ppRows[uiRow][iField].acName : nullptr;
}

uint32_t dbGetNtuples(const DB_RESULT *pstRes) {
    return pstRes != nullptr ? pstRes->uiRowCount : 0;
}

uint32_t dbGetNfields(const DB_RESULT *pstRes) {
    return pstRes != nullptr ? pstRes->uiFieldCount : 0;
}

void dbSetFieldValue(void *pDest, const void *pSrc, uint32_t uiLength, uint32_t uiType) {
    if (pDest == nullptr)
        return;
    if (uiType == QDC_TYPE_INT32 || uiType == QDC_TYPE_BOOL) {
        const auto low = static_cast<int32_t>(dbGetIntValue(pSrc, uiLength));
        std::memcpy(pDest, &low, sizeof low);
    } else if (pSrc != nullptr) {
        std::memcpy(pDest, pSrc, uiLength);
    }
}

void *getFieldValue(const void *pSrc, void *pDest, uint32_t uiLength) {
    if (pSrc != nullptr && pDest != nullptr)
        std::memcpy(pDest, pSrc, uiLength);
    return pDest;
}
