/*
 * Reading: counts, selects into record buffers, column names.
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
 * ORMEL_CreatDsbufByRes: the first record is written whole, usRecNum tells how many there are. uiReserved is ignored.
 *
 * Returns 0, also when nothing matches (usRecNum is then 0); 97 when another pointer is NULL; 255 when the table cannot
 * be described; 1 when the conditions are refused; 211 when there is no connection or the statement fails.
 */
ORMEL_API uint32_t ORMEL_SelectRecForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                          uint32_t uiReserved, ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_SelectRec(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t uiReserved,
                                   ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_SelectRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                           uint32_t uiReserved, ORMEL_RECORD_BUFFER *pstDsbuf);

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
