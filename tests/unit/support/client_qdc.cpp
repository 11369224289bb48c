// The client's functions, answered from the script.
#include <algorithm>
#include <cstring>
#include <strings.h>

#include <gtest/gtest.h>

#include "client_script.h"
#include "dao/qdc.h"

using unit::Client;

namespace {

using unit::Cell;
using unit::ScriptHandle;

std::string Shown(const char *text) {
    return text == nullptr ? "null" : text;
}

std::string Escaped(const std::string &bytes) {
    static const char *digits = "0123456789abcdef";
    std::string shown;
    for (char c : bytes) {
        if (c >= ' ' && c < 0x7F) {
            shown += c;
        } else {
            auto byte = static_cast<unsigned char>(c);
            shown += {'\\', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return "'" + shown + "'";
}

uint32_t Word(const void *value) {
    uint32_t word = 0;
    std::memcpy(&word, value, sizeof(word));
    return word;
}

ScriptHandle *Conn(void *handle) {
    return Client().impl().Find(handle, 'c');
}
ScriptHandle *Stmt(void *handle) {
    return Client().impl().Find(handle, 's');
}

// Records a call; 0, or the status of a call that fails.
uint32_t Asked(const std::string &operation, const std::string &arguments) {
    return Client().impl().Called(operation, arguments) ? 0 : Client().status;
}

std::string Listed(const std::vector<std::string> &parts) {
    std::string text;
    for (const std::string &part : parts) {
        text += (text.empty() ? "" : ", ") + part;
    }
    return text;
}

std::string Number(uint32_t value) {
    return std::to_string(value);
}

bool IsLob(uint32_t type) {
    return type == 13 || type == 14;
}

// The cell of the statement's current row whose locator this is.
const Cell *CellAt(const ScriptHandle *stmt, const void *locator) {
    if (stmt->next == 0 || locator == nullptr) {
        return nullptr;
    }
    for (const Cell &cell : stmt->answer.rows.at(stmt->next - 1)) {
        if (cell.bytes.data() == locator) {
            return &cell;
        }
    }
    return nullptr;
}

uint32_t ReadLob(const char *operation, void *handle, void *locator, uint32_t offset, void *buffer, uint32_t size,
                 uint32_t *bytes, uint32_t *eof) {
    ScriptHandle *stmt = Stmt(handle);
    uint32_t status = Asked(operation, Listed({stmt->name, Number(offset), Number(size)}));
    const Cell *cell = CellAt(stmt, locator);
    EXPECT_NE(cell, nullptr) << operation << " with a locator that is none";
    if (status != 0 || cell == nullptr || (cell->refusedAt && offset >= *cell->refusedAt)) {
        return Client().status;
    }
    *eof = 0;
    *bytes = 0;
    if (cell->stuckAt && offset >= *cell->stuckAt) {
        return 0;
    }
    auto left = static_cast<uint32_t>(cell->bytes.size()) - offset;
    *bytes = std::min({size, left, cell->chunk});
    std::memcpy(buffer, cell->bytes.data() + offset, *bytes);
    *eof = *bytes == left && !(cell->lateEnd && left > 0) ? 1 : 0;
    return 0;
}

uint32_t Described(const unit::Column &column, QDC_COLUMN_DESC *desc) {
    if (!column.described) {
        return Client().status;
    }
    desc->pcName = column.named ? column.name.c_str() : nullptr;
    desc->usSize = column.size;
    desc->usType = column.type;
    desc->ucFormat = column.format;
    return 0;
}

bool SameName(const std::string &a, const char *b) {
    return strcasecmp(a.c_str(), b) == 0;
}

} // namespace

extern "C" {

uint32_t qdc_alloc_conn(void **ppConn) {
    uint32_t status = Asked("alloc_conn", "");
    if (status == 0) {
        *ppConn = Client().impl().New('c', nullptr);
    }
    return status;
}

uint32_t qdc_set_conn_attr(void *pConn, uint32_t uiAttr, const void *pValue, uint32_t uiLen) {
    return Asked("set_conn_attr", Listed({Conn(pConn)->name, Number(uiAttr), Number(Word(pValue)), Number(uiLen)}));
}

uint32_t qdc_connect(void *pConn, const char *pcAddress, const char *pcUser, const char *pcPassword) {
    ScriptHandle *conn = Conn(pConn);
    uint32_t status = Asked("connect", Listed({conn->name, Shown(pcAddress), Shown(pcUser), Shown(pcPassword)}));
    conn->connected = status == 0;
    return status;
}

uint32_t qdc_disconnect(void *pConn) {
    ScriptHandle *conn = Conn(pConn);
    EXPECT_TRUE(conn->connected) << conn->name << " is closed and was not open";
    conn->connected = false;
    return Asked("disconnect", conn->name);
}

uint32_t qdc_free_conn(void *pConn) {
    ScriptHandle *conn = Conn(pConn);
    EXPECT_FALSE(conn->connected) << conn->name << " is freed while it is open";
    conn->live = false;
    return Asked("free_conn", conn->name);
}

uint32_t qdc_alloc_stmt(void *pConn, void **ppStmt) {
    ScriptHandle *conn = Conn(pConn);
    uint32_t status = Asked("alloc_stmt", conn->name);
    if (status == 0) {
        *ppStmt = Client().impl().New('s', conn);
    }
    return status;
}

uint32_t qdc_free_stmt(void *pStmt) {
    ScriptHandle *stmt = Stmt(pStmt);
    stmt->live = false;
    return Asked("free_stmt", stmt->name);
}

uint32_t qdc_set_stmt_attr(void *pStmt, uint32_t uiAttr, const void *pValue, uint32_t uiLen) {
    return Asked("set_stmt_attr", Listed({Stmt(pStmt)->name, Number(uiAttr), Number(Word(pValue)), Number(uiLen)}));
}

uint32_t qdc_prepare(void *pStmt, const char *pcSql) {
    ScriptHandle *stmt = Stmt(pStmt);
    stmt->answer = *Client().impl().AnswerOf(Shown(pcSql));
    return Asked("prepare", Listed({stmt->name, Shown(pcSql)}));
}

// Large objects are shown by the number of their slot, which must be zeroed and is filled as a client fills it.
uint32_t qdc_bind_by_pos(void *pStmt, uint32_t uiPos, uint32_t uiType, void *pValue, uint32_t uiLen,
                         uint16_t *pusRowLens) {
    ScriptHandle *stmt = Stmt(pStmt);
    std::string bytes(static_cast<const char *>(pValue), pValue == nullptr ? 0 : uiLen);
    std::string shown = pValue == nullptr ? "null" : Escaped(bytes);
    if (IsLob(uiType) && pValue != nullptr) {
        EXPECT_EQ(bytes, std::string(uiLen, '\0')) << "the slot of a large object is not zeroed";
        stmt->lobs = stmt->lobs == nullptr ? static_cast<const char *>(pValue) : stmt->lobs;
        shown = "slot " + std::to_string((static_cast<const char *>(pValue) - stmt->lobs) / 16);
        std::memset(pValue, 0xAA, uiLen);
    }
    {
        std::lock_guard guard(Client().impl().mutex);
        Client().impl().bounds.push_back({stmt->name, uiPos, uiType, pValue, uiLen, pusRowLens, bytes});
    }
    return Asked("bind_by_pos", Listed({stmt->name, Number(uiPos), Number(uiType), shown, Number(uiLen),
                                        pusRowLens == nullptr ? "null" : "lengths"}));
}

uint32_t qdc_set_paramset_size(void *pStmt, uint32_t uiRows) {
    return Asked("set_paramset_size", Listed({Stmt(pStmt)->name, Number(uiRows)}));
}

uint32_t qdc_execute(void *pStmt) {
    return Asked("execute", Stmt(pStmt)->name);
}

uint32_t qdc_fetch(void *pStmt, uint32_t *puiRows) {
    ScriptHandle *stmt = Stmt(pStmt);
    uint32_t status = Asked("fetch", stmt->name);
    if (status == 0) {
        bool more = stmt->next < stmt->answer.rows.size();
        stmt->next += more ? 1 : 0;
        *puiRows = more ? stmt->answer.rowsAtOnce : 0;
    }
    return status;
}

// It answers no status: a failing one tells of no rows.
uint32_t qdc_get_affected_rows(void *pStmt) {
    ScriptHandle *stmt = Stmt(pStmt);
    if (Asked("get_affected_rows", stmt->name) != 0) {
        return 0;
    }
    return stmt->answer.affected.value_or(static_cast<uint32_t>(stmt->answer.rows.size()));
}

uint32_t qdc_get_column_count(void *pStmt, uint32_t *puiCount) {
    ScriptHandle *stmt = Stmt(pStmt);
    uint32_t status = Asked("get_column_count", stmt->name);
    if (status == 0) {
        *puiCount = stmt->answer.columnCount.value_or(static_cast<uint32_t>(stmt->answer.columns.size()));
    }
    return status;
}

uint32_t qdc_desc_column_by_id(void *pStmt, uint32_t uiCol, QDC_COLUMN_DESC *pstDesc) {
    ScriptHandle *stmt = Stmt(pStmt);
    uint32_t status = Asked("desc_column_by_id", Listed({stmt->name, Number(uiCol)}));
    if (status != 0 || uiCol >= stmt->answer.columns.size()) {
        return Client().status;
    }
    return Described(stmt->answer.columns[uiCol], pstDesc);
}

uint32_t qdc_desc_column_by_name(void *pStmt, const char *pcName, QDC_COLUMN_DESC *pstDesc) {
    ScriptHandle *stmt = Stmt(pStmt);
    uint32_t status = Asked("desc_column_by_name", Listed({stmt->name, Shown(pcName)}));
    for (const unit::Column &column : stmt->answer.columns) {
        if (status == 0 && SameName(column.name, pcName)) {
            return Described(column, pstDesc);
        }
    }
    return Client().status;
}

uint32_t qdc_get_column_by_id(void *pStmt, uint32_t uiCol, void **ppData, uint32_t *puiSize, uint32_t *puiIsNull) {
    ScriptHandle *stmt = Stmt(pStmt);
    uint32_t status = Asked("get_column_by_id", Listed({stmt->name, Number(uiCol)}));
    if (status != 0 || stmt->next == 0 || uiCol >= stmt->answer.rows.at(stmt->next - 1).size()) {
        return Client().status;
    }
    Cell &cell = stmt->answer.rows[stmt->next - 1][uiCol];
    *ppData = cell.isNull || !cell.data ? nullptr : cell.bytes.data();
    *puiSize = cell.isNull ? 0 : cell.size.value_or(static_cast<uint32_t>(cell.bytes.size()));
    *puiIsNull = cell.isNull ? 1 : 0;
    return 0;
}

uint32_t qdc_read_clob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiChars, uint32_t *puiBytes, uint32_t *puiEof) {
    uint32_t status = ReadLob("read_clob", pStmt, pLocator, uiOffset, pBuf, uiBufSize, puiBytes, puiEof);
    *puiChars = status == 0 ? *puiBytes : 0;
    return status;
}

uint32_t qdc_read_blob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiBytes, uint32_t *puiEof) {
    return ReadLob("read_blob", pStmt, pLocator, uiOffset, pBuf, uiBufSize, puiBytes, puiEof);
}

uint32_t qdc_write_clob(void *pStmt, uint32_t uiPos, const void *pText, uint32_t uiLen, uint32_t *puiWritten) {
    EXPECT_EQ(*puiWritten, 0u) << "the written size is not preset";
    std::string bytes(static_cast<const char *>(pText), uiLen);
    *puiWritten = uiLen - static_cast<uint32_t>(Client().shortWrite);
    return Asked("write_clob", Listed({Stmt(pStmt)->name, Number(uiPos), Escaped(bytes)}));
}

uint32_t qdc_write_blob(void *pStmt, uint32_t uiPos, const void *pBytes, uint32_t uiLen) {
    std::string bytes(static_cast<const char *>(pBytes), uiLen);
    return Asked("write_blob", Listed({Stmt(pStmt)->name, Number(uiPos), Escaped(bytes)}));
}

uint32_t qdc_write_batch_clob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *, uint32_t uiLen,
                              uint32_t *puiWritten) {
    *puiWritten = uiLen;
    return Asked("write_batch_clob", Listed({Stmt(pStmt)->name, Number(uiPos), Number(uiRow), Number(uiLen)}));
}

uint32_t qdc_write_batch_blob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *, uint32_t uiLen) {
    return Asked("write_batch_blob", Listed({Stmt(pStmt)->name, Number(uiPos), Number(uiRow), Number(uiLen)}));
}

uint32_t qdc_commit(void *pConn) {
    return Asked("commit", Conn(pConn)->name);
}
uint32_t qdc_rollback(void *pConn) {
    return Asked("rollback", Conn(pConn)->name);
}

uint32_t qdc_get_error(void *pConn, uint32_t *puiCode, const char **ppcMessage) {
    EXPECT_EQ(*ppcMessage, nullptr) << "the message pointer is not preset";
    uint32_t status = Asked("get_error", Conn(pConn)->name);
    if (status == 0) {
        *puiCode = Client().errorCode;
        *ppcMessage = Client().errorText;
    }
    return status;
}
}
