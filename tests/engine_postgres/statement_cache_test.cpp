#include "postgres/statement_cache.h"

#include <gtest/gtest.h>

namespace ormel::client::postgres {

namespace {

constexpr int kKept = 64;

Description named(const std::string &name) {
    Description description;
    description.name = name;
    return description;
}

std::string sql(int i) {
    return "SELECT " + std::to_string(i);
}

} // namespace

TEST(StatementCache, givesEachDescriptionOnce) {
    StatementCache cache;
    EXPECT_EQ(cache.give("SELECT 1", named("s1")), "");
    EXPECT_FALSE(cache.take("SELECT 2").has_value());
    const auto taken = cache.take("SELECT 1");
    ASSERT_TRUE(taken.has_value());
    EXPECT_EQ(taken->name, "s1");
    EXPECT_FALSE(cache.take("SELECT 1").has_value());
}

TEST(StatementCache, twoOfOneTextAreBothKept) {
    StatementCache cache;
    cache.give("SELECT 1", named("s1"));
    cache.give("SELECT 1", named("s2"));
    EXPECT_EQ(cache.take("SELECT 1")->name, "s2");
    EXPECT_EQ(cache.take("SELECT 1")->name, "s1");
}

TEST(StatementCache, keepsTheLatestAndNamesTheOneThatGoes) {
    StatementCache cache;
    for (int i = 0; i < kKept; ++i)
        EXPECT_EQ(cache.give(sql(i), named("s" + std::to_string(i))), "") << i;
    cache.give(sql(0), *cache.take(sql(0)));
    EXPECT_EQ(cache.give(sql(kKept), named("s64")), "s1");
    EXPECT_FALSE(cache.take(sql(1)).has_value());
    EXPECT_TRUE(cache.take(sql(0)).has_value());
    for (int i = 2; i <= kKept; ++i)
        EXPECT_TRUE(cache.take(sql(i)).has_value()) << i;
}

// The server has nothing prepared for a query.
TEST(StatementCache, aQueryGoesWithoutAName) {
    StatementCache cache;
    for (int i = 0; i <= kKept; ++i)
        EXPECT_EQ(cache.give(sql(i), named("")), "");
    EXPECT_FALSE(cache.take(sql(0)).has_value());
}

} // namespace ormel::client::postgres
