#include "ormeldb/lifecycle.h"

#include "api/refused_calls.h"
#include "ormeldb/cache.h"
#include "support/home.h"
#include "support/process.h"
#include "support/started.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Client;
using unit::Clock;
using unit::Log;
using unit::operator+;

namespace {

class LifecycleTest : public unit::UnitTest {
protected:
    LifecycleTest() { home_.Write("db.host=h\ndb.port=1\ndb.user=u\nauth.sslmode=REQUIRED\n"); }

    unit::Home home_;
};

// --- Start ---

TEST_F(LifecycleTest, StartsInOrder) {
    g_pstVemloLogHandle = nullptr;
    EXPECT_EQ(ORMEL_Init(), 0u);
    EXPECT_THAT(Log().Lines(),
                ElementsAre("INFO ORMEL_Init: Trace in.", "INFO ORMEL_Init: ORMEL_Init init ok.",
                            "DEBUG ORMEL_ResAttMgrInit: Trace in.", "INFO ORMEL_TransMgrInit: Trace in.",
                            "INFO ORMEL_ConnCfgRead: db.conf host:h port:1 dbname: db.user:u",
                            "DEBUG ORMEL_ConnCfgRead: get db decrypt password ok.",
                            "INFO ORMEL_Init: ORMEL_Init connect begin.", "DEBUG dbConnect: Connection ok",
                            "INFO ORMEL_CheckDbStatus: ORMEL check connect ok.",
                            "DEBUG dbDisconnect: DisConnection ok"));
    EXPECT_EQ(Log().Raw()[0].handle, Log().instance) << "the log was made first";
    EXPECT_THAT(Client().Calls(), ElementsAreArray(unit::Opened("c1") + unit::Closed("c1")));
    EXPECT_THAT(Clock().sleeps, IsEmpty());
    ORMEL_UnInit();
}

TEST_F(LifecycleTest, TakesTheThresholdFirstOfAll) {
    Log().debugValue = "2";
    EXPECT_EQ(ORMEL_Init(), 0u);
    EXPECT_THAT(Log().Lines(KPL_LOG_TRACE), testing::Each(testing::StartsWith("INFO ")));
    ORMEL_UnInit();
}

TEST_F(LifecycleTest, WithoutItsConfigurationItDoesNotStart) {
    unit::SetPassword("");
    EXPECT_EQ(ORMEL_Init(), 0xFFFFFFFFu);
    EXPECT_EQ(Log().LinesOf("ORMEL_Init"),
              (unit::Lines{"INFO ORMEL_Init: Trace in.", "INFO ORMEL_Init: ORMEL_Init init ok.",
                           "ERROR ORMEL_Init: ORMEL Trans Mgr Init fail!"}));
    EXPECT_THAT(Client().Calls(), IsEmpty());
    unit::ExpectCallsRefused();
    unit::SetPassword("secret");
    EXPECT_EQ(ORMEL_Init(), 0u) << "a second start works";
    ORMEL_UnInit();
}

TEST_F(LifecycleTest, AFailedStartCanBeStopped) {
    std::filesystem::remove(home_.Conf());
    EXPECT_EQ(ORMEL_Init(), 0xFFFFFFFFu);
    ORMEL_UnInit();
    unit::ExpectCallsRefused();
}

// --- Stop ---

TEST_F(LifecycleTest, StopsInOrder) {
    Client().On("select * from T where 1<>1", {.columns = unit::PersonColumns()});
    ASSERT_EQ(ORMEL_Init(), 0u);
    ASSERT_NE(ORMEL_StartTrans("f", 1), nullptr);
    void *conn = ORMEL_DBConnect();
    ORMEL_DestoryResAtt(ORMEL_CreatResAtt(conn, "T", nullptr));
    ORMEL_DBDisConnect(conn);
    Log().Forget();
    ORMEL_UnInit();
    EXPECT_THAT(Log().deleted, ElementsAre(Log().instance));
    EXPECT_EQ(Log().linesWhenDeleted, 0u) << "the log is closed first";
    EXPECT_THAT(Log().Lines(),
                ElementsAre("INFO ORMEL_UnInit: Trace in.", "DEBUG ORMEL_ResAttMgrUnInit: Trace in.",
                            "INFO ORMEL_TransMgrClean: Trace in.", "DEBUG dbDisconnect: DisConnection ok",
                            "INFO ORMEL_TransMgrClean: After Uninit, Conn count: 0"));
    EXPECT_EQ(ORMEL_ResAttrCacheMgrGet()->iCount, 0);
    unit::ExpectCallsRefused();
}

TEST_F(LifecycleTest, StartsAgainAfterTheStop) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ORMEL_Init(), 0u);
        ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
        ASSERT_NE(slot, nullptr);
        EXPECT_EQ(ORMEL_RollbackTrans(slot), 0u);
        ORMEL_UnInit();
        unit::ExpectCallsRefused();
    }
}

