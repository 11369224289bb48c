#include "clock_double.h"

#include "ormeldb/platform/opbbase.h"

namespace unit {

ClockDouble &Clock() {
    static ClockDouble clock;
    return clock;
}

} // namespace unit

extern "C" {

// They stand before the platform's own ones, because a program's names come first.
__attribute__((visibility("default"))) void OPB_sleep(uint32_t uiSeconds) {
    unit::Clock().sleeps.push_back(uiSeconds);
    unit::Clock().now += uint64_t{uiSeconds} * 1000;
}

__attribute__((visibility("default"))) void XOS_GetCpuTick(uint32_t *puiLow, uint32_t *puiHigh) {
    ++unit::Clock().reads;
    *puiLow = static_cast<uint32_t>(unit::Clock().now);
    *puiHigh = static_cast<uint32_t>(unit::Clock().now >> 32);
}

// The first word is the high one; all ones stand for a clock that did not move.
__attribute__((visibility("default"))) void XOS_CpuTick2Ms(const XOS_CPU_TICK *pstTick, uint32_t *puiMsHigh,
                                                           uint32_t *puiMsLow) {
    uint64_t ticks = (uint64_t{pstTick->uiHigh} << 32) | pstTick->uiLow;
    unit::Clock().differences.push_back(ticks);
    ticks = ticks == UINT64_MAX ? 0 : ticks;
    *puiMsHigh = static_cast<uint32_t>(ticks >> 32);
    *puiMsLow = static_cast<uint32_t>(ticks);
}
}
