// The variants of every operation differ in the same way: whose connection it is, and who commits.
#include "api/operation.h"

using testing::Contains;
using testing::IsEmpty;
using unit::Arguments;
using unit::Client;
using unit::kClientStatus;
using unit::kOperations;
using unit::Log;
using unit::Operation;
using unit::operator+;

namespace {

// The operations of which something is true.
template <class Predicate> std::vector<Operation> Those(Predicate predicate) {
    std::vector<Operation> those;
    std::copy_if(kOperations.begin(), kOperations.end(), std::back_inserter(those), predicate);
    return those;
}

std::string Hex(uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof(text), "%x", code);
    return text;
}

class VariantTest : public unit::OperationTest, public testing::WithParamInterface<Operation> {
protected:
    using Run = std::function<uint32_t()>;

    bool Needs(unsigned need) const { return (GetParam().needs & need) != 0; }

    // The fitting arguments with one that is needed left out, for each.
    std::vector<Arguments> Lacking() {
        std::vector<Arguments> all;
        auto lacking = [&](unsigned need, auto Arguments::*member) {
            if (Needs(need)) {
                all.push_back(Fitting());
                all.back().*member = nullptr;
            }
        };
        lacking(unit::kTable, &Arguments::table);
        lacking(unit::kBuffer, &Arguments::buffer);
        lacking(unit::kCount, &Arguments::count);
        lacking(unit::kObject, &Arguments::object);
        lacking(unit::kResult, &Arguments::result);
        return all;
    }

    // Checks each variant, on a client that was asked nothing but its connection.
    template <class Check> void InEachVariant(Check check) {
        {
            SCOPED_TRACE("plain");
            Fresh();
            check([&] { return GetParam().plain(Fitting()); });
        }
        {
            SCOPED_TRACE("on a connection");
            Fresh();
            void *conn = ORMEL_DBConnect();
            Client().ForgetCalls();
            check([&] { return GetParam().forConn(conn, Fitting()); });
            ORMEL_DBDisConnect(conn);
        }
        if (GetParam().forTrans != nullptr) {
            SCOPED_TRACE("on a slot");
            Fresh();
            ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
            Client().ForgetCalls();
            check([&] { return GetParam().forTrans(slot, Fitting()); });
            EXPECT_NE(slot->pConn, nullptr) << "the slot stays its owner's";
            ORMEL_RollbackTrans(slot);
        }
    }

    // A variant that fails so: nothing is committed or taken back, nothing is handed out, and the body tells its code.
    void ExpectFailure(const Run &run, uint32_t code) {
        EXPECT_EQ(run(), code);
        EXPECT_EQ(Commits() + Client().Count("rollback"), 0) << "closing the connection discards the work";
        EXPECT_EQ(count_, kUnwritten);
        EXPECT_EQ(result_.pstRes, nullptr);
        EXPECT_EQ(result_.pstResAtt, nullptr);
        EXPECT_EQ(Client().LiveStatements(), 0);
        if (!GetParam().codeLine.empty()) {
            EXPECT_EQ(BodyLines().back().rfind(GetParam().codeLine + Hex(code), 0), 0u) << BodyLines().back();
        }
    }

    // What the body logged, without its name.
    unit::Lines BodyLines() const {
        unit::Lines lines = Log().LinesOf(GetParam().forConnName);
        const std::string name = GetParam().forConnName + ": ";
        for (std::string &line : lines) {
            size_t at = line.find(name);
            EXPECT_NE(at, std::string::npos) << line;
            line.erase(at, name.size());
        }
        return lines;
    }

    void ExpectStatements() const {
        std::vector<testing::Matcher<std::string>> begins;
        for (const std::string &statement : GetParam().statements) {
            begins.push_back(testing::StartsWith(statement));
        }
        EXPECT_THAT(Statements(), testing::ElementsAreArray(begins));
    }

    static int Commits() { return Client().Count("commit"); }
};

// --- ForConn ---

