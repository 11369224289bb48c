// The right to write a log file, which one process has at a time.
#pragma once

#include "common/file.h"

#include <string>

namespace ormel::platform {

// A lock on a file beside the log file, since the log file itself is renamed when it is full. It ends with the owner
// or with the process, however that ends.
class Claim {
public:
    Claim() = default;

    // Claims the path, or where another process has it a path of this process's own beside it, and says so on standard
    // error. Throws std::system_error.
    static Claim take(const std::string &path);

    const std::string &path() const { return path_; }
    explicit operator bool() const { return static_cast<bool>(lock_); }

private:
    Claim(Descriptor lock, std::string path) : lock_(std::move(lock)), path_(std::move(path)) {}

    Descriptor lock_;
    std::string path_;
};

} // namespace ormel::platform
