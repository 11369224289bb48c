#include <algorithm>
#include <iostream>

#include "commands.h"
#include "selection.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

Format formatOf(const SelectRequest &request) {
    if (request.json)
        return Format::jsonArray;
    return request.csv ? Format::csv : Format::table;
}

// A plain select stops at so many rows, a counted one gives all of them.
void select(const Session &session, Query &query, const Selection &selection, ORMEL_SELECT_RESULT &result) {
    const bool plain = selection.page && selection.page->limit <= PREFETCH_ROWS;
    const auto run = plain ? ORMEL_SelectRecForConn3 : ORMEL_SelectBatchRecForConn;
    if (run(session.connection(), query.object(), &result) != ORMEL_OK)
        throw connectionFailure(session.connection(), "cannot read the rows of " + query.table());
}

uint32_t countRows(const Session &session, const Layout &layout, Query &query) {
    ORMEL_PARA parameters{};
    uint32_t count = 0;
    if (ORMEL_ObjectCheck(query.object(), layout.descriptor()) != ORMEL_OK ||
        ORMEL_ParaCondUpdateByObject(&parameters, query.object()) != ORMEL_OK ||
        ORMEL_GetBatchSelectCount(session.connection(), query.table().c_str(), &parameters, &count) != ORMEL_OK)
        throw databaseFailure("cannot count the rows of " + query.table());
    return count;
}

// How many rows the selection has, page and all.
uint32_t countSelected(const Session &session, const Layout &layout, Query &query, const Selection &selection) {
    const uint32_t count = countRows(session, layout, query);
    if (!selection.page)
        return count;
    return std::min(selection.page->limit, count - std::min(count, selection.page->offset));
}

// The rows that are read ahead come whole or not at all. Behind them, one that cannot be read looks like the end, so
// they are counted again, in the transaction that read them.
void checkComplete(const Session &session, const Layout &layout, Query &query, const Selection &selection,
                   uint32_t rowCount) {
    if (rowCount < PREFETCH_ROWS)
        return;
    const uint32_t expected = countSelected(session, layout, query, selection);
    if (rowCount < expected)
        throw connectionFailure(session.connection(), "only " + std::to_string(rowCount) + " of " +
                                                          std::to_string(expected) + " rows of " + query.table() +
                                                          " can be read");
}

// Counted first: of several rows none needs to be in memory.
void checkOneRow(const Session &session, const Layout &layout, Query &query, const Selection &selection) {
    const uint32_t count = countSelected(session, layout, query, selection);
    if (count == 0)
        throw Failure("no row of " + layout.table() +
                      " is meant; --lob writes a value of the one row that --where chooses");
    if (count > 1)
        throw Failure(rows(count) + " of " + layout.table() +
                      " are meant, and --lob writes a value of one; choose it with --where");
}

// The value of the row that is meant, as it stands.
void writeValue(const Cell &cell, const std::string &column) {
    if (!cell.bytes)
        throw Failure(column + " of the row is NULL; there is nothing to write");
    if (!isTextOrBytes(cell.type))
        throw UsageError(column + ": --lob writes texts and byte strings, and the value is of the type " +
                         typeName(cell.type) + "; use --fields");
    writeBytes(*cell.bytes, std::cout);
}

} // namespace

void getRows(const SelectRequest &request) {
    const Selection selection(request);
    const Session session;
    const Layout layout(session, request.table);
    Query query(layout, selection);
    if (request.lob)
        checkOneRow(session, layout, query, selection);
    SelectResult result;
    select(session, query, selection, result);
    const uint32_t rowCount = ORMEL_SelectResultRecNumGet(&result);
    checkComplete(session, layout, query, selection, rowCount);
    if (request.lob)
        return writeValue(Query::first(result, 0), *request.lob);
    const auto writer = makeWriter(formatOf(request), query.headings(), std::cout);
    for (uint32_t row = 0; row < rowCount; ++row)
        query.write(*writer, result, row);
    writer->finish();
}

} // namespace cli
