/* Request objects: one statement described without a fixed-layout record. */
#ifndef ORMELDB_OBJECT_H
#define ORMELDB_OBJECT_H

#include "base.h"

ORMEL_BEGIN_DECLS

struct ORMEL_RES_ATT_FIELD;

/*
 * These records are packed to 4 bytes and shared with their callers to the byte. Use members through the record: a
 * pointer to one of the pointer members is not aligned.
 */
#pragma pack(push, 4)

/* One named value. 52 bytes. */
typedef struct ORMEL_OBJECT_ITEM {
    char acName[ORMEL_NAME_SIZE];        /* column name */
    uint32_t uiLength;                   /* bytes of the value */
    void *pValue;                        /* heap copy of the value, owned by the object */
    uint32_t uiOp;                       /* operator code where the item is a condition; clearing the object keeps it */
    struct ORMEL_RES_ATT_FIELD *pstInfo; /* the column's descriptor entry, set by the check of the object */
} ORMEL_OBJECT_ITEM;

/* A request. 1972 bytes; zeroed by its owner before the first use. */
typedef struct ORMEL_OBJECT {
    uint32_t uiReserved;
    int32_t iItemNum;                              /* items in use, 0 to 32 */
    char acTableName[ORMEL_NAME_SIZE];             /* table name */
    ORMEL_OBJECT_ITEM astItem[ORMEL_MAX_ITEMS];    /* values in the order in which they were set */
    int32_t iSelectFieldNum;                       /* select fields in use, 0 to 32 */
    char *apcSelectField[ORMEL_MAX_SELECT_FIELDS]; /* column names, heap blocks of 28 bytes owned by the object */
    uint32_t isLimit;                              /* not 0: the select is paged */
    uint32_t iRowCounts;                           /* rows of a page */
    uint32_t iOffset;                              /* rows to skip */
} ORMEL_OBJECT;

/* A batch of requests for one table. 32 bytes and the objects, back to back. */
typedef struct ORMEL_MULTI_OBJECT {
    char acTableName[ORMEL_NAME_SIZE];
    uint32_t uiRecNum; /* objects that follow */
    ORMEL_FLEXIBLE(ORMEL_OBJECT astObject[]);
} ORMEL_MULTI_OBJECT;

#pragma pack(pop)

ORMEL_END_DECLS

#endif
