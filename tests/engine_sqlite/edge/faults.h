// Failures on demand at SQLite's edge: a call of a kind fails, once or from then on.
#pragma once

#include <cstdint>

namespace edge {

enum class Place : uint8_t {
    files,  // opening, reading, writing, cutting, syncing, locking and mapping of files
    disk,   // writing: the disk is full
    locks,  // of files and of the log's index: somebody else has them
    memory, // allocations of SQLite
};

struct Fault {
    Place place;
    uint64_t first; // call that fails, from 1
    bool lasting;   // and all that come after it
};

// From here on they stand under SQLite; once, in this order, before it is used.
void installMemory();
void installFiles();

void arm(const Fault &fault);
// Whether a call has failed since.
bool disarm();

// Whether the call that asks is to fail. Any thread.
bool fails(Place place);

// Files that SQLite has open through us.
int openFiles();

} // namespace edge
