// How columns are described.
#include <cstring>

#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::HasSubstr;

class TypesTest : public ContractTest {
protected:
    // A table with a column of each type, C0, C1 ...
    void makeTableOfTypes(Connection &db) const {
        std::string sql = "create table types (";
        const auto types = engine().declaredTypes();
        for (size_t i = 0; i < types.size(); ++i)
            sql += (i == 0 ? "c" : ", c") + std::to_string(i) + " " + types[i].words;
        db.run(sql + ")");
    }
    void expectDescriptions(Statement &query) const {
        const auto types = engine().declaredTypes();
        ASSERT_EQ(query.columns(), types.size());
        for (uint32_t i = 0; i < types.size(); ++i) {
            SCOPED_TRACE(types[i].words);
            const QDC_COLUMN_DESC column = query.describe(i);
            EXPECT_EQ(column.pcName, "C" + std::to_string(i));
            EXPECT_EQ(column.usType, types[i].type);
            EXPECT_EQ(column.usSize, types[i].size);
            EXPECT_EQ(column.ucPrecision, types[i].precision);
            EXPECT_EQ(column.ucScale, types[i].scale);
            EXPECT_EQ(column.ucFormat, isBinary(types[i].type) ? 1 : 0);
            EXPECT_EQ(column.ucNullable, 1);
        }
    }
    static bool isBinary(uint32_t type) {
        return type == kInteger || type == kBigint || type == kReal || type == kBoolean;
    }
};
CONTRACT_SUITE(TypesTest);

TEST_P(TypesTest, DeclaredTypesOfAQueryWithoutRows) {
    Connection db = connect();
    makeTableOfTypes(db);
    Statement query(db, "select * from types where 1<>1");
    query.execute();
    expectDescriptions(query);
    EXPECT_FALSE(query.fetch());
    expectDescriptions(query);
}

TEST_P(TypesTest, DeclaredTypesOfAQueryWithRows) {
    Connection db = connect();
    makeTableOfTypes(db);
    db.run("insert into types (c0) values (:1)", std::nullopt);
    Statement query(db, "select * from types");
    EXPECT_EQ(query.execute(), 1U);
    expectDescriptions(query);
    EXPECT_TRUE(query.fetch());
    for (const Value &value : query.row())
        EXPECT_EQ(value, std::nullopt);
    expectDescriptions(query);
}

// Sizes of 65535 and more do not fit into a description.
TEST_P(TypesTest, EverySizeFitsItsType) {
    for (const DeclaredType &declared : engine().declaredTypes()) {
        SCOPED_TRACE(declared.words);
        EXPECT_LT(declared.size, 65535U);
        if (declared.type == kClob || declared.type == kBlob) {
            EXPECT_EQ(declared.size, 44U);
        }
        if (isBinary(declared.type)) {
            EXPECT_EQ(declared.size, declared.type == kInteger || declared.type == kBoolean ? 4U : 8U);
        }
    }
}

TEST_P(TypesTest, Expressions) {
    Connection db = connect();
    makeTable(db, 2);
    for (const Expression &expression : engine().expressions()) {
        SCOPED_TRACE(expression.sql);
        Statement query(db, std::string("select ") + expression.sql + " from t");
        query.execute();
        ASSERT_EQ(query.columns(), 1U);
        EXPECT_EQ(query.describe(0).usType, expression.type);
        EXPECT_EQ(query.describe(0).usSize, isBinary(expression.type) ? 8 : 44);
        EXPECT_NE(query.describe(0).pcName, nullptr);
        EXPECT_TRUE(query.fetch());
        EXPECT_NE(query.value(0), std::nullopt);
    }
}

TEST_P(TypesTest, CountIsA64BitInteger) {
    Connection db = connect();
    makeTable(db, 3);
    Statement query(db, "select count(*) from t");
    query.execute();
    EXPECT_EQ(query.describe(0).usType, kBigint);
    EXPECT_EQ(query.describe(0).usSize, 8);
    EXPECT_EQ(query.rest(), Rows{rowOf("3")});
}

