// The log files of the process, and when their lines go to the kernel.
#pragma once

#include "log/log_file.h"

#include <map>
#include <memory>
#include <mutex>
#include <semaphore>
#include <string>
#include <string_view>

namespace ormel::platform {

// Lines wait in buffers until a thread, which lives only while there are lines, hands them to the kernel. One lock
// guards all, so that a fork finds nothing half done. Lives until the process ends, since lines come until then.
class LogService {
public:
    static LogService &get();

    // The file of that name for one user more; users of one file share it, with the first one's rotation. NULL when it
    // cannot be written. May throw.
    LogFile *open(const std::string &fileName, Rotation rotation);
    bool print(LogFile &file, std::string_view line);
    bool close(LogFile &file);
    // Hands out everything pending. From then on no line waits, as nobody might come back for it.
    void end();

    LogService(const LogService &) = delete;
    LogService &operator=(const LogService &) = delete;

private:
    LogService();

    bool flushAll();
    bool startFlusher();
    void runFlusher();
    void prepareFork();
    void continueParent();
    void continueChild();

    std::mutex mutex_;
    std::map<std::string, std::unique_ptr<LogFile>> files_; // by path; an address once handed out stays valid
    bool flusherRuns_ = false;
    std::binary_semaphore flusherStarted_{0};
    bool ending_ = false;
};

} // namespace ormel::platform
