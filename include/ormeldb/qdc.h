/*
 * libqdclient: the database client that the access layer calls. Installed as ormeldb/qdc.h for those who bring a client
 * of their own; docs/engines.md says what such a client must keep to.
 *
 * Functions return 0 for success unless said otherwise. libormeldb.so leaves these names undefined and finds them when
 * it is loaded. A connection and all that belongs to it is used by one thread at a time.
 */
#ifndef ORMELDB_QDC_H
#define ORMELDB_QDC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Attributes of connections and statements; all values are 32-bit. */
#define QDC_ATTR_TRANS 101u    /* connection: 0 begins a transaction */
#define QDC_ATTR_SSL_MODE 112u /* connection, before it is opened: 0 to 4 */
#define QDC_ATTR_PREFETCH 201u /* statement: rows that execute may read ahead */

/* A column of a result. 16 bytes. */
typedef struct QDC_COLUMN_DESC {
    const char *pcName;  /* NUL-terminated, owned by the statement */
    uint16_t usSize;     /* bytes that a value of the column takes at most */
    uint16_t usType;     /* client type id */
    uint8_t ucPrecision; /* decimal digits, 0 where it does not apply */
    uint8_t ucScale;
    uint8_t ucNullable; /* 1: the column takes NULL */
    uint8_t ucFormat;   /* 1: binary value of fixed width; 0: any length */
} QDC_COLUMN_DESC;

uint32_t qdc_alloc_conn(void **ppConn);
uint32_t qdc_set_conn_attr(void *pConn, uint32_t uiAttr, const void *pValue, uint32_t uiLen);
/* The address is "host:port". */
uint32_t qdc_connect(void *pConn, const char *pcAddress, const char *pcUser, const char *pcPassword);
uint32_t qdc_disconnect(void *pConn);
uint32_t qdc_free_conn(void *pConn);
uint32_t qdc_alloc_stmt(void *pConn, void **ppStmt);
uint32_t qdc_free_stmt(void *pStmt);
uint32_t qdc_set_stmt_attr(void *pStmt, uint32_t uiAttr, const void *pValue, uint32_t uiLen);
/* Placeholders in the text are a colon and a number from 1 on. */
uint32_t qdc_prepare(void *pStmt, const char *pcSql);
/*
 * Binds position uiPos, from 0, to the value, which stays the caller's until the statement has run. With a parameter
 * set of N rows pValue addresses N values uiLen bytes apart and pusRowLens their lengths; else pusRowLens is NULL.
 */
uint32_t qdc_bind_by_pos(void *pStmt, uint32_t uiPos, uint32_t uiType, void *pValue, uint32_t uiLen,
                         uint16_t *pusRowLens);
uint32_t qdc_set_paramset_size(void *pStmt, uint32_t uiRows);
uint32_t qdc_execute(void *pStmt);
/* Stores the rows fetched: 1, or 0 at the end. */
uint32_t qdc_fetch(void *pStmt, uint32_t *puiRows);
/* The count itself: rows a write matched, or rows of a query read ahead. */
uint32_t qdc_get_affected_rows(void *pStmt);
uint32_t qdc_get_column_count(void *pStmt, uint32_t *puiCount);
uint32_t qdc_desc_column_by_id(void *pStmt, uint32_t uiCol, QDC_COLUMN_DESC *pstDesc);
uint32_t qdc_desc_column_by_name(void *pStmt, const char *pcName, QDC_COLUMN_DESC *pstDesc);
/* A value of the current row, which stays the client's and valid until the next fetch; of a large object its locator.
 */
uint32_t qdc_get_column_by_id(void *pStmt, uint32_t uiCol, void **ppData, uint32_t *puiSize, uint32_t *puiIsNull);
/* Read a large object from a byte offset on. */
uint32_t qdc_read_clob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiChars, uint32_t *puiBytes, uint32_t *puiEof);
uint32_t qdc_read_blob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiBytes, uint32_t *puiEof);
/* Give a large-object parameter its value. */
uint32_t qdc_write_clob(void *pStmt, uint32_t uiPos, const void *pText, uint32_t uiLen, uint32_t *puiWritten);
uint32_t qdc_write_blob(void *pStmt, uint32_t uiPos, const void *pBytes, uint32_t uiLen);
uint32_t qdc_write_batch_clob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *pText, uint32_t uiLen,
                              uint32_t *puiWritten);
uint32_t qdc_write_batch_blob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *pBytes, uint32_t uiLen);
uint32_t qdc_commit(void *pConn);
uint32_t qdc_rollback(void *pConn);
/* The connection's last error, kept until its next failing call; the text is the client's. */
uint32_t qdc_get_error(void *pConn, uint32_t *puiCode, const char **ppcMessage);

#ifdef __cplusplus
}
#endif

#endif
