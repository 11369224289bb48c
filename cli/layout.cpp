#include "layout.h"

#include <algorithm>
#include <array>
#include <limits>

#include "home.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

constexpr size_t kLongestName = ORMEL_NAME_SIZE - 1;
constexpr const char *kTables = "ormel sql \"SELECT DISTINCT TABLE_NAME FROM USER_TAB_COLUMNS\" lists the tables";
constexpr const char *kDecimals[] = {"numeric", "decimal", "dec", "number"};

// What an engine writes for a decimal number that has no digits, and what it reads as the same.
struct Word {
    std::string_view engine;
    std::string_view written;
    std::string_view read;
};
constexpr Word kWords[] = {
    {"sqlite", "inf", "1e999"},           {"sqlite", "-inf", "-1e999"},           {"postgres", "NaN", "NaN"},
    {"postgres", "Infinity", "Infinity"}, {"postgres", "-Infinity", "-Infinity"},
};

bool isNameByte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
           c == '.' || (c & 0x80) != 0;
}

struct FreeStatement {
    void operator()(void *statement) const { dbFreeStmt(statement); }
};

std::string textOf(const DB_FIELD &cell) {
    return cell.pValue == nullptr ? "" : static_cast<const char *>(cell.pValue);
}

// The types that the catalogue knows the columns of a table by; none where it does not know the table.
std::map<std::string, std::string> declaredTypes(void *connection, const std::string &table) {
    std::map<std::string, std::string> types;
    {
        const std::unique_ptr<void, FreeStatement> statement(dbSelectAtt1(connection, table.c_str()));
        std::array<DB_FIELD, 4> cells{}; // column, type, length, position
        while (statement != nullptr && dbMoveNext(statement.get()) != 0 &&
               dbGetFields(statement.get(), cells.data(), cells.size()) == ORMEL_OK) {
            types[textOf(cells[0])] = textOf(cells[1]);
            dbFieldClear(cells.data(), cells.size());
        }
    }
    dbRollbackTrans(connection); // a transaction that has read rows could not wait for a writer any more
    return types;
}

// What helps where the table cannot be described: only where there is none, its name is wrong.
std::string describeRemedy() {
    const ORMEL_ERROR error = lastError();
    const std::string_view words = error.acText;
    const bool isAbsent =
        std::string_view(error.acClass) == "42P01" || words.find("no such table") != std::string_view::npos;
    return isAbsent ? kTables : "";
}

std::string columnNames(std::span<const ORMEL_RES_ATT_FIELD> columns) {
    std::string names;
    for (const ORMEL_RES_ATT_FIELD &column : columns)
        names += (names.empty() ? "" : ", ") + std::string(column.attname);
    return names;
}

} // namespace

void checkTableName(const std::string &table) {
    if (table.empty() || !std::all_of(table.begin(), table.end(), isNameByte))
        throw UsageError("'" + table +
                         "' is no table name: letters, digits, '_', '$' and '.' make one, without quotes");
    if (table.size() > kLongestName)
        throw UsageError("the table name '" + table + "' has " + std::to_string(table.size()) +
                         " bytes; the library carries " + std::to_string(kLongestName) + ", so give it a shorter name");
}

Layout::Layout(const Session &session, const std::string &table)
    : table_(table), engine_(configuredEngine()),
      descriptor_(ORMEL_CreatResAtt(session.connection(), table.c_str(), nullptr)) {
    if (descriptor_ == nullptr)
        throw databaseFailure("cannot describe the table " + table, describeRemedy());
    declared_ = declaredTypes(session.connection(), table);
}

std::span<const ORMEL_RES_ATT_FIELD> Layout::columns() const {
    return {descriptor_->astField, static_cast<size_t>(descriptor_->iAttNum)};
}

size_t Layout::find(const std::string &column) const {
    if (column.size() > kLongestName)
        throw UsageError("the column name '" + column + "' has " + std::to_string(column.size()) +
                         " bytes; the library carries " + std::to_string(kLongestName) + ", so use the command sql");
    const uint32_t found = ORMEL_GetFieldIdByNameFromResAttr(descriptor_.get(), column.c_str());
    if (found == ORMEL_INVALID)
        throw UsageError(table_ + " has no column '" + column + "'; it has " + columnNames(columns()));
    return found;
}

