#include "pool.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <mutex>

#include "config.h"
#include "errors.h"
#include "process.h"

namespace ormel::client {

namespace {

constexpr uint32_t kDefaultMost = 8;
constexpr std::chrono::seconds kLongestIdle(60);

struct Idle {
    Settings settings;
    std::filesystem::path directory; // which relative paths of the settings mean
    std::chrono::steady_clock::time_point since;
    std::unique_ptr<Connection> connection;
};

// Of one process, for as long as that lives: what a child inherits is its parent's, and neither used nor closed.
class Pool {
public:
    explicit Pool(Pool *inherited) : inherited_(inherited) {}

    bool isOfThisProcess() const { return processNumber() == process_; }

    // The process ends: nothing is kept from now on.
    void close() {
        std::list<Idle> closed;
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        closed.swap(idle_);
    }

    std::unique_ptr<Connection> take(const Settings &settings) {
        const auto directory = std::filesystem::current_path();
        for (;;) {
            std::list<Idle> found = remove(settings, directory);
            if (found.empty())
                return nullptr;
            if (found.front().connection->alive())
                return std::move(found.front().connection);
        }
    }

    void keep(const Settings &settings, std::unique_ptr<Connection> connection, size_t most) {
        std::list<Idle> added;
        added.push_back({settings, std::filesystem::current_path(), g_poolClock(), std::move(connection)});
        std::list<Idle> closed; // when the lock is free again
        const std::lock_guard lock(mutex_);
        if (isClosed_)
            return;
        idle_.splice(idle_.begin(), added);
        while (idle_.size() > most || g_poolClock() - idle_.back().since > kLongestIdle)
            closed.splice(closed.end(), idle_, std::prev(idle_.end()));
    }

private:
    // Takes the one that was used last, and those that nobody wanted for too long, off the list.
    std::list<Idle> remove(const Settings &settings, const std::filesystem::path &directory) {
        std::list<Idle> removed;
        std::list<Idle> closed;
        const std::lock_guard lock(mutex_);
        while (!idle_.empty() && g_poolClock() - idle_.back().since > kLongestIdle)
            closed.splice(closed.end(), idle_, std::prev(idle_.end()));
        const auto found = std::find_if(idle_.begin(), idle_.end(), [&](const Idle &idle) {
            return idle.settings == settings && idle.directory == directory;
        });
        if (found != idle_.end())
            removed.splice(removed.end(), idle_, found);
        return removed;
    }

    const uint64_t process_ = processNumber();
    [[maybe_unused]] Pool *const inherited_; // stays reachable
    std::mutex mutex_;
    bool isClosed_ = false;
    std::list<Idle> idle_; // the one used last in front
};

std::atomic<Pool *> g_pool;

void closeAtExit() {
    Pool *known = g_pool.load();
    if (known != nullptr && known->isOfThisProcess())
        known->close();
}

// Made when the first connection is kept, and so after what connections need: at the exit it is closed before that.
Pool &pool() {
    Pool *known = g_pool.load();
    if (known != nullptr && known->isOfThisProcess())
        return *known;
    [[maybe_unused]] static const int closing = std::atexit(closeAtExit);
    auto made = std::make_unique<Pool>(known);
    return g_pool.compare_exchange_strong(known, made.get()) ? *made.release() : *known;
}

size_t most(const Settings &settings) {
    return number(settings, "client.pool", kDefaultMost);
}

} // namespace

std::unique_ptr<Connection> takeIdle(const Settings &settings) {
    most(settings); // a wrong number is told at the connect, where there is somebody to tell
    Pool *known = g_pool.load();
    return known != nullptr && known->isOfThisProcess() ? known->take(settings) : nullptr;
}

void keepIdle(const Settings &settings, std::unique_ptr<Connection> connection) noexcept {
    try {
        const size_t limit = most(settings);
        if (limit > 0 && connection->recycle())
            pool().keep(settings, std::move(connection), limit);
    } catch (...) {
        connection.reset(); // a connection that cannot be kept is closed
    }
}

} // namespace ormel::client
