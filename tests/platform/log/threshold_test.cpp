#include "ormeldb/platform/liblog.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(Threshold, IsInfoAtFirst) {
    EXPECT_EQ(FrameDebugLevelGet(), 2);
}

TEST(Threshold, IsWhatWasSet) {
    for (const int32_t level : {0, 6, 7, -1, INT32_MAX}) {
        FrameDebugLevelSet(level);
        EXPECT_EQ(FrameDebugLevelGet(), level);
    }
}

TEST(Threshold, MayBeSetWhileOthersAsk) {
    FrameDebugLevelSet(0);
    std::thread setter([] {
        for (int i = 0; i < 10000; ++i)
            FrameDebugLevelSet(i % 7);
    });
    for (int i = 0; i < 10000; ++i) {
        const int32_t level = FrameDebugLevelGet();
        EXPECT_TRUE(level >= 0 && level < 7) << level;
    }
    setter.join();
}

} // namespace
