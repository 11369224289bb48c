#include "types.h"

#include <algorithm>
#include <array>

namespace ormel::client::postgres {

namespace {

constexpr int kHeader = 4;           // what a modifier counts besides the length
constexpr uint32_t kLargest = 65534; // sizes from 65535 on make a large object
constexpr ColumnType kAnyText = {kClob, 44, 0, 0};

// How a type is reported: as it stands, or by its modifier.
enum class By { itself, characters, bits, digits };

struct KnownType {
    Oid oid;
    By by;
    ColumnType column;
};

constexpr std::array<KnownType, 29> kTypes = {{
    {kBoolOid, By::itself, {kBoolean, 4, 0, 0}},
    {kInt2Oid, By::itself, {kInt32, 4, 5, 0}},
    {kInt4Oid, By::itself, {kInt32, 4, 10, 0}},
    {kInt8Oid, By::itself, {kInt64, 8, 19, 0}},
    {kOidOid, By::itself, {kInt64, 8, 10, 0}},
    {kFloat4Oid, By::itself, {kDouble, 8, 0, 0}},
    {kFloat8Oid, By::itself, {kDouble, 8, 0, 0}},
    {kBpcharOid, By::characters, {kChar, 0, 0, 0}},
    {kVarcharOid, By::characters, {kVarchar, 0, 0, 0}},
    {kByteaOid, By::itself, {kBlob, 44, 0, 0}},
    {kNameOid, By::itself, {kText, 64, 0, 0}},
    {1700, By::digits, {kText, 512, 0, 0}}, // numeric
    {1082, By::itself, {kText, 36, 0, 0}},  // date
    {1083, By::itself, {kText, 36, 0, 0}},  // time
    {1266, By::itself, {kText, 36, 0, 0}},  // time with time zone
    {1114, By::itself, {kText, 36, 0, 0}},  // timestamp
    {1184, By::itself, {kText, 36, 0, 0}},  // timestamp with time zone
    {2950, By::itself, {kText, 37, 0, 0}},  // uuid
    {1186, By::itself, {kText, 128, 0, 0}}, // interval
    {869, By::itself, {kText, 64, 0, 0}},   // inet
    {650, By::itself, {kText, 64, 0, 0}},   // cidr
    {829, By::itself, {kText, 64, 0, 0}},   // macaddr
    {774, By::itself, {kText, 64, 0, 0}},   // macaddr8
    {790, By::itself, {kText, 64, 0, 0}},   // money
    {1560, By::bits, {kText, 0, 0, 0}},     // bit
    {1562, By::bits, {kText, 0, 0, 0}},     // bit varying
    {18, By::itself, {kText, 64, 0, 0}},    // "char"
    {3220, By::itself, {kText, 64, 0, 0}},  // pg_lsn
    {2278, By::itself, {kText, 64, 0, 0}},  // void
}};

ColumnType counted(uint16_t type, uint64_t size) {
    return size > kLargest ? kAnyText : ColumnType{type, static_cast<uint16_t>(size), 0, 0};
}

// Digits, sign, point, a leading zero and room for a terminator.
ColumnType numeric(int modifier) {
    if (modifier < kHeader)
        return {kText, 512, 0, 0};
    const auto precision = static_cast<uint32_t>(modifier - kHeader) >> 16;
    const auto scale = static_cast<uint32_t>(modifier - kHeader) & 0x7FF;
    const auto shown = [](uint32_t digits) { return static_cast<uint8_t>(std::min(digits, 255U)); };
    const bool shifted = scale > precision; // digits all behind a point, or a scale below 0
    return {kText, static_cast<uint16_t>(shifted ? 512 + precision : precision + 4), shown(precision), shown(scale)};
}

} // namespace

ColumnType typeOf(Oid oid, int modifier) {
    const auto *known =
        std::find_if(kTypes.begin(), kTypes.end(), [&](const KnownType &type) { return type.oid == oid; });
    if (known == kTypes.end())
        return kAnyText;
    switch (known->by) {
    case By::characters: // at most four bytes each, and room for a terminator
        return modifier < kHeader ? kAnyText
                                  : counted(known->column.type, 4 * static_cast<uint64_t>(modifier - kHeader) + 1);
    case By::bits:
        return modifier < 0 || modifier > 255 ? kAnyText : counted(kText, static_cast<uint64_t>(modifier) + 1);
    case By::digits:
        return numeric(modifier);
    default:
        return known->column;
    }
}

bool isPlainText(Oid oid) {
    switch (oid) {
    case kNameOid:
    case kTextOid:
    case kJsonOid:
    case kXmlOid:
    case kBpcharOid:
    case kVarcharOid:
        return true;
    default:
        return false;
    }
}

bool travelsInBinary(Oid oid) {
    switch (oid) {
    case kBoolOid:
    case kByteaOid:
    case kInt8Oid:
    case kInt2Oid:
    case kInt4Oid:
    case kOidOid:
    case kFloat4Oid:
    case kFloat8Oid:
        return true;
    default:
        return isPlainText(oid);
    }
}

} // namespace ormel::client::postgres
