// Traffic of many threads, in one process and in two, on the database that the home leads to. Whatever the database
// refuses meanwhile, nothing is lost, doubled or half done.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include <stdlib.h>

#include <ormeldb/qdc.h>

#include "seed.h"
#include "support/database.h"
#include "traffic.h"

namespace concurrency {

namespace {

// The first value of a query, or 0; for anything else, nothing. Committed.
int64_t sql(const std::string &text) {
    const database::Connection connection;
    const std::unique_ptr<void, decltype(&dbFreeStmt)> statement(dbCreateStmt(connection), dbFreeStmt);
    EXPECT_TRUE(qdc_prepare(statement.get(), text.c_str()) == 0 && qdc_execute(statement.get()) == 0) << text;
    uint32_t columns = 0;
    qdc_get_column_count(statement.get(), &columns);
    int64_t value = 0;
    if (columns > 0) {
        const std::unique_ptr<DB_RESULT, decltype(&dbResClear)> row(dbGetFetchResult(statement.get()), dbResClear);
        value = dbGetIntValue(dbGetValueFromRes(row.get(), 0, 0), dbGetLengthFromRes(row.get(), 0, 0));
    }
    EXPECT_EQ(dbCommitTrans(connection), 0U) << text;
    return value;
}

void start() {
    EXPECT_EQ(ORMEL_Init(), ORMEL_OK) << "run this program with tests/support/run_in_home.py";
}

// It fixes the numbers that each thread draws one after the other, and so what it sets out to do. When it has its turn,
// and what is refused and done again, is the machine's affair.
uint64_t g_seed;

// The traffic of a process, and the library for as long as it lasts.
void work(int process, Figures &figures) {
    const int seconds = std::getenv("ORMEL_NIGHTLY") != nullptr ? 60 : 4;
    start();
    run(process, g_seed, Clock::now() + std::chrono::seconds(seconds), figures);
    EXPECT_EQ(g_stTransMgr.uiCount, 0U) << "slots are left";
    ORMEL_UnInit();
}

constexpr char kTold[] = "moves: %ld, rows kept: %ld";

void print(const Figures &figures) {
    std::printf(kTold, figures.moves.load(), figures.rows.load());
    std::cout << std::flush << ", cursors: " << figures.cursors << ", inserts: " << figures.inserts
              << ", batches: " << figures.batches << ", deletes: " << figures.deletes
              << ", selects: " << figures.selects << ", descriptions: " << figures.described
              << ", tables not cached: " << figures.misses << "; refused by the database: " << figures.refused
              << ", without a slot: " << figures.full << std::endl;
}

// Waiting for locks ends in refusals. Connecting takes as long as it must where so many share two processors.
constexpr char kSettings[] = "client.busy_timeout_ms=500\nclient.connect_timeout_ms=60000\nclient.pool=40\n";

class ConcurrencyTest : public testing::Test {
protected:
    ConcurrencyTest() {
        std::ofstream("../conf/db.conf", std::ios::app) << kSettings;
        start();
        for (const std::string table : {"account", "move", "entry"})
            sql("DROP TABLE IF EXISTS " + table);
        sql("CREATE TABLE account (id INTEGER PRIMARY KEY, balance BIGINT, toucher BIGINT)");
        sql("CREATE TABLE move (id BIGINT PRIMARY KEY, source INTEGER, target INTEGER, amount BIGINT)");
        sql("CREATE TABLE entry (id BIGINT PRIMARY KEY, body TEXT)");
        for (int i = 0; i < kAccounts; ++i)
            sql("INSERT INTO account VALUES (" + std::to_string(i) + ", " + std::to_string(kOpening) + ", 0)");
        for (int i = 0; i < kSmallTables; ++i) {
            const std::string small = "small" + std::to_string(i);
            sql("DROP TABLE IF EXISTS " + small);
            sql("CREATE TABLE " + small + " (id INTEGER, name VARCHAR(20))");
            sql("INSERT INTO " + small + " VALUES (1, 'small')");
        }
        ORMEL_UnInit();
    }

    // moves, rows: of all processes.
    static void check(int64_t moves, int64_t rows) {
        start();
        const int64_t sum = sql("SELECT CAST(sum(balance) AS BIGINT) FROM account");
        EXPECT_EQ(sum, kAccounts * kOpening);
        EXPECT_EQ(sql("SELECT count(*) FROM move"), moves);
        EXPECT_EQ(sql("SELECT count(*) FROM entry"), rows);
        EXPECT_EQ(sql("SELECT count(*) FROM account a WHERE balance <> " + std::to_string(kOpening) +
                      " + (SELECT coalesce(sum(amount), 0) FROM move WHERE target = a.id)"
                      " - (SELECT coalesce(sum(amount), 0) FROM move WHERE source = a.id)"),
                  0)
            << "accounts that their moves do not explain";
        std::cout << "moves: " << moves << ", rows: " << rows << ", money: " << sum << std::endl;
        ORMEL_UnInit();
    }
};

// This program once more, at the same work. It tells its figures in its last line.
class OtherProcess {
public:
    OtherProcess() {
        const std::string program = std::filesystem::read_symlink("/proc/self/exe");
        output_ = popen((program + " other").c_str(), "r");
    }
    ~OtherProcess() {
        if (output_ != nullptr)
            pclose(output_);
    }
    OtherProcess(const OtherProcess &) = delete;
    OtherProcess &operator=(const OtherProcess &) = delete;

    // Its moves and rows, when it is done.
    void wait(int64_t &moves, int64_t &rows) {
        char line[1000] = {};
        while (std::fgets(line, sizeof line, output_) != nullptr)
            std::cout << line;
        EXPECT_EQ(pclose(std::exchange(output_, nullptr)), 0) << "the other process failed";
        EXPECT_EQ(std::sscanf(line, kTold, &moves, &rows), 2) << line;
    }

private:
    FILE *output_ = nullptr;
};

} // namespace

TEST_F(ConcurrencyTest, ThreadsOfTwoProcesses) {
    OtherProcess other;
    Figures figures;
    work(1, figures);
    print(figures);
    int64_t moves = 0;
    int64_t rows = 0;
    other.wait(moves, rows);
    EXPECT_GT(figures.moves, 0);
    EXPECT_GT(moves, 0) << "by the other process";
    check(figures.moves + moves, figures.rows + rows);
}

TEST_F(ConcurrencyTest, ThreadsOfOneProcess) {
    Figures figures;
    work(1, figures);
    print(figures);
    for (const auto *count : {&figures.moves, &figures.cursors, &figures.inserts, &figures.deletes, &figures.batches,
                              &figures.selects, &figures.described, &figures.misses})
        EXPECT_GT(*count, 0) << "something was never tried";
    check(figures.moves, figures.rows);
}

} // namespace concurrency

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    concurrency::g_seed = seedOfRun();
    setenv("ORMEL_SEED", std::to_string(concurrency::g_seed).c_str(), 1); // the other process has it, too
    if (argc == 1)
        return RUN_ALL_TESTS();
    concurrency::Figures figures;
    concurrency::work(2, figures);
    concurrency::print(figures);
    return testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS;
}
