// Every operation with its connection cut off, held up and cut short at one point of the wire after the other.
#include <cstdlib>
#include <functional>
#include <iostream>

#include "postgres/postgres_engine.h"
#include "postgres/proxy.h"
#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::AnyOf;
using testing::StartsWith;

constexpr int32_t kRowsBefore = 30;
constexpr int32_t kRowsOfBatch = 1200; // more than are on the way at a time
// Points for each operation, direction and way.
constexpr uint64_t kMost = 8;
constexpr uint64_t kMostOfNight = 100;
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
    {"connect", 0, [](Connection &) {}},
    {"insert", 1, insert},
    {"select", 0, select},
    {"write large objects", 1, writeLarge},
    {"read large objects", 0, readLarge},
    {"batch", kRowsOfBatch, insertBatch},
    {"transaction", 2, change},
    {"cursor", 0, step},
};

struct Way {
    Proxy::Unit unit;
    Proxy::Action action;
};
constexpr Way kWays[] = {
    {Proxy::Unit::messages, Proxy::Action::cut}, {Proxy::Unit::halves, Proxy::Action::cut},
    {Proxy::Unit::bytes, Proxy::Action::cut},    {Proxy::Unit::messages, Proxy::Action::delay},
    {Proxy::Unit::halves, Proxy::Action::delay},
};

bool isNightly() {
    const char *wish = std::getenv("ORMEL_NIGHTLY");
    return wish != nullptr && std::string_view(wish) == "1";
}

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
    ~SweepTest() override {
        std::cout << "faults tried on the wire: " << faults_ << "; the operation failed with " << failures_ << ", with "
                  << unknown_ << " of them by an unknown outcome" << std::endl;
    }

    // Fails at points that are evenly spread over what passes when nothing fails, until nothing does.
    void sweep(const Operation &operation) {
        const uint64_t most = isNightly() ? kMostOfNight : kMost;
        proxy_.count();
        perform(operation);
        const Proxy::Passed passed[] = {proxy_.passed(Proxy::toServer), proxy_.passed(Proxy::toClient)};
        check(operation, true, false);
        for (const auto direction : {Proxy::toServer, Proxy::toClient})
            for (const Way &way : kWays) {
                const Proxy::Passed &whole = passed[direction];
                const uint64_t units = way.unit == Proxy::Unit::bytes ? whole.bytes : whole.messages;
                const uint64_t stride = std::max<uint64_t>(1, units / most);
                for (uint64_t after = 0; !HasFailure() && fail(operation, {direction, after, way.unit, way.action});)
                    after += stride;
            }
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
        SCOPED_TRACE(std::string(operation.name) + ": direction " + std::to_string(fault.direction) + ", after " +
                     std::to_string(fault.after) + " of unit " + std::to_string(static_cast<int>(fault.unit)) +
                     ", action " + std::to_string(static_cast<int>(fault.action)));
        proxy_.fail(fault);
        const std::string failure = perform(operation);
        const bool happened = proxy_.hasFailed();
        const bool isUnknown = failure.starts_with("08007: ");
        faults_ += happened ? 1 : 0;
        failures_ += failure.empty() ? 0 : 1;
        unknown_ += isUnknown ? 1 : 0;
        proxy_.count();
        if (!failure.empty()) {
            EXPECT_TRUE(happened && fault.action == Proxy::Action::cut) << failure;
            EXPECT_THAT(failure, AnyOf(StartsWith("08001: "), StartsWith("08006: "), StartsWith("08007: ")));
        }
        check(operation, failure.empty(), isUnknown);
        return happened;
    }

    // All rows or none, and that the next call works.
    void check(const Operation &operation, bool works, bool isUnknown) {
        awaitQuiet();
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

    // Until the server has seen that a connection is gone.
    void awaitQuiet() {
        while (!keeper_
                    .rows("select 1 from pg_stat_activity where datname = current_database() and "
                          "pid <> pg_backend_pid() and state <> 'idle'")
                    .empty())
            keeper_.rollback();
        keeper_.rollback();
    }

    Proxy proxy_{serverPort()};
    Connection keeper_{target()};
    uint64_t faults_ = 0;
    uint64_t failures_ = 0;
    uint64_t unknown_ = 0;
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
