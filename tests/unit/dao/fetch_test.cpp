#include "dao_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::Int32;
using unit::kClientStatus;
using unit::Log;
using unit::Null;
using unit::Text;
using unit::operator+;

namespace {

// Lines of a row that is fetched and read.
unit::Lines Moved(int row, int rows = 1) {
    return {"DEBUG dbMoveNext: qdc_fetch row:" + std::to_string(rows),
            "DEBUG dbGetResult: dbMoveNext fetch  row:" + std::to_string(rows) + " curRow:" + std::to_string(row) +
                " "};
}

class FetchTest : public unit::DaoTest {
protected:
    void TearDown() override {
        dbFieldClear(cells_, 4);
        DaoTest::TearDown();
    }

    // Reads the first row of a statement that answers so into the cells.
    uint32_t FirstRow(const std::vector<unit::Column> &columns, const std::vector<unit::Cell> &row) {
        Execute({.columns = columns, .rows = {row}});
        uint32_t fetched = 0;
        qdc_fetch(stmt_, &fetched);
        Forget();
        return dbGetFields(stmt_, cells_, static_cast<uint32_t>(columns.size()));
    }

    static std::string ValueOf(const DB_FIELD &cell) {
        return std::string(static_cast<const char *>(cell.pValue), cell.uiLength);
    }

    DB_FIELD cells_[4] = {};
};

// --- The description of a column ---

TEST_F(FetchTest, DescribesAColumn) {
    Execute({.columns = {{"ID", 1, 4, 1}, {"FLAG", 4, 65535}}});
    DB_FIELD cell;
    std::memset(&cell, 'x', sizeof(cell));
    void *value = cell.pValue;
    EXPECT_EQ(dbGetFieldAttr(stmt_, 1, &cell), 0u);
    EXPECT_STREQ(cell.acName, "FLAG");
    EXPECT_EQ(std::string(cell.acName, 28), std::string("FLAG") + std::string(24, '\0'));
    EXPECT_EQ(cell.uiColumnId, 1u);
    EXPECT_EQ(cell.usType, 4u);
    EXPECT_EQ(cell.usReserved, 0u);
    EXPECT_EQ(cell.uiIsType4, 1u);
    EXPECT_EQ(cell.uiLength, 65535u);
    EXPECT_EQ(cell.pValue, value) << "the value is not touched";
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbGetFieldAttr: dbGetFieldAttr desc fieldname :FLAG  type:4 "
                                           "size:65535 desc.name:FLAG "));
    EXPECT_EQ(dbGetFieldAttr(stmt_, 0, &cell), 0u);
    EXPECT_EQ(cell.uiIsType4, 0u);
}

TEST_F(FetchTest, RefusesNamesThatDoNotFit) {
    const std::string fits(27, 'N');
    const std::string longer(28, 'N');
    Execute({.columns = {{fits, 1, 4}, {longer, 1, 4}, {.name = "", .named = false}}});
    DB_FIELD cell{};
    dbGetFieldAttr(stmt_, 0, &cell);
    EXPECT_EQ(cell.acName, fits);
    Forget();
    EXPECT_EQ(dbGetFieldAttr(stmt_, 1, &cell), 0u);
    EXPECT_STREQ(cell.acName, "");
    EXPECT_EQ(cell.uiColumnId, 1u);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetFieldAttr: dbGetFieldAttr strcpy_s eok",
                                           "DEBUG dbGetFieldAttr: dbGetFieldAttr desc fieldname :  type:1 size:4 "
                                           "desc.name:" +
                                               longer + " "));
    EXPECT_EQ(dbGetFieldAttr(stmt_, 2, &cell), 0u);
    EXPECT_STREQ(cell.acName, "");
}

