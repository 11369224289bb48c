// The owners of SQLite's handles; nothing else closes one.
#pragma once

#include <memory>
#include <sqlite3.h>

namespace ormel::client::sqlite {

struct CloseDatabase {
    void operator()(sqlite3 *database) const noexcept { sqlite3_close_v2(database); }
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt *statement) const noexcept { sqlite3_finalize(statement); }
};

using OwnedDatabase = std::unique_ptr<sqlite3, CloseDatabase>;
using OwnedStatement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

} // namespace ormel::client::sqlite