TEST_P(VariantTest, ForConnWorksOnTheCallersConnection) {
    void *conn = ORMEL_DBConnect();
    Client().ForgetCalls();
    EXPECT_EQ(GetParam().forConn(conn, Fitting()), 0u);
    ExpectStatements();
    const auto statements = static_cast<int>(GetParam().statements.size());
    EXPECT_THAT(Client().CallsButReads(), Contains("alloc_stmt(c1)").Times(1 + statements)) << "the probe comes first";
    EXPECT_EQ(Client().Count("alloc_conn") + Client().Count("disconnect") + Commits(), 0);
    EXPECT_EQ(count_, Needs(unit::kCount) ? 1u : kUnwritten);
    EXPECT_EQ(ORMEL_SelectResultRecNumGet(&result_), Needs(unit::kResult) ? 1u : 0u);
    ORMEL_DBDisConnect(conn);
}

TEST_P(VariantTest, ForConnLogsItsCode) {
    void *conn = ORMEL_DBConnect();
    Log().Forget();
    GetParam().forConn(conn, Fitting());
    EXPECT_EQ(BodyLines(), unit::Lines{"DEBUG Trace in."} + GetParam().lines);
    ORMEL_DBDisConnect(conn);
}

TEST_P(VariantTest, ForConnNeedsItsArguments) {
    void *conn = ORMEL_DBConnect();
    Client().ForgetCalls();
    Log().Forget();
    EXPECT_EQ(GetParam().forConn(nullptr, Fitting()), 97u);
    for (const Arguments &arguments : Lacking()) {
        EXPECT_EQ(GetParam().forConn(conn, arguments), 97u);
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), IsEmpty());
    ORMEL_DBDisConnect(conn);
}

// --- plain ---

TEST_P(VariantTest, PlainOpensAndClosesItsConnectionAndCommitsWrites) {
    EXPECT_EQ(GetParam().plain(Fitting()), 0u);
    std::vector<std::string> calls = Client().CallsButReads();
    std::vector<std::string> ends = {calls.end() - (GetParam().write ? 3 : 2), calls.end()};
    EXPECT_EQ(std::vector<std::string>(calls.begin(), calls.begin() + 3), unit::Opened("c1"));
    EXPECT_EQ(ends, std::vector<std::string>(GetParam().write ? 1 : 0, "commit(c1)") + unit::Closed("c1"));
    EXPECT_EQ(Commits(), GetParam().write ? 1 : 0);
    ExpectStatements();
}

TEST_P(VariantTest, PlainLogsBeforeItsBody) {
    GetParam().plain(Fitting());
    unit::Lines lines = Log().LinesOf(GetParam().plainName);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], "DEBUG " + GetParam().plainName + ": Trace in.");
    EXPECT_EQ(Log().Lines().front(), lines[0]) << "before it connects";
    EXPECT_EQ(BodyLines().front(), "DEBUG Trace in.");
}

