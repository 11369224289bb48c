#include "edge/faults.h"

#include <atomic>

namespace edge {

namespace {

std::atomic<const Fault *> g_fault = nullptr;
std::atomic<uint64_t> g_calls = 0;
std::atomic<bool> g_failed = false;

} // namespace

void arm(const Fault &fault) {
    g_calls = 0;
    g_failed = false;
    g_fault = &fault;
}

bool disarm() {
    g_fault = nullptr;
    return g_failed;
}

bool fails(Place place) {
    const Fault *fault = g_fault;
    if (fault == nullptr || fault->place != place)
        return false;
    const uint64_t call = ++g_calls;
    const bool failed = fault->lasting ? call >= fault->first : call == fault->first;
    if (failed)
        g_failed = true;
    return failed;
}

} // namespace edge
