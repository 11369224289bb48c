// What is read by a cursor, and what is not.
#include "postgres/postgres_engine.h"
#include "support/contract_test.h"

namespace {

using namespace contract;

class CursorTest : public ContractTest {
protected:
    static bool isOpen(Connection &db) {
        return db.rows("select name from pg_cursors where name like 'ormel%' and statement not like '%pg_cursors%'")
                   .size() == 1;
    }
    static bool isLocked(Connection &other, int id) {
        const std::string words = other.refusal("update t set v = v where id = " + std::to_string(id));
        other.rollback();
        return words.starts_with("55P03: ");
    }
};
ENGINE_SUITE(CursorTest);

TEST_P(CursorTest, WordsInQuotesAndLocksKeepNoResultInMemory) {
    Connection db = connect();
    makeTable(db, 5);
    for (const char *sql : {"select id from t where v <> 'update'", "select id as \"into\" from t -- delete",
                            "select id from t for update", "select id from t for no key update nowait"}) {
        SCOPED_TRACE(sql);
        Statement query(db, sql);
        query.readAhead(2);
        query.execute();
        EXPECT_TRUE(isOpen(db));
        EXPECT_EQ(query.rest().size(), 5U);
    }
}

TEST_P(CursorTest, WhatChangesRowsHasDoneSoBeforeTheyAreRead) {
    Connection db = connect();
    makeTable(db, 5);
    Statement gone(db, "with gone as (delete from t returning id) select id from gone");
    gone.readAhead(2);
    gone.execute();
    EXPECT_FALSE(isOpen(db));
    EXPECT_EQ(count(db), 0);
    EXPECT_EQ(gone.rest().size(), 5U);
}

TEST_P(CursorTest, RowsAreLockedAsTheyAreRead) {
    configure("client.busy_timeout_ms=100\n");
    Connection db = connect();
    makeTable(db, 10);
    Connection other = connect();
    Statement query(db, "select id from t order by id for update");
    query.readAhead(2);
    query.execute();
    EXPECT_TRUE(isLocked(other, 2));
    EXPECT_EQ(other.run("update t set v = v where id = 10"), 1U);
    other.rollback();
    EXPECT_EQ(query.rest().size(), 10U);
    EXPECT_TRUE(isLocked(other, 10));
    db.rollback();
    EXPECT_EQ(other.run("update t set v = v where id = 10"), 1U);
}

} // namespace
