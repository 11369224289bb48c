#include "ormeldb/batch.h"

#include <cstdlib>

#include "dao/owners.h"
#include "dao/qdc.h"
#include "dao/sql_text.h"
#include "log/log.h"

using ormel::Result;
using ormel::SqlText;
using ormel::SqlWriter;
using ormel::Statement;

namespace {

constexpr char kLogFile[] = "ormel_dao";
constexpr char kInsert[] = "dbPatchInsertRec";
constexpr uint16_t kLobSlotSize = 16; // bytes that the client is given for each large object

// What a column of large objects is bound to; needed until the statement has run.
struct LobColumn {
    std::unique_ptr<void, ormel::Free> slots;
    std::unique_ptr<uint16_t, ormel::Free> lengths;
};

bool isLob(uint32_t type) {
    return type == QDC_TYPE_CLOB || type == QDC_TYPE_BLOB;
}

// Whether the columns have what the rows take.
bool fits(const ORMEL_PARA_BATCH &batch) {
    if (batch.itemNum < 1 || batch.itemNum > ORMEL_MAX_ITEMS)
        return false;
    for (int32_t i = 0; i < batch.itemNum; ++i) {
        const ORMEL_PARA_BATCH_ITEM &item = batch.astItem[i];
        if (item.arrlen < batch.uiRecNum || (isLob(item.type) && (item.lobArray == nullptr || item.lobLen == nullptr)))
            return false;
    }
    return true;
}

bool allocateLobs(LobColumn &lobs, uint32_t rows) {
    lobs.slots.reset(std::calloc(rows > 0 ? rows : 1, kLobSlotSize));
    if (lobs.slots == nullptr) {
        ORMEL_LOG_AS(kInsert, KPL_LOG_ERROR, "malloc lobData failed");
        return false;
    }
    lobs.lengths.reset(static_cast<uint16_t *>(std::calloc(rows > 0 ? rows : 1, sizeof(uint16_t))));
    if (lobs.lengths == nullptr) {
        ORMEL_LOG_AS(kInsert, KPL_LOG_ERROR, "malloc lobLen failed");
        return false;
    }
    for (uint32_t row = 0; row < rows; ++row)
        lobs.lengths.get()[row] = kLobSlotSize;
    return true;
}

// Binds a column's array, or writes its large objects.
bool bindColumn(void *conn, void *stmt, int32_t column, const ORMEL_PARA_BATCH_ITEM &item, LobColumn &lobs) {
    const auto pos = static_cast<uint32_t>(column);
    uint32_t status = 0;
    if (isLob(item.type)) {
        if (!allocateLobs(lobs, item.arrlen))
            return false;
        status = dbBatchWriteLob(stmt, pos, &item, lobs.slots.get(), lobs.lengths.get());
    } else {
        status = qdc_bind_by_pos(stmt, pos, item.type, item.data, item.maxlen, item.ind);
    }
    if (status == 0)
        return true;
    ORMEL_LOG_AS(kInsert, KPL_LOG_ERROR, "qdc_bind_by_pos :%d type :%d failed ", column, static_cast<int>(item.type));
    dbPrintError(conn);
    return false;
}

DB_RESULT *affectedRows(void *stmt, const char *table) {
    auto *res = static_cast<DB_RESULT *>(std::calloc(1, sizeof(DB_RESULT)));
    if (res == nullptr) {
        ORMEL_LOG_AS(kInsert, KPL_LOG_ERROR, "malloc res failed");
        return nullptr;
    }
    res->uiRowCount = qdc_get_affected_rows(stmt);
    if (res->uiRowCount == 0)
        ORMEL_LOG_AS(kInsert, KPL_LOG_ERROR, "qdc_get_affected_rows :%s failed, rowCount = 0", table);
    else
        ORMEL_LOG_AS(kInsert, KPL_LOG_DEBUG, "BatchInsert rec rowCount = %d", static_cast<int>(res->uiRowCount));
    return res;
}

// Writes the value of one row; 0, or the client's status.
uint32_t writeLob(void *stmt, uint32_t pos, uint32_t row, const ORMEL_PARA_BATCH_ITEM &item) {
    constexpr char func[] = "dbBatchWriteLob";
    const void *value = item.lobArray[row];
    const uint32_t length = item.lobLen[row];
    if (ormel::logs(KPL_LOG_DEBUG)) {
        const int shown = ormel::textLength(value, length);
        ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "LOB lobarray %d:%.*s len:%d strlen:%d pos:%d ", static_cast<int>(row), shown,
                     static_cast<const char *>(value), static_cast<int>(length),
                     static_cast<int>(strnlen(static_cast<const char *>(value), length)), static_cast<int>(pos));
    }
    if (item.type == QDC_TYPE_BLOB) {
        const uint32_t status = qdc_write_batch_blob(stmt, pos, row, value, length);
        if (status != 0)
            ORMEL_LOG_AS(func, KPL_LOG_ERROR, "LOB qdc_write_batch_blob:%d failed", static_cast<int>(pos));
        return status;
    }
    if (item.type != QDC_TYPE_CLOB)
        return ORMEL_OK;
    uint32_t written = 0;
    const uint32_t status = qdc_write_batch_clob(stmt, pos, row, value, length, &written);
    if (status != 0)
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "LOB qdc_write_batch_clob:%d failed ", static_cast<int>(pos));
    return status;
}

} // namespace

