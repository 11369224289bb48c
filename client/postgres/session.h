// A connection on the wire: commands that travel together, and the transaction that they belong to.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "handles.h"
#include "values.h"

namespace ormel::client::postgres {

class Session {
public:
    explicit Session(OwnedConnection connection) : connection_(std::move(connection)) {}

    PGconn *raw() const { return connection_.get(); }

    // Another number is another transaction: cursors of one are none of the next.
    uint64_t number() const { return number_; }
    bool inTransaction() const { return PQtransactionStatus(raw()) != PQTRANS_IDLE; }

    void commit();
    void rollback();

    // A command that can wait until others travel; it is forgotten when the transaction ends before that.
    void later(std::string command) { later_.push_back(std::move(command)); }
    // Likewise for a prepared statement that is not needed any longer, whatever becomes of the transaction.
    void dropLater(const std::string &name);

    // Forgets all of what waits: the session is being cleaned.
    void forgetLater() noexcept;

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
    [[noreturn]] void failLost(const char *what) const;

    OwnedConnection connection_;
    std::vector<std::string> later_;
    uint64_t number_ = 0;
    uint64_t names_ = 0;
    size_t largest_ = 0;
};

// Commands that are sent as one and answered as one; when one fails, those behind it are not run.
class Pipeline {
public:
    enum class Begin { no, yes }; // a transaction, where none has begun

    Pipeline(Session &session, Begin begin);
    ~Pipeline();
    Pipeline(const Pipeline &) = delete;
    Pipeline &operator=(const Pipeline &) = delete;

    void run(const std::string &sql);
    void run(const std::string &sql, const Arguments &arguments);
    // Rows come in binary form, or as text.
    void runForRows(const std::string &sql, bool binary);
    void prepare(const std::string &name, const std::string &sql);
    void describe(const std::string &name);
    void execute(const std::string &name, const Arguments &arguments, bool binary);

    // Waits for the answers, one for each command, and throws the Error of the first that failed. failed, if given,
    // receives its position.
    std::vector<OwnedResult> finish(size_t *failed = nullptr);

private:
    // Has a place for an answer before its command is sent: once it is, nothing must fail but the command itself.
    void expect() { results_.emplace_back(); }
    void sent(int accepted);
    void send(const char *sql);
    void begin(PGTransactionStatusType status, Begin begin);
    OwnedResult next();
    void drain() noexcept;

    Session &session_;
    std::vector<OwnedResult> results_;
    size_t before_ = 0;   // commands of the session's own
    size_t commands_ = 0; // all of them
    bool synced_ = false; // the end was sent
    bool done_ = false;
};

} // namespace ormel::client::postgres
