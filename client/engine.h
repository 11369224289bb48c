// What a database engine supplies to libqdclient's front.
//
// The front implements the qdc functions once: handles, error state, bound values, parameter sets, large-object slots,
// placeholders, read-ahead. An engine is a shared object of its own with one entry point, ormel_engine, and knows how
// to talk to one kind of database. docs/engines.md says what it must keep to.
//
// Engines report failures by throwing Error; anything else that escapes them is caught at the front's border too. A
// connection and its statements are used by one thread at a time, different connections by different threads at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "row_buffer.h"

namespace ormel::client {

// A failure in the database's own number and words; never a password. The words begin with the SQLSTATE where the
// database has one.
struct __attribute__((visibility("default"))) Error {
    uint32_t code;
    std::string message;
};

// Where to connect, and the whole of "../conf/db.conf".
struct Settings {
    std::string host; // of the address, before its last colon
    std::string port;
    std::string user;
    std::string password;
    uint32_t sslMode = 0; // 0 DISABLED to 4 VERIFY_FULL
    std::map<std::string, std::string, std::less<>> config;

    bool operator==(const Settings &) const = default;

    // The value of a key, or the fallback where it is absent or empty.
    std::string get(std::string_view key, std::string_view fallback) const {
        const auto found = config.find(key);
        return std::string(found == config.end() || found->second.empty() ? fallback : found->second);
    }
};

// How the database's SQL is written, as far as the search for placeholders needs to know.
struct Dialect {
    char placeholder;        // what stands before the number in the database's own placeholders
    bool bracketIdentifiers; // [name] quotes a name
    bool backtickIdentifiers;
    bool dollarQuotes;   // $tag$ text $tag$
    bool escapeStrings;  // E'\''
    bool nestedComments; // /* /* */ */
};

enum class Kind : uint8_t { null, integer, real, text, bytes };

// One parameter's value; text and bytes stay where the caller has them until the statement has run.
struct Value {
    Kind kind = Kind::null;
    uint32_t type = 0; // client type id under which it was bound
    int64_t integer = 0;
    double real = 0;
    const char *data = nullptr; // never NULL for text and bytes
    size_t size = 0;
};

// The rows of a parameter set. Every value was checked by the front.
class Batch {
public:
    virtual ~Batch() = default;
    virtual uint32_t rows() const = 0;
    virtual uint32_t columns() const = 0;
    virtual Value at(uint32_t row, uint32_t column) const = 0;
    // For messages: the row, from 0, and the column.
    virtual std::string place(uint32_t row, uint32_t column) const = 0;
};

// A column of a result; name in upper case where the database finds the name whatever its case.
struct Column {
    std::string name;
    uint16_t type = 0; // client type id: 1, 2, 3, 8 to 14 or 25
    uint16_t size = 0;
    uint8_t precision = 0;
    uint8_t scale = 0;
    bool nullable = true;
};

// A prepared statement. It can be executed again; that and close() end what was open.
class Statement {
public:
    virtual ~Statement() = default;

    // Runs the statement once and returns the rows it matched (0 for a query and for what matches no rows). A query is
    // left before its first row. readAhead: rows the front will ask for at once, at least 1.
    virtual uint64_t execute(const std::vector<Value> &values, uint32_t readAhead) = 0;

    // Runs the statement for every row, all or none, and returns the rows it matched. An error names the row, from 0.
    virtual uint64_t executeBatch(const Batch &batch) = 0;

    // The columns of an executed query; empty for anything else. They stay as they are until the next execution.
    virtual const std::vector<Column> &columns() const = 0;

    // Appends the next row, one value for each column and in the form of its type, and returns true; false at the end.
    // A value that does not fit its column's type is an error. Not called again after the end.
    virtual bool fetch(RowBuffer &rows) = 0;

    // Gives up the rest of the result.
    virtual void close() noexcept = 0;
};

// A connection. No autocommit: work belongs to a transaction until commit or rollback. The front closes every open
// statement before it calls these.
class Connection {
public:
    virtual ~Connection() = default; // discards what was not committed

    // sql has the database's own placeholders, numbered from 1.
    virtual std::unique_ptr<Statement> prepare(const std::string &sql) = 0;

    // Begins a transaction where none has begun. Neither this nor reading no rows takes a snapshot or a lock.
    virtual void begin() = 0;
    // After a failed commit the transaction is rolled back.
    virtual void commit() = 0;
    virtual void rollback() = 0;

    // Its user is done with it: rolls back, which need not be waited for, and undoes whatever a rollback leaves. False
    // where that cannot be; the connection is then closed. What was not touched costs no round trip.
    virtual bool recycle() noexcept { return false; }
    // Whether a connection that was kept can still be used, as far as can be told without asking the database anew.
    virtual bool alive() noexcept { return true; }
};

class Engine {
public:
    virtual ~Engine() = default;
    virtual Dialect dialect() const = 0;
    virtual std::unique_ptr<Connection> connect(const Settings &settings) = 0;
};

// The entry point's type and name. The engine lives as long as the process.
using EngineEntry = Engine *(*)();
inline constexpr char kEngineEntry[] = "ormel_engine";

} // namespace ormel::client
