// Tests of the access layer: they hold a connection of their own, "c1".
#ifndef UNIT_DAO_TEST_H
#define UNIT_DAO_TEST_H

#include "dao/qdc.h"
#include "ormeldb/dao.h"
#include "support/sample.h"
#include "support/unit_test.h"

namespace unit {

class DaoTest : public UnitTest {
protected:
    void SetUp() override { Renew(); }
    void TearDown() override { Close(); }

    // A client that knows nothing, with a connection: handles are counted from 1 again.
    void Renew() {
        Close();
        Client().Reset();
        conn_ = dbConnect("h:1", "u", "p", "REQUIRED");
        Forget();
    }

    static void Forget() {
        Client().ForgetCalls();
        Log().Forget();
    }

    // Makes the statement that is freed at the end: one that was executed and answers so.
    void Execute(const Answer &answer) {
        Client().On("", answer);
        stmt_ = dbCreateStmt(conn_);
        qdc_prepare(stmt_, "a query");
        qdc_execute(stmt_);
        Forget();
    }

    void *conn_ = nullptr;
    void *stmt_ = nullptr;

private:
    void Close() {
        Client().FailNothing();
        dbFreeStmt(stmt_);
        dbDisconnect(conn_);
        stmt_ = conn_ = nullptr;
        EXPECT_EQ(Client().LiveStatements(), 0);
        EXPECT_EQ(Client().LiveConnections(), 0);
    }
};

inline const std::string kCreated = "DEBUG dbCreateStmt: CreateStmt ok";
inline const std::string kNotCreated = "ERROR dbCreateStmt: qdc_alloc_stmt error\n";
inline const std::string kFreed = "DEBUG dbFreeStmt: FreeStmt ok";
inline const std::string kPrinted = "ERROR dbPrintError: QD-00942 no such table";

} // namespace unit

#endif
