#include "support/database.h"

#include <fstream>
#include <iterator>
#include <memory>
#include <sqlite3.h>
#include <stdexcept>

namespace database {

namespace {

constexpr char kFile[] = "../data/ormel.db";
constexpr char kLog[] = "../var/log/slot-0";

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

// As patient as the library is.
Database open() {
    sqlite3 *db = nullptr;
    if (sqlite3_open(kFile, &db) != SQLITE_OK)
        throw std::runtime_error("run this program with tests/support/run_in_home.py: there is no database");
    sqlite3_busy_timeout(db, 5000);
    return {db, sqlite3_close};
}

int collect(void *texts, int, char **values, char **) {
    static_cast<std::vector<std::string> *>(texts)->emplace_back(values[0] != nullptr ? values[0] : "");
    return 0;
}

std::vector<std::string> run(const std::string &sql) {
    const Database db = open();
    std::vector<std::string> texts;
    if (sqlite3_exec(db.get(), sql.c_str(), collect, &texts, nullptr) != SQLITE_OK)
        throw std::runtime_error(sql + ": " + sqlite3_errmsg(db.get()));
    return texts;
}

void start() {
    if (ORMEL_Init() != ORMEL_OK)
        throw std::runtime_error("run this program with tests/support/run_in_home.py: the library does not start");
}

} // namespace

void execute(const std::string &sql) {
    run(sql);
}

std::vector<std::string> query(const std::string &sql) {
    return run(sql);
}

DatabaseTest::DatabaseTest() {
    start();
}

DatabaseTest::~DatabaseTest() {
    EXPECT_EQ(g_stTransMgr.uiCount, 0U) << "slots are left";
    ORMEL_UnInit();
}

void DatabaseTest::make(const std::string &table, const std::string &columns) {
    execute("DROP TABLE IF EXISTS " + table + "; CREATE TABLE " + table + " (" + columns + ")");
}

void DatabaseTest::restart() {
    ORMEL_UnInit();
    start();
}

// The stop writes out what the log service still holds.
std::string DatabaseTest::log() {
    static std::streamoff position = 0;
    ORMEL_UnInit();
    std::ifstream file(kLog, std::ios::binary);
    file.seekg(position);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    position += static_cast<std::streamoff>(text.size());
    start();
    return text;
}

} // namespace database
