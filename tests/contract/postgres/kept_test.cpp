// Who gets a kept connection to a server, and what is left on it.
#include "postgres/postgres_engine.h"
#include "support/child.h"
#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::HasSubstr;

class KeptTest : public ContractTest {
protected:
    static std::string process(Connection &db) { return db.rows("select pg_backend_pid()").at(0).at(0).value(); }
};
ENGINE_SUITE(KeptTest);

// However good the connection is that was kept for somebody else.
TEST_P(KeptTest, OthersMustLogInThemselves) {
    std::string of;
    {
        Connection db = connect();
        db.run("create role another login password 'of-another'");
        db.commit();
        of = process(db);
    }
    for (const char *password : {"wrong", "of-another", ""}) {
        Connection db;
        EXPECT_FAILS(db.connect({target().address, "postgres", password})) << password;
        EXPECT_THAT(db.error(), HasSubstr("password"));
    }
    {
        Connection db({target().address, "another", "of-another"});
        EXPECT_EQ(db.rows("select current_user"), Rows{rowOf("another")});
    }
    {
        Connection db;
        const uint32_t required = 2;
        EXPECT_OK(db, qdc_set_conn_attr(db, QDC_ATTR_SSL_MODE, &required, sizeof required));
        EXPECT_OK(db, db.connect(target()));
        EXPECT_EQ(db.rows("select ssl from pg_stat_ssl where pid = pg_backend_pid()"), Rows{rowOf("1")});
    }
    Connection db = connect();
    EXPECT_EQ(process(db), of);
    db.run("drop role another");
    db.commit();
}

// What a commit leaves of a user's session.
TEST_P(KeptTest, NothingOfASessionIsLeft) {
    struct Case {
        const char *left;
        const char *query;
        const char *found; // NULL: the query fails
    };
    {
        Connection db = connect();
        db.run("create sequence numbers");
        db.commit();
    }
    for (const Case &c : {Case{"set role pg_monitor", "select current_user", "postgres"},
                          Case{"set session authorization pg_monitor", "select session_user", "postgres"},
                          Case{"declare held cursor with hold for select 1",
                               "select count(*) from pg_cursors where name = 'held'", "0"},
                          Case{"select nextval('numbers')", "select currval('numbers')", nullptr}}) {
        SCOPED_TRACE(c.left);
        std::string of;
        {
            Connection db = connect();
            of = process(db);
            db.run(c.left);
            db.commit();
        }
        Connection db = connect();
        EXPECT_EQ(process(db), of);
        if (c.found == nullptr)
            EXPECT_FALSE(db.refusal(c.query).empty());
        else
            EXPECT_EQ(db.rows(c.query), Rows{rowOf(c.found)});
    }
}

// The server is told, and does not find the line dead.
TEST_P(KeptTest, TheEndOfTheProcessClosesIt) {
    const std::string lost = "select sessions_abandoned from pg_stat_database where datname = current_database()";
    Connection db = connect();
    const Rows before = db.rows(lost);
    db.rollback();
    const auto useAndEnd = [&] {
        Connection own = connect();
        Home::write(home().data("child"), process(own));
        return 0;
    };
    EXPECT_EQ(answerOf(startChild(useAndEnd)), 0);
    const std::string child = Home::read(home().data("child"));
    while (!db.rows("select 1 from pg_stat_activity where pid = " + child).empty())
        db.rollback();
    db.rollback();
    EXPECT_EQ(db.rows(lost), before);
}

} // namespace
