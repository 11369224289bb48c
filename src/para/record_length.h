// How long a table's record is.
#pragma once

#include "ormeldb/res_att.h"

namespace ormel {

// Where the last field ends.
inline uint64_t recordLength(const ORMEL_RES_ATT &att) {
    if (att.iAttNum < 1)
        return 0;
    const ORMEL_RES_ATT_FIELD &last = att.astField[att.iAttNum - 1];
    return static_cast<uint64_t>(last.offset) + static_cast<uint64_t>(last.len);
}

} // namespace ormel
