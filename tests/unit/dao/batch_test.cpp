#include "batch_test.h"
#include "support/process.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Asked;
using unit::Calls;
using unit::Client;
using unit::IsLob;
using unit::kCreated;
using unit::kFreed;
using unit::kNotCreated;
using unit::kPrinted;
using unit::Log;
using unit::operator+;
using unit::Written;

namespace {

using InsertTest = unit::BatchStatementTest;

const std::string kSql = "INSERT INTO T (F0, F1, F2) values (:1, :2, :3)";
const std::string kInsert = "ERROR dbPatchInsertRec: ";

// --- The insert ---

TEST_F(InsertTest, IsOneStatementForAllRows) {
    Client().On("INSERT", {.affected = 2});
    unit::Result result(dbPatchInsertRec(conn_, "T", Make(2, {1, 13, 14})));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 2u);
    EXPECT_EQ(result->uiFieldCount, 0u);
    EXPECT_EQ(result->ppRows, nullptr);
    EXPECT_THAT(Asked(),
                ElementsAre("alloc_stmt(c1)", "prepare(s1, " + kSql + ")", "set_paramset_size(s1, 2)",
                            "bind_by_pos(s1, 0, 1, '0000', 4, lengths)", "bind_by_pos(s1, 1, 13, slots, 16, lengths)",
                            "write_batch_clob(s1, 1, 0, 1)", "write_batch_clob(s1, 1, 1, 2)",
                            "bind_by_pos(s1, 2, 14, slots, 16, lengths)", "write_batch_blob(s1, 2, 0, 1)",
                            "write_batch_blob(s1, 2, 1, 2)", "execute(s1)", "get_affected_rows(s1)", "free_stmt(s1)"));
    EXPECT_THAT(Log().Lines(),
                ElementsAre(kCreated, Written(0, "0", 1), Written(1, "1x", 1), Written(0, "0", 2), Written(1, "1x", 2),
                            "DEBUG dbPatchInsertRec: BatchInsert rec rowCount = 2", kFreed));
}

TEST_F(InsertTest, BindsArraysWhereTheyLie) {
    Make(3, {9, 12});
    unit::Result result(dbPatchInsertRec(conn_, "T", Get()));
    std::vector<unit::Bound> bounds = Client().Bounds();
    ASSERT_EQ(bounds.size(), 2u);
    for (int k = 0; k < 2; ++k) {
        const unit::Bound &bound = bounds[static_cast<size_t>(k)];
        EXPECT_EQ(bound.position, static_cast<uint32_t>(k));
        EXPECT_EQ(bound.type, Column(k).type);
        EXPECT_EQ(bound.address, Column(k).data);
        EXPECT_EQ(bound.rowLengths, Column(k).ind);
        EXPECT_EQ(bound.length, 4u);
    }
}

TEST_F(InsertTest, NamesEveryColumn) {
    unit::Result one(dbPatchInsertRec(conn_, "T", Make(1, {1})));
    EXPECT_EQ(Client().Calls()[1], "prepare(s1, " + Insert("F0", ":1") + ")");
    Forget();
    std::string fields = "F0", values = ":1";
    for (int k = 1; k < 32; ++k) {
        fields += ", F" + std::to_string(k);
        values += ", :" + std::to_string(k + 1);
    }
    unit::Result all(dbPatchInsertRec(conn_, "T", Make(1, std::vector<uint32_t>(32, 1))));
    EXPECT_NE(all, nullptr);
    EXPECT_EQ(Client().Calls()[1], "prepare(s2, " + Insert(fields, values) + ")");
    EXPECT_EQ(Client().Count("bind_by_pos"), 32);
}

TEST_F(InsertTest, ALongTextComesOutWhole) {
    const std::string table(2000, 'T'), name(600, 'N');
    Make(1, {1, 1});
    Get()->name[0] = Get()->name[1] = name.c_str();
    unit::Capture error(stderr); // log lines that are too long are reported there
    unit::Result result(dbPatchInsertRec(conn_, table.c_str(), Get()));
    EXPECT_NE(result, nullptr);
    EXPECT_EQ(Client().Calls()[1],
              "prepare(s1, INSERT INTO " + table + " (" + name + ", " + name + ") values (:1, :2))");
}

TEST_F(InsertTest, NothingInsertedIsAResultAndALine) {
    unit::Result result(dbPatchInsertRec(conn_, "T", Make(1, {1})));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 0u);
    EXPECT_THAT(Log().Lines(),
                ElementsAre(kCreated, kInsert + "qdc_get_affected_rows :T failed, rowCount = 0", kFreed));
}

