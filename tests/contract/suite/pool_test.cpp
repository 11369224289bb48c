// Connections that are kept and given to the next user.
#include <array>
#include <memory>
#include <thread>

#include "support/child.h"
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
    const auto use = [&] {
        Connection db;
        return db.connect(target()) == 0 && count(db) == 1 ? 0 : 1;
    };
    EXPECT_EQ(answerOf(startChild(use)), 0);
    Connection db = connect();
    EXPECT_EQ(count(db), 1);
}

// Nor does it speak on what its parent uses, or end it.
TEST_P(PoolTest, AChildHasNoPartInItsParentsTransaction) {
    for (const char *lines : {"", "client.pool=0\n"}) {
        SCOPED_TRACE(lines);
        configure(lines);
        Connection keeper = connect();
        keeper.run("drop table if exists t");
        makeTable(keeper, 50);
        Connection db = connect();
        Connection freed = connect();
        fill(db, 100, 100);
        Statement query(db, "select id from t where id < 100 order by id");
        query.readAhead(1);
        query.execute();
        const auto use = [&] {
            uint32_t rows = 0;
            const uint32_t begin = 0;
            void *statement = nullptr;
            for (const uint32_t status :
                 {qdc_commit(db), qdc_rollback(db), qdc_set_conn_attr(db, QDC_ATTR_TRANS, &begin, sizeof begin),
                  db.connect(target()), qdc_alloc_stmt(db, &statement), qdc_prepare(query, "select 1"),
                  qdc_execute(query), qdc_fetch(query, &rows)})
                if (status == 0 || db.error().find("another process") == std::string::npos)
                    return 1;
            if (qdc_disconnect(db) != 0 || qdc_free_conn(freed) != 0)
                return 2;
            if (db.connect(target()) != 0 || count(db) != 50) // no row of its parent's
                return 3;
            return qdc_disconnect(db) == 0 ? 0 : 4;
        };
        EXPECT_EQ(answerOf(startChild(use)), 0);
        EXPECT_EQ(query.rest().size(), 50U);
        EXPECT_OK(db, qdc_commit(db));
        EXPECT_EQ(count(freed), 51);
        EXPECT_EQ(count(keeper), 51);
    }
}

// What a child opens is a connection like any other process's, whatever its parent was doing, and does.
TEST_P(PoolTest, AChildsOwnConnectionIsItsOwn) {
    configure("client.pool=0\n");
    auto db = std::make_unique<Connection>(target());
    makeTable(*db, 1);
    fill(*db, 2, 2);
    std::array<int, 2> connected{};
    std::array<int, 2> alone{};
    ASSERT_EQ(pipe(connected.data()), 0);
    ASSERT_EQ(pipe(alone.data()), 0);
    const auto use = [&] {
        close(alone[1]);
        Connection own = connect();
        char byte = static_cast<char>('0' + count(own));
        own.rollback();
        if (write(connected[1], &byte, 1) != 1 || read(alone[0], &byte, 1) != 0)
            return 1;
        fill(own, 3, 3);
        return qdc_commit(own) == 0 && qdc_disconnect(own) == 0 ? 0 : 2;
    };
    const pid_t child = startChild(use);
    close(connected[1]);
    char seen = 0;
    EXPECT_EQ(read(connected[0], &seen, 1), 1);
    EXPECT_EQ(seen, '1');
    EXPECT_OK(*db, qdc_commit(*db));
    db.reset();
    close(alone[1]);
    EXPECT_EQ(answerOf(child), 0);
    close(connected[0]);
    close(alone[0]);
    Connection after = connect();
    EXPECT_EQ(count(after), 3);
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
