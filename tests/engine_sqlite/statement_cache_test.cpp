#include "sqlite/statement_cache.h"

#include <gtest/gtest.h>

namespace ormel::client::sqlite {

namespace {

class StatementCacheTest : public testing::Test {
protected:
    StatementCacheTest() {
        sqlite3 *raw = nullptr;
        sqlite3_open(":memory:", &raw);
        database_.reset(raw);
    }

    sqlite3_stmt *give(const std::string &sql) {
        sqlite3_stmt *raw = nullptr;
        sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &raw, nullptr);
        cache_.give(sql, OwnedStatement(raw));
        return raw;
    }

    OwnedDatabase database_;
    StatementCache cache_;
};

} // namespace

TEST_F(StatementCacheTest, givesEachStatementOnce) {
    const sqlite3_stmt *given = give("SELECT 1");
    EXPECT_EQ(cache_.take("SELECT 2"), nullptr);
    const OwnedStatement taken = cache_.take("SELECT 1");
    EXPECT_EQ(taken.get(), given);
    EXPECT_EQ(cache_.take("SELECT 1"), nullptr);
}

TEST_F(StatementCacheTest, keepsTheLatest) {
    constexpr int kept = 32;
    for (int i = 0; i <= kept; ++i)
        give("SELECT " + std::to_string(i));
    EXPECT_EQ(cache_.take("SELECT 0"), nullptr);
    for (int i = 1; i <= kept; ++i)
        EXPECT_NE(cache_.take("SELECT " + std::to_string(i)), nullptr) << i;
}

} // namespace ormel::client::sqlite
