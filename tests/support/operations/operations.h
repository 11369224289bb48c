// What programs do with a database, each as one call that either succeeds or does not.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace operations {

// What a function that answers a pointer stands for where it answers none.
inline constexpr uint32_t kNothing = 0xFFFF0000;

struct Operation {
    const char *name;
    // Returns a code; what a success brought is checked. It allocates nothing by itself.
    uint32_t (*run)();
    // Whether a success changes what the tables hold.
    bool writes;
    // What its calls answer where the database fails, and no more: that refuses no object, and no condition.
    uint32_t codes[4];
    // Whether a failure leaves the database's words behind.
    bool saysWhy;
};

extern const Operation kOperations[15];

// An engine's statements: what makes the tables, what fills them anew, and a query for all that they hold, as a text.
struct Words {
    const char *tables;
    const char *rows;
    const char *contents;
};
extern const Words kSqlite;
extern const Words kPostgres;

struct Outcome {
    uint32_t code = 0;
    std::string error; // the database's, that the operation's thread met
};

// Runs it in a thread of its own, which has met no error yet.
Outcome attempt(const std::function<uint32_t()> &run);

} // namespace operations
