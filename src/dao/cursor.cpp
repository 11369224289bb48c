#include "dao/cursor.h"

#include "dao/qdc.h"
#include "log/log.h"
#include "ormeldb/platform/opbbase.h"

using ormel::Result;
using ormel::Statement;

namespace {

constexpr char kLogFile[] = "ormel_dao";
constexpr size_t kTextSize = 128; // of a cursor's text over a whole table

} // namespace

void *dbBeginFetch(void *pConn, const char *pcTableName) {
    if (pcTableName == nullptr)
        return nullptr;
    Statement stmt(dbCreateStmt(pConn));
    if (stmt == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_alloc_stmt failed");
        return nullptr;
    }
    char sql[kTextSize] = {};
    if (sprintf_s(sql, sizeof sql, "SELECT * FROM %s", pcTableName) < 0)
        ORMEL_LOG(KPL_LOG_ERROR, "dbBeginFetch:%s sprintf_s error", pcTableName);
    if (qdc_prepare(stmt.get(), sql) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "prepare sql:%s failed", sql);
    } else if (qdc_execute(stmt.get()) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "exec sql:%s failed", sql);
    } else {
        return stmt.release();
    }
    dbPrintError(pConn);
    return nullptr;
}

DB_RESULT *dbGetFetchResult(void *pStmt) {
    if (pStmt == nullptr)
        return nullptr;
    uint32_t rows = 0;
    if (const uint32_t status = qdc_fetch(pStmt, &rows); status != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_fetch failed ret:%d", static_cast<int>(status));
        return nullptr;
    }
    if (rows == 0) {
        ORMEL_LOG(KPL_LOG_INFO, "qdc_fetch  rowCount = 0");
        return static_cast<DB_RESULT *>(std::calloc(1, sizeof(DB_RESULT)));
    }
    uint32_t columns = 0;
    if (qdc_get_column_count(pStmt, &columns) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_get_column_count  failed");
        return nullptr;
    }
    if (columns == 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_get_column_count  failed, count = 0");
        return nullptr;
    }
    Result res(dbMallocResult(1, columns));
    if (res == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "dbMallocResult  failed");
        return nullptr;
    }
    res->uiRowCount = 1;
    res->uiFieldCount = columns;
    if (dbGetFields(pStmt, res->ppRows[0], columns) != ORMEL_OK) {
        ORMEL_LOG(KPL_LOG_ERROR, "dbGetFetchResult dbGetFields failed");
        return nullptr;
    }
    return res.release();
}
