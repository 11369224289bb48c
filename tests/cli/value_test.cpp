#include "cli/value.h"

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <ormeldb.h>

namespace {

using namespace cli;

class Value : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }

    // Parsed into a field that held something else before.
    static std::vector<uint8_t> parsed(uint32_t type, std::string_view text, size_t size) {
        std::vector<uint8_t> field(size, 0xAA);
        parseValue(type, text, field);
        return field;
    }

    static std::string again(uint32_t type, std::string_view text, size_t size) {
        return formatValue(type, parsed(type, text, size));
    }

    static std::string refusal(uint32_t type, std::string_view text, size_t size) {
        try {
            parsed(type, text, size);
        } catch (const ValueError &error) {
            return error.what();
        }
        return "taken";
    }
};

TEST_F(Value, IntegersKeepTheirLimits) {
    for (const char *text : {"0", "-1", "2147483647", "-2147483648"})
        EXPECT_EQ(again(QDC_TYPE_INT32, text, 4), text);
    for (const char *text : {"0", "-1", "9223372036854775807", "-9223372036854775808"})
        EXPECT_EQ(again(QDC_TYPE_INT64, text, 8), text);
    EXPECT_EQ(parsed(QDC_TYPE_INT32, "258", 4), (std::vector<uint8_t>{2, 1, 0, 0}));
}

TEST_F(Value, WhatIsNoIntegerIsRefused) {
    EXPECT_EQ(refusal(QDC_TYPE_INT32, "", 4), "an empty field is no number");
    EXPECT_EQ(refusal(QDC_TYPE_INT32, "12a", 4), "'12a' is no whole number");
    EXPECT_EQ(refusal(QDC_TYPE_INT32, "1.5", 4), "'1.5' is no whole number");
    EXPECT_EQ(refusal(QDC_TYPE_INT32, " 1", 4), "' 1' is no whole number");
    EXPECT_EQ(refusal(QDC_TYPE_INT32, "1 ", 4), "'1 ' is no whole number");
    EXPECT_EQ(refusal(QDC_TYPE_INT32, "99999999999999999999x", 4), "'99999999999999999999x' is no whole number");
    EXPECT_EQ(refusal(QDC_TYPE_INT32, "2147483648", 4), "'2147483648' is outside -2147483648 to 2147483647");
    EXPECT_EQ(refusal(QDC_TYPE_INT64, "9223372036854775808", 8),
              "'9223372036854775808' is outside -9223372036854775808 to 9223372036854775807");
}

TEST_F(Value, Booleans) {
    for (const char *text : {"1", "true", "TRUE"})
        EXPECT_EQ(again(QDC_TYPE_BOOL, text, 4), "true");
    for (const char *text : {"0", "false", "False"})
        EXPECT_EQ(again(QDC_TYPE_BOOL, text, 4), "false");
    EXPECT_EQ(refusal(QDC_TYPE_BOOL, "2", 4), "'2' is neither true nor false (nor 1 nor 0)");
    EXPECT_EQ(refusal(QDC_TYPE_BOOL, "", 4), "'' is neither true nor false (nor 1 nor 0)");
}

TEST_F(Value, DoublesReadBackTheSame) {
    for (const char *text : {"0", "-0.5", "0.1", "1e+300", "5e-324", "1.7976931348623157e+308", "inf", "-inf", "nan"})
        EXPECT_EQ(again(QDC_TYPE_DOUBLE, text, 8), text);
    std::mt19937_64 bits(20260715);
    for (int i = 0; i < 10000; ++i) {
        double value = 0;
        const uint64_t pattern = bits();
        std::memcpy(&value, &pattern, sizeof value);
        if (!std::isfinite(value))
            continue;
        std::vector<uint8_t> field(8);
        std::memcpy(field.data(), &value, 8);
        EXPECT_EQ(parsed(QDC_TYPE_DOUBLE, formatValue(QDC_TYPE_DOUBLE, field), 8), field) << value;
    }
}

