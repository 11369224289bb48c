#ifndef ORMELDB_WRITE_H
#define ORMELDB_WRITE_H
#include "dao.h"
#include "trans.h"
ORMEL_BEGIN_DECLS
ORMEL_API uint32_t ORMEL_InsertRecForConn(void *pConn, const char *pcTableName, const ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_InsertRec(const char *pcTableName, const ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_InsertRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName,
                                           const ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_DeleteRecForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                          uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_DeleteRec(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_DeleteRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                           uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRecForConn(void *pConn, const char *pcTableName, const ORMEL_FIELD_SELECT *pstFields,
                                          const ORMEL_RECORD_BUFFER *pstDsbuf, const ORMEL_COND *pstCond,
                                          uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRec(const char *pcTableName, const ORMEL_FIELD_SELECT *pstFields,
                                   const ORMEL_RECORD_BUFFER *pstDsbuf, const ORMEL_COND *pstCond, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName,
                                           const ORMEL_FIELD_SELECT *pstFields, const ORMEL_RECORD_BUFFER *pstDsbuf,
                                           const ORMEL_COND *pstCond, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_InsertRecForConn2(void *pConn, ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_InsertRecFormObj(ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_InsertRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_DeleteRecForConn2(void *pConn, ORMEL_OBJECT *pstObj, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_DeleteRecByObj(ORMEL_OBJECT *pstObj, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_DeleteRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRecForConn2(void *pConn, ORMEL_OBJECT *pstSetObj, ORMEL_OBJECT *pstCondObj,
                                           uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRecByObj(ORMEL_OBJECT *pstSetObj, ORMEL_OBJECT *pstCondObj, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstSetObj,
                                                ORMEL_OBJECT *pstCondObj, uint32_t *puiRecNum);
ORMEL_END_DECLS
#endif
