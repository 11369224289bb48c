/*
 * A cache of byte blocks in key order. It copies what it is given, owns the copies and hands out pointers to them. Not
 * included by ormeldb.h, because its names are generic.
 *
 * Any thread may find, add, show, clear and delete; initialising and ending it excludes all else.
 */
#ifndef ORMELDB_CACHE_H
#define ORMELDB_CACHE_H

#include <pthread.h>

#include "base.h"
#include "tree.h"

ORMEL_BEGIN_DECLS

#ifdef PTHREAD_RWLOCK_INITIALIZER
typedef pthread_rwlock_t ORMEL_CACHE_LOCK;
#else
/* Strict ISO C hides the POSIX type; this one has its size and alignment. */
typedef union ORMEL_CACHE_LOCK {
    unsigned char aucSpace[56];
    long lAlign;
} ORMEL_CACHE_LOCK;
#endif

/* Shows the data of one entry. */
typedef void (*ORMEL_CACHE_SHOW)(const void *pData);

/* A cache. 104 bytes. */
typedef struct ORMEL_CACHE_MGR {
    int32_t iCount; /* entries */
    int32_t iMax;   /* capacity; -1: unlimited */
    ORMEL_CACHE_LOCK rwlock;
    ORMEL_AVL_TREE stTree; /* key offset 28, node offset 0 */
    ORMEL_CACHE_SHOW pfnShow;
} ORMEL_CACHE_MGR;

/* An entry: 28 bytes and the data. Pointers that the cache hands out point at the data. */
typedef struct ORMEL_CACHE_NODE {
    ORMEL_AVL_NODE stNode;
    uint32_t uiLen;
    ORMEL_FLEXIBLE(uint8_t aucData[]);
} ORMEL_CACHE_NODE;

/* Makes an empty cache without bound; pfnShow may be NULL. 0; 1 when the cache or pfnCmp is NULL. */
ORMEL_API int ORMEL_CacheInit(ORMEL_CACHE_MGR *pstCache, ORMEL_AVL_CMP pfnCmp, ORMEL_CACHE_SHOW pfnShow);
/* Frees every entry. The cache can be shown, searched and cleared afterwards. 0, or the code of the lock. */
ORMEL_API int ORMEL_CacheUnInit(ORMEL_CACHE_MGR *pstCache);
/* Frees every entry; 0, or the code of the lock. */
ORMEL_API int ORMEL_CacheClear(ORMEL_CACHE_MGR *pstCache);
/* The data of the entry that compares equal to the key block, or NULL. It stays until the entry is taken out. */
ORMEL_API void *ORMEL_CacheFind(ORMEL_CACHE_MGR *pstCache, const void *pKey);
/*
 * Adds a copy of uiLength bytes. 0, also when an equal entry is there, which is kept as it is; 1 when the cache is
 * full or was never initialised, or nothing can be allocated.
 */
ORMEL_API uint32_t ORMEL_CacheAdd(ORMEL_CACHE_MGR *pstCache, const void *pData, uint32_t uiLength);
/* Takes the entry that compares equal to the key block out and frees it; 0, also when there is none. */
ORMEL_API uint32_t ORMEL_CacheDel(ORMEL_CACHE_MGR *pstCache, const void *pKey);
/* Logs the counters at TRACE and shows every entry in order; 0, or the code of the lock. */
ORMEL_API int ORMEL_CacheShow(ORMEL_CACHE_MGR *pstCache);

/* The steps of the above, for callers that hold the write lock. */

/* A node with a copy of the data, or NULL. */
ORMEL_API ORMEL_CACHE_NODE *ORMEL_CacheNodeCreat(ORMEL_CACHE_MGR *pstCache, const void *pData, uint32_t uiLength);
/* Frees a node that is in no cache. NULL: nothing. */
ORMEL_API void ORMEL_CacheNodeDestory(ORMEL_CACHE_NODE *pstNode);
/* Links a node and counts it; 0, or 1 when an equal entry is there. */
ORMEL_API uint32_t ORMEL_CacheNodeInsert(ORMEL_CACHE_MGR *pstCache, ORMEL_CACHE_NODE *pstNode);
/* Unlinks a node without freeing it; the entries that are left. */
ORMEL_API int32_t ORMEL_CacheNodeRemove(ORMEL_CACHE_MGR *pstCache, ORMEL_CACHE_NODE *pstNode);

ORMEL_END_DECLS

#endif
