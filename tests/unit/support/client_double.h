// A database client that follows a script: it answers as it was told, fails where it was told, and keeps a readable
// list of everything it was asked.
#ifndef UNIT_CLIENT_DOUBLE_H
#define UNIT_CLIENT_DOUBLE_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace unit {

// What a failing call returns, unless told otherwise.
inline constexpr uint32_t kClientStatus = 17;

struct Column {
    std::string name;
    uint16_t type = 0;
    uint16_t size = 0;
    uint8_t format = 0;
    bool named = true;     // false: described with a null name
    bool described = true; // false: the description fails
};

struct Cell {
    std::string bytes; // the value, or a large object's content
    bool isNull = false;
    std::optional<uint32_t> size = {};      // what the client says of it, where that is not the byte count
    bool data = true;                       // false: no data pointer, although it is not NULL
    uint32_t chunk = 1000;                  // most bytes that one read of a large object gives
    std::optional<uint32_t> stuckAt = {};   // reads from there on give nothing, and no end either
    std::optional<uint32_t> refusedAt = {}; // the read there fails
    bool lateEnd = false;                   // the end comes with a read of its own
};

Cell Null();
Cell Text(const std::string &text);
Cell Int32(int32_t value);
Cell Int64(int64_t value);
// A large object; 44 is the size of a locator, which stands for an unknown length.
Cell Lob(const std::string &content, uint32_t size = 44);

struct Answer {
    std::vector<Column> columns = {};
    std::vector<std::vector<Cell>> rows = {};
    std::optional<uint32_t> affected = {};    // the row count where not set
    std::optional<uint32_t> columnCount = {}; // the number of columns where not set
    uint32_t rowsAtOnce = 1;                  // what a fetch says it fetched
};

// A value as it stood when it was bound.
struct Bound {
    std::string statement;
    uint32_t position;
    uint32_t type;
    const void *address;
    uint32_t length;
    const uint16_t *rowLengths;
    std::string bytes;
};

class ClientDouble {
public:
    ClientDouble();
    ~ClientDouble();
    void Reset();

    // How statements whose text begins so answer; the latest rule that fits wins. Without one: no columns, no rows.
    void On(const std::string &prefix, Answer answer);
    // The n-th call of an operation from now on fails ("prepare", "execute", ...; "": of any), or all from the n-th on.
    void Fail(const std::string &operation, int n = 1);
    void FailFrom(const std::string &operation, int n = 1);
    void FailNothing();
    // Runs inside an operation, before it answers.
    void Hook(const std::string &operation, std::function<void()> hook);

    // Everything asked since the start or the last ForgetCalls, as "prepare(s1, SELECT 1)".
    std::vector<std::string> Calls() const;
    // The same without the reading of rows and columns.
    std::vector<std::string> CallsButReads() const;
    int Count(const std::string &operation) const;
    // Those of the calls that failed.
    std::vector<std::string> Failed() const;
    void ForgetCalls();
    std::vector<Bound> Bounds() const;

    int LiveConnections() const;
    int LiveStatements() const;
    // The handle that the calls name "c1", "s1".
    void *Handle(const std::string &name) const;

    uint32_t status = kClientStatus;
    uint32_t errorCode = 942;
    const char *errorText = "no such table";
    int32_t shortWrite = 0; // what a CLOB's writing leaves out

    class Impl;
    Impl &impl() { return *impl_; }

private:
    std::unique_ptr<Impl> impl_;
};

ClientDouble &Client();

} // namespace unit

#endif
