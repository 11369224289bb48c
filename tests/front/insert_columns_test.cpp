#include "front/insert_columns.h"

#include <gtest/gtest.h>

namespace {

using ormel::client::insertedColumn;

TEST(InsertColumnsTest, ColumnsInTheirOrder) {
    const char *sql = "INSERT INTO t (a, b, c) values (:1, :2, :3)";
    EXPECT_EQ(insertedColumn(sql, 0), "a");
    EXPECT_EQ(insertedColumn(sql, 1), "b");
    EXPECT_EQ(insertedColumn(sql, 2), "c");
    EXPECT_EQ(insertedColumn(sql, 3), "");
}

TEST(InsertColumnsTest, PlaceholdersMayStandInAnyOrder) {
    const char *sql = "insert into t(a,b)VALUES( :2 , :1 )\n";
    EXPECT_EQ(insertedColumn(sql, 0), "b");
    EXPECT_EQ(insertedColumn(sql, 1), "a");
}

TEST(InsertColumnsTest, ManyColumns) {
    const char *sql = "insert into t (a, b) values (:11, :1)";
    EXPECT_EQ(insertedColumn(sql, 0), "b");
    EXPECT_EQ(insertedColumn(sql, 10), "a");
    EXPECT_EQ(insertedColumn(sql, 1), "");
}

TEST(InsertColumnsTest, OtherTextsNameNone) {
    for (const char *sql :
         {"", "(", "()", "insert", "insert into t values (:1)", "insert into t (a) select (:1)",
          "insert into t (a, b) values (:1)", "insert into t (a) values (:1) on conflict (a) do nothing",
          "insert into t (a) values (upper(:1))", "update t set a = (:1), b = values (:1)", "values (a) values (:1)",
          "insert into t (a values (:1)"})
        EXPECT_EQ(insertedColumn(sql, 0), "") << sql;
}

} // namespace
