// The database under the library: what it lacks, how it refuses, and a way to it past the library.
//
// The environment says which one it is: PostgreSQL, where tests/support/with_postgres.py has started a server, or else
// the embedded one. The next one is a class derived from Engine, and a line in engine().
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace database {

// What an engine can lack.
enum class Feature {
    fixedBytes,        // BINARY(n) and VARBINARY(n)
    misfits,           // columns take values that do not fit their type
    emptyNumbers,      // empty text is kept in a NUMERIC and in a date
    negativeZero,      // a double of -0.0 keeps its sign
    notANumber,        // a double keeps NaN
    numericAsWritten,  // a NUMERIC is not filled up to its decimals
    likeOfNumbers,     // LIKE compares numbers, too
    workAfterError,    // a transaction goes on after a failed statement
    refusalAfterError, // a transaction refuses further work after a failed statement
};

// A table's rule that a row can break; a reference is one that is looked at when the commit comes.
enum class Rule { key, presence, check, reference };

class Engine {
public:
    virtual ~Engine() = default;

    virtual const char *name() const = 0;
    // Why it lacks the feature; NULL: it has it.
    virtual const char *lacks(Feature feature) const = 0;

    // Runs statements and commits them, one call at a time. The first column of the rows of the last one, as text; NULL
    // is empty.
    virtual std::vector<std::string> run(const std::string &sql) const = 0;

    // How the error begins with which a row is refused: behind the place in its batch ("row 2: ", or none), by the name
    // of the column, or of the CHECK.
    virtual std::string refusal(const std::string &place, Rule rule, const std::string &table,
                                const std::string &name) const = 0;

    // How often a large object is in memory while it is read, the caller's own included.
    virtual size_t copiesRead() const = 0;
};

const Engine &engine();

// Each engine as its file has it.
const Engine &sqliteEngine();
const Engine &postgresEngine();

} // namespace database

// Skips a test about what the engine does not have, and says why.
#define NEEDS(feature)                                                                                                 \
    if (const char *reason = database::engine().lacks(database::Feature::feature))                                     \
    GTEST_SKIP() << database::engine().name() << ": " << reason
