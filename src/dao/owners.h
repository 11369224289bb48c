// Owners of what the access layer holds during a call: each gives back what it has when the call leaves its scope.
#pragma once

#include <cstdlib>
#include <memory>

#include "ormeldb/dao.h"

namespace ormel {

struct Free {
    void operator()(void *block) const { std::free(block); }
};

struct FreeStatement {
    void operator()(void *stmt) const { dbFreeStmt(stmt); }
};

struct ClearResult {
    void operator()(DB_RESULT *res) const { dbResClear(res); }
};

using SqlText = std::unique_ptr<char, Free>;
using Lobs = std::unique_ptr<void, Free>;
using Statement = std::unique_ptr<void, FreeStatement>;
using Result = std::unique_ptr<DB_RESULT, ClearResult>;

} // namespace ormel
