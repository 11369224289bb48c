// Conditions and assignments, as the command line writes them and as the library takes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "layout.h"

namespace cli {

struct Condition {
    std::string column;
    uint32_t op;
    std::string value;
};

struct Assignment {
    std::string column;
    std::optional<std::string> value; // none: NULL
};

// "COL OP VALUE" with one of = <> < <= like; a value in single quotes is taken as it stands. Throws UsageError, also
// for NULL, and for more conditions than a statement takes.
Condition parseCondition(std::string_view text);
std::vector<Condition> parseConditions(const std::vector<std::string> &texts);

// "COL=VALUE", with the same values, and NULL without quotes for none. Throws UsageError.
Assignment parseAssignment(std::string_view text);
std::vector<Assignment> parseAssignments(const std::vector<std::string> &texts);

// The columns that assignments name, each once. Throws UsageError.
std::vector<size_t> assignedColumns(const Layout &layout, const std::vector<Assignment> &assignments);

// Throws UsageError where the condition's operator does not suit its column.
void checkOperator(const Layout &layout, size_t position, const Condition &condition);

// The library's condition list, every value in the binary form of its column. Throws UsageError.
class ConditionList {
public:
    ConditionList(const Layout &layout, const std::vector<Condition> &conditions);

    // NULL where there are no conditions.
    const ORMEL_COND *get() const;

private:
    std::vector<uint8_t> bytes_;
};

} // namespace cli
