#include "ormeldb/platform/opbbase.h"

#include <gtest/gtest.h>

namespace {

std::string reported(const char *file, int32_t line, int32_t value) {
    testing::internal::CaptureStderr();
    DQA_Assert(file, line, value);
    return testing::internal::GetCapturedStderr();
}

TEST(Assert, ReportsOnStandardErrorAndReturns) {
    EXPECT_EQ(reported("avl_tree_api", 214, 0), "Assertion failed: avl_tree_api:214 (value 0)\n");
    EXPECT_EQ(reported(nullptr, -1, 7), "Assertion failed: ?:-1 (value 7)\n");
}

} // namespace