TEST_F(FetchTest, AFailedDescriptionLeavesTheCellAsItWas) {
    Execute({.columns = {{"ID", 1, 4, 1}}});
    DB_FIELD cell;
    std::memset(&cell, 'x', sizeof(cell));
    const std::string before = unit::BytesOf(cell);
    Client().Fail("desc_column_by_id");
    EXPECT_EQ(dbGetFieldAttr(stmt_, 0, &cell), kClientStatus);
    EXPECT_EQ(unit::BytesOf(cell), before);
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

// --- Moving ---

TEST_F(FetchTest, MovesToTheEnd) {
    Execute({.columns = unit::Integers(1), .rows = {{Int32(1)}}, .rowsAtOnce = 7});
    EXPECT_EQ(dbMoveNext(stmt_), 7u);
    EXPECT_EQ(dbMoveNext(stmt_), 0u);
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbMoveNext: qdc_fetch row:7"));
    Client().Fail("fetch");
    Log().Forget();
    EXPECT_EQ(dbMoveNext(stmt_), 0u);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbMoveNext: qdc_fetch failed"));
    EXPECT_EQ(dbMoveNext(nullptr), 0u);
}

// --- The cells of a row ---

TEST_F(FetchTest, CopiesValues) {
    EXPECT_EQ(FirstRow({{"I", 1, 4}, {"T", 9, 21}, {"B", 12, 8}}, {Int32(7), Text("ab"), Text("\x01\x02\x03")}), 0u);
    EXPECT_EQ(ValueOf(cells_[0]), std::string("\x07\0\0\0", 4));
    EXPECT_EQ(ValueOf(cells_[1]), std::string("ab\0", 3)) << "text keeps room for its NUL";
    EXPECT_EQ(ValueOf(cells_[2]), "\x01\x02\x03");
    EXPECT_STREQ(cells_[1].acName, "T");
    EXPECT_EQ(cells_[2].uiColumnId, 2u);
    EXPECT_THAT(Client().Calls(),
                ElementsAre("get_column_by_id(s1, 0)", "desc_column_by_id(s1, 0)", "get_column_by_id(s1, 1)",
                            "desc_column_by_id(s1, 1)", "get_column_by_id(s1, 2)", "desc_column_by_id(s1, 2)"));
}

TEST_F(FetchTest, LogsWhatItCopies) {
    FirstRow({{"I", 11, 4}, {"T", 8, 6}}, {Text("\x07\xFF"), Text("ab")});
    EXPECT_THAT(Log().Lines(KPL_LOG_TRACE),
                ElementsAre("DEBUG dbGetFields: get data  datasize:2 isnull:0",
                            "DEBUG dbGetFieldAttr: dbGetFieldAttr desc fieldname :I  type:11 size:4 desc.name:I ",
                            "TRACE dbValueShow:  07", "TRACE dbValueShow:  ff",
                            "TRACE dbValueShow:  ", "DEBUG dbGetFields: get data  datasize:2 isnull:0",
                            "DEBUG dbGetFieldAttr: dbGetFieldAttr desc fieldname :T  type:8 size:6 desc.name:T ",
                            "TRACE dbValueShow:  ab", "TRACE dbValueShow:  "));
}

TEST_F(FetchTest, BelowTheThresholdNothingIsLogged) {
    unit::Threshold info(KPL_LOG_INFO);
    EXPECT_EQ(FirstRow({{"A", 9, 21}, {"B", 9, 21}}, {Text("abc"), Null()}), 0u);
    EXPECT_THAT(Log().Lines(), IsEmpty());
    EXPECT_EQ(ValueOf(cells_[0]), std::string("abc", 4));
}

TEST_F(FetchTest, ATableWithoutANameIsEmptyInMessages) {
    Execute({.columns = unit::PersonColumns()});
    unit::Result result(dbGetResult(stmt_, nullptr));
    unit::Result counted(dbGetResultWithCount(stmt_, nullptr, 0));
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetResult: qdc_get_affected_rows : , rowCount = 0",
                                           "ERROR dbGetResultWithCount: qdc_get_affected_rows : , rowCount = 0"));
}

