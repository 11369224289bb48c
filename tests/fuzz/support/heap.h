// The library's heap around one input: nothing of it is left, and a request may fail.
#pragma once

#include "require.h"
#include "unit/support/memory.h"

namespace fuzz {

// Requires at its end that as many blocks live as at its start; n above 0: the n-th request fails.
class Heap {
public:
    explicit Heap(int n = 0) : before_(unit::LiveBlocks()), failing_(n) {}
    ~Heap() { require(unit::LiveBlocks() == before_, "every block is given back, once"); }
    Heap(const Heap &) = delete;
    Heap &operator=(const Heap &) = delete;

private:
    size_t before_;
    unit::FailingAllocation failing_;
};

} // namespace fuzz
