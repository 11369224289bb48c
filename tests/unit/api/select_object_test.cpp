// Selects by object, counted first or not.
#include "api/operation.h"
#include "ormeldb/cache.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Bytes;
using unit::Client;
using unit::Int32;
using unit::Log;
using unit::operator+;

namespace {

using Select = uint32_t (*)(ORMEL_OBJECT *, ORMEL_SELECT_RESULT *);
using SelectOn = uint32_t (*)(void *, ORMEL_OBJECT *, ORMEL_SELECT_RESULT *);

class SelectObjectTest : public unit::OperationTest {
protected:
    void SetUp() override {
        OperationTest::SetUp();
        conn_ = ORMEL_DBConnect();
        Forget();
    }
    void TearDown() override {
        ORMEL_DBDisConnect(conn_);
        OperationTest::TearDown();
    }
    static void Forget() {
        Client().ForgetCalls();
        Log().Forget();
    }

    // Selects NAME and ID, in that order, from a database that knows how to.
    void SelectNameAndId() {
        const std::vector<unit::Column> columns = {{"NAME", 9, 21}, {"ID", 1, 4, 1}};
        Client().On("SELECT NAME, ID", {.columns = columns, .rows = {{unit::Text("Ann"), Int32(7)}}});
        ORMEL_ObjectSelectFieldSet(&object_, "NAME");
        ORMEL_ObjectSelectFieldSet(&object_, "ID");
    }

    // A select on the test's connection that fails so.
    void ExpectFailure(SelectOn select, uint32_t code, const unit::Lines &lines) {
        Log().Forget();
        EXPECT_EQ(select(conn_, &object_, &result_), code);
        EXPECT_EQ(Log().LinesOf("ORMEL_Select"), lines);
        EXPECT_EQ(result_.pstRes, nullptr);
        EXPECT_EQ(result_.pstResAtt, nullptr);
    }

    void *conn_ = nullptr;
};

// --- By all items ---

TEST_F(SelectObjectTest, ItemsAreConditionsWithTheirOperators) {
    ORMEL_ObjectStrOptionLikeSet(&object_, "NAME", "A%");
    ORMEL_ObjectInt64Set(&object_, "BALANCE", 5);
    object_.astItem[2].uiOp = ORMEL_OP_LESS;
    ORMEL_ObjectSelectRowCountSet(&object_, 1, 20, 40);
    EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT * FROM PERSON WHERE ID = :1 AND NAME like :2 AND BALANCE < :3 "
                                          "limit 20 offset 40"));
    EXPECT_EQ(Bound(), (Values{{0, Bytes(int32_t{7})}, {1, "A%"}, {2, Bytes(int64_t{5})}}));
    EXPECT_EQ(result_.uiRecNum, 1u);
    EXPECT_STREQ(ORMEL_ResultStrGet(&result_, 0, "NAME"), "Ann");
}

TEST_F(SelectObjectTest, WithoutItemsEverythingIsSelected) {
    ORMEL_ObjectParaClear(&object_);
    for (Select select : {ORMEL_SelectRecByObj, ORMEL_SelectBatchRecByObj}) {
        EXPECT_EQ(select(&object_, &result_), 0u);
        EXPECT_EQ(Statements().back(), "SELECT * FROM PERSON");
        EXPECT_EQ(result_.uiRecNum, 1u);
        ClearResult();
    }
}

TEST_F(SelectObjectTest, AnObjectCanBeUsedAgainAndAfterClearing) {
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
        ClearResult();
    }
    ORMEL_ObjectParaClear(&object_);
    ORMEL_ObjectStrSet(&object_, "NAME", "Ann");
    Client().ForgetCalls();
    EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT * FROM PERSON WHERE NAME = :1"));
    EXPECT_STREQ(object_.acTableName, "PERSON");
}

TEST_F(SelectObjectTest, TheResultOwnsADescriptorOfTheTable) {
    EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
    EXPECT_NE(result_.pstResAtt, nullptr);
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), nullptr) << "not given back yet";
    ORMEL_SelectResultClear(&result_);
    ORMEL_RES_ATT *cached = ORMEL_ResAttGet("PERSON");
    EXPECT_NE(cached, nullptr);
    EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
    EXPECT_EQ(result_.pstResAtt, cached);
    ORMEL_SelectResultClear(&result_);
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), cached);
}