TEST_F(FetchTest, TextTypesHaveRoomForTheirNul) {
    for (uint16_t type : std::vector<uint16_t>{1, 2, 3, 4, 8, 9, 10, 11, 12, 23, 25, 99}) {
        SCOPED_TRACE(type);
        EXPECT_EQ(FirstRow({{"C", type, 10}}, {Text("12345")}), 0u);
        bool text = type >= 8 && type <= 10;
        EXPECT_EQ(ValueOf(cells_[0]), text ? std::string("12345\0", 6) : "12345");
        dbFieldClear(cells_, 1);
        dbFreeStmt(stmt_);
        stmt_ = nullptr;
    }
}

TEST_F(FetchTest, EmptyIsNotNull) {
    EXPECT_EQ(FirstRow({{"N", 9, 21}, {"T", 9, 21}, {"B", 12, 8}}, {Null(), Text(""), Text("")}), 0u);
    EXPECT_EQ(cells_[0].pValue, nullptr);
    EXPECT_EQ(cells_[0].uiLength, 0u);
    EXPECT_STREQ(cells_[0].acName, "N");
    EXPECT_EQ(ValueOf(cells_[1]), std::string(1, '\0'));
    EXPECT_NE(cells_[2].pValue, nullptr);
    EXPECT_EQ(cells_[2].uiLength, 0u);
    EXPECT_THAT(Log().LinesOf("dbGetFields"), ElementsAre("DEBUG dbGetFields: get data  datasize:0 isnull:1",
                                                          "DEBUG dbGetFields: get data  field:N is NULL ",
                                                          "DEBUG dbGetFields: get data  datasize:0 isnull:0",
                                                          "DEBUG dbGetFields: get data  datasize:0 isnull:0"));
}

TEST_F(FetchTest, ALostDescriptionIsOnlyLogged) {
    EXPECT_EQ(FirstRow({{.name = "C", .type = 9, .size = 21, .described = false}}, {Text("abc")}), 0u);
    EXPECT_THAT(Log().LinesOf("dbGetFields", KPL_LOG_ERROR),
                ElementsAre("ERROR dbGetFields: dbGetFieldAttr :0 failed"));
    EXPECT_EQ(ValueOf(cells_[0]), "abc") << "copied as a value of no known type";
}

TEST_F(FetchTest, AValueWithoutBytesIsReported) {
    EXPECT_EQ(FirstRow({{"C", 9, 21}}, {unit::Cell{.bytes = "", .size = 5, .data = false}}), 0u);
    EXPECT_EQ(ValueOf(cells_[0]), std::string(6, '\0'));
    EXPECT_THAT(Log().Lines(KPL_LOG_ERROR), ElementsAre("ERROR dbGetFields: copy data failed"));
}

TEST_F(FetchTest, TheStatusOfAColumnIsNotLookedAt) {
    Execute({.columns = {{"C", 9, 21}}, .rows = {{Text("abc")}}});
    dbMoveNext(stmt_);
    Client().Fail("get_column_by_id");
    EXPECT_EQ(dbGetFields(stmt_, cells_, 1), 0u);
    EXPECT_EQ(ValueOf(cells_[0]), std::string(1, '\0'));
}