TEST_P(VariantTest, PlainNeedsItsArguments) {
    for (const Arguments &arguments : Lacking()) {
        EXPECT_EQ(GetParam().plain(arguments), 97u);
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(VariantTest, PlainWithoutAConnection) {
    for (const char *operation : {"alloc_conn", "set_conn_attr", "connect"}) {
        Client().Fail(operation);
        EXPECT_EQ(GetParam().plain(Fitting()), GetParam().noConnection);
    }
    EXPECT_EQ(count_, kUnwritten);
    EXPECT_EQ(result_.pstRes, nullptr);
    EXPECT_EQ(Client().Count("prepare"), 0);
}

TEST_P(VariantTest, PlainReturnsARefusedCommit) {
    Client().Fail("commit");
    EXPECT_EQ(GetParam().plain(Fitting()), GetParam().write ? kClientStatus : 0u);
    if (GetParam().write) {
        std::vector<std::string> calls = Client().Calls();
        EXPECT_EQ(std::vector<std::string>(calls.end() - 4, calls.end()),
                  (std::vector<std::string>{"commit(c1)", "get_error(c1)"} + unit::Closed("c1")))
            << "the error is printed before the connection is closed";
    }
    Client().FailNothing();
}

// --- ForTrans ---

class SlotVariantTest : public VariantTest {};

TEST_P(SlotVariantTest, WorksOnTheSlotsConnectionAndLeavesItOpen) {
    ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
    Client().ForgetCalls();
    Log().Forget();
    EXPECT_EQ(GetParam().forTrans(slot, Fitting()), 0u);
    ExpectStatements();
    EXPECT_EQ(Client().Count("alloc_conn") + Client().Count("disconnect") + Commits(), 0);
    EXPECT_EQ(Log().Lines().front(), "DEBUG " + GetParam().forTransName + ": Trace in.");
    EXPECT_EQ(BodyLines().front(), "DEBUG Trace in.");
    EXPECT_NE(slot->pConn, nullptr);
    ORMEL_RollbackTrans(slot);
}

TEST_P(SlotVariantTest, NeedsItsArguments) {
    ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
    Client().ForgetCalls();
    Log().Forget();
    EXPECT_EQ(GetParam().forTrans(nullptr, Fitting()), 97u);
    for (const Arguments &arguments : Lacking()) {
        EXPECT_EQ(GetParam().forTrans(slot, arguments), 97u);
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), IsEmpty());
    ORMEL_RollbackTrans(slot);
}

TEST_P(SlotVariantTest, WithoutAConnection) {
    EXPECT_EQ(GetParam().forTrans(&g_stTransMgr.astTrans[0], Fitting()), GetParam().emptySlot);
    EXPECT_THAT(Log().Lines(), testing::ElementsAre("DEBUG " + GetParam().forTransName + ": Trace in."));
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// --- What goes wrong in the body ---

TEST_P(VariantTest, ATableThatCannotBeDescribed) {
    for (const char *operation : {"alloc_stmt", "prepare", "execute", "get_column_count"}) {
        SCOPED_TRACE(operation);
        InEachVariant([&](const Run &run) {
            Client().Fail(operation);
            ExpectFailure(run, GetParam().undescribed);
            EXPECT_THAT(Statements(), IsEmpty());
        });
    }
}

TEST_P(VariantTest, AStatementWithoutResult) {
    for (const char *operation : {"alloc_stmt", "prepare", "bind_by_pos", "execute"}) {
        SCOPED_TRACE(operation);
        InEachVariant([&](const Run &run) {
            Client().Fail(operation, operation == std::string("bind_by_pos") ? 1 : 2);
            ExpectFailure(run, GetParam().noResult);
            EXPECT_NE(ORMEL_ResAttGet("PERSON"), nullptr) << "the descriptor was given back";
        });
    }
}

TEST_P(VariantTest, ATableIsDescribedOnce) {
    const auto statements = static_cast<int>(GetParam().statements.size());
    GetParam().plain(Fitting());
    EXPECT_EQ(Client().Count("alloc_stmt"), 1 + statements);
    ClearResult();
    Client().ForgetCalls();
    EXPECT_EQ(GetParam().plain(Fitting()), 0u);
    EXPECT_EQ(Client().Count("alloc_stmt"), statements);
}

// Whatever is refused: nothing is left behind, and nothing is committed but what succeeded.
TEST_P(VariantTest, EveryCallOfTheClientMayFail) {
    unit::Threshold silent(KPL_LOG_FATAL);
    for (const char *operation : {"alloc_conn", "set_conn_attr", "connect", "alloc_stmt", "set_stmt_attr", "prepare",
                                  "bind_by_pos", "set_paramset_size", "execute", "fetch", "get_column_count",
                                  "desc_column_by_id", "get_column_by_id", "free_stmt", "disconnect", "free_conn"}) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE(std::string(operation) + " " + std::to_string(n));
            Fresh();
            Client().Fail(operation, n);
            uint32_t code = GetParam().plain(Fitting());
            EXPECT_EQ(Commits(), GetParam().write && code == 0 ? 1 : 0);
            EXPECT_EQ(result_.pstRes != nullptr, Needs(unit::kResult) && code == 0);
            EXPECT_EQ(Client().LiveConnections() + Client().LiveStatements(), 0);
            if (Client().Count(operation) < n) {
                EXPECT_EQ(code, 0u);
                break;
            }
        }
    }
}

