#include "support.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <sstream>

namespace ormel::client::postgres {

namespace {

template <class Number> std::string plain(const Cell &cell) {
    Number value = {};
    EXPECT_EQ(cell.size, sizeof value);
    std::memcpy(&value, cell.data, std::min<size_t>(cell.size, sizeof value));
    // Enough digits for every double.
    std::ostringstream text;
    text << std::setprecision(17) << value;
    return text.str();
}

Text written(const Cell &cell, uint16_t type) {
    if (cell.null)
        return {};
    switch (type) {
    case kInt32:
    case kBoolean:
        return plain<int32_t>(cell);
    case kInt64:
        return plain<int64_t>(cell);
    case kDouble:
        return plain<double>(cell);
    default:
        return std::string(reinterpret_cast<const char *>(cell.data), cell.size);
    }
}

} // namespace

OwnedResult resultOf(const std::vector<Field> &fields) {
    OwnedResult result(PQmakeEmptyPGresult(nullptr, PGRES_TUPLES_OK));
    std::string name = "c";
    std::vector<PGresAttDesc> columns;
    for (const Field &field : fields)
        columns.push_back({name.data(), 0, 0, field.format, field.oid, -1, field.modifier});
    EXPECT_EQ(PQsetResultAttrs(result.get(), static_cast<int>(columns.size()), columns.data()), 1);
    for (size_t i = 0; i < fields.size(); ++i) {
        std::string value = fields[i].value.value_or("");
        const int length = fields[i].value ? static_cast<int>(value.size()) : -1;
        EXPECT_EQ(PQsetvalue(result.get(), 0, static_cast<int>(i), value.data(), length), 1);
    }
    return result;
}

std::vector<Column> columnsOf(const std::vector<Field> &fields) {
    std::vector<Column> columns;
    for (const Field &field : fields) {
        const ColumnType type = typeOf(field.oid, field.modifier);
        columns.push_back(
            {"C" + std::to_string(columns.size()), type.type, type.size, type.precision, type.scale, true});
    }
    return columns;
}

std::vector<Text> nextRow(RowBuffer &rows, const std::vector<Column> &columns) {
    std::vector<Cell> cells(columns.size());
    std::vector<Text> row;
    if (!rows.take(cells))
        return row;
    for (size_t i = 0; i < cells.size(); ++i)
        row.push_back(written(cells[i], columns[i].type));
    return row;
}

} // namespace ormel::client::postgres
