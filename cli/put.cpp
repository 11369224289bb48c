#include <iostream>

#include "commands.h"
#include "object.h"

namespace cli {

void putRow(const ChangeRequest &request) {
    checkTableName(request.table);
    if (request.assignments.size() > ORMEL_MAX_ITEMS)
        throw UsageError("a row is put with at most 32 values; use the command sql for more");
    const auto assignments = parseAssignments(request.assignments);
    Session session;
    const Layout layout(session, request.table);
    Object row(layout);
    row.assign(assignments);
    if (ORMEL_InsertRecForConn2(session.connection(), row.get()) != ORMEL_OK)
        throw databaseFailure("cannot put the row into " + request.table);
    session.commit();
    std::cout << "1 row put\n";
}

} // namespace cli
