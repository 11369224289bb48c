// The catalogue view USER_TAB_COLUMNS.
#pragma once

#include <sqlite3.h>

namespace ormel::client::sqlite {

// Makes the view known to a connection. It is a virtual table without storage, so that the database holds nothing for
// it; a table of that name that the database has is found before it.
void addCatalogue(sqlite3 *database);

} // namespace ormel::client::sqlite
