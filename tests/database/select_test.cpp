// Selects into results: a table's first, more rows than one may have, and all that an object can ask for at once.
#include <map>
#include <set>

#include "support/database.h"

namespace {

using namespace database;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr uint32_t kMany = PREFETCH_ROWS + 1;

class SelectTest : public DatabaseTest {
protected:
    // Rows (1, 'row 1', 10), (2, 'row 2', 20) ...
    static void makeRows(uint32_t rows) {
        make("t", "id INTEGER, name VARCHAR(20), weight BIGINT");
        execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(rows) +
                ") INSERT INTO t SELECT i, 'row ' || i, i * 10 FROM n");
    }
};

std::vector<std::string> namesOf(const ORMEL_SELECT_RESULT *result) {
    std::vector<std::string> names;
    for (uint32_t row = 0; row < ORMEL_SelectResultRecNumGet(result); ++row)
        names.emplace_back(ORMEL_ResultStrGet(result, row, "name"));
    return names;
}

std::vector<std::string> columnsOf(const ORMEL_SELECT_RESULT *result) {
    std::vector<std::string> columns;
    for (int32_t i = 0; i < result->pstResAtt->iAttNum; ++i)
        columns.emplace_back(result->pstResAtt->astField[i].attname);
    return columns;
}

TEST_F(SelectTest, ATablesFirstResultCanBeReadAndCleared) {
    makeRows(3);
    const std::map<std::string, uint32_t (*)(ORMEL_SELECT_RESULT *)> variants = {
        {"plain", [](ORMEL_SELECT_RESULT *result) { return ORMEL_SelectRec2("t", nullptr, 0, result); }},
        {"connection",
         [](ORMEL_SELECT_RESULT *result) {
             const Connection connection;
             return ORMEL_SelectRecForConn2(connection, "t", nullptr, 0, result);
         }},
        {"slot",
         [](ORMEL_SELECT_RESULT *result) {
             const Transaction slot;
             return ORMEL_SelectRecForTrans2(slot, "t", nullptr, 0, result);
         }},
    };
    for (const auto &[name, select] : variants) {
        SCOPED_TRACE(name);
        restart();
        ASSERT_EQ(ORMEL_ResAttGet("t"), nullptr);
        Result result;
        ASSERT_EQ(select(result), ORMEL_OK);
        EXPECT_EQ(result->pstResAtt, ORMEL_ResAttGet("t"));
        EXPECT_THAT(namesOf(result), ElementsAre("row 1", "row 2", "row 3"));
        for (int twice = 0; twice < 2; ++twice) {
            ORMEL_SelectResultClear(result);
            EXPECT_EQ(result->pstResAtt, nullptr);
            EXPECT_EQ(result->pstRes, nullptr);
            EXPECT_EQ(result->uiRecNum, 0U);
        }
    }
}

TEST_F(SelectTest, ATablesFirstResultIsWhateverTheNextOneDoes) {
    makeRows(2);
    Result first;
    Result second;
    Object object("t");
    ASSERT_EQ(ORMEL_SelectRec2("t", nullptr, 0, first), ORMEL_OK);
    ASSERT_EQ(ORMEL_SelectRecByObj(object, second), ORMEL_OK);
    ORMEL_SelectResultClear(second);
    EXPECT_THAT(namesOf(first), ElementsAre("row 1", "row 2"));
}

// A table with one row more than a plain select reads.
class ManyTest : public DatabaseTest {
protected:
    ManyTest() {
        make("many", "id INTEGER");
        execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(kMany) +
                ") INSERT INTO many SELECT i FROM n");
    }

    // Rows of the result of a select, each of which is another one.
    static uint32_t differentRows(const ORMEL_SELECT_RESULT *result) {
        std::set<int32_t> ids;
        for (uint32_t row = 0; row < ORMEL_SelectResultRecNumGet(result); ++row) {
            int32_t id = 0;
            EXPECT_EQ(ORMEL_ResultSetFieldValue(result, row, 0, &id), ORMEL_OK);
            ids.insert(id);
        }
        return static_cast<uint32_t>(ids.size());
    }
    Object object_{"many"};
};

