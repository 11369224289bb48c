#include <cstring>

#include "dao/qdc.h"
#include "dao/sql_text.h"
#include "log/log.h"
#include "ormeldb/platform/opbbase.h"

using ormel::SqlText;
using ormel::SqlWriter;
using ormel::Statement;

namespace {

constexpr char kLogFile[] = "ormel_dao";
constexpr size_t kTextSize = 512; // of a catalogue statement, and of a table's name in one

// The probe over the request's select fields, whole whatever its length; NULL when it cannot be allocated.
SqlText probeOfFields(const char *table, const ORMEL_OBJECT &request) {
    return ormel::makeSql(kTextSize, [&](SqlWriter &sql) {
        for (int32_t i = 0; i < request.iSelectFieldNum; ++i)
            sql << (i == 0 ? "SELECT " : ", ") << request.apcSelectField[i];
        sql << " from " << table << " where 1<>1";
    });
}

// Prepares and executes; each failure is logged and printed.
bool run(const char *func, void *conn, void *stmt, const char *sql) {
    if (qdc_prepare(stmt, sql) != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "prepare sql:%s failed", sql);
        dbPrintError(conn);
        return false;
    }
    if (qdc_execute(stmt) != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "exec sql:%s failed", sql);
        dbPrintError(conn);
        return false;
    }
    return true;
}

} // namespace

void *dbSelectAtt(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj) {
    if (pcTableName == nullptr || (pstObj != nullptr && pstObj->iSelectFieldNum > ORMEL_MAX_SELECT_FIELDS))
        return nullptr;
    char star[kTextSize] = {};
    SqlText fields;
    int length = -1;
    if (pstObj == nullptr || pstObj->iSelectFieldNum <= 0) {
        length = sprintf_s(star, sizeof star, "select * from %s where 1<>1", pcTableName);
    } else if (std::strlen(pcTableName) < kTextSize) {
        fields = probeOfFields(pcTableName, *pstObj);
        if (fields == nullptr) {
            ORMEL_LOG(KPL_LOG_ERROR, "malloc sql failed");
            return nullptr;
        }
        length = 0;
    }
    const char *sql = fields != nullptr ? fields.get() : star;
    if (length < 0)
        ORMEL_LOG(KPL_LOG_ERROR, "dbSelectAtt:%s sprintf_s error", pcTableName);
    ORMEL_LOG(KPL_LOG_DEBUG, "sql: %s", sql);

    Statement stmt(dbCreateStmt(pConn));
    if (stmt == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_alloc_stmt failed");
        dbPrintError(pConn);
        return nullptr;
    }
    return run(__func__, pConn, stmt.get(), sql) ? stmt.release() : nullptr;
}

void *dbSelectAtt1(void *pConn, const char *pcTableName) {
    char sql[kTextSize] = {};
    if (pcTableName == nullptr ||
        sprintf_s(sql, sizeof sql,
                  "SELECT COLUMN_NAME,DATA_TYPE,DATA_LENGTH,COLUMN_ID  FROM USER_TAB_COLUMNS WHERE TABLE_NAME = "
                  "upper('%s')",
                  pcTableName) == -1) {
        ORMEL_LOG(KPL_LOG_ERROR, "dbSelectAtt1 sprintf_s failed.");
        return nullptr;
    }
    ORMEL_LOG(KPL_LOG_DEBUG, "sql: %s", sql);
    void *stmt = dbCreateStmt(pConn);
    if (stmt == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_alloc_stmt failed");
        return nullptr;
    }
    // A statement that fails stays with the connection, whose closing releases it, and its error is not printed.
    if (qdc_prepare(stmt, sql) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "prepare sql:%s failed", sql);
        return nullptr;
    }
    if (qdc_execute(stmt) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "exec sql:%s failed", sql);
        return nullptr;
    }
    return stmt;
}

uint32_t dbGetFieldTypebyName(void *pStmt, char *pcName) {
    if (pStmt == nullptr || pcName == nullptr)
        return 0;
    XOS_StrToUpper(pcName);
    QDC_COLUMN_DESC desc = {};
    if (qdc_desc_column_by_name(pStmt, pcName, &desc) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_desc_column_by_name :%s failed", pcName);
        return 0;
    }
    return desc.usType;
}
