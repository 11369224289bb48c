// How far the memory that the process holds grows.
#pragma once

#include <cstddef>
#include <string>

namespace database {

// Why that cannot be measured here; empty where it can.
std::string whyUnmeasured();

// From its construction on. What earlier work left in the heap is given back first, so that it hides nothing.
class MemoryGrowth {
public:
    MemoryGrowth();
    size_t peak() const; // bytes

private:
    size_t before_;
};

} // namespace database
