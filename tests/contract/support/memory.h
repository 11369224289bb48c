// Requests for memory that fail on demand: those of C++ code, the client's and its engines' included, wherever it lies.
#pragma once

#include <cstdint>

namespace contract {

// Makes the n-th request of this thread fail, counted from the construction on from 1, or that one and all behind it.
class FailingMemory {
public:
    enum class Mode { once, fromThenOn };

    FailingMemory(uint64_t n, Mode mode);
    ~FailingMemory();
    FailingMemory(const FailingMemory &) = delete;
    FailingMemory &operator=(const FailingMemory &) = delete;

    // Whether there were that many.
    bool happened() const;
};

} // namespace contract
