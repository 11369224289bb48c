#include "common/file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace ormel::platform {

OpenedFile openRegularFile(const char *path) {
    OpenedFile file;
    Descriptor fd(open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    if (!fd && errno == ENOENT)
        return file;
    if (!fd || fstat(fd.get(), &status) != 0)
        file.problem = std::strerror(errno);
    else if (!S_ISREG(status.st_mode))
        file.problem = "it is not a regular file";
    else
        file.fd = std::move(fd);
    file.mode = status.st_mode;
    return file;
}

ssize_t readUpTo(int fd, char *buffer, size_t size) {
    size_t filled = 0;
    while (filled < size) {
        const ssize_t count = read(fd, buffer + filled, size - filled);
        if (count == 0)
            break;
        if (count < 0 && errno != EINTR)
            return -1;
        if (count > 0)
            filled += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

} // namespace ormel::platform
