// Kept connections to a server.
#include <algorithm>

#include "postgres/postgres_engine.h"
#include "support/contract_test.h"

namespace {

using namespace contract;

class ServerPoolTest : public ContractTest {
protected:
    static std::string process(Connection &db) { return db.rows("select pg_backend_pid()").at(0).at(0).value(); }
    std::string processOfOne() const {
        Connection db = connect();
        return process(db);
    }
    static std::string setting(Connection &db, const std::string &name) {
        return db.rows("show " + name).at(0).at(0).value();
    }
};
ENGINE_SUITE(ServerPoolTest);

TEST_P(ServerPoolTest, AConnectionIsKeptAndUsedAgain) {
    EXPECT_EQ(processOfOne(), processOfOne());
}

TEST_P(ServerPoolTest, NoneIsKeptWhereNoneIsWanted) {
    configure("client.pool=0\n");
    EXPECT_NE(processOfOne(), processOfOne());
}

TEST_P(ServerPoolTest, NoMoreAreKeptThanAreWanted) {
    configure("client.pool=2\n");
    std::vector<std::string> first;
    {
        std::vector<std::unique_ptr<Connection>> many;
        for (int i = 0; i < 5; ++i) {
            many.push_back(std::make_unique<Connection>(target()));
            first.push_back(process(*many.back()));
        }
    }
    int again = 0;
    std::vector<std::unique_ptr<Connection>> many;
    for (int i = 0; i < 5; ++i) {
        many.push_back(std::make_unique<Connection>(target()));
        again += std::count(first.begin(), first.end(), process(*many.back())) > 0 ? 1 : 0;
    }
    EXPECT_EQ(again, 2);
}

TEST_P(ServerPoolTest, SettingsLocksAndListensGoWithTheirUser) {
    std::string before;
    std::string of;
    {
        Connection db = connect();
        of = process(db);
        before = setting(db, "work_mem");
        db.run("set work_mem = '123MB'");
        db.run("listen somebody");
        db.rows("select pg_advisory_lock(42)");
        db.commit();
        EXPECT_EQ(setting(db, "work_mem"), "123MB");
    }
    Connection db = connect();
    EXPECT_EQ(process(db), of);
    EXPECT_EQ(setting(db, "work_mem"), before);
    EXPECT_TRUE(db.rows("select pg_listening_channels()").empty());
    EXPECT_EQ(db.rows("select count(*) from pg_locks where locktype = 'advisory' and objid = 42"), Rows{rowOf("0")});
    EXPECT_EQ(setting(db, "lock_timeout"), "5s") << "what the client set when it connected stays";
}

TEST_P(ServerPoolTest, AConnectionThatTheServerEndedIsNotGivenOn) {
    const std::string ended = processOfOne();
    {
        configure("client.pool=1\n");
        Connection db = connect();
        db.rows("select pg_terminate_backend(" + ended + ")");
        while (db.rows("select 1 from pg_stat_activity where pid = " + ended).size() == 1)
            db.rollback();
        configure("");
    }
    EXPECT_NE(processOfOne(), ended);
}

} // namespace
