#include "ormeldb/platform/decrypt.h"

#include "common/file.h"

#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

unsigned char g_decrypt_info_s[8192];

namespace {

using ormel::platform::OpenedFile;
using ormel::platform::openRegularFile;
using ormel::platform::readUpTo;

// libormeldb cuts a password at this length without a word, so a longer one is refused here, where it can be said.
constexpr size_t kLongestPassword = 254;

// The bytes of a password file, for as short a time as possible: they are wiped when their owner goes.
struct Secret {
    char text[kLongestPassword + 8] = {}; // room for line ends, and to see that a text goes on
    size_t length = 0;

    ~Secret() { explicit_bzero(text, sizeof text); }
};

void cutLineEnd(Secret &secret) {
    while (secret.length > 0 && (secret.text[secret.length - 1] == '\n' || secret.text[secret.length - 1] == '\r'))
        --secret.length;
}

std::string absolute(const std::string &path) {
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) != nullptr ? resolved : path;
}

enum class Readers { any, owner };

// Reads the password; what is wrong with the file, or nothing.
std::string readPassword(const std::string &path, const OpenedFile &file, Readers readers, Secret &secret) {
    const std::string unreadable = "; put the password into a plain file that this process can read";
    if (file.problem != nullptr)
        return file.problem + unreadable;
    if (readers == Readers::owner && (file.mode & (S_IRGRP | S_IROTH)) != 0)
        return "group or others can read it; run: chmod 600 " + absolute(path);
    const ssize_t count = readUpTo(file.fd.get(), secret.text, sizeof secret.text);
    if (count < 0)
        return std::strerror(errno) + unreadable;
    secret.length = static_cast<size_t>(count);
    cutLineEnd(secret);
    if (secret.length == 0)
        return "it is empty; write the password into it";
    if (std::memchr(secret.text, '\0', secret.length) != nullptr)
        return "it holds a NUL byte; write the password as plain text";
    if (secret.length > kLongestPassword)
        return "it holds more than " + std::to_string(kLongestPassword) + " bytes; choose a shorter password";
    return {};
}

void publish(const Secret &secret) {
    unsigned char *field = g_decrypt_info_s + ORMEL_DECRYPT_PASSWORD_OFFSET;
    std::memcpy(field, secret.text, secret.length);
    field[secret.length] = '\0';
}

// Takes the password from the file, or says why not. False only where there is no such file.
bool takePassword(const std::string &path, Readers readers) {
    const OpenedFile file = openRegularFile(path.c_str());
    if (!file.fd && file.problem == nullptr)
        return false;
    Secret secret;
    const std::string problem = readPassword(path, file, readers, secret);
    if (problem.empty())
        publish(secret);
    else
        std::fprintf(stderr, "libdecrypt: no database password from \"%s\": %s\n", path.c_str(), problem.c_str());
    return true;
}

// The service manager guards the directory of a service's credentials itself, whatever the files' modes.
bool takeCredential() {
    // A program with more rights than its caller does not let the caller's environment name its files.
    const char *directory = secure_getenv("CREDENTIALS_DIRECTORY");
    return directory != nullptr && *directory != '\0' &&
           takePassword(std::string(directory) + "/ormel-db-password", Readers::any);
}

__attribute__((constructor)) void fillPassword() {
    try {
        if (!takeCredential())
            takePassword("../conf/db.password", Readers::owner);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "libdecrypt: no database password: %s\n", error.what());
    }
}

} // namespace
