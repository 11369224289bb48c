#include "columns.h"

#include <algorithm>
#include <cctype>

#include "pipeline.h"

namespace ormel::client::postgres {

namespace {

// A name without capitals is found whatever its case.
std::string nameOf(std::string name) {
    const auto isCapital = [](unsigned char c) { return c >= 'A' && c <= 'Z'; };
    if (std::any_of(name.begin(), name.end(), isCapital))
        return name;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c); });
    return name;
}

} // namespace

ColumnType ColumnReader::typeOf(Oid oid, int modifier) {
    if (oid < kFirstUserOid)
        return postgres::typeOf(oid, modifier);
    const auto known = known_.find(oid);
    if (known != known_.end())
        return known->second;
    Pipeline pipeline(session_, Pipeline::Begin::no);
    pipeline.run("SELECT typtype FROM pg_catalog.pg_type WHERE oid = " + std::to_string(oid));
    const auto results = pipeline.finish();
    const bool enumeration = PQntuples(results[0].get()) == 1 && *PQgetvalue(results[0].get(), 0, 0) == 'e';
    return known_[oid] = enumeration ? kEnumeration : ColumnType();
}

std::vector<Column> ColumnReader::describe(const PGresult *result) {
    std::vector<Column> columns;
    for (int i = 0; i < PQnfields(result); ++i) {
        const ColumnType type = typeOf(PQftype(result, i), PQfmod(result, i));
        columns.push_back({nameOf(PQfname(result, i)), type.type, type.size, type.precision, type.scale, true});
    }
    return columns;
}

bool allInBinary(const PGresult *result) {
    for (int i = 0; i < PQnfields(result); ++i)
        if (!travelsInBinary(PQftype(result, i)))
            return false;
    return true;
}

} // namespace ormel::client::postgres