std::vector<size_t> Layout::positions(const std::vector<std::string> &columns) const {
    std::vector<size_t> result;
    for (const std::string &column : columns) {
        const size_t position = find(column);
        if (std::find(result.begin(), result.end(), position) != result.end())
            throw UsageError("the column " + column + " is named twice; name it once");
        result.push_back(position);
    }
    return result;
}

uint8_t Layout::position(const std::string &column) const {
    const size_t found = find(column);
    if (found > std::numeric_limits<uint8_t>::max())
        throw UsageError("the column " + column + " is beyond the 256th of " + table_ +
                         ", where conditions and assignments do not reach; use the command sql");
    return static_cast<uint8_t>(found);
}

size_t Layout::recordLength() const {
    const ORMEL_RES_ATT_FIELD &last = columns().back();
    return static_cast<size_t>(last.offset) + static_cast<size_t>(last.len);
}

std::string Layout::typeName(size_t position) const {
    const auto found = declared_.find(columns()[position].attname);
    return found == declared_.end() || found->second.empty() ? cli::typeName(type(position)) : found->second;
}

bool Layout::isUndeclared(size_t position) const {
    const auto found = declared_.find(columns()[position].attname);
    return found != declared_.end() && found->second.empty();
}

// Decimal numbers travel as text, as dates do: only the declaration tells them apart.
bool Layout::isDecimal(size_t position) const {
    if (type(position) != QDC_TYPE_TEXT)
        return false;
    const std::string name = lowerCase(typeName(position));
    return std::any_of(std::begin(kDecimals), std::end(kDecimals), [&](const char *known) { return name == known; });
}

bool Layout::isNumber(size_t position) const {
    return cli::isNumber(type(position)) || isDecimal(position);
}

Heading Layout::heading(size_t position) const {
    return {columns()[position].attname, isNumber(position) ? Align::right : Align::left};
}

// The text that stands for a value on its way to the database. Throws ValueError where it is no decimal number.
std::string_view Layout::sent(size_t position, std::string_view text) const {
    if (!isDecimal(position))
        return text;
    for (const Word &word : kWords)
        if (word.engine == engine_ && word.written == text)
            return word.read;
    checkDecimal(text);
    return text;
}

void Layout::parse(size_t position, std::string_view text, std::span<uint8_t> field) const {
    parseValue(type(position), sent(position, text), field);
}

std::string Layout::encode(size_t position, std::string_view text) const {
    return encodeValue(type(position), sent(position, text), static_cast<size_t>(columns()[position].len));
}

std::string Layout::largeObjects() const {
    std::vector<ORMEL_RES_ATT_FIELD> found;
    std::copy_if(columns().begin(), columns().end(), std::back_inserter(found), [](const ORMEL_RES_ATT_FIELD &column) {
        return isLargeObject(static_cast<uint32_t>(column.atttypid));
    });
    return columnNames(found);
}

void Layout::checkBytes(size_t position, std::string_view bytes) const {
    if (isDecimal(position))
        checkDecimal(bytes);
    cli::checkBytes(type(position), bytes, static_cast<size_t>(columns()[position].len));
}

void Layout::checkRecordFits() const {
    constexpr size_t kLongest = std::numeric_limits<decltype(ORMEL_RECORD_BUFFER::usRecLen)>::max();
    if (recordLength() > kLongest)
        throw Failure("a record of " + table_ + " has " + std::to_string(recordLength()) +
                      " bytes, a record buffer holds " + std::to_string(kLongest) + "; use the command sql");
}

Records::Records(const Layout &layout, size_t count)
    : length_(layout.recordLength()), bytes_(layout.recordLength() * count) {
    buffer_.usRecLen = static_cast<uint16_t>(length_);
    buffer_.usRecNum = static_cast<uint16_t>(count);
    buffer_.uiBufSize = static_cast<uint32_t>(bytes_.size());
    buffer_.pucData = bytes_.data();
}

std::span<uint8_t> Records::field(size_t record, const ORMEL_RES_ATT_FIELD &column) {
    const size_t start = record * length_ + static_cast<size_t>(column.offset);
    return std::span(bytes_).subspan(start, static_cast<size_t>(column.len));
}

} // namespace cli
