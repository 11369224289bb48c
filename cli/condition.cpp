#include "condition.h"

#include <algorithm>
#include <cstddef>

#include "text.h"
#include "value.h"

namespace cli {
namespace {

struct Operator {
    std::string_view word;
    uint32_t code;
};

constexpr Operator kOperators[] = {
    {"=", ORMEL_OP_EQUAL},       {"<>", ORMEL_OP_NOT_EQUAL}, {"<", ORMEL_OP_LESS},
    {"<=", ORMEL_OP_LESS_EQUAL}, {"like", ORMEL_OP_LIKE},
};

constexpr std::string_view kSymbols = "=<>!";

// A column's name, an operator and the rest, without the blanks around them.
struct Words {
    std::string_view column;
    std::string_view op;
    std::string_view value;
};

Words split(std::string_view text) {
    const std::string_view all = trimmed(text);
    const std::string_view column = all.substr(0, all.find_first_of(" \t=<>!"));
    const std::string_view rest = trimmed(all.substr(column.size()));
    const bool symbol = !rest.empty() && kSymbols.find(rest.front()) != std::string_view::npos;
    const size_t length = symbol ? rest.find_first_not_of(kSymbols) : rest.find_first_of(" \t");
    const std::string_view op = rest.substr(0, length);
    return {column, op, trimmed(rest.substr(op.size()))};
}

// The library would turn an operator that it does not know into equality, so that none may come through.
uint32_t operatorCode(const Words &words) {
    const std::string op = lowerCase(words.op);
    const auto *found = std::find_if(std::begin(kOperators), std::end(kOperators),
                                     [&](const Operator &entry) { return entry.word == op; });
    if (found != std::end(kOperators))
        return found->code;
    if (op.size() > 1 && op.front() == '=')
        throw UsageError("there is no operator '" + op +
                         "'; a value that begins with = < > or ! needs a blank before it");
    throw UsageError("there is no operator '" + std::string(words.op) + "': use = <> < <= or like, or say it in SQL: " +
                     "ormel sql \"SELECT ... WHERE " + std::string(words.column) + " " + std::string(words.op) +
                     (words.value.empty() ? "" : " ") + std::string(words.value) + "\"");
}

std::string withoutQuotes(std::string_view text) {
    std::string value;
    for (size_t i = 1; i + 1 < text.size(); ++i) {
        value += text[i];
        if (text[i] != '\'')
            continue;
        if (i + 2 >= text.size() || text[i + 1] != '\'')
            throw UsageError("a quote inside the quoted value " + std::string(text) + " is written twice: ''");
        ++i;
    }
    return value;
}

// The bare word, in any case.
bool isNull(std::string_view text) {
    return lowerCase(text) == "null";
}

std::string valueOf(std::string_view text) {
    if (text.empty() || text.front() != '\'')
        return std::string(text);
    if (text.size() < 2 || text.back() != '\'')
        throw UsageError("the value " + std::string(text) + " begins with a quote and does not end with one");
    return withoutQuotes(text);
}

template <typename Parsed, typename Parse>
std::vector<Parsed> parseAll(const std::vector<std::string> &texts, Parse parse) {
    std::vector<Parsed> parsed;
    std::transform(texts.begin(), texts.end(), std::back_inserter(parsed), parse);
    return parsed;
}

// A condition of a record has no room for every value of such a column.
void checkLongColumn(const Condition &condition, uint32_t type, size_t size) {
    constexpr size_t kMost = sizeof(ORMEL_COND_ITEM::aucValue);
    if (isText(type) && condition.value.size() >= kMost)
        throw UsageError(condition.column + ": the text has " + std::to_string(condition.value.size()) +
                         " bytes, a condition on records takes at most " + std::to_string(kMost - 1) +
                         "; get, dump, set and sql take more");
    if (!isText(type) && !isLargeObject(type))
        throw UsageError(condition.column + ": a condition's value has at most " + std::to_string(kMost) +
                         " bytes, and the column has " + std::to_string(size) + "; use the command sql");
}

void fill(ORMEL_COND_ITEM &item, const Layout &layout, const Condition &condition) {
    item.ucFieldId = layout.position(condition.column);
    item.uiOp = condition.op;
    const ORMEL_RES_ATT_FIELD &column = layout.columns()[item.ucFieldId];
    const auto type = static_cast<uint32_t>(column.atttypid);
    checkOperator(layout, item.ucFieldId, condition);
    const auto size = static_cast<size_t>(column.len);
    if (size > sizeof item.aucValue)
        checkLongColumn(condition, type, size);
    try {
        const auto value = std::span(item.aucValue).first(std::min(size, sizeof item.aucValue));
        if (condition.op == ORMEL_OP_LIKE)
            parseValue(type, condition.value, value); // a pattern, also where the column has numbers in text
        else
            layout.parse(item.ucFieldId, condition.value, value);
    } catch (const ValueError &error) {
        throw UsageError(condition.column + ": " + error.what());
    }
}

} // namespace

Condition parseCondition(std::string_view text) {
    const Words words = split(text);
    if (words.column.empty() || words.op.empty())
        throw UsageError("'" + std::string(text) + "' is no condition: write 'COL OP VALUE', for example 'AGE <= 30'");
    const uint32_t code = operatorCode(words);
    if (isNull(words.value))
        throw UsageError("no comparison with NULL is ever true: ask in SQL, ormel sql \"SELECT ... WHERE " +
                         std::string(words.column) +
                         " IS NULL\" (or IS NOT NULL), or write 'NULL' in quotes for the text");
    return {std::string(words.column), code, valueOf(words.value)};
}

std::vector<Condition> parseConditions(const std::vector<std::string> &texts) {
    if (texts.size() > ORMEL_MAX_ITEMS)
        throw UsageError("a statement takes at most 32 conditions; use the command sql for more");
    return parseAll<Condition>(texts, [](const std::string &text) { return parseCondition(text); });
}

Assignment parseAssignment(std::string_view text) {
    const size_t equals = text.find('=');
    const std::string_view column = trimmed(text.substr(0, equals));
    if (equals == std::string_view::npos || column.empty())
        throw UsageError("'" + std::string(text) + "' is no assignment: write COL=VALUE, for example AGE=30");
    const std::string_view value = trimmed(text.substr(equals + 1));
    if (isNull(value))
        return {std::string(column), std::nullopt};
    return {std::string(column), valueOf(value)};
}

std::vector<Assignment> parseAssignments(const std::vector<std::string> &texts) {
    return parseAll<Assignment>(texts, [](const std::string &text) { return parseAssignment(text); });
}

std::vector<size_t> assignedColumns(const Layout &layout, const std::vector<Assignment> &assignments) {
    std::vector<std::string> names;
    for (const Assignment &assignment : assignments)
        names.push_back(assignment.column);
    return layout.positions(names);
}

void checkOperator(const Layout &layout, size_t position, const Condition &condition) {
    const auto type = static_cast<uint32_t>(layout.columns()[position].atttypid);
    if (condition.op == ORMEL_OP_LIKE && !isText(type) && type != QDC_TYPE_CLOB)
        throw UsageError(condition.column + ": like compares texts, and the column is of the type " +
                         layout.typeName(position));
    if (condition.op != ORMEL_OP_LIKE && layout.isUndeclared(position)) // text would be compared with what may be none
        throw UsageError(condition.column + ": " + layout.table() +
                         " does not say of what type the column is, so only like compares it; use the command sql");
}

ConditionList::ConditionList(const Layout &layout, const std::vector<Condition> &conditions) {
    if (conditions.empty())
        return;
    bytes_.resize(sizeof(ORMEL_COND) + conditions.size() * sizeof(ORMEL_COND_ITEM));
    auto *list = reinterpret_cast<ORMEL_COND *>(bytes_.data());
    list->usCondNum = static_cast<uint16_t>(conditions.size());
    for (size_t i = 0; i < conditions.size(); ++i)
        fill(list->astCond[i], layout, conditions[i]);
}

const ORMEL_COND *ConditionList::get() const {
    return bytes_.empty() ? nullptr : reinterpret_cast<const ORMEL_COND *>(bytes_.data());
}

} // namespace cli
