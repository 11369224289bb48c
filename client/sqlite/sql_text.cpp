#include "sql_text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ormel::client::sqlite {

namespace {

constexpr std::array<std::pair<std::string_view, Role>, 13> kRoles = {{
    {"INSERT", Role::change},
    {"REPLACE", Role::change},
    {"UPDATE", Role::change},
    {"DELETE", Role::change},
    {"WITH", Role::change},
    {"BEGIN", Role::control},
    {"COMMIT", Role::control},
    {"END", Role::control},
    {"ROLLBACK", Role::control},
    {"SAVEPOINT", Role::control},
    {"RELEASE", Role::control},
    {"PRAGMA", Role::apart},
    {"VACUUM", Role::apart},
}};

} // namespace

Role roleOf(std::string_view firstWord) {
    const auto *found =
        std::find_if(kRoles.begin(), kRoles.end(), [&](const auto &role) { return role.first == firstWord; });
    return found == kRoles.end() ? Role::other : found->second;
}

} // namespace ormel::client::sqlite
