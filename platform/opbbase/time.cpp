#include "ormeldb/platform/opbbase.h"

#include <cerrno>
#include <ctime>

namespace {

constexpr uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr uint64_t kNanosecondsPerMs = 1'000'000;
constexpr uint64_t kUnmoved = UINT64_MAX;

timespec monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

void store(uint64_t value, uint32_t *low, uint32_t *high) {
    if (low != nullptr)
        *low = static_cast<uint32_t>(value);
    if (high != nullptr)
        *high = static_cast<uint32_t>(value >> 32);
}

} // namespace

void XOS_GetCpuTick(uint32_t *puiLow, uint32_t *puiHigh) {
    const timespec now = monotonicNow();
    store(static_cast<uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<uint64_t>(now.tv_nsec), puiLow,
          puiHigh);
}

void XOS_CpuTick2Ms(const XOS_CPU_TICK *pstTick, uint32_t *puiMsHigh, uint32_t *puiMsLow) {
    uint64_t ticks = pstTick != nullptr ? uint64_t{pstTick->uiHigh} << 32 | pstTick->uiLow : 0;
    // Two equal readings are subtracted with a borrow and come out as minus one.
    if (ticks == kUnmoved)
        ticks = 0;
    store(ticks / kNanosecondsPerMs, puiMsLow, puiMsHigh);
}

void OPB_sleep(uint32_t uiSeconds) {
    timespec until = monotonicNow();
    until.tv_sec += uiSeconds;
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}
