#include "postgres/shapes.h"

#include "work.h"

namespace {

using namespace bench;

std::vector<std::string> image(int id) {
    return {wire(int32_t{id}), std::string(kImageSize, 'x')};
}

} // namespace

std::vector<std::string> bench::person(int id) {
    return {wire(int32_t{id}), "a name", "a city", wire(1.75), wire(int64_t{1000000000000}), wire(true)};
}

const Shape bench::kLoaded = {"loaded",
                              kRowsPerBatch,
                              {{kInt4, 1007, "int4[]"},
                               {kVarchar, 1015, "varchar[]"},
                               {kVarchar, 1015, "varchar[]"},
                               {kFloat8, 1022, "float8[]"},
                               {kInt8, 1016, "int8[]"},
                               {kBool, 1000, "bool[]"}},
                              person};
const Shape bench::kImage = {"image", kImages, {{kInt4, 1007, "int4[]"}, {kBytea, 1001, "bytea[]"}}, image};

std::string bench::Shape::insert(int count) const {
    std::string sql = std::string("INSERT INTO ") + table + " VALUES ";
    size_t position = 0;
    for (int row = 0; row < count; ++row) {
        sql += row == 0 ? "(" : ", (";
        for (size_t column = 0; column < columns.size(); ++column)
            sql += (column == 0 ? "$" : ", $") + std::to_string(++position);
        sql += ")";
    }
    return sql;
}

std::vector<Oid> bench::Shape::types() const {
    std::vector<Oid> types;
    for (const ValueType &column : columns)
        types.push_back(column.value);
    return types;
}
