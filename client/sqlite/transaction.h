// The transaction of a connection.
//
// It holds nothing until it has seen a row or changed something. Reads therefore run outside of SQLite's transactions;
// the first row makes the snapshot that the read holds the transaction's own, by a BEGIN while the read is under way. A
// write takes the write lock before it runs, and gives it back when it has changed nothing.
#pragma once

#include <chrono>
#include <cstdint>
#include <sqlite3.h>

namespace ormel::client::sqlite {

class Transaction {
public:
    // Patience: how long to wait for a lock.
    Transaction(sqlite3 *database, std::chrono::milliseconds patience) : database_(database), patience_(patience) {}

    // Throws where SQLite itself has rolled back what the transaction had changed: work that goes on would be
    // committed without what came before it.
    void requireWhole();

    // Another number is another transaction: rows of one are not to be read in the next.
    uint64_t number();

    // The current read has found a row.
    void sawRow();

    void commit();
    void rollback();

    // A statement that writes, for as long as it runs.
    class Write {
    public:
        explicit Write(Transaction &transaction); // takes the write lock, unless there is a snapshot to be kept
        ~Write();
        Write(const Write &) = delete;
        Write &operator=(const Write &) = delete;

        // Steps the statement; with a snapshot, SQLite takes the lock only now, and does not wait for it by itself.
        int step(sqlite3_stmt *statement) const;
        // Whether rows have changed, by whatever means, since the statement began.
        bool rowsChanged() const;
        // Something has changed: the lock stays until the transaction ends.
        void keep() { transaction_.changed_ = true; }

    private:
        Transaction &transaction_;
        int64_t changesBefore_;
    };

private:
    bool open() const { return sqlite3_get_autocommit(database_) == 0; }
    void notice();
    void end();
    void releaseLock() noexcept;

    sqlite3 *database_;
    std::chrono::milliseconds patience_;
    bool seen_ = false;    // rows, whose snapshot is held
    bool changed_ = false; // and not committed
    bool lost_ = false;    // changes, by SQLite's own rollback
    uint64_t number_ = 0;
};

// Undoes on destruction what was done since, unless it was released.
class Savepoint {
public:
    explicit Savepoint(sqlite3 *database);
    ~Savepoint();
    Savepoint(const Savepoint &) = delete;
    Savepoint &operator=(const Savepoint &) = delete;

    void release();

private:
    sqlite3 *database_; // NULL: released
};

} // namespace ormel::client::sqlite
