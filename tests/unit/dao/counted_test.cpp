// Selects of which a stated number of rows is taken.
#include "dao_test.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::Int32;
using unit::kCreated;
using unit::kFreed;
using unit::kNotCreated;
using unit::Log;

namespace {

const std::string kSql = "SELECT F1 FROM T WHERE F0 < :1 limit 5 offset 6";

class CountedTest : public unit::DaoTest {
protected:
    // A statement of so many rows, the first of which holds 0.
    static unit::Answer Rows(int count) {
        unit::Answer answer = {.columns = unit::Integers(1)};
        for (int i = 0; i < count; ++i) {
            answer.rows.push_back({Int32(i)});
        }
        answer.affected = 0xDEAD; // what the client says of the rows is not asked for
        return answer;
    }

    ORMEL_PARA *List(uint32_t type = 1) {
        para_ = {};
        para_.iCondNum = 1;
        para_.name[0] = "F0";
        para_.value[0] = &value_;
        para_.length[0] = 4;
        para_.type[0] = type;
        para_.op[0] = ORMEL_OP_LESS;
        para_.iSelectFieldNum = 1;
        para_.selectField[0] = field_;
        para_.isLimit = 1;
        para_.iRowCounts = 5;
        para_.iOffset = 6;
        return &para_;
    }

    // What is logged when an operation fails.
    unit::Lines Failing(const char *operation) {
        Renew();
        Client().Fail(operation);
        EXPECT_EQ(dbSelectRecWithCount(conn_, "T", List(), 3), nullptr);
        EXPECT_EQ(Client().LiveStatements(), 0);
        EXPECT_EQ(Client().Count("get_error"), 0) << "the client's error is not printed";
        return Log().Lines();
    }

    static int32_t LastOf(const DB_RESULT *result) {
        return static_cast<int32_t>(dbGetIntValue(dbGetValueFromRes(result, result->uiRowCount - 1, 0), 4));
    }

    ORMEL_PARA para_{};

private:
    int32_t value_ = 9;
    char field_[3] = "F1";
};

// --- The rows of a statement ---

TEST_F(CountedTest, TakesNoMoreThanItWasTold) {
    Execute(Rows(10));
    unit::Result result(dbGetResultWithCount(stmt_, "T", 3));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 3u);
    EXPECT_EQ(result->uiFieldCount, 1u);
    EXPECT_EQ(LastOf(result.get()), 2);
    EXPECT_EQ(Client().Count("fetch"), 3) << "the statement is not read further";
    EXPECT_EQ(Client().Count("get_affected_rows"), 0);
    const std::string moved = "DEBUG dbGetResultWithCount: dbMoveNext fetch  row:1 curRow:";
    EXPECT_THAT(Log().LinesOf("dbGetResultWithCount"),
                ElementsAre(moved + "0 ", moved + "1 ", moved + "2 ",
                            "INFO dbGetResultWithCount: dbGetFields :T get curRow > rowCount"));
}

TEST_F(CountedTest, TakesWhatThereIs) {
    Execute(Rows(10));
    unit::Result result(dbGetResultWithCount(stmt_, "T", 20));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 10u);
    EXPECT_EQ(LastOf(result.get()), 9);
    EXPECT_EQ(Log().LinesOf("dbGetResultWithCount").back(),
              "INFO dbGetResultWithCount: dbGetResult  rowCount:20  curRow:10");
}

TEST_F(CountedTest, NoRowsAreAResultOfColumns) {
    Execute(Rows(0));
    unit::Result result(dbGetResultWithCount(stmt_, "T", 2));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 0u);
    EXPECT_EQ(result->uiFieldCount, 1u);
    EXPECT_THAT(Log().Lines(), ElementsAre("INFO dbGetResultWithCount: dbGetResult  rowCount:2  curRow:0"));
}

TEST_F(CountedTest, OfNoneNothingIsFetched) {
    Execute(Rows(3));
    unit::Result result(dbGetResultWithCount(stmt_, "T", 0));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(unit::BytesOf(*result), unit::BytesOf(DB_RESULT{}));
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetResultWithCount: qdc_get_affected_rows :T , rowCount = 0"));
}

TEST_F(CountedTest, RowsThatNeverCameAreFreed) {
    Execute(Rows(2));
    size_t before = unit::LiveBlocks();
    unit::Result result(dbGetResultWithCount(stmt_, "T", 100));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(unit::LiveBlocks(), before + 2 + 2 + 2) << "header and array, and of each row its cells and its value";
}

TEST_F(CountedTest, IsNotBoundedByWhatIsPrefetched) {
    unit::Threshold info(KPL_LOG_INFO);
    Execute({.columns = unit::Integers(1), .rows = {PREFETCH_ROWS + 2, {Int32(1)}}});
    unit::Result result(dbGetResultWithCount(stmt_, "T", PREFETCH_ROWS + 1));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, PREFETCH_ROWS + 1u);
    EXPECT_EQ(LastOf(result.get()), 1);
}

TEST_F(CountedTest, WithoutColumnsThereIsNoResult) {
    Execute({.columns = {}, .rows = {{}}});
    Client().Fail("get_column_count");
    EXPECT_EQ(dbGetResultWithCount(stmt_, "T", 1), nullptr);
    EXPECT_EQ(dbGetResultWithCount(stmt_, "T", 1), nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetResultWithCount: qdc_get_column_count :T failed",
                                           "ERROR dbGetResultWithCount: qdc_get_column_count :T failed, count = 0"));
}

