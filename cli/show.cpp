#include <algorithm>
#include <cstring>
#include <iostream>

#include "commands.h"
#include "condition.h"
#include "output.h"
#include "table.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

// How many records are converted at a time; a record buffer counts no further than 65535.
constexpr uint32_t kBlockRows = 1000;

Result select(const Session &session, const Layout &layout, const ConditionList &list) {
    ORMEL_PARA parameters{};
    if (list.get() != nullptr && ORMEL_ParaCondUpdateByCond(&parameters, list.get(), layout.descriptor()) != ORMEL_OK)
        throw Failure("the library refuses the conditions; the reason stands in " + logFile());
    Result result(dbSelectRec(session.connection(), layout.table().c_str(), &parameters));
    if (result == nullptr)
        throw databaseFailure("cannot read the records of " + layout.table());
    return result;
}

std::string fieldText(uint32_t type, std::span<const uint8_t> field) {
    if (isLargeObject(type))
        return "(not in records)";
    if (isText(type))
        field = field.first(strnlen(reinterpret_cast<const char *>(field.data()), field.size()));
    return formatValue(type, field);
}

std::vector<Heading> headings(const Layout &layout) {
    std::vector<Heading> result;
    for (size_t i = 0; i < layout.columns().size(); ++i)
        result.push_back(layout.heading(i));
    return result;
}

void addRecord(TextTable &grid, const Layout &layout, Records &records, size_t index) {
    std::vector<std::string> cells;
    for (const ORMEL_RES_ATT_FIELD &column : layout.columns())
        cells.push_back(fieldText(static_cast<uint32_t>(column.atttypid), records.field(index, column)));
    grid.add(cells);
}

TextTable convert(const Layout &layout, const DB_RESULT *result) {
    TextTable grid(headings(layout));
    Records records(layout, kBlockRows);
    const uint32_t total = dbGetNtuples(result);
    for (uint32_t start = 0; start < total; start += kBlockRows) {
        const uint32_t count = std::min(kBlockRows, total - start);
        records.buffer()->usRecNum = static_cast<uint16_t>(count);
        if (ORMEL_CreatDsbufRangeByRes(records.buffer(), start, result, layout.descriptor()) != ORMEL_OK)
            throw Failure("the library cannot convert the records; the reason stands in " + logFile());
        for (size_t i = 0; i < count; ++i)
            addRecord(grid, layout, records, i);
    }
    return grid;
}

// What the table above does not show, on standard error, so that a pipe gets the table alone.
void printNotes(const Session &session, const Layout &layout, const ConditionList &list, size_t shown) {
    uint32_t count = 0;
    if (shown == PREFETCH_ROWS &&
        ORMEL_LocalExistRecordForConn(session.connection(), layout.table().c_str(), list.get(), &count) == ORMEL_OK &&
        count > shown)
        std::cerr << "ormel: these are the first " << shown << " of " << count
                  << " rows, the most that one select takes; narrow them down with --where, or take all with get\n";
    if (!layout.largeObjects().empty())
        std::cerr << "ormel: records do not carry large objects; read them with: ormel get " << layout.table() << "\n";
}

} // namespace

void showRecords(const std::string &table, const std::vector<std::string> &where) {
    checkTableName(table);
    const auto conditions = parseConditions(where);
    const Session session;
    const Layout layout(session, table);
    layout.checkRecordFits();
    const ConditionList list(layout, conditions);
    const Result result = select(session, layout, list);
    const TextTable grid = convert(layout, result.get());
    grid.print(std::cout);
    std::cout << '(' << rows(grid.size()) << ")\n";
    flush(std::cout);
    printNotes(session, layout, list, grid.size());
}

} // namespace cli
