#include <algorithm>
#include <iostream>

#include "commands.h"
#include "selection.h"

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

// The rows that are read ahead come whole or not at all. Behind them, one that cannot be read looks like the end, so
// they are counted again, in the transaction that read them.
void checkComplete(const Session &session, const Layout &layout, Query &query, const Selection &selection,
                   uint32_t rowCount) {
    if (rowCount < PREFETCH_ROWS)
        return;
    uint32_t expected = countRows(session, layout, query);
    if (selection.page)
        expected = std::min(selection.page->limit, expected - std::min(expected, selection.page->offset));
    if (rowCount < expected)
        throw connectionFailure(session.connection(), "only " + std::to_string(rowCount) + " of " +
                                                          std::to_string(expected) + " rows of " + query.table() +
                                                          " can be read");
}

} // namespace

void getRows(const SelectRequest &request) {
    const Selection selection(request);
    const Session session;
    const Layout layout(session, request.table);
    Query query(layout, selection);
    SelectResult result;
    select(session, query, selection, result);
    const uint32_t rowCount = ORMEL_SelectResultRecNumGet(&result);
    checkComplete(session, layout, query, selection, rowCount);
    const auto writer = makeWriter(formatOf(request), query.headings(), std::cout);
    for (uint32_t row = 0; row < rowCount; ++row)
        query.write(*writer, result, row);
    writer->finish();
}

} // namespace cli
