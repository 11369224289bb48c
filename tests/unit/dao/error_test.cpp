#include "ormeldb/error.h"

#include <thread>

#include "ormeldb/dao.h"
#include "support/process.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using unit::Client;
using unit::Log;

namespace {

class ErrorTest : public unit::UnitTest {
protected:
    void SetUp() override { conn_ = dbConnect("h:1", "u", "p", "REQUIRED"); }
    void TearDown() override { dbDisconnect(conn_); }

    // What is printed and kept of an error.
    ORMEL_ERROR Print(uint32_t code, const char *text) {
        Client().errorCode = code;
        Client().errorText = text;
        Log().Forget();
        dbPrintError(conn_);
        ORMEL_ERROR error;
        std::memset(&error, 'x', sizeof(error));
        EXPECT_EQ(ORMEL_LastError(&error), 0u);
        return error;
    }

    void *conn_ = nullptr;
};

TEST_F(ErrorTest, PrintsCodeAndText) {
    struct {
        uint32_t code;
        const char *line;
    } cases[] = {
        {0, "QD-00000 words"}, {942, "QD-00942 words"}, {99999, "QD-99999 words"}, {123456, "QD-123456 words"}};
    for (const auto &c : cases) {
        ORMEL_ERROR error = Print(c.code, "words");
        EXPECT_THAT(Log().Lines(), ElementsAre(std::string("ERROR dbPrintError: ") + c.line));
        EXPECT_EQ(error.uiCode, c.code);
        EXPECT_STREQ(error.acText, "words");
    }
}

TEST_F(ErrorTest, KeepsTheClassWhereTheTextBeginsWithOne) {
    EXPECT_STREQ(Print(42, "42P01 relation \"t\" does not exist").acClass, "42P01");
    EXPECT_STREQ(Print(1, "no such table: t").acClass, "");
    EXPECT_STREQ(Print(1, "42").acClass, "");
    EXPECT_STREQ(Print(1, "").acClass, "");
    EXPECT_STREQ(Print(1, "0A000: not supported").acClass, "0A000");
    EXPECT_STREQ(Print(1, "ERROR: no digit").acClass, "");
    EXPECT_STREQ(Print(1, "12345, and so on").acClass, "");
}

TEST_F(ErrorTest, AMissingTextIsEmpty) {
    EXPECT_STREQ(Print(7, nullptr).acText, "");
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbPrintError: QD-00007 "));
}

TEST_F(ErrorTest, CutsALongText) {
    const std::string text(3000, 'e');
    Client().errorText = text.c_str();
    unit::Capture standardError(stderr); // too long for a log line
    dbPrintError(conn_);
    ORMEL_ERROR error;
    EXPECT_EQ(ORMEL_LastError(&error), 0u);
    EXPECT_EQ(error.acText, std::string(1023, 'e'));
}

TEST_F(ErrorTest, AClientThatKnowsNoErrorIsHarmless) {
    Client().Fail("get_error");
    dbPrintError(conn_);
    dbPrintError(nullptr);
    EXPECT_EQ(Client().Count("get_error"), 1);
}

TEST_F(ErrorTest, StaysOverCallsThatSucceed) {
    Print(5, "old");
    dbFreeStmt(dbCreateStmt(conn_));
    ORMEL_ERROR error;
    EXPECT_EQ(ORMEL_LastError(&error), 0u);
    EXPECT_EQ(error.uiCode, 5u);
}

TEST_F(ErrorTest, NeedsATarget) {
    EXPECT_EQ(ORMEL_LastError(nullptr), 97u);
}

TEST_F(ErrorTest, BelongsToItsThread) {
    Print(5, "of this thread");
    std::thread([this] {
        ORMEL_ERROR error;
        std::memset(&error, 'x', sizeof(error));
        const std::string before = unit::BytesOf(error);
        EXPECT_EQ(ORMEL_LastError(&error), 5u) << "a thread that met no error";
        EXPECT_EQ(unit::BytesOf(error), before);
        Print(6, "of the other");
    }).join();
    ORMEL_ERROR error;
    EXPECT_EQ(ORMEL_LastError(&error), 0u);
    EXPECT_STREQ(error.acText, "of this thread");
}

} // namespace
