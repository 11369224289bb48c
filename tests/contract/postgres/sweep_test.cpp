// Every operation with its connection cut off, held up and cut short at one point of the wire after the other.
#include <functional>

#include "postgres/postgres_engine.h"
#include "postgres/wire.h"
#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::AnyOf;
using testing::StartsWith;

constexpr int32_t kRowsBefore = 30;
constexpr int32_t kRowsOfBatch = 1200; // more than are on the way at a time
constexpr MostPoints kPoints = {8, 100};
const std::string kLarge(100'000, 'x');

// What is done on an open connection. A call that fails throws.
struct Operation {
    const char *name;
    int32_t rowsAdded;
    std::function<void(Connection &)> run;
};

void insert(Connection &db) {
    db.run("insert into t (id, v) values (:1, :2)", 1000, "new");
    db.commit();
}

void select(Connection &db) {
    const Rows rows = db.rows("select id, v from t where id <= :1 order by id", kRowsBefore);
    EXPECT_EQ(std::ssize(rows), kRowsBefore);
    db.rollback();
}

void writeLarge(Connection &db) {
    Statement insert(db, "insert into t (id, c, b) values (:1, :2, :3)");
    insert.set(0, 1000);
    insert.setLob(1, kClob, kLarge);
    insert.setLob(2, kBlob, kLarge);
    insert.execute();
    db.commit();
}

void readLarge(Connection &db) {
    EXPECT_EQ(db.rows("select c, b from t where id = 1"), Rows{rowOf(kLarge, kLarge)});
    db.rollback();
}

void insertBatch(Connection &db) {
    std::vector<int32_t> ids;
    for (int32_t i = 0; i < kRowsOfBatch; ++i)
        ids.push_back(1000 + i);
    Statement insert(db, "insert into t (id) values (:1)");
    insert.rows(static_cast<uint32_t>(ids.size()));
    insert.bind(0, kInteger, ids.data(), sizeof ids[0]);
    EXPECT_EQ(insert.execute(), ids.size());
    db.commit();
}

void change(Connection &db) {
    db.begin();
    for (const int32_t id : {1000, 1001, 1002})
        db.run("insert into t (id, v) values (:1, 'new')", id);
    EXPECT_EQ(db.run("update t set v = 'newer' where id >= 1000"), 3U);
    EXPECT_EQ(db.run("delete from t where id = 1001"), 1U);
    db.commit();
}

void step(Connection &db) {
    Statement query(db, "select id from t order by id");
    query.readAhead(1);
    query.execute();
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(query.fetch());
    db.rollback();
}

const Operation kOperations[] = {
    {"insert", 1, insert},
    {"select", 0, select},
    {"write large objects", 1, writeLarge},
    {"read large objects", 0, readLarge},
    {"batch", kRowsOfBatch, insertBatch},
    {"transaction", 2, change},
    {"cursor", 0, step},
};

class SweepTest : public ContractTest {
protected:
    SweepTest() {
        keeper_.run("create table t (id integer primary key, v varchar(40), c text, b bytea)");
        fill(keeper_, 1, kRowsBefore);
        Statement large(keeper_, "update t set c = :1, b = :2 where id = 1");
        large.setLob(0, kClob, kLarge);
        large.setLob(1, kBlob, kLarge);
        large.execute();
        keeper_.commit();
    }

    void sweep(const Operation &operation) {
        SCOPED_TRACE(operation.name);
        proxy_.count();
        perform(operation);
        const WirePoints points(proxy_, kPoints);
        check(operation, true, false);
        points.forEach([&](const Proxy::Fault &fault) { return fail(operation, fault); });
    }

private:
    Target between() const { return {"127.0.0.1:" + std::to_string(proxy_.port()), target().user, target().password}; }

    // Returns the words of a failure, or nothing.
    std::string perform(const Operation &operation) {
        Connection db;
        std::string failure = db.connect(between()) != 0 ? db.error() : "";
        try {
            if (failure.empty())
                operation.run(db);
        } catch (const ClientError &) {
            failure = db.error();
        }
        EXPECT_EQ(failure.empty(), db.errorCode() == 0);
        EXPECT_OK(db, qdc_disconnect(db));
        return failure;
    }

    // Returns whether it came to that.
    bool fail(const Operation &operation, const Proxy::Fault &fault) {
        proxy_.fail(fault);
        const std::string failure = perform(operation);
        const bool happened = proxy_.hasFailed();
        proxy_.count();
        figures_.add(happened, !failure.empty(), failure);
        if (!failure.empty()) {
            EXPECT_TRUE(happened && fault.action != Proxy::Action::delay) << failure;
            EXPECT_THAT(failure, AnyOf(StartsWith("08001: "), StartsWith("08006: "), StartsWith("08007: ")));
        }
        check(operation, failure.empty(), isOutcomeUnknown(failure));
        return happened;
    }

    // All rows or none, and that the next call works.
    void check(const Operation &operation, bool works, bool isUnknown) {
        awaitQuiet(keeper_);
        Connection next;
        ASSERT_EQ(next.connect(between()), 0U) << next.error();
        const int64_t added = count(next) - kRowsBefore;
        next.rollback();
        if (isUnknown) {
            EXPECT_THAT(added, AnyOf(0, operation.rowsAdded));
        } else {
            EXPECT_EQ(added, works ? operation.rowsAdded : 0);
        }
        keeper_.run("delete from t where id >= 1000");
        keeper_.commit();
    }

    Proxy proxy_{serverPort()};
    Connection keeper_{target()};
    WireFigures figures_;
};
ENGINE_SUITE(SweepTest);

TEST_P(SweepTest, WhereverItBreaksItSaysSoAndLeavesAllOrNothing) {
    for (const Operation &operation : kOperations)
        sweep(operation);
}

// A connect that is none of a kept connection.
TEST_P(SweepTest, WhereverAConnectBreaksItSaysSo) {
    configure("client.pool=0\n");
    sweep({"connect", 0, [](Connection &) {}});
}

} // namespace