TEST_P(VariantTest, EveryAllocationMayFail) {
    unit::Threshold silent(KPL_LOG_FATAL);
    uint32_t code = 0;
    int allocations = unit::ForEachAllocation(
        [&] {
            Fresh();
            code = GetParam().plain(Fitting());
        },
        [&](int n) {
            SCOPED_TRACE(n);
            // What cannot be cached is learnt again next time; everything else fails the call.
            EXPECT_TRUE(code == 0u || code == 211u || code == 255u || code == GetParam().undescribed) << code;
            EXPECT_EQ(Commits(), GetParam().write && code == 0 ? 1 : 0);
            EXPECT_EQ(result_.pstRes != nullptr, Needs(unit::kResult) && code == 0);
            EXPECT_EQ(Client().LiveConnections() + Client().LiveStatements(), 0);
        });
    EXPECT_GE(allocations, 3);
    EXPECT_EQ(code, 0u);
}

// --- Objects that do not fit ---

class ObjectVariantTest : public VariantTest {};

TEST_P(ObjectVariantTest, ARefusedObjectIsNoStatement) {
    ORMEL_ObjectStrSet(&object_, "NOBODY", "");
    InEachVariant([&](const Run &run) {
        ExpectFailure(run, 98);
        EXPECT_THAT(Statements(), IsEmpty());
        EXPECT_NE(ORMEL_ResAttGet("PERSON"), nullptr) << "the descriptor was given back";
    });
}

TEST_P(ObjectVariantTest, AnObjectWithoutATableIsRefused) {
    // The probe of a table without a name is the database's to refuse; here it is answered.
    Client().On("select * from ", {.columns = unit::PersonColumns()});
    object_.acTableName[0] = '\0';
    EXPECT_EQ(GetParam().plain(Fitting()), 98u);
    EXPECT_THAT(Statements(), IsEmpty());
}

TEST_P(ObjectVariantTest, ATableNameWithoutEndIsNotReadPastItsRoom) {
    std::memset(object_.acTableName, 'P', sizeof(object_.acTableName));
    InEachVariant([&](const Run &run) {
        uint32_t code = run();
        EXPECT_TRUE(code == 98u || code == GetParam().undescribed) << code;
        EXPECT_THAT(Statements(), IsEmpty());
    });
}

TEST_P(ObjectVariantTest, AValueThatIsNotThereIsWrittenAndNeverCompared) {
    ORMEL_ObjectNullSet(&object_, "BALANCE");
    InEachVariant([&](const Run &run) {
        if (GetParam().compares) {
            ExpectFailure(run, 98);
            EXPECT_THAT(Statements(), IsEmpty());
        } else {
            EXPECT_EQ(run(), 0u);
            EXPECT_THAT(Client().Calls(), Contains(testing::StartsWith("bind_by_pos(s2, 1, 2, null")));
        }
    });
}

TEST_P(ObjectVariantTest, CountsOutsideTheirCapacityAreRefused) {
    const int32_t items = object_.iItemNum;
    for (int32_t count : {-1, 33, INT32_MIN, INT32_MAX}) {
        for (int32_t *member : {&object_.iItemNum, &object_.iSelectFieldNum}) {
            SCOPED_TRACE(count);
            *member = count;
            EXPECT_EQ(GetParam().plain(Fitting()), 98u);
            object_.iItemNum = items;
            object_.iSelectFieldNum = 0;
        }
    }
    EXPECT_THAT(Statements(), IsEmpty());
}

std::string NameOf(const testing::TestParamInfo<Operation> &info) {
    return info.param.plainName.substr(6);
}

INSTANTIATE_TEST_SUITE_P(Operations, VariantTest, testing::ValuesIn(kOperations), NameOf);
INSTANTIATE_TEST_SUITE_P(Operations, SlotVariantTest,
                         testing::ValuesIn(Those([](const Operation &o) { return o.forTrans != nullptr; })), NameOf);
INSTANTIATE_TEST_SUITE_P(Operations, ObjectVariantTest,
                         testing::ValuesIn(Those([](const Operation &o) { return (o.needs & unit::kObject) != 0; })),
                         NameOf);

} // namespace
