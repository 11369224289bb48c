// The owners of libpq's handles; nothing else closes one.
#pragma once

#include <libpq-fe.h>
#include <memory>

namespace ormel::client::postgres {

struct FinishConnection {
    void operator()(PGconn *connection) const noexcept { PQfinish(connection); }
};
struct ClearResult {
    void operator()(PGresult *result) const noexcept { PQclear(result); }
};

using OwnedConnection = std::unique_ptr<PGconn, FinishConnection>;
using OwnedResult = std::unique_ptr<PGresult, ClearResult>;

} // namespace ormel::client::postgres
