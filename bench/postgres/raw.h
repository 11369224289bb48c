// libpq, as a program without ormeldb would use it.
#pragma once

#include <libpq-fe.h>
#include <memory>
#include <vector>

#include "database.h"

namespace bench {

struct Finish {
    void operator()(PGconn *connection) const { PQfinish(connection); }
};
struct Clear {
    void operator()(PGresult *result) const { PQclear(result); }
};
using Server = std::unique_ptr<PGconn, Finish>;
using Answer = std::unique_ptr<PGresult, Clear>;

Server connect();

// Ends the program with the server's words where the answer is an error.
Answer checked(PGconn *server, PGresult *result);
void run(PGconn *server, const char *sql);

// Types by the server's numbers.
inline constexpr Oid kBool = 16;
inline constexpr Oid kBytea = 17;
inline constexpr Oid kInt8 = 20;
inline constexpr Oid kInt4 = 23;
inline constexpr Oid kFloat8 = 701;
inline constexpr Oid kVarchar = 1043;

// A value's bytes as they travel, highest first.
std::string wire(int32_t number);
std::string wire(int64_t number);
std::string wire(double number);
std::string wire(bool flag);

// A row, as many programs would pass it: pointers into the values' bytes.
class Parameters {
public:
    explicit Parameters(const std::vector<std::string> &values);
    int count() const { return static_cast<int>(pointers_.size()); }
    const char *const *values() const { return pointers_.data(); }
    const int *lengths() const { return lengths_.data(); }
    const int *formats() const { return formats_.data(); }

private:
    std::vector<const char *> pointers_;
    std::vector<int> lengths_;
    std::vector<int> formats_;
};

// A row of an answer in binary form.
Person personOf(const PGresult *rows, int row);

} // namespace bench
