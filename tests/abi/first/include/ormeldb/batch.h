#ifndef ORMELDB_BATCH_H
#define ORMELDB_BATCH_H
#include "dao.h"
#include "trans.h"
ORMEL_BEGIN_DECLS
typedef struct ORMEL_PARA_BATCH_ITEM {
    uint32_t type;
    uint32_t recIndex;
    uint32_t arrlen;
    uint32_t maxlen;
    void *data;
    uint16_t *ind;
    void **lobArray;
    uint32_t *lobLen;
} ORMEL_PARA_BATCH_ITEM;
typedef struct ORMEL_PARA_BATCH {
    uint32_t uiRecNum;
    int32_t itemNum;
    const char *name[ORMEL_MAX_ITEMS];
    ORMEL_FLEXIBLE(ORMEL_PARA_BATCH_ITEM astItem[]);
} ORMEL_PARA_BATCH;
ORMEL_API ORMEL_MULTI_OBJECT *ORMEL_Multi_object_Init(const char *pcTableName, int32_t iRecNum);
ORMEL_API void ORMEL_Multi_object_UnInit(ORMEL_MULTI_OBJECT *pstMulti);
ORMEL_API uint32_t ORMEL_PatchInsertRecForConn2(void *pConn, ORMEL_MULTI_OBJECT *pstMulti);
ORMEL_API uint32_t ORMEL_PatchInsertRecFormObj(ORMEL_MULTI_OBJECT *pstMulti);
ORMEL_API uint32_t ORMEL_PatchInsertRecFormObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_MULTI_OBJECT *pstMulti);
ORMEL_API ORMEL_PARA_BATCH *ORMEL_BatchInsert_Para_Malloc(int32_t iItemNum, const ORMEL_MULTI_OBJECT *pstMulti);
ORMEL_API void ORMEL_BatchInsert_Para_Free(ORMEL_PARA_BATCH *pstBatch);
ORMEL_API uint32_t ORMEL_SetBatchParaByObject(ORMEL_PARA_BATCH *pstBatch, const ORMEL_MULTI_OBJECT *pstMulti,
                                              const ORMEL_RES_ATT *pstResAtt);
ORMEL_API void ORMEL_SetBatchParaData(ORMEL_PARA_BATCH_ITEM *pstItem, const void *pValue, uint32_t uiLen,
                                      uint32_t uiType, uint32_t uiRecIndex);
ORMEL_API void ORMEL_SetBatchParaLobData(ORMEL_PARA_BATCH_ITEM *pstItem, void *pValue, uint32_t uiLen, uint32_t uiType,
                                         uint32_t uiRecIndex);
ORMEL_API DB_RESULT *dbPatchInsertRec(void *pConn, const char *pcTableName, const ORMEL_PARA_BATCH *pstBatch);
ORMEL_API uint32_t dbBatchWriteLob(void *pStmt, uint32_t uiPos, const ORMEL_PARA_BATCH_ITEM *pstItem, void *pLobSlots,
                                   uint16_t *pusSlotLengths);
ORMEL_END_DECLS
#endif