TEST_F(FetchTest, NeedsCells) {
    EXPECT_EQ(dbGetFields(stmt_, nullptr, 1), 97u);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(FetchTest, WithoutMemoryForAValueTheRowFails) {
    Execute({.columns = {{"A", 9, 21}, {"B", 1, 4}}, .rows = {{Text("abc"), Int32(1)}}});
    dbMoveNext(stmt_);
    uint32_t code = 0;
    int allocations = unit::ForEachAllocation([&] { code = dbGetFields(stmt_, cells_, 2); },
                                              [&](int) {
                                                  EXPECT_EQ(code, 0xFFFFFFFFu);
                                                  EXPECT_EQ(cells_[0].pValue, nullptr);
                                                  EXPECT_EQ(cells_[0].uiLength, 0u);
                                                  EXPECT_EQ(cells_[1].pValue, nullptr);
                                              });
    EXPECT_EQ(allocations, 2);
    EXPECT_EQ(code, 0u);
}

TEST_F(FetchTest, AHugeValueFailsAsAnAllocationDoes) {
    for (uint16_t type : std::vector<uint16_t>{9, 12, 13, 14}) {
        EXPECT_EQ(FirstRow({{"C", type, 10}}, {unit::Cell{.bytes = "abc", .size = 0xFFFFFFFF}}), 0xFFFFFFFFu) << type;
        EXPECT_EQ(cells_[0].pValue, nullptr);
        EXPECT_EQ(cells_[0].uiLength, 0u);
        dbFreeStmt(stmt_);
        stmt_ = nullptr;
    }
}

// --- Whole results ---

TEST_F(FetchTest, CopiesAllRows) {
    Execute({.columns = {{"ID", 1, 4}, {"NAME", 9, 21}}, .rows = {{Int32(1), Text("a")}, {Int32(2), Null()}}});
    unit::Result result(dbGetResult(stmt_, "T"));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 2u);
    EXPECT_EQ(result->uiFieldCount, 2u);
    EXPECT_STREQ(static_cast<char *>(dbGetValueFromRes(result.get(), 0, 1)), "a");
    EXPECT_EQ(dbGetValueFromRes(result.get(), 1, 1), nullptr);
    EXPECT_EQ(dbGetIntValue(dbGetValueFromRes(result.get(), 1, 0), 4), 2);
    unit::Lines lines = Log().LinesOf("dbMoveNext") + Log().LinesOf("dbGetResult");
    unit::Lines expected = {Moved(0)[0], Moved(1)[0], Moved(0)[1], Moved(1)[1]};
    EXPECT_EQ(lines, expected);
    EXPECT_THAT(Client().Calls()[0], "get_affected_rows(s1)");
    EXPECT_THAT(Client().Calls()[1], "get_column_count(s1)");
    EXPECT_THAT(Client().Calls()[2], "fetch(s1)");
    EXPECT_EQ(Client().Count("fetch"), 3);
}

TEST_F(FetchTest, NoRowsAreAnEmptyResult) {
    Execute({.columns = unit::PersonColumns()});
    unit::Result result(dbGetResult(stmt_, "T"));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 0u);
    EXPECT_EQ(result->uiFieldCount, 0u);
    EXPECT_EQ(result->ppRows, nullptr);
    EXPECT_THAT(Client().Calls(), ElementsAre("get_affected_rows(s1)"));
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetResult: qdc_get_affected_rows :T , rowCount = 0"));
}

TEST_F(FetchTest, WithoutColumnsThereIsNoResult) {
    Execute({.columns = {}, .rows = {{}}});
    Client().Fail("get_column_count");
    EXPECT_EQ(dbGetResult(stmt_, "T"), nullptr);
    EXPECT_EQ(dbGetResult(stmt_, "T"), nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetResult: qdc_get_column_count :T failed",
                                           "ERROR dbGetResult: qdc_get_column_count :T failed, count = 0"));
}

TEST_F(FetchTest, FewerRowsThanAnnouncedAreEmptyRows) {
    Execute({.columns = unit::Integers(2), .rows = {{Int32(1), Int32(2)}}, .affected = 3});
    unit::Result result(dbGetResult(stmt_, "T"));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 3u);
    EXPECT_EQ(dbGetLengthFromRes(result.get(), 0, 1), 4u);
    EXPECT_EQ(dbGetValueFromRes(result.get(), 2, 1), nullptr);
    EXPECT_EQ(Log().LinesOf("dbGetResult").back(), "INFO dbGetResult: dbGetResult  rowCount:3  curRow:1");
}

TEST_F(FetchTest, AFailedFetchEndsTheRows) {
    Execute({.columns = unit::Integers(1), .rows = {{Int32(1)}, {Int32(2)}}});
    Client().Fail("fetch", 1);
    unit::Result result(dbGetResult(stmt_, "T"));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 2u);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbMoveNext: qdc_fetch failed",
                                           "INFO dbGetResult: dbGetResult  rowCount:2  curRow:0"));
}

