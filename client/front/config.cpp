#include "config.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "errors.h"

namespace ormel::client {

namespace {

constexpr size_t kLineSize = 2014;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

struct Close {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

void readLine(std::map<std::string, std::string, std::less<>> &config, std::string_view line) {
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos)
        return;
    std::string_view value = line.substr(equals + 1);
    value = trimmed(value.substr(0, value.find('=')));
    if (!value.empty())
        config[std::string(line.substr(0, equals))] = value;
}

} // namespace

// A line is read into as many bytes as the library has for it, and ends at a NUL, as it does there.
std::map<std::string, std::string, std::less<>> readConfig(const char *path) {
    std::map<std::string, std::string, std::less<>> config;
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path, "re"));
    char line[kLineSize];
    while (file != nullptr && std::fgets(line, sizeof line, file.get()) != nullptr)
        readLine(config, line);
    if (file == nullptr || std::ferror(file.get()) != 0)
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
