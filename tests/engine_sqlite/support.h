// A database in a folder of its own, and short ways to use it.
#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "engine.h"

extern "C" ormel::client::Engine *ormel_engine();

namespace ormel::client::sqlite {

using Text = std::optional<std::string>; // of a value; nothing for NULL
using TextRow = std::vector<Text>;

Value integer(int64_t value);
Value real(double value);
// The text must outlive the value.
Value text(std::string_view value);
Value bytes(std::string_view value);

// Runs a statement and returns the rows it matched.
uint64_t run(Connection &connection, const std::string &sql, const std::vector<Value> &values = {});

// All rows, each value written out.
std::vector<TextRow> query(Connection &connection, const std::string &sql, const std::vector<Value> &values = {});

// The columns of a query.
std::vector<Column> columnsOf(Connection &connection, const std::string &sql);

// The next row, written out; empty at the end.
TextRow nextRow(Statement &statement);

// What the work throws; fails the test if it throws nothing.
template <class Work> Error errorOf(Work work) {
    try {
        work();
    } catch (const Error &error) {
        return error;
    }
    ADD_FAILURE() << "no error";
    return {};
}

// The rows of a parameter set, each as long as the first.
class Rows : public Batch {
public:
    explicit Rows(std::vector<std::vector<Value>> rows) : rows_(std::move(rows)) {}
    uint32_t rows() const override { return static_cast<uint32_t>(rows_.size()); }
    uint32_t columns() const override { return rows_.empty() ? 0 : static_cast<uint32_t>(rows_[0].size()); }
    Value at(uint32_t row, uint32_t column) const override { return rows_[row][column]; }
    std::string place(uint32_t row, uint32_t column) const override {
        return "row " + std::to_string(row) + ", column " + std::to_string(column);
    }

private:
    std::vector<std::vector<Value>> rows_;
};

class DatabaseTest : public testing::Test {
protected:
    DatabaseTest();
    ~DatabaseTest() override;

    std::string path(const std::string &name) const { return folder_ + "/" + name; }
    std::unique_ptr<Connection> connect(const std::string &busyTimeout = "");

    // Makes a table and commits.
    void create(const std::string &sql);

    Settings settings_;

private:
    std::string folder_;
};

} // namespace ormel::client::sqlite
