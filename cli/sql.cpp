#include <iostream>
#include <optional>
#include <vector>

#include "commands.h"
#include "output.h"
#include "session.h"
#include "statement.h"
#include "table.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

TextTable collectRows(Statement &statement, const std::vector<Column> &columns) {
    std::vector<Heading> headings;
    for (const Column &column : columns)
        headings.push_back({column.name, isNumber(column.type) ? Align::right : Align::left});
    TextTable grid(headings);
    while (statement.fetch()) {
        std::vector<std::string> cells;
        for (uint32_t i = 0; i < columns.size(); ++i)
            cells.push_back(statement.value(i, columns[i].type));
        grid.add(cells);
    }
    return grid;
}

// Prints the rows, or where the statement gives none, how many it affected.
void print(const std::optional<TextTable> &grid, uint32_t affected) {
    if (grid) {
        grid->print(std::cout);
        std::cout << '(' << rows(grid->size()) << ")\n";
    } else {
        std::cout << rows(affected) << " affected\n";
    }
    flush(std::cout);
}

} // namespace

void runSql(const std::string &text) {
    Session session;
    uint32_t affected = 0;
    std::optional<TextTable> grid;
    {
        Statement statement(session.connection());
        statement.execute(text);
        const std::vector<Column> columns = statement.columns();
        if (columns.empty())
            affected = statement.affectedRows();
        else
            grid = collectRows(statement, columns);
    }
    session.commit();
    print(grid, affected);
}

} // namespace cli