TEST_F(CountedTest, ARowThatFailsFailsTheResult) {
    Execute({.columns = {{"L", 13, 44}}, .rows = {3, {unit::Lob("l")}}});
    Client().Fail("read_clob", 2);
    EXPECT_EQ(dbGetResultWithCount(stmt_, "T", 3), nullptr);
    EXPECT_EQ(Log().Lines().back(), "ERROR dbGetResultWithCount: dbGetFields :T failed");
}

TEST_F(CountedTest, AFailedFetchEndsTheRows) {
    Execute(Rows(3));
    Client().Fail("fetch", 2);
    unit::Result result(dbGetResultWithCount(stmt_, "T", 3));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 1u);
    EXPECT_EQ(Log().Lines().back(), "INFO dbGetResultWithCount: dbGetResult  rowCount:3  curRow:1");
}

TEST_F(CountedTest, AHugeCountFailsAsAnAllocationDoes) {
    Execute(Rows(1));
    EXPECT_EQ(dbGetResultWithCount(stmt_, "T", 0xFFFFFFFF), nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetResultWithCount: dbMallocResult :T failed"));
    EXPECT_EQ(dbGetResultWithCount(nullptr, "T", 1), nullptr);
}

// --- The whole round trip ---

TEST_F(CountedTest, ASelectIsOneRoundTrip) {
    Client().On("", Rows(10));
    unit::Result result(dbSelectRecWithCount(conn_, "T", List(), 3));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 3u);
    EXPECT_THAT(Client().CallsButReads(),
                ElementsAre("alloc_stmt(c1)", "set_stmt_attr(s1, 201, 100000, 0)", "prepare(s1, " + kSql + ")",
                            "bind_by_pos(s1, 0, 1, '\\09\\00\\00\\00', 4, null)", "execute(s1)", "free_stmt(s1)"));
    EXPECT_THAT(Log().LinesOf("dbSelectRecWithCount"), IsEmpty());
    EXPECT_EQ(Log().Lines().back(), kFreed);
}

TEST_F(CountedTest, ASelectOfNoRowsFetchesNone) {
    Client().On("", Rows(10));
    unit::Result result(dbSelectRecWithCount(conn_, "T", List(), 0));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 0u);
    EXPECT_EQ(Client().Count("fetch"), 0);
}

TEST_F(CountedTest, EachFailureIsLoggedAndNotPrinted) {
    const std::string error = "ERROR dbSelectRecWithCount: ";
    const std::string bound = "DEBUG dbBindPara: qdc_bind_by_pos :0, type:1, len:4 ";
    EXPECT_THAT(Failing("alloc_stmt"), ElementsAre(kNotCreated, error + "qdc_alloc_stmt failed"));
    EXPECT_THAT(Failing("set_stmt_attr"),
                ElementsAre(kCreated, error + "set_stmt_attr PREFETCH_ROWS :" + kSql + " failed", kFreed));
    EXPECT_THAT(Failing("prepare"), ElementsAre(kCreated, error + "prepare sql:" + kSql + " failed", kFreed));
    EXPECT_THAT(Failing("bind_by_pos"), ElementsAre(kCreated, "ERROR dbBindPara: qdc_bind_by_pos :0 F0 failed ",
                                                    error + "dbBindPara failed", kFreed));
    EXPECT_THAT(Failing("execute"), ElementsAre(kCreated, bound, error + "exec sql:" + kSql + " failed", kFreed));
    EXPECT_THAT(Failing("get_column_count"),
                ElementsAre(kCreated, bound, "ERROR dbGetResultWithCount: qdc_get_column_count :T failed", kFreed));
}

TEST_F(CountedTest, WithoutMemoryNothingIsLeft) {
    for (uint32_t type : {1u, 13u}) {
        SCOPED_TRACE(type);
        Client().On("", Rows(2));
        size_t before = unit::LiveBlocks();
        DB_RESULT *result = nullptr;
        int allocations = unit::ForEachAllocation([&] { result = dbSelectRecWithCount(conn_, "T", List(type), 3); },
                                                  [&](int) {
                                                      EXPECT_EQ(result, nullptr);
                                                      EXPECT_EQ(Client().LiveStatements(), 0);
                                                      EXPECT_EQ(unit::LiveBlocks(), before);
                                                  });
        EXPECT_GE(allocations, 6);
        dbResClear(result);
    }
}

TEST_F(CountedTest, WhatDoesNotFitIsNoStatement) {
    EXPECT_EQ(dbSelectRecWithCount(conn_, "T", nullptr, 1), nullptr);
    EXPECT_EQ(dbSelectRecWithCount(conn_, nullptr, List(), 1), nullptr);
    EXPECT_EQ(dbSelectRecWithCount(nullptr, "T", List(), 1), nullptr);
    for (int32_t count : {-1, 33}) {
        List()->iCondNum = count;
        EXPECT_EQ(dbSelectRecWithCount(conn_, "T", &para_, 1), nullptr);
        List()->iSelectFieldNum = count;
        EXPECT_EQ(dbSelectRecWithCount(conn_, "T", &para_, 1), nullptr);
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

} // namespace
