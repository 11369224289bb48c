#include "support.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "sqlite/types.h"

namespace ormel::client::sqlite {

namespace {

template <class Number> std::string plain(const Cell &cell) {
    Number value = {};
    EXPECT_EQ(cell.size, sizeof value);
    std::memcpy(&value, cell.data, std::min<size_t>(cell.size, sizeof value));
    return std::to_string(value);
}

Text written(const Cell &cell, const Column &column) {
    if (cell.null)
        return {};
    switch (column.type) {
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

Value integer(int64_t value) {
    return {Kind::integer, kInt64, value, 0, nullptr, 0};
}

Value real(double value) {
    return {Kind::real, kDouble, 0, value, nullptr, 0};
}

Value text(std::string_view value) {
    return {Kind::text, kVarchar, 0, 0, value.data(), value.size()};
}

Value bytes(std::string_view value) {
    return {Kind::bytes, kBlob, 0, 0, value.data(), value.size()};
}

uint64_t run(Connection &connection, const std::string &sql, const std::vector<Value> &values) {
    return connection.prepare(sql)->execute(values, 1);
}

TextRow nextRow(Statement &statement) {
    RowBuffer buffer;
    if (!statement.fetch(buffer))
        return {};
    EXPECT_EQ(buffer.rows(), 1U);
    std::vector<Cell> cells(statement.columns().size());
    buffer.take(cells);
    TextRow row;
    for (size_t i = 0; i < cells.size(); ++i)
        row.push_back(written(cells[i], statement.columns()[i]));
    return row;
}

std::vector<TextRow> query(Connection &connection, const std::string &sql, const std::vector<Value> &values) {
    const auto statement = connection.prepare(sql);
    EXPECT_EQ(statement->execute(values, 1), 0U);
    std::vector<TextRow> rows;
    for (TextRow row = nextRow(*statement); !row.empty(); row = nextRow(*statement))
        rows.push_back(row);
    return rows;
}

std::vector<Column> columnsOf(Connection &connection, const std::string &sql) {
    const auto statement = connection.prepare(sql);
    statement->execute({}, 1);
    return statement->columns();
}

DatabaseTest::DatabaseTest() {
    std::string folder = (std::filesystem::temp_directory_path() / "ormel-engine-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        ADD_FAILURE() << "no folder " << folder;
    folder_ = folder;
    settings_.config["db.dbname"] = path("test.db");
}

DatabaseTest::~DatabaseTest() {
    std::filesystem::remove_all(folder_);
}

std::unique_ptr<Connection> DatabaseTest::connect(const std::string &busyTimeout) {
    Settings settings = settings_;
    settings.config["client.busy_timeout_ms"] = busyTimeout;
    return ormel_engine()->connect(settings);
}

void DatabaseTest::create(const std::string &sql) {
    const auto connection = connect();
    run(*connection, sql);
    connection->commit();
}

} // namespace ormel::client::sqlite
