// What the sweeps over the wire share: where a proxy fails, and what came of it.
#pragma once

#include <functional>

#include "postgres/proxy.h"
#include "support/client.h"

namespace contract {

// How many points of the wire are tried at most, for each operation, direction and way of failing.
struct MostPoints {
    uint64_t ordinary;
    uint64_t nightly;
};

// Points that are evenly spread, from the first to the last, over what the proxy counted while nothing failed.
class WirePoints {
public:
    WirePoints(const Proxy &proxy, const MostPoints &most);

    // The attempt returns whether the fault happened, as some of each direction and way must.
    void forEach(const std::function<bool(const Proxy::Fault &)> &attempt) const;

private:
    const uint64_t most_;
    const Proxy::Passed passed_[2];
};

// Of one test, printed at its end.
class WireFigures {
public:
    ~WireFigures();
    void add(bool happened, bool failed, const std::string &error);

private:
    uint64_t faults_ = 0;
    uint64_t failures_ = 0;
    uint64_t unknown_ = 0;
};

bool isOutcomeUnknown(const std::string &error);

// Waits until the server has seen that a connection is gone, or what it was sent last.
void awaitQuiet(Connection &keeper);

} // namespace contract
