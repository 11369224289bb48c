#include "sql_text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ormel::client::sqlite {

namespace {

constexpr std::array<std::pair<std::string_view, Role>, 7> kRoles = {{
    {"INSERT", Role::change},
    {"REPLACE", Role::change},
    {"UPDATE", Role::change},
    {"DELETE", Role::change},
    {"WITH", Role::change},
    {"PRAGMA", Role::apart},
    {"VACUUM", Role::apart},
}};

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

} // namespace

std::string_view statementIn(std::string_view text) {
    for (text = skipBlanks(text); text.starts_with(kByteOrderMark); text = skipBlanks(text))
        text.remove_prefix(kByteOrderMark.size());
    return text;
}

Role roleOf(std::string_view firstWord) {
    const auto *found =
        std::find_if(kRoles.begin(), kRoles.end(), [&](const auto &role) { return role.first == firstWord; });
    return found == kRoles.end() ? Role::other : found->second;
}

} // namespace ormel::client::sqlite
