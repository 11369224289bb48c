// From a column's declared type to what the client reports of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ormel::client::sqlite {

// Client type ids.
inline constexpr uint16_t kInt32 = 1;
inline constexpr uint16_t kInt64 = 2;
inline constexpr uint16_t kDouble = 3;
inline constexpr uint16_t kChar = 8;
inline constexpr uint16_t kVarchar = 9;
inline constexpr uint16_t kText = 10; // what travels as text of a bounded size
inline constexpr uint16_t kBinary = 11;
inline constexpr uint16_t kVarbinary = 12;
inline constexpr uint16_t kClob = 13;
inline constexpr uint16_t kBlob = 14;
inline constexpr uint16_t kBoolean = 25;

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
