#include "ormeldb/platform/opbbase.h"

#include <gtest/gtest.h>

#include <sys/time.h>

#include <atomic>
#include <csignal>
#include <ctime>

namespace {

uint64_t ticks() {
    uint32_t low = 0;
    uint32_t high = 0;
    XOS_GetCpuTick(&low, &high);
    return uint64_t{high} << 32 | low;
}

uint64_t nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
}

struct Ms {
    uint32_t high;
    uint32_t low;
};

Ms toMs(uint64_t count) {
    const XOS_CPU_TICK tick{static_cast<uint32_t>(count), static_cast<uint32_t>(count >> 32)};
    Ms ms{77, 77};
    XOS_CpuTick2Ms(&tick, &ms.high, &ms.low);
    return ms;
}

TEST(GetCpuTick, CountsNanosecondsOfTheMonotonicClock) {
    const uint64_t before = nanoseconds();
    const uint64_t tick = ticks();
    EXPECT_LE(before, tick);
    EXPECT_LE(tick, nanoseconds());
}

TEST(GetCpuTick, LeavesOutAWordThatNobodyAsksFor) {
    uint32_t low = 0;
    uint32_t high = UINT32_MAX;
    XOS_GetCpuTick(&low, nullptr);
    XOS_GetCpuTick(nullptr, &high);
    XOS_GetCpuTick(nullptr, nullptr);
    EXPECT_NE(high, UINT32_MAX);
}

TEST(CpuTick2Ms, GivesWholeMilliseconds) {
    EXPECT_EQ(toMs(0).low, 0u);
    EXPECT_EQ(toMs(999'999).low, 0u);
    EXPECT_EQ(toMs(1'000'000).low, 1u);
    EXPECT_EQ(toMs(30'000'999'999).low, 30'000u);
    EXPECT_EQ(toMs(30'000'999'999).high, 0u);
}

TEST(CpuTick2Ms, GivesTheHighWordFirst) {
    const Ms ms = toMs((uint64_t{3} << 32 | 5) * 1'000'000);
    EXPECT_EQ(ms.high, 3u);
    EXPECT_EQ(ms.low, 5u);
}

TEST(CpuTick2Ms, TakesTheDifferenceOfAnUnmovedClockAsNothing) {
    EXPECT_EQ(toMs(UINT64_MAX).high, 0u);
    EXPECT_EQ(toMs(UINT64_MAX).low, 0u);
    const Ms almost = toMs(UINT64_MAX - 1);
    EXPECT_EQ(uint64_t{almost.high} << 32 | almost.low, (UINT64_MAX - 1) / 1'000'000);
}

TEST(CpuTick2Ms, TakesNoPointers) {
    const XOS_CPU_TICK tick{5'000'000, 0};
    uint32_t low = 77;
    XOS_CpuTick2Ms(&tick, nullptr, &low);
    EXPECT_EQ(low, 5u);
    XOS_CpuTick2Ms(&tick, nullptr, nullptr);
    XOS_CpuTick2Ms(nullptr, nullptr, &low);
    EXPECT_EQ(low, 0u);
}

TEST(Sleep, OfNoSecondsReturns) {
    OPB_sleep(0);
}

std::atomic<int> alarms{0};

// Interrupted by a timer every 50 ms, it sleeps its second all the same.
TEST(Sleep, LastsItsSecondsThroughSignals) {
    struct sigaction action {};
    action.sa_handler = [](int) { alarms.fetch_add(1); };
    ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
    const itimerval often{{0, 50'000}, {0, 50'000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);

    const uint64_t before = nanoseconds();
    OPB_sleep(1);
    const uint64_t slept = nanoseconds() - before;

    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_GE(slept, 1'000'000'000u);
    EXPECT_GT(alarms.load(), 0);
}

} // namespace