TEST_F(FetchTest, MoreRowsThanAnnouncedAreNotRead) {
    Execute({.columns = unit::Integers(1), .rows = {{Int32(1)}, {Int32(2)}, {Int32(3)}}, .affected = 2});
    unit::Result result(dbGetResult(stmt_, "T"));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 2u);
    EXPECT_EQ(Client().Count("fetch"), 3);
    EXPECT_EQ(Log().LinesOf("dbGetResult").back(),
              "INFO dbGetResult: dbGetFields :T get curRow(2) > PREFETCH_ROWS or rowCount:2");
}

TEST_F(FetchTest, TakesNoMoreThanItPrefetches) {
    unit::Threshold info(KPL_LOG_INFO);
    Execute({.columns = unit::Integers(1), .rows = {PREFETCH_ROWS + 1, {Int32(1)}}});
    unit::Result result(dbGetResult(stmt_, "T"));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, PREFETCH_ROWS + 1u);
    EXPECT_NE(dbGetValueFromRes(result.get(), PREFETCH_ROWS - 1, 0), nullptr);
    EXPECT_EQ(dbGetValueFromRes(result.get(), PREFETCH_ROWS, 0), nullptr);
    EXPECT_THAT(Log().Lines(),
                ElementsAre("INFO dbGetResult: dbGetFields :T get curRow(100000) > PREFETCH_ROWS or rowCount:100001",
                            "INFO dbGetResult: dbGetResult  rowCount:100001  curRow:100000"));
}

TEST_F(FetchTest, ARowThatFailsFailsTheResult) {
    Execute(
        {.columns = {{"C", 9, 21}, {"L", 13, 44}}, .rows = {{Text("a"), unit::Lob("l")}, {Text("b"), unit::Lob("l")}}});
    Client().Fail("read_clob", 2);
    EXPECT_EQ(dbGetResult(stmt_, "T"), nullptr);
    EXPECT_EQ(Log().Lines().back(), "ERROR dbGetResult: dbGetFields :T failed");
}

TEST_F(FetchTest, WithoutMemoryThereIsNoResult) {
    size_t before = 0;
    auto fails = [&](const unit::Answer &answer, int count, const unit::Lines &firstLines) {
        Execute(answer);
        before = unit::LiveBlocks();
        DB_RESULT *result = nullptr;
        for (int n = 1; n <= count; ++n) {
            SCOPED_TRACE(n);
            Log().Forget();
            unit::FailingAllocation fail(n);
            result = dbGetResult(stmt_, "T");
            EXPECT_EQ(result, nullptr);
            EXPECT_EQ(unit::LiveBlocks(), before);
            EXPECT_EQ(Log().LinesOf("dbGetResult", KPL_LOG_INFO), firstLines);
        }
        dbFreeStmt(stmt_);
        stmt_ = nullptr;
    };
    fails({.columns = unit::Integers(1)}, 1, {"ERROR dbGetResult: qdc_get_affected_rows :T , rowCount = 0"});
    fails({.columns = unit::Integers(1), .rows = {{Int32(1)}}}, 3, {"ERROR dbGetResult: dbMallocResult :T failed"});
}

TEST_F(FetchTest, AHugeAnnouncementFailsAsAnAllocationDoes) {
    Execute({.columns = unit::Integers(1), .rows = {{Int32(1)}}, .affected = 0xFFFFFFFF});
    EXPECT_EQ(dbGetResult(stmt_, "T"), nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetResult: dbMallocResult :T failed"));
}

TEST_F(FetchTest, NoStatementNoResult) {
    EXPECT_EQ(dbGetResult(nullptr, "T"), nullptr);
    EXPECT_NE(dbGetFields(nullptr, cells_, 1), 0u);
    EXPECT_NE(dbGetFieldAttr(nullptr, 0, cells_), 0u);
    Execute({.columns = unit::PersonColumns()});
    EXPECT_NE(dbGetFieldAttr(stmt_, 0, nullptr), 0u);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

} // namespace
