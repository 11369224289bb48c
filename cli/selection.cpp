#include "selection.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "option.h"
#include "text.h"
#include "value.h"

namespace cli {
namespace {

std::vector<std::string> parseFields(const std::optional<std::string> &text) {
    std::vector<std::string> fields;
    if (!text)
        return fields;
    for (size_t start = 0; start <= text->size();) {
        const size_t end = std::min(text->find(',', start), text->size());
        fields.emplace_back(trimmed(std::string_view(*text).substr(start, end - start)));
        if (fields.back().empty())
            throw UsageError("--fields '" + *text + "' lacks a name: write names with commas between them, a,b");
        start = end + 1;
    }
    if (fields.size() > ORMEL_MAX_SELECT_FIELDS)
        throw UsageError("a select takes at most 32 fields, and --fields names " + std::to_string(fields.size()) +
                         "; leave --fields out for all columns, or use the command sql");
    return fields;
}

// The library writes both as signed numbers.
uint32_t parsePart(const std::string &option, const std::string &text) {
    return static_cast<uint32_t>(parseCount(option, text, 0, std::numeric_limits<int32_t>::max()));
}

std::optional<Page> parsePage(const SelectRequest &request) {
    if (!request.limit && request.offset)
        throw UsageError("--offset passes over the first rows of a page; say with --limit how many rows that has");
    if (!request.limit)
        return std::nullopt;
    return Page{parsePart("--limit", *request.limit), parsePart("--offset", request.offset.value_or("0"))};
}

std::vector<size_t> selectedPositions(const Layout &layout, const std::vector<std::string> &fields) {
    if (!fields.empty())
        return layout.positions(fields);
    std::vector<size_t> all(layout.columns().size());
    std::iota(all.begin(), all.end(), size_t{0});
    return all;
}

// A text's length counts the NUL behind it.
Cell cellOf(const ORMEL_SELECT_RESULT &result, uint32_t row, int32_t column) {
    const uint32_t type = ORMEL_ResultGetFieldType(&result, column);
    const auto *value = static_cast<const uint8_t *>(ORMEL_ResultGetFieldValue(&result, row, column));
    if (value == nullptr)
        return {type, std::nullopt};
    const size_t length = ORMEL_ResultGetFieldLengthByPos(&result, row, column);
    return {type, std::span(value, isText(type) ? length - 1 : length)};
}

} // namespace

Selection::Selection(const SelectRequest &request)
    : conditions(parseConditions(request.where)), fields(parseFields(request.fields)), page(parsePage(request)) {
    checkTableName(request.table);
    if (request.json && request.csv)
        throw UsageError("--json and --csv exclude each other; choose one");
    if (request.lob && (request.json || request.csv || request.fields))
        throw UsageError("--lob writes one value as it stands; --json, --csv and --fields do not go with it");
    if (request.lob)
        fields = {*request.lob};
}

Query::Query(const Layout &layout, const Selection &selection)
    : layout_(layout), positions_(selectedPositions(layout, selection.fields)), object_(layout) {
    object_.require(selection.conditions);
    if (!selection.fields.empty())
        object_.select(positions_);
    if (selection.page)
        object_.page(selection.page->limit, selection.page->offset);
}

std::vector<Heading> Query::headings() const {
    std::vector<Heading> result;
    for (const size_t position : positions_)
        result.push_back(layout_.heading(position));
    return result;
}

Cell Query::first(const ORMEL_SELECT_RESULT &result, uint32_t row) {
    return cellOf(result, row, 0);
}

void Query::write(RowWriter &writer, const ORMEL_SELECT_RESULT &result, uint32_t row) const {
    std::vector<Cell> cells;
    for (size_t i = 0; i < positions_.size(); ++i)
        cells.push_back(cellOf(result, row, static_cast<int32_t>(i)));
    writer.add(cells);
}

} // namespace cli
