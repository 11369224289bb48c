#include "sqlite/raw.h"

#include "home.h"

namespace {

constexpr char kDatabase[] = "../data/ormel.db";

std::string textOf(sqlite3_stmt *stmt, int column) {
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt, column));
    return {text, static_cast<size_t>(sqlite3_column_bytes(stmt, column))};
}

} // namespace

const char *const bench::kBytes = "BLOB";

std::string bench::settings() {
    return "db.driver=sqlite\n";
}

std::string bench::password() {
    return "none";
}

void bench::run(const std::string &sql) {
    run(openDatabase().get(), sql.c_str());
}

void bench::run(sqlite3 *db, const char *sql) {
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        die(sqlite3_errmsg(db));
}

bench::Database bench::openDatabase() {
    sqlite3 *db = nullptr;
    if (sqlite3_open(kDatabase, &db) != SQLITE_OK)
        die(sqlite3_errmsg(db));
    sqlite3_busy_timeout(db, 5000);
    run(db, "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON");
    return Database(db);
}

bench::Prepared bench::prepare(sqlite3 *db, const char *sql) {
    sqlite3_stmt *stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) != SQLITE_OK)
        die(sqlite3_errmsg(db));
    return Prepared(stmt);
}

bench::Person bench::currentPerson(sqlite3_stmt *stmt) {
    return {sqlite3_column_int(stmt, 0),
            textOf(stmt, 1),
            textOf(stmt, 2),
            sqlite3_column_double(stmt, 3),
            sqlite3_column_int64(stmt, 4),
            sqlite3_column_int(stmt, 5) != 0};
}
