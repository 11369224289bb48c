// What the engine must know of a statement's text beyond what SQLite tells of the prepared statement.
#pragma once

#include <string_view>

#include "common/sql_words.h"

namespace ormel::client::sqlite {

enum class Role {
    change,  // of rows, which SQLite counts
    control, // begins or ends a transaction
    apart,   // stands outside of transactions, or refuses to run in one
    other
};

Role roleOf(std::string_view firstWord);

} // namespace ormel::client::sqlite
