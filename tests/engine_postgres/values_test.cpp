#include "postgres/values.h"

#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <limits>

#include "support.h"

namespace ormel::client::postgres {

using testing::HasSubstr;

namespace {

constexpr Oid kNumericOid = 1700;
constexpr Oid kDateOid = 1082;
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Value integer(int64_t value) {
    return {Kind::integer, kInt64, value, 0, nullptr, 0};
}
Value real(double value) {
    return {Kind::real, kDouble, 0, value, nullptr, 0};
}
// The characters must outlive the value.
Value text(std::string_view value) {
    return {Kind::text, kVarchar, 0, 0, value.data(), value.size()};
}
Value bytes(std::string_view value) {
    return {Kind::bytes, kBlob, 0, 0, value.data(), value.size()};
}

template <size_t Size> std::string raw(const char (&literal)[Size]) {
    return {literal, Size - 1};
}

// The value in its form on the wire.
struct Sent {
    int format;
    Text value;
};
bool operator==(const Sent &a, const Sent &b) {
    return a.format == b.format && a.value == b.value;
}
void PrintTo(const Sent &sent, std::ostream *out) {
    *out << (sent.format == 1 ? "binary " : "text ") << testing::PrintToString(sent.value);
}

Sent sent(Oid type, const Value &value) {
    const Arguments arguments({type}, {value});
    EXPECT_EQ(arguments.count(), 1);
    EXPECT_EQ(arguments.types()[0], type);
    const char *data = arguments.values()[0];
    const int format = arguments.formats()[0];
    if (data == nullptr)
        return {format, {}};
    return {format, format == 1 ? std::string(data, static_cast<size_t>(arguments.lengths()[0])) : std::string(data)};
}

// A value as it comes out of a result.
Text read(const Field &field) {
    const std::vector<Column> columns = columnsOf({field});
    RowBuffer rows;
    appendRow(resultOf({field}).get(), 0, columns, rows);
    return nextRow(rows, columns).at(0);
}

void expectMisfit(const Field &field) {
    SCOPED_TRACE(testing::Message() << field.oid << " " << testing::PrintToString(field.value));
    const Error error = caught([&] { read(field); });
    EXPECT_EQ(error.code, 22000U);
    EXPECT_THAT(error.message, HasSubstr("22000: column C0"));
}

} // namespace

TEST(Arguments, integersAreBinaryWhereTheyFit) {
    EXPECT_EQ(sent(kInt2Oid, integer(-32768)), (Sent{1, raw("\x80\x00")}));
    EXPECT_EQ(sent(kInt2Oid, integer(32767)), (Sent{1, raw("\x7F\xFF")}));
    EXPECT_EQ(sent(kInt4Oid, integer(INT32_MIN)), (Sent{1, raw("\x80\x00\x00\x00")}));
    EXPECT_EQ(sent(kInt4Oid, integer(0x01020304)), (Sent{1, raw("\x01\x02\x03\x04")}));
    EXPECT_EQ(sent(kInt8Oid, integer(INT64_MIN)), (Sent{1, raw("\x80\x00\x00\x00\x00\x00\x00\x00")}));
    EXPECT_EQ(sent(kInt8Oid, integer(-1)), (Sent{1, raw("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF")}));
    EXPECT_EQ(sent(kBoolOid, integer(1)), (Sent{1, raw("\x01")}));
    EXPECT_EQ(sent(kBoolOid, integer(0)), (Sent{1, raw("\x00")}));
}

TEST(Arguments, whatDoesNotFitIsLeftToTheServer) {
    EXPECT_EQ(sent(kInt2Oid, integer(32768)), (Sent{0, "32768"}));
    EXPECT_EQ(sent(kInt4Oid, integer(INT32_MAX + 1LL)), (Sent{0, "2147483648"}));
    EXPECT_EQ(sent(kInt4Oid, integer(INT64_MIN)), (Sent{0, "-9223372036854775808"}));
    EXPECT_EQ(sent(kBoolOid, integer(2)), (Sent{0, "2"}));
    EXPECT_EQ(sent(kBoolOid, integer(-1)), (Sent{0, "-1"}));
    EXPECT_EQ(sent(kInt4Oid, real(1.5)), (Sent{0, "1.5"}));
    EXPECT_EQ(sent(kInt4Oid, text("one")), (Sent{0, "one"}));
}

TEST(Arguments, otherTypesTakeIntegersAsText) {
    for (const Oid type : {kNumericOid, kOidOid, kFloat8Oid, kTextOid, kVarcharOid, kDateOid, kByteaOid, Oid{0}})
        EXPECT_EQ(sent(type, integer(-7)), (Sent{0, "-7"})) << type;
}

TEST(Arguments, doublesKeepEveryBit) {
    EXPECT_EQ(sent(kFloat8Oid, real(1)), (Sent{1, raw("\x3F\xF0\x00\x00\x00\x00\x00\x00")}));
    EXPECT_EQ(sent(kFloat8Oid, real(-0.0)), (Sent{1, raw("\x80\x00\x00\x00\x00\x00\x00\x00")}));
    EXPECT_EQ(sent(kFloat8Oid, real(kInfinity)), (Sent{1, raw("\x7F\xF0\x00\x00\x00\x00\x00\x00")}));
    for (const Oid type : {kNumericOid, kFloat4Oid, kTextOid, kInt8Oid}) {
        EXPECT_EQ(sent(type, real(0.1)), (Sent{0, "0.1"})) << type;
        EXPECT_EQ(sent(type, real(-3)), (Sent{0, "-3"})) << type;
        EXPECT_EQ(sent(type, real(std::nan(""))), (Sent{0, "NaN"})) << type;
        EXPECT_EQ(sent(type, real(-kInfinity)), (Sent{0, "-Infinity"})) << type;
        for (const double value : {kLargest, -kLargest, 5e-324, 1e22})
            EXPECT_EQ(std::strtod(sent(type, real(value)).value->c_str(), nullptr), value) << type;
    }
}

TEST(Arguments, textIsPointedAtWhereItsBinaryFormIsItself) {
    const std::string value("a\0b", 3);
    for (const Oid type : {kTextOid, kVarcharOid, kBpcharOid, kNameOid, kJsonOid, kXmlOid}) {
        EXPECT_EQ(sent(type, text(value)), (Sent{1, value})) << type;
        EXPECT_EQ(Arguments({type}, {text(value)}).values()[0], value.data()) << type;
        EXPECT_EQ(sent(type, text("")), (Sent{1, ""})) << type;
    }
    for (const Oid type : {kNumericOid, kDateOid, kInt4Oid, kBoolOid, kByteaOid})
        EXPECT_EQ(sent(type, text("12")), (Sent{0, "12"})) << type;
}

// It would be cut off there, and be another value.
TEST(Arguments, textThatEndsBeforeItsEndIsRefused) {
    const std::string value("12\0x", 4);
    for (const Oid type : {kNumericOid, kDateOid, kInt4Oid, kByteaOid}) {
        const Error error = caught([&] { sent(type, text(value)); });
        EXPECT_THAT(error.message, testing::StartsWith("22021: parameter 1")) << type;
    }
}

TEST(Arguments, bytesGoToBytesAndTextOnly) {
    const std::string value("\0\xFF\\x", 4);
    for (const Oid type : {kByteaOid, kTextOid, kVarcharOid})
        EXPECT_EQ(sent(type, bytes(value)), (Sent{1, value})) << type;
    for (const Oid type : {kInt4Oid, kNumericOid, kDateOid, kBoolOid}) {
        const Error error = caught([&] { Arguments({kInt4Oid, type}, {integer(1), bytes(value)}); });
        EXPECT_EQ(error.code, 42804U) << type;
        EXPECT_THAT(error.message, HasSubstr("parameter 2")) << type;
    }
}

TEST(Arguments, nullIsNullForEveryType) {
    for (const Oid type : {kInt4Oid, kByteaOid, kTextOid, kNumericOid, kFloat8Oid})
        EXPECT_EQ(sent(type, {}).value, Text()) << type;
}

TEST(Arguments, areAsManyAsTheParameters) {
    EXPECT_EQ(Arguments({}, {}).count(), 0);
    for (const auto &[types, values] : {std::pair(1, 2), std::pair(2, 1), std::pair(0, 1), std::pair(1, 0)}) {
        const Error error =
            caught([&, t = types, v = values] { Arguments(std::vector<Oid>(t, kInt4Oid), std::vector<Value>(v)); });
        EXPECT_THAT(error.message, testing::StartsWith("08P01: "));
    }
}

TEST(Results, integersComeInBothForms) {
    const std::pair<Field, const char *> values[] = {
        {{kInt2Oid, inBinary, raw("\x80\x00")}, "-32768"},
        {{kInt2Oid, asText, "-32768"}, "-32768"},
        {{kInt4Oid, inBinary, raw("\xFF\xFF\xFF\xFE")}, "-2"},
        {{kInt4Oid, asText, "2147483647"}, "2147483647"},
        {{kInt8Oid, inBinary, raw("\x80\x00\x00\x00\x00\x00\x00\x00")}, "-9223372036854775808"},
        {{kInt8Oid, asText, "9223372036854775807"}, "9223372036854775807"},
        {{kOidOid, inBinary, raw("\xFF\xFF\xFF\xFF")}, "4294967295"},
        {{kOidOid, asText, "4294967295"}, "4294967295"},
        {{kBoolOid, inBinary, raw("\x01")}, "1"},
        {{kBoolOid, inBinary, raw("\x00")}, "0"},
        {{kBoolOid, asText, "t"}, "1"},
        {{kBoolOid, asText, "f"}, "0"},
    };
    for (const auto &[field, value] : values)
        EXPECT_EQ(read(field), value) << field.oid << " " << field.format;
}

TEST(Results, doublesComeInBothForms) {
    const std::pair<Field, double> values[] = {
        {{kFloat8Oid, inBinary, raw("\x3F\xF8\x00\x00\x00\x00\x00\x00")}, 1.5},
        {{kFloat4Oid, inBinary, raw("\xC0\x20\x00\x00")}, -2.5},
        {{kFloat8Oid, asText, "1.7976931348623157e+308"}, kLargest},
        {{kFloat8Oid, asText, "5e-324"}, 5e-324},
        {{kFloat4Oid, asText, "-2.5"}, -2.5},
        {{kFloat8Oid, asText, "-Infinity"}, -kInfinity},
    };
    for (const auto &[field, value] : values)
        EXPECT_EQ(std::strtod(read(field)->c_str(), nullptr), value) << testing::PrintToString(field.value);
    EXPECT_EQ(read({kFloat8Oid, asText, "NaN"}), "nan");
}

TEST(Results, textComesAsItIs) {
    const std::string large(100000, 'x');
    for (const Oid type : {kTextOid, kVarcharOid, kJsonOid, kNumericOid, kDateOid, Oid{16384}})
        for (const std::string &value : {std::string("12.50"), std::string(), std::string("  a  "), large})
            EXPECT_EQ(read({type, asText, value}), value) << type;
    EXPECT_EQ(read({kTextOid, inBinary, "aé"}), "aé");
    EXPECT_EQ(read({kVarcharOid, inBinary, large, 24}), large) << "longer than its column";
}

TEST(Results, blanksThatFillUpAreLeftOff) {
    for (const Format format : {asText, inBinary})
        for (const auto &[value, kept] : {std::pair("ab   ", "ab"), {" a b ", " a b"}, {"   ", ""}, {"", ""}})
            EXPECT_EQ(read({kBpcharOid, format, value, 9}), kept);
}

TEST(Results, bytesComeInBothForms) {
    const std::string all = raw("\x00\x01\xAB\xFF");
    EXPECT_EQ(read({kByteaOid, inBinary, all}), all);
    EXPECT_EQ(read({kByteaOid, asText, "\\x0001abFF"}), all);
    EXPECT_EQ(read({kByteaOid, asText, "\\x"}), "");
    EXPECT_EQ(read({kByteaOid, inBinary, ""}), "");
    std::string hex = "\\x";
    for (int i = 0; i < 50000; ++i)
        hex += "7a";
    EXPECT_EQ(read({kByteaOid, asText, hex}), std::string(50000, 'z'));
}

TEST(Results, nullIsNull) {
    for (const Oid type : {kInt4Oid, kBoolOid, kFloat8Oid, kByteaOid, kTextOid, kBpcharOid, kNumericOid})
        for (const Format format : {asText, inBinary})
            EXPECT_EQ(read({type, format, {}, 9}), Text()) << type;
}

TEST(Results, numbersOfAnotherLengthAreRefused) {
    const std::pair<Oid, size_t> types[] = {{kBoolOid, 1}, {kInt2Oid, 2},   {kInt4Oid, 4},  {kOidOid, 4},
                                            {kInt8Oid, 8}, {kFloat4Oid, 4}, {kFloat8Oid, 8}};
    for (const auto &[type, own] : types)
        for (const size_t length : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 4096U})
            if (length != own)
                expectMisfit({type, inBinary, std::string(length, '\x01')});
}

