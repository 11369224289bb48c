// SQLite's own interface, as a program without ormeldb would use it.
#pragma once

#include <memory>
#include <sqlite3.h>

#include "database.h"

namespace bench {

struct CloseDatabase {
    void operator()(sqlite3 *db) const { sqlite3_close(db); }
};
struct Finalize {
    void operator()(sqlite3_stmt *stmt) const { sqlite3_finalize(stmt); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Prepared = std::unique_ptr<sqlite3_stmt, Finalize>;

void run(sqlite3 *db, const char *sql);

// Opened as the embedded engine opens it.
Database openDatabase();

Prepared prepare(sqlite3 *db, const char *sql);

// The row that the statement has come to.
Person currentPerson(sqlite3_stmt *stmt);

} // namespace bench
