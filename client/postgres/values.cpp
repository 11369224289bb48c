#include "values.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>

#include "error.h"
#include "types.h"

namespace ormel::client::postgres {

namespace {

// Numbers travel with their highest byte first.
template <class Unsigned> std::string bigEndian(Unsigned number) {
    std::string bytes(sizeof number, '\0');
    for (size_t i = sizeof number; i-- > 0; number = static_cast<Unsigned>(number >> 7 >> 1))
        bytes[i] = static_cast<char>(number & 0xFF);
    return bytes;
}

template <class Unsigned> Unsigned fromBigEndian(const char *bytes) {
    uint64_t number = 0;
    for (size_t i = 0; i < sizeof(Unsigned); ++i)
        number = number << 8 | static_cast<uint8_t>(bytes[i]);
    return static_cast<Unsigned>(number);
}

template <class To, class From> To bitsOf(From from) {
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

// The shortest text that reads back the same.
std::string realText(double value) {
    if (std::isnan(value))
        return "NaN";
    if (std::isinf(value))
        return value > 0 ? "Infinity" : "-Infinity";
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

[[noreturn]] void misfit(const Column &column, std::string_view text) {
    refuse("22000", "column " + column.name + " has a value that is none of its type: " + std::string(text));
}

template <class Number> Number parse(const Column &column, std::string_view text) {
    Number number = {};
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size())
        misfit(column, text);
    return number;
}

// One value of a result.
struct Cell {
    const Column &column;
    Oid oid;
    bool binary;
    const char *data;
    size_t size;

    std::string_view text() const { return {data, size}; }
};

// The number of a value in binary form, which no server may shorten or lengthen.
template <class Unsigned> Unsigned binaryOf(const Cell &cell) {
    if (cell.size != sizeof(Unsigned))
        misfit(cell.column, std::to_string(cell.size) + " bytes for a number");
    return fromBigEndian<Unsigned>(cell.data);
}

int64_t booleanOf(const Cell &cell) {
    if (cell.binary)
        return binaryOf<uint8_t>(cell) != 0 ? 1 : 0;
    if (cell.text() != "t" && cell.text() != "f")
        misfit(cell.column, cell.text());
    return cell.text() == "t" ? 1 : 0;
}

int64_t integerOf(const Cell &cell) {
    if (cell.oid == kBoolOid)
        return booleanOf(cell);
    if (!cell.binary)
        return parse<int64_t>(cell.column, cell.text());
    switch (cell.oid) {
    case kInt2Oid:
        return static_cast<int16_t>(binaryOf<uint16_t>(cell));
    case kInt4Oid:
        return static_cast<int32_t>(binaryOf<uint32_t>(cell));
    case kOidOid:
        return binaryOf<uint32_t>(cell);
    case kInt8Oid:
        return static_cast<int64_t>(binaryOf<uint64_t>(cell));
    default:
        misfit(cell.column, "no integer");
    }
}

int32_t narrowOf(const Cell &cell) {
    const int64_t value = integerOf(cell);
    if (value < INT32_MIN || value > INT32_MAX)
        misfit(cell.column, std::to_string(value));
    return static_cast<int32_t>(value);
}

double realOf(const Cell &cell) {
    if (!cell.binary && cell.oid == kFloat4Oid) // the same number as in binary form
        return static_cast<double>(parse<float>(cell.column, cell.text()));
    if (!cell.binary)
        return parse<double>(cell.column, cell.text());
    if (cell.oid == kFloat4Oid)
        return static_cast<double>(bitsOf<float>(binaryOf<uint32_t>(cell)));
    if (cell.oid == kFloat8Oid)
        return bitsOf<double>(binaryOf<uint64_t>(cell));
    misfit(cell.column, "no number");
}

uint8_t hexDigit(const Cell &cell, char c) {
    uint8_t digit = 0;
    const auto parsed = std::from_chars(&c, &c + 1, digit, 16);
    if (parsed.ec != std::errc())
        misfit(cell.column, "bytes that are no hexadecimal digits");
    return digit;
}

void appendBytes(const Cell &cell, RowBuffer &rows) {
    if (cell.binary)
        return rows.appendBytes(cell.data, cell.size);
    if (cell.size < 2 || cell.size % 2 != 0 || std::memcmp(cell.data, "\\x", 2) != 0)
        misfit(cell.column, "bytes that are not in hexadecimal form");
    std::string bytes(cell.size / 2 - 1, '\0');
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(hexDigit(cell, cell.data[2 * i + 2]) << 4 | hexDigit(cell, cell.data[2 * i + 3]));
    rows.appendBytes(bytes.data(), bytes.size());
}

void append(const Cell &cell, RowBuffer &rows) {
    switch (cell.column.type) {
    case kInt32:
    case kBoolean:
        return rows.appendInt32(narrowOf(cell));
    case kInt64:
        return rows.appendInt64(integerOf(cell));
    case kDouble:
        return rows.appendDouble(realOf(cell));
    case kBlob:
        return appendBytes(cell, rows);
    case kChar: // without the blanks that fill it up
        return rows.appendBytes(cell.data, cell.text().find_last_not_of(' ') + 1);
    default:
        return rows.appendBytes(cell.data, cell.size);
    }
}

} // namespace

Arguments::Arguments(const std::vector<Oid> &types, const std::vector<Value> &values) : types_(types) {
    if (values.size() != types.size())
        refuse("08P01", "the statement has " + std::to_string(types.size()) + " parameters, but " +
                            std::to_string(values.size()) + " are bound");
    for (size_t i = 0; i < values.size(); ++i)
        add(types[i], values[i], i);
}

void Arguments::add(Oid type, const Value &value, size_t position) {
    switch (value.kind) {
    case Kind::null:
        return addNull();
    case Kind::integer:
        return addInteger(type, value.integer);
    case Kind::real:
        return addReal(type, value.real);
    case Kind::text:
        if (isPlainText(type))
            return addBytes(value.data, value.size);
        // Text ends at a NUL on the wire.
        if (std::memchr(value.data, '\0', value.size) != nullptr)
            refuse("22021", "parameter " + std::to_string(position + 1) + " holds a NUL character");
        return addText({value.data, value.size});
    case Kind::bytes:
        if (type != kByteaOid && !isPlainText(type))
            refuse("42804", "parameter " + std::to_string(position + 1) +
                                " does not take bytes; its column is none of "
                                "bytes or text");
        return addBytes(value.data, value.size);
    }
}

void Arguments::addNull() {
    values_.push_back(nullptr);
    lengths_.push_back(0);
    formats_.push_back(0);
}

void Arguments::addText(std::string text) {
    size_ += text.size();
    values_.push_back(kept_.emplace_back(std::move(text)).c_str());
    lengths_.push_back(0);
    formats_.push_back(0);
}

void Arguments::addBinary(std::string bytes) {
    const std::string &kept = kept_.emplace_back(std::move(bytes));
    addBytes(kept.data(), kept.size());
}

void Arguments::addBytes(const char *data, size_t size) {
    if (size > INT_MAX)
        refuse("54000", "a value of more than 2 GiB cannot be sent");
    size_ += size;
    values_.push_back(data);
    lengths_.push_back(static_cast<int>(size));
    formats_.push_back(1);
}

// What does not fit goes as text, so that the server refuses it in its own words.
void Arguments::addInteger(Oid type, int64_t value) {
    if (type == kInt8Oid)
        return addBinary(bigEndian(static_cast<uint64_t>(value)));
    if (type == kInt4Oid && value >= INT32_MIN && value <= INT32_MAX)
        return addBinary(bigEndian(static_cast<uint32_t>(value)));
    if (type == kInt2Oid && value >= INT16_MIN && value <= INT16_MAX)
        return addBinary(bigEndian(static_cast<uint16_t>(value)));
    if (type == kBoolOid && (value == 0 || value == 1))
        return addBinary(bigEndian(static_cast<uint8_t>(value)));
    addText(std::to_string(value));
}

void Arguments::addReal(Oid type, double value) {
    if (type == kFloat8Oid)
        return addBinary(bigEndian(bitsOf<uint64_t>(value)));
    addText(realText(value));
}

size_t appendRow(const PGresult *result, int row, const std::vector<Column> &columns, RowBuffer &rows) {
    size_t size = 0;
    try {
        for (size_t i = 0; i < columns.size(); ++i) {
            const auto column = static_cast<int>(i);
            size += static_cast<size_t>(PQgetlength(result, row, column));
            if (PQgetisnull(result, row, column) != 0)
                rows.appendNull();
            else
                append({columns[i], PQftype(result, column), PQfformat(result, column) == 1,
                        PQgetvalue(result, row, column), static_cast<size_t>(PQgetlength(result, row, column))},
                       rows);
        }
        rows.endRow();
        return size;
    } catch (...) {
        rows.dropRow();
        throw;
    }
}

} // namespace ormel::client::postgres
