#include "postgres/wire.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>

namespace contract {

namespace {

using Action = Proxy::Action;
using Unit = Proxy::Unit;

struct Way {
    const char *name;
    Unit unit;
    Action action;
};
constexpr Way kWays[] = {
    {"cut after a message", Unit::messages, Action::cut},
    {"cut within a message", Unit::halves, Action::cut},
    {"cut after a byte", Unit::bytes, Action::cut},
    {"cut after a message, and from then on", Unit::messages, Action::outage},
    {"cut within a message, and from then on", Unit::halves, Action::outage},
    {"delayed after a message", Unit::messages, Action::delay},
    {"delayed within a message", Unit::halves, Action::delay},
};

bool isNightly() {
    const char *wish = std::getenv("ORMEL_NIGHTLY");
    return wish != nullptr && std::string_view(wish) == "1";
}

} // namespace

WirePoints::WirePoints(const Proxy &proxy, const MostPoints &most)
    : most_(isNightly() ? most.nightly : most.ordinary), passed_{proxy.passed(Proxy::toServer),
                                                                 proxy.passed(Proxy::toClient)} {}

void WirePoints::forEach(const std::function<bool(const Proxy::Fault &)> &attempt) const {
    for (const auto direction : {Proxy::toServer, Proxy::toClient})
        for (const Way &way : kWays) {
            const Proxy::Passed &whole = passed_[direction];
            const uint64_t units = way.unit == Unit::bytes ? whole.bytes : whole.messages;
            const uint64_t points = std::min(units, most_);
            uint64_t happened = 0;
            for (uint64_t i = 0; i < points && !testing::Test::HasFailure(); ++i) {
                const uint64_t after = points > 1 ? (units - 1) * i / (points - 1) : 0;
                SCOPED_TRACE(std::string(way.name) + ", behind " + std::to_string(after) +
                             (direction == Proxy::toServer ? " to the server" : " to the client"));
                happened += attempt({direction, after, way.unit, way.action}) ? 1 : 0;
            }
            if (testing::Test::HasFailure())
                return;
            EXPECT_GT(happened, 0U) << way.name << " in direction " << direction << ": this never happened";
        }
}

WireFigures::~WireFigures() {
    std::cout << "faults tried on the wire: " << faults_ << "; the operation failed with " << failures_ << ", with "
              << unknown_ << " of them by an unknown outcome" << std::endl;
}

void WireFigures::add(bool happened, bool failed, const std::string &error) {
    faults_ += happened ? 1 : 0;
    failures_ += failed ? 1 : 0;
    unknown_ += failed && isOutcomeUnknown(error) ? 1 : 0;
}

bool isOutcomeUnknown(const std::string &error) {
    return error.starts_with("08007: ");
}

void awaitQuiet(Connection &keeper) {
    while (!keeper
                .rows("select 1 from pg_stat_activity where datname = current_database() and "
                      "pid <> pg_backend_pid() and state <> 'idle'")
                .empty())
        keeper.rollback();
    keeper.rollback();
}

} // namespace contract
