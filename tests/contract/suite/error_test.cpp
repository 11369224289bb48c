// The last error of a connection.
#include <algorithm>
#include <cctype>

#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::HasSubstr;
using testing::Not;

constexpr char kPassword[] = "s3cret-Passw0rd";

class ErrorTest : public ContractTest {};
CONTRACT_SUITE(ErrorTest);

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

TEST_P(ErrorTest, AFreshConnectionHasNone) {
    Connection db;
    EXPECT_EQ(db.errorCode(), 0U);
    EXPECT_EQ(db.error(), "");
}

TEST_P(ErrorTest, TheDatabasesWordsNameWhatFailed) {
    Connection db = connect();
    db.run("create table strict (x integer not null)");
    makeTable(db, 1);
    struct Case {
        const char *sql;
        const char *word;
    };
    for (const Case &c :
         {Case{"select * from nosuchtable", "nosuchtable"}, Case{"select nosuchcolumn from t", "nosuchcolumn"},
          Case{"selekt 1", "selekt"}, Case{"drop table nosuchtable", "nosuchtable"},
          Case{"insert into t (id) values (1)", "unique"}, Case{"insert into strict values (null)", "null"}}) {
        SCOPED_TRACE(c.sql);
        EXPECT_THAT(lower(db.refusal(c.sql)), HasSubstr(c.word));
        EXPECT_NE(db.errorCode(), 0U);
        db.rollback();
    }
}

TEST_P(ErrorTest, TheSqlstateStandsFirst) {
    NEEDS(sqlState);
    Connection db = connect();
    EXPECT_THAT(db.refusal("select * from nosuchtable"), testing::StartsWith("42P01"));
}

TEST_P(ErrorTest, AnErrorIsKeptUntilTheNext) {
    Connection db = connect();
    makeTable(db, 1);
    const std::string first = db.refusal("select * from nosuch1");
    const uint32_t code = db.errorCode();
    db.rollback();
    EXPECT_EQ(db.rows("select id from t").size(), 1U);
    fill(db, 2, 2);
    db.commit();
    EXPECT_EQ(db.error(), first);
    EXPECT_EQ(db.errorCode(), code);
    const std::string second = db.refusal("select * from nosuch2");
    EXPECT_THAT(second, HasSubstr("nosuch2"));
    EXPECT_THAT(second, Not(HasSubstr("nosuch1")));
}

TEST_P(ErrorTest, DifferentFailuresHaveDifferentCodes) {
    Connection db = connect();
    makeTable(db, 1);
    db.refusal("select * from nosuch");
    const uint32_t missing = db.errorCode();
    db.rollback();
    db.refusal("insert into t (id) values (1)");
    EXPECT_NE(db.errorCode(), missing);
}

TEST_P(ErrorTest, EveryConnectionHasItsOwn) {
    Connection db = connect();
    Connection other = connect();
    db.refusal("select * from nosuch");
    EXPECT_EQ(other.errorCode(), 0U);
    EXPECT_EQ(other.error(), "");
    EXPECT_THAT(db.error(), HasSubstr("nosuch"));
}

TEST_P(ErrorTest, TheErrorOutlivesItsStatementAndTheDisconnection) {
    Connection db = connect();
    {
        Statement statement(db);
        EXPECT_FAILS(qdc_prepare(statement, "select * from nosuch") != 0 ? 1 : qdc_execute(statement));
    }
    EXPECT_THAT(db.error(), HasSubstr("nosuch"));
    EXPECT_OK(db, qdc_disconnect(db));
    EXPECT_THAT(db.error(), HasSubstr("nosuch"));
}

TEST_P(ErrorTest, NoMessageHoldsThePassword) {
    Target strange = target();
    strange.password = kPassword;
    for (const char *lines : {"", "db.driver=nosuchengine\n", "db.dbname=/nosuch/folder/x.db\n"}) {
        SCOPED_TRACE(lines);
        configure(lines);
        Connection db;
        if (db.connect(strange) == 0)
            db.refusal("select * from nosuch");
        EXPECT_NE(db.error(), "");
        EXPECT_THAT(db.error(), Not(HasSubstr(kPassword)));
    }
}

