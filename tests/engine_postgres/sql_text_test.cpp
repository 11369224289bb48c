#include "postgres/sql_text.h"

#include <gmock/gmock.h>

namespace ormel::client::postgres {

TEST(PostgresText, knowsTheRoles) {
    const std::pair<Role, std::vector<const char *>> roles[] = {
        {Role::query, {"select 1", "(select 1)", "VALUES (1)", "table t", "with a as (select 1) select * from a"}},
        {Role::control,
         {"begin", "START TRANSACTION", "commit;", "end", "ROLLBACK", "abort", "savepoint a", "release a"}},
        {Role::apart, {"vacuum", "VACUUM t"}},
        {Role::other, {"insert into t values (1)", "create table t (a int)", "explain select 1", "selects", "", "*"}}};
    for (const auto &[role, texts] : roles)
        for (const char *text : texts)
            EXPECT_EQ(roleOf(text), role) << text;
}

TEST(PostgresText, aStatementBeginsBehindBlanksAndComments) {
    const std::pair<const char *, const char *> texts[] = {
        {"select 1", "select 1"},
        {" \t\r\n\f;; select 1", "select 1"},
        {"-- why\nselect 1", "select 1"},
        {"/* a /* nested */ comment */ -- b\n ; (select 1)", "(select 1)"},
        {"/* a /* begin */ select 1", ""},
        {"-- nothing", ""},
        {"", ""},
    };
    for (const auto &[text, statement] : texts)
        EXPECT_EQ(statementIn(text), statement) << text;
}

TEST(PostgresText, whatMayChangeRowsIsNoCursors) {
    for (const char *text : {"select * into b from a", "(select * into b from a)", "select 1/**/into b",
                             "with gone as (delete from a returning *) select * from gone",
                             "with a as (update b set c = 1 returning *) select * from a for update",
                             "(with gone as (delete from a returning *) select * from gone)",
                             "with a as (insert into b values (1) returning *) select * from a"})
        EXPECT_EQ(roleOf(text), Role::other) << text;
    for (const char *text :
         {"select updated, into_x from inserts", "select my_update from t", "select * from t where v <> 'update'",
          "select \"delete\" from t", "select 1 -- insert\n", "select 1 /* merge */", "select $$ into $$",
          "select E'\\' into '", "select * from a for update", "select * from a FOR /* why */ UPDATE nowait",
          "select * from a for no key update of a skip locked", "select * from a for share",
          "select * from a for key share", "(select * from a) for update"})
        EXPECT_EQ(roleOf(text), Role::query) << text;
}

TEST(PostgresText, rowsAreReadAndWrittenWithoutATrace) {
    for (const char *text :
         {"select * from t where a = $1", "select count(*), max ( a ), upper(b) from t", "delete from t",
          "insert into t (a, b) values ($1, $2)", "insert into t(a) values ($1)", "insert into \"T\" (a) values (1)",
          "update t set a = 1 where b in (1, 2) and (c or (d))", "insert into app.t (a) values (1)",
          "insert into app . \"T\" (a) values (1)", "insert into a.b.t(c) values (1)", "select 'set_config(1)' from t",
          "select E'it\\'s f(' from t", "select $$f(1)$$, $a$ $$f(1) $a$ from t", "select 1 -- f(1)\n from t",
          "select 1 /* f(1) /* g(2) */ h(3) */ from t"})
        EXPECT_FALSE(mayAlterSession(text)) << text;
}

TEST(PostgresText, whateverCallsAFunctionMayLeaveATrace) {
    for (const char *text : {"set work_mem = '1MB'",
                             "listen x",
                             "create temporary table t (a int)",
                             "prepare p as select 1",
                             "select set_config('a', 'b', false)",
                             "select pg_catalog.set_config('a', 'b', false)",
                             "select pg_advisory_lock (1)",
                             "select pg_advisory_lock\n(1)",
                             "select pg_advisory_lock/**/(1)",
                             "select pg_advisory_lock -- why\n (1)",
                             "select \"set_config\"('a', 'b', false)",
                             "select app.max(1)",
                             "select app . max (1)",
                             "select into.t(1)",
                             "insert into app.t (a) select app.max(1)",
                             "insert into t values (nextval('s'))",
                             "insert into t (a) select f(1)",
                             "update t set a = f(b)",
                             "select E'\\'', f('a'), ''",
                             "select E'a''\\'', f('a'), ''",
                             "select $$'$$, f('a')",
                             "select $a$ ' $a$, f('a')",
                             "select /* /* */ ' */ f('a')",
                             "with a as (select 1) select * from a",
                             ""})
        EXPECT_TRUE(mayAlterSession(text)) << text;
}

TEST(PostgresText, someTracesCannotBeCleaned) {
    for (const char *text :
         {"load 'auto_explain'", "select setseed(0.5)", "select public.\"dblink_connect\"('mine', 'port=1')",
          "select pg_replication_origin_session_setup('a')", "do $$ begin execute 'LOAD ''a'''; end $$"}) {
        EXPECT_TRUE(mayAlterSession(text)) << text;
        EXPECT_TRUE(leavesForGood(text)) << text;
    }
    for (const char *text : {"set work_mem = '1MB'", "select f(loaded) from t", "select pg_advisory_lock(1)"})
        EXPECT_FALSE(leavesForGood(text)) << text;
}

TEST(PostgresText, theViewIsReplacedAsAWordOfItsOwn) {
    for (const char *text : {"select * from USER_TAB_COLUMNS", "select * from user_tab_columns where 1<>1"}) {
        const std::string replaced = withCatalogue(text);
        EXPECT_THAT(replaced, testing::StartsWith("select * from (SELECT")) << text;
        EXPECT_THAT(replaced, testing::HasSubstr("AS user_tab_columns")) << text;
    }
    const std::string twice = withCatalogue("select 'user_tab_columns' from User_Tab_Columns where 1<>1");
    EXPECT_THAT(twice, testing::StartsWith("select 'user_tab_columns' from (SELECT"));
    EXPECT_THAT(twice, testing::EndsWith(" where 1<>1"));
}

TEST(PostgresText, theViewStaysElsewhere) {
    for (const char *text : {"select 1",
                             "",
                             "select 'USER_TAB_COLUMNS'",
                             "select 'it''s USER_TAB_COLUMNS'",
                             "select \"USER_TAB_COLUMNS\"",
                             "select 1 -- USER_TAB_COLUMNS",
                             "select 1 /* USER_TAB_COLUMNS */",
                             "select * from MY_USER_TAB_COLUMNS",
                             "select * from USER_TAB_COLUMNS2",
                             "select * from user_tab_columns\xC3\xA9",
                             "select $$USER_TAB_COLUMNS$$",
                             "select $a$ USER_TAB_COLUMNS $a$",
                             "select E'\\' USER_TAB_COLUMNS'",
                             "select a$USER_TAB_COLUMNS",
                             "select 1 /* /* */ USER_TAB_COLUMNS */",
                             "select 'USER_TAB_COLUMNS",
                             "select E'USER_TAB_COLUMNS\\",
                             "select $$USER_TAB_COLUMNS",
                             "/* USER_TAB_COLUMNS",
                             "select \"USER_TAB_COLUMNS"})
        EXPECT_EQ(withCatalogue(text), text);
}

} // namespace ormel::client::postgres
