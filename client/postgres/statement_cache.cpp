#include "statement_cache.h"

#include <algorithm>

namespace ormel::client::postgres {

bool Description::isLike(const Description &other) const {
    const auto sameName = [](const Column &a, const Column &b) { return a.name == b.name; };
    return parameters == other.parameters && types == other.types &&
           std::equal(columns.begin(), columns.end(), other.columns.begin(), other.columns.end(), sameName);
}

std::optional<Description> StatementCache::take(const std::string &sql) {
    const auto found = std::find_if(known_.begin(), known_.end(), [&](const Known &known) { return known.sql == sql; });
    if (found == known_.end())
        return std::nullopt;
    std::optional<Description> description(std::move(found->description));
    known_.erase(found);
    return description;
}

std::string StatementCache::give(std::string sql, Description description) {
    known_.push_front({std::move(sql), std::move(description)});
    if (known_.size() <= kMost)
        return "";
    std::string dropped = std::move(known_.back().description.name);
    known_.pop_back();
    return dropped;
}

} // namespace ormel::client::postgres
