/* Table attribute descriptors: the layout of a table's records, learnt from the database and kept by name. */
#ifndef ORMELDB_RES_ATT_H
#define ORMELDB_RES_ATT_H

#include "base.h"
#include "object.h"

ORMEL_BEGIN_DECLS

struct ORMEL_CACHE_MGR;

/* One column. 56 bytes; the name comes first, so that a pointer to the entry is a pointer to its name. */
typedef struct ORMEL_RES_ATT_FIELD {
    char attname[ORMEL_NAME_SIZE]; /* column name, cut to 27 characters */
    int32_t atttypid;              /* client type id */
    int32_t attlen;                /* column size in bytes */
    int32_t atttypmod;             /* 0 */
    int32_t len;                   /* bytes of the field in a record */
    int32_t offset;                /* byte offset of the field in a record: the sum of the lengths before it */
    int32_t format;                /* 1: binary value of fixed width; 0: any length */
    int32_t attcolid;              /* position of the column, from 0 */
} ORMEL_RES_ATT_FIELD;

/* A table's columns. 32 bytes and 56 for each column, in one block. */
typedef struct ORMEL_RES_ATT {
    int32_t iAttNum;                   /* columns */
    char acTableName[ORMEL_NAME_SIZE]; /* as the caller named the table, cut to 27 characters */
    ORMEL_FLEXIBLE(ORMEL_RES_ATT_FIELD astField[]);
} ORMEL_RES_ATT;

/* Not used by the library; NULL. */
ORMEL_API extern ORMEL_RES_ATT *g_pstResAtt;

/*
 * The descriptor of a table: the cached one, else a fresh one learnt over the connection (of the request's select
 * fields only, where a request with select fields is given). Give it back with ORMEL_DestoryResAtt, never free it.
 * NULL when the table cannot be described; the log says why. One thread per connection.
 */
ORMEL_API ORMEL_RES_ATT *ORMEL_CreatResAtt(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj);

/*
 * Gives a descriptor back: a fresh one goes into the cache, or is freed where its table is cached already; the cached
 * one stays. The pointer is not to be used afterwards unless it is the cached one. NULL: nothing. Any thread.
 */
ORMEL_API void ORMEL_DestoryResAtt(ORMEL_RES_ATT *pstResAtt);

/* As ORMEL_CreatResAtt, always fresh. */
ORMEL_API ORMEL_RES_ATT *ORMEL_ResAttCreate(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj);

/* Frees a descriptor that never reached the cache. NULL: nothing. */
ORMEL_API void ORMEL_ResAttFree(ORMEL_RES_ATT *pstResAtt);

/* Dumps a descriptor (ORMEL_RES_ATT) to the log at TRACE; shaped as a display callback of the cache. */
ORMEL_API void ORMEL_ResAttShow(const void *pstResAtt);

/* Compares two descriptors (ORMEL_RES_ATT) by table name, ignoring case; shaped as a comparison of the cache. */
ORMEL_API int ORMEL_ResAttCmp(const void *pstA, const void *pstB);

/* Position of the first column of that name, ignoring case; 0xFFFFFFFF if there is none or an argument is NULL. */
ORMEL_API uint32_t ORMEL_GetFieldIdByNameFromResAttr(const ORMEL_RES_ATT *pstResAtt, const char *pcName);

/* The same column's entry, which belongs to the descriptor; NULL if there is none or an argument is NULL. */
ORMEL_API ORMEL_RES_ATT_FIELD *ORMEL_GetResAttInfoByName(ORMEL_RES_ATT *pstResAtt, const char *pcName);

/*
 * Copies every column name into 28-byte entries and stores their number, modulo 256, through pucNum. Returns 0; 1,
 * with nothing written, when there are more columns than iMax entries or a pointer is NULL.
 */
ORMEL_API uint32_t ORMEL_GetAllFieldByRes(const ORMEL_RES_ATT *pstResAtt, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                          uint8_t *pucNum);

/* Whether descriptors are cached: 1. */
ORMEL_API int ORMEL_ResAttNeedCache(void);

/* The cache of descriptors (see ormeldb/cache.h). */
ORMEL_API struct ORMEL_CACHE_MGR *ORMEL_ResAttrCacheMgrGet(void);

/*
 * What ORMEL_DestoryResAtt does, with the cache's answer: 0, or 1 when the descriptor could not be kept (it is freed
 * all the same). NULL: 0.
 */
ORMEL_API uint32_t ORMEL_ResAttPush(ORMEL_RES_ATT *pstResAtt);

/* The cached descriptor of a table, ignoring case, or NULL. It stays the cache's and valid until the stop. */
ORMEL_API ORMEL_RES_ATT *ORMEL_ResAttGet(const char *pcTableName);

/* Makes the cache ready; 0. Called by ORMEL_Init. Not for several threads at once. */
ORMEL_API uint32_t ORMEL_ResAttMgrInit(void);

/* Frees every cached descriptor; 0, or the code of a lock. Called by ORMEL_UnInit. Not for several threads at once. */
ORMEL_API int ORMEL_ResAttMgrUnInit(void);

ORMEL_END_DECLS

#endif
