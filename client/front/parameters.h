// What is bound to a statement's placeholders.
#pragma once

#include "engine.h"

namespace ormel::client {

// One placeholder's binding: the caller's memory, for one row or for every row of a parameter set.
struct Parameter {
    bool bound = false;
    uint32_t type = 0;
    uint8_t *data = nullptr;              // NULL: SQL NULL
    uint32_t length = 0;                  // bytes of a value, and from one row's value to the next
    const uint16_t *rowLengths = nullptr; // lengths of the rows' values; NULL: all of them length
};

// The parameters of one statement.
class Parameters {
public:
    // As many parameters as the text has.
    void reset(uint32_t count, std::string_view sql = "") {
        parameters_.assign(count, {});
        sql_ = sql;
    }
    uint32_t count() const { return static_cast<uint32_t>(parameters_.size()); }

    // Throws Error for a position that the statement does not have, a type that no database takes and a length that the
    // type cannot have.
    void bind(uint32_t position, const Parameter &parameter);

    // Puts a large object into its slot, one of rows: the bytes stay the caller's. Returns how many were taken.
    uint32_t writeLob(uint32_t position, uint32_t type, uint32_t row, uint32_t rows, const void *data, uint32_t length);

    // The value of a row. Throws Error for one that its parameter cannot take, with row and parameter.
    Value at(uint32_t row, uint32_t position) const;

    // Whether values were bound as those of a set's rows, be it a single one.
    bool areOfSet() const;

    // Where a value is, for messages: its row, from 0, and its parameter, with the column's name where an insert says
    // it.
    std::string place(uint32_t row, uint32_t position) const;

    // Throws Error unless every parameter is bound and every value of the first rows rows can be taken.
    void check(uint32_t rows) const;

private:
    const Parameter &parameter(uint32_t position) const;

    std::vector<Parameter> parameters_;
    std::string sql_;
};

} // namespace ormel::client
