/*
 * Cursors: a table read one row at a time, over a transaction slot that stays taken meanwhile. However large the table,
 * one row is in memory, and the few that the client reads ahead.
 *
 *     ORMEL_TRANS *cursor = ORMEL_BeginSelect("parts", __func__, __LINE__);
 *     if (cursor == NULL)
 *         return;                                      // the log says why; there is nothing to end
 *     ORMEL_SELECT_RESULT row = {0};
 *     uint32_t code;
 *     while ((code = ORMEL_FetchSelectRecEx(cursor, &row)) == ORMEL_OK) {
 *         const char *name = ORMEL_ResultStrGet(&row, 0, "name");
 *         puts(name != NULL ? name : "(NULL)");
 *         ORMEL_SelectResultClearForFetch(&row);       // never ORMEL_SelectResultClear
 *     }
 *     ORMEL_SelectResultClearForFetch(&row);           // the end of data has an empty result
 *     ORMEL_EndSelect(cursor);                         // always, also after an error
 *     if (code != ORMEL_END_OF_DATA)
 *         report(code);
 *
 * There are sixteen slots in a process, shared with explicit transactions. A slot is used by one thread at a time;
 * other statements may run on its connection between two fetches. What they change in the table that is being read may
 * be seen or not, and a commit or rollback of that connection ends the reading: rows that the client has read ahead
 * still come, and behind them the end or an error.
 */
#ifndef ORMELDB_CURSOR_H
#define ORMELDB_CURSOR_H

#include "result.h"
#include "trans.h"

ORMEL_BEGIN_DECLS

/*
 * Begins to read a whole table; the slot, or NULL: all slots are taken, there is no connection, the table cannot be
 * described or read. A failed begin leaves nothing behind; its transaction, which has written nothing, is ended by a
 * commit. pcFunc and uiLine name the caller in the dump of the slots; pcFunc is kept by address. Any thread.
 */
ORMEL_API ORMEL_TRANS *ORMEL_BeginSelect(const char *pcTableName, const char *pcFunc, uint32_t uiLine);

/*
 * Begins to read by an object: the rows that meet all its items, the columns of its select list, its page. Rows are
 * laid out by the selected columns, in the list's order. The object may be cleared at once. NULL as above, and where
 * the object is refused (see ORMEL_ObjectCheck).
 */
ORMEL_API ORMEL_TRANS *ORMEL_BeginSelectSpecifyField(ORMEL_OBJECT *pstObj, const char *pcFunc, uint32_t uiLine);

/*
 * Opens the statement of an object on a slot that holds a connection and the table's descriptor, and stores it there;
 * ORMEL_BeginSelectSpecifyField does this itself. Returns 0; 97 when a pointer is NULL; 255 when the object is refused
 * or the statement fails.
 */
ORMEL_API uint32_t dbBeginFetchSpecifyField(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj);

/*
 * Fetches the next row as the buffer's first record, in the way of ORMEL_CreatDsbufByRes; usRecNum is then 1 (0 where
 * pucData is NULL).
 *
 * Returns 0; 0x202A0056 at the end of data, with usRecNum 0; 97 when a pointer is NULL; 211 when the row cannot be
 * read; 255, with an ERROR line, when the slot has no connection, statement or descriptor.
 */
ORMEL_API uint32_t ORMEL_FetchSelectRec(ORMEL_TRANS *pstTrans, ORMEL_RECORD_BUFFER *pstDsbuf);

/*
 * Fetches the next row as a result of one record, or at the end of data an empty one. What the result held before is
 * not freed. Release it with ORMEL_SelectResultClearForFetch: its descriptor belongs to the slot and is valid until
 * that ends.
 *
 * Returns 0; 0x202A0056 at the end of data; 97 when a pointer is NULL; 255, with an ERROR line and the result
 * untouched, when the row cannot be read or the slot has no connection, statement or descriptor.
 */
ORMEL_API uint32_t ORMEL_FetchSelectRecEx(ORMEL_TRANS *pstTrans, ORMEL_SELECT_RESULT *pstResult);

/* Ends the cursor: what ORMEL_CommitTrans does and returns. The slot is not to be used afterwards. */
ORMEL_API uint32_t ORMEL_EndSelect(ORMEL_TRANS *pstTrans);

ORMEL_END_DECLS

#endif
