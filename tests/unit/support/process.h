// What a piece of code writes to the standard streams, and how it ends a process.
#ifndef UNIT_PROCESS_H
#define UNIT_PROCESS_H

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace unit {

// Takes what is written to a standard stream for as long as it lives.
class Capture {
public:
    explicit Capture(FILE *stream) : stream_(stream), file_(std::tmpfile()) {
        std::fflush(stream_);
        old_ = dup(fileno(stream_));
        dup2(fileno(file_), fileno(stream_));
    }
    ~Capture() {
        std::fflush(stream_);
        dup2(old_, fileno(stream_));
        close(old_);
        std::fclose(file_);
    }
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    std::string Text() const {
        std::fflush(stream_);
        std::string text;
        char piece[512];
        off_t at = 0;
        for (ssize_t n; (n = pread(fileno(file_), piece, sizeof(piece), at)) > 0; at += n) {
            text.append(piece, static_cast<size_t>(n));
        }
        return text;
    }

private:
    FILE *stream_;
    FILE *file_;
    int old_;
};

struct Ending {
    int status; // of an exit, or minus the signal
    std::string output;
};

// Runs code in a child process until it ends by itself; 99 when it returns.
inline Ending RunInChild(const std::function<void()> &code) {
    Capture output(stdout);
    pid_t child = fork();
    if (child == 0) {
        code();
        std::fflush(stdout);
        _exit(99);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), output.Text()};
}

} // namespace unit

#endif
