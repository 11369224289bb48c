// Rows to be inserted, as their values travel.
#pragma once

#include "postgres/raw.h"

namespace bench {

struct ValueType {
    Oid value;
    Oid array;
    const char *arrayName;
};

struct Shape {
    const char *table;
    int rows;
    std::vector<ValueType> columns;
    std::vector<std::string> (*row)(int id);

    // "INSERT INTO table VALUES ($1, $2 ...)", with a number of rows.
    std::string insert(int rows = 1) const;
    std::vector<Oid> types() const;
};

std::vector<std::string> person(int id);
extern const Shape kLoaded;
extern const Shape kImage;

} // namespace bench
