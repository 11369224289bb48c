/*
 * Batches: many rows of one table inserted by one statement, all of them or none.
 *
 *     ORMEL_MULTI_OBJECT *parts = ORMEL_Multi_object_Init("parts", 1000);
 *     for (uint32_t i = 0; parts != NULL && i < parts->uiRecNum; i++) {
 *         ORMEL_ObjectInt32Set(&parts->astObject[i], "id", first + (int32_t)i);
 *         ORMEL_ObjectStrSet(&parts->astObject[i], "name", names[i]);
 *         ORMEL_ObjectBinarySet(&parts->astObject[i], "drawing", drawings[i].bytes, drawings[i].size);
 *     }
 *     uint32_t code = ORMEL_PatchInsertRecFormObj(parts);      // commits on its own
 *     ORMEL_Multi_object_UnInit(parts);
 *
 * Every object lists the same columns in the same order; ORMEL_ObjectNullSet stands for a value that a row lacks. A
 * container of n objects takes 32 + 1972 n bytes, and its values besides: load millions of rows in batches of a
 * thousand.
 */
#ifndef ORMELDB_BATCH_H
#define ORMELDB_BATCH_H

#include "dao.h"
#include "trans.h"

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

/* --- Containers ------------------------------------------------------------------------------------------------ */

/*
 * A container of iRecNum zeroed objects (below 1: none), each with the table's name, or NULL: no name, or no memory.
 * The caller fills the objects with the setters and releases all of it with ORMEL_Multi_object_UnInit. Its size is
 * counted in 32 bits: more than 1088987 objects end the process.
 */
ORMEL_API ORMEL_MULTI_OBJECT *ORMEL_Multi_object_Init(const char *pcTableName, int32_t iRecNum);
/* Clears the objects and frees the container. NULL: nothing. */
ORMEL_API void ORMEL_Multi_object_UnInit(ORMEL_MULTI_OBJECT *pstMulti);

/* --- Insertion ------------------------------------------------------------------------------------------------- */

/*
 * Inserts the rows of all objects, in the three variants of ormeldb/write.h. The container stays its caller's.
 *
 * Returns 0; 97 when a pointer is NULL; 125 when the table cannot be described; 255 when there are no objects; 98, with
 * an ERROR line, when an object is refused (see ORMEL_ObjectCheck), does not list the first one's columns in their
 * order or has a value of more than 65534 bytes in a column that is no large object, before anything is sent; 211 when
 * there is no connection, the first object has no items or the statement fails: no row is inserted, and the log tells
 * the row, from 0, in the database's words, which name its column where it is known; the
 * plain one also what a refused commit returned. Beware: 0 is returned as well when the memory for the columns' arrays
 * cannot be had, with an ERROR line, and nothing is inserted.
 */
ORMEL_API uint32_t ORMEL_PatchInsertRecForConn2(void *pConn, ORMEL_MULTI_OBJECT *pstMulti);
ORMEL_API uint32_t ORMEL_PatchInsertRecFormObj(ORMEL_MULTI_OBJECT *pstMulti);
ORMEL_API uint32_t ORMEL_PatchInsertRecFormObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_MULTI_OBJECT *pstMulti);

/* --- Columns of a batch: what the insertion is made of --------------------------------------------------------- */

/*
 * A batch of iItemNum columns, those of the first object's first items, which were checked, with arrays for the
 * container's rows. NULL: less than 0 columns, more than 32 or more than the first object has checked, or,
 * with an ERROR line, no memory. Sizes are counted in 32 bits: larger ones end the process. Free it with
 * ORMEL_BatchInsert_Para_Free.
 */
ORMEL_API ORMEL_PARA_BATCH *ORMEL_BatchInsert_Para_Malloc(int32_t iItemNum, const ORMEL_MULTI_OBJECT *pstMulti);
/* Frees a batch and its arrays; large objects and names are the container's. NULL: nothing. */
ORMEL_API void ORMEL_BatchInsert_Para_Free(ORMEL_PARA_BATCH *pstBatch);

/*
 * Fills a batch that was made for this container. Large objects and names are pointed at and must outlive it. The
 * descriptor is not read. Returns 0; 98 as the insertion does; 1 when a pointer is NULL, the first object has more
 * items than the batch has columns, or there are more objects than it was made for. With 98 and 1 nothing is written.
 */
ORMEL_API uint32_t ORMEL_SetBatchParaByObject(ORMEL_PARA_BATCH *pstBatch, const ORMEL_MULTI_OBJECT *pstMulti,
                                              const ORMEL_RES_ATT *pstResAtt);
/*
 * Stores the value of one row in a column's arrays; NULL is SQL NULL. A value that does not fit leaves an empty element
 * and its length, which the database then refuses. Of large objects only the mark is stored; other type ids than the
 * client's are left out. Rows beyond arrlen, where it is not 0: nothing.
 */
ORMEL_API void ORMEL_SetBatchParaData(ORMEL_PARA_BATCH_ITEM *pstItem, const void *pValue, uint32_t uiLen,
                                      uint32_t uiType, uint32_t uiRecIndex);
/*
 * Notes the large object of one row, which stays the caller's: its address and length. The column's own address stands
 * for SQL NULL. Other types: nothing.
 */
ORMEL_API void ORMEL_SetBatchParaLobData(ORMEL_PARA_BATCH_ITEM *pstItem, void *pValue, uint32_t uiLen, uint32_t uiType,
                                         uint32_t uiRecIndex);

/*
 * Prepares, binds and executes the insert of a filled batch. The result's row count is the rows inserted, also 0; NULL
 * on failure, with the cause in the log, and, before anything is sent, when a pointer is NULL, there are less than 1 or
 * more than 32 columns, one has fewer values than the batch has rows, or one of large objects lacks its arrays.
 */
ORMEL_API DB_RESULT *dbPatchInsertRec(void *pConn, const char *pcTableName, const ORMEL_PARA_BATCH *pstBatch);
/*
 * Binds a column of large objects to arrlen slots of 16 bytes each, zeroed, and as many lengths, each 16, both of which
 * must outlive the execution, and writes the values. From the first row whose address is NULL on, nothing is written
 * and a line logged: these rows are SQL NULL. Returns 0; 0xFFFFFFFF when an argument is NULL; the client's status.
 */
ORMEL_API uint32_t dbBatchWriteLob(void *pStmt, uint32_t uiPos, const ORMEL_PARA_BATCH_ITEM *pstItem, void *pLobSlots,
                                   uint16_t *pusSlotLengths);

ORMEL_END_DECLS

#endif
