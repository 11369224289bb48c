// A connection to a database file.
#pragma once

#include "engine.h"
#include "handles.h"
#include "statement_cache.h"
#include "transaction.h"

namespace ormel::client::sqlite {

// Which file a name stands for; another one may have taken its place.
struct FileIdentity {
    uint64_t device = 0;
    uint64_t node = 0;
    bool operator==(const FileIdentity &) const = default;
};

// What statements would do, as SQLite tells while it prepares them.
struct Actions {
    bool endTransactions = false; // or begin them
    bool alterConnection = false; // by something that a rollback leaves
};

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
    bool recycle() noexcept override;
    bool alive() noexcept override;

private:
    OwnedStatement compile(std::string_view sql);

    std::string file_;
    OwnedDatabase database_;
    FileIdentity identity_;
    Transaction transaction_;
    StatementCache statements_; // closed before the database
    Actions actions_;           // of the last text
    bool altered_ = false;      // by something that a rollback leaves
};

} // namespace ormel::client::sqlite
