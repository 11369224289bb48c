// The columns of a query's result.
#pragma once

#include <sqlite3.h>
#include <string_view>
#include <vector>

#include "engine.h"

namespace ormel::client::sqlite {

// Describes the columns of a statement with this text. Those that no declaration stands behind are described by their
// values in the current row, if there is one.
std::vector<Column> describeColumns(sqlite3_stmt *statement, std::string_view sql);

} // namespace ormel::client::sqlite
