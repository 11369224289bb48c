// The fixture of all contract tests: a home, an empty database, and ways to connect to it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/engine.h"

namespace contract {

class ContractTest : public testing::TestWithParam<Engine *> {
protected:
    ContractTest() { configure(""); }
    ~ContractTest() override { engine().dropDatabase(); }

    Engine &engine() const { return *GetParam(); }
    const Home &home() const { return home_; }
    Target target() const { return engine().target(); }
    Connection connect() const { return Connection(target()); }
    // Adds lines to the configuration that leads to the database.
    void configure(const std::string &lines) const { home_.writeConfig(database_ + lines); }

    // A table "t" of one integer key and a text, and as many rows (1, 'row 1') ... as asked for. Committed.
    static void makeTable(Connection &db, int32_t rows = 0);
    // Inserts rows with the keys first to last.
    static void fill(Connection &db, int32_t first, int32_t last);
    static int64_t count(Connection &db, const std::string &table = "t");

private:
    Home home_;
    std::string database_ = GetParam()->makeDatabase(home_);
};

// A row of text values, for comparisons.
template <class... Texts> Row rowOf(const Texts &...texts) {
    Row row;
    (row.emplace_back(texts), ...);
    return row;
}

} // namespace contract

// Runs a file's tests against every engine; and those of what one engine has of its own, which are not of the suite.
#define CONTRACT_SUITE(Suite) RUN_SUITE(Contract, Suite)
#define ENGINE_SUITE(Suite) RUN_SUITE(Engine, Suite)
#define RUN_SUITE(Prefix, Suite)                                                                                       \
    INSTANTIATE_TEST_SUITE_P(Prefix, Suite, testing::ValuesIn(contract::engines()),                                    \
                             [](const auto &engine) { return std::string(engine.param->name()); })

// Skips a test about what the engine does not have, and says why.
#define NEEDS(feature)                                                                                                 \
    if (const char *reason = engine().lacks(contract::Feature::feature))                                               \
    GTEST_SKIP() << engine().name() << ": " << reason

// A call of the client that must succeed or fail; what it says about it is shown.
#define EXPECT_OK(db, call) EXPECT_EQ(call, 0U) << (db).error()
#define EXPECT_FAILS(call) EXPECT_NE(call, 0U)
