// Kept connections to a file, which may become another.
#include <filesystem>

#include "sqlite/sqlite_engine.h"

namespace {

using namespace contract;
namespace fs = std::filesystem;

class FilePoolTest : public ContractTest {
protected:
    fs::path file() const { return home().data("contract.db"); }

    // How many connections this process has: each has the log open, while the file itself may be closed later.
    int opened() const {
        int count = 0;
        std::error_code ignored;
        const fs::path log = fs::canonical(file()).string() + "-wal";
        for (const auto &entry : fs::directory_iterator("/proc/self/fd"))
            if (fs::read_symlink(entry.path(), ignored) == log)
                ++count;
        return count;
    }
    void useAndLeave() const {
        Connection db = connect();
        db.rows("select count(*) from sqlite_master");
    }
};
ENGINE_SUITE(FilePoolTest);

TEST_P(FilePoolTest, AConnectionIsKeptAndUsedAgain) {
    useAndLeave();
    EXPECT_EQ(opened(), 1);
    useAndLeave();
    EXPECT_EQ(opened(), 1);
}

TEST_P(FilePoolTest, NoneIsKeptWhereNoneIsWanted) {
    configure("client.pool=0\n");
    useAndLeave();
    EXPECT_EQ(opened(), 0);
}

TEST_P(FilePoolTest, NoMoreAreKeptThanAreWanted) {
    configure("client.pool=2\n");
    {
        std::vector<std::unique_ptr<Connection>> many;
        for (int i = 0; i < 5; ++i) {
            many.push_back(std::make_unique<Connection>(target()));
            many.back()->rows("select count(*) from sqlite_master");
        }
        EXPECT_EQ(opened(), 5);
    }
    EXPECT_EQ(opened(), 2);
}

TEST_P(FilePoolTest, OtherSettingsTakeOtherConnections) {
    useAndLeave();
    configure("client.busy_timeout_ms=1\n");
    useAndLeave();
    EXPECT_EQ(opened(), 2);
}

// What only closing undoes.
TEST_P(FilePoolTest, SettingsOfAConnectionCloseIt) {
    for (const char *sql : {"pragma foreign_keys", "create temp table x (y integer)"}) {
        Connection db = connect();
        db.run(sql);
        db.commit();
    }
    EXPECT_EQ(opened(), 0);
}

TEST_P(FilePoolTest, AnotherFileInItsPlaceIsFound) {
    {
        Connection db = connect();
        makeTable(db, 1);
    }
    for (const char *end : {"", "-wal", "-shm"})
        fs::remove(file().string() + end);
    Connection db = connect();
    EXPECT_FALSE(db.refusal("select id from t").empty());
    makeTable(db, 2);
    EXPECT_EQ(count(db), 2);
}

} // namespace
