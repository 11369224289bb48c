#include "dao_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::Int32;
using unit::kCreated;
using unit::kFreed;
using unit::kNotCreated;
using unit::kPrinted;
using unit::Log;
using unit::Null;
using unit::Text;

namespace {

class CursorTest : public unit::DaoTest {
protected:
    // What is logged when an operation fails while a cursor begins.
    unit::Lines Failing(const char *operation) {
        Renew();
        Client().Fail(operation);
        EXPECT_EQ(dbBeginFetch(conn_, "T"), nullptr);
        EXPECT_EQ(Client().LiveStatements(), 0);
        return Log().Lines();
    }
};

// --- Begin ---

TEST_F(CursorTest, BeginsBeforeTheFirstRow) {
    stmt_ = dbBeginFetch(conn_, "PERSON");
    EXPECT_EQ(stmt_, Client().Handle("s1"));
    EXPECT_THAT(Client().Calls(), ElementsAre("alloc_stmt(c1)", "prepare(s1, SELECT * FROM PERSON)", "execute(s1)"))
        << "nothing is set ahead, bound or fetched";
    EXPECT_THAT(Log().Lines(), ElementsAre(kCreated));
}

TEST_F(CursorTest, SaysAndPrintsWhyItCouldNotBegin) {
    const std::string error = "ERROR dbBeginFetch: ";
    EXPECT_THAT(Failing("alloc_stmt"), ElementsAre(kNotCreated, error + "qdc_alloc_stmt failed"));
    EXPECT_THAT(Failing("prepare"),
                ElementsAre(kCreated, error + "prepare sql:SELECT * FROM T failed", kPrinted, kFreed));
    EXPECT_THAT(Failing("execute"), ElementsAre(kCreated, error + "exec sql:SELECT * FROM T failed", kPrinted, kFreed));
}

TEST_F(CursorTest, ItsTextHas128Bytes) {
    const std::string fits(127 - std::strlen("SELECT * FROM "), 'T');
    stmt_ = dbBeginFetch(conn_, fits.c_str());
    EXPECT_NE(stmt_, nullptr);
    EXPECT_EQ(Client().Calls()[1], "prepare(s1, SELECT * FROM " + fits + ")");
    EXPECT_THAT(Log().Lines(), ElementsAre(kCreated));
}

TEST_F(CursorTest, ATableThatDoesNotFitIsPreparedAsFarAsItGoes) {
    const std::string longer(128 - std::strlen("SELECT * FROM "), 'T');
    Client().Fail("prepare");
    EXPECT_EQ(dbBeginFetch(conn_, longer.c_str()), nullptr);
    EXPECT_EQ(Client().Count("prepare"), 1);
    EXPECT_EQ(Client().Count("execute"), 0);
    EXPECT_EQ(Client().Calls()[1].find(longer), std::string::npos);
    unit::Lines lines = Log().Lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[1], "ERROR dbBeginFetch: dbBeginFetch:" + longer + " sprintf_s error");
    EXPECT_THAT(lines[2], testing::StartsWith("ERROR dbBeginFetch: prepare sql:"));
    EXPECT_EQ(lines[3], kPrinted);
}

