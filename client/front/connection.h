// A connection handle of the client: its settings, its statements and its last error.
#pragma once

#include <list>

#include "engine.h"
#include "process.h"
#include "statement.h"

namespace ormel::client {

class ConnectionHandle {
public:
    ~ConnectionHandle() { disconnect(); }

    void setSslMode(uint32_t mode);
    void connect(const char *address, const char *user, const char *password);
    // In a child that inherited the connection: lets go of it without a word to the database.
    void disconnect() noexcept;

    bool isInherited() const { return connection_ != nullptr && process_ != processNumber(); }
    // Throws Error where it is: two processes that speak on one connection would take each other's answers.
    void requireOwn() const;

    // The database's side; throws Error when there is none.
    Connection &open() const;
    const Dialect &dialect() const { return dialect_; }

    StatementHandle &addStatement();
    void freeStatement(StatementHandle &statement) noexcept;

    void begin() { open().begin(); }
    void commit();
    void rollback();

    // The last failure, kept until the next.
    void setError(uint32_t code, std::string message) noexcept;
    void setError(uint32_t code, const char *constantText) noexcept;
    uint32_t errorCode() const { return errorCode_; }
    const char *errorText() const { return errorText_; }

private:
    void cutStatements() noexcept;

    Settings settings_;
    Dialect dialect_ = {};
    std::unique_ptr<Connection> connection_; // NULL: not connected
    uint64_t process_ = 0;                   // which connected
    // Also those whose owner lost them: they end with the connection.
    std::list<StatementHandle> statements_;
    uint32_t errorCode_ = 0;
    std::string errorMessage_;
    const char *errorText_ = "";
};

} // namespace ormel::client
