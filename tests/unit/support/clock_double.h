// The platform's clock and sleep: time passes only when the library sleeps or a test lets it.
#ifndef UNIT_CLOCK_DOUBLE_H
#define UNIT_CLOCK_DOUBLE_H

#include <cstdint>
#include <vector>

namespace unit {

// One tick is one millisecond here.
struct ClockDouble {
    uint64_t now = 0;
    int reads = 0;
    std::vector<uint32_t> sleeps;
    std::vector<uint64_t> differences; // converted to milliseconds

    void Reset(uint64_t start = 1000) { *this = ClockDouble{start, 0, {}, {}}; }
};

ClockDouble &Clock();

} // namespace unit

#endif
