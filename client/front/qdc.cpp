// The C border of the client: handles become objects, exceptions become statuses.
#include "dao/qdc.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "connection.h"
#include "errors.h"

using ormel::client::ConnectionHandle;
using ormel::client::Error;
using ormel::client::fail;
using ormel::client::kMisuse;
using ormel::client::kOutOfMemory;
using ormel::client::Parameter;
using ormel::client::StatementHandle;

namespace {

constexpr uint32_t kOk = 0;
constexpr uint32_t kFailed = 1;
constexpr uint32_t kClob = 13;
constexpr uint32_t kBlob = 14;

// Runs a call's body. What it throws becomes the connection's error.
template <class Body> uint32_t guarded(ConnectionHandle &conn, Body body) noexcept {
    try {
        body();
        return kOk;
    } catch (Error &error) {
        conn.setError(error.code, std::move(error.message));
    } catch (const std::bad_alloc &) {
        conn.setError(kOutOfMemory, "out of memory");
    } catch (const std::exception &) {
        conn.setError(kMisuse, "the client failed inside");
    } catch (...) {
        conn.setError(kMisuse, "the client failed inside");
    }
    return kFailed;
}

template <class Body> uint32_t onConnection(void *handle, Body body) noexcept {
    if (handle == nullptr)
        return kFailed;
    auto &conn = *static_cast<ConnectionHandle *>(handle);
    return guarded(conn, [&] {
        conn.requireOwn();
        body(conn);
    });
}

template <class Body> uint32_t onStatement(void *handle, Body body) noexcept {
    if (handle == nullptr)
        return kFailed;
    auto &stmt = *static_cast<StatementHandle *>(handle);
    return guarded(stmt.connection(), [&] {
        stmt.connection().requireOwn();
        body(stmt);
    });
}

template <class... Pointers> void require(const Pointers *...pointers) {
    if ((... || !pointers))
        fail(kMisuse, "a required argument is NULL");
}

uint32_t attributeValue(const void *value) {
    require(value);
    uint32_t number = 0;
    std::memcpy(&number, value, sizeof number);
    return number;
}

[[noreturn]] void failAttribute(uint32_t attribute) {
    fail(kMisuse, "the attribute " + std::to_string(attribute) + " is not known or cannot have this value");
}

// Characters that begin in the bytes.
uint32_t characters(const uint8_t *bytes, size_t size) {
    return static_cast<uint32_t>(
        std::count_if(bytes, bytes + size, [](uint8_t byte) { return (byte & 0xC0) != 0x80; }));
}

uint32_t readLob(StatementHandle &stmt, uint32_t type, const void *locator, uint32_t offset, void *buf,
                 uint32_t bufSize, uint32_t *bytes, uint32_t *eof) {
    require(locator, buf, bytes, eof);
    uint64_t size = 0;
    const uint8_t *data = stmt.lob(locator, type, offset, size);
    *bytes = static_cast<uint32_t>(std::min<uint64_t>(size, bufSize));
    *eof = *bytes == size ? 1 : 0;
    std::memcpy(buf, data, *bytes);
    return *bytes;
}

} // namespace

uint32_t qdc_alloc_conn(void **ppConn) {
    if (ppConn == nullptr)
        return kFailed;
    *ppConn = new (std::nothrow) ConnectionHandle();
    return *ppConn != nullptr ? kOk : kFailed;
}

uint32_t qdc_set_conn_attr(void *pConn, uint32_t uiAttr, const void *pValue, uint32_t) {
    return onConnection(pConn, [&](ConnectionHandle &conn) {
        const uint32_t value = attributeValue(pValue);
        if (uiAttr == QDC_ATTR_SSL_MODE)
            conn.setSslMode(value);
        else if (uiAttr == QDC_ATTR_TRANS && value == 0)
            conn.begin();
        else
            failAttribute(uiAttr);
    });
}

uint32_t qdc_connect(void *pConn, const char *pcAddress, const char *pcUser, const char *pcPassword) {
    return onConnection(pConn, [&](ConnectionHandle &conn) {
        require(pcAddress);
        conn.connect(pcAddress, pcUser, pcPassword);
    });
}

uint32_t qdc_disconnect(void *pConn) {
    if (pConn == nullptr)
        return kFailed;
    static_cast<ConnectionHandle *>(pConn)->disconnect();
    return kOk;
}

uint32_t qdc_free_conn(void *pConn) {
    delete static_cast<ConnectionHandle *>(pConn);
    return pConn != nullptr ? kOk : kFailed;
}

uint32_t qdc_alloc_stmt(void *pConn, void **ppStmt) {
    return onConnection(pConn, [&](ConnectionHandle &conn) {
        require(ppStmt);
        *ppStmt = &conn.addStatement();
    });
}

uint32_t qdc_free_stmt(void *pStmt) {
    if (pStmt == nullptr)
        return kFailed;
    auto &stmt = *static_cast<StatementHandle *>(pStmt);
    stmt.connection().freeStatement(stmt);
    return kOk;
}

