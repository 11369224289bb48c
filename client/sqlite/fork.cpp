#include "fork.h"

#include <atomic>
#include <pthread.h>
#include <sqlite3.h>
#include <sys/stat.h>

namespace ormel::client::sqlite {

namespace {

static_assert(sizeof(dev_t) == 8); // more than any file system uses
std::atomic<dev_t> g_child;        // how many forks away from the first process

int separate(int result, struct stat *status) {
    constexpr int unusedBits = 48; // of device numbers, from there on
    if (result == 0)
        status->st_dev ^= g_child << unusedBits;
    return result;
}

int statusOf(int descriptor, struct stat *status) {
    return separate(fstat(descriptor, status), status);
}

int statusAt(const char *path, struct stat *status) {
    return separate(stat(path, status), status);
}

} // namespace

void separateChildren() noexcept {
    sqlite3_vfs *files = sqlite3_vfs_find("unix");
    if (files == nullptr || pthread_atfork(nullptr, nullptr, [] { ++g_child; }) != 0)
        return;
    files->xSetSystemCall(files, "fstat", reinterpret_cast<sqlite3_syscall_ptr>(statusOf));
    files->xSetSystemCall(files, "stat", reinterpret_cast<sqlite3_syscall_ptr>(statusAt));
}

} // namespace ormel::client::sqlite
