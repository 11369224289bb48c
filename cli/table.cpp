#include "table.h"

#include <algorithm>
#include <ostream>

#include "text.h"

namespace cli {

TextTable::TextTable(const std::vector<Heading> &headings) {
    for (const Heading &heading : headings) {
        const Cell cell = makeCell(heading.name);
        columns_.push_back({cell, heading.align, cell.width});
    }
}

TextTable::Cell TextTable::makeCell(const std::string &text) {
    std::string shown = printable(text);
    const size_t width = displayWidth(shown);
    return {std::move(shown), width};
}

void TextTable::add(const std::vector<std::string> &cells) {
    std::vector<Cell> row;
    row.reserve(columns_.size());
    for (size_t i = 0; i < columns_.size(); ++i) {
        row.push_back(makeCell(cells.at(i)));
        columns_[i].width = std::max(columns_[i].width, row.back().width);
    }
    rows_.push_back(std::move(row));
}

void TextTable::printRow(std::ostream &out, const std::vector<Cell> &cells) const {
    std::string line;
    for (size_t i = 0; i < columns_.size(); ++i) {
        const std::string padding(columns_[i].width - cells[i].width, ' ');
        line += i == 0 ? " " : " | ";
        line += columns_[i].align == Align::right ? padding + cells[i].text : cells[i].text + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

void TextTable::print(std::ostream &out) const {
    std::vector<Cell> headings;
    for (const Column &column : columns_)
        headings.push_back(column.heading);
    printRow(out, headings);
    for (size_t i = 0; i < columns_.size(); ++i)
        out << (i == 0 ? "" : "+") << std::string(columns_[i].width + 2, '-');
    out << '\n';
    for (const std::vector<Cell> &row : rows_)
        printRow(out, row);
}

} // namespace cli
