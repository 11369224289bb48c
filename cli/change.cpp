#include <iostream>

#include "commands.h"
#include "condition.h"
#include "object.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

// Checked before the database is asked anything.
std::vector<Condition> chosenRecords(const ChangeRequest &request, const std::string &verb) {
    if (request.where.empty() && !request.all)
        throw UsageError("say which records to " + verb +
                         " with --where 'COL OP VALUE', or --all for every one of them");
    if (!request.where.empty() && request.all)
        throw UsageError("--all means every record and does not go with --where");
    return parseConditions(request.where);
}

// The library's list of the columns that an update sets.
class FieldSelection {
public:
    void add(uint8_t position) {
        bytes_.push_back(position);
        ++bytes_[0];
    }
    const ORMEL_FIELD_SELECT *get() const { return reinterpret_cast<const ORMEL_FIELD_SELECT *>(bytes_.data()); }

private:
    std::vector<uint8_t> bytes_ = std::vector<uint8_t>(sizeof(ORMEL_FIELD_SELECT));
};

void assign(Records &record, FieldSelection &fields, const Layout &layout, const Assignment &assignment) {
    if (!assignment.value)
        throw UsageError("records carry no NULL: use the command set for it, or write 'NULL' in quotes for the text");
    const uint8_t position = layout.position(assignment.column);
    try {
        layout.parse(position, *assignment.value, record.field(0, layout.columns()[position]));
    } catch (const ValueError &error) {
        throw UsageError(assignment.column + ": " + error.what());
    }
    fields.add(position);
}

void checkSlots(const ChangeRequest &request) {
    if (request.assignments.size() + request.where.size() > ORMEL_MAX_ITEMS)
        throw UsageError("an update takes at most 32 assignments and conditions; use the command sql for more");
}

} // namespace

void deleteRecords(const ChangeRequest &request) {
    checkTableName(request.table);
    const auto conditions = chosenRecords(request, "delete");
    Session session;
    const Layout layout(session, request.table);
    const ConditionList list(layout, conditions);
    uint32_t count = 0;
    if (ORMEL_DeleteRecForConn(session.connection(), request.table.c_str(), list.get(), &count) != ORMEL_OK)
        throw databaseFailure("cannot delete from " + request.table);
    session.commit();
    std::cout << rows(count) << " deleted\n";
}

void updateRecords(const ChangeRequest &request) {
    checkTableName(request.table);
    checkSlots(request);
    const auto conditions = chosenRecords(request, "update");
    const auto assignments = parseAssignments(request.assignments);
    Session session;
    const Layout layout(session, request.table);
    layout.checkRecordFits();
    assignedColumns(layout, assignments); // each is named once
    Records record(layout, 1);
    FieldSelection fields;
    for (const Assignment &assignment : assignments)
        assign(record, fields, layout, assignment);
    const ConditionList list(layout, conditions);
    uint32_t count = 0;
    if (ORMEL_UpdateRecForConn(session.connection(), request.table.c_str(), fields.get(), record.buffer(), list.get(),
                               &count) != ORMEL_OK)
        throw databaseFailure("cannot update " + request.table);
    session.commit();
    std::cout << rows(count) << " updated\n";
}

void setRows(const ChangeRequest &request) {
    checkTableName(request.table);
    checkSlots(request);
    const auto conditions = chosenRecords(request, "set");
    const auto assignments = parseAssignments(request.assignments);
    Session session;
    const Layout layout(session, request.table);
    Object values(layout);
    values.assign(assignments);
    Object chosen(layout);
    chosen.require(conditions);
    uint32_t count = 0;
    if (ORMEL_UpdateRecForConn2(session.connection(), values.get(), chosen.get(), &count) != ORMEL_OK)
        throw databaseFailure("cannot set columns of " + request.table);
    session.commit();
    std::cout << rows(count) << " set\n";
}

} // namespace cli
