#include "support/tables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>

#include <ormeldb/base.h>

#include "support/engine.h"

namespace database {

namespace {

template <class T> std::string bytesOf(T value) {
    return {reinterpret_cast<const char *>(&value), sizeof value};
}

template <class T, size_t n> const T &oneOf(Random &random, const std::array<T, n> &values) {
    return values[below(random, n)];
}

// The extremes and what lies about zero, or any number of bits.
template <class T> T number(Random &random) {
    using Limits = std::numeric_limits<T>;
    if (below(random, 2) == 0)
        return oneOf(random, std::array<T, 6>{Limits::min(), Limits::max(), 0, 1, -1, Limits::min() + 1});
    const auto value = static_cast<T>(random() >> below(random, 64));
    return below(random, 2) == 0 ? value : static_cast<T>(~value);
}

std::string integer(Random &random, size_t) {
    return bytesOf(number<int32_t>(random));
}

std::string smallInteger(Random &random, size_t) {
    return bytesOf(int32_t{number<int16_t>(random)});
}

std::string bigInteger(Random &random, size_t) {
    return bytesOf(number<int64_t>(random));
}

std::string boolean(Random &random, size_t) {
    return bytesOf(static_cast<int32_t>(below(random, 2)));
}

std::string real(Random &random, size_t) {
    using Limits = std::numeric_limits<double>;
    static constexpr std::array<double, 14> special = {0.0,
                                                       -0.0,
                                                       1.0,
                                                       -1.0,
                                                       0.1,
                                                       1.0 / 3,
                                                       9007199254740993.0,
                                                       Limits::min(),
                                                       Limits::max(),
                                                       Limits::lowest(),
                                                       Limits::denorm_min(),
                                                       -Limits::denorm_min(),
                                                       Limits::infinity(),
                                                       -Limits::infinity()};
    if (below(random, 2) == 0)
        return bytesOf(oneOf(random, special));
    for (;;) {
        const uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isnan(value))
            return bytesOf(value);
    }
}

// Characters of one to four bytes, none of them NUL or blank.
std::string characters(Random &random, size_t count) {
    static constexpr std::array<const char *, 9> wide = {
        "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x90\xAB", "'", "\"", "\\", "%", ":", "\x01"};
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        if (below(random, 4) == 0)
            text += oneOf(random, wide);
        else
            text += static_cast<char>(33 + below(random, 94));
    }
    return text;
}

// Empty, as wide as the column, what looks like a number, or any.
std::string text(Random &random, size_t longest) {
    switch (below(random, 6)) {
    case 0:
        return "";
    case 1: {
        std::string full;
        for (size_t i = 0; i < longest; ++i)
            full += "\xF0\x9F\x90\xAB";
        return full;
    }
    case 2:
        return std::string("007").substr(0, longest);
    case 3:
        return characters(random, longest);
    default:
        return characters(random, below(random, longest + 1));
    }
}

constexpr size_t kDecimals = 4;

// No more digits than are kept, and no zeros that say nothing.
std::string decimal(Random &random, size_t digits) {
    std::string text = std::to_string(1 + below(random, 9));
    for (uint64_t more = below(random, digits); more > 0; --more)
        text += static_cast<char>('0' + below(random, 10));
    const uint64_t decimals = below(random, kDecimals + 1);
    if (decimals > 0 && decimals <= text.size() && text.back() != '0')
        text.insert(text.size() - decimals, decimals == text.size() ? "0." : ".");
    return below(random, 2) == 0 ? text : "-" + text;
}

// With all of the column's decimals.
std::string filledUp(const std::string &decimal) {
    const size_t point = decimal.find('.');
    if (point == std::string::npos)
        return decimal + "." + std::string(kDecimals, '0');
    return decimal + std::string(kDecimals - (decimal.size() - point - 1), '0');
}

std::string date(Random &random, size_t) {
    static constexpr std::array<const char *, 3> special = {"0001-01-01", "9999-12-31", "2024-02-29"};
    if (below(random, 3) == 0)
        return oneOf(random, special);
    std::array<char, 16> text = {};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02u", static_cast<unsigned>(1000 + below(random, 9000)),
                  static_cast<unsigned>(1 + below(random, 12)), static_cast<unsigned>(1 + below(random, 28)));
    return text.data();
}

// A third of them zeros, and any number of them at the end.
std::string bytesUpTo(Random &random, size_t longest) {
    std::string bytes(below(random, 3) == 0 ? longest : below(random, longest + 1), '\0');
    const size_t filled = below(random, 3) == 0 ? below(random, bytes.size() + 1) : bytes.size();
    std::generate_n(bytes.begin(), filled, [&] { return below(random, 3) == 0 ? '\0' : static_cast<char>(random()); });
    return bytes;
}

// Lengths about those in which large objects are read and announced, most of them small.
size_t largeLength(Random &random, size_t longest) {
    static constexpr std::array<size_t, 12> edges = {0, 1, 43, 44, 45, 999, 1000, 1001, 2000, 65534, 65535, 65536};
    return below(random, 3) == 0 ? oneOf(random, edges) : below(random, longest + 1);
}

std::string largeText(Random &random, size_t longest) {
    const size_t length = largeLength(random, longest);
    std::string text = characters(random, std::min<size_t>(length, 1001));
    while (text.size() < length)
        text += text;
    // Not in the midst of a character: what follows its first byte begins with the bits 10.
    size_t end = length;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        ++end;
    return text.substr(0, end);
}

