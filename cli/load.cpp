#include <iostream>

#include "commands.h"
#include "csv_reader.h"
#include "layout.h"
#include "progress.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

char separatorOf(const std::string &text) {
    if (text == "\\t")
        return '\t';
    if (text.size() != 1 || std::string("\"\r\n").find(text) != std::string::npos)
        throw UsageError("the separator '" + printable(text) +
                         "' is not one character of ASCII (\\t for the tab) other than a quote or a line end");
    return text[0];
}

// Said before the first row, not as a failure of it.
void checkInsertable(const Layout &layout) {
    layout.checkRecordFits();
    const size_t count = layout.columns().size();
    if (count > ORMEL_MAX_ITEMS)
        throw Failure(layout.table() + " has " + std::to_string(count) +
                      " columns, the insert of a record takes at most 32; use the command sql, or split the table");
    if (const std::string names = layout.largeObjects(); !names.empty())
        throw Failure(layout.table() + " has columns that no record carries, large objects: " + names +
                      "; use the command sql, or declare them as VARCHAR(n)");
}

void fillRecord(Records &record, const Layout &layout, const CsvRecord &row, const std::string &place) {
    const auto columns = layout.columns();
    if (row.fields.size() != columns.size())
        throw Failure(place + ": the line has " + counted(row.fields.size(), "field") + ", " + layout.table() +
                      " has " + counted(columns.size(), "column"));
    for (size_t i = 0; i < columns.size(); ++i) {
        try {
            layout.parse(i, row.fields[i], record.field(0, columns[i]));
        } catch (const ValueError &error) {
            throw Failure(place + ": " + columns[i].attname + ": " + error.what());
        }
    }
}

size_t insertAll(CsvReader &reader, const Layout &layout, const Transaction &transaction) {
    Records record(layout, 1);
    Progress progress(reader.size());
    CsvRecord row;
    size_t count = 0;
    while (reader.next(row)) {
        const std::string place = reader.place(row.line);
        fillRecord(record, layout, row, place);
        if (ORMEL_InsertRecForTrans(transaction.slot(), layout.table().c_str(), record.buffer()) != ORMEL_OK)
            throw databaseFailure(place + ": the database refuses the record");
        progress.show(reader.read(), ++count);
    }
    return count;
}

// Every failure of a load says that nothing remains of it.
size_t insertAllOrNone(CsvReader &reader, const Layout &layout) {
    try {
        Transaction transaction;
        const size_t count = insertAll(reader, layout, transaction);
        transaction.commit();
        return count;
    } catch (const Failure &failure) {
        throw Failure(std::string(failure.what()) + "; nothing was loaded");
    }
}

} // namespace

void loadFile(const LoadRequest &request, const Place &place) {
    checkTableName(request.table);
    const char separator = separatorOf(request.separator);
    CsvReader reader(callersFile(place, request.file), request.file, separator);
    const Session session;
    const Layout layout(session, request.table);
    checkInsertable(layout);
    const size_t count = insertAllOrNone(reader, layout);
    std::cout << rows(count) << " loaded into " << request.table << '\n';
}

} // namespace cli
