// The ways of writing rows.
#pragma once

#include "support/tables.h"

namespace database {

struct Writer {
    const char *name;
    bool (*takes)(const Table &table);
    Cell (*keeps)(const Column &column, const Cell &cell); // what of a value can be read afterwards
    void (*write)(const Table &table);                     // all of the table's rows
};

const std::vector<Writer> &writers();

} // namespace database