// --- The check of the database ---

class CheckDbTest : public unit::StartedTest {
protected:
    static unit::Lines Attempts(int count) {
        unit::Lines lines;
        for (int i = 1; i <= count; ++i) {
            lines.push_back(
                "ERROR ORMEL_CheckDbStatus: ORMEL check connect failed. try connect time=" + std::to_string(i) + ".");
        }
        return lines;
    }

    void SetUp() override {
        StartedTest::SetUp();
        Clock().Reset();
    }
};

TEST_F(CheckDbTest, ReturnsWhenItConnects) {
    EXPECT_EQ(ORMEL_CheckDbStatus(2, 6, 30000), 0u);
    EXPECT_THAT(Log().Lines(),
                ElementsAre("DEBUG dbConnect: Connection ok", "INFO ORMEL_CheckDbStatus: ORMEL check connect ok.",
                            "DEBUG dbDisconnect: DisConnection ok"));
    EXPECT_EQ(Clock().reads, 1) << "the start";
}

TEST_F(CheckDbTest, MakesItsAttemptsBeforeItLooksAtTheClock) {
    Client().FailFrom("connect");
    std::vector<int> reads;
    Client().Hook("connect", [&] {
        reads.push_back(Clock().reads);
        if (reads.size() == 8) {
            Client().FailNothing();
        }
    });
    EXPECT_EQ(ORMEL_CheckDbStatus(2, 6, 30000), 0u);
    EXPECT_THAT(reads, ElementsAre(1, 1, 1, 1, 1, 1, 2, 3));
    EXPECT_THAT(Clock().sleeps, ElementsAre(2, 2, 2, 2, 2, 2, 2));
    EXPECT_THAT(Clock().differences, ElementsAre(12000, 14000));
    EXPECT_EQ(Log().LinesOf("ORMEL_CheckDbStatus"),
              Attempts(7) + unit::Lines{"INFO ORMEL_CheckDbStatus: ORMEL check connect ok."});
    EXPECT_EQ(Client().Count("get_error"), 7);
}

TEST_F(CheckDbTest, SleepsBeforeItReports) {
    Client().Fail("connect");
    size_t sleepsThen = 0;
    Log().hook = [&](const unit::Line &line) {
        sleepsThen = line.message.rfind("ORMEL check connect failed", 0) == 0 ? Clock().sleeps.size() : sleepsThen;
    };
    EXPECT_EQ(ORMEL_CheckDbStatus(1, 6, 30000), 0u);
    EXPECT_EQ(sleepsThen, 1u);
}

TEST_F(CheckDbTest, ExactlyTheLimitIsNotPastIt) {
    Client().FailFrom("connect");
    int attempts = 0;
    Client().Hook("connect", [&] {
        if (++attempts == 3) {
            Client().FailNothing();
        }
    });
    EXPECT_EQ(ORMEL_CheckDbStatus(1, 1, 2000), 0u);
    EXPECT_EQ(attempts, 3);
}

TEST_F(CheckDbTest, WithoutASleepAttemptsFollowEachOther) {
    Client().FailFrom("connect");
    int attempts = 0;
    Client().Hook("connect", [&] {
        if (++attempts == 20) {
            Client().FailNothing();
        }
    });
    EXPECT_EQ(ORMEL_CheckDbStatus(0, 1, 0), 0u) << "a clock that does not move has not passed the limit";
    EXPECT_THAT(Clock().sleeps, IsEmpty());
    EXPECT_EQ(Clock().differences.size(), 19u);
}

TEST_F(CheckDbTest, EndsTheProcessPastItsLimit) {
    struct {
        uint32_t sleep, tries, limit;
        const char *elapsed;
    } cases[] = {{2, 6, 30000, "32000"}, {1, 1, 999, "1000"}, {1, 5, 1000, "5000"}};
    for (const auto &c : cases) {
        unit::Ending ending = unit::RunInChild([&] {
            Client().FailFrom("connect");
            ORMEL_CheckDbStatus(c.sleep, c.tries, c.limit);
        });
        EXPECT_EQ(ending.status, 1);
        EXPECT_EQ(ending.output,
                  std::string("Process exit because ORMEL connect timout(") + c.elapsed + " ms), process exit 1.\n");
    }
}

