// A database client whose answers come out of the input. It reads all of every value that it is given, as a database
// does, and hands out values whose blocks end where it says they end.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "input.h"

namespace fuzz {

struct Column {
    std::string name;
    uint16_t type = 0;
    uint16_t size = 0;
    uint8_t format = 0;
    bool named = true;     // false: described with a NULL name
    bool described = true; // false: the description fails
};

// A table with 1 to `most` columns named "C0", "C1" ...
std::vector<Column> tableOf(Input &input, uint32_t most);

// Lives as long as an input; there is one at a time.
class Client {
public:
    // Answers for a table with these columns as a database would, but for calls that fail.
    Client(Input &input, std::vector<Column> table);
    // Answers whatever the input says.
    explicit Client(Input &input);
    // Requires that no connection and no statement is left.
    ~Client();
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    bool fails() { return mayFail && input.rarely(); }

    Input &input;
    const bool hostile;
    const std::vector<Column> table;
    bool mayFail = true;
    int live = 0;           // connections and statements
    uint32_t executed = 0;  // statements that ran, but for those that only ask what a table looks like
    uint64_t rowsBound = 0; // rows of values that these were given
    std::string errorText;
};

// A connection of its own, closed at the end.
class Connection {
public:
    Connection();
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    void *get() const { return handle_; }

private:
    void *handle_ = nullptr;
};

} // namespace fuzz