std::string largeBytes(Random &random, size_t longest) {
    std::string bytes = bytesUpTo(random, 1000);
    bytes.resize(largeLength(random, longest), '\x7F');
    return bytes;
}

const std::vector<Kind> &kinds() {
    static const std::vector<Kind> all = [] {
        std::vector<Kind> kinds = {
            {"INTEGER", QDC_TYPE_INT32, 4, 0, integer},        {"SMALLINT", QDC_TYPE_INT32, 4, 0, smallInteger},
            {"BIGINT", QDC_TYPE_INT64, 8, 0, bigInteger},      {"BOOLEAN", QDC_TYPE_BOOL, 4, 0, boolean},
            {"DOUBLE", QDC_TYPE_DOUBLE, 8, 0, real},           {"CHAR(7)", QDC_TYPE_CHAR, 29, 7, text},
            {"VARCHAR(1)", QDC_TYPE_VARCHAR, 5, 1, text},      {"VARCHAR(40)", QDC_TYPE_VARCHAR, 161, 40, text},
            {"NUMERIC(19,4)", QDC_TYPE_TEXT, 23, 15, decimal}, {"DATE", QDC_TYPE_TEXT, 36, 0, date},
            {"TEXT", QDC_TYPE_CLOB, 44, 3000, largeText},      {"BLOB", QDC_TYPE_BLOB, 44, 3000, largeBytes},
        };
        if (engine().lacks(Feature::fixedBytes) == nullptr) {
            kinds.push_back({"BINARY(9)", QDC_TYPE_BINARY, 9, 9, bytesUpTo});
            kinds.push_back({"VARBINARY(300)", QDC_TYPE_VARBINARY, 300, 300, bytesUpTo});
        }
        return kinds;
    }();
    return all;
}

// Letters of both cases and underscores, with a number at the end that keeps names apart, and from reserved words.
std::string name(Random &random, size_t number) {
    static const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
    const std::string end = std::to_string(number);
    const size_t longest = ORMEL_NAME_SIZE - 1 - end.size();
    std::string name;
    const size_t length = below(random, 3) == 0 ? longest : 1 + below(random, longest);
    while (name.size() < length)
        name += letters[below(random, letters.size())];
    return name + end;
}

// Without large objects in every second table, so that records can write it.
Kind randomKind(Random &random, bool large) {
    for (;;) {
        const Kind &kind = kinds()[below(random, kinds().size())];
        if (large || !kind.large())
            return kind;
    }
}

} // namespace

uint64_t below(Random &random, uint64_t bound) {
    return std::uniform_int_distribution<uint64_t>(0, bound - 1)(random);
}

bool Kind::text() const {
    return type == QDC_TYPE_CHAR || type == QDC_TYPE_VARCHAR || type == QDC_TYPE_TEXT;
}

bool Kind::large() const {
    return type == QDC_TYPE_CLOB || type == QDC_TYPE_BLOB;
}

bool Kind::takesEmpty() const {
    return (make != decimal && make != date) || engine().lacks(Feature::emptyNumbers) == nullptr;
}

bool Kind::bytes() const {
    return type == QDC_TYPE_BINARY || type == QDC_TYPE_VARBINARY;
}

std::string Table::creation() const {
    std::string sql = "CREATE TABLE " + name + " (";
    for (const Column &column : columns)
        sql += (&column == &columns.front() ? "" : ", ") + column.name + " " + column.kind.declared;
    return sql + ")";
}

bool Table::hasLarge() const {
    return std::any_of(columns.begin(), columns.end(), [](const Column &column) { return column.kind.large(); });
}

Table randomTable(Random &random, size_t columns, size_t rows) {
    static size_t tables = 0;
    Table table = {name(random, ++tables), {{name(random, 0), kinds().front()}}, {}};
    const bool large = below(random, 2) == 0;
    for (size_t i = 1; i < columns; ++i) {
        const bool everyKind = large && columns > kinds().size() && i < kinds().size();
        table.columns.push_back({name(random, i), everyKind ? kinds()[i] : randomKind(random, large)});
    }
    std::shuffle(table.columns.begin() + 1, table.columns.end(), random);
    // Records write a NULL as nothing at all, which not every column takes.
    const bool byRecords = !table.hasLarge();
    std::set<std::string> keys;
    while (keys.size() < rows)
        keys.insert(integer(random, 0));
    for (const std::string &key : keys) {
        Row row = {key};
        for (size_t i = 1; i < columns; ++i) {
            const Kind &kind = table.columns[i].kind;
            const bool null = below(random, 8) == 0 && (!byRecords || kind.takesEmpty());
            row.push_back(null ? std::nullopt : Cell(kind.make(random, kind.longest)));
        }
        table.rows.push_back(std::move(row));
    }
    std::shuffle(table.rows.begin(), table.rows.end(), random);
    return table;
}

Cell kept(const Column &column, const Cell &cell) {
    const bool zero = column.kind.type == QDC_TYPE_DOUBLE && cell == bytesOf(-0.0);
    if (zero && engine().lacks(Feature::negativeZero) != nullptr)
        return bytesOf(0.0);
    if (cell && column.kind.make == decimal && engine().lacks(Feature::numericAsWritten) != nullptr)
        return filledUp(*cell);
    return cell;
}

std::string fieldOf(const Column &column, const Cell &cell) {
    std::string field = cell.value_or("");
    field.resize(column.kind.width, '\0');
    return field;
}

} // namespace database
