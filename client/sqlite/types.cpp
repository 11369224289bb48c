#include "types.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sqlite3.h>

#include "sql_text.h"

namespace ormel::client::sqlite {

namespace {

constexpr uint16_t kLocatorSize = 44;
constexpr uint16_t kAnyNumeric = 512;
constexpr uint16_t kMoment = 36;
constexpr uint16_t kUuid = 37;
constexpr uint32_t kLargest = 65534;     // sizes from 65535 on make a large object
constexpr uint32_t kMostPrecision = 255; // what a description has room for

constexpr ColumnType kAnyText = {kClob, kLocatorSize, 0, 0};
constexpr ColumnType kAnyBytes = {kBlob, kLocatorSize, 0, 0};
constexpr ColumnType kLong = {kInt64, 8, 19, 0};
constexpr ColumnType kReal = {kDouble, 8, 0, 0};
constexpr ColumnType kInteger = {kInt32, 4, 10, 0};
constexpr ColumnType kTruth = {kBoolean, 4, 0, 0};
constexpr ColumnType kTime = {kText, kMoment, 0, 0};

ColumnType fixed(const ColumnType &type, const Declaration & /*declaration*/) {
    return type;
}

// n characters of at most four bytes, and room for a terminator.
ColumnType characters(const ColumnType &type, const Declaration &declaration) {
    const uint64_t size = 4 * uint64_t{*declaration.first} + 1;
    return size > kLargest ? kAnyText : ColumnType{type.type, static_cast<uint16_t>(size), 0, 0};
}

ColumnType charactersOrOne(const ColumnType &type, const Declaration &declaration) {
    return characters(type, {declaration.name, declaration.first.value_or(1), {}});
}

ColumnType charactersOrAny(const ColumnType &type, const Declaration &declaration) {
    return declaration.first ? characters(type, declaration) : kAnyText;
}

ColumnType bytesOrAny(const ColumnType &type, const Declaration &declaration) {
    const uint32_t size = declaration.first.value_or(kLargest + 1);
    return size > kLargest ? kAnyBytes : ColumnType{type.type, static_cast<uint16_t>(size), 0, 0};
}

// Digits, sign, point, a leading zero and room for a terminator.
ColumnType decimal(const ColumnType & /*type*/, const Declaration &declaration) {
    if (!declaration.first || *declaration.first > kLargest - 4)
        return {kText, kAnyNumeric, 0, 0};
    const auto digits = [](uint32_t number) { return static_cast<uint8_t>(std::min(number, kMostPrecision)); };
    return {kText, static_cast<uint16_t>(*declaration.first + 4), digits(*declaration.first),
            digits(declaration.second.value_or(0))};
}

struct Rule {
    std::string_view name;
    ColumnType type;
    ColumnType (*complete)(const ColumnType &type, const Declaration &declaration);
};

constexpr std::array<Rule, 60> kRules = {{
    {"INTEGER", kInteger, fixed},
    {"INT", kInteger, fixed},
    {"SMALLINT", kInteger, fixed},
    {"TINYINT", kInteger, fixed},
    {"MEDIUMINT", kInteger, fixed},
    {"INT2", kInteger, fixed},
    {"INT4", kInteger, fixed},
    {"TINYINT UNSIGNED", kInteger, fixed},
    {"SMALLINT UNSIGNED", kInteger, fixed},
    {"MEDIUMINT UNSIGNED", kInteger, fixed},
    {"BOOLEAN", kTruth, fixed},
    {"BOOL", kTruth, fixed},
    {"BIGINT", kLong, fixed},
    {"INT8", kLong, fixed},
    {"BIG INT", kLong, fixed},
    {"UNSIGNED BIG INT", kLong, fixed},
    {"BIGINT UNSIGNED", kLong, fixed},
    {"INT UNSIGNED", kLong, fixed},
    {"INTEGER UNSIGNED", kLong, fixed},
    {"UNSIGNED INT", kLong, fixed},
    {"REAL", kReal, fixed},
    {"DOUBLE", kReal, fixed},
    {"DOUBLE PRECISION", kReal, fixed},
    {"FLOAT", kReal, fixed},
    {"FLOAT4", kReal, fixed},
    {"FLOAT8", kReal, fixed},
    {"CHAR", {kChar, 0, 0, 0}, charactersOrOne},
    {"CHARACTER", {kChar, 0, 0, 0}, charactersOrOne},
    {"NCHAR", {kChar, 0, 0, 0}, charactersOrOne},
    {"NATIONAL CHAR", {kChar, 0, 0, 0}, charactersOrOne},
    {"NATIONAL CHARACTER", {kChar, 0, 0, 0}, charactersOrOne},
    {"NATIVE CHARACTER", {kChar, 0, 0, 0}, charactersOrOne},
    {"VARCHAR", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"VARCHAR2", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"NVARCHAR", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"NVARCHAR2", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"CHAR VARYING", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"CHARACTER VARYING", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"VARYING CHARACTER", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"NATIONAL VARCHAR", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"NATIONAL CHARACTER VARYING", {kVarchar, 0, 0, 0}, charactersOrAny},
    {"NUMERIC", {kText, 0, 0, 0}, decimal},
    {"DECIMAL", {kText, 0, 0, 0}, decimal},
    {"DEC", {kText, 0, 0, 0}, decimal},
    {"NUMBER", {kText, 0, 0, 0}, decimal},
    {"DATE", kTime, fixed},
    {"TIME", kTime, fixed},
    {"DATETIME", kTime, fixed},
    {"TIMESTAMP", kTime, fixed},
    {"TIME WITH TIME ZONE", kTime, fixed},
    {"TIME WITHOUT TIME ZONE", kTime, fixed},
    {"TIMESTAMP WITH TIME ZONE", kTime, fixed},
    {"TIMESTAMP WITHOUT TIME ZONE", kTime, fixed},
    {"UUID", {kText, kUuid, 0, 0}, fixed},
    {"BINARY", {kBinary, 0, 0, 0}, bytesOrAny},
    {"VARBINARY", {kVarbinary, 0, 0, 0}, bytesOrAny},
    {"BINARY VARYING", {kVarbinary, 0, 0, 0}, bytesOrAny},
    {"BLOB", kAnyBytes, fixed},
    {"LONGBLOB", kAnyBytes, fixed},
    {"BYTEA", kAnyBytes, fixed},
}};

// What stands between parentheses: "10, 2" or "20 CHAR"; a number that is none or has no room stays away.
void parseNumbers(std::string_view inside, Declaration &declaration) {
    const size_t comma = inside.find(',');
    const auto number = [](std::string_view text) -> std::optional<uint32_t> {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n+"), text.size()));
        uint32_t value = 0;
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
        return parsed.ec == std::errc() ? std::optional(value) : std::nullopt;
    };
    declaration.first = number(inside.substr(0, comma));
    if (comma != std::string_view::npos)
        declaration.second = number(inside.substr(comma + 1));
}

} // namespace

Declaration parseDeclaration(std::string_view declared) {
    Declaration declaration;
    std::string name(declared);
    const size_t open = name.find('(');
    const size_t close = name.find(')', open);
    if (open != std::string::npos && close != std::string::npos) {
        parseNumbers(declared.substr(open + 1, close - open - 1), declaration);
        name.replace(open, close - open + 1, " ");
    }
    for (const char c : upperCase(name)) {
        const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!blank)
            declaration.name += c;
        else if (!declaration.name.empty() && declaration.name.back() != ' ')
            declaration.name += ' ';
    }
    if (!declaration.name.empty() && declaration.name.back() == ' ')
        declaration.name.pop_back();
    return declaration;
}

ColumnType typeOf(const Declaration &declaration) {
    const auto *rule =
        std::find_if(kRules.begin(), kRules.end(), [&](const Rule &r) { return r.name == declaration.name; });
    return rule == kRules.end() ? kAnyText : rule->complete(rule->type, declaration);
}

ColumnType typeOfValue(int storageClass) {
    switch (storageClass) {
    case SQLITE_INTEGER:
        return kLong;
    case SQLITE_FLOAT:
        return kReal;
    case SQLITE_BLOB:
        return kAnyBytes;
    default:
        return kAnyText;
    }
}

} // namespace ormel::client::sqlite
