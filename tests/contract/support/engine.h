// What the suite must know about an engine.
//
// To run the suite against another one: derive from Engine, say what it has, and register it with one line,
//     CONTRACT_ENGINE(ThatEngine);
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/client.h"
#include "support/home.h"

namespace contract {

// A type as it stands in CREATE TABLE, and what is reported for it.
struct DeclaredType {
    const char *words;
    uint32_t type;
    uint32_t size;
    uint32_t precision = 0;
    uint32_t scale = 0;
};

// An expression in a select list, and the type that is reported for it.
struct Expression {
    const char *sql;
    uint32_t type;
};

// A value that the database keeps in a column although it does not fit the column's type.
struct Misfit {
    const char *words;
    const char *literal;
};

// What an engine can lack.
enum class Feature {
    enforcedWidths,     // a text longer than its column is refused
    exactNumeric,       // NUMERIC keeps every digit
    negativeZero,       // a double of -0.0 keeps its sign
    fixedBytes,         // BINARY(n) and VARBINARY(n)
    misfits,            // columns take values that do not fit their type
    knownNotNull,       // a column that takes no NULL is reported so
    caseSensitiveNames, // a quoted name is found in its own case only
    paddedChar,         // CHAR(n) is padded with blanks
    workAfterError,     // a transaction goes on after a failed statement
    refusalAfterError,  // a transaction refuses further work after a failed statement
    sqlState,           // errors begin with the SQLSTATE
};

class Engine {
public:
    virtual ~Engine() = default;

    virtual const char *name() const = 0;
    // Why it lacks the feature; NULL: it has it.
    virtual const char *lacks(Feature feature) const = 0;

    // Makes an empty database for one test and returns the lines of db.conf that lead to it.
    virtual std::string makeDatabase(const Home &home) = 0;
    virtual void dropDatabase() {}
    virtual Target target() const = 0;

    // The words for a double and for unbounded bytes; the other types are called alike everywhere.
    virtual const char *realType() const = 0;
    virtual const char *blobType() const = 0;

    virtual std::vector<DeclaredType> declaredTypes() const = 0;
    virtual std::vector<Expression> expressions() const = 0;
    virtual std::vector<Misfit> misfits() const { return {}; }
};

// Names the engine where a test fails.
inline void PrintTo(Engine *engine, std::ostream *out) {
    *out << engine->name();
}

// The engines that this program runs the suite against.
std::vector<Engine *> &engines();

template <class T> bool addEngine() {
    static T engine;
    engines().push_back(&engine);
    return true;
}

} // namespace contract

#define CONTRACT_ENGINE(Class) [[maybe_unused]] static const bool added##Class = contract::addEngine<Class>()
