#ifndef ORMELDB_CACHE_H
#define ORMELDB_CACHE_H
#include "base.h"
#include "tree.h"
#include <pthread.h>
ORMEL_BEGIN_DECLS
#ifdef PTHREAD_RWLOCK_INITIALIZER
typedef pthread_rwlock_t ORMEL_CACHE_LOCK;
#else
typedef union ORMEL_CACHE_LOCK {
    unsigned char aucSpace[56];
    long lAlign;
} ORMEL_CACHE_LOCK;
#endif
typedef void (*ORMEL_CACHE_SHOW)(const void *pData);
typedef struct ORMEL_CACHE_MGR {
    int32_t iCount;
    int32_t iMax;
    ORMEL_CACHE_LOCK rwlock;
    ORMEL_AVL_TREE stTree;
    ORMEL_CACHE_SHOW pfnShow;
} ORMEL_CACHE_MGR;
typedef struct ORMEL_CACHE_NODE {
    ORMEL_AVL_NODE stNode;
    uint32_t uiLen;
    ORMEL_FLEXIBLE(uint8_t aucData[]);
} ORMEL_CACHE_NODE;
ORMEL_API int ORMEL_CacheInit(ORMEL_CACHE_MGR *pstCache, ORMEL_AVL_CMP pfnCmp, ORMEL_CACHE_SHOW pfnShow);
ORMEL_API int ORMEL_CacheUnInit(ORMEL_CACHE_MGR *pstCache);
ORMEL_API int ORMEL_CacheClear(ORMEL_CACHE_MGR *pstCache);
ORMEL_API void *ORMEL_CacheFind(ORMEL_CACHE_MGR *pstCache, const void *pKey);
ORMEL_API uint32_t ORMEL_CacheAdd(ORMEL_CACHE_MGR *pstCache, const void *pData, uint32_t uiLength);
ORMEL_API uint32_t ORMEL_CacheDel(ORMEL_CACHE_MGR *pstCache, const void *pKey);
ORMEL_API int ORMEL_CacheShow(ORMEL_CACHE_MGR *pstCache);
ORMEL_API ORMEL_CACHE_NODE *ORMEL_CacheNodeCreat(ORMEL_CACHE_MGR *pstCache, const void *pData, uint32_t uiLength);
ORMEL_API void ORMEL_CacheNodeDestory(ORMEL_CACHE_NODE *pstNode);
ORMEL_API uint32_t ORMEL_CacheNodeInsert(ORMEL_CACHE_MGR *pstCache, ORMEL_CACHE_NODE *pstNode);
ORMEL_API int32_t ORMEL_CacheNodeRemove(ORMEL_CACHE_MGR *pstCache, ORMEL_CACHE_NODE *pstNode);
ORMEL_END_DECLS
#endif
