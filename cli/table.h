// An aligned table on standard output.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace cli {

enum class Align { left, right };

struct Heading {
    std::string name;
    Align align = Align::left;
};

// Collects rows of cells and prints them below their headings, each column as wide as its widest cell.
class TextTable {
public:
    explicit TextTable(const std::vector<Heading> &headings);

    // One cell for each heading; control characters are escaped.
    void add(const std::vector<std::string> &cells);
    size_t size() const { return rows_.size(); }
    void print(std::ostream &out) const;

private:
    struct Cell {
        std::string text;
        size_t width;
    };
    struct Column {
        Cell heading;
        Align align;
        size_t width;
    };

    static Cell makeCell(const std::string &text);
    void printRow(std::ostream &out, const std::vector<Cell> &cells) const;

    std::vector<Column> columns_;
    std::vector<std::vector<Cell>> rows_;
};

} // namespace cli
