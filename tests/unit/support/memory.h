// The library's heap: what it asks for, what is left, and requests that fail on demand. Only the malloc family of the
// objects linked into the test is seen, that is, of the library and of the test, not of the standard library.
#ifndef UNIT_MEMORY_H
#define UNIT_MEMORY_H

#include <cstddef>
#include <unordered_set>
#include <vector>

namespace unit {

// The largest block that is ever given: sizes that come out of absurd counts are refused.
inline constexpr size_t kLargestBlock = size_t{1} << 30;

// Makes the n-th allocation fail, counted from its construction on, or all from the n-th on; n 0 only counts.
class FailingAllocation {
public:
    explicit FailingAllocation(int n, bool lasting = false);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation &) = delete;
    FailingAllocation &operator=(const FailingAllocation &) = delete;

    // Whether there were that many.
    bool Happened() const;
    // Bytes asked for since the construction.
    std::vector<size_t> Sizes() const;
};

// Blocks given and not yet freed.
size_t LiveBlocks();

// The blocks themselves, and a way to free those that are not among earlier ones: what the library keeps on purpose.
// Returns how many there were.
using Blocks = std::unordered_set<void *>;
Blocks Live();
size_t FreeNew(const Blocks &before);

// Runs operation() once for each of its allocations, which fails; check(n) follows each run. Returns how many there
// were.
template <class Operation, class Check> int ForEachAllocation(Operation operation, Check check) {
    for (int n = 1;; ++n) {
        {
            FailingAllocation fail(n);
            operation();
            if (!fail.Happened()) {
                return n - 1;
            }
        }
        check(n);
    }
}

} // namespace unit

#endif
