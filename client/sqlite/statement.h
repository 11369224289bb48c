// A prepared statement, its execution and its rows.
#pragma once

#include <deque>
#include <optional>

#include "engine.h"
#include "handles.h"
#include "sql_text.h"
#include "transaction.h"

namespace ormel::client::sqlite {

class StatementCache;

class SqliteStatement final : public Statement {
public:
    SqliteStatement(Transaction &transaction, StatementCache &cache, std::string sql, Role role, OwnedStatement handle)
        : transaction_(transaction), cache_(cache), sql_(std::move(sql)), role_(role), handle_(std::move(handle)) {}
    ~SqliteStatement() override;
    SqliteStatement(const SqliteStatement &) = delete;
    SqliteStatement &operator=(const SqliteStatement &) = delete;

    uint64_t execute(const std::vector<Value> &values, uint32_t readAhead) override;
    uint64_t executeBatch(const Batch &batch) override;
    const std::vector<Column> &columns() const override { return columns_; }
    bool fetch(RowBuffer &rows) override;
    void close() noexcept override;

private:
    sqlite3_stmt *raw() const { return handle_.get(); }
    sqlite3 *database() const { return sqlite3_db_handle(raw()); }
    bool givesRows() const { return sqlite3_column_count(raw()) > 0; }
    bool writes() const { return role_ != Role::apart && sqlite3_stmt_readonly(raw()) == 0; }
    void begin(size_t values);
    void bind(const std::vector<Value> &values);
    void read();
    uint64_t write();
    uint64_t writeRow(const Transaction::Write &write, const Batch &batch, uint32_t row);
    void keepWhatChanged(Transaction::Write &write) const;
    uint64_t matched() const;
    void accept(int result);
    void finish() noexcept;

    Transaction &transaction_;
    StatementCache &cache_;
    std::string sql_;
    Role role_;
    OwnedStatement handle_;
    std::vector<Column> columns_;
    bool onRow_ = false;             // SQLite stands on a row that was not handed over yet
    std::optional<Error> failure_;   // of the step to the next row
    uint64_t transactionNumber_ = 0; // of the execution
    std::deque<std::string> kept_;   // values that a query uses while its rows are read
};

} // namespace ormel::client::sqlite
