// A connection on the wire, its transaction, and what is to be sent along with the next commands.
#pragma once

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "handles.h"

namespace ormel::client::postgres {

class Session {
public:
    // Patience: how long a connect may take.
    Session(OwnedConnection connection, std::chrono::milliseconds patience)
        : connection_(std::move(connection)), patience_(patience) {}

    PGconn *raw() const { return connection_.get(); }

    // Another number is another transaction: cursors of one are none of the next.
    uint64_t number() const { return number_; }
    bool inTransaction() const { return PQtransactionStatus(raw()) != PQTRANS_IDLE; }

    void commit();
    void rollback();
    // Leaves a transaction in which the server refuses all statements, as it does after one that failed.
    void failTransaction();
    // Sends a rollback whose answer nobody waits for until the session is used again.
    void sendRollback();
    // Takes that answer off the wire. False where it did not come soon after that, or is another one.
    bool settle() noexcept;

    // A command that can wait until others travel; it is forgotten when the transaction ends before that.
    void later(std::string command) { later_.push_back(std::move(command)); }
    // Likewise for a prepared statement that is not needed any longer, whatever becomes of the transaction.
    void dropLater(const std::string &name);
    // Nothing is prepared any longer.
    void forgetDrops() noexcept;

    // Gives the connection up where it cannot be left as it must be: what is open on it ends as if the server were
    // gone.
    void abandon() noexcept;

    // Notes how large a message was. libpq keeps room for the largest for as long as the connection lives.
    void noteMessage(size_t size) noexcept { largest_ = std::max(largest_, size); }
    size_t largestMessage() const { return largest_; }

    // A name that the connection has not used yet, and that no user is likely to think of.
    std::string newName(char kind) { return std::string("ormel_") + kind + std::to_string(++names_); }

private:
    friend class Pipeline;

    void forgetLaterOfTransaction() noexcept;
    void endTransaction() noexcept;
    std::string sendCommit();
    bool waitForAnswer() noexcept;
    [[noreturn]] void failLost(const char *what) const;

    OwnedConnection connection_;
    std::chrono::milliseconds patience_;
    std::vector<std::string> later_;
    uint64_t number_ = 0;
    uint64_t names_ = 0;
    size_t largest_ = 0;
    bool answerDue_ = false; // to a rollback
    std::chrono::steady_clock::time_point answerEnd_;
};

} // namespace ormel::client::postgres
