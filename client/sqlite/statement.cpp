#include "statement.h"

#include "columns.h"
#include "error.h"
#include "statement_cache.h"
#include "values.h"

namespace ormel::client::sqlite {

SqliteStatement::~SqliteStatement() {
    finish();
    // A PRAGMA does its work while it is prepared.
    if (role_ != Role::apart)
        cache_.give(std::move(sql_), std::move(handle_));
}

void SqliteStatement::finish() noexcept {
    sqlite3_reset(raw());
    sqlite3_clear_bindings(raw());
    kept_.clear();
    onRow_ = false;
}

void SqliteStatement::close() noexcept {
    finish();
    failure_.reset();
}

void SqliteStatement::begin(size_t values) {
    close();
    columns_.clear();
    transaction_.requireWhole();
    transactionNumber_ = transaction_.number();
    const auto expected = static_cast<size_t>(sqlite3_bind_parameter_count(raw()));
    if (values != expected)
        refuse(SQLITE_RANGE, "the statement has " + std::to_string(expected) + " parameters, but " +
                                 std::to_string(values) + " are bound");
}

// The caller's memory is good while execute runs; rows may be read long after.
void SqliteStatement::bind(const std::vector<Value> &values) {
    const bool keep = givesRows();
    for (size_t i = 0; i < values.size(); ++i) {
        Value value = values[i];
        if (keep && (value.kind == Kind::text || value.kind == Kind::bytes))
            value.data = kept_.emplace_back(value.data, value.size).data();
        bindValue(raw(), static_cast<int>(i) + 1, value);
    }
}

// Takes the outcome of a step. What is over is given up at once, with all memory and locks that it holds.
void SqliteStatement::accept(int result) {
    if (result == SQLITE_ROW) {
        onRow_ = true;
        return;
    }
    if (result != SQLITE_DONE)
        failure_ = lastError(database());
    finish();
}

uint64_t SqliteStatement::execute(const std::vector<Value> &values, uint32_t /*readAhead*/) {
    begin(values.size());
    bind(values);
    uint64_t rows = 0;
    if (writes())
        rows = write();
    else
        read();
    columns_ = describeColumns(raw(), sql_);
    return rows;
}

void SqliteStatement::read() {
    accept(sqlite3_step(raw()));
    if (failure_)
        throw *failure_;
    if (onRow_ && role_ != Role::apart)
        transaction_.sawRow();
}

uint64_t SqliteStatement::write() {
    Transaction::Write write(transaction_);
    accept(write.step(raw()));
    keepWhatChanged(write);
    if (failure_)
        throw *failure_;
    return matched();
}

// Changes of rows are counted, at the end of their statement: one that gives rows has changed them. Of anything else
// that succeeded it is not known.
void SqliteStatement::keepWhatChanged(Transaction::Write &write) const {
    if (onRow_ || write.rowsChanged() || (role_ != Role::change && !failure_))
        write.keep();
}

// The count that SQLite keeps is of the last change of rows, and of a query not complete before its end.
uint64_t SqliteStatement::matched() const {
    return role_ == Role::change && !givesRows() ? static_cast<uint64_t>(sqlite3_changes64(database())) : 0;
}

uint64_t SqliteStatement::executeBatch(const Batch &batch) {
    begin(batch.columns());
    if (givesRows())
        refuse(SQLITE_MISUSE, "a statement that gives rows cannot run for a set of parameter rows");
    if (batch.rows() == 0)
        return 0;
    Transaction::Write write(transaction_);
    Savepoint savepoint(database());
    uint64_t rows = 0;
    for (uint32_t row = 0; row < batch.rows(); ++row)
        rows += writeRow(write, batch, row);
    savepoint.release();
    keepWhatChanged(write);
    return rows;
}

uint64_t SqliteStatement::writeRow(const Transaction::Write &write, const Batch &batch, uint32_t row) {
    uint32_t column = 0;
    try {
        for (; column < batch.columns(); ++column)
            bindValue(raw(), static_cast<int>(column) + 1, batch.at(row, column));
        accept(write.step(raw()));
        if (failure_)
            throw *failure_;
        return matched();
    } catch (Error &error) {
        const bool bound = column == batch.columns();
        error.message.insert(0, (bound ? "row " + std::to_string(row) : batch.place(row, column)) + ": ");
        throw;
    }
}

bool SqliteStatement::fetch(RowBuffer &rows) {
    if (onRow_ && transaction_.number() != transactionNumber_) {
        finish();
        failure_ =
            Error{SQLITE_ABORT_ROLLBACK, "the transaction has ended, and with it the rows that were not read yet"};
    }
    if (failure_)
        throw *failure_;
    if (!onRow_)
        return false;
    appendRow(raw(), columns_, rows);
    // One step ahead, so that SQLite does not hold a copy of the last row beside the one that was handed over.
    accept(sqlite3_step(raw()));
    return true;
}

} // namespace ormel::client::sqlite
