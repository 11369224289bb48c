// UTF-8 text on a terminal.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace cli {

// The position of the first byte that is not part of well-formed UTF-8, if there is one.
std::optional<size_t> firstInvalidByte(std::string_view text);

// The text with control characters and bytes that are no UTF-8 written as escapes: \n, \t, \r, \x1b, \u{9f}.
std::string printable(std::string_view text);

// The columns of a terminal that printable text takes.
size_t displayWidth(std::string_view text);

// ASCII letters in lower case, whatever the locale.
std::string lowerCase(std::string_view text);

// The text without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

// "1 row", "2 rows".
std::string counted(size_t count, const std::string &thing);
std::string rows(size_t count);

} // namespace cli
