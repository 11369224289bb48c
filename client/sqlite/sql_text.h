// What the engine must know of a statement's text beyond what SQLite tells of the prepared statement.
#pragma once

#include <string>
#include <string_view>

namespace ormel::client::sqlite {

enum class Role {
    change,  // of rows, which SQLite counts
    control, // begins or ends a transaction
    apart,   // stands outside of transactions, or refuses to run in one
    other
};

// The text from its first character on that is neither blank nor comment nor semicolon; empty if there is none.
std::string_view skipBlanks(std::string_view text);

// The first word, in upper case, of a text without leading blanks.
std::string firstWord(std::string_view text);

Role roleOf(std::string_view firstWord);

// Whether a name stands in the text as a word, whatever its case.
bool hasWord(std::string_view text, std::string_view word);

// As SQLite finds names: only ASCII letters have a case.
std::string upperCase(std::string_view text);

} // namespace ormel::client::sqlite
