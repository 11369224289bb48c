// SQLite's own interface, as a program without ormeldb would use it.
#pragma once

#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>

namespace bench {

struct CloseDatabase {
    void operator()(sqlite3 *db) const { sqlite3_close(db); }
};
struct Finalize {
    void operator()(sqlite3_stmt *stmt) const { sqlite3_finalize(stmt); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Prepared = std::unique_ptr<sqlite3_stmt, Finalize>;

// Runs statements; ends the program with a message where one fails.
void run(sqlite3 *db, const char *sql);

// Opened as the embedded engine opens it.
Database openDatabase();

Prepared prepare(sqlite3 *db, const char *sql);

// A row of the table people, or of another with its columns, as such a program would keep it.
struct Person {
    int id;
    std::string name;
    std::string city;
    double height;
    int64_t born;
    bool active;
};
Person currentPerson(sqlite3_stmt *stmt);

} // namespace bench
