// The three variants of every operation differ in the same way: whose connection it is, and who commits.
#include "api/operation.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using unit::Arguments;
using unit::Client;
using unit::kClientStatus;
using unit::kOperations;
using unit::Log;
using unit::Operation;

namespace {

class VariantTest : public unit::OperationTest, public testing::WithParamInterface<Operation> {
protected:
    // The fitting arguments with one that is needed left out, for each.
    std::vector<Arguments> Lacking() {
        std::vector<Arguments> all(1, Fitting());
        all.back().table = nullptr;
        if (GetParam().needsBuffer) {
            all.push_back(Fitting());
            all.back().buffer = nullptr;
        }
        if (GetParam().needsCount) {
            all.push_back(Fitting());
            all.back().count = nullptr;
        }
        return all;
    }

    static int Commits() { return Client().Count("commit"); }
};

// --- ForConn ---

TEST_P(VariantTest, ForConnWorksOnTheCallersConnection) {
    void *conn = ORMEL_DBConnect();
    Client().ForgetCalls();
    EXPECT_EQ(GetParam().forConn(conn, Fitting()), 0u);
    EXPECT_THAT(Statements(), ElementsAre(testing::StartsWith(GetParam().sql)));
    EXPECT_THAT(Client().CallsButReads(), Contains("alloc_stmt(c1)").Times(2)) << "the probe and the statement";
    EXPECT_EQ(Client().Count("alloc_conn") + Client().Count("disconnect") + Commits(), 0);
    EXPECT_EQ(count_, GetParam().needsCount ? 1u : kUnwritten);
    ORMEL_DBDisConnect(conn);
}

TEST_P(VariantTest, ForConnLogsItsCode) {
    void *conn = ORMEL_DBConnect();
    Log().Forget();
    GetParam().forConn(conn, Fitting());
    std::string function = "DEBUG " + GetParam().name + "ForConn: ";
    unit::Lines lines = Log().LinesOf(GetParam().name);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front(), function + "Trace in.");
    if (!GetParam().lastLine.empty()) {
        EXPECT_EQ(lines.back().rfind(function + GetParam().lastLine + "0", 0), 0u) << lines.back();
    }
    EXPECT_EQ(lines.size(), GetParam().lastLine.empty() ? 1u : 2u);
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
    using unit::operator+;
    EXPECT_EQ(ends, std::vector<std::string>(GetParam().write ? 1 : 0, "commit(c1)") + unit::Closed("c1"));
    EXPECT_EQ(Commits(), GetParam().write ? 1 : 0);
    EXPECT_THAT(Statements(), ElementsAre(testing::StartsWith(GetParam().sql)));
}

TEST_P(VariantTest, PlainLogsBeforeItsBody) {
    GetParam().plain(Fitting());
    unit::Lines lines = Log().LinesOf(GetParam().name);
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "DEBUG " + GetParam().name + ": Trace in.");
    EXPECT_EQ(lines[1], "DEBUG " + GetParam().name + "ForConn: Trace in.");
    EXPECT_EQ(Log().Lines().front(), lines[0]) << "before it connects";
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
        EXPECT_EQ(GetParam().plain(Fitting()), 211u);
    }
    EXPECT_EQ(count_, kUnwritten);
    EXPECT_EQ(Client().Count("prepare"), 0);
}

TEST_P(VariantTest, PlainReturnsARefusedCommit) {
    Client().Fail("commit");
    EXPECT_EQ(GetParam().plain(Fitting()), GetParam().write ? kClientStatus : 0u);
    if (GetParam().write) {
        std::vector<std::string> calls = Client().Calls();
        using unit::operator+;
        EXPECT_EQ(std::vector<std::string>(calls.end() - 4, calls.end()),
                  (std::vector<std::string>{"commit(c1)", "get_error(c1)"} + unit::Closed("c1")))
            << "the error is printed before the connection is closed";
    }
    Client().FailNothing();
}

// --- ForTrans ---

TEST_P(VariantTest, ForTransWorksOnTheSlotsConnectionAndLeavesItOpen) {
    ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
    Client().ForgetCalls();
    Log().Forget();
    EXPECT_EQ(GetParam().forTrans(slot, Fitting()), 0u);
    EXPECT_THAT(Statements(), ElementsAre(testing::StartsWith(GetParam().sql)));
    EXPECT_EQ(Client().Count("alloc_conn") + Client().Count("disconnect") + Commits(), 0);
    EXPECT_EQ(Log().Lines().front(), "DEBUG " + GetParam().name + "ForTrans: Trace in.");
    EXPECT_NE(slot->pConn, nullptr);
    ORMEL_RollbackTrans(slot);
}

TEST_P(VariantTest, ForTransNeedsItsArguments) {
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

TEST_P(VariantTest, ForTransWithoutAConnection) {
    EXPECT_EQ(GetParam().forTrans(&g_stTransMgr.astTrans[0], Fitting()), 211u);
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG " + GetParam().name + "ForTrans: Trace in."));
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// --- What goes wrong in the body ---

TEST_P(VariantTest, ATableThatCannotBeDescribed) {
    for (const char *operation : {"alloc_stmt", "prepare", "execute", "get_column_count"}) {
        SCOPED_TRACE(operation);
        Script();
        Client().Fail(operation);
        EXPECT_EQ(GetParam().plain(Fitting()), GetParam().undescribed);
        EXPECT_THAT(Statements(), IsEmpty());
        EXPECT_EQ(Commits(), 0);
        EXPECT_EQ(Client().Count("rollback"), 0) << "closing the connection discards the work";
        EXPECT_EQ(count_, kUnwritten);
    }
}

TEST_P(VariantTest, AStatementWithoutResult) {
    for (const char *operation : {"alloc_stmt", "prepare", "bind_by_pos", "execute"}) {
        SCOPED_TRACE(operation);
        Fresh();
        Client().Fail(operation, operation == std::string("bind_by_pos") ? 1 : 2);
        EXPECT_EQ(GetParam().plain(Fitting()), 211u);
        EXPECT_EQ(Commits(), 0);
        EXPECT_EQ(count_, kUnwritten);
        EXPECT_EQ(ORMEL_ResAttGet("PERSON") != nullptr, true) << "the descriptor was given back";
    }
}

TEST_P(VariantTest, ATableIsDescribedOnce) {
    GetParam().plain(Fitting());
    EXPECT_EQ(Client().Count("alloc_stmt"), 2);
    Client().ForgetCalls();
    EXPECT_EQ(GetParam().plain(Fitting()), 0u);
    EXPECT_EQ(Client().Count("alloc_stmt"), 1);
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
            EXPECT_TRUE(code == 0u || code == 211u || code == GetParam().undescribed) << code;
            EXPECT_EQ(Commits(), GetParam().write && code == 0 ? 1 : 0);
            EXPECT_EQ(Client().LiveConnections() + Client().LiveStatements(), 0);
        });
    EXPECT_GE(allocations, 3);
    EXPECT_EQ(code, 0u);
}

INSTANTIATE_TEST_SUITE_P(Operations, VariantTest, testing::ValuesIn(kOperations),
                         [](const auto &info) { return info.param.name.substr(6); });

} // namespace
