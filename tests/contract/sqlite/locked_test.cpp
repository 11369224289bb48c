// A database file that others use past the client, and what SQLite does that other databases do not.
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <thread>

#include "sqlite/sqlite_engine.h"

namespace {

using namespace contract;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;

class LockedTest : public ContractTest {
protected:
    RawDatabase raw() const { return RawDatabase(home().data("contract.db")); }
};
ENGINE_SUITE(LockedTest);

TEST_P(LockedTest, ALockedDatabaseIsReported) {
    configure("client.busy_timeout_ms=50\n");
    Connection db = connect();
    makeTable(db, 1);
    const RawDatabase other = raw();
    other.run("begin immediate");
    EXPECT_THAT(db.refusal("insert into t (id) values (2)"),
                AllOf(HasSubstr("locked"), HasSubstr("client.busy_timeout_ms")));
    EXPECT_EQ(db.errorCode() & 0xFF, static_cast<uint32_t>(SQLITE_BUSY));
    EXPECT_EQ(count(db), 1);
    other.run("rollback");
    fill(db, 2, 2);
    db.commit();
    EXPECT_EQ(other.value("select count(*) from t"), "2");
}

// A process that holds the write lock until it is told to end.
class Holder {
public:
    explicit Holder(const std::filesystem::path &file) {
        std::array<int, 2> ready{};
        std::array<int, 2> end{};
        if (pipe(ready.data()) != 0 || pipe(end.data()) != 0)
            throw ClientError("no pipe");
        child_ = fork();
        if (child_ == 0) {
            close(end[1]);
            sqlite3 *database = nullptr;
            sqlite3_open(file.c_str(), &database);
            const int result = sqlite3_exec(database, "begin immediate", nullptr, nullptr, nullptr);
            char byte = result == SQLITE_OK ? '!' : '?';
            if (write(ready[1], &byte, 1) == 1 && read(end[0], &byte, 1) == 0)
                _exit(0);
            _exit(1);
        }
        close(ready[1]);
        close(end[0]);
        end_ = end[1];
        char byte = 0;
        if (read(ready[0], &byte, 1) != 1 || byte != '!')
            throw ClientError("the other process has no lock");
        close(ready[0]);
    }
    ~Holder() { release(); }
    Holder(const Holder &) = delete;
    Holder &operator=(const Holder &) = delete;

