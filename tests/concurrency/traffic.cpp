#include "traffic.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "refusal.h"
#include "support/database.h"

namespace concurrency {

using database::Batch;
using database::Cursor;
using database::CursorRow;
using database::Object;
using database::Result;
using database::Transaction;

namespace {

constexpr int kThreads = 32; // of each kind
constexpr int32_t kBatch = 5;
constexpr uint64_t kBusyAccounts = 6; // money is moved among them, so that movers meet

// What one thread does, and with what chance.
class Worker {
public:
    Worker(int process, uint64_t seed, int thread, Figures &figures)
        : figures_(figures), nextId_((int64_t{process} * 1000 + thread) * 1000000) {
        std::seed_seq sequence{seed >> 32, seed & UINT32_MAX, uint64_t(process), uint64_t(thread)};
        chance_.seed(sequence);
    }

    void useSlots() {
        error_.forget();
        choose(4) == 0 ? readAll() : move();
    }

    void callPlainly() {
        static constexpr void (Worker::*calls[])() = {&Worker::insert, &Worker::insertBatch, &Worker::remove,
                                                      &Worker::select, &Worker::describe};
        (this->*calls[choose(std::size(calls))])();
    }

private:
    uint64_t choose(uint64_t below) { return chance_() % below; }

    // Makes a call; whether it succeeded. What fails for another reason than others in the way, or tells of that by
    // another code than the call's, is a failure of the test.
    template <class Call, class... Arguments>
    bool done(const char *what, std::span<const uint32_t> codes, Call call, Arguments &&...arguments) {
        error_.forget();
        const uint32_t code = std::invoke(call, std::forward<Arguments>(arguments)...);
        if (code == ORMEL_OK)
            return true;
        EXPECT_TRUE(error_.isRefusal() && std::find(codes.begin(), codes.end(), code) != codes.end())
            << what << ": " << code << ", the database: " << error_.text();
        ++figures_.refused;
        return false;
    }

    // After a transaction or a cursor could not begin. A full table of slots is an answer: others will give theirs
    // back.
    void wait() {
        EXPECT_TRUE(error_.isNone() || error_.isRefusal()) << error_.text();
        ++figures_.full;
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + choose(5)));
    }

    // --- On slots ---

    struct Move {
        int32_t from;
        int32_t to;
        int64_t amount;
    };

    // Mostly in one order; the other one runs into locks that wait for each other.
    Move chooseMove() {
        const uint64_t one = choose(kBusyAccounts);
        const uint64_t other = (one + 1 + choose(kBusyAccounts - 1)) % kBusyAccounts;
        const auto [low, high] = std::minmax(one, other);
        const bool ordered = choose(8) != 0;
        return {static_cast<int32_t>(ordered ? low : high), static_cast<int32_t>(ordered ? high : low),
                static_cast<int64_t>(choose(100)) - 50};
    }

    // Money goes from one account to another. A move that was refused is the next one again, from its beginning.
    void move() {
        Transaction transaction;
        if (transaction == nullptr)
            return wait();
        if (!pending_)
            pending_ = chooseMove();
        if (change(transaction, *pending_) && done("commit", kCommitCodes, &Transaction::commit, transaction)) {
            pending_.reset();
            ++figures_.moves;
        }
    }

    // The accounts are changed before they are read, and so are this transaction's from then on. One that looks first
    // has a snapshot, which may be too old to write.
    bool change(ORMEL_TRANS *transaction, const Move &move) {
        int64_t source = 0;
        int64_t target = 0;
        const bool looks = choose(10) == 0;
        return (!looks || balanceOf(transaction, move.from, source)) && touch(transaction, move.from) &&
               touch(transaction, move.to) && balanceOf(transaction, move.from, source) &&
               balanceOf(transaction, move.to, target) && set(transaction, move.from, source - move.amount) &&
               set(transaction, move.to, target + move.amount) && note(transaction, move);
    }

    bool touch(ORMEL_TRANS *transaction, int32_t account) {
        Object values("account");
        ORMEL_ObjectInt64Set(values, "toucher", nextId_);
        return update(transaction, values, account);
    }

    bool set(ORMEL_TRANS *transaction, int32_t account, int64_t balance) {
        Object values("account");
        ORMEL_ObjectInt64Set(values, "balance", balance);
        return update(transaction, values, account);
    }

    bool update(ORMEL_TRANS *transaction, ORMEL_OBJECT *values, int32_t account) {
        Object which("account");
        ORMEL_ObjectInt32Set(which, "id", account);
        uint32_t rows = 0;
        if (!done("update", kWriteCodes, ORMEL_UpdateRecByObjForTrans, transaction, values, which, &rows))
            return false;
        EXPECT_EQ(rows, 1U);
        return true;
    }

    bool balanceOf(ORMEL_TRANS *transaction, int32_t account, int64_t &balance) {
        Object which("account");
        ORMEL_ObjectInt32Set(which, "id", account);
        Result result;
        if (!done("select of a balance", kSelectCodes, ORMEL_SelectRecByObjForTrans, transaction, which, result))
            return false;
        EXPECT_EQ(ORMEL_ResultInt64Get(result, 0, "balance", &balance), ORMEL_OK);
        return true;
    }

