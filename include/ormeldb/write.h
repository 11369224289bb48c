/*
 * Writing: insert, delete and update, by records and by objects.
 *
 * ForConn works on the caller's connection and does not commit. The plain variant opens a connection of its own,
 * commits when all went well, and closes it: a failed call leaves nothing behind, unless it was the commit whose answer
 * got lost: ORMEL_LastError then says that the outcome is unknown. ForTrans works on a transaction slot, which its
 * owner commits or rolls back. A connection or slot is used by one thread at a time; the plain ones by any number of
 * threads.
 *
 * All return 0; 97 when a required pointer is NULL; 255 when the table cannot be described; 1 when the record or the
 * conditions do not fit (see ORMEL_ParaFieldUpdateByDsbuf and ORMEL_ParaCondUpdateByCond), before anything is sent; 211
 * when there is no connection or the statement fails; the plain ones also what a refused commit returned, the number of
 * records being stored by then. Forms with objects return 125 instead of 255, and 98 when an object is refused (see
 * ORMEL_ObjectCheck).
 */
#ifndef ORMELDB_WRITE_H
#define ORMELDB_WRITE_H

#include "dao.h"
#include "trans.h"

ORMEL_BEGIN_DECLS

/* Inserts the buffer's first record. The buffer is only read. */
ORMEL_API uint32_t ORMEL_InsertRecForConn(void *pConn, const char *pcTableName, const ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_InsertRec(const char *pcTableName, const ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_InsertRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName,
                                           const ORMEL_RECORD_BUFFER *pstDsbuf);

/* Deletes the records that meet the conditions (NULL or none: all of them) and stores how many through puiRecNum. */
ORMEL_API uint32_t ORMEL_DeleteRecForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                          uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_DeleteRec(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_DeleteRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                           uint32_t *puiRecNum);

/*
 * Sets the selected columns (NULL: all) of the records that meet the conditions (NULL or none: all records) to the
 * values in the buffer's first record, which has the table's whole layout, and stores how many through puiRecNum.
 */
ORMEL_API uint32_t ORMEL_UpdateRecForConn(void *pConn, const char *pcTableName, const ORMEL_FIELD_SELECT *pstFields,
                                          const ORMEL_RECORD_BUFFER *pstDsbuf, const ORMEL_COND *pstCond,
                                          uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRec(const char *pcTableName, const ORMEL_FIELD_SELECT *pstFields,
                                   const ORMEL_RECORD_BUFFER *pstDsbuf, const ORMEL_COND *pstCond, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName,
                                           const ORMEL_FIELD_SELECT *pstFields, const ORMEL_RECORD_BUFFER *pstDsbuf,
                                           const ORMEL_COND *pstCond, uint32_t *puiRecNum);

/* --- By objects. They stay their caller's; the check notes the columns' entries in them. --- */

/* Inserts one row of the object's items; columns that it does not name get their defaults. */
ORMEL_API uint32_t ORMEL_InsertRecForConn2(void *pConn, ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_InsertRecFormObj(ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_InsertRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj);

/*
 * Deletes the rows that meet all items (none: all rows) and stores how many through puiRecNum. An item without a value
 * is refused with 98.
 */
ORMEL_API uint32_t ORMEL_DeleteRecForConn2(void *pConn, ORMEL_OBJECT *pstObj, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_DeleteRecByObj(ORMEL_OBJECT *pstObj, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_DeleteRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj, uint32_t *puiRecNum);

/*
 * Sets the columns that the first object names in the rows that meet all items of the second (NULL or no items: all
 * rows) and stores how many through puiRecNum. The first names the table. Both together have at most 32 items, else 1.
 */
ORMEL_API uint32_t ORMEL_UpdateRecForConn2(void *pConn, ORMEL_OBJECT *pstSetObj, ORMEL_OBJECT *pstCondObj,
                                           uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRecByObj(ORMEL_OBJECT *pstSetObj, ORMEL_OBJECT *pstCondObj, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_UpdateRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstSetObj,
                                                ORMEL_OBJECT *pstCondObj, uint32_t *puiRecNum);

ORMEL_END_DECLS

#endif
