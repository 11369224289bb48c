// Failures in PostgreSQL's words, behind their SQLSTATE.
#pragma once

#include <libpq-fe.h>
#include <string>
#include <string_view>

#include "engine.h"

namespace ormel::client::postgres {

// An error under a SQLSTATE. Its number is the SQLSTATE where that is all digits, else 99999.
Error makeError(std::string_view state, std::string_view words);

// The two parts of an error's message.
std::string_view stateOf(const Error &error);
std::string_view wordsIn(const Error &error);

// Stands for the SQLSTATE of words that came without one.
inline constexpr char kNoState[] = "XX000";

// What a result says that is no success.
Error errorOf(const PGresult *result);

// The SQLSTATE in libpq's verbose words, "FATAL:  28P01: ...", whatever language the server speaks; "" where they have
// none.
std::string_view stateIn(std::string_view words);

// Adds a sentence to words, which may end one already.
void addSentence(std::string &words, std::string_view sentence);

// The words of the connection's last failure, on one line.
std::string wordsOf(const PGconn *connection);

// What the engine itself refuses.
[[noreturn]] void refuse(std::string_view state, std::string_view words);

} // namespace ormel::client::postgres
