// A connection to a server.
#pragma once

#include "columns.h"
#include "statement_cache.h"

namespace ormel::client::postgres {

class PostgresConnection final : public Connection {
public:
    // Patience: how long a connect may take.
    PostgresConnection(OwnedConnection connection, std::chrono::milliseconds patience)
        : session_(std::move(connection), patience), columns_(session_) {}

    std::unique_ptr<Statement> prepare(const std::string &sql) override;

    // A transaction begins together with its first statement, at no cost of its own.
    void begin() override {}
    void commit() override { session_.commit(); }
    void rollback() override { session_.rollback(); }
    bool recycle() noexcept override;
    bool alive() noexcept override;

    // For the connection's statements.
    Session &session() { return session_; }
    // Asks the server what it makes of a text.
    Description describe(const std::string &sql, bool query);
    // Describes the columns of a result.
    void learnColumns(const PGresult *result, Description &description);
    // A statement of this text is done.
    void giveBack(std::string sql, Description description) noexcept;
    // What was prepared under a name, or opened, is not needed any longer.
    void drop(const std::string &name) noexcept;
    void closeCursor(const std::string &name) noexcept;
    // The server has dropped all that was prepared. Descriptions of another generation name statements that are gone.
    void forgetPrepared() noexcept;
    uint64_t generation() const { return generation_; }

private:
    Session session_;
    ColumnReader columns_;
    StatementCache statements_;
    uint64_t generation_ = 0;
    bool altered_ = false; // by something that a rollback may leave
    bool spoilt_ = false;  // by something that nothing undoes
};

} // namespace ormel::client::postgres
