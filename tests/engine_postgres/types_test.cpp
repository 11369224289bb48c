#include "postgres/types.h"

#include <gtest/gtest.h>

namespace ormel::client::postgres {

namespace {

struct Expected {
    const char *words;
    Oid oid;
    int modifier;
    int type;
    int size;
    int precision;
    int scale;
};

constexpr int characters(int length) {
    return length + 4;
}
constexpr int digits(int precision, int scale) {
    return ((precision << 16) | (scale & 0x7FF)) + 4;
}

class ServerType : public testing::TestWithParam<Expected> {};

} // namespace

TEST_P(ServerType, isDescribed) {
    const Expected &expected = GetParam();
    const ColumnType type = typeOf(expected.oid, expected.modifier);
    EXPECT_EQ(type.type, expected.type) << expected.words;
    EXPECT_EQ(type.size, expected.size) << expected.words;
    EXPECT_EQ(type.precision, expected.precision) << expected.words;
    EXPECT_EQ(type.scale, expected.scale) << expected.words;
}

INSTANTIATE_TEST_SUITE_P(Numbers, ServerType,
                         testing::Values(Expected{"smallint", 21, -1, 1, 4, 5, 0},
                                         Expected{"integer", 23, -1, 1, 4, 10, 0},
                                         Expected{"boolean", 16, -1, 25, 4, 0, 0},
                                         Expected{"bigint", 20, -1, 2, 8, 19, 0}, Expected{"oid", 26, -1, 2, 8, 10, 0},
                                         Expected{"real", 700, -1, 3, 8, 0, 0},
                                         Expected{"double precision", 701, -1, 3, 8, 0, 0}));

INSTANTIATE_TEST_SUITE_P(
    Characters, ServerType,
    testing::Values(Expected{"char(1)", 1042, characters(1), 8, 5, 0, 0}, Expected{"bpchar", 1042, -1, 13, 44, 0, 0},
                    Expected{"char(16383)", 1042, characters(16383), 8, 65533, 0, 0},
                    Expected{"char(16384)", 1042, characters(16384), 13, 44, 0, 0},
                    Expected{"varchar(20)", 1043, characters(20), 9, 81, 0, 0},
                    Expected{"varchar(10485760)", 1043, characters(10485760), 13, 44, 0, 0},
                    Expected{"varchar", 1043, -1, 13, 44, 0, 0}, Expected{"nonsense", 1043, INT32_MAX, 13, 44, 0, 0},
                    Expected{"nonsense", 1043, INT32_MIN, 13, 44, 0, 0}, Expected{"text", 25, -1, 13, 44, 0, 0},
                    Expected{"name", 19, -1, 10, 64, 0, 0}, Expected{"\"char\"", 18, -1, 10, 64, 0, 0}));

INSTANTIATE_TEST_SUITE_P(Digits, ServerType,
                         testing::Values(Expected{"numeric", 1700, -1, 10, 512, 0, 0},
                                         Expected{"numeric(10,2)", 1700, digits(10, 2), 10, 14, 10, 2},
                                         Expected{"numeric(1000)", 1700, digits(1000, 0), 10, 1004, 255, 0},
                                         Expected{"numeric(300,260)", 1700, digits(300, 260), 10, 304, 255, 255},
                                         Expected{"numeric(3,5)", 1700, digits(3, 5), 10, 515, 3, 5},
                                         Expected{"numeric(5,-2)", 1700, digits(5, -2), 10, 517, 5, 255},
                                         Expected{"bit(8)", 1560, 8, 10, 9, 0, 0},
                                         Expected{"bit(255)", 1560, 255, 10, 256, 0, 0},
                                         Expected{"bit(256)", 1560, 256, 13, 44, 0, 0},
                                         Expected{"bit varying", 1562, -1, 13, 44, 0, 0},
                                         Expected{"bit varying(255)", 1562, 255, 10, 256, 0, 0}));

INSTANTIATE_TEST_SUITE_P(
    Others, ServerType,
    testing::Values(Expected{"date", 1082, -1, 10, 36, 0, 0}, Expected{"time(3)", 1083, 3, 10, 36, 0, 0},
                    Expected{"timetz", 1266, -1, 10, 36, 0, 0}, Expected{"timestamp", 1114, -1, 10, 36, 0, 0},
                    Expected{"timestamptz(6)", 1184, 6, 10, 36, 0, 0}, Expected{"uuid", 2950, -1, 10, 37, 0, 0},
                    Expected{"interval", 1186, -1, 10, 128, 0, 0}, Expected{"inet", 869, -1, 10, 64, 0, 0},
                    Expected{"cidr", 650, -1, 10, 64, 0, 0}, Expected{"macaddr", 829, -1, 10, 64, 0, 0},
                    Expected{"money", 790, -1, 10, 64, 0, 0}, Expected{"json", 114, -1, 13, 44, 0, 0},
                    Expected{"jsonb", 3802, -1, 13, 44, 0, 0}, Expected{"xml", 142, -1, 13, 44, 0, 0},
                    Expected{"integer[]", 1007, -1, 13, 44, 0, 0}, Expected{"bytea", 17, -1, 14, 44, 0, 0},
                    Expected{"somebody's own", 16384, -1, 13, 44, 0, 0}));

TEST(ServerTypes, travelInTheFormThatIsExact) {
    for (const Oid oid : {16U, 17U, 19U, 20U, 21U, 23U, 25U, 26U, 114U, 142U, 700U, 701U, 1042U, 1043U})
        EXPECT_TRUE(travelsInBinary(oid)) << oid;
    for (const Oid oid : {1700U, 1082U, 1114U, 1184U, 2950U, 3802U, 1186U, 869U, 1007U, 16384U, 0U})
        EXPECT_FALSE(travelsInBinary(oid)) << oid;
    for (const Oid oid : {16U, 17U, 20U, 21U, 23U, 26U, 700U, 701U, 1700U, 3802U})
        EXPECT_FALSE(isPlainText(oid)) << oid;
}

} // namespace ormel::client::postgres
