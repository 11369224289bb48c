// The file system under SQLite: the real one, whose calls fail where a fault asks for it.
#include <atomic>
#include <sqlite3.h>

#include "edge/faults.h"

namespace edge {

namespace {

std::atomic<int> g_open = 0;

// Followed by the real file, for which SQLite makes room.
struct File : sqlite3_file {};

sqlite3_file *real(sqlite3_file *file) {
    return reinterpret_cast<sqlite3_file *>(static_cast<File *>(file) + 1);
}

sqlite3_vfs *realSystem() {
    static sqlite3_vfs *const found = sqlite3_vfs_find("unix");
    return found;
}

int close(sqlite3_file *file) {
    --g_open;
    return real(file)->pMethods->xClose(real(file));
}

int read(sqlite3_file *file, void *to, int size, sqlite3_int64 offset) {
    return fails(Place::files) ? SQLITE_IOERR_READ : real(file)->pMethods->xRead(real(file), to, size, offset);
}

int write(sqlite3_file *file, const void *from, int size, sqlite3_int64 offset) {
    if (fails(Place::disk))
        return SQLITE_FULL;
    return fails(Place::files) ? SQLITE_IOERR_WRITE : real(file)->pMethods->xWrite(real(file), from, size, offset);
}

int truncate(sqlite3_file *file, sqlite3_int64 size) {
    return fails(Place::files) ? SQLITE_IOERR_TRUNCATE : real(file)->pMethods->xTruncate(real(file), size);
}

// Nobody pulls the plug here, so that a sync which succeeds has nothing to do.
int sync(sqlite3_file * /*file*/, int /*flags*/) {
    return fails(Place::files) ? SQLITE_IOERR_FSYNC : SQLITE_OK;
}

int fileSize(sqlite3_file *file, sqlite3_int64 *size) {
    return fails(Place::files) ? SQLITE_IOERR_FSTAT : real(file)->pMethods->xFileSize(real(file), size);
}

int lock(sqlite3_file *file, int level) {
    if (fails(Place::locks))
        return SQLITE_BUSY;
    return fails(Place::files) ? SQLITE_IOERR_LOCK : real(file)->pMethods->xLock(real(file), level);
}

int unlock(sqlite3_file *file, int level) {
    return real(file)->pMethods->xUnlock(real(file), level);
}

int checkReservedLock(sqlite3_file *file, int *reserved) {
    return fails(Place::files) ? SQLITE_IOERR_CHECKRESERVEDLOCK
                               : real(file)->pMethods->xCheckReservedLock(real(file), reserved);
}

int fileControl(sqlite3_file *file, int operation, void *argument) {
    return real(file)->pMethods->xFileControl(real(file), operation, argument);
}

int sectorSize(sqlite3_file *file) {
    return real(file)->pMethods->xSectorSize(real(file));
}

int deviceCharacteristics(sqlite3_file *file) {
    return real(file)->pMethods->xDeviceCharacteristics(real(file));
}

int shmMap(sqlite3_file *file, int page, int size, int extend, void volatile **address) {
    return fails(Place::files) ? SQLITE_IOERR_SHMMAP
                               : real(file)->pMethods->xShmMap(real(file), page, size, extend, address);
}

int shmLock(sqlite3_file *file, int offset, int count, int flags) {
    const bool taking = (flags & SQLITE_SHM_LOCK) != 0;
    if (taking && fails(Place::locks))
        return SQLITE_BUSY;
    return taking && fails(Place::files) ? SQLITE_IOERR_SHMLOCK
                                         : real(file)->pMethods->xShmLock(real(file), offset, count, flags);
}

void shmBarrier(sqlite3_file *file) {
    real(file)->pMethods->xShmBarrier(real(file));
}

int shmUnmap(sqlite3_file *file, int remove) {
    return real(file)->pMethods->xShmUnmap(real(file), remove);
}

const sqlite3_io_methods kMethods = {
    2,
    close,
    read,
    write,
    truncate,
    sync,
    fileSize,
    lock,
    unlock,
    checkReservedLock,
    fileControl,
    sectorSize,
    deviceCharacteristics,
    shmMap,
    shmLock,
    shmBarrier,
    shmUnmap,
    nullptr,
    nullptr,
};

int open(sqlite3_vfs * /*system*/, const char *name, sqlite3_file *file, int flags, int *flagsGiven) {
    file->pMethods = nullptr;
    if (fails(Place::files))
        return SQLITE_CANTOPEN;
    const int result = realSystem()->xOpen(realSystem(), name, real(file), flags, flagsGiven);
    if (result != SQLITE_OK)
        return result;
    file->pMethods = &kMethods;
    ++g_open;
    return SQLITE_OK;
}

int remove(sqlite3_vfs * /*system*/, const char *name, int syncFolder) {
    return fails(Place::files) ? SQLITE_IOERR_DELETE : realSystem()->xDelete(realSystem(), name, syncFolder);
}

int access(sqlite3_vfs * /*system*/, const char *name, int flags, int *result) {
    return fails(Place::files) ? SQLITE_IOERR_ACCESS : realSystem()->xAccess(realSystem(), name, flags, result);
}

int fullPath(sqlite3_vfs * /*system*/, const char *name, int size, char *to) {
    return fails(Place::files) ? SQLITE_CANTOPEN_FULLPATH : realSystem()->xFullPathname(realSystem(), name, size, to);
}

// Waiting for a lock takes no time: nobody will give it back.
int sleep(sqlite3_vfs * /*system*/, int microseconds) {
    return microseconds;
}

} // namespace

void installFiles() {
    static sqlite3_vfs system = *realSystem();
    system.zName = "failing";
    system.pNext = nullptr;
    system.szOsFile += static_cast<int>(sizeof(File));
    system.xOpen = open;
    system.xDelete = remove;
    system.xAccess = access;
    system.xFullPathname = fullPath;
    system.xSleep = sleep;
    sqlite3_vfs_register(&system, 1);
}

int openFiles() {
    return g_open;
}

} // namespace edge
