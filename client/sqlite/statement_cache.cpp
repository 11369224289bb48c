#include "statement_cache.h"

#include <algorithm>

namespace ormel::client::sqlite {

OwnedStatement StatementCache::take(const std::string &sql) {
    const auto found = std::find_if(idle_.begin(), idle_.end(), [&](const Idle &idle) { return idle.sql == sql; });
    if (found == idle_.end())
        return nullptr;
    OwnedStatement statement = std::move(found->statement);
    idle_.erase(found);
    return statement;
}

void StatementCache::give(std::string sql, OwnedStatement statement) noexcept {
    if (idle_.size() == kMost)
        idle_.erase(idle_.begin());
    idle_.push_back({std::move(sql), std::move(statement)});
}

} // namespace ormel::client::sqlite
