// Values on their way into PostgreSQL and out of it.
#pragma once

#include <deque>
#include <libpq-fe.h>
#include <string>
#include <vector>

#include "engine.h"

namespace ormel::client::postgres {

// The arguments of one execution in the forms that their parameters take: binary where that is exact, else text, which
// the server reads by its own rules. Text and bytes are pointed at where they may be.
class Arguments {
public:
    // types: the server's, one for each parameter. Throws Error for a value that no form of the type carries.
    Arguments(const std::vector<Oid> &types, const std::vector<Value> &values);

    int count() const { return static_cast<int>(values_.size()); }
    const Oid *types() const { return types_.data(); }
    const char *const *values() const { return values_.data(); }
    const int *lengths() const { return lengths_.data(); }
    const int *formats() const { return formats_.data(); }
    size_t size() const { return size_; } // about, in bytes

private:
    void add(Oid type, const Value &value, size_t position);
    void addNull();
    void addText(std::string text);
    void addBinary(std::string bytes);
    void addBytes(const char *data, size_t size);
    void addInteger(Oid type, int64_t value);
    void addReal(Oid type, double value);

    std::vector<Oid> types_;
    std::vector<const char *> values_;
    std::vector<int> lengths_;
    std::vector<int> formats_;
    std::deque<std::string> kept_;
    size_t size_ = 0;
};

// Appends a row of a result, each value in the form of its column's type; nothing of a row that fails stays. Returns
// how large the row was on its way.
size_t appendRow(const PGresult *result, int row, const std::vector<Column> &columns, RowBuffer &rows);

} // namespace ormel::client::postgres
