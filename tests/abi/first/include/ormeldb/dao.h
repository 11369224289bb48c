#ifndef ORMELDB_DAO_H
#define ORMELDB_DAO_H
#include "base.h"
#include "para.h"
ORMEL_BEGIN_DECLS
ORMEL_API void *dbConnect(const char *pcAddress, const char *pcUser, const char *pcPassword, const char *pcSslMode);
ORMEL_API void dbDisconnect(void *pConn);
ORMEL_API uint32_t dbSslModeType(const char *pcName);
ORMEL_API uint32_t dbSetSSLMode(void *pConn, const char *pcName);
ORMEL_API void *dbCreateStmt(void *pConn);
ORMEL_API void dbFreeStmt(void *pStmt);
ORMEL_API uint32_t dbStartTrans(void *pConn);
ORMEL_API uint32_t dbCommitTrans(void *pConn);
ORMEL_API uint32_t dbRollbackTrans(void *pConn);
ORMEL_API void dbPrintError(void *pConn);
ORMEL_API const char *dbGetOpStr(uint32_t uiOp);
ORMEL_API int64_t dbGetIntValue(const void *pValue, uint32_t uiSize);
ORMEL_API void *dbSelectAtt(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj);
ORMEL_API void *dbSelectAtt1(void *pConn, const char *pcTableName);
ORMEL_API uint32_t dbGetFieldTypebyName(void *pStmt, char *pcName);
ORMEL_API char *dbCountMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API char *dbSelectMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API char *dbInsertMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API char *dbDeleteMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API char *dbUpdateMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API uint32_t dbLobCount(const ORMEL_PARA *pstPara, int32_t iWithFields, int32_t iWithConds);
ORMEL_API void *dbMallocLob(uint32_t uiCount);
ORMEL_API uint32_t dbBindPara(void *pStmt, const ORMEL_PARA *pstPara, int32_t iWithFields, int32_t iWithConds,
                              int32_t iStart, void **ppLobData);
typedef struct DB_FIELD {
    char acName[ORMEL_NAME_SIZE];
    uint32_t uiColumnId;
    uint16_t usType;
    uint16_t usReserved;
    uint32_t uiIsType4;
    uint32_t uiLength;
    void *pValue;
} DB_FIELD;
typedef struct DB_RESULT {
    uint32_t uiRowCount;
    uint32_t uiFieldCount;
    DB_FIELD **ppRows;
} DB_RESULT;
ORMEL_API uint32_t dbGetFieldAttr(void *pStmt, uint32_t uiPos, DB_FIELD *pstField);
ORMEL_API DB_RESULT *dbMallocResult(uint32_t uiRows, uint32_t uiFields);
ORMEL_API uint32_t dbMoveNext(void *pStmt);
ORMEL_API uint32_t dbGetFields(void *pStmt, DB_FIELD *pstFields, uint32_t uiFieldCount);
ORMEL_API DB_RESULT *dbGetResult(void *pStmt, const char *pcTableName);
ORMEL_API void dbFieldClear(DB_FIELD *pstFields, uint32_t uiCount);
ORMEL_API void dbResClear(DB_RESULT *pstRes);
ORMEL_API void dbValueShow(uint32_t uiType, const void *pValue, uint32_t uiLength);
ORMEL_API uint32_t dbCheckTupleField(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
ORMEL_API void *dbGetValueFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
ORMEL_API uint32_t dbGetLengthFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
ORMEL_API uint32_t dbGetTypeFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
ORMEL_API char *dbGetNameFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
ORMEL_API uint32_t dbGetNtuples(const DB_RESULT *pstRes);
ORMEL_API uint32_t dbGetNfields(const DB_RESULT *pstRes);
ORMEL_API void dbSetFieldValue(void *pDest, const void *pSrc, uint32_t uiLength, uint32_t uiType);
ORMEL_API void *getFieldValue(const void *pSrc, void *pDest, uint32_t uiLength);
ORMEL_API DB_RESULT *dbCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbSelectRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbInsertRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbDeleteRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbUpdateRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API void *dbSelectRec1(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbSelectRecWithCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara,
                                          uint32_t uiCount);
ORMEL_API DB_RESULT *dbGetResultWithCount(void *pStmt, const char *pcTableName, uint32_t uiCount);
ORMEL_API void *dbBeginFetch(void *pConn, const char *pcTableName);
ORMEL_API DB_RESULT *dbGetFetchResult(void *pStmt);
ORMEL_END_DECLS
#endif
