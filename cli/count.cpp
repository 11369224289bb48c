#include <iostream>

#include "commands.h"
#include "condition.h"
#include "text.h"

namespace cli {

void countRecords(const std::string &table, const std::vector<std::string> &where) {
    checkTableName(table);
    const auto conditions = parseConditions(where);
    const Session session;
    const Layout layout(session, table);
    const ConditionList list(layout, conditions);
    uint32_t count = 0;
    if (ORMEL_LocalExistRecordForConn(session.connection(), table.c_str(), list.get(), &count) != ORMEL_OK)
        throw databaseFailure("cannot count the records of " + table);
    std::cout << rows(count) << '\n';
}

} // namespace cli
