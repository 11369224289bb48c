#include "ormeldb/platform/liblog.h"

#include <atomic>

namespace {

constexpr int32_t kInfo = 2;

// Asked for by every line that is logged or not, from any thread: no order with anything else is needed.
std::atomic<int32_t> threshold{kInfo};

} // namespace

int32_t FrameDebugLevelGet(void) {
    return threshold.load(std::memory_order_relaxed);
}

void FrameDebugLevelSet(int32_t iLevel) {
    threshold.store(iLevel, std::memory_order_relaxed);
}
