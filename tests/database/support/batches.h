// Batches of rows of one table, and the ways of inserting them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/database.h"

namespace database {

// What a row of the table parts is filled with.
struct Part {
    int32_t id = 0;
    std::string name = "cog";
    double price = 2.5;
    std::string code = "ABCD";
    std::optional<std::string> note = "new";
    std::string remark = "none";
    std::string drawing = std::string(1500, '\0');
};

// The table's columns: name and note have at most 10 characters, price is not below 0, code has 4 bytes, note is there.
std::string partColumns();

void fill(ORMEL_OBJECT *object, const Part &part);
void fill(const Batch &batch, const std::vector<Part> &parts);

// As many as asked for, with ids from first on.
std::vector<Part> partsFrom(int32_t first, size_t count);

// A variant of the insertion. What it left on its connection or slot is committed where it can be.
struct Variant {
    const char *name;
    uint32_t (*insert)(ORMEL_MULTI_OBJECT *multi);
};
const std::vector<Variant> &variants();

} // namespace database
