// Which column a parameter of an insert goes into, for messages.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ormel::client {

// The column of the placeholder at a position, from 0, in a text like "INSERT INTO t (a, b) values (:1, :2)"; empty for
// any other text.
std::string insertedColumn(std::string_view sql, uint32_t position);

} // namespace ormel::client
