// Small files that a library reads while it is loaded.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <utility>

namespace ormel::platform {

// Owns a file descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() {
        if (fd_ >= 0)
            close(fd_);
    }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

private:
    int fd_ = -1;
};

// What became of the opening of a file: no descriptor and no problem means that there is no such file.
struct OpenedFile {
    Descriptor fd;
    mode_t mode = 0;
    const char *problem = nullptr;
};

// Opens a regular file for reading. Never waits, as opening a FIFO would.
OpenedFile openRegularFile(const char *path);

// Reads until size bytes are there or the file ends; the number of bytes, or -1 with errno set.
ssize_t readUpTo(int fd, char *buffer, size_t size);

} // namespace ormel::platform
