// What some operations are known to do after a failure and no other may do: each shown once, call by call.
#include "dao/qdc.h"
#include "operation.h"
#include "support/process.h"
#include "support/started.h"

using fault::Scene;
using testing::IsEmpty;
using unit::Client;
using unit::Log;
using unit::operator+;

namespace {

using Calls = std::vector<std::string>;

class ExceptionTest : public unit::StartedTest {
protected:
    // The calls since the scene was made that change something at the client, without the reading.
    static Calls Sent() { return Client().CallsButReads(); }

    static size_t Commits() { return static_cast<size_t>(Client().Count("commit")); }
};

// --- A commit ends what was started half ---

TEST_F(ExceptionTest, ATransactionThatDoesNotBeginIsCommitted) {
    const Scene scene(fault::kNothing, false);
    Client().Fail("set_conn_attr", 2);
    EXPECT_EQ(ORMEL_StartTrans("f", 1), nullptr);
    const Calls ended = {"set_conn_attr(c1, 101, 0, 4)", "commit(c1)"};
    EXPECT_EQ(Sent(), unit::Opened("c1") + ended + unit::Closed("c1"));
}

TEST_F(ExceptionTest, ATransactionWithoutAConnectionIsNot) {
    for (const char *operation : {"alloc_conn", "set_conn_attr", "connect"}) {
        const Scene scene(fault::kNothing, false);
        Client().Fail(operation);
        EXPECT_EQ(ORMEL_StartTrans("f", 1), nullptr);
        EXPECT_EQ(Commits(), 0u) << operation;
    }
}

TEST_F(ExceptionTest, ACursorThatDoesNotBeginIsCommitted) {
    struct {
        const char *operation;
        int n;
        size_t commits;
    } const cases[] = {{"connect", 1, 0},    {"alloc_stmt", 1, 0}, {"prepare", 1, 0},       {"execute", 1, 0},
                       {"alloc_stmt", 2, 1}, {"prepare", 2, 1},    {"set_conn_attr", 2, 1}, {"execute", 2, 1}};
    for (const auto &c : cases) {
        for (const bool byObject : {false, true}) {
            Scene scene(fault::kNothing, false);
            Client().Fail(c.operation, c.n);
            ORMEL_TRANS *cursor =
                byObject ? ORMEL_BeginSelectSpecifyField(&scene.where, "f", 1) : ORMEL_BeginSelect("PARTS", "f", 1);
            EXPECT_EQ(cursor, nullptr);
            EXPECT_EQ(Commits(), c.commits) << c.operation << " " << c.n;
        }
    }
}

TEST_F(ExceptionTest, ACursorWhoseColumnsCannotBeDescribedIsCommitted) {
    Scene scene(fault::kNothing, true);
    Client().Fail("execute", 2);
    EXPECT_EQ(ORMEL_BeginSelectSpecifyField(&scene.some, "f", 1), nullptr);
    EXPECT_EQ(Commits(), 1u);
}

// --- Rows are kept ---

TEST_F(ExceptionTest, RowsAreKeptWhereTheirColumnsCannotBeDescribed) {
    Scene scene(fault::kConn | fault::kSlot, true);
    const std::pair<const char *, std::function<uint32_t()>> variants[] = {
        {"ForConn3", [&] { return ORMEL_SelectRecForConn3(scene.conn, &scene.some, &scene.out.result); }},
        {"ForTrans", [&] { return ORMEL_SelectRecByObjForTrans(scene.slot, &scene.some, &scene.out.result); }},
        {"ByObj", [&] { return ORMEL_SelectRecByObj(&scene.some, &scene.out.result); }}};
    for (const auto &[name, select] : variants) {
        SCOPED_TRACE(name);
        const unit::Blocks before = unit::Live();
        Client().Fail("prepare", 2);
        EXPECT_EQ(select(), ORMEL_ERR_TABLE);
        EXPECT_EQ(scene.out.result.pstRes, nullptr);
        EXPECT_EQ(unit::FreeNew(before), 5u) << "the header, the array of rows, one row and its two values";
    }
}

// --- A statement stays with its connection ---

TEST_F(ExceptionTest, AStatementOverTheCatalogueStaysWithItsConnection) {
    for (const char *operation : {"prepare", "execute"}) {
        const Scene scene(fault::kConn, false);
        Client().Fail(operation);
        EXPECT_EQ(dbSelectAtt1(scene.conn, "PARTS"), nullptr);
        EXPECT_EQ(Client().Count("free_stmt"), 0) << operation;
        EXPECT_EQ(Client().LiveStatements(), 1);
        qdc_free_stmt(Client().Handle("s1")); // what the client does when the connection closes
    }
}

// --- A batch without memory is answered as done ---

TEST_F(ExceptionTest, ABatchWhoseArraysCannotBeHadIsAnsweredAsDone) {
    const int arrays = 1 + 2 * 2 + 2 * 3; // the batch, two for each column and three for large objects
    for (int n = 1; n <= arrays; ++n) {
        SCOPED_TRACE(n);
        const Scene scene(fault::kConn | fault::kMulti, true);
        Client().ForgetCalls();
        Log().Forget();
        const unit::FailingAllocation fail(n);
        EXPECT_EQ(ORMEL_PatchInsertRecForConn2(scene.conn, scene.multi), ORMEL_OK);
        EXPECT_THAT(Sent(), IsEmpty());
        EXPECT_EQ(Log().LinesOf("ORMEL_BatchInsert_Para_Malloc", KPL_LOG_ERROR).size(), 1u);
    }
}

TEST_F(ExceptionTest, AndItsPlainVariantCommitsNothing) {
    const Scene scene(fault::kMulti, true);
    const unit::FailingAllocation fail(1);
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(scene.multi), ORMEL_OK);
    const Calls committed = {"commit(c1)"};
    EXPECT_EQ(Sent(), unit::Opened("c1") + committed + unit::Closed("c1"));
}

