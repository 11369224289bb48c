#include "postgres/resolve.h"

#include <gmock/gmock.h>

#include "support.h"

namespace ormel::client::postgres {

using testing::HasSubstr;

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kEnough(20);

Addresses found(const std::string &hosts, const std::string &ports) {
    return resolve(hosts, ports, steady_clock::now() + kEnough);
}

} // namespace

TEST(Resolve, addressesStayAsTheyAre) {
    struct Case {
        const char *hosts;
        const char *ports;
        const char *expectedPorts;
    };
    for (const Case &each : {Case{"127.0.0.1", "5433", "5433"}, Case{"127.0.0.1", "", "5432"}, Case{"::1", "1", "1"},
                             Case{"127.0.0.1,::1", "5433", "5433,5433"}, Case{"127.0.0.1,::1", "1,2", "1,2"}}) {
        SCOPED_TRACE(each.hosts);
        const Addresses addresses = found(each.hosts, each.ports);
        EXPECT_EQ(addresses.hosts, each.hosts);
        EXPECT_EQ(addresses.numbers, each.hosts);
        EXPECT_EQ(addresses.ports, each.expectedPorts);
    }
}

TEST(Resolve, foldersOfSocketsHaveNoNumber) {
    const Addresses addresses = found("/run/one,127.0.0.1", "1,2");
    EXPECT_EQ(addresses.hosts, "/run/one,127.0.0.1");
    EXPECT_EQ(addresses.numbers, ",127.0.0.1");
    EXPECT_EQ(addresses.ports, "1,2");
}

// An empty list would be taken from the environment.
TEST(Resolve, theNumbersOfASingleFolderAreNoEmptyList) {
    const Addresses addresses = found("/run/one", "1");
    EXPECT_EQ(addresses.hosts, "/run/one,/run/one");
    EXPECT_EQ(addresses.numbers, ",");
    EXPECT_EQ(addresses.ports, "1,1");
}

// Each address of a name stands for itself, with the name that certificates are made out to.
TEST(Resolve, namesAreListedWithEachAddress) {
    const Addresses addresses = found("localhost,127.0.0.1", "1,2");
    EXPECT_THAT(addresses.hosts, testing::MatchesRegex("(localhost,)+127.0.0.1"));
    EXPECT_THAT(addresses.numbers, testing::MatchesRegex("((127.0.0.1|::1),)+127.0.0.1"));
    EXPECT_THAT(addresses.ports, testing::MatchesRegex("(1,)+2"));
}

TEST(Resolve, aWrongNumberOfPortsIsRefused) {
    const std::pair<const char *, const char *> lists[] = {
        {"127.0.0.1", "1,2"}, {"127.0.0.1,::1", "1,2,3"}, {"127.0.0.1,::1,::1", "1,2"}, {"127.0.0.1", ","}};
    for (const auto &[hosts, ports] : lists) {
        SCOPED_TRACE(std::string(hosts) + " " + ports);
        const Error error = caught([&] { found(hosts, ports); });
        EXPECT_EQ(error.code, 8001U);
        EXPECT_THAT(error.message, HasSubstr("db.port"));
    }
}

TEST(Resolve, anUnknownNameIsNamed) {
    const Error error = caught([] { found("no-such-host.invalid", "1"); });
    EXPECT_EQ(error.code, 8001U);
    EXPECT_THAT(error.message, HasSubstr("no-such-host.invalid"));
    EXPECT_EQ(found("no-such-host.invalid,127.0.0.1", "1,2").ports, "2");
}

TEST(Resolve, aLookUpIsLeftAtTheDeadline) {
    const auto before = steady_clock::now();
    const Error error = caught([&] { resolve("no-such-host.invalid", "1", before); });
    EXPECT_LT(steady_clock::now() - before, std::chrono::seconds(2));
    EXPECT_THAT(error.message, HasSubstr("no-such-host.invalid"));
    EXPECT_EQ(resolve("127.0.0.1", "1", before).numbers, "127.0.0.1") << "what needs no look-up needs no time";
}

} // namespace ormel::client::postgres
