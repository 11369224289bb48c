#include "cli/option.h"

#include <gtest/gtest.h>

#include "cli/error.h"

namespace {

using namespace cli;

std::string refusal(const std::string &text, uint64_t least, uint64_t most) {
    try {
        parseCount("--n", text, least, most);
    } catch (const UsageError &error) {
        return error.what();
    }
    return "taken";
}

TEST(Count, IsAWholeNumberWithinItsBounds) {
    EXPECT_EQ(parseCount("--n", "0", 0), 0u);
    EXPECT_EQ(parseCount("--n", "18446744073709551615", 1), kNoMost);
    EXPECT_EQ(parseCount("--n", "7", 7, 7), 7u);
    for (const char *text : {"6", "8", "", "x", "7x", " 7", "-7", "+7", "7.0", "99999999999999999999"})
        EXPECT_EQ(refusal(text, 7, 7), "--n takes a whole number from 7 to 7, not '" + std::string(text) + "'");
    EXPECT_EQ(refusal("0", 1, kNoMost), "--n takes a whole number from 1 on, not '0'");
}

TEST(Count, BeyondAllVariablesIsTheLargest) {
    EXPECT_EQ(parseCount("--n", "99999999999999999999", 1), kNoMost);
}

} // namespace
