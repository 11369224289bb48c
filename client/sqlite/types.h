// From a column's declared type to what the client reports of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/type_ids.h"

namespace ormel::client::sqlite {

struct ColumnType {
    uint16_t type = kClob;
    uint16_t size = 0;
    uint8_t precision = 0;
    uint8_t scale = 0;
};

// A declaration taken apart: "varchar ( 20 )" is VARCHAR with the number 20.
struct Declaration {
    std::string name; // upper case, single blanks between its words
    std::optional<uint32_t> first;
    std::optional<uint32_t> second;
};

Declaration parseDeclaration(std::string_view declared);

// Of a column as it was declared; a name that no rule knows is a text of any length.
ColumnType typeOf(const Declaration &declaration);

// Of a column that no declaration stands behind, by its first value's storage class (SQLITE_INTEGER and so on).
ColumnType typeOfValue(int storageClass);

} // namespace ormel::client::sqlite
