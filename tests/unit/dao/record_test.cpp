#include "dao_test.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Client;
using unit::Int32;
using unit::kCreated;
using unit::kFreed;
using unit::kNotCreated;
using unit::kPrinted;
using unit::Log;
using unit::operator+;

namespace {

using Statement = DB_RESULT *(*)(void *, const char *, const ORMEL_PARA *);

// What the statements have in common and where they differ.
struct Kind {
    const char *name;
    Statement run;
    bool write;
    std::string sql;
    std::vector<uint32_t> positions; // bound, of a list of fields 0 and 1 and conditions 2 and 3
    unit::Lines zeroRows;            // what is logged when nothing is affected
    // Which failures print the client's error.
    bool printsCreate, printsPrepare, printsBind;
};

const std::vector<Kind> kKinds = {
    {"dbCount",
     dbCount,
     false,
     "SELECT count(*) FROM T WHERE F0 = :1 AND F1 = :2",
     {0, 1},
     {"ERROR dbGetResult: qdc_get_affected_rows :T , rowCount = 0"},
     false,
     true,
     true},
    {"dbSelectRec",
     dbSelectRec,
     false,
     "SELECT * FROM T WHERE F0 = :1 AND F1 = :2",
     {0, 1},
     {"ERROR dbGetResult: qdc_get_affected_rows :T , rowCount = 0"},
     false,
     true,
     false},
    {"dbInsertRec",
     dbInsertRec,
     true,
     "INSERT INTO T (F0, F1) values (:1, :2)",
     {0, 1},
     {"ERROR dbInsertRec: qdc_get_affected_rows :T failed, rowCount = 0"},
     true,
     true,
     true},
    {"dbDeleteRec",
     dbDeleteRec,
     true,
     "DELETE from T WHERE F0 = :1 AND F1 = :2",
     {0, 1},
     {"ERROR dbDeleteRec: qdc_get_affected_rows :T , rowCount = 0"},
     true,
     true,
     true},
    {"dbUpdateRec",
     dbUpdateRec,
     true,
     "UPDATE T SET F0 = :1, F1 = :2 WHERE F2 = :3 AND F3 = :4",
     {0, 1, 2, 3},
     {"ERROR dbUpdateRec: qdc_get_affected_rows :T failed, rowCount = 0"},
     true,
     true,
     false},
};

const Kind &KindOf(Statement run) {
    return *std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind &kind) { return kind.run == run; });
}

class RecordTest : public unit::DaoTest {
protected:
    // A list for such a statement: each slot holds its own number.
    ORMEL_PARA *List(const std::string &kind, uint32_t type = 1) {
        bool fields = kind == "dbInsertRec" || kind == "dbUpdateRec";
        bool conditions = kind != "dbInsertRec";
        para_ = {};
        para_.iFieldNum = fields ? 2 : 0;
        para_.iCondNum = conditions ? 2 : 0;
        for (uint32_t i = 0; i < 4; ++i) {
            values_[i] = i;
            para_.name[i] = names_[i];
            para_.value[i] = &values_[i];
            para_.length[i] = 4;
            para_.type[i] = type;
        }
        return &para_;
    }

    static std::vector<std::string> Binds(const std::vector<uint32_t> &positions) {
        std::vector<std::string> calls;
        for (uint32_t i : positions) {
            std::string n = std::to_string(i);
            calls.push_back("bind_by_pos(s1, " + n + ", 1, '\\0" + n + "\\00\\00\\00', 4, null)");
        }
        return calls;
    }
    static unit::Lines Bound(const std::vector<uint32_t> &positions) {
        unit::Lines lines;
        for (uint32_t i : positions) {
            lines.push_back("DEBUG dbBindPara: qdc_bind_by_pos :" + std::to_string(i) + ", type:1, len:4 ");
        }
        return lines;
    }

    // What is logged when the n-th call of an operation fails.
    unit::Lines Failing(const Kind &kind, const char *operation, int n = 1) {
        Renew();
        Client().Fail(operation, n);
        EXPECT_EQ(kind.run(conn_, "T", List(kind.name)), nullptr);
        EXPECT_EQ(Client().LiveStatements(), 0);
        return Log().Lines();
    }

