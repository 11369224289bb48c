#include "postgres/conninfo.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <memory>

#include "support.h"

namespace ormel::client::postgres {

using testing::HasSubstr;

namespace {

constexpr uint32_t kVerifyFull = 4;

Settings someSettings() {
    Settings settings;
    settings.user = "somebody";
    return settings;
}

std::string valueOf(const Conninfo &conninfo, std::string_view name) {
    const auto found =
        std::find_if(conninfo.begin(), conninfo.end(), [&](const auto &each) { return each.first == name; });
    return found != conninfo.end() ? found->second : "";
}

} // namespace

// Whatever libpq would take from the environment or a service is either given or named here: what cannot be given
// because only its absence is harmless.
TEST(Conninfo, givesEveryParameterOfLibpq) {
    const std::pair<std::string_view, const char *> absent[] = {
        {"service", "names other parameters, all of which have values"},
        {"requirepeer", "can only refuse a server at a socket"},
        {"gsslib", "counts on another system"},
        {"fallback_application_name", "counts without a name"},
        {"sslpassword", "opens this client's own key"},
    };
    const Conninfo conninfo = conninfoOf(someSettings(), {"localhost", "127.0.0.1", "5432"});
    const std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> known(PQconndefaults(), PQconninfoFree);
    ASSERT_NE(known, nullptr);
    for (const PQconninfoOption *option = known.get(); option->keyword != nullptr; ++option) {
        const auto isThis = [&](const auto &each) { return each.first == option->keyword; };
        const bool named = std::any_of(std::begin(absent), std::end(absent), isThis);
        EXPECT_EQ(valueOf(conninfo, option->keyword).empty(), named) << option->keyword;
    }
}

// A single empty element would be taken from the environment.
TEST(Conninfo, aFolderOfSocketsIsGivenTwice) {
    const Conninfo conninfo = conninfoOf(someSettings(), {"/run/one", "", "1"});
    EXPECT_EQ(valueOf(conninfo, "host"), "/run/one,/run/one");
    EXPECT_EQ(valueOf(conninfo, "hostaddr"), ",");
    EXPECT_EQ(valueOf(conninfo, "port"), "1,1");
}

// Nobody in particular would be whom the environment names.
TEST(Conninfo, somebodyConnects) {
    const Error error = caught([] { conninfoOf(Settings(), {"localhost", "127.0.0.1", "1"}); });
    EXPECT_THAT(error.message, testing::AllOf(testing::StartsWith("F0000: "), HasSubstr("db.user")));
}

TEST(Conninfo, verifyingNeedsAnAuthority) {
    Settings settings = someSettings();
    settings.sslMode = kVerifyFull;
    const Error error = caught([&] { conninfoOf(settings, {"localhost", "127.0.0.1", "1"}); });
    EXPECT_THAT(error.message, HasSubstr("auth.sslrootcert"));
    settings.config["auth.sslrootcert"] = "/a/file";
    EXPECT_EQ(valueOf(conninfoOf(settings, {"localhost", "127.0.0.1", "1"}), "sslrootcert"), "/a/file");
}

} // namespace ormel::client::postgres
