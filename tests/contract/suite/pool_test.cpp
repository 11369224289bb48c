// Connections that are kept and given to the next user.
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::HasSubstr;

class PoolTest : public ContractTest {
protected:
    // One user after the other, each with a transaction that nobody ends.
    void leaveWorkBehind() const {
        Connection db = connect();
        fill(db, 100, 100);
    }
};
CONTRACT_SUITE(PoolTest);

TEST_P(PoolTest, TheNextUserFindsNothingOfTheLast) {
    Connection keeper = connect();
    makeTable(keeper, 1);
    for (int i = 0; i < 3; ++i) {
        leaveWorkBehind();
        Connection db = connect();
        EXPECT_EQ(count(db), 1);
        db.commit();
    }
    EXPECT_EQ(count(keeper), 1);
}

TEST_P(PoolTest, TemporaryTablesGoWithTheirUser) {
    {
        Connection db = connect();
        db.run("create temporary table scratch (x integer)");
        db.commit();
        EXPECT_EQ(db.run("insert into scratch (x) values (1)"), 1U);
        db.commit();
    }
    Connection db = connect();
    EXPECT_THAT(db.refusal("select * from scratch"), HasSubstr("scratch"));
    db.rollback();
    db.run("create temporary table scratch (x integer)");
    EXPECT_EQ(count(db, "scratch"), 0);
}

TEST_P(PoolTest, AFailedTransactionGoesWithItsUser) {
    {
        Connection db = connect();
        makeTable(db, 1);
        EXPECT_FALSE(db.refusal("insert into t (id) values (1)").empty());
    }
    Connection db = connect();
    EXPECT_EQ(count(db), 1);
}

TEST_P(PoolTest, AHalfReadQueryGoesWithItsUser) {
    {
        Connection db = connect();
        makeTable(db, 100);
        Statement query(db, "select id from t");
        query.readAhead(1);
        query.execute();
        EXPECT_TRUE(query.fetch());
        EXPECT_OK(db, qdc_disconnect(db));
    }
    Connection db = connect();
    db.run("drop table t");
    EXPECT_OK(db, qdc_commit(db));
}

// A statement that was prepared for the last user fits the table that the next one finds.
TEST_P(PoolTest, StatementsFollowTheirTables) {
    for (const bool kept : {true, false}) {
        SCOPED_TRACE(kept);
        configure(kept ? "" : "client.pool=0\n");
        Connection keeper = connect();
        keeper.run("drop table if exists t");
        makeTable(keeper, 1);
        {
            Connection db = connect();
            EXPECT_EQ(db.rows("select * from t"), Rows{rowOf("1", "row 1")});
        }
        keeper.run("alter table t add column extra numeric(10,2) default 2.5");
        keeper.commit();
        {
            Connection db = connect();
            EXPECT_EQ(db.rows("select * from t").at(0).size(), 3U);
        }
        keeper.run("drop table t");
        keeper.run("create table t (v varchar(20), id varchar(5) primary key)");
        keeper.run("insert into t (id, v) values ('a', 'b')");
        keeper.commit();
        Connection db = connect();
        EXPECT_EQ(db.rows("select * from t"), Rows{rowOf("b", "a")});
        EXPECT_EQ(db.run("insert into t (id, v) values (:1, :2)", "c", "d"), 1U);
    }
}

TEST_P(PoolTest, ManyThreadsShareIt) {
    Connection keeper = connect();
    makeTable(keeper);
    std::vector<std::thread> threads;
    for (int32_t t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int32_t i = 0; i < 25; ++i) {
                Connection db = connect();
                fill(db, t * 100 + i, t * 100 + i);
                db.commit();
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(count(keeper), 100);
}

// A child neither uses what its parent keeps nor closes it.
TEST_P(PoolTest, AChildLeavesItsParentsConnectionsAlone) {
    {
        Connection db = connect();
        makeTable(db, 1);
    }
    const pid_t child = fork();
    if (child == 0) {
        Connection db;
        std::exit(db.connect(target()) == 0 && count(db) == 1 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    Connection db = connect();
    EXPECT_EQ(count(db), 1);
}

TEST_P(PoolTest, AWrongNumberIsNamed) {
    for (const char *number : {"many", "-1", "1.5", "8 "}) {
        configure(std::string("client.pool=") + number + "\n");
        Connection db;
        if (std::string(number) == "8 ") {
            EXPECT_OK(db, db.connect(target()));
            continue;
        }
        EXPECT_FAILS(db.connect(target()));
        EXPECT_THAT(db.error(), HasSubstr("client.pool"));
        EXPECT_THAT(db.error(), HasSubstr(number));
    }
}

} // namespace