    ORMEL_PARA para_{};

private:
    uint32_t values_[4] = {};
    const char *names_[4] = {"F0", "F1", "F2", "F3"};
};

// --- When all goes well ---

TEST_F(RecordTest, EachStatementIsOneRoundTrip) {
    for (const Kind &kind : kKinds) {
        SCOPED_TRACE(kind.name);
        Renew();
        Client().On("", {.columns = unit::Integers(1), .rows = {{Int32(5)}}});
        unit::Result result(kind.run(conn_, "T", List(kind.name)));
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(result->uiRowCount, 1u);

        std::vector<std::string> calls = {"alloc_stmt(c1)"};
        if (kind.run == dbSelectRec) {
            calls.push_back("set_stmt_attr(s1, 201, 100000, 0)");
        }
        calls.push_back("prepare(s1, " + kind.sql + ")");
        if (kind.run == dbInsertRec) {
            calls.push_back("set_paramset_size(s1, 1)");
        }
        calls = calls + Binds(kind.positions) + std::vector<std::string>{"execute(s1)", "free_stmt(s1)"};
        EXPECT_THAT(Client().CallsButReads(), ElementsAreArray(calls));

        unit::Lines lines = unit::Lines{kCreated} + Bound(kind.positions);
        if (kind.run == dbInsertRec) {
            lines.push_back("ERROR dbInsertRec: Insert rec rowCount = 1");
        }
        unit::Lines logged = Log().LinesOf("dbCreateStmt") + Log().LinesOf("dbBindPara") + Log().LinesOf(kind.name) +
                             Log().LinesOf("dbFreeStmt");
        EXPECT_EQ(logged, lines + unit::Lines{kFreed});
    }
}

TEST_F(RecordTest, CountsComeAsACell) {
    Client().On("SELECT count(*)", {.columns = {{"COUNT", 2, 8}}, .rows = {{unit::Int64(12)}}});
    unit::Result result(dbCount(conn_, "T", List("dbCount")));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(dbGetIntValue(dbGetValueFromRes(result.get(), 0, 0), 8), 12);
}

TEST_F(RecordTest, WritesGiveTheRowsTheyAffected) {
    for (const Kind &kind : kKinds) {
        if (kind.write) {
            Client().On("", {.affected = 7});
            unit::Result result(kind.run(conn_, "T", List(kind.name)));
            ASSERT_NE(result, nullptr) << kind.name;
            EXPECT_EQ(result->uiRowCount, 7u);
            EXPECT_EQ(result->uiFieldCount, 0u);
            EXPECT_EQ(result->ppRows, nullptr);
        }
    }
}

TEST_F(RecordTest, NothingAffectedIsAResultAndALine) {
    for (const Kind &kind : kKinds) {
        SCOPED_TRACE(kind.name);
        Log().Forget();
        unit::Result result(kind.run(conn_, "T", List(kind.name)));
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(result->uiRowCount, 0u);
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), kind.zeroRows);
    }
}

TEST_F(RecordTest, AnUpdateWithoutConditionsBindsItsFieldsOnly) {
    ORMEL_PARA *list = List("dbUpdateRec");
    list->iCondNum = 0;
    unit::Result result(dbUpdateRec(conn_, "T", list));
    EXPECT_NE(result, nullptr);
    EXPECT_THAT(
        Client().CallsButReads(),
        ElementsAreArray(std::vector<std::string>{"alloc_stmt(c1)", "prepare(s1, UPDATE T SET F0 = :1, F1 = :2)"} +
                         Binds({0, 1}) + std::vector<std::string>{"execute(s1)", "free_stmt(s1)"}));
}

TEST_F(RecordTest, LargeObjectsLiveUntilTheStatementHasRun) {
    for (const Kind &kind : kKinds) {
        for (uint32_t type : {13u, 14u}) {
            SCOPED_TRACE(kind.name);
            size_t blocks = 0;
            Client().Hook("execute", [&] { blocks = unit::LiveBlocks(); });
            size_t before = unit::LiveBlocks();
            unit::Result result(kind.run(conn_, "T", List(kind.name, type)));
            EXPECT_NE(result, nullptr);
            EXPECT_GT(blocks, before + 1) << "beside the text there are the slots";
        }
    }
}

