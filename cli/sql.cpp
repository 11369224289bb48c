#include <iostream>
#include <vector>

#include "commands.h"
#include "session.h"
#include "statement.h"
#include "table.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

void printRows(Statement &statement, const std::vector<Column> &columns) {
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
    grid.print(std::cout);
    std::cout << '(' << rows(grid.size()) << ")\n";
}

} // namespace

void runSql(const std::string &text) {
    Session session;
    uint32_t affected = 0;
    bool gaveRows = false;
    {
        Statement statement(session.connection());
        statement.execute(text);
        const std::vector<Column> columns = statement.columns();
        gaveRows = !columns.empty();
        if (gaveRows)
            printRows(statement, columns);
        else
            affected = statement.affectedRows();
    }
    session.commit();
    if (!gaveRows)
        std::cout << rows(affected) << " affected\n";
}

} // namespace cli
