/* Batch parameters: the values of many rows, column by column. */
#ifndef ORMELDB_BATCH_H
#define ORMELDB_BATCH_H

#include "dao.h"

ORMEL_BEGIN_DECLS

/* One column of a batch. 48 bytes. */
typedef struct ORMEL_PARA_BATCH_ITEM {
    uint32_t type;     /* client type id */
    uint32_t recIndex; /* index of the last row stored */
    uint32_t arrlen;   /* values in the column, one for each row */
    uint32_t maxlen;   /* the column's size: the width of a text or byte value */
    void *data;        /* values back to back; NULL for large objects */
    uint16_t *ind;     /* their lengths */
    void **lobArray;   /* large objects only: the rows' values, borrowed */
    uint32_t *lobLen;  /* large objects only: their lengths */
} ORMEL_PARA_BATCH_ITEM;

/* A batch. 264 bytes and 48 for each column, in one block. */
typedef struct ORMEL_PARA_BATCH {
    uint32_t uiRecNum; /* rows */
    int32_t itemNum;   /* columns */
    const char *name[ORMEL_MAX_ITEMS];
    ORMEL_FLEXIBLE(ORMEL_PARA_BATCH_ITEM astItem[]);
} ORMEL_PARA_BATCH;

ORMEL_END_DECLS

#endif
