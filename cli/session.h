// The library started, and one connection to the database.
#pragma once

#include <memory>
#include <string>

#include <ormeldb.h>

#include "error.h"

namespace cli {

// Frees what the library handed out.
struct Release {
    void operator()(DB_RESULT *result) const { dbResClear(result); }
};
using Result = std::unique_ptr<DB_RESULT, Release>;

// Starts the library in the current directory, which is the bin/ of a home, and connects once, without the half minute
// of attempts that a server makes: a wrong configuration is told at once. Throws Failure.
class Session {
public:
    Session();
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    void *connection() const { return connection_; }

    // Commits what the connection did, or throws Failure, which says where it is not known whether it happened.
    void commit();

private:
    // Stops the library, also when a later step of the start fails.
    struct Started {
        Started();
        ~Started();
    };

    Started started_;
    void *connection_;
};

// Whether the commit that failed last may have happened all the same: its answer never came, or the disk failed.
bool isOutcomeUnknown();

// What the database said last; empty where it said nothing.
ORMEL_ERROR lastError();

// Whether what it said goes away by itself, because another process was in the way.
bool isBusy();

// A failure in these words of the database, which are what it said last, or with the log's name where they are empty,
// and what to do about it.
Failure failureInWords(const std::string &what, const std::string &words, const std::string &remedy = "");

// A failure with the database's own words, and what to do about it.
Failure databaseFailure(const std::string &what, const std::string &remedy = "");

// The same for the last error of a connection, which is also logged.
Failure connectionFailure(void *connection, const std::string &what);

// A transaction slot; rolled back unless it was committed.
class Transaction {
public:
    Transaction();
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    ORMEL_TRANS *slot() const { return slot_; }

    // Commits, or throws Failure.
    void commit();

private:
    ORMEL_TRANS *slot_;
};

} // namespace cli
