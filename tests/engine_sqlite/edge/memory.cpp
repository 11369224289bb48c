// The memory under SQLite, which is not there where a fault asks for it.
#include <sqlite3.h>

#include "edge/faults.h"

namespace edge {

namespace {

sqlite3_mem_methods g_real;

void *allocate(int size) {
    return fails(Place::memory) ? nullptr : g_real.xMalloc(size);
}

void *reallocate(void *block, int size) {
    return fails(Place::memory) ? nullptr : g_real.xRealloc(block, size);
}

} // namespace

void installMemory() {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_real);
    sqlite3_mem_methods failing = g_real;
    failing.xMalloc = allocate;
    failing.xRealloc = reallocate;
    sqlite3_config(SQLITE_CONFIG_MALLOC, &failing);
}

} // namespace edge
