#include "ormeldb/platform/liblog.h"

#include "common/file.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <string>
#include <string_view>

char g_acLogPath[256];
int32_t g_frame_slot_id;

namespace {

using Settings = std::map<std::string, std::string, std::less<>>;

constexpr char kFile[] = "../conf/log.conf";

void complain(const std::string &what) {
    std::fprintf(stderr, "liblog: \"%s\": %s\n", kFile, what.c_str());
}

std::string readText() {
    const auto file = ormel::platform::openRegularFile(kFile);
    std::string text;
    char piece[4096];
    const char *problem = file.problem;
    while (file.fd) {
        const ssize_t count = ormel::platform::readUpTo(file.fd.get(), piece, sizeof piece);
        if (count < 0)
            problem = std::strerror(errno);
        if (count <= 0)
            break;
        text.append(piece, static_cast<size_t>(count));
    }
    if (problem != nullptr)
        complain(std::string(problem) + "; its settings are not used");
    return text;
}

std::string_view trim(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void addLine(Settings &settings, std::string_view line) {
    line = trim(line);
    const size_t equals = line.find('=');
    if (line.empty() || line.front() == '#' || equals == std::string_view::npos)
        return;
    settings.insert_or_assign(std::string(trim(line.substr(0, equals))), trim(line.substr(equals + 1)));
}

Settings readSettings() {
    Settings settings;
    const std::string text = readText();
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        addLine(settings, std::string_view(text).substr(begin, end - begin));
        begin = end + 1;
    }
    return settings;
}

// Read at the first use, which is when the library is loaded, and kept for good: its texts are handed out.
const Settings &settings() {
    static const Settings &kept = *new Settings(readSettings());
    return kept;
}

const std::string *find(const char *name) {
    const auto found = settings().find(std::string_view(name));
    return found != settings().end() ? &found->second : nullptr;
}

void setPath() {
    const std::string *path = find("log.path");
    if (path == nullptr)
        return;
    if (path->size() >= sizeof g_acLogPath)
        return complain("log.path has more than 255 bytes and is not used");
    std::memcpy(g_acLogPath, path->c_str(), path->size() + 1);
}

void setSlot() {
    const std::string *text = find("log.slot");
    if (text == nullptr)
        return;
    int32_t slot = 0;
    const char *end = text->data() + text->size();
    const auto [stop, error] = std::from_chars(text->data(), end, slot);
    if (error != std::errc() || stop != end || slot < 0)
        return complain("log.slot=" + *text + " is not a number from 0 to 2147483647; slot " +
                        std::to_string(g_frame_slot_id) + " is used");
    g_frame_slot_id = slot;
}

__attribute__((constructor)) void readAtLoad() {
    try {
        setPath();
        setSlot();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "liblog: \"%s\" cannot be read: %s\n", kFile, error.what());
    }
}

} // namespace

const char *OPB_GetLogConfig(const char *pcName) {
    if (pcName == nullptr)
        return nullptr;
    try {
        const std::string *value = find(pcName);
        return value != nullptr ? value->c_str() : nullptr;
    } catch (const std::exception &) {
        return nullptr;
    }
}
