#include "home_settings.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <sstream>
#include <vector>

#include <ormeldb/config.h>
#include <unistd.h>

#include "error.h"
#include "templates.h"
#include "text.h"

namespace cli {
namespace {

constexpr const char *kServerEngine = "postgres";
constexpr const char *kEmbeddedEngine = "sqlite";
constexpr std::array kSslModes = {"DISABLED", "PREFERRED", "REQUIRED", "VERIFY_CA", "VERIFY_FULL"};

enum class Kind { text, ports, sslMode, file };

// An option of a server's home; fallback stands in the file where the option is not given, nullptr: it has to be.
struct Setting {
    const char *option;
    std::optional<std::string> HomeRequest::*value;
    const char *key;
    size_t field; // the library's, of which it leaves two bytes free
    Kind kind;
    const char *fallback;
};

constexpr std::array<Setting, 6> kSettings = {{
    {"--host", &HomeRequest::host, "db.host", sizeof(ORMEL_CONN_CFG::acHost), Kind::text, nullptr},
    {"--port", &HomeRequest::port, "db.port", sizeof(ORMEL_CONN_CFG::acPort), Kind::ports, "5432"},
    {"--dbname", &HomeRequest::dbname, "db.dbname", sizeof(ORMEL_CONN_CFG::acDbName), Kind::text, nullptr},
    {"--user", &HomeRequest::user, "db.user", sizeof(ORMEL_CONN_CFG::acUser), Kind::text, nullptr},
    {"--sslmode", &HomeRequest::sslMode, "auth.sslmode", sizeof(ORMEL_CONN_CFG::acSslMode), Kind::sslMode, "PREFERRED"},
    {"--sslrootcert", &HomeRequest::sslRootCert, "auth.sslrootcert", sizeof(ORMEL_CONN_CFG::acSslRootCert), Kind::file,
     ""},
}};

std::string listed(const std::vector<std::string> &words, const std::string &last) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i)
        text += (i == 0 ? "" : i + 1 == words.size() ? last : ", ") + words[i];
    return text;
}

std::string sslMode(const std::string &given) {
    for (const char *mode : kSslModes)
        if (lowerCase(given) == lowerCase(mode))
            return mode;
    throw UsageError("there is no --sslmode '" + given + "': it is " +
                     listed({kSslModes.begin(), kSslModes.end()}, " or "));
}

// One for all hosts, or one for each of a list.
std::string ports(const std::string &given) {
    std::istringstream list(given + ",");
    for (std::string port; std::getline(list, port, ',');) {
        uint16_t number = 0;
        const auto parsed = std::from_chars(port.data(), port.data() + port.size(), number);
        if (parsed.ec != std::errc() || parsed.ptr != port.data() + port.size() || number == 0)
            throw UsageError("--port takes a number from 1 to 65535, or several with commas between them, not '" +
                             given + "'");
    }
    return given;
}

// The file's whole path: the library would begin in bin/ of the home.
std::string readableFile(const std::string &given) {
    std::string path = std::filesystem::absolute(given).lexically_normal().string();
    if (access(path.c_str(), R_OK) != 0)
        throw UsageError("cannot read the file " + path + " of --sslrootcert: " + std::strerror(errno));
    return path;
}

std::string converted(const Setting &setting, const std::string &given) {
    switch (setting.kind) {
    case Kind::ports:
        return ports(given);
    case Kind::sslMode:
        return sslMode(given);
    case Kind::file:
        return readableFile(given);
    default:
        return given;
    }
}

void checkLine(const Setting &setting, const std::string &value) {
    const std::string option = setting.option;
    if (value.find_first_of("=\r\n") != std::string::npos)
        throw UsageError(option + " has an '=' or a line end in it, at which its value in the configuration would end");
    const size_t longest = setting.field - 2;
    if (value.size() > longest)
        throw UsageError(option + " has " + std::to_string(value.size()) + " bytes; the library keeps " +
                         std::to_string(longest));
    constexpr const char *blanks = " \t\v\f";
    if (value.find_last_not_of(blanks) + 1 != value.size() || value.find_first_not_of(blanks) > 0)
        throw UsageError(option + " is empty or has a blank at an end, which the library would cut off");
}

std::string valueOf(const Setting &setting, const HomeRequest &request) {
    const std::optional<std::string> &given = request.*setting.value;
    if (!given)
        return setting.fallback;
    checkLine(setting, *given);
    std::string value = converted(setting, *given);
    checkLine(setting, value);
    return value;
}

// The options that meet a condition, by name.
template <typename Condition> std::vector<std::string> optionsThat(const Condition &condition) {
    std::vector<std::string> names;
    for (const Setting &setting : kSettings)
        if (condition(setting))
            names.emplace_back(setting.option);
    return names;
}

void set(std::string &text, const std::string &key, const std::string &value) {
    const size_t begin = text.find("\n" + key + "=") + key.size() + 2;
    text.replace(begin, text.find('\n', begin) - begin, value);
}

std::string serverSettings(const HomeRequest &request) {
    const auto missing =
        optionsThat([&](const Setting &setting) { return setting.fallback == nullptr && !(request.*setting.value); });
    if (!missing.empty())
        throw UsageError(std::string("--engine ") + kServerEngine + " needs " + listed(missing, " and ") + " as well");
    std::string text = kDbConfTemplate;
    set(text, "db.driver", kServerEngine);
    for (const Setting &setting : kSettings)
        set(text, setting.key, valueOf(setting, request));
    if (request.sslMode && lowerCase(*request.sslMode).rfind("verify", 0) == 0 && !request.sslRootCert)
        throw UsageError("--sslmode " + sslMode(*request.sslMode) +
                         " needs --sslrootcert FILE, the authority that the server's certificate is checked against");
    return text;
}

} // namespace

bool isServer(const HomeRequest &request) {
    if (request.engine != kServerEngine && request.engine != kEmbeddedEngine)
        throw UsageError("there is no engine '" + request.engine + "': it is " + kEmbeddedEngine + " or " +
                         kServerEngine);
    return request.engine == kServerEngine;
}

std::string databaseSettings(const HomeRequest &request) {
    if (isServer(request))
        return serverSettings(request);
    const auto foreign = optionsThat([&](const Setting &setting) { return (request.*setting.value).has_value(); });
    if (!foreign.empty())
        throw UsageError(listed(foreign, " and ") + ": only with --engine " + kServerEngine +
                         "; the embedded database is data/ormel.db until conf/db.conf names another");
    return kDbConfTemplate;
}

} // namespace cli
