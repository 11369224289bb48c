// Tables and rows of chance.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace database {

using Random = std::mt19937_64;

// A number from 0 to bound - 1.
uint64_t below(Random &random, uint64_t bound);

// A value's bytes, as an object is given them and a result has them, without a text's terminator. None: NULL.
using Cell = std::optional<std::string>;
using Row = std::vector<Cell>;
using Rows = std::vector<Row>;

// A kind of column: what it is declared as, what the client makes of that, and how its values come about.
struct Kind {
    std::string declared;
    uint32_t type;
    size_t width;   // bytes of its field in a record
    size_t longest; // what a value is made with: characters, digits or bytes
    std::string (*make)(Random &random, size_t longest);

    bool text() const;
    bool large() const;      // records do not carry its values
    bool bytes() const;      // of its values, records carry no length
    bool takesEmpty() const; // as which records write NULL
};

struct Column {
    std::string name;
    Kind kind;
};

// The first column is an integer, different in every row.
struct Table {
    std::string name;
    std::vector<Column> columns;
    Rows rows;

    std::string creation() const;
    bool hasLarge() const;
};

// As many columns as asked for, of kinds of chance; where there is room, of every kind there is.
Table randomTable(Random &random, size_t columns, size_t rows);

// What a column keeps of a value: a zero may lose its sign, a decimal be filled up.
Cell kept(const Column &column, const Cell &cell);

// The field of a record that holds the value, filled up with zeros; NULL is all zeros.
std::string fieldOf(const Column &column, const Cell &cell);

} // namespace database
