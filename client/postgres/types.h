// From PostgreSQL's types to what the client reports of them.
#pragma once

#include <cstdint>
#include <libpq-fe.h>

#include "common/type_ids.h"

namespace ormel::client::postgres {

// The server's own numbers of its types.
inline constexpr Oid kBoolOid = 16;
inline constexpr Oid kByteaOid = 17;
inline constexpr Oid kNameOid = 19;
inline constexpr Oid kInt8Oid = 20;
inline constexpr Oid kInt2Oid = 21;
inline constexpr Oid kInt4Oid = 23;
inline constexpr Oid kTextOid = 25;
inline constexpr Oid kOidOid = 26;
inline constexpr Oid kJsonOid = 114;
inline constexpr Oid kXmlOid = 142;
inline constexpr Oid kFloat4Oid = 700;
inline constexpr Oid kFloat8Oid = 701;
inline constexpr Oid kBpcharOid = 1042;
inline constexpr Oid kVarcharOid = 1043;
inline constexpr Oid kFirstUserOid = 16384; // types made by users, and by the system's own catalogue tables

struct ColumnType {
    uint16_t type = kClob;
    uint16_t size = 44;
    uint8_t precision = 0;
    uint8_t scale = 0;
};

// Of a column of a type with a modifier (the n of VARCHAR(n), and so on; -1: none).
ColumnType typeOf(Oid oid, int modifier);

// An enumeration's labels have at most 63 bytes.
inline constexpr ColumnType kEnumeration = {kText, 64, 0, 0};

// Whether the binary form of a type's values is read and written here; of the others the text is.
bool travelsInBinary(Oid oid);

// Whether a type's binary form is its text.
bool isPlainText(Oid oid);

} // namespace ormel::client::postgres
