// Conditions and assignments, as the command line writes them and as the library takes them.
#pragma once

#include <cstdint>
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
    std::string value;
};

// "COL OP VALUE" with one of = <> < <= like; a value in single quotes is taken as it stands. Throws UsageError.
Condition parseCondition(std::string_view text);
std::vector<Condition> parseConditions(const std::vector<std::string> &texts);

// "COL=VALUE", with the same values. Throws UsageError.
Assignment parseAssignment(std::string_view text);
std::vector<Assignment> parseAssignments(const std::vector<std::string> &texts);

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
