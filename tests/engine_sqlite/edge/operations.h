// What programs do with a database, each as one call that either succeeds or does not.
#pragma once

namespace edge {

struct Operation {
    const char *name;
    // Whether it succeeded; what it then brought is checked. It allocates nothing by itself.
    bool (*run)();
    // Whether a failure leaves the database's words behind.
    bool saysWhy;
};

// The statements that make the tables and what stands in them before each operation.
extern const char *const kTables;
extern const char *const kRows;

extern const Operation kOperations[11];

} // namespace edge
