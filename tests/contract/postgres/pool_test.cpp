// Kept connections to a server.
#include <algorithm>

#include "postgres/postgres_engine.h"
#include "support/contract_test.h"

namespace {

using namespace contract;

class ServerPoolTest : public ContractTest {
protected:
    static std::string process(Connection &db) { return db.rows("select pg_backend_pid()").at(0).at(0).value(); }
    std::string processOfOne() const {
        Connection db = connect();
        return process(db);
    }
    static std::string setting(Connection &db, const std::string &name) {
        return db.rows("show " + name).at(0).at(0).value();
    }
};
ENGINE_SUITE(ServerPoolTest);

TEST_P(ServerPoolTest, AConnectionIsKeptAndUsedAgain) {
    EXPECT_EQ(processOfOne(), processOfOne());
}

TEST_P(ServerPoolTest, NoneIsKeptWhereNoneIsWanted) {
    configure("client.pool=0\n");
    EXPECT_NE(processOfOne(), processOfOne());
}

TEST_P(ServerPoolTest, NoMoreAreKeptThanAreWanted) {
    configure("client.pool=2\n");
    std::vector<std::string> first;
    {
        std::vector<std::unique_ptr<Connection>> many;
        for (int i = 0; i < 5; ++i) {
            many.push_back(std::make_unique<Connection>(target()));
            first.push_back(process(*many.back()));
        }
    }
    int again = 0;
    std::vector<std::unique_ptr<Connection>> many;
    for (int i = 0; i < 5; ++i) {
        many.push_back(std::make_unique<Connection>(target()));
        again += std::count(first.begin(), first.end(), process(*many.back())) > 0 ? 1 : 0;
    }
    EXPECT_EQ(again, 2);
}

TEST_P(ServerPoolTest, SettingsLocksAndListensGoWithTheirUser) {
    std::string before;
    std::string of;
    {
        Connection db = connect();
        of = process(db);
        before = setting(db, "work_mem");
        db.run("set work_mem = '123MB'");
        db.run("listen somebody");
        db.rows("select pg_advisory_lock(42)");
        db.commit();
        EXPECT_EQ(setting(db, "work_mem"), "123MB");
    }
    Connection db = connect();
    EXPECT_EQ(process(db), of);
    EXPECT_EQ(setting(db, "work_mem"), before);
    EXPECT_TRUE(db.rows("select pg_listening_channels()").empty());
    EXPECT_EQ(db.rows("select count(*) from pg_locks where locktype = 'advisory' and objid = 42"), Rows{rowOf("0")});
    EXPECT_EQ(setting(db, "lock_timeout"), "5s") << "what the client set when it connected stays";
}

TEST_P(ServerPoolTest, WhatAUserPreparedOrDroppedGoesWithThem) {
    const std::string insert = "insert into t (id, v) values (:1, :2)";
    Connection keeper = connect();
    makeTable(keeper);
    for (int user = 0; user < 3; ++user) {
        Connection db = connect();
        EXPECT_EQ(db.run(insert, user, "x"), 1U);
        db.run("prepare mine as select 1");
        if (user == 1)
            db.run("deallocate all");
        db.commit();
    }
    EXPECT_EQ(count(keeper), 3);
}

TEST_P(ServerPoolTest, AConnectionThatCannotBeCleanedIsNotKept) {
    for (const char *sql : {"load 'plpgsql'", "do $$ begin perform setseed(0.5); end $$"}) {
        SCOPED_TRACE(sql);
        std::string of;
        {
            Connection db = connect();
            of = process(db);
            db.run(sql);
            db.commit();
        }
        EXPECT_NE(processOfOne(), of);
    }
}

// Whether a statement says so or a function does it, and whether the server's own names are known as gone at once or
// not.
TEST_P(ServerPoolTest, StatementsSurviveThatAllAreDropped) {
    Connection db = connect();
    makeTable(db);
    db.run("create function forget() returns void language plpgsql as $$ begin execute 'deallocate all'; end $$");
    db.commit();
    const std::string insert = "insert into t (id, v) values (:1, 'x')";
    int id = 0;
    Statement kept(db, insert);
    const auto insertByBoth = [&] {
        kept.set(0, ++id);
        EXPECT_EQ(kept.execute(), 1U);
        EXPECT_EQ(db.run(insert + " ", ++id), 1U);
        db.commit();
    };
    insertByBoth();
    db.run("DEALLOCATE ALL");
    insertByBoth();
    db.rows("select forget()");
    db.commit();
    insertByBoth();
    db.rows("select forget()");
    EXPECT_THROW(db.run(insert + " ", 0), ClientError);
    EXPECT_THAT(db.error(), testing::StartsWith("26000: "));
    db.rollback();
    insertByBoth();
    for (int i = 0; i < 100; ++i) { // what was dropped is not dropped again
        EXPECT_EQ(db.run("update t set v = 'y' where id = " + std::to_string(i)), i > 0 && i <= id ? 1U : 0U);
        if (i == 50)
            db.run("deallocate prepare all");
    }
    EXPECT_EQ(count(db), id);
}

// While statements wait to be dropped, which nothing that must be alone can take along.
TEST_P(ServerPoolTest, VacuumRunsWhateverWaits) {
    Connection db = connect();
    makeTable(db, 1);
    Statement vacuum(db, "vacuum t");
    for (int i = 0; i < 100; ++i) // more than are kept
        db.run("update t set v = 'x' where id = " + std::to_string(i));
    db.commit();
    { const Statement oneMore(db, "delete from t"); }
    EXPECT_EQ(vacuum.execute(), 0U);
    EXPECT_EQ(count(db), 1);
    db.rollback();
    EXPECT_LE(std::stoi(db.rows("select count(*) from pg_prepared_statements").at(0).at(0).value()), 66);
}

TEST_P(ServerPoolTest, ATableMadeByASelectGoesWithItsUser) {
    {
        Connection db = connect();
        makeTable(db, 2);
        db.run("select id into temp scratch from t");
        db.commit();
    }
    Connection db = connect();
    EXPECT_THAT(db.refusal("select * from scratch"), testing::HasSubstr("scratch"));
}

// A batch of a text that was prepared before its table changed.
TEST_P(ServerPoolTest, BatchesFollowTheirTables) {
    const char *sql = "insert into t (id, v) values (:1, :2)";
    Connection keeper = connect();
    keeper.run("create table t (id integer, v varchar(20))");
    keeper.commit();
    const auto batch = [&](Connection &db) {
        Statement insert(db, sql);
        const int32_t ids[] = {1, 2};
        const uint16_t idLengths[] = {4, 4};
        const char texts[] = "10\0\00020\0\0";
        const uint16_t textLengths[] = {2, 2};
        insert.rows(2);
        insert.bind(0, kInteger, ids, 4, idLengths);
        insert.bind(1, kVarchar, texts, 4, textLengths);
        return qdc_execute(insert);
    };
    for (int i = 0; i < 100; ++i) { // savepoints of earlier batches are no burden of later ones
        Connection db = connect();
        EXPECT_OK(db, batch(db));
        db.commit();
    }
    keeper.run("alter table t alter column v type numeric using v::numeric");
    keeper.commit();
    int failed = 0;
    for (int i = 0; i < 3; ++i) {
        Connection db = connect();
        failed += batch(db) != 0 ? 1 : 0;
        qdc_commit(db);
    }
    EXPECT_LE(failed, 1);
}

// libpq keeps buffers in the size of the largest message.
TEST_P(ServerPoolTest, AConnectionOfLargeMessagesIsNotKept) {
    Connection keeper = connect();
    keeper.run("create table large (c text)");
    keeper.commit();
    for (const size_t size : {100'000U, 8'000'000U}) {
        SCOPED_TRACE(size);
        std::string of = processOfOne();
        const bool small = size < 1'000'000;
        {
            Connection db = connect();
            Statement insert(db, "insert into large (c) values (:1)");
            insert.setLob(0, kClob, std::string(size, 'x'));
            insert.execute();
            db.commit();
            EXPECT_EQ(process(db), of);
        }
        EXPECT_EQ(processOfOne() == of, small) << "written";
        of = processOfOne();
        {
            Connection db = connect();
            EXPECT_EQ(db.rows("select c from large where length(c) = " + std::to_string(size)).size(), 1U);
        }
        EXPECT_EQ(processOfOne() == of, small) << "read";
    }
}

TEST_P(ServerPoolTest, CopyingFromTheClientIsRefused) {
    Connection db = connect();
    makeTable(db);
    for (const char *sql : {"copy t from stdin", "copy t to stdout", "COPY (select 1) TO STDOUT"})
        EXPECT_THAT(db.refusal(sql), testing::HasSubstr("COPY")) << sql;
    EXPECT_EQ(count(db), 0);
}

TEST_P(ServerPoolTest, AConnectionThatTheServerEndedIsNotGivenOn) {
    const std::string ended = processOfOne();
    {
        configure("client.pool=1\n");
        Connection db = connect();
        db.rows("select pg_terminate_backend(" + ended + ")");
        while (db.rows("select 1 from pg_stat_activity where pid = " + ended).size() == 1)
            db.rollback();
        configure("");
    }
    EXPECT_NE(processOfOne(), ended);
}

} // namespace
