#include "ormeldb/version.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(VersionTest, IsTheHeaders) {
    EXPECT_STREQ(ORMEL_Version(), ORMELDB_VERSION);
    EXPECT_EQ(ORMEL_Version(), std::to_string(ORMELDB_VERSION_MAJOR) + "." + std::to_string(ORMELDB_VERSION_MINOR) +
                                   "." + std::to_string(ORMELDB_VERSION_PATCH));
}

} // namespace