TEST_F(InsertTest, NoRowsAreExecutedAsWell) {
    Make(1, {9, 13});
    Get()->uiRecNum = Column(0).arrlen = Column(1).arrlen = 0;
    unit::Result result(dbPatchInsertRec(conn_, "T", Get()));
    EXPECT_NE(result, nullptr);
    Calls calls = Client().Calls();
    EXPECT_THAT(calls, testing::Contains("set_paramset_size(s1, 0)"));
    EXPECT_THAT(calls, testing::Contains("execute(s1)"));
    EXPECT_EQ(Client().Count("write_batch_clob"), 0);
}

TEST_F(InsertTest, ARefusedNumberOfRowsIsLeftToTheExecution) {
    Client().On("INSERT", {.affected = 2});
    Client().Fail("set_paramset_size");
    unit::Result result(dbPatchInsertRec(conn_, "T", Make(2, {1})));
    EXPECT_NE(result, nullptr);
    EXPECT_EQ(Client().Count("execute"), 1);
}

// The client fills the slots as it writes, and reads them and their lengths when it executes.
TEST_F(InsertTest, SlotsLiveUntilTheExecution) {
    bool seen = false;
    Client().Hook("execute", [&] {
        std::vector<const char *> slots;
        for (const unit::Bound &bound : Client().Bounds()) {
            if (IsLob(bound.type)) {
                slots.push_back(static_cast<const char *>(bound.address));
                EXPECT_EQ(std::string(slots.back(), 48), std::string(16, '\xAA') + std::string(32, '\0'));
                EXPECT_EQ(std::vector<uint16_t>(bound.rowLengths, bound.rowLengths + 3), std::vector<uint16_t>(3, 16));
            }
        }
        ASSERT_EQ(slots.size(), 3u);
        EXPECT_TRUE(slots[0] != slots[1] && slots[1] != slots[2] && slots[0] != slots[2]);
        seen = true;
    });
    unit::FailingAllocation count(0);
    unit::Result result(dbPatchInsertRec(conn_, "T", Make(3, {13, 1, 14, 13})));
    EXPECT_TRUE(seen);
    EXPECT_THAT(count.Sizes(), ElementsAre(12u * 64, 48u, 6u, 48u, 6u, 48u, 6u, sizeof(DB_RESULT)));
}

// --- Failures of the insert ---

TEST_F(InsertTest, EachFailureIsLoggedAndPrinted) {
    const std::string write = "ERROR dbBatchWriteLob: LOB ", bind = kInsert + "qdc_bind_by_pos ";
    struct {
        const char *operation;
        int n;
        unit::Lines lines;
        const char *last; // the failing call
    } cases[] = {
        {"alloc_stmt", 1, {kNotCreated, kInsert + "qdc_alloc_stmt failed"}, "alloc_stmt(c1)"},
        {"prepare", 1, {kInsert + "prepare sql:" + kSql + " failed"}, "prepare(s1, "},
        {"bind_by_pos", 1, {bind + ":0 type :1 failed "}, "bind_by_pos(s1, 0, "},
        {"bind_by_pos", 2, {write + "qdc_bind_by_pos failed", bind + ":1 type :13 failed "}, "bind_by_pos(s1, 1, "},
        {"write_batch_clob",
         1,
         {write + "qdc_write_batch_clob:1 failed ", bind + ":1 type :13 failed "},
         "write_batch_clob(s1, 1, 0, 1)"},
        {"write_batch_clob",
         2,
         {write + "qdc_write_batch_clob:1 failed ", bind + ":1 type :13 failed "},
         "write_batch_clob(s1, 1, 1, 2)"},
        {"bind_by_pos", 3, {write + "qdc_bind_by_pos failed", bind + ":2 type :14 failed "}, "bind_by_pos(s1, 2, "},
        {"write_batch_blob",
         1,
         {write + "qdc_write_batch_blob:2 failed", bind + ":2 type :14 failed "},
         "write_batch_blob(s1, 2, 0, 1)"},
        {"execute", 1, {kInsert + "exec sql:" + kSql + " failed"}, "execute(s1)"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.operation) + " " + std::to_string(c.n));
        Renew();
        Make(2, {1, 13, 14});
        size_t before = unit::LiveBlocks();
        Client().Fail(c.operation, c.n);
        EXPECT_EQ(dbPatchInsertRec(conn_, "T", Get()), nullptr);
        EXPECT_EQ(unit::LiveBlocks(), before);
        EXPECT_EQ(Client().LiveStatements(), 0);
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), c.lines + unit::Lines{kPrinted});
        Calls calls = Client().Calls();
        bool made = calls.back() == "free_stmt(s1)";
        EXPECT_EQ(made, std::string(c.operation) != "alloc_stmt");
        EXPECT_EQ(calls.at(calls.size() - (made ? 2 : 1)), "get_error(c1)") << "printed while the statement lives";
        EXPECT_EQ(calls.at(calls.size() - (made ? 3 : 2)).rfind(c.last, 0), 0u) << "something followed the failure";
        EXPECT_EQ(Client().Count("rollback"), 0);
    }
}

