// What tests begin with that chance has a part in.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

// The seed of a run, which is printed: ORMEL_SEED, a new one every night, and otherwise always the same, so that a run
// that fails has a change to blame for it.
inline uint64_t seedOfRun() {
    const char *given = std::getenv("ORMEL_SEED");
    uint64_t seed = 20260715;
    if (given != nullptr)
        seed = std::stoull(given);
    else if (std::getenv("ORMEL_NIGHTLY") != nullptr)
        seed = std::random_device()();
    std::cout << "repeat with ORMEL_SEED=" << seed << std::endl;
    return seed;
}