    void release() {
        if (child_ <= 0)
            return;
        close(end_);
        waitpid(child_, nullptr, 0);
        child_ = -1;
    }

private:
    pid_t child_ = -1;
    int end_ = -1;
};

TEST_P(LockedTest, AnotherProcessCountsLikeAnotherConnection) {
    configure("client.busy_timeout_ms=50\n");
    {
        Connection db = connect();
        makeTable(db, 1);
    }
    Holder holder(home().data("contract.db"));
    Connection db = connect();
    EXPECT_EQ(count(db), 1);
    db.rollback();
    EXPECT_THAT(db.refusal("insert into t (id) values (2)"), HasSubstr("locked"));
    holder.release();
    fill(db, 2, 2);
    EXPECT_OK(db, qdc_commit(db));
}

// Waiting cannot help a transaction whose rows have changed meanwhile: it is refused at once, whatever its patience.
TEST_P(LockedTest, AWriteOnChangedRowsIsRefusedAtOnce) {
    configure("client.busy_timeout_ms=3600000\n");
    Connection db = connect();
    makeTable(db, 1);
    EXPECT_EQ(count(db), 1);
    Connection other = connect();
    fill(other, 2, 2);
    other.commit();
    const auto start = steady_clock::now();
    EXPECT_THAT(db.refusal("insert into t (id) values (3)"), HasSubstr("repeat the transaction"));
    EXPECT_LT(steady_clock::now() - start, seconds(60));
    EXPECT_EQ(db.errorCode(), static_cast<uint32_t>(SQLITE_BUSY_SNAPSHOT));
    // What it read stays what it reads, until it is repeated.
    EXPECT_EQ(count(db), 1);
    db.rollback();
    EXPECT_EQ(count(db), 2);
    fill(db, 3, 3);
    EXPECT_OK(db, qdc_commit(db));
}

// As long as nothing was committed meanwhile, a transaction that has read rows waits like any other.
TEST_P(LockedTest, AWriteAfterReadingWaitsForAWriterThatGivesUp) {
    configure("client.busy_timeout_ms=3600000\n");
    Connection db = connect();
    makeTable(db, 1);
    EXPECT_EQ(count(db), 1);
    const RawDatabase other = raw();
    other.run("begin immediate");
    other.run("insert into t (id) values (2)");
    std::string failure;
    std::thread waiting([&] {
        try {
            fill(db, 3, 3);
            db.commit();
        } catch (const ClientError &error) {
            failure = error.what();
        }
    });
    std::this_thread::sleep_for(milliseconds(100)); // a writer that does not wait has failed by now
    other.run("rollback");
    waiting.join();
    EXPECT_EQ(failure, "");
    EXPECT_EQ(other.value("select group_concat(id) from t"), "1,3");
}

TEST_P(LockedTest, NothingIsMadeInTheFileForTheCatalogue) {
    Connection db = connect();
    makeTable(db);
    EXPECT_EQ(db.rows("select COLUMN_NAME from USER_TAB_COLUMNS where TABLE_NAME = 'T'").size(), 2U);
    db.commit();
    EXPECT_EQ(raw().value("select group_concat(name) from sqlite_schema where name not like 'sqlite_%'"), "t");
}

TEST_P(LockedTest, TheCatalogueListsViewsAndStrangeNames) {
    Connection db = connect();
    db.run("create table \"it's \"\"odd\"\"\" (\"a column\" integer)");
    makeTable(db);
    db.run("create view w as select id, v as renamed from t");
    EXPECT_EQ(db.rows("select COLUMN_NAME from USER_TAB_COLUMNS where TABLE_NAME = 'W' order by COLUMN_ID"),
              (Rows{rowOf("ID"), rowOf("RENAMED")}));
    EXPECT_EQ(db.rows("select COLUMN_NAME from USER_TAB_COLUMNS where TABLE_NAME = 'IT''S \"ODD\"'"),
              Rows{rowOf("A COLUMN")});
}

// Nothing must be filled in with NULL behind the caller's back.
TEST_P(LockedTest, ForeignPlaceholdersAreRefused) {
    Connection db = connect();
    makeTable(db);
    for (const char *value : {"?", "?1", ":name", "@name", "$name"}) {
        SCOPED_TRACE(value);
        EXPECT_FALSE(db.refusal(std::string("insert into t (id, v) values (1, ") + value + ")").empty());
    }
    EXPECT_EQ(count(db), 0);
}

// Transactions are the client's: a statement that ends one would take the caller's work with it.
TEST_P(LockedTest, TransactionsAreNotEndedByStatements) {
    Connection db = connect();
    makeTable(db, 1);
    fill(db, 2, 2);
    for (const char *sql : {"commit", "ROLLBACK", "end", "begin", " /* x */ Commit;", "savepoint s", "release s"}) {
        SCOPED_TRACE(sql);
        EXPECT_FALSE(db.refusal(sql).empty());
    }
    db.rollback();
    EXPECT_EQ(count(db), 1);
}

// A statement that was prepared before another connection changed the table has the columns of its execution.
TEST_P(LockedTest, ColumnsFollowTheTable) {
    Connection db = connect();
    makeTable(db, 1);
    Statement query(db, "select * from t");
    Statement insert(db, "insert into t (id, v) values (:1, :2)");
    Connection other = connect();
    other.run("alter table t add column extra integer default 7");
    other.commit();
    query.execute();
    ASSERT_EQ(query.columns(), 3U);
    EXPECT_EQ(query.rest(), Rows{rowOf("1", "row 1", "7")});
    db.rollback();
    insert.set(0, 2);
    insert.set(1, "two");
    EXPECT_EQ(insert.execute(), 1U);
    EXPECT_EQ(query.execute(), 2U);
}

TEST_P(LockedTest, RowsOfAWriteAreItsResult) {
    Connection db = connect();
    makeTable(db, 3);
    Statement update(db, "update t set v = 'x' where id > 1 returning id, v");
    update.readAhead(100000);
    EXPECT_EQ(update.execute(), 2U);
    EXPECT_EQ(update.rest(), (Rows{rowOf("2", "x"), rowOf("3", "x")}));
    db.commit();
    EXPECT_EQ(raw().value("select count(*) from t where v = 'x'"), "2");
}

TEST_P(LockedTest, RowsChangedByTriggersAreNotCounted) {
    Connection db = connect();
    makeTable(db, 2);
    db.run("create table log (x integer)");
    db.run("create trigger note after update on t begin insert into log values (1); insert into log values (2); end");
    EXPECT_EQ(db.run("update t set v = 'x'"), 2U);
    EXPECT_EQ(count(db, "log"), 4);
}

TEST_P(LockedTest, ARowThatFailsByItsOwnRuleIsNamed) {
    Connection db = connect();
    db.run("create table c (x integer check (x < 10))");
    Statement insert(db, "insert into c values (:1)");
    std::array<int32_t, 4> values{1, 2, 30, 4};
    std::array<uint16_t, 4> lengths{4, 4, 4, 4};
    insert.rows(4);
    insert.bind(0, kInteger, values.data(), 4, lengths.data());
    EXPECT_FAILS(qdc_execute(insert));
    EXPECT_THAT(db.error(), AllOf(ContainsRegex("row 2[^0-9]"), HasSubstr("CHECK")));
    EXPECT_EQ(count(db, "c"), 0);
}

} // namespace
