#include "home.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include <ormeldb/log.h>
#include <unistd.h>

#include "error.h"
#include "password.h"
#include "text.h"

namespace cli {
namespace fs = std::filesystem;
namespace {

// The program's own file; its name, not /proc/self/exe, so that the process is called by it.
std::string ownFile() {
    std::error_code error;
    const fs::path file = fs::read_symlink("/proc/self/exe", error);
    return error ? "/proc/self/exe" : file.string();
}

[[noreturn]] void startAgain(const std::string &callersDirectory, const std::vector<std::string> &arguments) {
    std::vector<std::string> words = arguments;
    words.insert(words.begin() + 1, {"--called-from", callersDirectory});
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    execv(ownFile().c_str(), argv.data());
    throw Failure("cannot start " + ownFile() + " again: " + std::strerror(errno));
}

} // namespace

void enterHome(const Place &place, const std::vector<std::string> &arguments) {
    if (!place.calledFrom.empty())
        return;
    if (place.home.empty()) {
        if (fs::exists("../conf/db.conf"))
            return;
        throw UsageError("there is no ../conf/db.conf here; name a home with --home DIR (ormel new DIR makes one)");
    }
    if (isCredentialRefused()) // libdecrypt has said why, and would say it once more
        throw passwordFailure();
    const std::string callersDirectory = fs::current_path();
    const std::string bin = place.home + "/bin";
    if (chdir(bin.c_str()) != 0)
        throw UsageError(place.home + " is no home: cannot enter " + bin + ": " + std::strerror(errno) +
                         " (ormel new DIR makes a home)");
    startAgain(callersDirectory, arguments);
}

fs::path callersFile(const Place &place, const std::string &name) {
    return fs::path(place.calledFrom) / name;
}

std::string homeFile(const std::string &name) {
    return (fs::current_path().parent_path() / name).string();
}

std::string logFile() {
    return (fs::current_path() / g_acVemloLogFileName).lexically_normal().string();
}

std::string configured(const std::string &key) {
    std::ifstream file(homeFile("conf/db.conf"));
    std::string value;
    for (std::string line; std::getline(file, line);)
        if (line.rfind(key + "=", 0) == 0) {
            const std::string rest = line.substr(key.size() + 1);
            const std::string_view given = trimmed(std::string_view(rest).substr(0, rest.find_first_of("=\r")));
            value = given.empty() ? value : given;
        }
    return value;
}

std::string configuredEngine() {
    std::string driver = configured("db.driver");
    if (!driver.empty())
        return driver;
    return configured("db.host").empty() ? "sqlite" : "postgres";
}

} // namespace cli
