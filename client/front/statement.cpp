#include "statement.h"

#include <algorithm>
#include <strings.h>

#include "connection.h"
#include "dao/qdc.h"
#include "errors.h"
#include "placeholders.h"

namespace ormel::client {

namespace {

constexpr uint16_t kClob = 13;
constexpr uint16_t kBlob = 14;

bool isLob(const Column &column) {
    return column.type == kClob || column.type == kBlob;
}

bool isFixedWidth(uint16_t type) {
    return type == 1 || type == 2 || type == 3 || type == 25;
}

uint32_t saturated(uint64_t count) {
    return static_cast<uint32_t>(std::min<uint64_t>(count, UINT32_MAX));
}

// The parameter set of a statement, as engines see it.
class BoundBatch : public Batch {
public:
    BoundBatch(const Parameters &parameters, uint32_t rows) : parameters_(parameters), rows_(rows) {}
    uint32_t rows() const override { return rows_; }
    uint32_t columns() const override { return parameters_.count(); }
    Value at(uint32_t row, uint32_t column) const override { return parameters_.at(row, column); }
    std::string place(uint32_t row, uint32_t column) const override { return parameters_.place(row, column); }

private:
    const Parameters &parameters_;
    uint32_t rows_;
};

} // namespace

Statement &StatementHandle::prepared() const {
    if (statement_ == nullptr)
        fail(kMisuse, "the statement is not prepared");
    return *statement_;
}

const std::vector<Column> &StatementHandle::columns() const {
    static const std::vector<Column> none;
    return statement_ != nullptr ? statement_->columns() : none;
}

void StatementHandle::prepare(const char *sql) {
    drop();
    Connection &connection = connection_.open();
    const Rewritten rewritten = rewritePlaceholders(sql, connection_.dialect());
    statement_ = connection.prepare(rewritten.sql);
    parameters_.reset(rewritten.parameters, sql);
}

void StatementHandle::bind(uint32_t position, const Parameter &parameter) {
    prepared();
    parameters_.bind(position, parameter);
}

uint32_t StatementHandle::writeLob(uint32_t position, uint32_t type, uint32_t row, const void *data, uint32_t length) {
    return parameters_.writeLob(position, type, row, std::max(rows_, 1U), data, length);
}

void StatementHandle::execute() {
    Statement &statement = prepared();
    state_ = State::idle;
    affected_ = 0;
    buffer_.clear();
    row_.clear();
    statement.close();
    parameters_.check(rows_);
    if (rows_ == 0)
        return;
    try {
        run();
    } catch (...) {
        statement.close();
        buffer_.clear();
        state_ = State::idle;
        throw;
    }
}

void StatementHandle::run() {
    if (rows_ > 1 || parameters_.areOfSet()) {
        affected_ = saturated(statement_->executeBatch(BoundBatch(parameters_, rows_)));
        return;
    }
    std::vector<Value> values;
    values.reserve(parameters_.count());
    for (uint32_t position = 0; position < parameters_.count(); ++position)
        values.push_back(parameters_.at(0, position));
    affected_ = saturated(statement_->execute(values, readAhead_));
    if (statement_->columns().empty())
        return;
    state_ = State::open;
    locators_.assign(statement_->columns().size(), {});
    row_.reserve(statement_->columns().size()); // a row that was read ahead can be taken whatever happens
    readAhead(readAhead_);
    affected_ = static_cast<uint32_t>(buffer_.rows());
}

void StatementHandle::readAhead(uint32_t rows) {
    for (uint32_t i = 0; i < rows && state_ == State::open; ++i)
        if (!statement_->fetch(buffer_))
            state_ = State::ended;
}

bool StatementHandle::fetch() {
    if (state_ == State::idle)
        fail(kMisuse, "the statement has no rows: it was not executed, or is no query");
    row_.clear();
    if (buffer_.rows() == 0) {
        if (state_ == State::cut)
            fail(kResultLost, "the transaction has ended, and with it the rows that were not read yet");
        if (state_ == State::open) {
            try {
                readAhead(1);
            } catch (...) {
                buffer_.dropRow();
                throw;
            }
        }
    }
    row_.resize(columns().size());
    if (buffer_.take(row_))
        return true;
    row_.clear();
    return false;
}

uint32_t StatementHandle::columnCount() const {
    return static_cast<uint32_t>(columns().size());
}

void StatementHandle::describe(uint32_t column, QDC_COLUMN_DESC &desc) const {
    if (column >= columns().size())
        fail(kMisuse, "the result has " + std::to_string(columns().size()) + " columns and none at position " +
                          std::to_string(column));
    const Column &found = columns()[column];
    desc = {found.name.c_str(),
            found.size,
            found.type,
            found.precision,
            found.scale,
            static_cast<uint8_t>(found.nullable ? 1 : 0),
            static_cast<uint8_t>(isFixedWidth(found.type) ? 1 : 0)};
}

void StatementHandle::describe(const char *name, QDC_COLUMN_DESC &desc) const {
    for (uint32_t i = 0; i < columns().size(); ++i)
        if (strcasecmp(columns()[i].name.c_str(), name) == 0)
            return describe(i, desc);
    fail(kMisuse, std::string("the result has no column ") + name);
}

void StatementHandle::column(uint32_t column, void **data, uint32_t *size, uint32_t *isNull) {
    if (column >= row_.size())
        fail(kMisuse, row_.empty() ? std::string("there is no current row")
                                   : "the row has no column at position " + std::to_string(column));
    const Cell &cell = row_[column];
    if (cell.size > UINT32_MAX)
        fail(kValue, "column " + columns()[column].name + ": a value of more than 4 GiB cannot be read");
    *isNull = cell.null ? 1 : 0;
    *size = static_cast<uint32_t>(cell.size);
    if (!cell.null && isLob(columns()[column]))
        *data = locators_[column].data();
    else
        *data = const_cast<uint8_t *>(cell.data);
}

const uint8_t *StatementHandle::lob(const void *locator, uint32_t type, uint32_t offset, uint64_t &size) const {
    for (size_t i = 0; i < row_.size(); ++i) {
        if (locators_[i].data() != locator || row_[i].null || columns()[i].type != type)
            continue;
        size = offset < row_[i].size ? row_[i].size - offset : 0;
        return row_[i].data + std::min<uint64_t>(offset, row_[i].size);
    }
    fail(kMisuse, "the locator belongs to no large object of this kind in the current row");
}

void StatementHandle::cut() noexcept {
    if (state_ != State::open)
        return;
    statement_->close();
    state_ = State::cut;
}

void StatementHandle::drop() noexcept {
    row_.clear();
    buffer_.clear();
    if (connection_.isInherited())
        leaveInherited(std::move(statement_));
    statement_.reset();
    state_ = State::idle;
    affected_ = 0;
}

} // namespace ormel::client
