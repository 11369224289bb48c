// A program that a test runs beside itself.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace ormel::test {

// How a program ended, and what it wrote.
struct Outcome {
    int exitCode; // -1 when a signal ended it
    int signal;   // 0 when none did
    std::string out;
    std::string err;
};

class Child {
public:
    // Starts argv[0] in the directory, with this process's environment and the settings "NAME=value".
    Child(const std::filesystem::path &directory, std::vector<std::string> argv,
          std::vector<std::string> settings = {});
    ~Child();
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    pid_t pid() const { return pid_; }
    // The next line of its standard output, without the newline.
    std::string readLine();
    void kill(int signal) const;
    // Closes its standard input and waits for its end.
    Outcome finish();

private:
    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    int errors_ = -1;
};

// Starts a program and waits for its end.
Outcome run(const std::filesystem::path &directory, std::vector<std::string> argv,
            std::vector<std::string> settings = {});

} // namespace ormel::test
