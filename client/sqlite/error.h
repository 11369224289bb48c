// Failures in SQLite's numbers and words.
#pragma once

#include <sqlite3.h>
#include <string>
#include <string_view>

#include "engine.h"

namespace ormel::client::sqlite {

// What the last call on the database failed with: its extended result code, its words and, where there is one, the
// remedy. The place, if given, stands before the words.
Error lastError(sqlite3 *database, std::string_view place = {});

[[noreturn]] void fail(sqlite3 *database, std::string_view place = {});

// What the engine itself refuses, under the number that SQLite has for such things.
[[noreturn]] void refuse(int code, std::string message);

// Runs a text that gives no rows.
void run(sqlite3 *database, const char *sql);

} // namespace ormel::client::sqlite
