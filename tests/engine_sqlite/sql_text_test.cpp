#include "sqlite/sql_text.h"

#include <gtest/gtest.h>

namespace ormel::client::sqlite {

TEST(SqlText, skipsBlanksCommentsAndSemicolons) {
    EXPECT_EQ(skipBlanks("select 1"), "select 1");
    EXPECT_EQ(skipBlanks(" \t\r\n\f;; select 1"), "select 1");
    EXPECT_EQ(skipBlanks("-- why\nselect 1"), "select 1");
    EXPECT_EQ(skipBlanks("/* a */ /**/ -- b\n ; x"), "x");
    EXPECT_EQ(skipBlanks("/* not /* nested */ x */"), "x */");
    EXPECT_EQ(skipBlanks("- 1"), "- 1");
    EXPECT_EQ(skipBlanks("/ 1"), "/ 1");
}

TEST(SqlText, theEndOfTheTextEndsAComment) {
    EXPECT_EQ(skipBlanks("-- no line end"), "");
    EXPECT_EQ(skipBlanks("/* never closed"), "");
    EXPECT_EQ(skipBlanks("/*/"), "");
    EXPECT_EQ(skipBlanks(""), "");
    EXPECT_EQ(skipBlanks(" ; "), "");
}

TEST(SqlText, aByteOrderMarkIsBlank) {
    EXPECT_EQ(statementIn("\xEF\xBB\xBF select 1"), "select 1");
    EXPECT_EQ(statementIn(" /* */\xEF\xBB\xBF\xEF\xBB\xBF;select 1"), "select 1");
    EXPECT_EQ(statementIn("\xEF\xBB\xBF"), "");
    EXPECT_EQ(statementIn("\xEF\xBB select 1"), "\xEF\xBB select 1");
    EXPECT_EQ(statementIn("-- no statement"), "");
}

TEST(SqlText, findsTheFirstWord) {
    EXPECT_EQ(firstWord("select*from t"), "SELECT");
    EXPECT_EQ(firstWord("COMMIT"), "COMMIT");
    EXPECT_EQ(firstWord("end;"), "END");
    EXPECT_EQ(firstWord("values(1)"), "VALUES");
    EXPECT_EQ(firstWord("(select 1)"), "");
    EXPECT_EQ(firstWord(""), "");
}

TEST(SqlText, knowsTheRoles) {
    for (const char *word : {"INSERT", "REPLACE", "UPDATE", "DELETE", "WITH"})
        EXPECT_EQ(roleOf(word), Role::change) << word;
    for (const char *word : {"PRAGMA", "VACUUM"})
        EXPECT_EQ(roleOf(word), Role::apart) << word;
    for (const char *word : {"SELECT", "CREATE", "DROP", "EXPLAIN", "VALUES", "INSERTS", ""})
        EXPECT_EQ(roleOf(word), Role::other) << word;
}

TEST(SqlText, findsWholeWordsInAnyCase) {
    EXPECT_TRUE(hasWord("select * from Orders", "ORDERS"));
    EXPECT_TRUE(hasWord("orders", "orders"));
    EXPECT_TRUE(hasWord("a,orders;", "Orders"));
    EXPECT_TRUE(hasWord("my_orders, orders", "orders"));
    EXPECT_FALSE(hasWord("select * from my_orders", "orders"));
    EXPECT_FALSE(hasWord("select * from orders2", "orders"));
    EXPECT_FALSE(hasWord("select * from orders\xC3\xA9", "orders"));
    EXPECT_FALSE(hasWord("", "orders"));
}

TEST(SqlText, raisesAsciiLettersOnly) {
    EXPECT_EQ(upperCase("straße_1 z"), "STRAßE_1 Z");
}

} // namespace ormel::client::sqlite