TEST_F(ManyTest, APlainSelectStopsAtTheMostRowsAndTheLogSaysSo) {
    using Select = uint32_t (*)(ORMEL_OBJECT *, ORMEL_SELECT_RESULT *);
    const Select selects[] = {ORMEL_SelectRecByObj, [](ORMEL_OBJECT *, ORMEL_SELECT_RESULT *result) {
                                  return ORMEL_SelectRec2("many", nullptr, 0, result);
                              }};
    for (const Select select : selects) {
        log();
        {
            Result result;
            ASSERT_EQ(select(object_, result), ORMEL_OK);
            EXPECT_EQ(result->uiRecNum, uint32_t{PREFETCH_ROWS});
            EXPECT_EQ(differentRows(result), uint32_t{PREFETCH_ROWS});
        }
        EXPECT_THAT(
            log(),
            HasSubstr("dbGetResult: dbGetFields :many get curRow(100000) > PREFETCH_ROWS or rowCount:100000\r\n"));
    }
}

TEST_F(ManyTest, NothingIsSaidWhereAllRowsFit) {
    execute("DELETE FROM many WHERE id = 1");
    log();
    {
        Result result;
        ASSERT_EQ(ORMEL_SelectRecByObj(object_, result), ORMEL_OK);
        EXPECT_EQ(result->uiRecNum, uint32_t{PREFETCH_ROWS});
    }
    EXPECT_THAT(log(), Not(HasSubstr("PREFETCH_ROWS")));
}

TEST_F(ManyTest, ARecordTellsTheirNumberModulo65536) {
    Records record(sizeof(int32_t));
    ASSERT_EQ(ORMEL_SelectRec("many", nullptr, 0, record), ORMEL_OK);
    EXPECT_EQ(record->usRecNum, PREFETCH_ROWS % 65536);
}

TEST_F(ManyTest, ACountedSelectReturnsAllOfThem) {
    Result result;
    ASSERT_EQ(ORMEL_SelectBatchRecByObj(object_, result), ORMEL_OK);
    EXPECT_EQ(result->uiRecNum, kMany);
    EXPECT_EQ(differentRows(result), kMany);
}

// What remains when two conditions have been met, two columns of it, three rows at a time.
class TogetherTest : public SelectTest {
protected:
    TogetherTest() {
        makeRows(20);
        ORMEL_ObjectStrOptionLikeSet(object_, "name", "row 1%"); // 1 and 10 to 19
        ORMEL_ObjectInt64Set(object_, "weight", 160);
        object_.last().uiOp = ORMEL_OP_LESS_EQUAL; // up to 16
        ORMEL_ObjectSelectFieldSet(object_, "weight");
        ORMEL_ObjectSelectFieldSet(object_, "NAME");
    }
    Object object_{"t"};
};

TEST_F(TogetherTest, SelectFieldsConditionsAndPaging) {
    using Select = uint32_t (*)(ORMEL_OBJECT *, ORMEL_SELECT_RESULT *);
    const std::map<std::string, Select> variants = {
        {"plain", ORMEL_SelectRecByObj},
        {"connection",
         [](ORMEL_OBJECT *object, ORMEL_SELECT_RESULT *result) {
             const Connection connection;
             return ORMEL_SelectRecForConn3(connection, object, result);
         }},
        {"slot",
         [](ORMEL_OBJECT *object, ORMEL_SELECT_RESULT *result) {
             const Transaction slot;
             return ORMEL_SelectRecByObjForTrans(slot, object, result);
         }},
    };
    for (const auto &[name, select] : variants) {
        SCOPED_TRACE(name);
        const std::vector<std::vector<std::string>> pages = {
            {"row 1", "row 10", "row 11"}, {"row 12", "row 13", "row 14"}, {"row 15", "row 16"}, {}};
        for (uint32_t page = 0; page < pages.size(); ++page) {
            Result result;
            ORMEL_ObjectSelectRowCountSet(object_, 1, 3, page * 3);
            ASSERT_EQ(select(object_, result), ORMEL_OK);
            EXPECT_EQ(namesOf(result), pages[page]);
            EXPECT_THAT(columnsOf(result), ElementsAre("WEIGHT", "NAME"));
        }
    }
}

