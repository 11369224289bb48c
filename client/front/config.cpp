#include "config.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <string_view>

#include "errors.h"

namespace ormel::client {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::map<std::string, std::string, std::less<>> readConfig(const char *path) {
    std::map<std::string, std::string, std::less<>> config;
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        const size_t equals = line.find('=');
        if (equals == std::string::npos)
            continue;
        std::string_view value = std::string_view(line).substr(equals + 1);
        value = trimmed(value.substr(0, value.find('=')));
        if (!value.empty())
            config[line.substr(0, equals)] = value;
    }
    if (!file.is_open() || file.bad())
        fail(kConfiguration, std::string(path) + " cannot be read: " + std::strerror(errno));
    return config;
}

uint32_t number(const Settings &settings, const char *key, uint32_t fallback) {
    const std::string text = settings.get(key, std::to_string(fallback));
    uint32_t value = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
    if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size())
        fail(kConfiguration, std::string(key) + " in " + kConfigFile + " is no number: " + text);
    return value;
}

} // namespace ormel::client
