// A connection to a database file.
#pragma once

#include "engine.h"
#include "handles.h"
#include "statement_cache.h"
#include "transaction.h"

namespace ormel::client::sqlite {

class SqliteConnection final : public Connection {
public:
    // Opens the file, which comes into being if need be; its folder does not.
    SqliteConnection(const std::string &file, std::chrono::milliseconds patience);
    SqliteConnection(const SqliteConnection &) = delete;
    SqliteConnection &operator=(const SqliteConnection &) = delete;

    std::unique_ptr<Statement> prepare(const std::string &sql) override;

    // Nothing needs to begin: SQLite's transaction begins with the first row or change.
    void begin() override {}
    void commit() override { transaction_.commit(); }
    void rollback() override { transaction_.rollback(); }

private:
    OwnedStatement compile(std::string_view sql);

    OwnedDatabase database_;
    Transaction transaction_;
    StatementCache statements_; // closed before the database
};

} // namespace ormel::client::sqlite
