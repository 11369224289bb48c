// Reading a large object of the current row into a cell.
#pragma once

#include "ormeldb/dao.h"

namespace ormel {

// Reads the CLOB or BLOB behind a locator in chunks into field.pValue, a zeroed block of size bytes (and one more for
// a CLOB), and sets field.uiLength to the bytes read. A chunk that does not fit is left out and the block then grows to
// the length, zero-filled. False when the object cannot be read. Lines are logged as func's.
bool readLob(const char *func, void *stmt, void *locator, uint32_t size, DB_FIELD &field);

} // namespace ormel