TEST_F(CursorTest, NeedsAConnectionAndATable) {
    EXPECT_EQ(dbBeginFetch(nullptr, "T"), nullptr);
    EXPECT_EQ(dbBeginFetch(conn_, nullptr), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// --- One row after the other ---

TEST_F(CursorTest, HandsOutRowsUntilTheEnd) {
    Client().On("SELECT * FROM T",
                {.columns = {{"ID", 1, 4}, {"NAME", 9, 21}}, .rows = {{Int32(1), Text("a")}, {Int32(2), Null()}}});
    stmt_ = dbBeginFetch(conn_, "T");
    for (int id : {1, 2}) {
        unit::Result row(dbGetFetchResult(stmt_));
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->uiRowCount, 1u);
        EXPECT_EQ(row->uiFieldCount, 2u);
        EXPECT_EQ(dbGetIntValue(dbGetValueFromRes(row.get(), 0, 0), 4), id);
        EXPECT_EQ(dbGetValueFromRes(row.get(), 0, 1) != nullptr, id == 1);
        EXPECT_STREQ(dbGetNameFromRes(row.get(), 0, 1), "NAME");
    }
    Forget();
    for (int times = 0; times < 2; ++times) {
        unit::Result end(dbGetFetchResult(stmt_));
        ASSERT_NE(end, nullptr) << "also after the end";
        EXPECT_EQ(unit::BytesOf(*end), unit::BytesOf(DB_RESULT{}));
    }
    EXPECT_THAT(Log().Lines(), ElementsAre("INFO dbGetFetchResult: qdc_fetch  rowCount = 0",
                                           "INFO dbGetFetchResult: qdc_fetch  rowCount = 0"));
    EXPECT_THAT(Client().Calls(), ElementsAre("fetch(s1)", "fetch(s1)"));
    EXPECT_EQ(Client().LiveStatements(), 1) << "the statement is the caller's to free";
}

TEST_F(CursorTest, OneRowIsCopiedWhateverTheClientFetched) {
    Execute({.columns = unit::Integers(1), .rows = {{Int32(1)}, {Int32(2)}}, .rowsAtOnce = 50});
    unit::Result row(dbGetFetchResult(stmt_));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->uiRowCount, 1u);
    EXPECT_THAT(Client().Calls(), ElementsAre("fetch(s1)", "get_column_count(s1)", "get_column_by_id(s1, 0)",
                                              "desc_column_by_id(s1, 0)"));
    EXPECT_THAT(Log().LinesOf("dbGetFetchResult"), IsEmpty());
}

TEST_F(CursorTest, SaysWhyARowCannotBeRead) {
    const std::string error = "ERROR dbGetFetchResult: ";
    Execute({.columns = {{"L", 13, 44}}, .rows = {5, {unit::Lob("text")}}});
    for (auto [operation, line] :
         std::vector<std::pair<std::string, std::string>>{{"fetch", "qdc_fetch failed ret:17"},
                                                          {"get_column_count", "qdc_get_column_count  failed"},
                                                          {"read_clob", "dbGetFetchResult dbGetFields failed"}}) {
        SCOPED_TRACE(operation);
        Forget();
        Client().Fail(operation);
        EXPECT_EQ(dbGetFetchResult(stmt_), nullptr);
        EXPECT_EQ(Log().LinesOf("dbGetFetchResult", KPL_LOG_ERROR), unit::Lines{error + line});
        EXPECT_EQ(Client().Count("get_error"), 0);
        EXPECT_EQ(Client().LiveStatements(), 1) << "the statement stays as it is";
    }
    unit::Result next(dbGetFetchResult(stmt_));
    EXPECT_NE(next, nullptr) << "and can still be read";
}

TEST_F(CursorTest, WithoutColumnsThereIsNoRow) {
    Execute({.columns = {}, .rows = {{}}});
    EXPECT_EQ(dbGetFetchResult(stmt_), nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetFetchResult: qdc_get_column_count  failed, count = 0"));
}

TEST_F(CursorTest, WithoutMemoryNothingIsLeft) {
    Execute({.columns = {{"C", 9, 21}}, .rows = {9, {Text("abc")}}});
    size_t before = unit::LiveBlocks();
    DB_RESULT *row = nullptr;
    unit::Lines expected[] = {{"ERROR dbGetFetchResult: dbMallocResult  failed"},
                              {"ERROR dbGetFetchResult: dbMallocResult  failed"},
                              {"ERROR dbGetFetchResult: dbMallocResult  failed"},
                              {"ERROR dbGetFetchResult: dbGetFetchResult dbGetFields failed"}};
    int allocations = unit::ForEachAllocation(
        [&] {
            Log().Forget();
            row = dbGetFetchResult(stmt_);
        },
        [&](int n) {
            EXPECT_EQ(row, nullptr);
            EXPECT_EQ(unit::LiveBlocks(), before);
            ASSERT_LE(n, 4);
            EXPECT_EQ(Log().LinesOf("dbGetFetchResult", KPL_LOG_ERROR), expected[n - 1]);
        });
    EXPECT_EQ(allocations, 4);
    dbResClear(row);
}

TEST_F(CursorTest, WithoutMemoryTheEndIsAFailure) {
    Execute({.columns = unit::Integers(1)});
    unit::FailingAllocation fail(1);
    EXPECT_EQ(dbGetFetchResult(stmt_), nullptr);
}

TEST_F(CursorTest, NoStatementNoRow) {
    EXPECT_EQ(dbGetFetchResult(nullptr), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

} // namespace
