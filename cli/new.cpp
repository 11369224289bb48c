#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "commands.h"
#include "error.h"
#include "home_settings.h"
#include "password.h"
#include "templates.h"

namespace cli {
namespace fs = std::filesystem;
namespace {

constexpr mode_t kPublic = 0666; // less the umask
constexpr mode_t kSecret = 0600;

Failure cannotMake(const fs::path &path) {
    return Failure("cannot make " + path.string() + ": " + std::strerror(errno));
}

// What was made so far; gone again unless it is kept.
class HalfMade {
public:
    HalfMade() = default;
    ~HalfMade() {
        std::error_code ignored;
        for (auto path = paths_.rbegin(); path != paths_.rend(); ++path)
            fs::remove(*path, ignored);
    }
    HalfMade(const HalfMade &) = delete;
    HalfMade &operator=(const HalfMade &) = delete;

    void directory(const fs::path &path) {
        if (mkdir(path.c_str(), 0777) != 0)
            throw cannotMake(path);
        paths_.push_back(path);
    }

    void file(const fs::path &path, const std::string &text, mode_t mode) {
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (descriptor < 0)
            throw cannotMake(path);
        paths_.push_back(path);
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (close(descriptor) != 0 || written != static_cast<ssize_t>(text.size()))
            throw cannotMake(path);
    }

    void keep() { paths_.clear(); }

private:
    std::vector<fs::path> paths_;
};

// An empty directory that is there already is as good as none.
bool isThereAndEmpty(const fs::path &home) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(home, error);
    if (!fs::exists(status))
        return false;
    if (!fs::is_directory(home, error) || !fs::is_empty(home, error) || error)
        throw Failure(home.string() + " is there already and not an empty directory; nothing in it was touched");
    return true;
}

void fill(HalfMade &made, const fs::path &home, const std::string &settings, const std::string &password) {
    for (const char *directory : {"bin", "conf", "data", "var", "var/log"})
        made.directory(home / directory);
    made.file(home / "conf/db.conf", settings, kPublic);
    made.file(home / "conf/log.conf", kLogConfTemplate, kPublic);
    made.file(home / "conf/db.password", password + "\n", kSecret);
}

std::string passwordFor(const HomeRequest &request) {
    if (!request.passwordFile.empty())
        return passwordFromFile(request.passwordFile);
    return passwordFromTerminal(isServer(request) ? "Database password: "
                                                  : "Database password (any, for the embedded engine): ");
}

void tellNextSteps(const HomeRequest &request, const fs::path &home) {
    std::cout << "made " << home.string() << " with bin/, conf/, data/ and var/log/\n";
    if (isServer(request))
        std::cout << "the database is " << *request.dbname << " on " << *request.host << "; conf/db.conf says so\n"
                  << "next: ormel --home " << home.string() << " check\n";
    else
        std::cout << "the database is an embedded one, data/ormel.db; conf/db.conf says how to name another\n"
                  << "next: ormel --home " << home.string() << " sql \"CREATE TABLE ...\"\n";
}

} // namespace

void makeHome(const HomeRequest &request) {
    const std::string settings = databaseSettings(request);
    const fs::path home = fs::path(request.directory).lexically_normal();
    const bool isThere = isThereAndEmpty(home);
    const std::string password = passwordFor(request);
    HalfMade made;
    if (!isThere)
        made.directory(home);
    fill(made, home, settings, password);
    made.keep();
    tellNextSteps(request, home);
}

} // namespace cli