TEST_F(CheckDbTest, TheStartEndsTheProcessToo) {
    unit::Ending ending = unit::RunInChild([] {
        ORMEL_UnInit();
        Client().FailFrom("connect");
        Log().Forget();
        std::atexit([] {
            std::printf("%zu sleeps of %u\n", Clock().sleeps.size(), Clock().sleeps.at(0));
            std::printf("%s\n", Log().LinesOf("ORMEL_CheckDbStatus").back().c_str());
        });
        ORMEL_Init();
    });
    EXPECT_EQ(ending.status, 1);
    EXPECT_EQ(ending.output, "Process exit because ORMEL connect timout(32000 ms), process exit 1.\n"
                             "16 sleeps of 2\n"
                             "ERROR ORMEL_CheckDbStatus: ORMEL check connect failed. try connect time=16.\n");
}

// --- The clock ---

TEST_F(LifecycleTest, SubtractsTicksWordByWord) {
    struct {
        XOS_CPU_TICK start, end, delta;
    } cases[] = {
        {{5, 1}, {10, 1}, {5, 0}},
        {{5, 1}, {10, 4}, {5, 3}},
        {{10, 1}, {5, 2}, {0xFFFFFFFA, 0}},
        {{7, 0}, {7, 3}, {0xFFFFFFFF, 2}},
        {{7, 3}, {7, 3}, {0xFFFFFFFF, 0xFFFFFFFF}},
        {{0xFFFFFFFF, 0}, {0, 1}, {0, 0}},
        {{0, 0}, {0xFFFFFFFF, 0xFFFFFFFF}, {0xFFFFFFFF, 0xFFFFFFFF}},
    };
    for (const auto &c : cases) {
        XOS_CPU_TICK delta{};
        ORMEL_GetDeltaCpuTick(&c.start, &c.end, &delta);
        EXPECT_EQ(delta.uiLow, c.delta.uiLow);
        EXPECT_EQ(delta.uiHigh, c.delta.uiHigh);
    }
    XOS_CPU_TICK same{7, 3};
    ORMEL_GetDeltaCpuTick(nullptr, &same, &same);
    ORMEL_GetDeltaCpuTick(&same, nullptr, &same);
    ORMEL_GetDeltaCpuTick(&same, &same, nullptr);
    EXPECT_EQ(same.uiLow, 7u);
    XOS_CPU_TICK end{9, 3};
    ORMEL_GetDeltaCpuTick(&same, &end, &end);
    EXPECT_EQ(end.uiLow, 2u) << "the difference may take the place of its end";
    EXPECT_EQ(end.uiHigh, 0u);
}

// --- Connections ---

class DbConnectTest : public unit::StartedTest {};

TEST_F(DbConnectTest, EachConnectionIsNew) {
    void *first = ORMEL_DBConnect();
    void *second = ORMEL_DBConnect();
    EXPECT_NE(first, second);
    EXPECT_THAT(Client().Calls(), ElementsAreArray(unit::Opened("c1") + unit::Opened("c2")));
    Client().ForgetCalls();
    ORMEL_DBDisConnect(first);
    EXPECT_THAT(Client().Calls(), ElementsAreArray(unit::Closed("c1")));
    ORMEL_DBDisConnect(second);
    ORMEL_DBDisConnect(nullptr);
}

TEST_F(DbConnectTest, GoesWhereTheConfigurationSays) {
    ORMEL_CONN_CFG &cfg = g_stTransMgr.stConnCfg;
    std::strcpy(cfg.acHost, "");
    std::strcpy(cfg.acPort, "");
    std::strcpy(cfg.acUser, "");
    std::strcpy(cfg.acSslMode, "");
    ORMEL_DBDisConnect(ORMEL_DBConnect());
    EXPECT_EQ(Client().Calls()[1], "set_conn_attr(c1, 112, 0, 4)");
    EXPECT_EQ(Client().Calls()[2], "connect(c1, :, , secret)");
    std::memset(cfg.acHost, 'h', 62);
    std::memset(cfg.acPort, '1', 14);
    ORMEL_DBDisConnect(ORMEL_DBConnect());
    EXPECT_THAT(Client().Calls(),
                testing::Contains("connect(c2, " + std::string(62, 'h') + ":" + std::string(14, '1') + ", , secret)"));
}

TEST_F(DbConnectTest, IsNothingWhenTheDatabaseRefuses) {
    Client().Fail("connect");
    EXPECT_EQ(ORMEL_DBConnect(), nullptr);
    EXPECT_EQ(Log().Lines().back(), "ERROR dbPrintError: QD-00942 no such table");
}

} // namespace
