// Placeholders: ":1", ":2" ... in a statement's text, found where they are not part of something else.
#pragma once

#include <string>
#include <string_view>

#include "engine.h"

namespace ormel::client {

struct Rewritten {
    std::string sql;         // with the database's own placeholders
    uint32_t parameters = 0; // the largest number
};

// Replaces every placeholder outside quotes, comments and casts ("::"). Numbers may repeat and come in any order.
// Throws Error for a number that is 0 or above 65535.
Rewritten rewritePlaceholders(std::string_view sql, const Dialect &dialect);

} // namespace ormel::client
