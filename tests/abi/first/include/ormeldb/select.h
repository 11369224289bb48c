#ifndef ORMELDB_SELECT_H
#define ORMELDB_SELECT_H
#include "result.h"
#include "trans.h"
ORMEL_BEGIN_DECLS
ORMEL_API uint32_t ORMEL_LocalExistRecordForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                                 uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_LocalExistRecord(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_LocalExistRecordForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName,
                                                  const ORMEL_COND *pstCond, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_GetBatchSelectCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara,
                                             uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_SelectRecForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                          uint32_t uiReserved, ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_SelectRec(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t uiReserved,
                                   ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_SelectRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                           uint32_t uiReserved, ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_SelectRecForConn2(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                           uint32_t uiReserved, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRec2(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t uiReserved,
                                    ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRecForTrans2(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                            uint32_t uiReserved, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRecForConn3(void *pConn, ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRecByObj(ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj,
                                                ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectBatchRecForConn(void *pConn, ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectBatchRecByObj(ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_ResultConvertDsBuf(const ORMEL_SELECT_RESULT *pstResult, ORMEL_RECORD_BUFFER *pstDsbuf,
                                            uint32_t uiStartIndex);
ORMEL_API uint32_t ORMEL_GetAllFieldForCache(const char *pcTableName, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                             uint8_t *pucNum);
ORMEL_API uint32_t ORMEL_GetAllFieldForConn(void *pConn, const char *pcTableName, char acNames[][ORMEL_NAME_SIZE],
                                            int32_t iMax, uint8_t *pucNum);
ORMEL_API uint32_t ORMEL_AllFieldsGet(const char *pcTableName, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                      uint8_t *pucNum);
ORMEL_END_DECLS
#endif
