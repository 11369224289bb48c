#include <cstdlib>

#include "dao/cursor.h"
#include "dao/owners.h"
#include "dao/qdc.h"
#include "dao/sql_text.h"
#include "log/log.h"

using ormel::Lobs;
using ormel::Result;
using ormel::SqlText;
using ormel::SqlWriter;
using ormel::Statement;

namespace {

constexpr char kLogFile[] = "ormel_dao";

// One call of the binder: which part of the list, what a failure logs and whether the client's error is printed.
struct Binding {
    int32_t withFields;
    int32_t withConds;
    bool afterFields; // starts behind the fields
    const char *failure;
    bool print;
};

// What a write logs of its affected rows. A row inserted is logged at ERROR, so that it is seen at every threshold.
struct Affected {
    const char *none;
    const char *some; // NULL: nothing
};

// One of the statements; print...: whether the client's error follows the line of a failing step.
struct Operation {
    const char *func;
    char *(*makeSql)(const char *table, const ORMEL_PARA *para);
    Binding bindings[2];
    int bindingCount = 1;
    const Affected *affected = nullptr; // NULL: the statement gives rows
    bool prefetch = false;
    bool oneParameterRow = false;
    bool logPrepare = true;
    bool printCreate = false;
    bool print = true; // preparing and executing
};

constexpr Binding kConditions = {0, 1, false, "dbBindPara failed", true};
constexpr Binding kSelectConditions = {0, 1, false, "dbBindPara failed", false};
constexpr Binding kFields = {1, 0, false, "dbBindPara failed", true};
constexpr Binding kUpdateFields = {1, 0, false, "dbBindPara failed", false};
constexpr Binding kUpdateConditions = {0, 1, true, "dbBindPara cond failed", true};

constexpr Affected kInserted = {"qdc_get_affected_rows :%s failed, rowCount = 0", "Insert rec rowCount = %d"};
constexpr Affected kDeleted = {"qdc_get_affected_rows :%s , rowCount = 0", nullptr};
constexpr Affected kUpdated = {"qdc_get_affected_rows :%s failed, rowCount = 0", nullptr};

constexpr Operation kCount = {.func = "dbCount", .makeSql = dbCountMallocSql, .bindings = {kConditions}};
constexpr Operation kSelect = {
    .func = "dbSelectRec", .makeSql = dbSelectMallocSql, .bindings = {kSelectConditions}, .prefetch = true};
constexpr Operation kSelectWithCount = {.func = "dbSelectRecWithCount",
                                        .makeSql = dbSelectMallocSql,
                                        .bindings = {kSelectConditions},
                                        .prefetch = true,
                                        .print = false};
constexpr Operation kCursor = {
    .func = "dbBeginFetchSpecifyField", .makeSql = dbSelectMallocSql, .bindings = {kSelectConditions}, .print = false};
constexpr Operation kInsert = {.func = "dbInsertRec",
                               .makeSql = dbInsertMallocSql,
                               .bindings = {kFields},
                               .affected = &kInserted,
                               .oneParameterRow = true,
                               .logPrepare = false,
                               .printCreate = true};
constexpr Operation kDelete = {.func = "dbDeleteRec",
                               .makeSql = dbDeleteMallocSql,
                               .bindings = {kConditions},
                               .affected = &kDeleted,
                               .printCreate = true};
constexpr Operation kUpdate = {.func = "dbUpdateRec",
                               .makeSql = dbUpdateMallocSql,
                               .bindings = {kUpdateFields, kUpdateConditions},
                               .bindingCount = 2,
                               .affected = &kUpdated,
                               .printCreate = true};

// Prints the client's error where the table says so; always false, as the failing step's answer.
bool fail(void *conn, bool print) {
    if (print)
        dbPrintError(conn);
    return false;
}

// Sets the statement up to the point where values can be bound.
bool prepare(const Operation &op, void *conn, void *stmt, const char *sql) {
    const uint32_t ahead = PREFETCH_ROWS;
    if (op.prefetch && qdc_set_stmt_attr(stmt, QDC_ATTR_PREFETCH, &ahead, 0) != 0) {
        ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, "set_stmt_attr PREFETCH_ROWS :%s failed", sql);
        return false;
    }
    if (qdc_prepare(stmt, sql) != 0) {
        if (op.logPrepare)
            ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, "prepare sql:%s failed", sql);
        return fail(conn, op.print);
    }
    if (op.oneParameterRow)
        qdc_set_paramset_size(stmt, 1);
    return true;
}

bool bind(const Operation &op, const Binding &binding, void *conn, void *stmt, const ORMEL_PARA &para, Lobs &lobs) {
    void *block = nullptr;
    const uint32_t bound = dbBindPara(stmt, &para, binding.withFields, binding.withConds,
                                      binding.afterFields ? para.iFieldNum : 0, &block);
    lobs.reset(block);
    if (bound != 0)
        return true;
    ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, "%s", binding.failure);
    return fail(conn, binding.print);
}