uint32_t qdc_set_stmt_attr(void *pStmt, uint32_t uiAttr, const void *pValue, uint32_t) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        if (uiAttr != QDC_ATTR_PREFETCH)
            failAttribute(uiAttr);
        stmt.setReadAhead(attributeValue(pValue));
    });
}

uint32_t qdc_prepare(void *pStmt, const char *pcSql) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        require(pcSql);
        stmt.prepare(pcSql);
    });
}

uint32_t qdc_bind_by_pos(void *pStmt, uint32_t uiPos, uint32_t uiType, void *pValue, uint32_t uiLen,
                         uint16_t *pusRowLens) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        stmt.bind(uiPos, Parameter{true, uiType, static_cast<uint8_t *>(pValue), uiLen, pusRowLens});
    });
}

uint32_t qdc_set_paramset_size(void *pStmt, uint32_t uiRows) {
    return onStatement(pStmt, [&](StatementHandle &stmt) { stmt.setRows(uiRows); });
}

uint32_t qdc_execute(void *pStmt) {
    return onStatement(pStmt, [](StatementHandle &stmt) { stmt.execute(); });
}

uint32_t qdc_fetch(void *pStmt, uint32_t *puiRows) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        require(puiRows);
        *puiRows = 0;
        *puiRows = stmt.fetch() ? 1 : 0;
    });
}

uint32_t qdc_get_affected_rows(void *pStmt) {
    return pStmt != nullptr ? static_cast<StatementHandle *>(pStmt)->affectedRows() : 0;
}

uint32_t qdc_get_column_count(void *pStmt, uint32_t *puiCount) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        require(puiCount);
        *puiCount = stmt.columnCount();
    });
}

uint32_t qdc_desc_column_by_id(void *pStmt, uint32_t uiCol, QDC_COLUMN_DESC *pstDesc) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        require(pstDesc);
        stmt.describe(uiCol, *pstDesc);
    });
}

uint32_t qdc_desc_column_by_name(void *pStmt, const char *pcName, QDC_COLUMN_DESC *pstDesc) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        require(pcName);
        require(pstDesc);
        stmt.describe(pcName, *pstDesc);
    });
}

uint32_t qdc_get_column_by_id(void *pStmt, uint32_t uiCol, void **ppData, uint32_t *puiSize, uint32_t *puiIsNull) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        require(ppData, puiSize, puiIsNull);
        stmt.column(uiCol, ppData, puiSize, puiIsNull);
    });
}

uint32_t qdc_read_clob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiChars, uint32_t *puiBytes, uint32_t *puiEof) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        require(puiChars);
        const uint32_t read = readLob(stmt, kClob, pLocator, uiOffset, pBuf, uiBufSize, puiBytes, puiEof);
        *puiChars = characters(static_cast<const uint8_t *>(pBuf), read);
    });
}

uint32_t qdc_read_blob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiBytes, uint32_t *puiEof) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        readLob(stmt, kBlob, pLocator, uiOffset, pBuf, uiBufSize, puiBytes, puiEof);
    });
}

uint32_t qdc_write_clob(void *pStmt, uint32_t uiPos, const void *pText, uint32_t uiLen, uint32_t *puiWritten) {
    return qdc_write_batch_clob(pStmt, uiPos, 0, pText, uiLen, puiWritten);
}

uint32_t qdc_write_blob(void *pStmt, uint32_t uiPos, const void *pBytes, uint32_t uiLen) {
    return qdc_write_batch_blob(pStmt, uiPos, 0, pBytes, uiLen);
}

uint32_t qdc_write_batch_clob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *pText, uint32_t uiLen,
                              uint32_t *puiWritten) {
    return onStatement(pStmt, [&](StatementHandle &stmt) {
        require(puiWritten);
        *puiWritten = stmt.writeLob(uiPos, kClob, uiRow, pText, uiLen);
    });
}

uint32_t qdc_write_batch_blob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *pBytes, uint32_t uiLen) {
    return onStatement(pStmt, [&](StatementHandle &stmt) { stmt.writeLob(uiPos, kBlob, uiRow, pBytes, uiLen); });
}

uint32_t qdc_commit(void *pConn) {
    return onConnection(pConn, [](ConnectionHandle &conn) { conn.commit(); });
}

uint32_t qdc_rollback(void *pConn) {
    return onConnection(pConn, [](ConnectionHandle &conn) { conn.rollback(); });
}

uint32_t qdc_get_error(void *pConn, uint32_t *puiCode, const char **ppcMessage) {
    if (pConn == nullptr || puiCode == nullptr || ppcMessage == nullptr)
        return kFailed;
    const auto &conn = *static_cast<const ConnectionHandle *>(pConn);
    *puiCode = conn.errorCode();
    *ppcMessage = conn.errorText();
    return kOk;
}
