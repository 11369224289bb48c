// The ways of reading rows.
#pragma once

#include "support/tables.h"

namespace database {

// What of a row is read.
struct Request {
    std::vector<size_t> fields; // positions of columns
    bool whole;                 // all of them in the table's order, without a select list
    uint32_t page;              // rows at a time; 0: all at once

    std::vector<Column> columns(const Table &table) const;
};

// How a value comes back.
enum class Form {
    value,  // as it is
    field,  // as a record's field; large objects do not come back
    prefix, // the same, and what stands behind a large object may not come back either
};

struct Reader {
    const char *name;
    Form form;
    bool selects; // takes a select list and pages
    Rows (*read)(const Table &table, const Request &request);
};

const std::vector<Reader> &readers();

// Whether a way gives the value of columns[i] back, and what then.
bool carries(Form form, const std::vector<Column> &columns, size_t i);
Cell expected(Form form, const Column &column, const Cell &cell);

} // namespace database
