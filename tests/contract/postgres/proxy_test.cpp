// Connections that break or fall silent on the wire.
#include "postgres/postgres_engine.h"
#include "postgres/proxy.h"
#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ProxyTest : public ContractTest {
protected:
    ProxyTest() { configure("client.pool=0\n"); }

    // Where the proxy is.
    Target between() const { return {"127.0.0.1:" + std::to_string(proxy_.port()), target().user, target().password}; }
    Proxy &proxy() { return proxy_; }

    // A row in an open transaction, which is committed when the connection is told to fail.
    std::string failingCommit(Proxy::Direction direction) {
        Connection db(between());
        fill(db, 1, 1);
        proxy_.fail({direction, 0, Proxy::Unit::messages, Proxy::Action::cut});
        EXPECT_FAILS(qdc_commit(db));
        EXPECT_EQ(db.errorCode(), 8007U);
        std::string words = db.error();
        EXPECT_FAILS(qdc_commit(db));
        EXPECT_THAT(db.error(), StartsWith("08006: nothing was committed"));
        return words;
    }

private:
    Proxy proxy_{serverPort()};
};
ENGINE_SUITE(ProxyTest);

TEST_P(ProxyTest, MessagesAndTheirTurnsAreCounted) {
    Connection db(between());
    proxy().count();
    EXPECT_EQ(db.rows("select 1"), Rows{rowOf("1")});
    EXPECT_EQ(proxy().roundTrips(), 2U) << "one to describe it, one to run it";
    db.rollback();
    EXPECT_EQ(proxy().roundTrips(), 3U);
}

TEST_P(ProxyTest, ACommitWhoseAnswerIsCutOffSaysThatItsOutcomeIsUnknown) {
    Connection keeper = connect();
    makeTable(keeper);
    EXPECT_THAT(failingCommit(Proxy::toClient), AllOf(StartsWith("08007: "), HasSubstr("its outcome is unknown")));
    EXPECT_EQ(count(keeper), 1) << "it was committed, and once";
}

TEST_P(ProxyTest, ACommitThatNeverArrivesSaysTheSame) {
    Connection keeper = connect();
    makeTable(keeper);
    EXPECT_THAT(failingCommit(Proxy::toServer), AllOf(StartsWith("08007: "), HasSubstr("its outcome is unknown")));
    EXPECT_EQ(count(keeper), 0);
}

// At any point of the log-in, and of the question that comes behind it.
TEST_P(ProxyTest, AServerThatFallsSilentIsLeftInTime) {
    setenv("PGDATESTYLE", "German", 1); // asks for one more answer
    proxy().count();
    { const Connection db(between()); }
    const uint64_t last = proxy().passed(Proxy::toClient).messages - 1;
    configure("client.pool=0\nclient.connect_timeout_ms=200\n");
    for (const uint64_t after : {uint64_t{0}, uint64_t{1}, uint64_t{2}, uint64_t{3}, last / 2, last - 1, last}) {
        proxy().fail({Proxy::toClient, after, Proxy::Unit::messages, Proxy::Action::silence});
        Connection db;
        EXPECT_FAILS(db.connect(between()));
        EXPECT_THAT(db.error(), AllOf(StartsWith("08001: "), HasSubstr("client.connect_timeout_ms")));
    }
    unsetenv("PGDATESTYLE");
}

// Of connections that nobody uses, too.
TEST_P(ProxyTest, AnOutageLastsUntilItIsOver) {
    Connection busy(between());
    Connection idle(between());
    proxy().fail({Proxy::toServer, 0, Proxy::Unit::messages, Proxy::Action::outage});
    EXPECT_THAT(busy.refusal("select 1"), StartsWith("08006: "));
    EXPECT_THAT(idle.refusal("select 1"), StartsWith("08006: "));
    for (int i = 0; i < 2; ++i) {
        Connection db;
        EXPECT_FAILS(db.connect(between()));
        EXPECT_THAT(db.error(), StartsWith("08001: "));
    }
    proxy().count();
    Connection db(between());
    EXPECT_EQ(db.rows("select 1"), Rows{rowOf("1")});
}

// What goes on after a delay, and what a message is cut off from.
TEST_P(ProxyTest, ADelayIsNoFaultAndAHalfMessageIs) {
    Connection keeper = connect();
    makeTable(keeper);
    for (const auto action : {Proxy::Action::delay, Proxy::Action::cut}) {
        Connection db(between());
        proxy().fail({Proxy::toClient, 1, Proxy::Unit::halves, action});
        Statement insert(db);
        const bool works = qdc_prepare(insert, "insert into t (id) values (1)") == 0 && qdc_execute(insert) == 0;
        EXPECT_EQ(works, action == Proxy::Action::delay);
        EXPECT_TRUE(proxy().hasFailed());
        if (!works) {
            EXPECT_THAT(db.error(), StartsWith("08006: "));
        }
        EXPECT_EQ(count(keeper), 0);
        keeper.rollback();
    }
}

} // namespace
