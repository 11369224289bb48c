#include "ormeldb/dao.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::kClientStatus;
using unit::Log;

namespace {

class ConnectionTest : public unit::UnitTest {
protected:
    static void *Connect(const char *mode = "REQUIRED") { return dbConnect("h:1", "u", "p", mode); }

    // A connection, with what making it asked and logged forgotten.
    static void *Connected() {
        void *conn = Connect();
        Client().ForgetCalls();
        Log().Forget();
        return conn;
    }
};

// --- Opening and closing ---

TEST_F(ConnectionTest, SetsTheSslModeAndConnects) {
    void *conn = Connect("VERIFY_FULL");
    EXPECT_EQ(conn, Client().Handle("c1"));
    EXPECT_THAT(Client().Calls(),
                ElementsAre("alloc_conn()", "set_conn_attr(c1, 112, 4, 4)", "connect(c1, h:1, u, p)"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbConnect: Connection ok"));
    dbDisconnect(conn);
}

TEST_F(ConnectionTest, Disconnects) {
    dbDisconnect(Connected());
    EXPECT_THAT(Client().Calls(), ElementsAre("disconnect(c1)", "free_conn(c1)"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbDisconnect: DisConnection ok"));
}

TEST_F(ConnectionTest, WithoutAHandleThereIsNothingToFree) {
    Client().Fail("alloc_conn");
    EXPECT_EQ(Connect(), nullptr);
    EXPECT_THAT(Client().Calls(), ElementsAre("alloc_conn()"));
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbConnect: qdc_alloc_conn failed"));
}

TEST_F(ConnectionTest, ARefusedSslModeFreesTheHandle) {
    Client().Fail("set_conn_attr");
    EXPECT_EQ(Connect(), nullptr);
    EXPECT_THAT(Client().Calls(),
                ElementsAre("alloc_conn()", "set_conn_attr(c1, 112, 2, 4)", "get_error(c1)", "free_conn(c1)"));
    EXPECT_THAT(Log().Lines(),
                ElementsAre("ERROR dbSetSSLMode: qdc_set_conn_attr mode :REQUIRED failed ",
                            "ERROR dbConnect: dbSetSSLMode failed", "ERROR dbPrintError: QD-00942 no such table"));
}

TEST_F(ConnectionTest, ARefusedConnectionFreesTheHandle) {
    Client().Fail("connect");
    EXPECT_EQ(Connect(), nullptr);
    EXPECT_THAT(Client().Calls(), ElementsAre("alloc_conn()", "set_conn_attr(c1, 112, 2, 4)", "connect(c1, h:1, u, p)",
                                              "get_error(c1)", "free_conn(c1)"));
    EXPECT_THAT(Log().Lines(),
                ElementsAre("ERROR dbConnect: qdc_connect failed", "ERROR dbPrintError: QD-00942 no such table"));
}

TEST_F(ConnectionTest, PassesMissingTextsOn) {
    void *conn = dbConnect(":", "", "", "");
    EXPECT_EQ(Client().Calls().back(), "connect(c1, :, , )");
    dbDisconnect(conn);
}

// --- SSL modes ---

TEST_F(ConnectionTest, KnowsSslModesByName) {
    struct {
        const char *name;
        uint32_t mode;
        bool known;
    } cases[] = {{"DISABLED", 0, true},    {"PREFERRED", 1, true},   {"REQUIRED", 2, true},  {"VERIFY_CA", 3, true},
                 {"VERIFY_FULL", 4, true}, {"verify_full", 4, true}, {"Required", 2, true},  {"", 0, false},
                 {"REQUIRE", 0, false},    {"REQUIREDX", 0, false},  {" REQUIRED", 0, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Log().Forget();
        EXPECT_EQ(dbSslModeType(c.name), c.mode);
        unit::Lines unknown = {std::string("ERROR dbSslModeType: SSLMode ") + c.name};
        EXPECT_EQ(Log().Lines(), c.known ? unit::Lines{} : unknown);
    }
}

TEST_F(ConnectionTest, AMissingSslModeIsAnUnknownOne) {
    EXPECT_EQ(dbSslModeType(nullptr), 0u);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbSslModeType: SSLMode "));
}

TEST_F(ConnectionTest, AnUnknownSslModeConnectsWithoutSsl) {
    void *conn = Connect("nonsense");
    EXPECT_EQ(Client().Calls()[1], "set_conn_attr(c1, 112, 0, 4)");
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbSslModeType: SSLMode nonsense", "DEBUG dbConnect: Connection ok"));
    dbDisconnect(conn);
}

TEST_F(ConnectionTest, SettingTheSslModeGivesTheClientsStatus) {
    void *conn = Connected();
    EXPECT_EQ(dbSetSSLMode(conn, "VERIFY_CA"), 0u);
    EXPECT_THAT(Client().Calls(), ElementsAre("set_conn_attr(c1, 112, 3, 4)"));
    EXPECT_THAT(Log().Lines(), IsEmpty());
    Client().Fail("set_conn_attr");
    EXPECT_EQ(dbSetSSLMode(conn, "VERIFY_CA"), kClientStatus);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbSetSSLMode: qdc_set_conn_attr mode :VERIFY_CA failed "));
    Client().Fail("set_conn_attr");
    EXPECT_EQ(dbSetSSLMode(conn, nullptr), kClientStatus);
    EXPECT_EQ(Log().Lines().back(), "ERROR dbSetSSLMode: qdc_set_conn_attr mode : failed ");
    dbDisconnect(conn);
}

// --- Statements and transactions ---

TEST_F(ConnectionTest, MakesAndFreesStatements) {
    void *conn = Connected();
    void *stmt = dbCreateStmt(conn);
    EXPECT_EQ(stmt, Client().Handle("s1"));
    dbFreeStmt(stmt);
    EXPECT_THAT(Client().Calls(), ElementsAre("alloc_stmt(c1)", "free_stmt(s1)"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbCreateStmt: CreateStmt ok", "DEBUG dbFreeStmt: FreeStmt ok"));
    dbDisconnect(conn);
}

TEST_F(ConnectionTest, AStatementThatCannotBeMade) {
    void *conn = Connected();
    Client().Fail("alloc_stmt");
    EXPECT_EQ(dbCreateStmt(conn), nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbCreateStmt: qdc_alloc_stmt error\n"));
    dbDisconnect(conn);
}

TEST_F(ConnectionTest, TransactionsGiveTheClientsStatus) {
    struct {
        uint32_t (*function)(void *);
        const char *operation;
        const char *call;
    } cases[] = {{dbStartTrans, "set_conn_attr", "set_conn_attr(c1, 101, 0, 4)"},
                 {dbCommitTrans, "commit", "commit(c1)"},
                 {dbRollbackTrans, "rollback", "rollback(c1)"}};
    void *conn = Connected();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.call);
        Client().ForgetCalls();
        EXPECT_EQ(c.function(conn), 0u);
        Client().Fail(c.operation);
        EXPECT_EQ(c.function(conn), kClientStatus);
        EXPECT_THAT(Client().Calls(), ElementsAre(c.call, c.call));
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
    dbDisconnect(conn);
}

TEST_F(ConnectionTest, NoHandleNoCall) {
    dbDisconnect(nullptr);
    dbFreeStmt(nullptr);
    EXPECT_EQ(dbCreateStmt(nullptr), nullptr);
    EXPECT_NE(dbSetSSLMode(nullptr, "REQUIRED"), 0u);
    EXPECT_NE(dbStartTrans(nullptr), 0u);
    EXPECT_EQ(dbCommitTrans(nullptr), 1u);
    EXPECT_EQ(dbRollbackTrans(nullptr), 1u);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// --- Small values ---

TEST_F(ConnectionTest, OperatorsAreNamed) {
    const char *const texts[] = {"=", "<>", "<", "<=", "=", "=", "=", "=", "like", "=", "="};
    for (uint32_t op = 0; op < std::size(texts); ++op) {
        EXPECT_STREQ(dbGetOpStr(op), texts[op]) << op;
    }
    EXPECT_STREQ(dbGetOpStr(0xFFFFFFFF), "=");
}

TEST_F(ConnectionTest, IntegersAreReadByTheirSize) {
    // An odd address: nothing in a record is aligned.
    const unsigned char bytes[] = {0, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    struct {
        uint32_t size;
        int64_t value;
    } cases[] = {{0, 0}, {1, -2}, {2, 0xFFFE}, {4, 0xFFFFFFFE}, {8, -2}, {3, -2}, {7, -2}, {16, -2}};
    for (const auto &c : cases) {
        EXPECT_EQ(dbGetIntValue(bytes + 1, c.size), c.value) << c.size;
    }
    EXPECT_EQ(dbGetIntValue(bytes + 2, 1), -1);
    EXPECT_EQ(dbGetIntValue(nullptr, 0), 0);
    EXPECT_EQ(dbGetIntValue(nullptr, 4), 0);
}

} // namespace
