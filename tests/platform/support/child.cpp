#include "support/child.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace ormel::test {
namespace {

void check(int error, const char *what) {
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

std::vector<char *> pointers(std::vector<std::string> &texts) {
    std::vector<char *> all;
    all.reserve(texts.size() + 1);
    for (auto &text : texts)
        all.push_back(text.data());
    all.push_back(nullptr);
    return all;
}

// Takes any amount unread, as a pipe does not.
int anonymousFile() {
    const int fd = memfd_create("stderr", MFD_CLOEXEC);
    check(fd < 0 ? errno : 0, "memfd_create");
    return fd;
}

std::string readAll(int fd) {
    std::string text;
    char piece[4096];
    for (ssize_t count = 0; (count = read(fd, piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<size_t>(count));
    return text;
}

} // namespace

Child::Child(const std::filesystem::path &directory, std::vector<std::string> argv, std::vector<std::string> settings) {
    int in[2];
    int out[2];
    check(pipe2(in, O_CLOEXEC) != 0 ? errno : 0, "pipe2");
    check(pipe2(out, O_CLOEXEC) != 0 ? errno : 0, "pipe2");
    errors_ = anonymousFile();
    for (char **inherited = environ; *inherited != nullptr; ++inherited)
        settings.emplace_back(*inherited);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors_, STDERR_FILENO);
    const int error =
        posix_spawn(&pid_, argv[0].c_str(), &actions, nullptr, pointers(argv).data(), pointers(settings).data());
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    input_ = in[1];
    output_ = out[0];
    check(error, argv[0].c_str());
}

Child::~Child() {
    if (pid_ > 0) {
        kill(SIGKILL);
        finish();
    }
    close(output_);
    close(errors_);
}

std::string Child::readLine() {
    std::string line;
    char byte = 0;
    while (read(output_, &byte, 1) == 1 && byte != '\n')
        line += byte;
    return line;
}

void Child::kill(int signal) const {
    ::kill(pid_, signal);
}

Outcome Child::finish() {
    close(input_);
    Outcome outcome{-1, 0, readAll(output_), {}};
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    if (WIFEXITED(status))
        outcome.exitCode = WEXITSTATUS(status);
    else
        outcome.signal = WTERMSIG(status);
    lseek(errors_, 0, SEEK_SET);
    outcome.err = readAll(errors_);
    return outcome;
}

Outcome run(const std::filesystem::path &directory, std::vector<std::string> argv, std::vector<std::string> settings) {
    return Child(directory, std::move(argv), std::move(settings)).finish();
}

} // namespace ormel::test
