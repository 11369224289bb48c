#include "sql_words.h"

#include <algorithm>

namespace ormel::client {

namespace {

constexpr char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool isWordCharacter(char c) {
    const char u = upper(c);
    return (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '_' || u == '$' || (u & 0x80) != 0;
}

constexpr bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

// The length of the comment that the text begins with, 0 if it begins with none. The end of the text ends it as well.
size_t commentLength(std::string_view text) {
    const std::string_view end = startsWith(text, "--") ? "\n" : "*/";
    if (!startsWith(text, "--") && !startsWith(text, "/*"))
        return 0;
    const size_t found = text.find(end, 2);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

} // namespace

std::string_view skipBlanks(std::string_view text) {
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n\f;"), text.size()));
        const size_t comment = commentLength(text);
        if (comment == 0)
            return text;
        text.remove_prefix(comment);
    }
}

std::string firstWord(std::string_view text) {
    const auto *end = std::find_if_not(text.begin(), text.end(), isWordCharacter);
    return upperCase(text.substr(0, static_cast<size_t>(end - text.begin())));
}

bool hasWord(std::string_view text, std::string_view word) {
    const auto same = [](char a, char b) { return upper(a) == upper(b); };
    for (const auto *at = text.begin();; ++at) {
        at = std::search(at, text.end(), word.begin(), word.end(), same);
        if (at == text.end())
            return false;
        const auto *after = at + word.size();
        const bool starts = at == text.begin() || !isWordCharacter(at[-1]);
        const bool ends = after == text.end() || !isWordCharacter(*after);
        if (starts && ends)
            return true;
    }
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), upper);
    return result;
}

} // namespace ormel::client
