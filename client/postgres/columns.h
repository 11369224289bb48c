// The columns of a query's result.
#pragma once

#include <map>

#include "engine.h"
#include "session.h"
#include "types.h"

namespace ormel::client::postgres {

// Describes the columns of a result, rows or none. Types that the engine does not know are asked for, once for each
// connection.
class ColumnReader {
public:
    explicit ColumnReader(Session &session) : session_(session) {}

    std::vector<Column> describe(const PGresult *result);

private:
    ColumnType typeOf(Oid oid, int modifier);

    Session &session_;
    std::map<Oid, ColumnType> known_; // of users' types
};

// Whether every column's values have a form that is read in binary.
bool allInBinary(const PGresult *result);

} // namespace ormel::client::postgres
