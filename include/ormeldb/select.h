/*
 * Reading: counts, selects into record buffers and results, column names.
 *
 * Operations come in up to three variants. ForConn works on the caller's connection; the plain one opens a connection
 * of its own and closes it; ForTrans works on a transaction slot. A connection or slot is used by one thread at a
 * time; the plain ones by any number of threads.
 */
#ifndef ORMELDB_SELECT_H
#define ORMELDB_SELECT_H

#include "result.h"
#include "trans.h"

ORMEL_BEGIN_DECLS

/*
 * Counts the records that meet the conditions (NULL or none: all records) into *puiRecNum.
 *
 * Returns 0; 97 when another pointer is NULL; 1 when the conditions are refused (see ORMEL_ParaCondUpdateByCond); 211
 * when there is no connection, the table cannot be described or the statement fails. *puiRecNum is written with 0
 * only.
 */
ORMEL_API uint32_t ORMEL_LocalExistRecordForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                                 uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_LocalExistRecord(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t *puiRecNum);
ORMEL_API uint32_t ORMEL_LocalExistRecordForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName,
                                                  const ORMEL_COND *pstCond, uint32_t *puiRecNum);

/*
 * Counts by a ready parameter list, whose conditions stand in its first slots. Returns 0; 97 when the connection, the
 * list or puiRecNum is NULL; 211 when the statement fails.
 */
ORMEL_API uint32_t ORMEL_GetBatchSelectCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara,
                                             uint32_t *puiRecNum);

/*
 * Selects the records that meet the conditions (NULL: all) into the record buffer, in the way of
 * ORMEL_CreatDsbufByRes: the first record is written whole, usRecNum tells how many there are, modulo 65536: where
 * there may be as many, ask ORMEL_LocalExistRecord. uiReserved is ignored.
 *
 * Returns 0, also when nothing matches (usRecNum is then 0, and nothing is written); 97 when another pointer is NULL;
 * 255 when the table cannot be described; 1 when the conditions are refused; 211 when there is no connection or the
 * statement fails.
 */
ORMEL_API uint32_t ORMEL_SelectRecForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                          uint32_t uiReserved, ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_SelectRec(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t uiReserved,
                                   ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_SelectRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                           uint32_t uiReserved, ORMEL_RECORD_BUFFER *pstDsbuf);

/*
 * Selects the records that meet the conditions (NULL: all) into a result, at most PREFETCH_ROWS of them: where the
 * table has more, the log says at INFO that reading stopped. uiReserved is ignored. What the result held before is not
 * freed. Clear it with ORMEL_SelectResultClear; its descriptor is the cached one, or NULL where the cache is full.
 *
 * Returns 0, also when nothing matches; 97 when another pointer is NULL; 255 when the table cannot be described or the
 * statement fails; 1 when the conditions are refused; 211 when there is no connection. The result is written with 0
 * only.
 */
ORMEL_API uint32_t ORMEL_SelectRecForConn2(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                           uint32_t uiReserved, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRec2(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t uiReserved,
                                    ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRecForTrans2(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                            uint32_t uiReserved, ORMEL_SELECT_RESULT *pstResult);

/*
 * Selects by an object: the rows that meet all its items, the columns of its select list, its page. At most
 * PREFETCH_ROWS rows, as above. The object stays its caller's. Clear the result with ORMEL_SelectResultClear. With a
 * select list the result's descriptor describes the selected columns, and the table is described anew by each call.
 *
 * Returns 0, also when nothing matches; 97 when a pointer is NULL; 98 when the object is refused (see
 * ORMEL_ObjectCheck; an item without a value too); 255 when the table cannot be described or the statement fails.
 * Without a connection, the plain form returns 255 and the one on a slot 0xFFFFFFFF. The result is written with 0 only.
 * Where the selected columns cannot be described although the rows were read, the rows are kept until the process ends.
 */
ORMEL_API uint32_t ORMEL_SelectRecForConn3(void *pConn, ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRecByObj(ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj,
                                                ORMEL_SELECT_RESULT *pstResult);

/*
 * The same, counted first: all rows, however many, up to the number there were when they were counted. The count
 * ignores the page, which the select then keeps to, and room is made for every row that was counted. The result's
 * descriptor is the whole table's, so with a select list use its functions by position.
 *
 * Returns as above, 211 when the count fails. Where a row behind the first PREFETCH_ROWS cannot be read, the rows
 * before it are returned with 0, and the log has "qdc_fetch failed": a caller who must know counts once more.
 */
ORMEL_API uint32_t ORMEL_SelectBatchRecForConn(void *pConn, ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_SelectBatchRecByObj(ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult);

/*
 * Copies the records of a result from uiStartIndex on into a record buffer: as many as its usRecNum says, each
 * usRecLen bytes, into pucData, which must hold them all. Returns 0; 97 when an argument, or the result's
 * descriptor or rows pointer, is NULL; 1 when pucData is NULL, and, with an ERROR line, when usRecLen is not the length
 * of the descriptor's record or the result has fewer records.
 */
ORMEL_API uint32_t ORMEL_ResultConvertDsBuf(const ORMEL_SELECT_RESULT *pstResult, ORMEL_RECORD_BUFFER *pstDsbuf,
                                            uint32_t uiStartIndex);

/*
 * Copies the names of a table's columns, in order, into iMax entries of 28 bytes and stores their number, modulo 256,
 * through pucNum: from the cache alone, over a connection, or from the cache and else over a connection of its own.
 *
 * Returns 0; 97 when pConn, pcTableName or pucNum is NULL; 1, with nothing written, when the table has more than iMax
 * columns or acNames is NULL; 255 when the table is not cached (the first form) or cannot be described; 211 when there
 * is no connection (the third).
 */
ORMEL_API uint32_t ORMEL_GetAllFieldForCache(const char *pcTableName, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                             uint8_t *pucNum);
ORMEL_API uint32_t ORMEL_GetAllFieldForConn(void *pConn, const char *pcTableName, char acNames[][ORMEL_NAME_SIZE],
                                            int32_t iMax, uint8_t *pucNum);
ORMEL_API uint32_t ORMEL_AllFieldsGet(const char *pcTableName, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                      uint8_t *pucNum);

ORMEL_END_DECLS

#endif
