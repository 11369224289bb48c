#ifndef ORMELDB_RESULT_H
#define ORMELDB_RESULT_H
#include "dao.h"
ORMEL_BEGIN_DECLS
typedef struct ORMEL_SELECT_RESULT {
    ORMEL_RES_ATT *pstResAtt;
    DB_RESULT *pstRes;
    uint32_t uiRecNum;
} ORMEL_SELECT_RESULT;
ORMEL_API uint32_t ORMEL_ResultNumberGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                         void *pOut, uint32_t uiType);
ORMEL_API uint32_t ORMEL_ResultInt8Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                       int32_t *piOut);
ORMEL_API uint32_t ORMEL_ResultInt16Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                        int32_t *piOut);
ORMEL_API uint32_t ORMEL_ResultInt32Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                        int32_t *piOut);
ORMEL_API uint32_t ORMEL_ResultInt64Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                        int64_t *pllOut);
ORMEL_API void *ORMEL_ResultBinaryGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos);
ORMEL_API char *ORMEL_ResultTextGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos);
ORMEL_API char *ORMEL_ResultJsonGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos);
ORMEL_API char *ORMEL_ResultJsonbGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos);
ORMEL_API void *ORMEL_ResultBinaryGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API char *ORMEL_ResultStrGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API char *ORMEL_ResultTextGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API char *ORMEL_ResultJsonGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API char *ORMEL_ResultJsonbGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API uint32_t ORMEL_SelectResultRecNumGet(const ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_ResultGetFieldNum(const ORMEL_SELECT_RESULT *pstResult);
ORMEL_API void *ORMEL_ResultGetFieldValue(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol);
ORMEL_API uint32_t ORMEL_ResultGetFieldLengthByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol);
ORMEL_API uint32_t ORMEL_ResultGetFieldLength(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow,
                                              const char *pcFieldName);
ORMEL_API uint32_t ORMEL_ResultGetFieldType(const ORMEL_SELECT_RESULT *pstResult, int32_t iCol);
ORMEL_API uint32_t ORMEL_ResultGetFieldOffset(const ORMEL_SELECT_RESULT *pstResult, int32_t iCol);
ORMEL_API uint32_t ORMEL_ResultSetFieldValue(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol,
                                             void *pOut);
ORMEL_API uint32_t ORMEL_ResultDiffFieldsGet(const ORMEL_SELECT_RESULT *pstA, const ORMEL_SELECT_RESULT *pstB,
                                             char acNames[][ORMEL_NAME_SIZE], int32_t iMax, uint8_t *pucCount);
ORMEL_API void ORMEL_SelectResultSet(ORMEL_SELECT_RESULT *pstResult, ORMEL_RES_ATT *pstResAtt, DB_RESULT *pstRes,
                                     uint32_t uiRecNum);
ORMEL_API void ORMEL_SelectResultClear(ORMEL_SELECT_RESULT *pstResult);
ORMEL_API void ORMEL_SelectResultClearForFetch(ORMEL_SELECT_RESULT *pstResult);
ORMEL_END_DECLS
#endif
