// Transactions of one connection, and what others see of them.
#include "support/contract_test.h"

namespace {

using namespace contract;

class TransactionTest : public ContractTest {
protected:
    // What is left of a half-read query once its transaction has ended.
    static void expectCut(Connection &db, Statement &query, int next, int mostRows) {
        uint32_t rows = 0;
        int read = 0;
        while (qdc_fetch(query, &rows) == 0) {
            ASSERT_EQ(rows, 1U) << "a plain end hides the lost rows";
            EXPECT_EQ(query.row(), rowOf(std::to_string(next++)));
            ASSERT_LE(++read, mostRows);
        }
        EXPECT_EQ(rows, 0U);
        EXPECT_FALSE(db.error().empty());
        EXPECT_FAILS(qdc_fetch(query, &rows));
    }
};
CONTRACT_SUITE(TransactionTest);

TEST_P(TransactionTest, NothingIsCommittedByItself) {
    Connection db = connect();
    makeTable(db);
    Connection other = connect();
    fill(db, 1, 3);
    EXPECT_EQ(count(db), 3);
    EXPECT_EQ(count(other), 0);
    other.rollback();
    db.commit();
    EXPECT_EQ(count(other), 3);
}

TEST_P(TransactionTest, RollbackTakesBack) {
    Connection db = connect();
    makeTable(db, 2);
    fill(db, 3, 5);
    db.run("update t set v = 'changed'");
    db.run("delete from t where id = 1");
    db.rollback();
    EXPECT_EQ(db.rows("select id, v from t order by id"), (Rows{rowOf("1", "row 1"), rowOf("2", "row 2")}));
}

TEST_P(TransactionTest, TheNextStatementBeginsTheNextTransaction) {
    Connection db = connect();
    makeTable(db);
    fill(db, 1, 1);
    db.commit();
    fill(db, 2, 2);
    db.rollback();
    fill(db, 3, 3);
    db.rollback();
    fill(db, 4, 4);
    db.commit();
    EXPECT_EQ(db.rows("select id from t order by id"), (Rows{rowOf("1"), rowOf("4")}));
}

TEST_P(TransactionTest, DisconnectingDiscards) {
    Connection keeper = connect();
    makeTable(keeper, 1);
    {
        Connection db = connect();
        fill(db, 2, 2);
        EXPECT_OK(db, qdc_disconnect(db));
        EXPECT_OK(db, db.connect(target()));
        EXPECT_EQ(count(db), 1);
        fill(db, 3, 3);
    }
    EXPECT_EQ(count(keeper), 1);
}

TEST_P(TransactionTest, FreeingAnOpenConnectionDiscards) {
    Connection keeper = connect();
    makeTable(keeper, 1);
    void *db = nullptr;
    const Target where = target();
    ASSERT_EQ(qdc_alloc_conn(&db), 0U);
    ASSERT_EQ(qdc_connect(db, where.address.c_str(), where.user.c_str(), where.password.c_str()), 0U);
    void *statement = nullptr;
    ASSERT_EQ(qdc_alloc_stmt(db, &statement), 0U);
    ASSERT_EQ(qdc_prepare(statement, "insert into t (id) values (2)"), 0U);
    ASSERT_EQ(qdc_execute(statement), 0U);
    EXPECT_EQ(qdc_free_conn(db), 0U); // its statement goes with it
    EXPECT_EQ(count(keeper), 1);
    fill(keeper, 2, 2);
    keeper.commit();
}

TEST_P(TransactionTest, EndingNothingIsNoError) {
    Connection db = connect();
    for (int i = 0; i < 2; ++i) {
        EXPECT_OK(db, qdc_commit(db));
        EXPECT_OK(db, qdc_rollback(db));
    }
}

TEST_P(TransactionTest, BeginningIsIdempotent) {
    Connection db = connect();
    makeTable(db);
    db.begin();
    db.begin();
    fill(db, 1, 1);
    db.begin(); // begun by the statement: nothing is committed or discarded
    fill(db, 2, 2);
    db.rollback();
    EXPECT_EQ(count(db), 0);
    db.begin();
    fill(db, 1, 1);
    db.begin();
    db.commit();
    db.rollback();
    EXPECT_EQ(count(db), 1);
}

TEST_P(TransactionTest, BeginningKeepsOpenStatements) {
    Connection db = connect();
    makeTable(db, 100);
    Statement query(db, "select id from t order by id");
    query.readAhead(1);
    query.execute();
    EXPECT_TRUE(query.fetch());
    db.begin();
    EXPECT_EQ(query.rest().size(), 99U);
}

TEST_P(TransactionTest, TablesAreMadeInsideTransactions) {
    Connection db = connect();
    EXPECT_EQ(db.run("create table made (id integer)"), 0U);
    db.rollback();
    EXPECT_FALSE(db.refusal("select * from made").empty());
    db.rollback();
    db.run("create table made (id integer)");
    db.commit();
    EXPECT_EQ(count(db, "made"), 0);
}

TEST_P(TransactionTest, UncommittedRowsAreSeenByNobodyElse) {
    Connection db = connect();
    makeTable(db, 2);
    Connection other = connect();
    db.run("update t set v = 'new' where id = 1");
    db.run("delete from t where id = 2");
    fill(db, 3, 3);
    EXPECT_EQ(other.rows("select id, v from t order by id"), (Rows{rowOf("1", "row 1"), rowOf("2", "row 2")}));
}

TEST_P(TransactionTest, AFreshTransactionSeesAllThatWasCommitted) {
    Connection writer = connect();
    makeTable(writer);
    Connection reader = connect();
    for (int32_t id = 1; id <= 5; ++id) {
        fill(writer, id, id);
        writer.commit();
        EXPECT_EQ(count(reader), id);
        if (id % 2 == 0)
            reader.commit();
        else
            reader.rollback();
    }
}

TEST_P(TransactionTest, AHalfReadStatementIsCutByCommitAndRollback) {
    Connection db = connect();
    makeTable(db, 300);
    for (const bool commits : {true, false}) {
        for (const uint32_t readAhead : {1U, 10U}) {
            SCOPED_TRACE((commits ? "commit, " : "rollback, ") + std::to_string(readAhead));
            Statement query(db, "select id from t order by id");
            query.readAhead(readAhead);
            query.execute();
            EXPECT_TRUE(query.fetch());
            EXPECT_EQ(query.row(), rowOf("1"));
            commits ? db.commit() : db.rollback();
            // Other rows in the meantime are not what was asked for.
            fill(db, 1000, 1000);
            expectCut(db, query, 2, static_cast<int>(readAhead));
            db.rollback();
            EXPECT_EQ(query.execute(), readAhead);
            EXPECT_EQ(query.rest().size(), 300U);
        }
    }
}

TEST_P(TransactionTest, RowsThatWereAllReadAheadOutliveTheTransaction) {
    Connection db = connect();
    makeTable(db, 20);
    Statement query(db, "select id from t order by id");
    query.readAhead(100000);
    EXPECT_EQ(query.execute(), 20U);
    EXPECT_TRUE(query.fetch());
    db.commit();
    EXPECT_EQ(query.rest().size(), 19U);
}

TEST_P(TransactionTest, AStatementRunsAgainInTheNextTransaction) {
    Connection db = connect();
    makeTable(db);
    Statement insert(db, "insert into t (id) values (:1)");
    for (int32_t id = 1; id <= 4; ++id) {
        insert.set(0, id);
        EXPECT_EQ(insert.execute(), 1U);
        if (id % 2 == 0)
            db.commit();
        else
            db.rollback();
    }
    EXPECT_EQ(db.rows("select id from t order by id"), (Rows{rowOf("2"), rowOf("4")}));
}

TEST_P(TransactionTest, AFailedStatementTakesNothingBack) {
    NEEDS(workAfterError);
    Connection db = connect();
    makeTable(db, 1);
    fill(db, 2, 2);
    EXPECT_FALSE(db.refusal("insert into t (id) values (1)").empty());
    EXPECT_FALSE(db.refusal("insert into nosuch (id) values (1)").empty());
    fill(db, 3, 3);
    db.commit();
    EXPECT_EQ(count(db), 3);
}

TEST_P(TransactionTest, AFailedTransactionCannotBeCommitted) {
    NEEDS(refusalAfterError);
    Connection db = connect();
    makeTable(db, 1);
    fill(db, 2, 2);
    EXPECT_FALSE(db.refusal("insert into t (id) values (1)").empty());
    EXPECT_FALSE(db.refusal("select id from t").empty());
    EXPECT_FAILS(qdc_commit(db));
    EXPECT_THAT(db.error(), testing::ContainsRegex("rolled back"));
    EXPECT_EQ(count(db), 1);
    fill(db, 3, 3);
    EXPECT_OK(db, qdc_commit(db));
}

TEST_P(TransactionTest, AffectedRowsOfWrites) {
    Connection db = connect();
    makeTable(db, 5);
    struct Case {
        const char *sql;
        uint32_t affected;
    };
    for (const Case &c :
         {Case{"insert into t (id, v) values (6, 'six')", 1}, Case{"update t set v = 'x' where id <= 4", 4},
          Case{"update t set v = 'x' where id <= 4", 4}, Case{"update t set id = id", 6},
          Case{"update t set v = 'y' where id = 99", 0}, Case{"delete from t where id > 4", 2},
          Case{"delete from t where id > 4", 0}, Case{"insert into t (id) select id + 10 from t", 4},
          Case{"create table later (id integer)", 0}, Case{"delete from t", 8}, Case{"drop table later", 0}})
        EXPECT_EQ(db.run(c.sql), c.affected) << c.sql;
}

} // namespace
