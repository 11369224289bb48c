// Many threads at work in one database, and what must hold when they are done.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace concurrency {

constexpr int kAccounts = 40; // more than a cursor reads ahead
constexpr int64_t kOpening = 1000;
constexpr int kSmallTables = 60; // whose descriptors are not cached at first

// What was done, by all threads of a process.
struct Figures {
    std::atomic<int64_t> moves = 0;   // of money, in transactions
    std::atomic<int64_t> cursors = 0; // over all accounts
    std::atomic<int64_t> full = 0;    // no slot, or no connection for it
    std::atomic<int64_t> refused = 0; // by the database, in favour of another
    std::atomic<int64_t> rows = 0;    // inserted and not deleted
    std::atomic<int64_t> inserts = 0;
    std::atomic<int64_t> deletes = 0;
    std::atomic<int64_t> batches = 0;
    std::atomic<int64_t> selects = 0;
    std::atomic<int64_t> described = 0; // selects from tables that may have to be described
    std::atomic<int64_t> misses = 0;    // tables that were not in the cache when they were first looked for
};

using Clock = std::chrono::steady_clock;

// Has 32 threads share the sixteen slots, and as many make plain calls, until the deadline and until money was moved.
// Rows get the process's number; the seed decides what each thread chooses. Failures other than refusals are those of
// the running test.
void run(int process, uint64_t seed, Clock::time_point deadline, Figures &figures);

} // namespace concurrency
