#include "values.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <new>
#include <string>

#include "error.h"
#include "types.h"

namespace ormel::client::sqlite {

namespace {

// A value of the statement's current row, and the column that it must fit.
struct Cell {
    sqlite3_stmt *statement;
    int index;
    const Column &column;

    int storageClass() const { return sqlite3_column_type(statement, index); }
    int64_t integer() const { return sqlite3_column_int64(statement, index); }
    double real() const { return sqlite3_column_double(statement, index); }
};

// Without an exponent where people write none, and never shorter than what reads back as the same number.
std::string realText(double value) {
    const double magnitude = std::fabs(value);
    const bool plain = magnitude == 0 || (magnitude >= 1e-5 && magnitude < 1e17);
    std::array<char, 64> text = {};
    const auto end = plain ? std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed)
                           : std::to_chars(text.begin(), text.end(), value);
    return {text.begin(), end.ptr};
}

std::string held(const Cell &cell) {
    switch (cell.storageClass()) {
    case SQLITE_INTEGER:
        return "the integer " + std::to_string(cell.integer());
    case SQLITE_FLOAT:
        return "the number " + realText(cell.real());
    case SQLITE_TEXT:
        return "text";
    default:
        return "bytes";
    }
}

[[noreturn]] void misfit(const Cell &cell, const char *expected) {
    refuse(SQLITE_MISMATCH, "column " + cell.column.name + " is declared as " + expected + ", but a row holds " +
                                held(cell) + "; declare the column as what it holds, or mend the row");
}

void appendInt32(const Cell &cell, RowBuffer &rows) {
    using Limits = std::numeric_limits<int32_t>;
    const int64_t value = cell.integer();
    if (cell.storageClass() != SQLITE_INTEGER || value < Limits::min() || value > Limits::max())
        misfit(cell, "an integer of 32 bits");
    rows.appendInt32(static_cast<int32_t>(value));
}

void appendBoolean(const Cell &cell, RowBuffer &rows) {
    const int64_t value = cell.integer();
    if (cell.storageClass() != SQLITE_INTEGER || value < 0 || value > 1)
        misfit(cell, "a boolean, 0 or 1");
    rows.appendInt32(static_cast<int32_t>(value));
}

void appendInt64(const Cell &cell, RowBuffer &rows) {
    if (cell.storageClass() != SQLITE_INTEGER)
        misfit(cell, "an integer of 64 bits");
    rows.appendInt64(cell.integer());
}

// An integer is widened where a double holds it exactly.
void appendDouble(const Cell &cell, RowBuffer &rows) {
    constexpr int64_t exact = int64_t{1} << std::numeric_limits<double>::digits;
    const bool integer = cell.storageClass() == SQLITE_INTEGER && cell.integer() >= -exact && cell.integer() <= exact;
    if (!integer && cell.storageClass() != SQLITE_FLOAT)
        misfit(cell, "a double");
    rows.appendDouble(cell.real());
}

// Text in UTF-8, whatever the database's encoding, or bytes.
void appendStored(const Cell &cell, RowBuffer &rows) {
    const void *data = cell.storageClass() == SQLITE_TEXT ? sqlite3_column_text(cell.statement, cell.index)
                                                          : sqlite3_column_blob(cell.statement, cell.index);
    const auto size = static_cast<size_t>(sqlite3_column_bytes(cell.statement, cell.index));
    if (data == nullptr && (size != 0 || cell.storageClass() == SQLITE_TEXT))
        throw std::bad_alloc();
    rows.appendBytes(data != nullptr ? data : "", size);
}

void appendText(const Cell &cell, RowBuffer &rows) {
    std::string text;
    if (cell.storageClass() == SQLITE_INTEGER)
        text = std::to_string(cell.integer());
    else if (cell.storageClass() == SQLITE_FLOAT)
        text = realText(cell.real());
    else
        return appendStored(cell, rows);
    rows.appendBytes(text.data(), text.size());
}

void appendBytes(const Cell &cell, RowBuffer &rows) {
    if (cell.storageClass() == SQLITE_INTEGER || cell.storageClass() == SQLITE_FLOAT)
        misfit(cell, "bytes");
    appendStored(cell, rows);
}

void append(const Cell &cell, RowBuffer &rows) {
    if (cell.storageClass() == SQLITE_NULL)
        return rows.appendNull();
    switch (cell.column.type) {
    case kInt32:
        return appendInt32(cell, rows);
    case kBoolean:
        return appendBoolean(cell, rows);
    case kInt64:
        return appendInt64(cell, rows);
    case kDouble:
        return appendDouble(cell, rows);
    case kBinary:
    case kVarbinary:
    case kBlob:
        return appendBytes(cell, rows);
    default:
        return appendText(cell, rows);
    }
}

int bindReal(sqlite3_stmt *statement, int placeholder, double value) {
    if (std::isnan(value))
        refuse(SQLITE_MISMATCH, "parameter " + std::to_string(placeholder) +
                                    " is not a number, and SQLite would keep NULL in its place");
    return sqlite3_bind_double(statement, placeholder, value);
}

int bind(sqlite3_stmt *statement, int placeholder, const Value &value) {
    switch (value.kind) {
    case Kind::integer:
        return sqlite3_bind_int64(statement, placeholder, value.integer);
    case Kind::real:
        return bindReal(statement, placeholder, value.real);
    case Kind::text:
        return sqlite3_bind_text64(statement, placeholder, value.data, value.size, SQLITE_STATIC, SQLITE_UTF8);
    case Kind::bytes:
        return sqlite3_bind_blob64(statement, placeholder, value.data, value.size, SQLITE_STATIC);
    default:
        return sqlite3_bind_null(statement, placeholder);
    }
}

} // namespace

void bindValue(sqlite3_stmt *statement, int placeholder, const Value &value) {
    if (bind(statement, placeholder, value) != SQLITE_OK)
        fail(sqlite3_db_handle(statement), "parameter " + std::to_string(placeholder));
}

void appendRow(sqlite3_stmt *statement, const std::vector<Column> &columns, RowBuffer &rows) {
    try {
        for (size_t i = 0; i < columns.size(); ++i)
            append({statement, static_cast<int>(i), columns[i]}, rows);
        rows.endRow();
    } catch (...) {
        rows.dropRow();
        throw;
    }
}

} // namespace ormel::client::sqlite
