// A statement, its execution and its rows.
#pragma once

#include "connection.h"
#include "sql_text.h"
#include "values.h"

namespace ormel::client::postgres {

class PostgresStatement final : public Statement {
public:
    PostgresStatement(PostgresConnection &connection, std::string sql, Role role, Description description, bool fresh)
        : connection_(connection), sql_(std::move(sql)), role_(role), description_(std::move(description)),
          fresh_(fresh) {}
    ~PostgresStatement() override;
    PostgresStatement(const PostgresStatement &) = delete;
    PostgresStatement &operator=(const PostgresStatement &) = delete;

    uint64_t execute(const std::vector<Value> &values, uint32_t readAhead) override;
    uint64_t executeBatch(const Batch &batch) override;
    const std::vector<Column> &columns() const override { return executed_ ? description_.columns : noColumns_; }
    bool fetch(RowBuffer &rows) override;
    void close() noexcept override;

private:
    bool isQuery() const { return role_ == Role::query; }
    uint64_t run(const std::vector<Value> &values, uint32_t readAhead);
    bool isGone() const { return generation_ != connection_.generation(); }
    void noteFailure(const Error &error);
    bool describeAnew();
    bool hasChanged();
    void open(const Arguments &arguments, uint32_t readAhead);
    uint64_t change(const Arguments &arguments);
    uint64_t sendRows(const Batch &batch, uint32_t first, uint32_t count);
    void leaveBatch() noexcept;
    void read(uint32_t rows);
    uint32_t nextStep() const;

    PostgresConnection &connection_;
    std::string sql_;
    Role role_;
    Description description_;
    uint64_t generation_ = connection_.generation(); // of the description
    bool fresh_;                                     // the description is not older than this statement
    bool stale_ = false;                             // the table has outgrown it: nobody is to have it next
    bool executed_ = false;
    std::string cursor_; // its name, where one is open
    uint64_t transactionNumber_ = 0;
    OwnedResult rows_; // fetched, and from row_ on not handed over yet
    int row_ = 0;
    bool more_ = false; // the cursor may have rows behind these
    const std::vector<Column> noColumns_;
};

} // namespace ormel::client::postgres
