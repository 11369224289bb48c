// A select: what its words ask for, and how its rows reach a writer.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "condition.h"
#include "layout.h"
#include "object.h"
#include "output.h"

namespace cli {

struct Page {
    uint32_t limit;
    uint32_t offset;
};

// The words, understood as far as that needs no database.
struct Selection {
    // Throws UsageError.
    explicit Selection(const SelectRequest &request);

    std::vector<Condition> conditions;
    std::vector<std::string> fields; // none: all columns
    std::optional<Page> page;
};

// The select of a table by an object. The layout must outlive it.
class Query {
public:
    // Throws UsageError.
    Query(const Layout &layout, const Selection &selection);

    const std::string &table() const { return layout_.table(); }
    ORMEL_OBJECT *object() { return object_.get(); }
    std::vector<Heading> headings() const;

    // A row's value of the first column that is selected.
    static Cell first(const ORMEL_SELECT_RESULT &result, uint32_t row);

    // Hands a row of the result over; by position, because a counted select's descriptor is that of the whole table.
    void write(RowWriter &writer, const ORMEL_SELECT_RESULT &result, uint32_t row) const;

private:
    const Layout &layout_;
    std::vector<size_t> positions_; // of the columns that are selected
    Object object_;
};

// A select result of the library, given back at the end.
struct SelectResult : ORMEL_SELECT_RESULT {
    SelectResult() : ORMEL_SELECT_RESULT{} {}
    ~SelectResult() { ORMEL_SelectResultClear(this); }
    SelectResult(const SelectResult &) = delete;
    SelectResult &operator=(const SelectResult &) = delete;
};

} // namespace cli
