#include "log/claim.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace ormel::platform {
namespace {

// Nothing where the lock is another process's: held by it, or made by another user.
Descriptor tryLock(const std::string &path) {
    Descriptor lock(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (lock && flock(lock.get(), LOCK_EX | LOCK_NB) == 0)
        return lock;
    const int error = errno;
    const bool taken = lock ? error == EWOULDBLOCK : error == EACCES && access(path.c_str(), F_OK) == 0;
    if (!taken)
        throw std::system_error(error, std::generic_category(), "cannot lock \"" + path + "\"");
    return {};
}

} // namespace

Claim Claim::take(const std::string &path) {
    const std::string pid = std::to_string(getpid());
    std::string own = path;
    Descriptor lock = tryLock(own + ".lock");
    // Two processes of different containers can have the same number, so the name is tried like the first.
    for (; !lock; lock = tryLock(own + ".lock"))
        own += "-" + pid;
    if (own != path)
        std::fprintf(stderr, "liblog: \"%s\" belongs to another process; process %s logs to \"%s\"\n", path.c_str(),
                     pid.c_str(), own.c_str());
    return {std::move(lock), std::move(own)};
}

} // namespace ormel::platform