DB_RESULT *dbPatchInsertRec(void *pConn, const char *pcTableName, const ORMEL_PARA_BATCH *pstBatch) {
    if (pcTableName == nullptr || pstBatch == nullptr || !fits(*pstBatch))
        return nullptr;
    const int32_t columns = pstBatch->itemNum;
    const SqlText sql = ormel::makeSql(ormel::sqlBudget(columns), [&](SqlWriter &text) {
        ormel::writeInsert(text, pcTableName, pstBatch->name, columns);
    });
    if (sql == nullptr)
        return nullptr;
    LobColumn lobs[ORMEL_MAX_ITEMS]; // outlive the statement that they are bound to
    const Statement stmt(dbCreateStmt(pConn));
    if (stmt == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_alloc_stmt failed");
        dbPrintError(pConn);
        return nullptr;
    }
    if (qdc_prepare(stmt.get(), sql.get()) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "prepare sql:%s failed", sql.get());
        dbPrintError(pConn);
        return nullptr;
    }
    qdc_set_paramset_size(stmt.get(), pstBatch->uiRecNum);
    for (int32_t i = 0; i < columns; ++i)
        if (!bindColumn(pConn, stmt.get(), i, pstBatch->astItem[i], lobs[i]))
            return nullptr;
    if (qdc_execute(stmt.get()) == 0)
        return affectedRows(stmt.get(), pcTableName);
    ORMEL_LOG(KPL_LOG_ERROR, "exec sql:%s failed", sql.get());
    dbPrintError(pConn);
    return nullptr;
}

uint32_t dbBatchWriteLob(void *pStmt, uint32_t uiPos, const ORMEL_PARA_BATCH_ITEM *pstItem, void *pLobSlots,
                         uint16_t *pusSlotLengths) {
    if (pstItem == nullptr || pLobSlots == nullptr || pusSlotLengths == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "ORMEL_PARA_BATCH_ITEM:%d is null", static_cast<int>(uiPos));
        return ORMEL_INVALID;
    }
    if (pStmt == nullptr || pstItem->lobArray == nullptr || pstItem->lobLen == nullptr)
        return ORMEL_INVALID;
    const uint32_t status = qdc_bind_by_pos(pStmt, uiPos, pstItem->type, pLobSlots, kLobSlotSize, pusSlotLengths);
    if (status != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "LOB qdc_bind_by_pos failed");
        return status;
    }
    for (uint32_t row = 0; row < pstItem->arrlen; ++row) {
        if (pstItem->lobArray[row] == nullptr) {
            ORMEL_LOG(KPL_LOG_ERROR, "LOB pstItem->lobArray[i]:%d is NULL ", static_cast<int>(row));
            return ORMEL_OK;
        }
        if (pstItem->lobArray[row] == pstItem)
            continue; // no value: a slot that is not written is NULL
        if (const uint32_t failed = writeLob(pStmt, uiPos, row, *pstItem); failed != 0)
            return failed;
    }
    return ORMEL_OK;
}
