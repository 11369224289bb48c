#ifndef ORMELDB_RES_ATT_H
#define ORMELDB_RES_ATT_H
#include "base.h"
#include "object.h"
ORMEL_BEGIN_DECLS
struct ORMEL_CACHE_MGR;
typedef struct ORMEL_RES_ATT_FIELD {
    char attname[ORMEL_NAME_SIZE];
    int32_t atttypid;
    int32_t attlen;
    int32_t atttypmod;
    int32_t len;
    int32_t offset;
    int32_t format;
    int32_t attcolid;
} ORMEL_RES_ATT_FIELD;
typedef struct ORMEL_RES_ATT {
    int32_t iAttNum;
    char acTableName[ORMEL_NAME_SIZE];
    ORMEL_FLEXIBLE(ORMEL_RES_ATT_FIELD astField[]);
} ORMEL_RES_ATT;
ORMEL_API extern ORMEL_RES_ATT *g_pstResAtt;
ORMEL_API ORMEL_RES_ATT *ORMEL_CreatResAtt(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj);
ORMEL_API void ORMEL_DestoryResAtt(ORMEL_RES_ATT *pstResAtt);
ORMEL_API ORMEL_RES_ATT *ORMEL_ResAttCreate(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj);
ORMEL_API void ORMEL_ResAttFree(ORMEL_RES_ATT *pstResAtt);
ORMEL_API void ORMEL_ResAttShow(const void *pstResAtt);
ORMEL_API int ORMEL_ResAttCmp(const void *pstA, const void *pstB);
ORMEL_API uint32_t ORMEL_GetFieldIdByNameFromResAttr(const ORMEL_RES_ATT *pstResAtt, const char *pcName);
ORMEL_API ORMEL_RES_ATT_FIELD *ORMEL_GetResAttInfoByName(ORMEL_RES_ATT *pstResAtt, const char *pcName);
ORMEL_API uint32_t ORMEL_GetAllFieldByRes(const ORMEL_RES_ATT *pstResAtt, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                          uint8_t *pucNum);
ORMEL_API int ORMEL_ResAttNeedCache(void);
ORMEL_API struct ORMEL_CACHE_MGR *ORMEL_ResAttrCacheMgrGet(void);
ORMEL_API uint32_t ORMEL_ResAttPush(ORMEL_RES_ATT *pstResAtt);
ORMEL_API ORMEL_RES_ATT *ORMEL_ResAttGet(const char *pcTableName);
ORMEL_API uint32_t ORMEL_ResAttMgrInit(void);
ORMEL_API int ORMEL_ResAttMgrUnInit(void);
ORMEL_END_DECLS
#endif