// --- Failures ---

TEST_F(RecordTest, EachFailureIsLoggedAndPrintedAsItIs) {
    for (const Kind &kind : kKinds) {
        const std::string error = std::string("ERROR ") + kind.name + ": ";
        auto printed = [](bool prints) { return prints ? unit::Lines{kPrinted} : unit::Lines{}; };
        const unit::Lines freed = {kFreed};
        const unit::Lines noPrepareLine =
            kind.run == dbInsertRec ? unit::Lines{} : unit::Lines{error + "prepare sql:" + kind.sql + " failed"};
        struct {
            const char *operation;
            unit::Lines lines;
        } cases[] = {
            {"alloc_stmt", unit::Lines{kNotCreated, error + "qdc_alloc_stmt failed"} + printed(kind.printsCreate)},
            {"prepare", unit::Lines{kCreated} + noPrepareLine + printed(kind.printsPrepare) + freed},
            {"bind_by_pos",
             unit::Lines{kCreated, "ERROR dbBindPara: qdc_bind_by_pos :0 F0 failed ", error + "dbBindPara failed"} +
                 printed(kind.printsBind) + freed},
            {"execute", unit::Lines{kCreated} + Bound(kind.positions) +
                            unit::Lines{error + "exec sql:" + kind.sql + " failed"} + printed(true) + freed},
        };
        for (const auto &c : cases) {
            SCOPED_TRACE(std::string(kind.name) + ": " + c.operation);
            EXPECT_EQ(Failing(kind, c.operation), c.lines);
        }
    }
}

TEST_F(RecordTest, ARefusedPrefetchEndsTheSelect) {
    EXPECT_THAT(Failing(KindOf(dbSelectRec), "set_stmt_attr"),
                ElementsAre(kCreated,
                            "ERROR dbSelectRec: set_stmt_attr PREFETCH_ROWS :SELECT * FROM T WHERE F0 = :1 AND "
                            "F1 = :2 failed",
                            kFreed));
}

TEST_F(RecordTest, AnUpdateWhoseConditionsCannotBeBoundPrintsTheError) {
    const unit::Lines failed = {"ERROR dbBindPara: qdc_bind_by_pos :2 F2 failed ",
                                "ERROR dbUpdateRec: dbBindPara cond failed", kPrinted, kFreed};
    EXPECT_EQ(Failing(KindOf(dbUpdateRec), "bind_by_pos", 3), unit::Lines{kCreated} + Bound({0, 1}) + failed);
}

TEST_F(RecordTest, WithoutMemoryNothingIsLeft) {
    for (const Kind &kind : kKinds) {
        for (uint32_t type : {1u, 13u}) {
            SCOPED_TRACE(std::string(kind.name) + " of type " + std::to_string(type));
            Client().On("", {.columns = unit::Integers(1), .rows = {{Int32(5)}}});
            size_t before = unit::LiveBlocks();
            DB_RESULT *result = nullptr;
            int allocations = unit::ForEachAllocation([&] { result = kind.run(conn_, "T", List(kind.name, type)); },
                                                      [&](int) {
                                                          EXPECT_EQ(result, nullptr);
                                                          EXPECT_EQ(Client().LiveStatements(), 0);
                                                          EXPECT_EQ(unit::LiveBlocks(), before);
                                                      });
            EXPECT_GE(allocations, 2);
            dbResClear(result);
        }
    }
}

TEST_F(RecordTest, SaysWhatCouldNotBeAllocated) {
    ORMEL_PARA *list = List("dbInsertRec");
    {
        unit::FailingAllocation text(1);
        EXPECT_EQ(dbInsertRec(conn_, "T", list), nullptr);
    }
    EXPECT_THAT(Log().Lines(),
                ElementsAre("ERROR dbInsertMallocSql: malloc sql failed", "ERROR dbInsertRec: malloc sql failed"));
    EXPECT_THAT(Client().Calls(), IsEmpty());
    for (const Kind &kind : kKinds) {
        if (kind.write) {
            Log().Forget();
            list = List(kind.name);
            unit::FailingAllocation header(2);
            EXPECT_EQ(kind.run(conn_, "T", list), nullptr);
            EXPECT_EQ(Log().LinesOf(kind.name), unit::Lines{std::string("ERROR ") + kind.name + ": malloc res failed"});
        }
    }
}

