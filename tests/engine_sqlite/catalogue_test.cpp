#include "support.h"

namespace ormel::client::sqlite {

namespace {

using CatalogueTest = DatabaseTest;

constexpr char kProbe[] = "SELECT COLUMN_NAME,DATA_TYPE,DATA_LENGTH,COLUMN_ID  FROM USER_TAB_COLUMNS WHERE TABLE_NAME "
                          "= upper('people')";

} // namespace

TEST_F(CatalogueTest, listsColumnsInTheirOrder) {
    create("CREATE TABLE People (id INTEGER PRIMARY KEY, Name varchar ( 20 ), pay NUMERIC(10,2), note, "
           "twice INTEGER GENERATED ALWAYS AS (id * 2))");
    const std::vector<TextRow> expected = {{"ID", "INTEGER", "4", "1"},
                                           {"NAME", "VARCHAR", "81", "2"},
                                           {"PAY", "NUMERIC", "14", "3"},
                                           {"NOTE", "", "44", "4"},
                                           {"TWICE", "INTEGER", "4", "5"}};
    EXPECT_EQ(query(*connect(), kProbe), expected);
}

TEST_F(CatalogueTest, namesTablesInUpperCaseAndKnowsViews) {
    create("CREATE TABLE people (id INTEGER)");
    create("CREATE VIEW adults AS SELECT id AS who FROM people");
    const std::vector<TextRow> expected = {{"ADULTS", "WHO"}, {"PEOPLE", "ID"}};
    EXPECT_EQ(query(*connect(), "SELECT table_name, column_name FROM user_tab_columns ORDER BY 1"), expected);
}

TEST_F(CatalogueTest, aViewOverNothingIsLeftOut) {
    create("CREATE TABLE people (id INTEGER)");
    create("CREATE TABLE others (id INTEGER)");
    create("CREATE VIEW adults AS SELECT id FROM others");
    create("DROP TABLE others");
    EXPECT_EQ(query(*connect(), "SELECT table_name FROM user_tab_columns"), (std::vector<TextRow>{{"PEOPLE"}}));
}

TEST_F(CatalogueTest, isDescribedWithoutARow) {
    const auto connection = connect();
    const std::vector<Column> columns = columnsOf(*connection, "SELECT * FROM USER_TAB_COLUMNS WHERE 1<>1");
    ASSERT_EQ(columns.size(), 5U);
    EXPECT_EQ(columns[0].name, "TABLE_NAME");
    EXPECT_EQ(columns[0].type, 9);
    EXPECT_EQ(columns[0].size, 513);
    EXPECT_EQ(columns[4].name, "COLUMN_ID");
    EXPECT_EQ(columns[4].type, 1);
}

TEST_F(CatalogueTest, leavesNothingInTheDatabase) {
    const auto connection = connect();
    EXPECT_TRUE(query(*connection, kProbe).empty());
    connection->commit();
    EXPECT_TRUE(query(*connection, "SELECT * FROM main.sqlite_schema").empty());
    EXPECT_TRUE(query(*connection, "SELECT * FROM temp.sqlite_schema").empty());
}

TEST_F(CatalogueTest, answersInsideATransaction) {
    const auto connection = connect();
    run(*connection, "CREATE TABLE people (id INTEGER)");
    EXPECT_EQ(query(*connection, kProbe).size(), 1U);
    connection->rollback();
    EXPECT_TRUE(query(*connection, kProbe).empty());
}

} // namespace ormel::client::sqlite
