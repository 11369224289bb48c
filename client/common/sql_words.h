// The words of a statement's text, as far as engines must know them.
#pragma once

#include <string>
#include <string_view>

namespace ormel::client {

// The text from its first character on that is neither blank nor comment nor semicolon; empty if there is none.
std::string_view skipBlanks(std::string_view text);

// The first word, in upper case, of a text without leading blanks.
std::string firstWord(std::string_view text);

// Whether a name stands in the text as a word, whatever its case.
bool hasWord(std::string_view text, std::string_view word);

// The length of the text E'...' that another one begins with; the end ends it as well. A backslash escapes in all its
// parts: a quote that follows at once, or on a later line, goes on with it.
size_t escapedLength(std::string_view text);

// As databases find names: only ASCII letters have a case.
std::string upperCase(std::string_view text);

} // namespace ormel::client