    bool note(ORMEL_TRANS *transaction, const Move &move) {
        Object row("move");
        ORMEL_ObjectInt64Set(row, "id", nextId_++);
        ORMEL_ObjectInt32Set(row, "source", move.from);
        ORMEL_ObjectInt32Set(row, "target", move.to);
        ORMEL_ObjectInt64Set(row, "amount", move.amount);
        return done("insert of a move", kWriteCodes, ORMEL_InsertRecByObjForTrans, transaction, row);
    }

    // What a cursor reads is of one moment: all of the money is there.
    void readAll() {
        Cursor cursor("account");
        if (cursor == nullptr)
            return wait();
        int rows = 0;
        int64_t sum = 0;
        uint32_t code = ORMEL_OK;
        for (;; ++rows) {
            CursorRow row;
            code = ORMEL_FetchSelectRecEx(cursor, row);
            if (code != ORMEL_OK)
                break;
            int64_t balance = 0;
            EXPECT_EQ(ORMEL_ResultInt64Get(row, 0, "balance", &balance), ORMEL_OK);
            sum += balance;
        }
        EXPECT_EQ(code, ORMEL_END_OF_DATA);
        EXPECT_EQ(rows, kAccounts);
        EXPECT_EQ(sum, kAccounts * kOpening);
        if (done("end of a cursor", kCommitCodes, &Cursor::end, cursor))
            ++figures_.cursors;
    }

    // --- Plain calls ---

    void fill(ORMEL_OBJECT *row) {
        ORMEL_ObjectInt64Set(row, "id", nextId_++);
        ORMEL_ObjectTextSet(row, "body", "some text");
    }

    void insert() {
        Object row("entry");
        fill(row);
        if (done("insert", kPlainCodes, ORMEL_InsertRecFormObj, row))
            count(figures_.inserts, 1);
    }

    void insertBatch() {
        const Batch batch("entry", kBatch);
        for (size_t i = 0; i < kBatch; ++i)
            fill(batch[i]);
        if (done("batch", kPlainCodes, ORMEL_PatchInsertRecFormObj, batch))
            count(figures_.batches, kBatch);
    }

    // The last row of this thread's, which may not be there.
    void remove() {
        Object row("entry");
        ORMEL_ObjectInt64Set(row, "id", nextId_ - 1);
        uint32_t rows = 0;
        if (done("delete", kPlainCodes, ORMEL_DeleteRecByObj, row, &rows))
            count(figures_.deletes, -int64_t{rows});
    }

    void count(std::atomic<int64_t> &calls, int64_t rows) {
        ++calls;
        figures_.rows += rows;
    }

    void select() {
        Object which("account");
        ORMEL_ObjectInt32Set(which, "id", static_cast<int32_t>(choose(kAccounts)));
        Result result;
        if (!done("select", kSelectCodes, ORMEL_SelectRecByObj, which, result))
            return;
        EXPECT_EQ(ORMEL_SelectResultRecNumGet(result), 1U);
        ++figures_.selects;
    }

    // A small table, which most likely nobody has described yet; with a select list it is described by every call.
    void describe() {
        Object small("small" + std::to_string(choose(kSmallTables)));
        if (choose(2) == 0)
            ORMEL_ObjectSelectFieldSet(small, "name");
        Result result;
        if (!done("select from a small table", kSelectCodes, ORMEL_SelectRecByObj, small, result))
            return;
        EXPECT_STREQ(ORMEL_ResultStrGet(result, 0, "name"), "small");
        ++figures_.described;
    }

    Figures &figures_;
    LastError error_;
    std::mt19937 chance_;
    int64_t nextId_;
    std::optional<Move> pending_;
};

// The small tables in the cache, which never gives up what it has: so many have been looked for in vain.
int tablesKnown() {
    int known = 0;
    for (int i = 0; i < kSmallTables; ++i)
        known += ORMEL_ResAttGet(("small" + std::to_string(i)).c_str()) != nullptr ? 1 : 0;
    return known;
}

// Whether a process has done its work. On a machine that is busy with something else, the first move takes longer.
bool isOver(Clock::time_point deadline, const Figures &figures) {
    constexpr auto kPatience = std::chrono::seconds(120);
    const auto now = Clock::now();
    return testing::Test::HasFailure() || (now >= deadline && (figures.moves > 0 || now >= deadline + kPatience));
}

} // namespace

void run(int process, uint64_t seed, Clock::time_point deadline, Figures &figures) {
    const int knownBefore = tablesKnown();
    std::vector<std::thread> threads;
    for (int i = 0; i < 2 * kThreads; ++i)
        threads.emplace_back([=, &figures] {
            Worker worker(process, seed, i, figures);
            while (!isOver(deadline, figures))
                i % 2 == 0 ? worker.useSlots() : worker.callPlainly();
        });
    for (std::thread &thread : threads)
        thread.join();
    figures.misses = tablesKnown() - knownBefore;
}

} // namespace concurrency
