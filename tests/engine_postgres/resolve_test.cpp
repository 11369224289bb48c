#include "postgres/resolve.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <mutex>
#include <netdb.h>
#include <string_view>

#include "support.h"

namespace ormel::client::postgres {

using testing::AnyOf;
using testing::Each;
using testing::HasSubstr;

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kEnough(20);

constexpr char kSilentHost[] = "silent.invalid";
std::timed_mutex g_silence; // while it is held, nobody hears of that host

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

// In place of the system's, which it asks about all other hosts.
extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char *host, const char *service,
                                                                  const addrinfo *hints, addrinfo **list) {
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (std::string_view(host) != kSilentHost || (hints->ai_flags & AI_NUMERICHOST) != 0)
        return real(host, service, hints, list);
    if (g_silence.try_lock_for(kEnough))
        g_silence.unlock();
    return EAI_AGAIN;
}

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
    const std::lock_guard silence(g_silence);
    const auto now = steady_clock::now();
    const Error error = caught([&] { addressesOf(kSilentHost, now); });
    EXPECT_EQ(error.code, 8001U);
    EXPECT_THAT(error.message, AllOf(HasSubstr(kSilentHost), HasSubstr("client.connect_timeout_ms")));
    EXPECT_EQ(addressesOf("127.0.0.1", now).at(0), "127.0.0.1") << "what needs no look-up needs no time";
}

} // namespace ormel::client::postgres