TEST(Results, nonsenseIsRefused) {
    for (const char *value : {"", "x", "1x", " 1", "1 ", "0x10", "1.5", "99999999999999999999", "-"})
        for (const Oid type : {kInt2Oid, kInt4Oid, kInt8Oid, kOidOid})
            expectMisfit({type, asText, value});
    for (const char *value : {"", "x", "1.5x", "1,5", " 1", "--1", "1e999"})
        expectMisfit({kFloat8Oid, asText, value});
    for (const char *value : {"", "true", "1", "x"})
        expectMisfit({kBoolOid, asText, value});
    for (const char *value :
         {"", "\\", "x", "00", "\\x0", "\\x000", "\\xg0", "\\x0g", "\\x-1", "\\x 1", "\\\\x00", "0\\x0"})
        expectMisfit({kByteaOid, asText, value});
    expectMisfit({kInt4Oid, asText, "2147483648"});
    expectMisfit({kInt4Oid, asText, "-2147483649"});
}

// The table may have become another since it was described.
TEST(Results, valuesOfAnotherTypeThanDescribedAreRefused) {
    const std::pair<Field, Field> described[] = {{{kInt4Oid, inBinary, {}}, {kVarcharOid, inBinary, "abcd"}},
                                                 {{kInt8Oid, inBinary, {}}, {kFloat8Oid, inBinary, "12345678"}},
                                                 {{kFloat8Oid, inBinary, {}}, {kInt8Oid, inBinary, "12345678"}},
                                                 {{kFloat8Oid, inBinary, {}}, {kFloat4Oid, inBinary, "12345678"}}};
    for (const auto &[column, field] : described) {
        RowBuffer rows;
        const Error error =
            caught([&, &c = column, &f = field] { appendRow(resultOf({f}).get(), 0, columnsOf({c}), rows); });
        EXPECT_EQ(error.code, 22000U) << field.oid;
        EXPECT_EQ(rows.rows(), 0U);
    }
}

TEST(Results, aRowThatDoesNotFitLeavesTheBufferAsItWas) {
    const std::string large(20000, 'b');
    const std::vector<Field> good = {{kTextOid, asText, "first"}, {kInt4Oid, asText, "1"}};
    const std::vector<Field> bad = {{kTextOid, asText, large}, {kInt4Oid, asText, "one"}};
    const std::vector<Column> columns = columnsOf(good);
    RowBuffer rows;
    appendRow(resultOf(good).get(), 0, columns, rows);
    for (int i = 0; i < 2; ++i)
        caught([&] { appendRow(resultOf(bad).get(), 0, columns, rows); });
    appendRow(resultOf(good).get(), 0, columns, rows);
    EXPECT_EQ(rows.rows(), 2U);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(nextRow(rows, columns), (std::vector<Text>{"first", "1"}));
    EXPECT_TRUE(nextRow(rows, columns).empty());
}

} // namespace ormel::client::postgres
