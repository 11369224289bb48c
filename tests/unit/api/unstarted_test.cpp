#include "api/refused_calls.h"

namespace {

class UnstartedTest : public unit::UnitTest {};

TEST_F(UnstartedTest, CallsAreRefused) {
    unit::ExpectCallsRefused();
}

// Tests run in this order: a stop would be remembered.
TEST_F(UnstartedTest, AHostMayFillTheConfigurationItself) {
    ORMEL_CONN_CFG &cfg = g_stTransMgr.stConnCfg;
    for (char *field : {cfg.acHost, cfg.acPassword}) {
        field[0] = 'x';
        void *conn = ORMEL_DBConnect();
        EXPECT_NE(conn, nullptr);
        ORMEL_DBDisConnect(conn);
        field[0] = '\0';
    }
    EXPECT_EQ(ORMEL_DBConnect(), nullptr);
}

TEST_F(UnstartedTest, StoppingIsHarmless) {
    ORMEL_UnInit();
    unit::ExpectCallsRefused();
}

// A connection of the caller's own serves even then; only the cache is missing.
TEST_F(UnstartedTest, OperationsOnAConnectionLeaveNothing) {
    unit::Client().On("select * from PERSON", {.columns = unit::PersonColumns()});
    unit::Client().On("INSERT", {.affected = 1});
    void *conn = dbConnect("h:1", "u", "p", "REQUIRED");
    unit::Person person = unit::MakePerson(1, "a", 1);
    ORMEL_RECORD_BUFFER buffer = unit::BufferOf(person);
    for (int i = 0; i < 2; ++i) {
        ORMEL_InsertRecForConn(conn, "PERSON", &buffer);
        ORMEL_SelectRecForConn(conn, "PERSON", nullptr, 0, &buffer);
    }
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), nullptr);
    dbDisconnect(conn);
}

TEST_F(UnstartedTest, TheVersionIsKnown) {
    EXPECT_STREQ(ORMEL_Version(), ORMELDB_VERSION);
}

} // namespace