TEST_F(RecordTest, WhatDoesNotFitIsNoStatement) {
    for (const Kind &kind : kKinds) {
        SCOPED_TRACE(kind.name);
        EXPECT_EQ(kind.run(conn_, "T", nullptr), nullptr);
        EXPECT_EQ(kind.run(conn_, nullptr, List(kind.name)), nullptr);
        EXPECT_EQ(kind.run(nullptr, "T", List(kind.name)), nullptr);
        for (auto [fields, conditions] : {std::pair{-1, 0}, {0, -1}, {33, 0}, {0, 33}, {20, 13}}) {
            ORMEL_PARA *list = List(kind.name);
            list->iFieldNum = fields;
            list->iCondNum = conditions;
            EXPECT_EQ(kind.run(conn_, "T", list), nullptr) << fields << ' ' << conditions;
        }
    }
    EXPECT_EQ(dbSelectRec1(conn_, "T", nullptr), nullptr);
    EXPECT_EQ(dbSelectRec1(nullptr, "T", List("dbCount")), nullptr);
    EXPECT_EQ(dbSelectRec1(conn_, nullptr, List("dbCount")), nullptr);
    ORMEL_PARA *list = List("dbCount");
    list->iCondNum = 33;
    EXPECT_EQ(dbSelectRec1(conn_, "T", list), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// --- The select that hands out its statement ---

const std::string kSelect1 = "SELECT * FROM T WHERE F0 = :1 AND F1 = :2";

TEST_F(RecordTest, SelectRec1HandsOutItsStatement) {
    ORMEL_PARA *list = List("dbSelectRec1");
    list->isLimit = list->iRowCounts = 1;
    list->iSelectFieldNum = 1;
    list->selectField[0] = const_cast<char *>("F0");
    stmt_ = dbSelectRec1(conn_, "T", list);
    EXPECT_EQ(stmt_, Client().Handle("s1"));
    EXPECT_THAT(Client().Calls(),
                ElementsAreArray(std::vector<std::string>{"alloc_stmt(c1)", "prepare(s1, " + kSelect1 + ")"} +
                                 Binds({0, 1}) + std::vector<std::string>{"execute(s1)"}));
    EXPECT_EQ(Log().Lines(), unit::Lines{kCreated} + Bound({0, 1}));
}

TEST_F(RecordTest, SelectRec1HandsOutItsStatementAfterAFailureToo) {
    const std::string error = "ERROR dbSelectRec1: ";
    struct {
        const char *operation;
        std::string line;
    } cases[] = {{"prepare", error + "prepare sql:" + kSelect1 + " failed"},
                 {"bind_by_pos", error + "dbBindPara failed"},
                 {"execute", error + "exec sql:" + kSelect1 + " failed"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.operation);
        Forget();
        Client().Fail(c.operation);
        stmt_ = dbSelectRec1(conn_, "T", List("dbSelectRec1"));
        EXPECT_NE(stmt_, nullptr);
        EXPECT_EQ(Log().LinesOf("dbSelectRec1"), unit::Lines{c.line});
        EXPECT_EQ(Client().Count("get_error"), 0);
        dbFreeStmt(stmt_);
        stmt_ = nullptr;
    }
}

TEST_F(RecordTest, SelectRec1WithoutAStatement) {
    Client().Fail("alloc_stmt");
    EXPECT_EQ(dbSelectRec1(conn_, "T", List("dbSelectRec1")), nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre(kNotCreated, "ERROR dbSelectRec1: qdc_alloc_stmt failed"));
    Forget();
    ORMEL_PARA *list = List("dbSelectRec1");
    unit::FailingAllocation text(1);
    EXPECT_EQ(dbSelectRec1(conn_, "T", list), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

} // namespace
