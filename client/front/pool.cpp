#include "pool.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <list>
#include <mutex>
#include <unistd.h>

#include "config.h"
#include "errors.h"

namespace ormel::client {

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint32_t kDefaultMost = 8;
constexpr std::chrono::seconds kLongestIdle(60);

struct Idle {
    Settings settings;
    std::filesystem::path directory; // which relative paths of the settings mean
    Clock::time_point since;
    std::unique_ptr<Connection> connection;
};

// Connections that a fork has copied. They are neither used nor closed, and stay reachable.
alignas(std::list<Idle>) unsigned char g_inherited[sizeof(std::list<Idle>)];

// Of one process: what a child inherits is its parent's.
class Pool {
public:
    ~Pool() {
        if (!isOfThisProcess())
            new (g_inherited) std::list<Idle>(std::move(idle_));
    }

    bool isOfThisProcess() const { return getpid() == process_; }

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
        added.push_back({settings, std::filesystem::current_path(), Clock::now(), std::move(connection)});
        std::list<Idle> closed; // when the lock is free again
        const std::lock_guard lock(mutex_);
        idle_.splice(idle_.begin(), added);
        while (idle_.size() > most || Clock::now() - idle_.back().since > kLongestIdle)
            closed.splice(closed.end(), idle_, std::prev(idle_.end()));
    }

private:
    // Takes the one that was used last, and those that nobody wanted for too long, off the list.
    std::list<Idle> remove(const Settings &settings, const std::filesystem::path &directory) {
        std::list<Idle> removed;
        std::list<Idle> closed;
        const std::lock_guard lock(mutex_);
        while (!idle_.empty() && Clock::now() - idle_.back().since > kLongestIdle)
            closed.splice(closed.end(), idle_, std::prev(idle_.end()));
        const auto found = std::find_if(idle_.begin(), idle_.end(), [&](const Idle &idle) {
            return idle.settings == settings && idle.directory == directory;
        });
        if (found != idle_.end())
            removed.splice(removed.end(), idle_, found);
        return removed;
    }

    const pid_t process_ = getpid();
    std::mutex mutex_;
    std::list<Idle> idle_; // the one used last in front
};

std::atomic<Pool *> g_pool;

// Made when the first connection is kept, and so after what connections need: it is closed before that at the exit.
Pool &pool() {
    static Pool first;
    Pool *known = g_pool.load();
    if (known != nullptr && known->isOfThisProcess())
        return *known;
    Pool *made = first.isOfThisProcess() ? &first : new Pool();
    g_pool = made;
    return *made;
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
