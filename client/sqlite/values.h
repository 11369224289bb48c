// Values on their way into SQLite and out of it.
#pragma once

#include <sqlite3.h>
#include <vector>

#include "engine.h"

namespace ormel::client::sqlite {

// Binds a value to a placeholder, from 1. Text and bytes stay where they are and must outlive the binding.
void bindValue(sqlite3_stmt *statement, int placeholder, const Value &value);

// Appends the statement's current row, each value in the form of its column's type. A value that has no such form is
// an Error, and nothing of the row stays in the buffer.
void appendRow(sqlite3_stmt *statement, const std::vector<Column> &columns, RowBuffer &rows);

} // namespace ormel::client::sqlite
