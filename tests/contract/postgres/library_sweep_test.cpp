// Every operation of the library with its connection cut off, held up and cut short at one point of the wire after the
// other, once and from then on. It says so by one of its codes or succeeds whole; what it wrote is there once or not at
// all, no slot stays taken, and the next call works.
#include <ormeldb.h>
#include <span>

#include "operations/operations.h"
#include "postgres/library_test.h"
#include "postgres/postgres_engine.h"
#include "postgres/wire.h"

namespace {

using namespace contract;
using operations::kOperations;
using operations::kPostgres;
using operations::Operation;
using operations::Outcome;

// New connections cost most, and how their log-in breaks is another sweep's.
constexpr MostPoints kPointsOfNew = {2, 10};
constexpr MostPoints kPoints = {3, 40};

class LibrarySweepTest : public LibraryTest {
protected:
    LibrarySweepTest() {
        runOnServer(kPostgres.tables);
        restore();
        before_ = contents();
    }

    void sweep(const Operation &operation, const MostPoints &points) {
        SCOPED_TRACE(operation.name);
        after_.clear();
        expectSuccess(operation);
        proxy().count();
        expectSuccess(operation);
        const WirePoints whole(proxy(), points);
        whole.forEach([&](const Proxy::Fault &fault) { return fail(operation, fault); });
    }

    // Describes every table anew from now on.
    void forgetTables() { forgets_ = true; }

private:
    // All that the tables hold, which are then as they were before.
    std::string contents() {
        awaitQuiet(keeper_);
        const std::string held = keeper_.rows(kPostgres.contents).at(0).at(0).value();
        keeper_.rollback();
        if (held != before_)
            restore();
        return held;
    }
    void restore() {
        keeper_.run("do $$ begin " + std::string(kPostgres.rows) + " end $$");
        keeper_.commit();
    }

    Outcome attempt(const Operation &operation) const {
        if (forgets_) {
            ORMEL_ResAttMgrUnInit();
            ORMEL_ResAttMgrInit();
        }
        return operations::attempt(operation.run);
    }

    // What the first success leaves in the tables, all others must leave.
    void expectSuccess(const Operation &operation) {
        const Outcome outcome = attempt(operation);
        EXPECT_EQ(outcome.code, ORMEL_OK) << outcome.error;
        const std::string now = contents();
        if (after_.empty())
            after_ = now;
        EXPECT_EQ(now, after_);
        EXPECT_EQ(now != before_, operation.writes);
    }

    // Returns whether it came to that.
    bool fail(const Operation &operation, const Proxy::Fault &fault) {
        proxy().fail(fault);
        const Outcome outcome = attempt(operation);
        const bool happened = proxy().hasFailed();
        proxy().count();
        SCOPED_TRACE(outcome.error);
        figures_.add(happened, outcome.code != ORMEL_OK, outcome.error);
        EXPECT_EQ(g_stTransMgr.uiCount, 0U) << "slots are left";
        if (outcome.code == ORMEL_OK) {
            EXPECT_EQ(contents(), after_);
        } else {
            EXPECT_TRUE(happened && fault.action != Proxy::Action::delay);
            checkRefusal(operation, outcome);
        }
        expectSuccess(operation);
        return happened;
    }

    void checkRefusal(const Operation &operation, const Outcome &outcome) {
        EXPECT_THAT(operation.codes, testing::Contains(outcome.code));
        EXPECT_TRUE(!operation.saysWhy || !outcome.error.empty()) << "no word of why";
        const std::string now = contents();
        if (now != before_) {
            EXPECT_TRUE(isOutcomeUnknown(outcome.error));
            EXPECT_EQ(now, after_);
        }
    }

    Connection keeper_{target()};
    bool forgets_ = false;
    std::string before_;
    std::string after_;
    WireFigures figures_;
};
ENGINE_SUITE(LibrarySweepTest);

TEST_P(LibrarySweepTest, OnNewConnectionsEveryFaultIsAnswered) {
    start("client.pool=0\n");
    forgetTables();
    for (const Operation &operation : kOperations)
        sweep(operation, kPointsOfNew);
}

// Where a connect, the first of the operations, says nothing on the wire.
TEST_P(LibrarySweepTest, OnAKeptConnectionEveryFaultIsAnswered) {
    start("client.pool=1\n");
    for (const Operation &operation : std::span(kOperations).subspan(1))
        sweep(operation, kPoints);
}

} // namespace
