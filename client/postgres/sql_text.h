// What the engine must know of a statement's text before the server sees it.
#pragma once

#include <string>
#include <string_view>

#include "common/sql_words.h"

namespace ormel::client::postgres {

enum class Role {
    query,   // read by a cursor
    control, // begins or ends a transaction
    apart,   // refuses to run in a transaction
    other
};

// The text from its statement's first character on, behind blanks, comments and semicolons; empty if there is none.
std::string_view statementIn(std::string_view text);

// Of a text without leading blanks.
Role roleOf(std::string_view text);

// Whether a text shows that it may do something that outlives its transaction: anything but reading and writing rows,
// and whatever calls a function. What the database's own code does behind it (triggers, rules, views, defaults,
// domains, operators) shows in no text.
bool mayAlterSession(std::string_view text);

// Whether a text may leave something in the session that no command undoes.
bool leavesForGood(std::string_view text);

// Whether a text drops all prepared statements.
bool dropsPrepared(std::string_view text);

// The text with the view USER_TAB_COLUMNS replaced by what it stands for, where it stands outside quotes and comments.
std::string withCatalogue(const std::string &sql);

} // namespace ormel::client::postgres
