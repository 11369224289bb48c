#include <iostream>

#include "commands.h"
#include "layout.h"
#include "output.h"
#include "table.h"
#include "text.h"

namespace cli {
namespace {

// What the table's shape keeps records from doing.
void printNotes(const Layout &layout) {
    if (layout.columns().size() > ORMEL_MAX_ITEMS)
        std::cout << "more than 32 columns: records can be read, counted and deleted, and not inserted\n";
    if (const std::string names = layout.largeObjects(); !names.empty())
        std::cout << "large objects, which records do not carry: " << names << '\n';
}

} // namespace

void describeTable(const std::string &table) {
    checkTableName(table);
    const Session session;
    const Layout layout(session, table);
    TextTable grid({{"column"}, {"type"}, {"type id", Align::right}, {"size", Align::right}, {"offset", Align::right}});
    for (size_t i = 0; i < layout.columns().size(); ++i) {
        const ORMEL_RES_ATT_FIELD &column = layout.columns()[i];
        grid.add({column.attname, layout.typeName(i), std::to_string(column.atttypid), std::to_string(column.len),
                  std::to_string(column.offset)});
    }
    grid.print(std::cout);
    std::cout << counted(layout.columns().size(), "column") << ", record length "
              << counted(layout.recordLength(), "byte") << '\n';
    printNotes(layout);
    flush(std::cout);
}

} // namespace cli
