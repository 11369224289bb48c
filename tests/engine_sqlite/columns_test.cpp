#include "support.h"

namespace ormel::client::sqlite {

namespace {

using ColumnsTest = DatabaseTest;

} // namespace

TEST_F(ColumnsTest, areNamedInUpperCase) {
    create("CREATE TABLE t (id INTEGER, \"Mixed Name\" TEXT)");
    const auto columns = columnsOf(*connect(), "SELECT *, count(*), id AS other FROM t");
    ASSERT_EQ(columns.size(), 4U);
    EXPECT_EQ(columns[0].name, "ID");
    EXPECT_EQ(columns[1].name, "MIXED NAME");
    EXPECT_EQ(columns[2].name, "COUNT(*)");
    EXPECT_EQ(columns[3].name, "OTHER");
}

TEST_F(ColumnsTest, haveTheirDeclaredTypesWithoutARow) {
    create("CREATE TABLE t (id INTEGER, name VARCHAR(20), pay NUMERIC(10,2), note)");
    const auto columns = columnsOf(*connect(), "SELECT * FROM t WHERE 1<>1");
    ASSERT_EQ(columns.size(), 4U);
    EXPECT_EQ(columns[0].type, 1);
    EXPECT_EQ(columns[1].type, 9);
    EXPECT_EQ(columns[1].size, 81);
    EXPECT_EQ(columns[2].type, 10);
    EXPECT_EQ(columns[2].precision, 10);
    EXPECT_EQ(columns[2].scale, 2);
    EXPECT_EQ(columns[3].type, 13);
}

TEST_F(ColumnsTest, ofExpressionsFollowTheFirstRow) {
    const auto connection = connect();
    const auto columns = columnsOf(*connection, "SELECT 1+1, 0.5*3, 'a'||'b', x'00', NULL, count(*)");
    ASSERT_EQ(columns.size(), 6U);
    const std::vector<int> types = {2, 3, 13, 14, 13, 2};
    const std::vector<int> sizes = {8, 8, 44, 44, 44, 8};
    for (size_t i = 0; i < columns.size(); ++i) {
        EXPECT_EQ(columns[i].type, types[i]) << i;
        EXPECT_EQ(columns[i].size, sizes[i]) << i;
    }
    EXPECT_EQ(columnsOf(*connection, "SELECT 1+1 WHERE 1<>1").at(0).type, 13);
}

TEST_F(ColumnsTest, areNullableUnlessTheTableSaysOtherwise) {
    create("CREATE TABLE t (id INTEGER NOT NULL, name TEXT)");
    create("CREATE TABLE u (id INTEGER NOT NULL)");
    create("CREATE VIEW both AS SELECT u.id AS uid FROM t LEFT JOIN u ON t.id = u.id");
    const auto connection = connect();
    const auto columns = columnsOf(*connection, "SELECT id, name, id + 1 FROM T");
    EXPECT_FALSE(columns.at(0).nullable);
    EXPECT_TRUE(columns.at(1).nullable);
    EXPECT_TRUE(columns.at(2).nullable);
    for (const char *sql :
         {"SELECT u.id FROM t LEFT JOIN u ON t.id = u.id", "SELECT * FROM both",
          "SELECT id FROM t UNION SELECT name FROM t", "SELECT (SELECT id FROM t)", "SELECT id, max(name) FROM t"})
        EXPECT_TRUE(columnsOf(*connection, sql).at(0).nullable) << sql;
}

TEST_F(ColumnsTest, belongToQueriesOnly) {
    const auto connection = connect();
    EXPECT_TRUE(columnsOf(*connection, "CREATE TABLE t (id INTEGER)").empty());
    EXPECT_TRUE(columnsOf(*connection, "INSERT INTO t VALUES (1)").empty());
    EXPECT_EQ(columnsOf(*connection, "INSERT INTO t VALUES (2) RETURNING id").size(), 1U);
}

TEST_F(ColumnsTest, followTheSchema) {
    create("CREATE TABLE t (id INTEGER)");
    const auto connection = connect();
    const auto statement = connection->prepare("SELECT * FROM t");
    statement->execute({}, 1);
    EXPECT_EQ(statement->columns().size(), 1U);
    create("ALTER TABLE t ADD COLUMN name VARCHAR(5)");
    create("INSERT INTO t VALUES (1, 'one')");
    statement->execute({}, 1);
    EXPECT_EQ(statement->columns().size(), 2U);
    EXPECT_EQ(nextRow(*statement), (TextRow{"1", "one"}));
}

} // namespace ormel::client::sqlite
