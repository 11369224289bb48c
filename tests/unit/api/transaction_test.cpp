#include <thread>

#include "support/started.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Client;
using unit::Log;
using unit::operator+;

namespace {

using Calls = std::vector<std::string>;

// Commit and rollback differ in their names only.
struct End {
    const char *function;
    uint32_t (*run)(ORMEL_TRANS *);
    const char *operation;
};
const End kEnds[] = {{"ORMEL_CommitTrans", ORMEL_CommitTrans, "commit"},
                     {"ORMEL_RollbackTrans", ORMEL_RollbackTrans, "rollback"}};

class TransactionTest : public unit::StartedTest {
protected:
    // A transaction on connection "c1" of a client that was asked nothing yet.
    static ORMEL_TRANS *Started() {
        Client().Reset();
        ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
        Client().ForgetCalls();
        Log().Forget();
        return slot;
    }
};

// --- Starting ---

TEST_F(TransactionTest, TakesASlotAndBegins) {
    ORMEL_TRANS *slot = ORMEL_StartTrans("caller", 7);
    ASSERT_NE(slot, nullptr);
    EXPECT_STREQ(slot->pcFunc, "caller");
    EXPECT_EQ(slot->uiLine, 7u);
    EXPECT_THAT(Client().Calls(), ElementsAreArray(unit::Opened("c1") + Calls{"set_conn_attr(c1, 101, 0, 4)"}));
    EXPECT_THAT(Log().LinesOf("ORMEL_StartTrans"), IsEmpty());
    EXPECT_EQ(g_stTransMgr.uiCount, 1u);
    ORMEL_RollbackTrans(slot);
}

TEST_F(TransactionTest, WithoutASlotThereIsNoTransaction) {
    std::vector<ORMEL_TRANS *> slots;
    for (int i = 0; i < 16; ++i) {
        slots.push_back(ORMEL_StartTrans("f", 1));
        EXPECT_NE(slots.back(), nullptr);
    }
    Log().Forget();
    EXPECT_EQ(ORMEL_StartTrans("f", 1), nullptr);
    EXPECT_THAT(Log().LinesOf("ORMEL_StartTrans"),
                ElementsAre("ERROR ORMEL_StartTrans: Create Normal Transaction Failed."));
    for (ORMEL_TRANS *slot : slots) {
        EXPECT_EQ(ORMEL_CommitTrans(slot), 0u);
    }
}

TEST_F(TransactionTest, WithoutAConnectionThereIsNoTransaction) {
    Client().Fail("connect");
    EXPECT_EQ(ORMEL_StartTrans("f", 1), nullptr);
    EXPECT_THAT(Log().LinesOf("ORMEL_StartTrans"),
                ElementsAre("ERROR ORMEL_StartTrans: Create Normal Transaction Failed."));
}

// A commit, not a rollback, ends what was half begun.
TEST_F(TransactionTest, ARefusedBeginningEndsWithACommit) {
    Client().Fail("set_conn_attr", 2);
    EXPECT_EQ(ORMEL_StartTrans("f", 1), nullptr);
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    EXPECT_EQ(Client().Count("commit"), 1);
    EXPECT_EQ(Client().Count("rollback"), 0);
    EXPECT_THAT(Log().LinesOf("ORMEL_CommitTrans"), ElementsAre("DEBUG ORMEL_CommitTrans: Trace in."));
}

// --- Ending ---

TEST_F(TransactionTest, EndsAndReleasesTheSlot) {
    for (const End &end : kEnds) {
        SCOPED_TRACE(end.function);
        ORMEL_TRANS *slot = Started();
        EXPECT_EQ(end.run(slot), 0u);
        EXPECT_THAT(Client().Calls(),
                    ElementsAreArray(Calls{std::string(end.operation) + "(c1)"} + unit::Closed("c1")));
        EXPECT_THAT(Log().LinesOf(end.function), ElementsAre("DEBUG " + std::string(end.function) + ": Trace in."));
        EXPECT_EQ(slot->pConn, nullptr);
        EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    }
}

TEST_F(TransactionTest, ARefusedEndPrintsTheErrorAndReleasesTheSlot) {
    for (const End &end : kEnds) {
        SCOPED_TRACE(end.function);
        ORMEL_TRANS *slot = Started();
        Client().Fail(end.operation);
        EXPECT_EQ(end.run(slot), 1u);
        EXPECT_THAT(Client().Calls(),
                    ElementsAreArray(Calls{std::string(end.operation) + "(c1)", "get_error(c1)"} + unit::Closed("c1")));
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), unit::Lines{"ERROR dbPrintError: QD-00942 no such table"});
        EXPECT_EQ(slot->pConn, nullptr);
        EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    }
}

TEST_F(TransactionTest, NoSlotNoTransaction) {
    for (const End &end : kEnds) {
        EXPECT_EQ(end.run(nullptr), 1u);
        EXPECT_NE(end.run(&g_stTransMgr.astTrans[3]), 0u) << "a slot that nobody holds";
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
}

TEST_F(TransactionTest, ManyThreadsRunTransactions) {
    unit::Threshold silent(KPL_LOG_FATAL);
    std::vector<std::thread> threads;
    std::atomic<int> ended = 0;
    for (int t = 0; t < 12; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i) {
                ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
                ended += slot != nullptr && ORMEL_CommitTrans(slot) == 0 ? 1 : 0;
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(ended, 240) << "twelve threads never fill sixteen slots";
}

} // namespace
