// Prepared statements that nobody uses at the moment, by their texts. SQLite prepares them again by itself when the
// schema has moved.
#pragma once

#include <string>
#include <vector>

#include "handles.h"

namespace ormel::client::sqlite {

class StatementCache {
public:
    StatementCache() { idle_.reserve(kMost); }

    // NULL where there is none.
    OwnedStatement take(const std::string &sql);

    // The statement has been reset and holds no values.
    void give(std::string sql, OwnedStatement statement) noexcept;

private:
    static constexpr size_t kMost = 32;

    struct Idle {
        std::string sql;
        OwnedStatement statement;
    };
    std::vector<Idle> idle_; // the longest unused first
};

} // namespace ormel::client::sqlite
