#include <filesystem>
#include <functional>
#include <gtest/gtest.h>

#include "front/pool.h"

namespace ormel::client {

namespace {

std::chrono::steady_clock::time_point g_now;

class KeptConnection : public Connection {
public:
    explicit KeptConnection(int &open) : open_(++open) {}
    ~KeptConnection() override { --open_; }
    KeptConnection(const KeptConnection &) = delete;
    KeptConnection &operator=(const KeptConnection &) = delete;

    std::unique_ptr<Statement> prepare(const std::string & /*sql*/) override { return nullptr; }
    void begin() override {}
    void commit() override {}
    void rollback() override {}
    bool recycle() noexcept override { return true; }

private:
    int &open_;
};

class PoolTest : public testing::Test {
protected:
    PoolTest() {
        g_poolClock = [] { return g_now; };
    }
    ~PoolTest() override {
        g_now += std::chrono::hours(1);
        takeIdle({}); // and closes what has been kept too long
        EXPECT_EQ(open_, 0);
        g_poolClock = std::chrono::steady_clock::now;
    }

    void keep(const Settings &settings) { keepIdle(settings, std::make_unique<KeptConnection>(open_)); }
    static bool has(const Settings &settings) { return takeIdle(settings) != nullptr; }

    const Settings settings_ = {"host", "5432", "user", "password", 2, {{"db.dbname", "records"}}};
    int open_ = 0;
};

TEST_F(PoolTest, GivesOneToWhoWantsTheSame) {
    keep(settings_);
    EXPECT_TRUE(has(settings_));
    EXPECT_FALSE(has(settings_));
}

TEST_F(PoolTest, GivesNoneToWhoWantsAnother) {
    const std::function<void(Settings &)> others[] = {
        [](Settings &other) { other.host = "other"; },
        [](Settings &other) { other.port = "5433"; },
        [](Settings &other) { other.user = "other"; },
        [](Settings &other) { other.password = "wrong"; },
        [](Settings &other) { other.password.clear(); },
        [](Settings &other) { other.sslMode = 4; },
        [](Settings &other) { other.config["db.dbname"] = "other"; },
        [](Settings &other) { other.config["auth.sslrootcert"] = "root.crt"; },
    };
    keep(settings_);
    for (const auto &change : others) {
        Settings other = settings_;
        change(other);
        EXPECT_FALSE(has(other)) << &change - others;
    }
    EXPECT_TRUE(has(settings_));
}

TEST_F(PoolTest, GivesNoneToWhoWorksInAnotherDirectory) {
    const auto before = std::filesystem::current_path();
    keep(settings_);
    std::filesystem::current_path("/");
    EXPECT_FALSE(has(settings_));
    std::filesystem::current_path(before);
    EXPECT_TRUE(has(settings_));
}

TEST_F(PoolTest, KeepsOneForAMinuteAndNoLonger) {
    const std::chrono::seconds minute(60);
    keep(settings_);
    g_now += minute;
    EXPECT_TRUE(has(settings_));
    keep(settings_);
    g_now += minute + std::chrono::nanoseconds(1);
    EXPECT_FALSE(has(settings_));
    EXPECT_EQ(open_, 0);
}

TEST_F(PoolTest, WhoKeepsOneClosesTheOld) {
    keep(settings_);
    g_now += std::chrono::seconds(61);
    Settings other = settings_;
    other.user = "other";
    keep(other);
    EXPECT_EQ(open_, 1);
    EXPECT_TRUE(has(other));
}

TEST_F(PoolTest, ClosesTheOldestWhereThereAreTooMany) {
    Settings user = settings_;
    user.config["client.pool"] = "2";
    for (const char *name : {"a", "b", "c"}) {
        user.user = name;
        keep(user);
    }
    EXPECT_EQ(open_, 2);
    for (const char *name : {"a", "b", "c"}) {
        user.user = name;
        EXPECT_EQ(has(user), std::string(name) != "a") << name;
    }
}

} // namespace

} // namespace ormel::client
