// Kept connections to a file, which may become another.
#include <filesystem>

#include "sqlite/sqlite_engine.h"
#include "support/child.h"

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
    useAndLeave();
    for (const char *sql :
         {"pragma foreign_keys", "\xEF\xBB\xBFpragma foreign_keys=off", "explain pragma foreign_keys=off",
          "explain query plan pragma foreign_keys=off", "attach ':memory:' as other", "create temp table x (y integer)",
          "create table temp.x (y integer)", "create temporary view x as select 1",
          "create temp trigger x after insert on t begin select 1; end"}) {
        SCOPED_TRACE(sql);
        {
            Connection db = connect();
            makeTable(db);
            db.run(sql);
            EXPECT_OK(db, qdc_commit(db));
        }
        EXPECT_EQ(opened(), 0);
        Connection db = connect();
        EXPECT_EQ(db.rows("pragma foreign_keys"), Rows{rowOf("1")});
        db.run("drop table t");
        db.commit();
    }
    Connection db = connect();
    EXPECT_FALSE(db.refusal("pragma foreign_keys=off; select 1").empty());
    qdc_disconnect(db);
    EXPECT_EQ(opened(), 0) << "the setting was changed before the text was refused";
}

TEST_P(FilePoolTest, WordsThatSettingsHaveTooDoNotCloseIt) {
    Connection db = connect();
    db.run("create table pragma (temp integer, attach integer)");
    db.run("insert into pragma (temp) values (1)");
    db.commit();
    db.rows("with temp as (select temp from pragma) select * from temp");
    db.rows("select * from sqlite_temp_master");
    qdc_disconnect(db);
    EXPECT_EQ(opened(), 1);
}

TEST_P(FilePoolTest, TheLastUsersRowNumberGoesWithThem) {
    {
        Connection db = connect();
        makeTable(db, 7);
        EXPECT_EQ(db.rows("select last_insert_rowid()"), Rows{rowOf("7")});
    }
    EXPECT_EQ(opened(), 1);
    Connection db = connect();
    EXPECT_EQ(db.rows("select last_insert_rowid()"), Rows{rowOf("0")});
    EXPECT_EQ(opened(), 1);
}

// Who closes the last connection to a file takes its log away.
TEST_P(FilePoolTest, TheEndOfTheProcessClosesIt) {
    configure("client.pool=0\n");
    {
        Connection db = connect();
        makeTable(db);
    }
    configure("");
    const auto useAndEnd = [&] {
        Connection db = connect();
        fill(db, 1, 1);
        return qdc_commit(db) == 0 && qdc_disconnect(db) == 0 && opened() == 1 ? 0 : 1;
    };
    EXPECT_EQ(answerOf(startChild(useAndEnd)), 0);
    EXPECT_FALSE(fs::exists(file().string() + "-wal"));
    Connection db = connect();
    EXPECT_EQ(count(db), 1);
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
