#include "settings.h"

#include <charconv>

#include "error.h"

namespace ormel::client::postgres {

std::chrono::milliseconds milliseconds(const Settings &settings, const char *key, int fallback) {
    const std::string text = settings.get(key, std::to_string(fallback));
    int value = -1;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
    if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size() || value < 0)
        refuse("F0000", std::string(key) + " in ../conf/db.conf is no number of milliseconds: " + text);
    return std::chrono::milliseconds(value);
}

std::chrono::milliseconds connectTimeout(const Settings &settings) {
    return milliseconds(settings, "client.connect_timeout_ms", 2000);
}

} // namespace ormel::client::postgres