TEST_F(Value, WhatIsNoDoubleIsRefused) {
    EXPECT_EQ(refusal(QDC_TYPE_DOUBLE, "", 8), "an empty field is no number");
    EXPECT_EQ(refusal(QDC_TYPE_DOUBLE, "abc", 8), "'abc' is no number");
    EXPECT_EQ(refusal(QDC_TYPE_DOUBLE, "1,5", 8), "'1,5' is no number");
    for (const std::string text : {"NaN", "nan(1)", "Inf", "infinity", "+inf", "inf ", "infinite"})
        EXPECT_EQ(refusal(QDC_TYPE_DOUBLE, text, 8), "'" + text + "' is no number");
    EXPECT_EQ(refusal(QDC_TYPE_DOUBLE, "1e999", 8), "'1e999' is outside what 8 bytes of floating point hold");
}

TEST_F(Value, TextIsPaddedWithZeros) {
    EXPECT_EQ(parsed(QDC_TYPE_VARCHAR, "ab", 5), (std::vector<uint8_t>{'a', 'b', 0, 0, 0}));
    EXPECT_EQ(parsed(QDC_TYPE_CHAR, "", 3), (std::vector<uint8_t>{0, 0, 0}));
    EXPECT_EQ(parsed(QDC_TYPE_TEXT, "1.50", 5), (std::vector<uint8_t>{'1', '.', '5', '0', 0}));
}

TEST_F(Value, TextThatAFieldDoesNotHoldIsRefused) {
    EXPECT_EQ(refusal(QDC_TYPE_VARCHAR, "abcde", 5), "'abcde' has 5 bytes, the field holds at most 4");
    EXPECT_EQ(refusal(QDC_TYPE_VARCHAR, std::string_view("a\0b", 3), 9),
              "'a\\x00b' has a NUL byte, where a record's text would end");
    EXPECT_EQ(refusal(QDC_TYPE_VARCHAR, "ab\xFF", 9), "'ab\\xff' is no UTF-8 text from byte 3 on");
}

TEST_F(Value, LongTextIsCutInMessagesBetweenCharacters) {
    const std::string text = std::string(39, 'x') + "\u00e9" + std::string(20, 'y');
    EXPECT_EQ(refusal(QDC_TYPE_VARCHAR, text, 5),
              "'" + std::string(39, 'x') + "...' has 61 bytes, the field holds at most 4");
}

TEST_F(Value, DecimalsAreCheckedAndNotRounded) {
    for (const char *text : {"0", "-1.50", "12345678901234567890.12345", "1e400", "1E-5", ".5"})
        EXPECT_NO_THROW(checkDecimal(text)) << text;
    for (const char *text : {"", "-", "1,5", "abc", "nan", "inf", "0x10", "1.2.3", " 1", "1 ", "1e"})
        EXPECT_THROW(checkDecimal(text), ValueError) << text;
}

TEST_F(Value, ByteStringsAreHexadecimal) {
    EXPECT_EQ(parsed(QDC_TYPE_BINARY, "00fFa1", 3), (std::vector<uint8_t>{0, 0xFF, 0xA1}));
    EXPECT_EQ(again(QDC_TYPE_VARBINARY, "00FFA1", 3), "00ffa1");
    EXPECT_EQ(refusal(QDC_TYPE_BINARY, "00ff", 3),
              "the field takes exactly 3 bytes, written as 6 hexadecimal digits, and '00ff' has 4");
    EXPECT_EQ(refusal(QDC_TYPE_BINARY, "", 1),
              "the field takes exactly 1 byte, written as 2 hexadecimal digits, and '' has 0");
    EXPECT_EQ(refusal(QDC_TYPE_RAW, "00fg", 2), "'g' is no hexadecimal digit");
    EXPECT_EQ(refusal(QDC_TYPE_RAW, "00-1", 2), "'-' is no hexadecimal digit");
}