// --- Slots of large objects are handed out by a failing binding ---

TEST_F(ExceptionTest, SlotsOfLargeObjectsAreTheCallersAlsoWhenTheBindingFails) {
    Scene scene(fault::kPrepared | fault::kRequest, false);
    Client().Fail("bind_by_pos", 3);
    EXPECT_EQ(dbBindPara(scene.stmt, &scene.para, 1, 0, 0, &scene.out.lobs), 0u);
    EXPECT_NE(scene.out.lobs, nullptr);
    scene.Release();
    const unit::FailingAllocation fail(1);
    EXPECT_EQ(dbBindPara(scene.stmt, &scene.para, 1, 0, 0, &scene.out.lobs), 0u);
    EXPECT_EQ(scene.out.lobs, nullptr) << "there are none";
}

// --- The process ends ---

TEST_F(ExceptionTest, TheProcessEndsWhereTheDatabaseStaysAway) {
    for (const bool start : {false, true}) {
        const unit::Ending ending = unit::RunInChild([&] {
            Client().FailFrom("");
            start ? ORMEL_Init() : ORMEL_CheckDbStatus(2, 6, 30000);
        });
        EXPECT_EQ(ending.status, 1);
        EXPECT_EQ(ending.output, "Process exit because ORMEL connect timout(32000 ms), process exit 1.\n");
    }
}

// --- What outlives a failure ---

// The status of a column's description is not looked at: the column is nameless in the table's descriptor, which is
// kept like any other.
TEST_F(ExceptionTest, AColumnThatWasNotDescribedStaysNamelessUntilTheStop) {
    Scene scene(fault::kConn, false);
    Client().Fail("desc_column_by_id");
    EXPECT_EQ(ORMEL_InsertRecForConn2(scene.conn, &scene.part), ORMEL_ERR_CHECK);
    EXPECT_EQ(ORMEL_InsertRecForConn2(scene.conn, &scene.part), ORMEL_ERR_CHECK);
    ORMEL_UnInit();
    EXPECT_EQ(ORMEL_Init(), ORMEL_OK);
    EXPECT_EQ(ORMEL_InsertRecForConn2(scene.conn, &scene.part), ORMEL_OK);
}

// Slots are closed at the stop, and what they point at is left to those who made it.
TEST_F(ExceptionTest, TheStopKeepsTheDescriptorOfACursorWithSelectFields) {
    Scene scene(fault::kNothing, true);
    const unit::Blocks before = unit::Live();
    ORMEL_TRANS *cursor = ORMEL_BeginSelectSpecifyField(&scene.some, "f", 1);
    ASSERT_NE(cursor, nullptr);
    EXPECT_EQ(ORMEL_TransGetResAtt(cursor)->iAttNum, 2);
    ORMEL_UnInit();
    EXPECT_EQ(unit::FreeNew(before), 1u);
    EXPECT_EQ(ORMEL_Init(), ORMEL_OK);
}

// A count that a refused commit takes back has reached its caller.
TEST_F(ExceptionTest, TheCountOfAWriteIsStoredBeforeItsCommit) {
    Scene scene(fault::kNothing, true);
    Client().Fail("commit");
    EXPECT_EQ(ORMEL_DeleteRec("PERSON", nullptr, &scene.out.count), unit::kClientStatus);
    EXPECT_EQ(scene.out.count, 1u);
}

} // namespace
