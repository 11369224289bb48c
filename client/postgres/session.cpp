#include "session.h"

#include <cerrno>
#include <chrono>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

#include "error.h"
#include "pipeline.h"

namespace ormel::client::postgres {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kFailedTransaction[] = "25P02";
constexpr char kConnectionLost[] = "08006";
constexpr char kOutcomeUnknown[] = "08007";
constexpr char kDrop[] = "DEALLOCATE ";
constexpr std::chrono::milliseconds kLongestAnswer(2000); // most often it has come long before anybody asks

} // namespace

void Session::failLost(const char *what) const {
    refuse(kConnectionLost, std::string(what) + ": " + wordsOf(raw()));
}

void Session::dropLater(const std::string &name) {
    if (!name.empty())
        later_.push_back(kDrop + name);
}

void Session::abandon() noexcept {
    shutdown(PQsocket(raw()), SHUT_RDWR);
}

void Session::forgetDrops() noexcept {
    std::erase_if(later_, [](const std::string &command) { return command.starts_with(kDrop); });
}

// What the server has prepared outlives the transaction, and so does the wish to drop it.
void Session::forgetLaterOfTransaction() noexcept {
    std::erase_if(later_, [](const std::string &command) { return !command.starts_with(kDrop); });
}

void Session::endTransaction() noexcept {
    forgetLaterOfTransaction();
    ++number_;
}

void Session::commit() {
    forgetLaterOfTransaction();
    const PGTransactionStatusType status = PQtransactionStatus(raw());
    if (PQstatus(raw()) == CONNECTION_BAD) {
        endTransaction();
        refuse(kConnectionLost, "nothing was committed: the connection was lost before");
    }
    if (status == PQTRANS_IDLE)
        return endTransaction();
    if (status == PQTRANS_INERROR) {
        rollback();
        refuse(kFailedTransaction,
               "nothing was committed: a statement of the transaction had failed, and it was rolled "
               "back");
    }
    const std::string outcome = sendCommit();
    endTransaction();
    if (outcome != "COMMIT")
        refuse(kFailedTransaction, "nothing was committed: the transaction was rolled back");
}

// Returns what the server says that it did.
std::string Session::sendCommit() {
    try {
        Pipeline pipeline(*this, Pipeline::Begin::no);
        pipeline.run("COMMIT");
        return PQcmdStatus(pipeline.finish()[0].get());
    } catch (const Error &error) {
        if (PQstatus(raw()) == CONNECTION_BAD) {
            endTransaction();
            refuse(kOutcomeUnknown,
                   "the connection broke while the transaction was being committed, and its outcome is "
                   "unknown: " +
                       error.message);
        }
        rollback(); // where it never came to the commit
        refuse(stateOf(error), "nothing was committed: " + std::string(wordsIn(error)));
    }
}

void Session::rollback() {
    const bool open = inTransaction();
    endTransaction();
    if (!open)
        return;
    Pipeline pipeline(*this, Pipeline::Begin::no);
    pipeline.run("ROLLBACK");
    pipeline.finish();
}

void Session::failTransaction() {
    Pipeline pipeline(*this, Pipeline::Begin::yes);
    pipeline.run("ROLLBACK TO SAVEPOINT ormel_none");
    try {
        pipeline.finish();
    } catch (const Error &) {
        return; // there is no such savepoint, which is what fails it
    }
}

void Session::sendRollback() {
    const bool open = inTransaction();
    endTransaction();
    if (open && PQsendQuery(raw(), "ROLLBACK") != 1)
        failLost("the transaction cannot be ended");
    answerDue_ = open;
    answerEnd_ = Clock::now() + std::min(kLongestAnswer, patience_);
}

bool Session::settle() noexcept {
    if (!std::exchange(answerDue_, false))
        return true;
    if (!waitForAnswer())
        return false;
    bool rolledBack = false;
    while (const OwnedResult result{PQgetResult(raw())})
        rolledBack = PQresultStatus(result.get()) == PGRES_COMMAND_OK;
    return rolledBack && !inTransaction();
}

// The time runs from when the rollback was sent: where many kept connections have fallen silent, a connect that asks
// one after the other waits no longer than for the first.
bool Session::waitForAnswer() noexcept {
    while (PQisBusy(raw()) == 1) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(answerEnd_ - Clock::now()).count();
        pollfd entry = {PQsocket(raw()), POLLIN, 0};
        const int ready = poll(&entry, 1, std::max(0, static_cast<int>(rest)));
        if (ready == 0 || (ready < 0 && errno != EINTR) || (ready > 0 && PQconsumeInput(raw()) != 1))
            return false;
    }
    return true;
}

} // namespace ormel::client::postgres
