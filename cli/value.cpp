#include "value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include <ormeldb.h>

#include "text.h"

namespace cli {
namespace {

using Bytes = std::span<const uint8_t>;

// Long texts are cut in messages: the reader has the file.
std::string quoted(std::string_view text) {
    size_t shown = std::min<size_t>(text.size(), 40);
    while (shown > 0 && shown < text.size() && (text[shown] & 0xC0) == 0x80)
        --shown; // not in the middle of a character
    return "'" + printable(text.substr(0, shown)) + (shown < text.size() ? "...'" : "'");
}

template <typename Number> std::string bytesOf(Number value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

template <typename Number> Number fetch(Bytes bytes) {
    Number value{};
    if (!bytes.empty())
        std::memcpy(&value, bytes.data(), std::min(sizeof value, bytes.size()));
    return value;
}

template <typename Number> std::string shortest(Number value) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

// --- Integers --------------------------------------------------------------------------------------------------

template <typename Integer> std::string parseInteger(std::string_view text) {
    using Limits = std::numeric_limits<Integer>;
    Integer value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument || end != text.data() + text.size())
        throw ValueError(text.empty() ? "an empty field is no number" : quoted(text) + " is no whole number");
    if (error == std::errc::result_out_of_range)
        throw ValueError(quoted(text) + " is outside " + shortest(Limits::min()) + " to " + shortest(Limits::max()));
    return bytesOf(value);
}

template <typename Integer> std::string formatInteger(Bytes bytes) {
    return shortest(fetch<Integer>(bytes));
}

std::string parseBoolean(std::string_view text) {
    const std::string word = lowerCase(text);
    if (word == "1" || word == "true")
        return bytesOf<int32_t>(1);
    if (word == "0" || word == "false")
        return bytesOf<int32_t>(0);
    throw ValueError(quoted(text) + " is neither true nor false (nor 1 nor 0)");
}

std::string formatBoolean(Bytes bytes) {
    return fetch<int32_t>(bytes) != 0 ? "true" : "false";
}

// --- Floating point --------------------------------------------------------------------------------------------

// Also the words that stand for no finite number, as they are written below.
std::string parseDouble(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range)
        throw ValueError(quoted(text) + " is outside what 8 bytes of floating point hold");
    const bool whole = error == std::errc() && end == text.data() + text.size();
    if (!whole || (!std::isfinite(value) && text != shortest(value)))
        throw ValueError(text.empty() ? "an empty field is no number" : quoted(text) + " is no number");
    return bytesOf(value);
}

std::string formatDouble(Bytes bytes) {
    return shortest(fetch<double>(bytes));
}

// --- Text ------------------------------------------------------------------------------------------------------

void checkText(std::string_view text) {
    if (text.find('\0') != std::string_view::npos)
        throw ValueError(quoted(text) + " has a NUL byte, where a record's text would end");
    if (const auto bad = firstInvalidByte(text))
        throw ValueError(quoted(text) + " is no UTF-8 text from byte " + std::to_string(*bad + 1) + " on");
}

std::string parseText(std::string_view text) {
    checkText(text);
    return std::string(text);
}

// One byte of the field stays free for the NUL, without which results would cut the text.
void checkTextFits(std::string_view text, size_t size) {
    if (text.size() >= size)
        throw ValueError(quoted(text) + " has " + counted(text.size(), "byte") + ", the field holds at most " +
                         std::to_string(size - 1));
}

std::string formatText(Bytes bytes) {
    return {bytes.begin(), bytes.end()};
}

// --- Byte strings ----------------------------------------------------------------------------------------------

uint8_t hexDigit(char c) {
    uint8_t value{};
    if (std::from_chars(&c, &c + 1, value, 16).ec != std::errc())
        throw ValueError(quoted({&c, 1}) + " is no hexadecimal digit");
    return value;
}

std::string parseBytes(std::string_view text) {
    if (text.size() % 2 != 0)
        throw ValueError(quoted(text) + " has " + counted(text.size(), "hexadecimal digit") + ", and a byte takes two");
    std::string bytes;
    for (size_t i = 0; i < text.size(); i += 2)
        bytes += static_cast<char>(hexDigit(text[i]) << 4 | hexDigit(text[i + 1]));
    return bytes;
}

[[noreturn]] void refuseLength(std::string_view text, size_t size, const char *howMany) {
    throw ValueError(std::string("the field takes ") + howMany + " " + counted(size, "byte") + ", written as " +
                     std::to_string(2 * size) + " hexadecimal digits, and " + quoted(text) + " has " +
                     std::to_string(text.size()));
}

std::string formatBytes(Bytes bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

// --- Types -----------------------------------------------------------------------------------------------------

std::string refuseUnknown(std::string_view) {
    throw ValueError("values of its type are not known here; use the command sql for this column");
}

enum class Kind { number, other, text, bytes, largeObject };

struct Type {
    uint32_t id;
    const char *name;
    Kind kind;
    std::string (*parse)(std::string_view);
    std::string (*format)(Bytes);
};

constexpr Type kTypes[] = {
    {QDC_TYPE_INT32, "integer", Kind::number, parseInteger<int32_t>, formatInteger<int32_t>},
    {QDC_TYPE_INT64, "big integer", Kind::number, parseInteger<int64_t>, formatInteger<int64_t>},
    {QDC_TYPE_DOUBLE, "double", Kind::number, parseDouble, formatDouble},
    {QDC_TYPE_CHAR, "char", Kind::text, parseText, formatText},
    {QDC_TYPE_VARCHAR, "varchar", Kind::text, parseText, formatText},
    {QDC_TYPE_TEXT, "as text", Kind::text, parseText, formatText},
    {QDC_TYPE_BINARY, "binary", Kind::bytes, parseBytes, formatBytes},
    {QDC_TYPE_VARBINARY, "varbinary", Kind::bytes, parseBytes, formatBytes},
    {QDC_TYPE_CLOB, "large text", Kind::largeObject, parseText, formatText},
    {QDC_TYPE_BLOB, "large bytes", Kind::largeObject, parseBytes, formatBytes},
    {QDC_TYPE_RAW, "raw", Kind::bytes, parseBytes, formatBytes},
    {QDC_TYPE_BOOL, "boolean", Kind::other, parseBoolean, formatBoolean},
};

constexpr Type kUnknown{0, "unknown", Kind::other, refuseUnknown, formatBytes};

const Type &typeOf(uint32_t id) {
    const auto *found = std::find_if(std::begin(kTypes), std::end(kTypes), [&](const Type &t) { return t.id == id; });
    return found == std::end(kTypes) ? kUnknown : *found;
}

} // namespace

std::string typeName(uint32_t type) {
    return typeOf(type).name;
}

bool isNumber(uint32_t type) {
    return typeOf(type).kind == Kind::number;
}

bool isText(uint32_t type) {
    return typeOf(type).kind == Kind::text;
}

bool isLargeObject(uint32_t type) {
    return typeOf(type).kind == Kind::largeObject;
}

bool isTextOrBytes(uint32_t type) {
    const auto parse = typeOf(type).parse;
    return parse == parseText || parse == parseBytes;
}

std::string encodeValue(uint32_t type, std::string_view text, size_t size) {
    const Type &known = typeOf(type);
    if (known.kind == Kind::text)
        checkTextFits(text, size);
    if (known.kind == Kind::bytes && text.size() > 2 * size)
        refuseLength(text, size, "at most");
    return known.parse(text);
}

// A record does not tell how many of a byte string's bytes count, so that all of them have to be given.
void parseValue(uint32_t type, std::string_view text, std::span<uint8_t> field) {
    const Kind kind = typeOf(type).kind;
    if (kind == Kind::largeObject)
        throw ValueError("it is a large object, which no record carries; use the command sql for this column");
    if (kind == Kind::bytes && text.size() != 2 * field.size())
        refuseLength(text, field.size(), "exactly");
    const std::string value = encodeValue(type, text, field.size());
    const auto end = std::copy_n(value.begin(), std::min(value.size(), field.size()), field.begin());
    std::fill(end, field.end(), uint8_t{0});
}

void checkBytes(uint32_t type, std::string_view bytes, size_t size) {
    const Type &known = typeOf(type);
    if (!isTextOrBytes(type))
        throw ValueError(std::string("its values are neither texts nor byte strings (") + known.name +
                         "), so that no file holds one; write COL=VALUE");
    if (known.parse == parseText)
        checkText(bytes);
    if (known.kind == Kind::text)
        checkTextFits(bytes, size);
    if (known.kind == Kind::bytes && bytes.size() > size)
        throw ValueError("the field takes at most " + counted(size, "byte") + ", and the value has " +
                         std::to_string(bytes.size()));
}

void checkDecimal(std::string_view text) {
    const bool plain = text.find_first_not_of("0123456789+-.eE") == std::string_view::npos;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (!plain || error == std::errc::invalid_argument || end != text.data() + text.size())
        throw ValueError(text.empty() ? "an empty field is no number" : quoted(text) + " is no number");
}

std::string formatValue(uint32_t type, std::span<const uint8_t> bytes) {
    return typeOf(type).format(bytes);
}

} // namespace cli