bool execute(const Operation &op, void *conn, void *stmt, const char *sql) {
    if (qdc_execute(stmt) == 0)
        return true;
    ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, "exec sql:%s failed", sql);
    return fail(conn, op.print);
}

// The header that carries a write's affected rows.
DB_RESULT *affectedRows(const Operation &op, void *stmt, const char *table) {
    auto *res = static_cast<DB_RESULT *>(std::calloc(1, sizeof(DB_RESULT)));
    if (res == nullptr) {
        ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, "malloc res failed");
        return nullptr;
    }
    res->uiRowCount = qdc_get_affected_rows(stmt);
    if (res->uiRowCount == 0)
        ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, op.affected->none, table);
    else if (op.affected->some != nullptr)
        ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, op.affected->some, static_cast<int>(res->uiRowCount));
    return res;
}

// The executed statement; none where a step fails. The large objects must outlive the binding of a write.
Statement executed(const Operation &op, void *conn, const char *table, const ORMEL_PARA *para, Lobs (&lobs)[2]) {
    const SqlText sql(op.makeSql(table, para));
    if (sql == nullptr) {
        if (op.affected == &kInserted)
            ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, "malloc sql failed");
        return nullptr;
    }
    Statement stmt(dbCreateStmt(conn));
    if (stmt == nullptr) {
        ORMEL_LOG_AS(op.func, KPL_LOG_ERROR, "qdc_alloc_stmt failed");
        fail(conn, op.printCreate);
        return nullptr;
    }
    if (!prepare(op, conn, stmt.get(), sql.get()))
        return nullptr;
    for (int i = 0; i < op.bindingCount; ++i)
        if (!bind(op, op.bindings[i], conn, stmt.get(), *para, lobs[i]))
            return nullptr;
    if (!execute(op, conn, stmt.get(), sql.get()))
        return nullptr;
    return stmt;
}

// The whole round trip of one statement, of whose rows count are taken where it is given; NULL where a step fails.
DB_RESULT *run(const Operation &op, void *conn, const char *table, const ORMEL_PARA *para,
               const uint32_t *count = nullptr) {
    Lobs lobs[2]; // outlive the statement that they are bound to
    const Statement stmt = executed(op, conn, table, para, lobs);
    if (stmt == nullptr)
        return nullptr;
    if (op.affected != nullptr)
        return affectedRows(op, stmt.get(), table);
    return count != nullptr ? dbGetResultWithCount(stmt.get(), table, *count) : dbGetResult(stmt.get(), table);
}

} // namespace

DB_RESULT *dbCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara) {
    return run(kCount, pConn, pcTableName, pstPara);
}

DB_RESULT *dbSelectRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara) {
    return run(kSelect, pConn, pcTableName, pstPara);
}

DB_RESULT *dbSelectRecWithCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara, uint32_t uiCount) {
    return run(kSelectWithCount, pConn, pcTableName, pstPara, &uiCount);
}

Statement ormel::openSelect(void *conn, const char *table, const ORMEL_PARA &para) {
    Lobs lobs[2];
    return executed(kCursor, conn, table, &para, lobs);
}

DB_RESULT *dbInsertRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara) {
    return run(kInsert, pConn, pcTableName, pstPara);
}

DB_RESULT *dbDeleteRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara) {
    return run(kDelete, pConn, pcTableName, pstPara);
}

DB_RESULT *dbUpdateRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara) {
    return run(kUpdate, pConn, pcTableName, pstPara);
}

// The statement is handed back in whatever state it reached; its owner finds out when fetching.
void *dbSelectRec1(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara) {
    if (pcTableName == nullptr || pstPara == nullptr || !ormel::countsFit(*pstPara))
        return nullptr;
    const SqlText sql = ormel::makeSql(ormel::sqlBudget(*pstPara), [&](SqlWriter &text) {
        text << "SELECT * FROM " << pcTableName;
        ormel::writeConditions(text, *pstPara, 0, pstPara->iCondNum);
    });
    if (sql == nullptr)
        return nullptr;
    void *stmt = dbCreateStmt(pConn);
    if (stmt == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_alloc_stmt failed");
        return nullptr;
    }
    if (qdc_prepare(stmt, sql.get()) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "prepare sql:%s failed", sql.get());
        return stmt;
    }
    void *lobs = nullptr;
    const uint32_t bound = dbBindPara(stmt, pstPara, 0, 1, 0, &lobs);
    const Lobs owner(lobs);
    if (bound == 0)
        ORMEL_LOG(KPL_LOG_ERROR, "dbBindPara failed");
    else if (qdc_execute(stmt) != 0)
        ORMEL_LOG(KPL_LOG_ERROR, "exec sql:%s failed", sql.get());
    return stmt;
}
