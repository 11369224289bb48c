// Tests of what callers do between start and stop.
#ifndef UNIT_STARTED_H
#define UNIT_STARTED_H

#include "ormeldb.h"
#include "support/home.h"
#include "support/sample.h"
#include "support/unit_test.h"

namespace unit {

// Starts the library and stops it afterwards; connections that a test makes are "c1", "c2" ...
class StartedTest : public UnitTest {
protected:
    void SetUp() override {
        home_.Write("db.host=h\ndb.port=1\ndb.user=u\nauth.sslmode=REQUIRED\n");
        ASSERT_EQ(ORMEL_Init(), 0u);
        Client().Reset();
        Log().Forget();
    }

    void TearDown() override {
        EXPECT_EQ(g_stTransMgr.uiCount, 0u) << "slots are left";
        EXPECT_EQ(Client().LiveConnections(), 0);
        ORMEL_UnInit();
    }

    // Makes a table that can be described.
    static void Have(const std::string &table, const std::vector<Column> &columns) {
        Client().On("select * from " + table + " where 1<>1", {.columns = columns});
    }

    Home home_;
};

// What opening and closing a connection asks of the client.
inline std::vector<std::string> Opened(const std::string &c) {
    return {"alloc_conn()", "set_conn_attr(" + c + ", 112, 2, 4)", "connect(" + c + ", h:1, u, secret)"};
}
inline std::vector<std::string> Closed(const std::string &c) {
    return {"disconnect(" + c + ")", "free_conn(" + c + ")"};
}

} // namespace unit

#endif
