// The client's numbers of types.
#pragma once

#include <cstdint>

namespace ormel::client {

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

} // namespace ormel::client
