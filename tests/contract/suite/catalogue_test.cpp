// The view USER_TAB_COLUMNS.
#include <algorithm>
#include <cctype>

#include "support/contract_test.h"

namespace {

using namespace contract;

class CatalogueTest : public ContractTest {
protected:
    // As the library asks, blanks and all.
    static Rows columnsOf(Connection &db, const std::string &table) {
        Rows rows = db.rows("SELECT COLUMN_NAME,DATA_TYPE,DATA_LENGTH,COLUMN_ID  FROM USER_TAB_COLUMNS "
                            "WHERE TABLE_NAME = upper('" +
                            table + "')");
        std::sort(rows.begin(), rows.end(),
                  [](const Row &a, const Row &b) { return std::stoi(a.at(3).value()) < std::stoi(b.at(3).value()); });
        return rows;
    }
    static std::string upper(std::string text) {
        std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
        return text;
    }
};
CONTRACT_SUITE(CatalogueTest);

TEST_P(CatalogueTest, ColumnsOfATableInTheirOrder) {
    Connection db = connect();
    db.run("create table Things (zeta integer, Alpha varchar(20), mid numeric(10,2))");
    const Rows rows = columnsOf(db, "things");
    ASSERT_EQ(rows.size(), 3U);
    const char *expected[] = {"ZETA", "ALPHA", "MID"};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(upper(rows[i].at(0).value()), expected[i]);
        EXPECT_FALSE(rows[i].at(1).value().empty());
        EXPECT_GT(std::stoi(rows[i].at(2).value()), 0);
        EXPECT_EQ(std::stoi(rows[i].at(3).value()), std::stoi(rows[0].at(3).value()) + static_cast<int>(i));
    }
    EXPECT_NE(upper(rows[0].at(1).value()).find("INT"), std::string::npos);
    EXPECT_NE(upper(rows[1].at(1).value()).find("CHAR"), std::string::npos);
}

TEST_P(CatalogueTest, TableNamesAreInUpperCase) {
    Connection db = connect();
    db.run("create table Mixed_Case (id integer)");
    EXPECT_EQ(db.rows("select distinct TABLE_NAME from USER_TAB_COLUMNS where TABLE_NAME = 'MIXED_CASE'"),
              Rows{rowOf("MIXED_CASE")});
    EXPECT_TRUE(db.rows("select TABLE_NAME from USER_TAB_COLUMNS where TABLE_NAME = 'Mixed_Case'").empty());
}

TEST_P(CatalogueTest, UnknownTablesHaveNoColumns) {
    Connection db = connect();
    EXPECT_TRUE(columnsOf(db, "nosuch").empty());
}

TEST_P(CatalogueTest, ItFollowsTheTables) {
    Connection db = connect();
    Connection other = connect();
    EXPECT_TRUE(columnsOf(db, "t").empty());
    db.commit();
    makeTable(other);
    EXPECT_EQ(columnsOf(db, "t").size(), 2U);
    db.commit();
    other.run("alter table t add column extra integer");
    other.commit();
    EXPECT_EQ(columnsOf(db, "t").size(), 3U);
    db.commit();
    other.run("drop table t");
    other.commit();
    EXPECT_TRUE(columnsOf(db, "t").empty());
}

TEST_P(CatalogueTest, NothingIsMadeInTheDatabaseForIt) {
    Connection db = connect();
    makeTable(db);
    const auto tables = [](Connection &asked) {
        return asked.rows("select distinct TABLE_NAME from USER_TAB_COLUMNS order by TABLE_NAME");
    };
    const Rows before = tables(db);
    EXPECT_EQ(before, Rows{rowOf("T")});
    db.commit();
    Connection other = connect();
    EXPECT_EQ(tables(other), before);
}

TEST_P(CatalogueTest, AskingItHoldsNoLock) {
    Connection db = connect();
    makeTable(db, 1);
    EXPECT_EQ(columnsOf(db, "t").size(), 2U);
    configure("client.busy_timeout_ms=50\n");
    Connection other = connect();
    EXPECT_EQ(other.run("update t set v = 'x'"), 1U);
    EXPECT_OK(other, qdc_commit(other));
}

} // namespace
