// How long a table's record is.
#pragma once

#include "ormeldb/res_att.h"

namespace ormel {

inline uint64_t fieldEnd(const ORMEL_RES_ATT_FIELD &field) {
    return static_cast<uint64_t>(field.offset) + static_cast<uint64_t>(field.len);
}

inline uint64_t recordLength(const ORMEL_RES_ATT &att) {
    return att.iAttNum < 1 ? 0 : fieldEnd(att.astField[att.iAttNum - 1]);
}

} // namespace ormel