TEST_F(Value, LargeObjectsAndUnknownTypesAreRefused) {
    EXPECT_EQ(refusal(QDC_TYPE_CLOB, "x", 44),
              "it is a large object, which no record carries; use the command sql for this column");
    EXPECT_EQ(refusal(QDC_TYPE_BLOB, "00", 44),
              "it is a large object, which no record carries; use the command sql for this column");
    EXPECT_EQ(refusal(99, "x", 4), "values of its type are not known here; use the command sql for this column");
}

TEST_F(Value, OutsideARecordHasItsOwnLength) {
    EXPECT_EQ(encodeValue(QDC_TYPE_INT32, "258", 4), std::string("\2\1\0\0", 4));
    EXPECT_EQ(encodeValue(QDC_TYPE_BOOL, "true", 4), std::string("\1\0\0\0", 4));
    EXPECT_EQ(encodeValue(QDC_TYPE_INT64, "-1", 8), std::string(8, '\xFF'));
    EXPECT_EQ(encodeValue(QDC_TYPE_DOUBLE, "0", 8), std::string(8, '\0'));
    EXPECT_EQ(encodeValue(QDC_TYPE_VARCHAR, "Zo\u00eb", 9), "Zo\u00eb");
    EXPECT_EQ(encodeValue(QDC_TYPE_VARBINARY, "00fF", 3), std::string("\0\xFF", 2));
    EXPECT_EQ(encodeValue(QDC_TYPE_VARBINARY, "", 3), "");
    EXPECT_EQ(encodeValue(QDC_TYPE_CLOB, std::string(1000, 'x'), 44), std::string(1000, 'x'));
    EXPECT_EQ(encodeValue(QDC_TYPE_BLOB, std::string(200, '0'), 44), std::string(100, '\0'));
}

TEST_F(Value, OutsideARecordIsRefusedToo) {
    const auto refused = [](uint32_t type, std::string_view text, size_t size) {
        try {
            encodeValue(type, text, size);
        } catch (const ValueError &error) {
            return std::string(error.what());
        }
        return std::string("taken");
    };
    EXPECT_EQ(refused(QDC_TYPE_VARCHAR, "abcde", 5), "'abcde' has 5 bytes, the field holds at most 4");
    EXPECT_EQ(refused(QDC_TYPE_BINARY, "00ff00ff", 3),
              "the field takes at most 3 bytes, written as 6 hexadecimal digits, and '00ff00ff' has 8");
    EXPECT_EQ(refused(QDC_TYPE_RAW, "0", 3), "'0' has 1 hexadecimal digit, and a byte takes two");
    EXPECT_EQ(refused(QDC_TYPE_BLOB, "00f", 44), "'00f' has 3 hexadecimal digits, and a byte takes two");
    EXPECT_EQ(refused(QDC_TYPE_CLOB, "a\xFF", 44), "'a\\xff' is no UTF-8 text from byte 2 on");
    EXPECT_EQ(refused(99, "x", 4), "values of its type are not known here; use the command sql for this column");
}

TEST_F(Value, TypesHaveNamesAndKinds) {
    EXPECT_EQ(typeName(QDC_TYPE_INT32), "integer");
    EXPECT_EQ(typeName(QDC_TYPE_BLOB), "large bytes");
    EXPECT_EQ(typeName(99), "unknown");
    EXPECT_TRUE(isNumber(QDC_TYPE_DOUBLE) && !isNumber(QDC_TYPE_BOOL) && !isNumber(QDC_TYPE_VARCHAR));
    EXPECT_TRUE(isText(QDC_TYPE_TEXT) && !isText(QDC_TYPE_CLOB) && !isText(QDC_TYPE_RAW));
    EXPECT_TRUE(isLargeObject(QDC_TYPE_CLOB) && isLargeObject(QDC_TYPE_BLOB) && !isLargeObject(QDC_TYPE_RAW));
}

} // namespace
