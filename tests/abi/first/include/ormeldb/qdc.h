#ifndef ORMELDB_QDC_H
#define ORMELDB_QDC_H
#include <stdint.h>
#ifdef __cplusplus
extern "C" {
#endif
#define QDC_ATTR_TRANS 101u
#define QDC_ATTR_SSL_MODE 112u
#define QDC_ATTR_PREFETCH 201u
typedef struct QDC_COLUMN_DESC {
    const char *pcName;
    uint16_t usSize;
    uint16_t usType;
    uint8_t ucPrecision;
    uint8_t ucScale;
    uint8_t ucNullable;
    uint8_t ucFormat;
} QDC_COLUMN_DESC;
uint32_t qdc_alloc_conn(void **ppConn);
uint32_t qdc_set_conn_attr(void *pConn, uint32_t uiAttr, const void *pValue, uint32_t uiLen);
uint32_t qdc_connect(void *pConn, const char *pcAddress, const char *pcUser, const char *pcPassword);
uint32_t qdc_disconnect(void *pConn);
uint32_t qdc_free_conn(void *pConn);
uint32_t qdc_alloc_stmt(void *pConn, void **ppStmt);
uint32_t qdc_free_stmt(void *pStmt);
uint32_t qdc_set_stmt_attr(void *pStmt, uint32_t uiAttr, const void *pValue, uint32_t uiLen);
uint32_t qdc_prepare(void *pStmt, const char *pcSql);
uint32_t qdc_bind_by_pos(void *pStmt, uint32_t uiPos, uint32_t uiType, void *pValue, uint32_t uiLen,
                         uint16_t *pusRowLens);
uint32_t qdc_set_paramset_size(void *pStmt, uint32_t uiRows);
uint32_t qdc_execute(void *pStmt);
uint32_t qdc_fetch(void *pStmt, uint32_t *puiRows);
uint32_t qdc_get_affected_rows(void *pStmt);
uint32_t qdc_get_column_count(void *pStmt, uint32_t *puiCount);
uint32_t qdc_desc_column_by_id(void *pStmt, uint32_t uiCol, QDC_COLUMN_DESC *pstDesc);
uint32_t qdc_desc_column_by_name(void *pStmt, const char *pcName, QDC_COLUMN_DESC *pstDesc);
uint32_t qdc_get_column_by_id(void *pStmt, uint32_t uiCol, void **ppData, uint32_t *puiSize, uint32_t *puiIsNull);
uint32_t qdc_read_clob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiChars, uint32_t *puiBytes, uint32_t *puiEof);
uint32_t qdc_read_blob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiBytes, uint32_t *puiEof);
uint32_t qdc_write_clob(void *pStmt, uint32_t uiPos, const void *pText, uint32_t uiLen, uint32_t *puiWritten);
uint32_t qdc_write_blob(void *pStmt, uint32_t uiPos, const void *pBytes, uint32_t uiLen);
uint32_t qdc_write_batch_clob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *pText, uint32_t uiLen,
                              uint32_t *puiWritten);
uint32_t qdc_write_batch_blob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *pBytes, uint32_t uiLen);
uint32_t qdc_commit(void *pConn);
uint32_t qdc_rollback(void *pConn);
uint32_t qdc_get_error(void *pConn, uint32_t *puiCode, const char **ppcMessage);
#ifdef __cplusplus
}
#endif
#endif
