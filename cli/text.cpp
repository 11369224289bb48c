#include "text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cwchar>

namespace cli {
namespace {

struct CodePoint {
    char32_t value;
    size_t length; // bytes taken; 1 for a byte that is no UTF-8
    bool valid;
};

constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000}; // by length: what is below would be overlong

CodePoint decode(std::string_view text) {
    const auto byteAt = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byteAt(0);
    const CodePoint invalid{lead, 1, false};
    if (lead < 0x80)
        return {lead, 1, true};
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return invalid;
    char32_t value = lead & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80)
            return invalid;
        value = value << 6 | (byteAt(i) & 0x3Fu);
    }
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < kSmallest[length] || surrogate || value > 0x10FFFF)
        return invalid;
    return {value, length, true};
}

// -1 for what a terminal would act on instead of showing.
int columns(CodePoint point) {
    const bool shown = point.valid && point.value != 0; // wcwidth takes NUL for an accent
    return shown ? wcwidth(static_cast<wchar_t>(point.value)) : -1;
}

std::string escaped(CodePoint point) {
    switch (point.value) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        break;
    }
    char text[16];
    const bool oneByte = !point.valid || point.value < 0x80;
    std::snprintf(text, sizeof text, oneByte ? "\\x%02x" : "\\u{%x}", static_cast<unsigned>(point.value));
    return text;
}

} // namespace

std::optional<size_t> firstInvalidByte(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const CodePoint point = decode(text.substr(at));
        if (!point.valid)
            return at;
        at += point.length;
    }
    return std::nullopt;
}

std::string printable(std::string_view text) {
    std::string result;
    for (size_t at = 0; at < text.size();) {
        const CodePoint point = decode(text.substr(at));
        if (columns(point) < 0)
            result += escaped(point);
        else
            result += text.substr(at, point.length);
        at += point.length;
    }
    return result;
}

size_t displayWidth(std::string_view text) {
    size_t width = 0;
    for (size_t at = 0; at < text.size();) {
        const CodePoint point = decode(text.substr(at));
        width += static_cast<size_t>(std::max(columns(point), 0));
        at += point.length;
    }
    return width;
}

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return result;
}

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string counted(size_t count, const std::string &thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string rows(size_t count) {
    return counted(count, "row");
}

} // namespace cli
