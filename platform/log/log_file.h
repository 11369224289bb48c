// One log file with those that follow it when it is full.
#pragma once

#include "log/claim.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace ormel::platform {

// What a file takes before the next one is begun, and how many are kept in all.
struct Rotation {
    size_t bytes;
    size_t files;
};

// Not for several threads at once. Nothing is thrown: a failure is said once on standard error, until lines arrive
// again, and costs the lines meanwhile.
class LogFile {
public:
    // The path is absolute, so that the host may change its working directory.
    LogFile(std::string path, Rotation rotation);
    ~LogFile();
    LogFile(const LogFile &) = delete;
    LogFile &operator=(const LogFile &) = delete;

    // One user more; false when the file cannot be written.
    bool open();
    // Takes the line, which may stay in the buffer. Opens a closed file for one user.
    bool append(std::string_view line);
    // Hands what is in the buffer to the kernel; whether there was anything.
    bool flush();
    // One user less; the last one closes the file. False when it is closed already.
    bool close();
    // In the child of a fork, where the buffer is empty: the file stays the parent's. The next line opens one for this
    // process.
    void leaveToParent();

private:
    struct Sink; // hides spdlog, whose headers take long to compile

    bool openSink();
    void release();
    template <typename Action> bool attempt(Action action);

    const std::string path_;
    const Rotation rotation_;
    int users_ = 0;
    bool pending_ = false;
    bool troubled_ = false;
    std::chrono::steady_clock::time_point retryAt_;
    Claim claim_;
    std::unique_ptr<Sink> sink_;
};

} // namespace ormel::platform
