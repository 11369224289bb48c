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

// The length of what may stand between two parts of a text, blanks with an end of line and comments up to one; 0 for
// other blanks.
size_t gapLength(std::string_view text) {
    size_t at = 0;
    bool ends = false; // a line
    for (;;) {
        const size_t next = std::min(text.find_first_not_of(" \t\r\n\f", at), text.size());
        ends = ends || text.substr(at, next - at).find_first_of("\r\n") != std::string_view::npos;
        at = next;
        if (!startsWith(text.substr(at), "--"))
            return ends ? at : 0;
        at = std::min(text.find_first_of("\r\n", at), text.size());
    }
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

size_t escapedLength(std::string_view text) {
    size_t at = 1;
    do {
        ++at; // a quote
        while (at < text.size() && text[at] != '\'')
            at += text[at] == '\\' ? 2 : 1;
        at = std::min(at + 1, text.size());
        const size_t gap = gapLength(text.substr(at));
        at += startsWith(text.substr(at + gap), "'") ? gap : 0;
    } while (startsWith(text.substr(at), "'"));
    return at;
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), upper);
    return result;
}

} // namespace ormel::client
