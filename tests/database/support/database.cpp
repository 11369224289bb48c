#include "support/database.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace database {

namespace {

constexpr char kLog[] = "../var/log/slot-0";

void start() {
    if (ORMEL_Init() != ORMEL_OK)
        throw std::runtime_error("run this program with tests/support/run_in_home.py: the library does not start");
}

} // namespace

void execute(const std::string &sql) {
    engine().run(sql);
}

std::vector<std::string> query(const std::string &sql) {
    return engine().run(sql);
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
