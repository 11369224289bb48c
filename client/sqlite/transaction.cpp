#include "transaction.h"

#include <algorithm>
#include <thread>

#include "error.h"
#include "handles.h"

namespace ormel::client::sqlite {

namespace {

// How a commit that failed with the code has ended. Of these it is known that the log was not written to its end; after
// any other, an opening that recovers the log may find the transaction whole in it.
const char *outcomeOf(uint32_t code) {
    for (const int known : {SQLITE_BUSY, SQLITE_CONSTRAINT, SQLITE_FULL})
        if ((code & 0xFF) == static_cast<uint32_t>(known))
            return "; the transaction was rolled back";
    return "; the transaction was rolled back, but the log on the disk may bring it back: look before repeating it";
}

bool tryRun(sqlite3 *database, const char *sql) noexcept {
    return sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

} // namespace

// Some failures (no space left, an input/output error, a conflict clause ROLLBACK) end SQLite's transaction.
void Transaction::notice() {
    if (open() || !(seen_ || changed_))
        return;
    lost_ = changed_;
    end();
}

void Transaction::end() {
    seen_ = false;
    changed_ = false;
    ++number_;
}

void Transaction::requireWhole() {
    notice();
    if (lost_)
        refuse(SQLITE_ABORT_ROLLBACK,
               "an error made the database roll this transaction back; roll back and repeat it from its beginning");
}

uint64_t Transaction::number() {
    notice();
    return number_;
}

void Transaction::sawRow() {
    if (!open())
        run(database_, "BEGIN");
    seen_ = true;
}

void Transaction::commit() {
    notice();
    const bool lost = lost_;
    lost_ = false;
    if (lost)
        refuse(SQLITE_ABORT_ROLLBACK,
               "nothing was committed: an error had made the database roll the transaction back");
    if (open() && !tryRun(database_, "COMMIT")) {
        Error error = lastError(database_, "commit");
        error.message += outcomeOf(error.code);
        tryRun(database_, "ROLLBACK");
        end();
        throw error;
    }
    end();
}

void Transaction::rollback() {
    lost_ = false;
    end();
    if (open())
        run(database_, "ROLLBACK");
}

// Gives the write lock back, and keeps the snapshot if rows were seen: a commit leaves it to a read that is under way.
void Transaction::releaseLock() noexcept {
    if (!seen_) {
        tryRun(database_, "ROLLBACK");
        return;
    }
    if (sqlite3_txn_state(database_, nullptr) != SQLITE_TXN_WRITE)
        return;
    sqlite3_stmt *raw = nullptr;
    sqlite3_prepare_v2(database_, "SELECT count(*) FROM main.sqlite_schema", -1, &raw, nullptr);
    const OwnedStatement read(raw);
    if (sqlite3_step(raw) == SQLITE_ROW && tryRun(database_, "COMMIT"))
        tryRun(database_, "BEGIN");
}

Transaction::Write::Write(Transaction &transaction)
    : transaction_(transaction), changesBefore_(sqlite3_total_changes64(transaction.database_)) {
    if (!transaction.open())
        run(transaction.database_, "BEGIN IMMEDIATE");
}

Transaction::Write::~Write() {
    if (!transaction_.changed_ && transaction_.open())
        transaction_.releaseLock();
}

int Transaction::Write::step(sqlite3_stmt *statement) const {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds longestPause(25);
    const auto deadline = Clock::now() + transaction_.patience_;
    for (std::chrono::milliseconds pause(1);; pause = std::min(pause * 2, longestPause)) {
        const int result = sqlite3_step(statement);
        if (result != SQLITE_BUSY || Clock::now() >= deadline)
            return result;
        std::this_thread::sleep_for(pause);
    }
}

bool Transaction::Write::rowsChanged() const {
    return sqlite3_total_changes64(transaction_.database_) != changesBefore_;
}

Savepoint::Savepoint(sqlite3 *database) : database_(database) {
    run(database, "SAVEPOINT ormel_batch");
}

Savepoint::~Savepoint() {
    if (database_ == nullptr)
        return;
    tryRun(database_, "ROLLBACK TO ormel_batch");
    tryRun(database_, "RELEASE ormel_batch");
}

void Savepoint::release() {
    run(database_, "RELEASE ormel_batch");
    database_ = nullptr;
}

} // namespace ormel::client::sqlite
