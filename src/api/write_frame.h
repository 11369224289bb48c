// The frame of every write of single rows.
#pragma once

#include "api/variant.h"
#include "dao/owners.h"

namespace ormel {

// What a write does once its table is described and its list is filled.
using WriteStatement = DB_RESULT *(*)(void *conn, const char *table, const ORMEL_PARA *para);

// fill(para, att) makes the parameter list; what it refuses is never sent. noTable is the code of a table that cannot
// be described. The affected rows go to recNum where it is given.
template <class Fill>
uint32_t write(void *conn, const char *table, uint32_t noTable, Fill fill, WriteStatement statement, uint32_t *recNum) {
    const TableAttributes att(conn, table);
    if (att.get() == nullptr)
        return noTable;
    ORMEL_PARA para = {};
    if (const uint32_t code = fill(&para, att.get()); code != ORMEL_OK)
        return code;
    const Result res(statement(conn, table, &para));
    if (res == nullptr)
        return ORMEL_ERR_NO_RESULT;
    if (recNum != nullptr)
        *recNum = res->uiRowCount;
    return ORMEL_OK;
}

} // namespace ormel
