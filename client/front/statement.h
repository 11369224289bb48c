// A statement handle of the client: a text, its parameters and its rows.
#pragma once

#include <array>

#include "engine.h"
#include "parameters.h"

struct QDC_COLUMN_DESC;

namespace ormel::client {

class ConnectionHandle;

class StatementHandle {
public:
    explicit StatementHandle(ConnectionHandle &connection) : connection_(connection) {}
    ~StatementHandle() { drop(); }
    StatementHandle(const StatementHandle &) = delete;
    StatementHandle &operator=(const StatementHandle &) = delete;

    ConnectionHandle &connection() const { return connection_; }

    void setReadAhead(uint32_t rows) { readAhead_ = rows > 0 ? rows : 1; }
    void setRows(uint32_t rows) { rows_ = rows; }
    void prepare(const char *sql);
    void bind(uint32_t position, const Parameter &parameter);
    uint32_t writeLob(uint32_t position, uint32_t type, uint32_t row, const void *data, uint32_t length);
    void execute();
    bool fetch();
    uint32_t affectedRows() const { return affected_; }
    uint32_t columnCount() const;
    void describe(uint32_t column, QDC_COLUMN_DESC &desc) const;
    void describe(const char *name, QDC_COLUMN_DESC &desc) const;

    // A value of the current row, or the locator of a large one.
    void column(uint32_t column, void **data, uint32_t *size, uint32_t *isNull);
    // Bytes of a large object of the current row from an offset on, and how many there are.
    const uint8_t *lob(const void *locator, uint32_t type, uint32_t offset, uint64_t &size) const;

    // The transaction ends: rows that were not read ahead are lost.
    void cut() noexcept;
    // The connection ends.
    void drop() noexcept;

private:
    static constexpr size_t kLocatorSize = 44;
    static constexpr uint32_t kDefaultReadAhead = 16;
    enum class State { idle, open, ended, cut };

    Statement &prepared() const;
    const std::vector<Column> &columns() const;
    void run();
    void readAhead(uint32_t rows);

    ConnectionHandle &connection_;
    std::unique_ptr<Statement> statement_; // NULL before prepare and after the connection ended
    Parameters parameters_;
    uint32_t rows_ = 1; // of the parameter set
    uint32_t readAhead_ = kDefaultReadAhead;
    uint32_t affected_ = 0;
    State state_ = State::idle;
    RowBuffer buffer_;
    std::vector<Cell> row_;                                   // the current row; empty: none
    std::vector<std::array<uint8_t, kLocatorSize>> locators_; // their addresses name the columns of the current row
};

} // namespace ormel::client