TEST_F(SelectObjectTest, NothingFoundIsNoFailure) {
    Client().On("SELECT * FROM PERSON", {.columns = unit::PersonColumns()});
    EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
    EXPECT_EQ(result_.uiRecNum, 0u);
    EXPECT_NE(result_.pstRes, nullptr);
    EXPECT_EQ(Log().LinesOf("ORMEL_SelectRecForConn3").back(), "DEBUG ORMEL_SelectRecForConn3: Select recNum: 0");
}

TEST_F(SelectObjectTest, FailuresAreLoggedWithTheirCode) {
    const std::string name = "DEBUG ORMEL_SelectRecForConn3: ";
    const unit::Lines begin = {name + "Trace in."};
    Client().Fail("prepare");
    ExpectFailure(ORMEL_SelectRecForConn3, 255, begin + unit::Lines{name + "Select Rec return: 0xff"});
    Client().Fail("prepare", 2);
    ExpectFailure(ORMEL_SelectRecForConn3, 255, begin + unit::Lines{name + "Select Rec return: 0xff"});
    ORMEL_ObjectInt32Set(&object_, "NOBODY", 1);
    ExpectFailure(ORMEL_SelectRecForConn3, 98, begin + unit::Lines{name + "Select Rec return: 0x62"});
}

// --- Some columns ---

TEST_F(SelectObjectTest, SelectFieldsMakeADescriptorOfTheirOwn) {
    SelectNameAndId();
    EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
    ASSERT_NE(result_.pstResAtt, nullptr);
    EXPECT_EQ(result_.pstResAtt->iAttNum, 2);
    EXPECT_STREQ(result_.pstResAtt->astField[0].attname, "NAME");
    EXPECT_EQ(result_.pstResAtt->astField[1].offset, 21);
    int32_t id = 0;
    EXPECT_EQ(ORMEL_ResultInt32Get(&result_, 0, "ID", &id), 0u);
    EXPECT_EQ(id, 7);
    EXPECT_STREQ(ORMEL_ResultStrGet(&result_, 0, "NAME"), "Ann");
    EXPECT_EQ(ORMEL_ResultStrGet(&result_, 0, "BALANCE"), nullptr);
    ORMEL_RES_ATT *cached = ORMEL_ResAttGet("PERSON");
    ASSERT_NE(cached, nullptr);
    EXPECT_EQ(cached->iAttNum, 3) << "the cache has the whole table's";
    ClearResult();
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), cached) << "and keeps it";
}

TEST_F(SelectObjectTest, ADescriptorOfSomeColumnsNeverBecomesTheTables) {
    SelectNameAndId();
    ORMEL_ResAttrCacheMgrGet()->iMax = 0; // the whole one cannot be kept
    EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
    ORMEL_ResAttrCacheMgrGet()->iMax = -1;
    EXPECT_STREQ(ORMEL_ResultStrGet(&result_, 0, "NAME"), "Ann");
    ClearResult();
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), nullptr);
}

TEST_F(SelectObjectTest, ADescriptorOfSomeColumnsIsLearntByEachCall) {
    SelectNameAndId();
    for (int statements : {3, 2}) {
        Forget();
        EXPECT_EQ(ORMEL_SelectRecForConn3(conn_, &object_, &result_), 0u);
        EXPECT_EQ(Client().Count("alloc_stmt"), statements) << "the table, the rows, the columns";
        ClearResult();
    }
}

// The one thing that is kept: the rows that were read before the reduced descriptor failed. Nobody can reach them.
TEST_F(SelectObjectTest, RowsAreKeptWhereTheirColumnsCannotBeDescribed) {
    ORMEL_ResAttPush(unit::Describe("PERSON", unit::PersonColumns()).release());
    SelectNameAndId();
    for (const char *operation : {"alloc_stmt", "prepare", "execute"}) {
        SCOPED_TRACE(operation);
        Client().Fail(operation, 2);
        const unit::Blocks before = unit::Live();
        const std::string name = "DEBUG ORMEL_SelectRecForConn3: ";
        ExpectFailure(ORMEL_SelectRecForConn3, 255, {name + "Trace in.", name + "Select Rec return: 0xff"});
        EXPECT_EQ(unit::FreeNew(before), 5u) << "the header, the array of rows, one row and its two values";
        EXPECT_EQ(Client().LiveStatements(), 0);
    }
}

// --- Counted ---

