#include "password.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include <ormeldb/config.h>
#include <ormeldb/platform/decrypt.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "home.h"

namespace cli {
namespace {

constexpr size_t kLongest = sizeof(ORMEL_CONN_CFG::acPassword) - 2; // what the library keeps of it

// The library would cut a longer one without a word, and a line end would end it.
std::string checked(std::string password, const std::string &source) {
    while (!password.empty() && (password.back() == '\n' || password.back() == '\r'))
        password.pop_back();
    if (password.empty())
        throw Failure(source + " holds no password; the library needs one (the embedded engine takes any)");
    if (password.size() > kLongest)
        throw Failure(source + " holds more than the " + std::to_string(kLongest) + " bytes that the library keeps");
    if (password.find_first_of(std::string("\0\r\n", 3)) != std::string::npos)
        throw Failure(source + " has more than one line; it takes the password and nothing else");
    return password;
}

// The terminal without echo. An interrupt ends the reading, so that the terminal is always put back: it is held off but
// for the waiting, or one that comes between two steps would be lost.
class HiddenInput {
public:
    HiddenInput() {
        sigset_t interrupt;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        sigprocmask(SIG_BLOCK, &interrupt, &mask_);
        struct sigaction noticed {};
        noticed.sa_handler = [](int) {};
        sigaction(SIGINT, &noticed, &interrupt_);
        tcgetattr(STDIN_FILENO, &terminal_);
        termios hidden = terminal_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    ~HiddenInput() {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &terminal_);
        sigaction(SIGINT, &interrupt_, nullptr);
        sigprocmask(SIG_SETMASK, &mask_, nullptr);
    }
    HiddenInput(const HiddenInput &) = delete;
    HiddenInput &operator=(const HiddenInput &) = delete;

    std::string line() {
        std::string text;
        char c = 0;
        while (read(c) && c != '\n')
            text += c;
        return text;
    }

private:
    // False at the end of the input.
    bool read(char &c) const {
        pollfd input = {STDIN_FILENO, POLLIN, 0};
        const bool interrupted = ppoll(&input, 1, nullptr, &mask_) < 0;
        const ssize_t got = interrupted ? -1 : ::read(STDIN_FILENO, &c, 1);
        if (got < 0)
            throw Failure("no password was given");
        return got == 1;
    }

    sigset_t mask_{};
    termios terminal_{};
    struct sigaction interrupt_ {};
};

// A file that is there, or of which that cannot be told: libdecrypt says what is wrong with it.
bool isThere(const std::filesystem::path &file) {
    std::error_code error;
    return std::filesystem::status(file, error).type() != std::filesystem::file_type::not_found;
}

// Empty where there is none. It is looked for as libdecrypt does it.
std::string credentialFile() {
    const char *directory = secure_getenv("CREDENTIALS_DIRECTORY");
    if (directory == nullptr || *directory == '\0')
        return "";
    std::string file = std::string(directory) + "/ormel-db-password";
    return isThere(file) ? file : "";
}

} // namespace

std::string passwordFromFile(const std::string &path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "re"), std::fclose);
    char text[kLongest + 3]; // with its line end, and one byte to see that there is more
    const size_t size = file == nullptr ? 0 : std::fread(text, 1, sizeof text, file.get());
    if (file == nullptr || std::ferror(file.get()) != 0)
        throw Failure("cannot read the password file " + path + ": " + std::strerror(errno));
    return checked({text, size}, "the password file " + path);
}

std::string passwordFromTerminal(const std::string &words) {
    if (isatty(STDIN_FILENO) == 0)
        throw UsageError("there is no terminal to ask for the database password on; name a file that holds it with "
                         "--password-file FILE");
    std::fputs(words.c_str(), stderr);
    std::string text;
    {
        HiddenInput input;
        text = input.line();
    }
    std::fputs("\n", stderr);
    return checked(std::move(text), "the terminal");
}

bool isPasswordKnown() {
    return g_decrypt_info_s[ORMEL_DECRYPT_PASSWORD_OFFSET] != '\0';
}

bool isCredentialRefused() {
    return !isPasswordKnown() && !credentialFile().empty();
}

Failure passwordFailure() {
    const std::string credential = credentialFile();
    const std::string file = credential.empty() ? homeFile("conf/db.password") : credential;
    if (isThere(file))
        return Failure("the database password in " + file + " cannot be used: the line before this one says why");
    return Failure("there is no database password: write it into " + file + " and run: chmod 600 " + file +
                   " (the embedded engine takes any)");
}

} // namespace cli
