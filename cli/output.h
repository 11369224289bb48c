// Rows on standard output: as an aligned table, as JSON, as CSV.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "table.h"

namespace cli {

// A value: its client type id, which a column of a view may have from its rows alone, and its bytes, of a text without
// the NUL behind it; none for NULL.
struct Cell {
    uint32_t type;
    std::optional<std::span<const uint8_t>> bytes;
};

// Takes rows one after the other. Throws Failure, with the system's words, where they cannot be written.
class RowWriter {
public:
    virtual ~RowWriter() = default;

    // One cell for each heading.
    virtual void add(const std::vector<Cell> &cells) = 0;
    // What stands behind the last row.
    virtual void finish() = 0;
};

enum class Format {
    table,     // aligned, which takes all rows into memory
    csv,       // a heading, then the rows; every value in quotes, NULL without
    jsonArray, // one array, a row a line
    jsonLines, // one object a line
};

// Ends what was written, soon enough for the system's words still to be known. Throws Failure, as a writer does.
void flush(std::ostream &out);

// Writes bytes as they are. Throws Failure, as a writer does.
void writeBytes(std::span<const uint8_t> bytes, std::ostream &out);

std::unique_ptr<RowWriter> makeWriter(Format format, const std::vector<Heading> &headings, std::ostream &out);

} // namespace cli
