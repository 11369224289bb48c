#include "sqlite/types.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace ormel::client::sqlite {

namespace {

struct Expected {
    const char *declared;
    int type;
    int size;
    int precision;
    int scale;
};

class DeclaredType : public testing::TestWithParam<Expected> {};

} // namespace

TEST_P(DeclaredType, isDescribed) {
    const Expected &expected = GetParam();
    const ColumnType type = typeOf(parseDeclaration(expected.declared));
    EXPECT_EQ(type.type, expected.type) << expected.declared;
    EXPECT_EQ(type.size, expected.size) << expected.declared;
    EXPECT_EQ(type.precision, expected.precision) << expected.declared;
    EXPECT_EQ(type.scale, expected.scale) << expected.declared;
}

INSTANTIATE_TEST_SUITE_P(Integers, DeclaredType,
                         testing::Values(Expected{"INTEGER", 1, 4, 10, 0}, Expected{"int", 1, 4, 10, 0},
                                         Expected{"TinyInt", 1, 4, 10, 0}, Expected{"SMALLINT", 1, 4, 10, 0},
                                         Expected{"MEDIUMINT", 1, 4, 10, 0}, Expected{"INT2", 1, 4, 10, 0},
                                         Expected{"INTEGER(11)", 1, 4, 10, 0},
                                         Expected{"smallint unsigned", 1, 4, 10, 0}, Expected{"BIGINT", 2, 8, 19, 0},
                                         Expected{"INT8", 2, 8, 19, 0}, Expected{"UNSIGNED  BIG INT", 2, 8, 19, 0},
                                         Expected{"INT(10) UNSIGNED", 2, 8, 19, 0}, Expected{"BOOLEAN", 25, 4, 0, 0},
                                         Expected{"bool", 25, 4, 0, 0}));

INSTANTIATE_TEST_SUITE_P(Reals, DeclaredType,
                         testing::Values(Expected{"REAL", 3, 8, 0, 0}, Expected{"DOUBLE PRECISION", 3, 8, 0, 0},
                                         Expected{"double\n\tprecision", 3, 8, 0, 0}, Expected{"FLOAT", 3, 8, 0, 0},
                                         Expected{"FLOAT(24)", 3, 8, 0, 0}));

INSTANTIATE_TEST_SUITE_P(
    Characters, DeclaredType,
    testing::Values(Expected{"CHAR(5)", 8, 21, 0, 0}, Expected{"char", 8, 5, 0, 0}, Expected{"NCHAR(55)", 8, 221, 0, 0},
                    Expected{"NATIVE CHARACTER(70)", 8, 281, 0, 0}, Expected{"CHARACTER(20)", 8, 81, 0, 0},
                    Expected{"VARCHAR(20)", 9, 81, 0, 0}, Expected{"varchar2 ( 20 )", 9, 81, 0, 0},
                    Expected{"VARCHAR2(20 CHAR)", 9, 81, 0, 0}, Expected{"character varying (20)", 9, 81, 0, 0},
                    Expected{"NVARCHAR(100)", 9, 401, 0, 0}, Expected{"VARYING CHARACTER(255)", 9, 1021, 0, 0},
                    Expected{"VARCHAR(0)", 9, 1, 0, 0}, Expected{"VARCHAR(16383)", 9, 65533, 0, 0},
                    Expected{"VARCHAR(16384)", 13, 44, 0, 0}, Expected{"CHAR(16384)", 13, 44, 0, 0},
                    Expected{"VARCHAR(4294967295)", 13, 44, 0, 0}, Expected{"VARCHAR(99999999999)", 13, 44, 0, 0},
                    Expected{"VARCHAR", 13, 44, 0, 0}, Expected{"VARCHAR(MAX)", 13, 44, 0, 0}));

INSTANTIATE_TEST_SUITE_P(
    Texts, DeclaredType,
    testing::Values(Expected{"NUMERIC", 10, 512, 0, 0}, Expected{"NUMERIC(10, 2)", 10, 14, 10, 2},
                    Expected{"decimal(5)", 10, 9, 5, 0}, Expected{"DECIMAL(300,260)", 10, 304, 255, 255},
                    Expected{"NUMERIC(70000)", 10, 512, 0, 0}, Expected{"NUMERIC(10,-2)", 10, 14, 10, 0},
                    Expected{"DATE", 10, 36, 0, 0}, Expected{"time", 10, 36, 0, 0}, Expected{"DATETIME", 10, 36, 0, 0},
                    Expected{"TIMESTAMP", 10, 36, 0, 0}, Expected{"TIMESTAMP(6) WITH TIME ZONE", 10, 36, 0, 0},
                    Expected{"TIME WITHOUT TIME ZONE", 10, 36, 0, 0}, Expected{"UUID", 10, 37, 0, 0}));

INSTANTIATE_TEST_SUITE_P(Bytes, DeclaredType,
                         testing::Values(Expected{"BINARY(16)", 11, 16, 0, 0},
                                         Expected{"VARBINARY(100)", 12, 100, 0, 0},
                                         Expected{"VARBINARY(65534)", 12, 65534, 0, 0},
                                         Expected{"BINARY(65535)", 14, 44, 0, 0}, Expected{"BINARY", 14, 44, 0, 0},
                                         Expected{"BLOB", 14, 44, 0, 0}, Expected{"blob(100)", 14, 44, 0, 0}));

INSTANTIATE_TEST_SUITE_P(Unbounded, DeclaredType,
                         testing::Values(Expected{"TEXT", 13, 44, 0, 0}, Expected{"CLOB", 13, 44, 0, 0},
                                         Expected{"JSON", 13, 44, 0, 0}, Expected{"", 13, 44, 0, 0},
                                         Expected{"INTERVAL", 13, 44, 0, 0},
                                         Expected{"no such type(1,2,3)", 13, 44, 0, 0},
                                         Expected{"odd ) ( one", 13, 44, 0, 0}, Expected{"open (", 13, 44, 0, 0}));

TEST(Declaration, isTakenApart) {
    const Declaration declaration = parseDeclaration("  numeric ( 10 , 2 )  ");
    EXPECT_EQ(declaration.name, "NUMERIC");
    EXPECT_EQ(declaration.first, 10U);
    EXPECT_EQ(declaration.second, 2U);
    EXPECT_EQ(parseDeclaration("timestamp(6) with  time zone").name, "TIMESTAMP WITH TIME ZONE");
    EXPECT_FALSE(parseDeclaration("text").first.has_value());
    EXPECT_FALSE(parseDeclaration("enum('a')").first.has_value());
}

TEST(ValueType, followsTheStorageClass) {
    EXPECT_EQ(typeOfValue(SQLITE_INTEGER).type, kInt64);
    EXPECT_EQ(typeOfValue(SQLITE_FLOAT).type, kDouble);
    EXPECT_EQ(typeOfValue(SQLITE_TEXT).type, kClob);
    EXPECT_EQ(typeOfValue(SQLITE_BLOB).type, kBlob);
    EXPECT_EQ(typeOfValue(SQLITE_NULL).type, kClob);
}

} // namespace ormel::client::sqlite
