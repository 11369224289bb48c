#include "postgres/resolve.h"

#include <gmock/gmock.h>

#include "support.h"

namespace ormel::client::postgres {

using testing::AnyOf;
using testing::Each;
using testing::HasSubstr;

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kEnough(20);

std::vector<std::string> found(const std::string &name) {
    return addressesOf(name, steady_clock::now() + kEnough);
}

// "host port, host port"
std::string listed(const std::string &hosts, const std::string &ports) {
    std::string list;
    for (const Host &host : hostsOf(hosts, ports))
        list += (list.empty() ? "" : ", ") + host.name + " " + host.port;
    return list;
}

} // namespace

TEST(Resolve, hostsHaveAPortEachOrOneForAll) {
    EXPECT_EQ(listed("127.0.0.1", "5433"), "127.0.0.1 5433");
    EXPECT_EQ(listed("::1", ""), "::1 5432");
    EXPECT_EQ(listed("a,::1", "5433"), "a 5433, ::1 5433");
    EXPECT_EQ(listed("a,b,/run/one", "1,2,3"), "a 1, b 2, /run/one 3");
    EXPECT_EQ(listed("", "1"), " 1");
}

TEST(Resolve, aWrongNumberOfPortsIsRefused) {
    const std::pair<const char *, const char *> lists[] = {
        {"127.0.0.1", "1,2"}, {"127.0.0.1,::1", "1,2,3"}, {"127.0.0.1,::1,::1", "1,2"}, {"127.0.0.1", ","}};
    for (const auto &[hosts, ports] : lists) {
        SCOPED_TRACE(std::string(hosts) + " " + ports);
        const Error error = caught([&] { listed(hosts, ports); });
        EXPECT_EQ(error.code, 8001U);
        EXPECT_THAT(error.message, HasSubstr("db.port"));
    }
}

TEST(Resolve, addressesStayAsTheyAre) {
    for (const char *number : {"127.0.0.1", "::1"})
        EXPECT_EQ(found(number), std::vector<std::string>{number});
}

TEST(Resolve, foldersOfSocketsHaveNoNumber) {
    for (const char *folder : {"/run/one", ""})
        EXPECT_EQ(found(folder), std::vector<std::string>{""});
}

TEST(Resolve, namesHaveAddresses) {
    EXPECT_FALSE(found("localhost").empty());
    EXPECT_THAT(found("localhost"), Each(AnyOf("127.0.0.1", "::1")));
}

TEST(Resolve, anUnknownNameIsNamed) {
    const Error error = caught([] { found("no-such-host.invalid"); });
    EXPECT_EQ(error.code, 8001U);
    EXPECT_THAT(error.message, HasSubstr("no-such-host.invalid"));
}

TEST(Resolve, aLookUpIsLeftAtTheDeadline) {
    const auto before = steady_clock::now();
    const Error error = caught([&] { addressesOf("no-such-host.invalid", before); });
    EXPECT_LT(steady_clock::now() - before, std::chrono::seconds(2));
    EXPECT_THAT(error.message, HasSubstr("no-such-host.invalid"));
    EXPECT_EQ(addressesOf("127.0.0.1", before).at(0), "127.0.0.1") << "what needs no look-up needs no time";
}

} // namespace ormel::client::postgres