// Calls out of order are refused, and say what is missing.
TEST_P(ErrorTest, AConnectionThatIsNotOpenRefusesWork) {
    Connection db;
    void *statement = nullptr;
    EXPECT_FAILS(qdc_alloc_stmt(db, &statement));
    EXPECT_NE(db.error(), "");
    EXPECT_FAILS(qdc_commit(db));
    EXPECT_FAILS(qdc_rollback(db));
    const uint32_t zero = 0;
    EXPECT_FAILS(qdc_set_conn_attr(db, QDC_ATTR_TRANS, &zero, 4));
}

TEST_P(ErrorTest, AnOpenConnectionIsNotOpenedAgain) {
    Connection db = connect();
    makeTable(db, 1);
    fill(db, 2, 2);
    EXPECT_FAILS(db.connect(target()));
    EXPECT_NE(db.error(), "");
    EXPECT_EQ(count(db), 2);
}

TEST_P(ErrorTest, AClosedConnectionIsOpenedAgain) {
    Connection db = connect();
    makeTable(db, 1);
    EXPECT_OK(db, qdc_disconnect(db));
    void *statement = nullptr;
    EXPECT_FAILS(qdc_alloc_stmt(db, &statement));
    EXPECT_OK(db, db.connect(target()));
    EXPECT_EQ(count(db), 1);
}

TEST_P(ErrorTest, StatementsOfAClosedConnectionRefuseWork) {
    Connection db = connect();
    makeTable(db, 100);
    Statement query(db, "select id from t");
    query.readAhead(1);
    query.execute();
    EXPECT_TRUE(query.fetch());
    EXPECT_OK(db, qdc_disconnect(db));
    uint32_t rows = 0;
    void *data = nullptr;
    uint32_t size = 0;
    uint32_t isNull = 0;
    EXPECT_FAILS(qdc_fetch(query, &rows));
    EXPECT_FAILS(qdc_get_column_by_id(query, 0, &data, &size, &isNull));
    EXPECT_FAILS(qdc_execute(query));
    EXPECT_FAILS(qdc_prepare(query, "select 1"));
}

TEST_P(ErrorTest, AStatementThatIsNotPreparedRefusesWork) {
    Connection db = connect();
    Statement statement(db);
    int32_t value = 0;
    uint32_t rows = 0;
    EXPECT_FAILS(qdc_execute(statement));
    EXPECT_FAILS(qdc_fetch(statement, &rows));
    EXPECT_FAILS(qdc_bind_by_pos(statement, 0, kInteger, &value, 4, nullptr));
    EXPECT_EQ(qdc_get_affected_rows(statement), 0U);
    // A text that cannot be prepared does not leave the one before it.
    makeTable(db, 1);
    statement.prepare("select id from t");
    if (qdc_prepare(statement, "select * from nosuch") != 0) {
        EXPECT_FAILS(qdc_execute(statement));
    }
}

TEST_P(ErrorTest, EmptyTextsAreNoStatements) {
    Connection db = connect();
    for (const char *sql : {"", " ", ";", "-- nothing"}) {
        SCOPED_TRACE(sql);
        EXPECT_FALSE(db.refusal(sql).empty());
        db.rollback();
    }
}

// What would be left out silently is refused.
TEST_P(ErrorTest, TwoStatementsInOneTextAreRefused) {
    Connection db = connect();
    makeTable(db, 1);
    EXPECT_FALSE(db.refusal("insert into t (id) values (2); insert into t (id) values (3)").empty());
    db.rollback();
    EXPECT_EQ(count(db), 1);
    EXPECT_EQ(db.run("insert into t (id) values (2);"), 1U);
}

TEST_P(ErrorTest, UnknownAttributesAreRefused) {
    Connection db = connect();
    Statement statement(db);
    const uint32_t value = 1;
    EXPECT_FAILS(qdc_set_conn_attr(db, 9999, &value, 4));
    EXPECT_FAILS(qdc_set_stmt_attr(statement, 9999, &value, 4));
    EXPECT_THAT(db.error(), HasSubstr("9999"));
}

TEST_P(ErrorTest, SslModesAreZeroToFour) {
    Connection db;
    for (uint32_t mode = 0; mode <= 4; ++mode)
        EXPECT_OK(db, qdc_set_conn_attr(db, QDC_ATTR_SSL_MODE, &mode, 4));
    const uint32_t unknown = 5;
    EXPECT_FAILS(qdc_set_conn_attr(db, QDC_ATTR_SSL_MODE, &unknown, 4));
}

} // namespace
