// Kept connections that fall silent while nobody uses them.
#include <algorithm>
#include <dlfcn.h>
#include <poll.h>

#include "postgres/postgres_engine.h"
#include "postgres/proxy.h"
#include "support/contract_test.h"

namespace {

// What this thread has waited for by poll, the client's own calls included.
struct Waits {
    int calls = 0;
    int inVain = 0; // until the time was over
    int longest = 0;
};
thread_local Waits t_waits;

} // namespace

extern "C" __attribute__((visibility("default"))) int poll(pollfd *entries, nfds_t count, int milliseconds) {
    static const auto real = reinterpret_cast<decltype(&poll)>(dlsym(RTLD_NEXT, "poll"));
    const int ready = real(entries, count, milliseconds);
    ++t_waits.calls;
    t_waits.inVain += milliseconds != 0 && ready == 0 ? 1 : 0;
    t_waits.longest = std::max(t_waits.longest, milliseconds);
    return ready;
}

namespace {

using namespace contract;

class ParkedTest : public ContractTest {};
ENGINE_SUITE(ParkedTest);

// The server hears of no end of their transactions, and so does not answer.
TEST_P(ParkedTest, SilentOnesAreWaitedForOnceTogether) {
    constexpr uint64_t most = 4;
    constexpr int patience = 1500; // enough for a connect, and not what the client allows at most
    configure("client.connect_timeout_ms=" + std::to_string(patience) + "\n");
    Proxy proxy(serverPort());
    const Target through = {"127.0.0.1:" + std::to_string(proxy.port()), target().user, target().password};
    {
        std::vector<std::unique_ptr<Connection>> many;
        for (uint64_t i = 0; i < most; ++i)
            many.push_back(std::make_unique<Connection>(through));
        for (const auto &db : many)
            db->rows("select 1");
        proxy.fail({Proxy::toServer, 0, Proxy::Unit::queries, Proxy::Action::silence});
    }
    while (proxy.passed(Proxy::toServer).queries < most)
        std::this_thread::yield();
    proxy.count();
    t_waits = {};
    Connection db(through);
    if (t_waits.calls == 0)
        GTEST_SKIP() << "in this build the client does not wait by poll itself";
    EXPECT_LE(t_waits.inVain, 1);
    EXPECT_LE(t_waits.longest, patience);
    EXPECT_EQ(db.rows("select 1"), Rows{rowOf("1")});
}

} // namespace
