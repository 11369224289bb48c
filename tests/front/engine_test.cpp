// What the front asks of an engine, and what it makes of the answers. The engine does what the statements say: see
// scripted_engine.cpp.
#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/client.h"
#include "support/home.h"

namespace {

using namespace contract;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const Target kTarget = {"host:5432", "user", "password"};

class EngineTest : public testing::Test {
protected:
    EngineTest() { configure(""); }
    ~EngineTest() override {
        configure("");
        log();
    }

    void configure(const std::string &lines) const { home_.writeConfig("db.driver=scripted\n" + lines); }
    // What the engine was asked since it was last asked this.
    static std::string log() {
        Connection db(kTarget);
        return log(db);
    }
    static std::string log(Connection &db) { return db.rows("log").at(0).at(0).value(); }

private:
    Home home_;
};

TEST_F(EngineTest, GetsTheAddressTheUserAndTheConfiguration) {
    struct Case {
        const char *address;
        const char *expected;
    };
    for (const Case &c : {Case{"host:5432", "host|5432"}, Case{"::1:5432", "::1|5432"}, Case{":", "|"},
                          Case{"host:", "host|"}, Case{"host", "host|"}, Case{"", "|"}}) {
        configure("extra=value\n");
        log();
        Connection db;
        const uint32_t mode = 3;
        EXPECT_EQ(qdc_set_conn_attr(db, QDC_ATTR_SSL_MODE, &mode, 4), 0U);
        EXPECT_EQ(db.connect({c.address, "me", "secret"}), 0U);
        EXPECT_THAT(log(db), HasSubstr(std::string("connect ") + c.expected + "|me|secret|3|value;"));
    }
}

TEST_F(EngineTest, WhatItThrowsBecomesAnError) {
    struct Case {
        const char *what;
        uint32_t code; // 0: the front's own
        const char *words;
    };
    for (const Case &c : {Case{"error", 77, "words of the engine"}, Case{"memory", 0, "memory"},
                          Case{"standard", 0, "failed"}, Case{"number", 0, "failed"}}) {
        SCOPED_TRACE(c.what);
        const auto expectError = [&](const Connection &db) {
            EXPECT_NE(db.errorCode(), 0U);
            if (c.code != 0) {
                EXPECT_EQ(db.errorCode(), c.code);
            }
            EXPECT_THAT(db.error(), HasSubstr(c.words));
        };
        configure("");
        Connection db(kTarget);
        Statement statement(db);
        EXPECT_NE(qdc_prepare(statement, (std::string("throw ") + c.what).c_str()), 0U);
        expectError(db);
        statement.prepare(std::string("later throw ") + c.what);
        EXPECT_NE(qdc_execute(statement), 0U);
        expectError(db);
        statement.rows(2);
        EXPECT_NE(qdc_execute(statement), 0U);
        configure(std::string("throw=") + c.what + "\n");
        Connection refused;
        EXPECT_NE(refused.connect(kTarget), 0U);
        expectError(refused);
    }
}

TEST_F(EngineTest, IsAskedForNoMoreRowsThanAreWanted) {
    Connection db(kTarget);
    Statement query(db, "rows 1000000");
    query.readAhead(3);
    log(db);
    EXPECT_EQ(query.execute(), 3U);
    EXPECT_EQ(log(db), "close;execute 0 3;fetch;fetch;fetch;");
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(query.fetch());
    EXPECT_EQ(log(db), "fetch;fetch;");
}

TEST_F(EngineTest, IsNotAskedForRowsBehindTheEnd) {
    Connection db(kTarget);
    Statement query(db, "rows 2");
    query.readAhead(10);
    log(db);
    EXPECT_EQ(query.execute(), 2U);
    EXPECT_EQ(query.rest().size(), 2U);
    EXPECT_FALSE(query.fetch());
    EXPECT_FALSE(query.fetch());
    EXPECT_EQ(log(db), "close;execute 0 10;fetch;fetch;fetch;");
}

TEST_F(EngineTest, IsAskedForAtLeastOneRowAhead) {
    Connection db(kTarget);
    Statement query(db, "rows 100");
    query.readAhead(0);
    EXPECT_GE(query.execute(), 1U);
    EXPECT_EQ(query.rest().size(), 100U);
}

TEST_F(EngineTest, NothingOfABrokenRowTurnsUpInAnother) {
    Connection db(kTarget);
    Statement query(db, "rows 5 broken 2");
    query.readAhead(1);
    query.execute();
    EXPECT_TRUE(query.fetch());
    EXPECT_TRUE(query.fetch());
    uint32_t rows = 77;
    EXPECT_NE(qdc_fetch(query, &rows), 0U);
    EXPECT_EQ(rows, 0U);
    EXPECT_EQ(db.error(), "a broken row");
    // Whether it goes on is the front's decision, but what it gives is true.
    while (qdc_fetch(query, &rows) == 0 && rows == 1) {
        const Row row = query.row();
        EXPECT_EQ(row.at(1), std::string(20000, static_cast<char>('a' + std::stoi(row.at(0).value()))));
    }
}

TEST_F(EngineTest, ABrokenRowReadAheadFailsTheExecution) {
    Connection db(kTarget);
    Statement query(db, "rows 5 broken 2");
    query.readAhead(5);
    EXPECT_NE(qdc_execute(query), 0U);
    EXPECT_EQ(qdc_get_affected_rows(query), 0U);
    uint32_t rows = 77;
    EXPECT_NE(qdc_fetch(query, &rows), 0U);
    log(db);
    EXPECT_NE(qdc_execute(query), 0U);
    EXPECT_THAT(log(db), testing::EndsWith("close;"));
}

TEST_F(EngineTest, OpenStatementsAreClosedBeforeTheTransactionEnds) {
    Connection db(kTarget);
    Statement query(db, "rows 100");
    query.readAhead(1);
    for (const bool commits : {true, false}) {
        query.execute();
        EXPECT_TRUE(query.fetch());
        log(db);
        commits ? db.commit() : db.rollback();
        EXPECT_EQ(log(db), commits ? "close;commit;" : "close;rollback;");
        uint32_t rows = 0;
        EXPECT_NE(qdc_fetch(query, &rows), 0U);
    }
}

TEST_F(EngineTest, ARefusedEndIsReported) {
    for (const char *how : {"commit", "rollback"}) {
        Connection db(kTarget);
        Statement refuse(db, std::string("refuse ") + how);
        EXPECT_NE(std::string(how) == "commit" ? qdc_commit(db) : qdc_rollback(db), 0U);
        EXPECT_EQ(db.error(), std::string(how) + " refused");
    }
}

TEST_F(EngineTest, StatementsEndBeforeTheirConnection) {
    void *db = nullptr;
    void *statement = nullptr;
    ASSERT_EQ(qdc_alloc_conn(&db), 0U);
    ASSERT_EQ(qdc_connect(db, "h:1", "u", "p"), 0U);
    ASSERT_EQ(qdc_alloc_stmt(db, &statement), 0U);
    ASSERT_EQ(qdc_prepare(statement, "rows 5"), 0U);
    ASSERT_EQ(qdc_execute(statement), 0U);
    log();
    EXPECT_EQ(qdc_disconnect(db), 0U);
    EXPECT_THAT(log(), HasSubstr("~statement;~connection;"));
    EXPECT_EQ(qdc_free_stmt(statement), 0U);
    EXPECT_EQ(qdc_free_conn(db), 0U);
}

// The engine hears nothing of what a child does to connections that it has from its parent.
TEST_F(EngineTest, IsNotAskedForWhatAChildInherited) {
    void *db = nullptr;
    void *statement = nullptr;
    ASSERT_EQ(qdc_alloc_conn(&db), 0U);
    ASSERT_EQ(qdc_connect(db, "h:1", "u", "p"), 0U);
    ASSERT_EQ(qdc_alloc_stmt(db, &statement), 0U);
    Connection other(kTarget);
    const Statement query(other, "rows 5");
    log(other);
    const pid_t child = fork();
    if (child == 0) {
        const bool refused = qdc_prepare(statement, "rows 5") != 0 && qdc_execute(query) != 0;
        const bool ended = qdc_free_stmt(query) == 0 && qdc_disconnect(other) == 0 && qdc_free_conn(db) == 0;
        _exit(refused && ended && log() == "connect host|5432|user|password|0|none;" ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(qdc_free_conn(db), 0U);
}

TEST_F(EngineTest, SetsGoDownInOneCall) {
    Connection db(kTarget);
    Statement insert(db, "change 1 :1");
    std::array<int32_t, 3> values{};
    std::array<uint16_t, 3> lengths{4, 4, 4};
    insert.bind(0, kInteger, values.data(), 4, lengths.data());
    log(db);
    struct Case {
        uint32_t rows;
        uint32_t affected;
        const char *log;
    };
    for (const Case &c : {Case{3, 3, "batch 3x1;"}, Case{1, 1, "batch 1x1;"}, Case{0, 0, ""}}) {
        SCOPED_TRACE(c.rows);
        insert.rows(c.rows);
        EXPECT_EQ(insert.execute(), c.affected);
        const std::string asked = log(db);
        EXPECT_THAT(asked, HasSubstr(c.log));
        EXPECT_THAT(asked, Not(HasSubstr("execute")));
    }
    // Of values without lengths there is but one row.
    insert.bind(0, kInteger, values.data(), 4);
    insert.rows(1);
    EXPECT_EQ(insert.execute(), 1U);
    EXPECT_THAT(log(db), HasSubstr("execute 1 "));
}

TEST_F(EngineTest, CountsThatDoNotFitAreTheLargest) {
    Connection db(kTarget);
    EXPECT_EQ(db.run("change 4294967295"), 0xFFFFFFFFU);
    EXPECT_EQ(db.run("change 4294967296"), 0xFFFFFFFFU);
    EXPECT_EQ(db.run("change 0"), 0U);
}

TEST_F(EngineTest, BeginningIsTheAttributesZero) {
    Connection db(kTarget);
    log(db);
    db.begin();
    EXPECT_EQ(log(db), "begin;");
    const uint32_t one = 1;
    EXPECT_NE(qdc_set_conn_attr(db, QDC_ATTR_TRANS, &one, 4), 0U);
}

TEST_F(EngineTest, ASharedObjectThatIsNoEngineIsNamed) {
    configure("db.driver=hollow\n");
    Connection db;
    EXPECT_NE(db.connect(kTarget), 0U);
    EXPECT_THAT(db.error(), AllOf(HasSubstr("hollow.so"), HasSubstr("engine")));
}

} // namespace
