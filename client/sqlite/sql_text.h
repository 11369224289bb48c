// What the engine must know of a statement's text beyond what SQLite tells of the prepared statement.
#pragma once

#include <string_view>

#include "common/sql_words.h"

namespace ormel::client::sqlite {

// The text from its statement on, if there is one. SQLite takes a byte order mark for a blank.
std::string_view statementIn(std::string_view text);

enum class Role {
    change, // of rows, which SQLite counts
    apart,  // stands outside of transactions, or refuses to run in one
    other
};

Role roleOf(std::string_view firstWord);

} // namespace ormel::client::sqlite
