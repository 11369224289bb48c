// Faults, and what is held before and after one.
#ifndef FAULT_FAULT_H
#define FAULT_FAULT_H

#include <optional>
#include <string>
#include <vector>

#include "support/memory.h"

namespace fault {

enum class Kind { client, memory, log };

const char *Name(Kind kind);

// The n-th of the calls of a kind fails, or all from there on; n 0: none does.
struct Fault {
    Kind kind;
    int n;
    bool lasting;
    bool cached; // the library's cache knows the tables
};

std::string Title(const Fault &fault);

// Lets the fault happen for as long as it lives.
class Armed {
public:
    explicit Armed(const Fault &fault);
    ~Armed();
    Armed(const Armed &) = delete;
    Armed &operator=(const Armed &) = delete;

    // Whether there were that many calls.
    bool Happened() const;

private:
    Fault fault_;
    std::optional<unit::FailingAllocation> allocation_;
};

// What is live: handles of the client, blocks without those of the cached descriptors, slots, the log's instance.
struct Held {
    static Held Now();

    int connections;
    int statements;
    long blocks;
    std::vector<const void *> slots; // connection, statement and descriptor of each
    uint32_t taken;
    const void *log;

    bool operator==(const Held &) const = default;
};

// Names in messages what is held, of the slots those that differ.
std::string Difference(const Held &now, const Held &before);

} // namespace fault

#endif