TEST_F(InsertTest, EveryAllocationMayFail) {
    const std::vector<unit::Lines> failed = {{},
                                             {kInsert + "malloc lobData failed"},
                                             {kInsert + "malloc lobLen failed"},
                                             {kInsert + "malloc lobData failed"},
                                             {kInsert + "malloc lobLen failed"},
                                             {kInsert + "malloc res failed"}};
    Client().On("INSERT", {.affected = 2});
    Make(2, {13, 1, 14});
    size_t before = unit::LiveBlocks();
    DB_RESULT *result = nullptr;
    int allocations = unit::ForEachAllocation(
        [&] {
            Forget();
            result = dbPatchInsertRec(conn_, "T", Get());
        },
        [&](int n) {
            SCOPED_TRACE(n);
            EXPECT_EQ(result, nullptr);
            EXPECT_EQ(unit::LiveBlocks(), before);
            EXPECT_EQ(Client().LiveStatements(), 0);
            EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), failed.at(static_cast<size_t>(n) - 1));
            EXPECT_EQ(Client().Count("execute"), n == 6 ? 1 : 0);
            EXPECT_EQ(Client().Count("get_error"), 0) << "it is not the client that failed";
            EXPECT_EQ(Client().Calls().empty(), n == 1);
        });
    EXPECT_EQ(allocations, 6);
    dbResClear(result);
}

TEST_F(InsertTest, WhatDoesNotFitIsNoStatement) {
    Make(2, std::vector<uint32_t>(33, 1));
    for (int32_t columns : {0, -1, 33, 34, INT32_MAX, INT32_MIN}) {
        Get()->itemNum = columns;
        EXPECT_EQ(dbPatchInsertRec(conn_, "T", Get()), nullptr) << columns;
    }
    EXPECT_EQ(dbPatchInsertRec(nullptr, "T", Make(2, {1})), nullptr);
    Log().Forget();
    EXPECT_EQ(dbPatchInsertRec(conn_, nullptr, Get()), nullptr);
    EXPECT_EQ(dbPatchInsertRec(conn_, "T", nullptr), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(InsertTest, ColumnsWithFewerValuesThanRowsAreNone) {
    for (uint32_t type : {1u, 9u, 13u, 14u}) {
        for (int column : {0, 2}) {
            Make(3, {type, 1, type});
            Column(column).arrlen = 2;
            EXPECT_EQ(dbPatchInsertRec(conn_, "T", Get()), nullptr);
            Column(column).arrlen = 0;
            EXPECT_EQ(dbPatchInsertRec(conn_, "T", Get()), nullptr);
        }
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
    Make(3, {1});
    Get()->uiRecNum = 2;
    unit::Result more(dbPatchInsertRec(conn_, "T", Get()));
    EXPECT_NE(more, nullptr) << "more values than rows";
}

TEST_F(InsertTest, LargeObjectsWithoutTheirArraysAreNone) {
    for (uint32_t type : {13u, 14u}) {
        Make(2, {1, type});
        Column(1).lobArray = nullptr;
        EXPECT_EQ(dbPatchInsertRec(conn_, "T", Get()), nullptr);
        Make(2, {1, type});
        Column(1).lobLen = nullptr;
        EXPECT_EQ(dbPatchInsertRec(conn_, "T", Get()), nullptr);
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(InsertTest, AMissingLargeObjectIsNoFailure) {
    Client().On("INSERT", {.affected = 4});
    Make(4, {13, 1});
    Column(0).lobArray[2] = nullptr;
    unit::Result result(dbPatchInsertRec(conn_, "T", Get()));
    EXPECT_NE(result, nullptr);
    EXPECT_EQ(Client().Count("write_batch_clob"), 2);
    EXPECT_EQ(Client().Count("execute"), 1);
    EXPECT_THAT(Log().Lines(KPL_LOG_ERROR), ElementsAre("ERROR dbBatchWriteLob: LOB pstItem->lobArray[i]:2 is NULL "));
}

} // namespace
