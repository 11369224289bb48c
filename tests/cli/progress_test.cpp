#include "cli/progress.h"

#include <gtest/gtest.h>

namespace {

using cli::duration;

TEST(Duration, ReadsAsOnAClock) {
    EXPECT_EQ(duration(0), "0:00");
    EXPECT_EQ(duration(7), "0:07");
    EXPECT_EQ(duration(59 * 60 + 59), "59:59");
    EXPECT_EQ(duration(60 * 60), "1:00:00");
    EXPECT_EQ(duration(100 * 3600 + 2 * 60 + 3), "100:02:03");
}

} // namespace
