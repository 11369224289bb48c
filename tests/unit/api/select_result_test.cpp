// Selects by conditions that hand out a result.
#include "api/operation.h"
#include "ormeldb/cache.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Bytes;
using unit::Client;
using unit::Log;
using unit::PersonRow;

namespace {

class SelectResultTest : public unit::OperationTest {
protected:
    static void HaveRows(const std::vector<std::vector<unit::Cell>> &rows) {
        Client().On("SELECT * FROM PERSON", {.columns = unit::PersonColumns(), .rows = rows});
    }
};

TEST_F(SelectResultTest, HandsOutTheRowsThatMeetTheConditions) {
    HaveRows({PersonRow(1, "a", 10), PersonRow(2, "b", 20)});
    conditions_.Add(2, ORMEL_OP_LESS_EQUAL, Bytes(int64_t{100}));
    EXPECT_EQ(ORMEL_SelectRec2("PERSON", conditions_.Get(), 99, &result_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT * FROM PERSON WHERE ID = :1 AND BALANCE <= :2"));
    EXPECT_THAT(Client().Calls(), testing::Contains("set_stmt_attr(s2, 201, 100000, 0)"));
    ASSERT_EQ(result_.uiRecNum, 2u);
    int64_t balance = 0;
    EXPECT_EQ(ORMEL_ResultInt64Get(&result_, 1, "BALANCE", &balance), 0u);
    EXPECT_EQ(balance, 20);
    EXPECT_STREQ(ORMEL_ResultStrGet(&result_, 1, "name"), "b");
}

TEST_F(SelectResultTest, WithoutConditionsEverythingIsSelected) {
    EXPECT_EQ(ORMEL_SelectRec2("PERSON", nullptr, 0, &result_), 0u);
    ClearResult();
    EXPECT_EQ(ORMEL_SelectRec2("PERSON", unit::Conditions().Get(), 0, &result_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT * FROM PERSON", "SELECT * FROM PERSON"));
}

TEST_F(SelectResultTest, NothingFoundIsNoFailure) {
    HaveRows({});
    EXPECT_EQ(ORMEL_SelectRec2("PERSON", conditions_.Get(), 0, &result_), 0u);
    EXPECT_EQ(result_.uiRecNum, 0u);
    EXPECT_NE(result_.pstRes, nullptr);
    EXPECT_EQ(ORMEL_ResultStrGet(&result_, 0, "NAME"), nullptr);
}

// The descriptor that the first select learns is given back before the result is handed out.
TEST_F(SelectResultTest, OfATablesFirstSelectIsSafeToReadAndToClear) {
    ASSERT_EQ(ORMEL_ResAttGet("PERSON"), nullptr);
    EXPECT_EQ(ORMEL_SelectRec2("PERSON", nullptr, 0, &result_), 0u);
    EXPECT_EQ(result_.pstResAtt, ORMEL_ResAttGet("PERSON"));
    ASSERT_NE(result_.pstResAtt, nullptr);
    EXPECT_STREQ(ORMEL_ResultStrGet(&result_, 0, "NAME"), "Ann");
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(&result_, 1), 21u);
    ORMEL_SelectResultClear(&result_);
    ORMEL_SelectResultClear(&result_);
    EXPECT_NE(ORMEL_ResAttGet("PERSON"), nullptr) << "the descriptor stays cached";
    EXPECT_EQ(ORMEL_SelectRec2("person", nullptr, 0, &result_), 0u) << "and the next select uses it";
    EXPECT_EQ(result_.pstResAtt, ORMEL_ResAttGet("PERSON"));
}

TEST_F(SelectResultTest, WhereTheCacheIsFullThereIsNoDescriptor) {
    ORMEL_ResAttrCacheMgrGet()->iMax = 0;
    EXPECT_EQ(ORMEL_SelectRec2("PERSON", nullptr, 0, &result_), 0u);
    EXPECT_EQ(result_.pstResAtt, nullptr);
    EXPECT_EQ(result_.uiRecNum, 1u);
    EXPECT_STREQ(ORMEL_ResultTextGetByPos(&result_, 0, 1), "Ann") << "rows are read by position";
    EXPECT_EQ(ORMEL_ResultStrGet(&result_, 0, "NAME"), nullptr);
    ClearResult();
    ORMEL_ResAttrCacheMgrGet()->iMax = -1;
}

TEST_F(SelectResultTest, AFailureSaysNothingOfItsOwn) {
    void *conn = ORMEL_DBConnect();
    Client().Fail("execute");
    Log().Forget();
    EXPECT_EQ(ORMEL_SelectRecForConn2(conn, "PERSON", nullptr, 0, &result_), 255u);
    EXPECT_THAT(Log().LinesOf("ORMEL_SelectRecForConn2"), ElementsAre("DEBUG ORMEL_SelectRecForConn2: Trace in."));
    ORMEL_DBDisConnect(conn);
}

TEST_F(SelectResultTest, RefusedConditionsSelectNothing) {
    unit::Conditions unknown;
    unknown.Add(3, 0, "");
    EXPECT_EQ(ORMEL_SelectRec2("PERSON", unknown.Get(), 0, &result_), 1u);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_EQ(result_.pstRes, nullptr);
}

TEST_F(SelectResultTest, AFailureLeavesTheResultAsItWas) {
    for (const char *operation : {"connect", "prepare", "execute"}) {
        auto result = ORMEL_SELECT_RESULT{ORMEL_ResAttGet("PERSON"), nullptr, 99};
        Client().Fail(operation);
        EXPECT_NE(ORMEL_SelectRec2("PERSON", nullptr, 0, &result), 0u);
        EXPECT_EQ(result.uiRecNum, 99u);
        EXPECT_EQ(result.pstRes, nullptr);
    }
}

TEST_F(SelectResultTest, StopsAtWhatIsPrefetchedAndSaysSo) {
    unit::Threshold info(KPL_LOG_INFO);
    Have("LONG", unit::Integers(1));
    Client().On("SELECT * FROM LONG", {.columns = unit::Integers(1), .rows = {PREFETCH_ROWS + 1, {unit::Int32(1)}}});
    EXPECT_EQ(ORMEL_SelectRec2("LONG", nullptr, 0, &result_), 0u);
    EXPECT_NE(ORMEL_ResultGetFieldValue(&result_, PREFETCH_ROWS - 1, 0), nullptr);
    EXPECT_EQ(ORMEL_ResultGetFieldValue(&result_, PREFETCH_ROWS, 0), nullptr);
    EXPECT_TRUE(Log().Says("dbGetFields :LONG get curRow(100000) > PREFETCH_ROWS or rowCount:100001"));
}

} // namespace