TEST_F(SelectObjectTest, ACountedSelectCountsFirst) {
    const std::vector<std::vector<unit::Cell>> rows = {5, unit::PersonRow(7, "Ann", 1)};
    Client().On("SELECT * FROM PERSON", {.columns = unit::PersonColumns(), .rows = rows});
    Client().On("SELECT count(*) FROM PERSON", {.columns = {{"COUNT", 2, 8}}, .rows = {{unit::Int64(3)}}});
    ORMEL_ObjectSelectRowCountSet(&object_, 1, 20, 40);
    EXPECT_EQ(ORMEL_SelectBatchRecForConn(conn_, &object_, &result_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT count(*) FROM PERSON WHERE ID = :1",
                                          "SELECT * FROM PERSON WHERE ID = :1 limit 20 offset 40"));
    EXPECT_EQ(result_.uiRecNum, 3u) << "as many as were counted";
    EXPECT_EQ(result_.pstRes->uiRowCount, 3u);
    EXPECT_THAT(Log().LinesOf("ORMEL_SelectBatchRecForConn"),
                ElementsAre("DEBUG ORMEL_SelectBatchRecForConn: Trace in.",
                            "INFO ORMEL_SelectBatchRecForConn: SelectBatchRec recCount: 3",
                            "DEBUG ORMEL_SelectBatchRecForConn: Select recNum: 3"));
    EXPECT_THAT(Log().LinesOf("ORMEL_GetBatchSelectCount"),
                ElementsAre("DEBUG ORMEL_GetBatchSelectCount: Select recNum: 3, return:0x0"));
}

TEST_F(SelectObjectTest, FewerRowsThanWereCountedAreTheResult) {
    Client().On("SELECT count(*) FROM PERSON", {.columns = {{"COUNT", 2, 8}}, .rows = {{unit::Int64(100)}}});
    EXPECT_EQ(ORMEL_SelectBatchRecForConn(conn_, &object_, &result_), 0u);
    EXPECT_EQ(result_.uiRecNum, 1u);
    ClearResult();
    Client().On("SELECT count(*) FROM PERSON", {.columns = {{"COUNT", 2, 8}}, .rows = {{unit::Int64(0)}}});
    EXPECT_EQ(ORMEL_SelectBatchRecForConn(conn_, &object_, &result_), 0u);
    EXPECT_EQ(result_.uiRecNum, 0u);
    EXPECT_NE(result_.pstRes, nullptr);
}

TEST_F(SelectObjectTest, ACountedSelectOfSomeColumnsDescribesTheWholeTable) {
    SelectNameAndId();
    EXPECT_EQ(ORMEL_SelectBatchRecForConn(conn_, &object_, &result_), 0u);
    ASSERT_NE(result_.pstResAtt, nullptr);
    EXPECT_EQ(result_.pstResAtt->iAttNum, 3);
    EXPECT_EQ(ORMEL_ResultGetFieldNum(&result_), 2u);
    EXPECT_STREQ(ORMEL_ResultTextGetByPos(&result_, 0, 0), "Ann");
    EXPECT_THAT(Statements(),
                ElementsAre("SELECT count(*) FROM PERSON WHERE ID = :1", testing::StartsWith("SELECT NAME")));
}

TEST_F(SelectObjectTest, ACountedSelectTellsWhatFailed) {
    const std::string debug = "DEBUG ORMEL_SelectBatchRecForConn: ";
    const std::string name = "ORMEL_SelectBatchRecForConn: ";
    const unit::Lines begin = {debug + "Trace in."};
    Client().Fail("prepare", 1);
    ExpectFailure(ORMEL_SelectBatchRecForConn, 255, begin + unit::Lines{debug + "Select Rec return: 0xff"});
    Client().Fail("prepare", 2);
    ExpectFailure(ORMEL_SelectBatchRecForConn, 211,
                  begin + unit::Lines{"ERROR " + name + "Select Rec return: 0xd3", debug + "Select Rec return: 0xd3"});
    Client().Fail("prepare", 2); // the table is cached now
    ExpectFailure(ORMEL_SelectBatchRecForConn, 255,
                  begin +
                      unit::Lines{"INFO " + name + "SelectBatchRec recCount: 1", debug + "Select Rec return: 0xff"});
    ORMEL_ObjectInt32Set(&object_, "NOBODY", 1);
    ExpectFailure(ORMEL_SelectBatchRecForConn, 98, begin + unit::Lines{debug + "Select Rec return: 0x62"});
}

} // namespace
