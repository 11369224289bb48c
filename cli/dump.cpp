#include <iostream>

#include "commands.h"
#include "selection.h"

namespace cli {
namespace {

constexpr uint32_t kFirstRows = 16; // that a cursor reads ahead

// A cursor that does not begin takes along what the database said of it, so its first rows are selected once more.
Failure beginFailure(const Session &session, Query &query) {
    const std::string what = "cannot read the rows of " + query.table();
    SelectResult first;
    ORMEL_ObjectSelectRowCountSet(query.object(), 1, kFirstRows, 0);
    const bool again = ORMEL_SelectRecForConn3(session.connection(), query.object(), &first) != ORMEL_OK;
    return again ? connectionFailure(session.connection(), what) : databaseFailure(what);
}

// A cursor of the library, ended at the end, and the row that it fetched last.
class Cursor {
public:
    Cursor(const Session &session, Query &query)
        : table_(query.table()), slot_(ORMEL_BeginSelectSpecifyField(query.object(), __func__, __LINE__)) {
        if (slot_ == nullptr)
            throw beginFailure(session, query);
    }
    ~Cursor() {
        ORMEL_SelectResultClearForFetch(&row_);
        ORMEL_EndSelect(slot_);
    }
    Cursor(const Cursor &) = delete;
    Cursor &operator=(const Cursor &) = delete;

    const ORMEL_SELECT_RESULT &row() const { return row_; }

    // Goes to the next row; false at the end.
    bool next() {
        ORMEL_SelectResultClearForFetch(&row_);
        const uint32_t code = ORMEL_FetchSelectRecEx(slot_, &row_);
        if (code != ORMEL_OK && code != ORMEL_END_OF_DATA)
            throw connectionFailure(slot_->pConn, "cannot read the next row of " + table_);
        return code == ORMEL_OK;
    }

private:
    std::string table_;
    ORMEL_TRANS *slot_;
    ORMEL_SELECT_RESULT row_{};
};

} // namespace

void dumpRows(const SelectRequest &request) {
    const Selection selection(request);
    const Session session;
    const Layout layout(session, request.table);
    Query query(layout, selection);
    Cursor cursor(session, query);
    const auto writer = makeWriter(request.json ? Format::jsonLines : Format::csv, query.headings(), std::cout);
    while (cursor.next())
        query.write(*writer, cursor.row(), 0);
    writer->finish();
}

} // namespace cli