TEST_F(TogetherTest, TheirResultIsLaidOutByTheSelectedColumns) {
    ORMEL_ObjectSelectRowCountSet(object_, 1, 3, 6);
    Result result;
    ASSERT_EQ(ORMEL_SelectRecByObj(object_, result), ORMEL_OK);
    ASSERT_EQ(result->uiRecNum, 2U);
    int64_t weight = 0;
    EXPECT_EQ(ORMEL_ResultInt64Get(result, 1, "weight", &weight), ORMEL_OK);
    EXPECT_EQ(weight, 160);
    int32_t id = 0;
    EXPECT_EQ(ORMEL_ResultInt32Get(result, 1, "id", &id), ORMEL_ERR_ABSENT);
    EXPECT_EQ(ORMEL_ResultGetFieldNum(result), 2U);
    Records records(8 + 81, 2);
    ASSERT_EQ(ORMEL_ResultConvertDsBuf(result, records, 0), ORMEL_OK);
    EXPECT_STREQ(records.record(0).c_str() + 8, "row 15");
    EXPECT_STREQ(records.record(1).c_str() + 8, "row 16");
}

TEST_F(TogetherTest, ACountedSelectKeepsToThePage) {
    ORMEL_ObjectSelectRowCountSet(object_, 1, 3, 6);
    Result result;
    ASSERT_EQ(ORMEL_SelectBatchRecByObj(object_, result), ORMEL_OK);
    ASSERT_EQ(result->uiRecNum, 2U);
    EXPECT_EQ(ORMEL_ResultGetFieldNum(result), 2U);
    EXPECT_STREQ(ORMEL_ResultTextGetByPos(result, 0, 1), "row 15");
    EXPECT_STREQ(ORMEL_ResultTextGetByPos(result, 1, 1), "row 16");
    EXPECT_EQ(columnsOf(result).size(), 3U) << "the whole table's";
}

TEST_F(TogetherTest, WhatIsNotCheckedIsNotRun) {
    Result result;
    ORMEL_ObjectSelectFieldSet(object_, "height");
    EXPECT_EQ(ORMEL_SelectRecByObj(object_, result), ORMEL_ERR_CHECK);
    EXPECT_EQ(ORMEL_SelectBatchRecByObj(object_, result), ORMEL_ERR_CHECK);
    Object absent("nowhere");
    EXPECT_EQ(ORMEL_SelectRecByObj(absent, result), ORMEL_ERR_TABLE);
    EXPECT_EQ(ORMEL_SelectBatchRecByObj(absent, result), ORMEL_ERR_TABLE);
    EXPECT_EQ(result->pstRes, nullptr);
}

TEST_F(SelectTest, NothingFoundIsAnEmptyResult) {
    makeRows(2);
    Object object("t");
    ORMEL_ObjectInt32Set(object, "id", 3);
    for (const auto select : {ORMEL_SelectRecByObj, ORMEL_SelectBatchRecByObj}) {
        Result result;
        ASSERT_EQ(select(object, result), ORMEL_OK);
        EXPECT_EQ(ORMEL_SelectResultRecNumGet(result), 0U);
        EXPECT_EQ(ORMEL_ResultGetFieldNum(result), 0U);
        EXPECT_EQ(ORMEL_ResultStrGet(result, 0, "name"), nullptr);
    }
}

// The widest request: every item and every select field of an object in use, on a table of 33 columns.
TEST_F(SelectTest, AnObjectReadsAsManyColumnsAsItHasRoomFor) {
    std::string columns = "c0 INTEGER DEFAULT 0";
    for (int i = 1; i <= ORMEL_MAX_SELECT_FIELDS; ++i)
        columns += ", c" + std::to_string(i) + " INTEGER DEFAULT " + std::to_string(i);
    make("wide", columns);
    execute("INSERT INTO wide DEFAULT VALUES");
    Object object("wide");
    for (int i = ORMEL_MAX_SELECT_FIELDS; i > 0; --i) {
        const std::string name = "c" + std::to_string(i);
        ASSERT_EQ(ORMEL_ObjectSelectFieldSet(object, name.c_str()), ORMEL_OK);
        ASSERT_EQ(ORMEL_ObjectInt32Set(object, name.c_str(), i), ORMEL_OK);
    }
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(object, "c0"), ORMEL_ERR_FAILED);
    EXPECT_EQ(ORMEL_ObjectInt32Set(object, "c0", 0), ORMEL_ERR_FAILED);
    Result result;
    ASSERT_EQ(ORMEL_SelectRecByObj(object, result), ORMEL_OK);
    ASSERT_EQ(result->uiRecNum, 1U);
    for (int i = 1; i <= ORMEL_MAX_SELECT_FIELDS; ++i) {
        int32_t value = 0;
        EXPECT_EQ(ORMEL_ResultInt32Get(result, 0, ("C" + std::to_string(i)).c_str(), &value), ORMEL_OK);
        EXPECT_EQ(value, i);
    }
}

} // namespace