TEST_P(TypesTest, NotNullIsReportedWhereItIsKnown) {
    NEEDS(knownNotNull);
    Connection db = connect();
    db.run("create table n (a integer not null, b integer, c varchar(5) not null)");
    Statement query(db, "select * from n where 1<>1");
    query.execute();
    EXPECT_EQ(query.describe(0).ucNullable, 0);
    EXPECT_EQ(query.describe(1).ucNullable, 1);
    EXPECT_EQ(query.describe(2).ucNullable, 0);
}

TEST_P(TypesTest, NamesAreInUpperCaseAndFoundInAnyCase) {
    Connection db = connect();
    db.run("create table names (Mixed_Name integer, lower varchar(5), UPPER text)");
    Statement query(db, "select mixed_name, lower, upper, lower as Other from names where 1<>1");
    query.execute();
    const char *expected[] = {"MIXED_NAME", "LOWER", "UPPER", "OTHER"};
    for (uint32_t i = 0; i < 4; ++i)
        EXPECT_STREQ(query.describe(i).pcName, expected[i]);
    EXPECT_EQ(query.describe("MIXED_NAME").usType, kInteger);
    EXPECT_EQ(query.describe("mixed_name").usType, kInteger);
    EXPECT_EQ(query.describe("mIxEd_nAmE").usSize, 4);
    EXPECT_EQ(query.describe("other").usType, kVarchar);
    EXPECT_STREQ(query.describe("other").pcName, "OTHER");
}

TEST_P(TypesTest, NamesThatAreFoundInTheirOwnCaseOnlyKeepIt) {
    NEEDS(caseSensitiveNames);
    Connection db = connect();
    db.run("create table names (\"MixedName\" integer)");
    Statement query(db, "select * from names where 1<>1");
    query.execute();
    EXPECT_STREQ(query.describe(0).pcName, "MixedName");
    EXPECT_EQ(query.describe("mixedname").usType, kInteger);
}

TEST_P(TypesTest, LongNamesComeWhole) {
    Connection db = connect();
    const std::string name = "A_NAME_OF_MORE_THAN_TWENTY_SEVEN_CHARACTERS";
    db.run("create table names (" + name + " integer)");
    Statement query(db, "select * from names where 1<>1");
    query.execute();
    EXPECT_EQ(query.describe(0).pcName, name);
}

TEST_P(TypesTest, ColumnsThatAreNotThere) {
    Connection db = connect();
    makeTable(db, 1);
    Statement query(db, "select id from t");
    query.execute();
    QDC_COLUMN_DESC column = {};
    EXPECT_FAILS(qdc_desc_column_by_id(query, 1, &column));
    EXPECT_FAILS(qdc_desc_column_by_id(query, 0xFFFFFFFF, &column));
    EXPECT_FAILS(qdc_desc_column_by_name(query, "NOSUCH", &column));
    EXPECT_THAT(db.error(), HasSubstr("NOSUCH"));
    EXPECT_FAILS(qdc_desc_column_by_name(query, "", &column));
    EXPECT_EQ(column.pcName, nullptr);
}

TEST_P(TypesTest, AWriteHasNoColumns) {
    Connection db = connect();
    makeTable(db);
    Statement insert(db, "insert into t (id, v) values (1, 'x')");
    insert.execute();
    EXPECT_EQ(insert.columns(), 0U);
}

// The library probes a table, keeps the statement and describes its columns one by one.
TEST_P(TypesTest, DescriptionsOutliveTheEndAndOtherStatements) {
    Connection db = connect();
    makeTable(db, 1);
    Statement probe(db, "select * from t where 1<>1");
    probe.execute();
    const QDC_COLUMN_DESC before = probe.describe(1);
    EXPECT_EQ(db.rows("select id from t").size(), 1U);
    EXPECT_STREQ(before.pcName, "V");
    EXPECT_EQ(probe.describe(1).usType, kVarchar);
}

} // namespace
