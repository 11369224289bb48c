// What was learnt of statements by their texts, for as long as the connection lives, and which of them the server keeps
// prepared.
#pragma once

#include <libpq-fe.h>
#include <list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine.h"

namespace ormel::client::postgres {

// What the server says of a statement's text.
struct Description {
    std::string name; // under which the server has it prepared; empty: a query, which is read by a cursor
    std::vector<Oid> parameters;
    std::vector<Column> columns;
    std::vector<std::pair<Oid, int>> types; // of the columns, with their modifiers
    bool binary = false;                    // the rows' values all have a form that is read in binary

    // Whether values and rows are the same as of another one.
    bool isLike(const Description &other) const;
};

class StatementCache {
public:
    // The description of a text that nobody uses at the moment; the user gives it back.
    std::optional<Description> take(const std::string &sql);

    // Keeps a description. Returns the name of a prepared statement that the server need not keep any longer, or "".
    std::string give(std::string sql, Description description);

private:
    static constexpr size_t kMost = 64;

    struct Known {
        std::string sql;
        Description description;
    };
    std::list<Known> known_; // the one used last in front
};

} // namespace ormel::client::postgres
