#include "log/log_service.h"

#include <pthread.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <system_error>
#include <thread>

namespace ormel::platform {
namespace {

// Half of what is promised, so that a busy machine keeps the promise.
constexpr std::chrono::milliseconds kFlushPeriod{500};

// One name for a file, however the caller wrote it.
std::string resolve(const std::string &fileName) {
    const std::filesystem::path path = std::filesystem::absolute(fileName);
    return (std::filesystem::weakly_canonical(path.parent_path()) / path.filename()).string();
}

// The host's signals are for the host's threads.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;

private:
    sigset_t before_{};
};

} // namespace

LogService &LogService::get() {
    static LogService &service = *new LogService;
    return service;
}

LogService::LogService() {
    const int error =
        pthread_atfork([] { get().prepareFork(); }, [] { get().continueParent(); }, [] { get().continueChild(); });
    if (error != 0 || std::at_quick_exit([] { get().end(); }) != 0)
        throw std::system_error(ENOMEM, std::generic_category(), "no room for handlers of forks and of the end");
}

LogFile *LogService::open(const std::string &fileName, Rotation rotation) {
    const std::string path = resolve(fileName);
    const std::lock_guard lock(mutex_);
    if (const auto known = files_.find(path); known != files_.end())
        return known->second->open() ? known->second.get() : nullptr;
    auto file = std::make_unique<LogFile>(path, rotation);
    return file->open() ? files_.emplace(path, std::move(file)).first->second.get() : nullptr;
}

bool LogService::print(LogFile &file, std::string_view line) {
    const std::lock_guard lock(mutex_);
    if (!file.append(line))
        return false;
    if (ending_ || !startFlusher())
        file.flush();
    return true;
}

bool LogService::close(LogFile &file) {
    const std::lock_guard lock(mutex_);
    return file.close();
}

void LogService::end() {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    flushAll();
}

bool LogService::flushAll() {
    bool any = false;
    for (const auto &[path, file] : files_)
        any = file->flush() || any;
    return any;
}

bool LogService::startFlusher() {
    if (flusherRuns_)
        return true;
    try {
        const SignalsBlocked blocked;
        std::thread flusher([this] {
            flusherStarted_.release();
            runFlusher();
        });
        pthread_setname_np(flusher.native_handle(), "ormel-log");
        flusher.detach();
        flusherRuns_ = true;
        // A fork shall not meet a thread half started: not every allocator gives its locks free in the child.
        flusherStarted_.acquire();
    } catch (const std::exception &) { // no thread to be had: the line is written at once
    }
    return flusherRuns_;
}

// Ends when a period brought no line, so that it keeps no process alive.
void LogService::runFlusher() {
    for (;;) {
        std::this_thread::sleep_for(kFlushPeriod);
        const std::lock_guard lock(mutex_);
        if (!flushAll()) {
            flusherRuns_ = false;
            return;
        }
    }
}

// The buffers are empty at the fork: their copies in the child would be written a second time when it ends.
void LogService::prepareFork() {
    mutex_.lock();
    flushAll();
}

void LogService::continueParent() {
    mutex_.unlock();
}

void LogService::continueChild() {
    flusherRuns_ = false;
    for (const auto &[path, file] : files_)
        file->leaveToParent();
    mutex_.unlock();
}

} // namespace ormel::platform
