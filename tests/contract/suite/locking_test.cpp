// Connections that meet: who waits for whom, and who must not.
#include <chrono>
#include <thread>

#include "support/contract_test.h"

namespace {

using namespace contract;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Waiting that must not happen would take an hour; waiting that must happen ends at once or fails.
constexpr char kForever[] = "client.busy_timeout_ms=3600000\n";
constexpr char kBriefly[] = "client.busy_timeout_ms=50\n";

class LockingTest : public ContractTest {
protected:
    // A connection whose patience differs from the next one's.
    Connection patient() const {
        configure(kForever);
        return connect();
    }
    Connection hasty() const {
        configure(kBriefly);
        return connect();
    }
    static uint32_t update(Connection &db, int32_t id, const std::string &text) {
        return db.run("update t set v = :1 where id = :2", text, id);
    }
};
CONTRACT_SUITE(LockingTest);

TEST_P(LockingTest, AWriterWaitsForAnother) {
    Connection first = patient();
    makeTable(first, 1);
    Connection second = patient();
    update(first, 1, "first");
    std::string failure;
    std::thread waiting([&] {
        try {
            update(second, 1, "second");
            second.commit();
        } catch (const ClientError &error) {
            failure = error.what();
        }
    });
    std::this_thread::sleep_for(milliseconds(100)); // a writer that does not wait has failed by now
    first.commit();
    waiting.join();
    EXPECT_EQ(failure, "");
    EXPECT_EQ(first.rows("select v from t"), Rows{rowOf("second")});
}

TEST_P(LockingTest, AWriterWaitsNoLongerThanItWasTold) {
    Connection first = connect();
    makeTable(first, 1);
    configure("client.busy_timeout_ms=300\n");
    Connection second = connect();
    update(first, 1, "first");
    const auto start = steady_clock::now();
    EXPECT_FALSE(second.refusal("update t set v = 'second' where id = 1").empty());
    const auto waited = steady_clock::now() - start;
    EXPECT_GE(waited, milliseconds(150));
    EXPECT_LT(waited, milliseconds(60000));
    EXPECT_NE(second.errorCode(), 0U);
    second.rollback();
    first.commit();
    EXPECT_EQ(update(second, 1, "second"), 1U);
}

TEST_P(LockingTest, AWriteThatGaveUpIsRepeatedInTheSameTransaction) {
    NEEDS(workAfterError);
    Connection first = hasty();
    makeTable(first, 1);
    Connection second = hasty();
    update(first, 1, "first");
    EXPECT_FALSE(second.refusal("update t set v = 'second' where id = 1").empty());
    first.commit();
    EXPECT_EQ(update(second, 1, "second"), 1U);
    second.commit();
    EXPECT_EQ(first.rows("select v from t"), Rows{rowOf("second")});
}

TEST_P(LockingTest, ReadingTakesNoWriteLock) {
    Connection reader = patient();
    makeTable(reader, 100);
    Statement query(reader, "select id from t order by id");
    query.readAhead(1);
    query.execute();
    EXPECT_TRUE(query.fetch());
    Connection writer = hasty();
    EXPECT_EQ(update(writer, 1, "new"), 1U);
    EXPECT_OK(writer, qdc_commit(writer));
    EXPECT_EQ(query.rest().size(), 99U);
}

TEST_P(LockingTest, AWriterKeepsNobodyFromReading) {
    Connection writer = patient();
    makeTable(writer, 3);
    update(writer, 1, "new");
    Connection reader = hasty();
    EXPECT_EQ(reader.rows("select v from t where id = 1"), Rows{rowOf("row 1")});
    writer.commit();
}

// The library probes a table on the connection on which it then writes.
TEST_P(LockingTest, AProbeHoldsNoSnapshot) {
    for (const bool probeStaysOpen : {false, true})
        for (const char *probe : {"select * from t where 1<>1", "select v, id from t where id = 999"}) {
            SCOPED_TRACE(std::string(probe) + (probeStaysOpen ? ", open" : ", freed"));
            Connection db = patient();
            db.run("drop table if exists t");
            makeTable(db, 1);
            db.begin();
            auto query = std::make_unique<Statement>(db, probe);
            EXPECT_EQ(query->execute(), 0U);
            EXPECT_EQ(query->describe("V").usType, kVarchar);
            if (!probeStaysOpen)
                query.reset();
            Connection other = hasty();
            fill(other, 2, 2);
            EXPECT_OK(other, qdc_commit(other));
            // The first write of the transaction sees what was committed since the probe.
            EXPECT_EQ(db.run("update t set v = 'mine'"), 2U);
            db.commit();
        }
}

TEST_P(LockingTest, AFullyReadEmptyResultHoldsNoSnapshot) {
    Connection db = patient();
    makeTable(db, 1);
    Statement query(db, "select * from t where id > :1");
    query.set(0, 999);
    query.execute();
    EXPECT_FALSE(query.fetch());
    Connection other = hasty();
    fill(other, 1000, 1000);
    other.commit();
    EXPECT_EQ(count(db), 2);
}

TEST_P(LockingTest, BeginningTakesNoSnapshotAndNoLock) {
    Connection db = patient();
    makeTable(db, 1);
    db.begin();
    Connection other = hasty();
    other.begin();
    fill(other, 2, 2);
    EXPECT_OK(other, qdc_commit(other));
    EXPECT_EQ(count(db), 2);
    db.rollback();
    db.begin();
    fill(other, 3, 3);
    other.commit();
    fill(db, 4, 4);
    db.commit();
    EXPECT_EQ(count(other), 4);
}

// A write that matched nothing or failed is no reason to keep others waiting.
TEST_P(LockingTest, AWriteWithoutEffectHoldsNoLock) {
    NEEDS(workAfterError);
    Connection db = patient();
    makeTable(db, 1);
    for (const char *sql : {"update t set v = 'x' where id = 999", "delete from t where id = 999",
                            "insert into t (id) select id from t where 1<>1"}) {
        SCOPED_TRACE(sql);
        EXPECT_EQ(db.run(sql), 0U);
        Connection other = hasty();
        EXPECT_EQ(update(other, 1, "free"), 1U);
        EXPECT_OK(other, qdc_commit(other));
    }
    EXPECT_FALSE(db.refusal("insert into t (id) values (1)").empty());
    Connection other = hasty();
    EXPECT_EQ(update(other, 1, "free"), 1U);
    EXPECT_OK(other, qdc_commit(other));
    EXPECT_EQ(update(db, 1, "mine"), 1U);
    db.commit();
}

TEST_P(LockingTest, AnEndedTransactionHoldsNothing) {
    Connection db = patient();
    makeTable(db, 1);
    for (const bool commits : {true, false}) {
        update(db, 1, "x");
        EXPECT_EQ(count(db), 1);
        commits ? db.commit() : db.rollback();
        Connection other = hasty();
        EXPECT_EQ(update(other, 1, "y"), 1U);
        other.commit();
    }
}

// Also with a query that was left half-read.
TEST_P(LockingTest, AnEndedTransactionOfAHalfReadQueryHoldsNothing) {
    Connection db = patient();
    makeTable(db, 100);
    Statement query(db, "select id from t");
    query.readAhead(1);
    query.execute();
    EXPECT_TRUE(query.fetch());
    db.commit();
    Connection other = hasty();
    fill(other, 101, 101);
    other.commit();
    EXPECT_EQ(count(db), 101);
    EXPECT_EQ(update(db, 1, "mine"), 1U);
    db.commit();
}

TEST_P(LockingTest, ADisconnectedWriterHoldsNothing) {
    Connection db = patient();
    makeTable(db, 1);
    update(db, 1, "x");
    EXPECT_OK(db, qdc_disconnect(db));
    Connection other = hasty();
    EXPECT_EQ(update(other, 1, "y"), 1U);
    other.commit();
    EXPECT_EQ(other.rows("select v from t"), Rows{rowOf("y")});
}

} // namespace
