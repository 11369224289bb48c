#include <thread>

#include "support/started.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Client;
using unit::Log;
using unit::operator+;

namespace {

bool TableIsLocked() {
    int status = pthread_mutex_trylock(&g_stTransMgr.mutex);
    if (status == 0) {
        pthread_mutex_unlock(&g_stTransMgr.mutex);
    }
    return status == EBUSY;
}

// What a search for a slot logs.
unit::Lines Found(int position, int count, int last) {
    auto number = [](int n) { return std::to_string(n); };
    return {"DEBUG OrmelFindUsableTrans: Transaction Get Position: " + number(position) + " count:" + number(count) +
            " lastpos:" + number(last)};
}
const unit::Lines kFindEnds = {"DEBUG OrmelFindUsableTrans: Trace out."};
const unit::Lines kConnected = {"DEBUG dbConnect: Connection ok"};
const unit::Lines kDisconnected = {"DEBUG dbDisconnect: DisConnection ok"};

class TransTest : public unit::StartedTest {
protected:
    void TearDown() override {
        for (ORMEL_TRANS &slot : g_stTransMgr.astTrans) {
            ORMEL_TransDestory(&slot);
        }
        StartedTest::TearDown();
    }

    static long IndexOf(const ORMEL_TRANS *slot) { return slot == nullptr ? -1 : slot - g_stTransMgr.astTrans; }
    static long Take() { return IndexOf(ORMEL_NormalTransCreate("func", 1)); }
};

// --- The search ---

TEST_F(TransTest, SearchesFromWhereTheLastSearchBegan) {
    struct {
        uint32_t last;
        std::vector<uint32_t> used;
        uint32_t position;
        uint32_t lastAfter;
    } cases[] = {
        {0, {}, 0, 1},
        {3, {0, 1, 2}, 3, 4},
        {5, {5, 6, 7, 8, 9}, 10, 6},
        {15, {15}, 0, 16},
        {16, {}, 0, 17},
        {21, {5}, 6, 22},
        {0xFFFFFFFF, {}, 15, 0},
        {7, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, 0xFFFFFFFF, 7},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.last);
        auto mgr = std::make_unique<ORMEL_TRANS_MGR>();
        mgr->uiLast = c.last;
        mgr->uiCount = 15;
        for (uint32_t i : c.used) {
            mgr->astTrans[i].pConn = mgr.get();
        }
        EXPECT_EQ(ORMEL_TransGetPos(mgr.get()), c.position);
        EXPECT_EQ(mgr->uiLast, c.lastAfter);
    }
}

TEST_F(TransTest, DoesNotSearchAFullTable) {
    auto mgr = std::make_unique<ORMEL_TRANS_MGR>();
    mgr->uiCount = 16;
    EXPECT_EQ(ORMEL_TransGetPos(mgr.get()), 0xFFFFFFFFu) << "although a slot looks free";
    EXPECT_EQ(mgr->uiLast, 0u);
    EXPECT_EQ(ORMEL_TransGetPos(nullptr), 0xFFFFFFFFu);
}

// --- Taking ---

TEST_F(TransTest, TakesASlotAndOpensItsConnection) {
    ORMEL_TRANS *slot = OrmelFindUsableTrans(ORMEL_TransMgrGet(), "caller", 77);
    ASSERT_EQ(IndexOf(slot), 0);
    EXPECT_STREQ(slot->pcFunc, "caller");
    EXPECT_EQ(slot->uiLine, 77u);
    EXPECT_EQ(slot->pConn, Client().Handle("c1"));
    EXPECT_EQ(g_stTransMgr.uiCount, 1u);
    EXPECT_EQ(g_stTransMgr.uiLast, 1u);
    EXPECT_THAT(Client().Calls(), ElementsAreArray(unit::Opened("c1")));
    EXPECT_EQ(Log().Lines(), Found(0, 0, 1) + kConnected + kFindEnds);
}

TEST_F(TransTest, KeepsTheCallersNameByAddress) {
    const char *name = "caller";
    ORMEL_TRANS *slot = ORMEL_NormalTransCreate(name, 1);
    EXPECT_EQ(slot->pcFunc, name);
}

TEST_F(TransTest, ConnectsUnderTheTablesLock) {
    bool locked = false;
    Client().Hook("connect", [&] { locked = TableIsLocked(); });
    Take();
    EXPECT_TRUE(locked);
    EXPECT_FALSE(TableIsLocked());
}

TEST_F(TransTest, TheSeventeenthFails) {
    for (long i = 0; i < 16; ++i) {
        EXPECT_EQ(Take(), i);
    }
    EXPECT_EQ(g_stTransMgr.uiCount, 16u);
    Log().Forget();
    EXPECT_EQ(OrmelFindUsableTrans(ORMEL_TransMgrGet(), "f", 1), nullptr);
    EXPECT_EQ(Log().Lines(), Found(-1, 16, 16) +
                                 unit::Lines{"ERROR OrmelFindUsableTrans: Error: Transaction Get Position: -1"} +
                                 kFindEnds);
    EXPECT_FALSE(TableIsLocked());
}

TEST_F(TransTest, ReleasedSlotsAreNotTakenFirst) {
    Take(), Take(), Take();
    ORMEL_TransDestory(&g_stTransMgr.astTrans[0]);
    EXPECT_EQ(Take(), 3);
}

TEST_F(TransTest, WithoutAConnectionTheSlotStaysFreeAndTheSearchMovesOn) {
    Client().Fail("connect");
    EXPECT_EQ(OrmelFindUsableTrans(ORMEL_TransMgrGet(), "f", 1), nullptr);
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    EXPECT_EQ(g_stTransMgr.uiLast, 1u);
    EXPECT_EQ(g_stTransMgr.astTrans[0].pConn, nullptr);
    EXPECT_EQ(Log().LinesOf("OrmelFind"), Found(0, 0, 1) + kFindEnds);
    EXPECT_FALSE(TableIsLocked());
    EXPECT_EQ(Take(), 1);
}

TEST_F(TransTest, ASlotStartsWithoutWhatItsLastOwnerLeft) {
    ORMEL_TRANS &first = g_stTransMgr.astTrans[0];
    first.pStmt = &first;
    first.pstResAtt = reinterpret_cast<ORMEL_RES_ATT *>(&first);
    EXPECT_EQ(Take(), 0);
    EXPECT_EQ(first.pStmt, nullptr);
    EXPECT_EQ(first.pstResAtt, nullptr);
}

TEST_F(TransTest, ASlotForATransaction) {
    EXPECT_EQ(IndexOf(ORMEL_NormalTransCreate("f", 1)), 0);
    EXPECT_EQ(Log().Lines(), unit::Lines{"DEBUG ORMEL_NormalTransCreate: Trace in."} + Found(0, 0, 1) + kConnected +
                                 kFindEnds + unit::Lines{"DEBUG ORMEL_NormalTransCreate: Trace out."});
    unit::Lines all = Log().Lines(KPL_LOG_TRACE);
    EXPECT_EQ(std::count(all.begin(), all.end(), "TRACE ORMEL_TransShow:           ORMEL_CONNECT_INFO"), 1);
}

TEST_F(TransTest, ASlotForASelectHoldsTheTablesDescriptor) {
    Have("T", unit::PersonColumns());
    ORMEL_TRANS *slot = ORMEL_SelectTransCreate("T", "caller", 5);
    ASSERT_EQ(IndexOf(slot), 0);
    ASSERT_NE(slot->pstResAtt, nullptr);
    EXPECT_EQ(slot->pstResAtt->iAttNum, 3);
    EXPECT_EQ(slot->pStmt, nullptr);
    EXPECT_THAT(Log().LinesOf("ORMEL_SelectTransCreate"),
                ElementsAre("DEBUG ORMEL_SelectTransCreate: Trace in.",
                            "DEBUG ORMEL_SelectTransCreate: Transaction func: caller count:1 lastpos:1"));
    ORMEL_TransDestory(slot);
    EXPECT_NE(ORMEL_ResAttGet("T"), nullptr) << "the descriptor was given back";
}

TEST_F(TransTest, ASelectSlotTakesTheTablesStatement) {
    Have("T", unit::PersonColumns());
    void *conn = ORMEL_DBConnect();
    g_stTransMgr.pStmt = dbCreateStmt(conn);
    ORMEL_TRANS *slot = ORMEL_SelectTransCreate("T", "f", 1);
    EXPECT_EQ(slot->pStmt, g_stTransMgr.pStmt);
    g_stTransMgr.pStmt = nullptr;
    ORMEL_TransDestory(slot);
    ORMEL_DBDisConnect(conn);
}

TEST_F(TransTest, WithoutADescriptorASelectSlotIsReleased) {
    Client().Fail("prepare");
    EXPECT_EQ(ORMEL_SelectTransCreate("NOWHERE", "caller", 5), nullptr);
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    EXPECT_EQ(Client().LiveConnections(), 0);
    EXPECT_EQ(Log().LinesOf("ORMEL_SelectTransCreate").back(),
              "DEBUG ORMEL_SelectTransCreate: Transaction func: caller count:0 lastpos:1");
}

TEST_F(TransTest, WithoutAConnectionThereIsNoSelectSlot) {
    Client().Fail("alloc_conn");
    EXPECT_EQ(ORMEL_SelectTransCreate("T", nullptr, 5), nullptr);
    EXPECT_EQ(Log().LinesOf("ORMEL_SelectTransCreate").size(), 2u);
}

// --- Releasing ---

TEST_F(TransTest, ReleasesStatementDescriptorAndConnection) {
    Have("T", unit::PersonColumns());
    ORMEL_TRANS *slot = ORMEL_SelectTransCreate("T", "caller", 5);
    ORMEL_TransSetStmt(slot, dbCreateStmt(slot->pConn));
    std::strcpy(slot->acCursor, "cursor");
    Client().ForgetCalls();
    Log().Forget();
    ORMEL_TransDestory(slot);
    EXPECT_THAT(Client().Calls(), ElementsAre("free_stmt(s2)", "disconnect(c1)", "free_conn(c1)"));
    EXPECT_EQ(slot->pStmt, nullptr);
    EXPECT_EQ(slot->pstResAtt, nullptr);
    EXPECT_EQ(slot->pConn, nullptr);
    EXPECT_STREQ(slot->acCursor, "");
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    EXPECT_STREQ(slot->pcFunc, "caller") << "the dump keeps showing the last user";
    EXPECT_EQ(slot->uiLine, 5u);
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_TransDestory: Trace in.", "DEBUG dbFreeStmt: FreeStmt ok",
                                           "DEBUG ORMEL_DestoryResAtt: Trace in.", "DEBUG ORMEL_ResAttPush: Trace in.",
                                           "DEBUG ORMEL_CacheAdd: Trace in.", "DEBUG dbDisconnect: DisConnection ok",
                                           "DEBUG ORMEL_TransDestory: Trace out."));
    unit::Lines all = Log().Lines(KPL_LOG_TRACE);
    EXPECT_EQ(std::count(all.begin(), all.end(), "TRACE ORMEL_TransShow:           ORMEL_CONNECT_INFO"), 1);
}

TEST_F(TransTest, ReleasesUnderTheTablesLock) {
    Take();
    bool locked = false;
    Client().Hook("disconnect", [&] { locked = TableIsLocked(); });
    ORMEL_TransDestory(&g_stTransMgr.astTrans[0]);
    EXPECT_TRUE(locked);
    EXPECT_FALSE(TableIsLocked());
}

TEST_F(TransTest, ReleasingTwiceIsHarmless) {
    Take(), Take();
    ORMEL_TransDestory(&g_stTransMgr.astTrans[0]);
    Log().Forget();
    Client().ForgetCalls();
    ORMEL_TransDestory(&g_stTransMgr.astTrans[0]);
    EXPECT_EQ(g_stTransMgr.uiCount, 1u);
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(),
                ElementsAre("DEBUG ORMEL_TransDestory: Trace in.", "DEBUG ORMEL_TransDestory: Trace out."));
}

TEST_F(TransTest, NoSlotIsNoSlot) {
    ORMEL_TransDestory(nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_FALSE(TableIsLocked());
    EXPECT_EQ(ORMEL_TransGetConn(nullptr), nullptr);
    EXPECT_EQ(ORMEL_TransGetStmt(nullptr), nullptr);
    EXPECT_EQ(ORMEL_TransGetResAtt(nullptr), nullptr);
    ORMEL_TransSetStmt(nullptr, &g_stTransMgr);
    ORMEL_TransSetResAtt(nullptr, nullptr);
    ORMEL_TransShow(nullptr);
    EXPECT_EQ(OrmelFindUsableTrans(nullptr, "f", 1), nullptr);
}

TEST_F(TransTest, FieldsAreStoredAndRead) {
    ORMEL_TRANS slot{};
    int connection = 0;
    int statement = 0;
    auto descriptor = unit::Describe("T", {});
    slot.pConn = &connection;
    ORMEL_TransSetStmt(&slot, &statement);
    ORMEL_TransSetResAtt(&slot, descriptor.get());
    EXPECT_EQ(ORMEL_TransGetConn(&slot), &connection);
    EXPECT_EQ(ORMEL_TransGetStmt(&slot), &statement);
    EXPECT_EQ(ORMEL_TransGetResAtt(&slot), descriptor.get());
}

// --- Start and stop ---

TEST_F(TransTest, StartingClearsTheTableAndReadsTheConfiguration) {
    std::strcpy(g_stTransMgr.pcConnstr, "preset");
    g_stTransMgr.uiLast = 9;
    EXPECT_EQ(ORMEL_TransMgrInit(), 0u);
    EXPECT_STREQ(g_stTransMgr.pcConnstr, "");
    EXPECT_EQ(g_stTransMgr.uiLast, 0u);
    EXPECT_STREQ(g_stTransMgr.stConnCfg.acHost, "h");
    EXPECT_EQ(ORMEL_TransMgrGet(), &g_stTransMgr);
    EXPECT_EQ(Log().Lines()[0], "INFO ORMEL_TransMgrInit: Trace in.");
    EXPECT_THAT(Log().LinesOf("ORMEL_TransMgrInit"), testing::SizeIs(1));
}

TEST_F(TransTest, AFailedStartShowsTheTableAndTakesNoSlots) {
    unit::SetPassword("");
    EXPECT_EQ(ORMEL_TransMgrInit(), 0xFFFFFFFFu);
    EXPECT_THAT(Log().LinesOf("ORMEL_TransMgrInit"),
                ElementsAre("INFO ORMEL_TransMgrInit: Trace in.",
                            "ERROR ORMEL_TransMgrInit: ORMEL_TransMgrInit: Read ConnCfg Failed.\n"));
    EXPECT_FALSE(Log().LinesOf("ORMEL_TransShow", KPL_LOG_TRACE).empty());
    EXPECT_EQ(ORMEL_NormalTransCreate("f", 1), nullptr);
    EXPECT_EQ(ORMEL_SelectTransCreate("T", "f", 1), nullptr);
    ORMEL_TransDestory(&g_stTransMgr.astTrans[0]);
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    unit::SetPassword("secret");
    EXPECT_EQ(ORMEL_TransMgrInit(), 0u);
    EXPECT_EQ(Take(), 0);
}

TEST_F(TransTest, StoppingClosesEverySlot) {
    Take(), Take(), Take();
    g_stTransMgr.astTrans[1].pStmt = dbCreateStmt(g_stTransMgr.astTrans[1].pConn);
    Client().ForgetCalls();
    Log().Forget();
    ORMEL_TransMgrClean();
    EXPECT_THAT(Client().Calls(), ElementsAre("disconnect(c1)", "free_conn(c1)", "free_stmt(s1)", "disconnect(c2)",
                                              "free_conn(c2)", "disconnect(c3)", "free_conn(c3)"));
    EXPECT_EQ(Log().Lines(), unit::Lines{"INFO ORMEL_TransMgrClean: Trace in."} + kDisconnected +
                                 unit::Lines{"DEBUG dbFreeStmt: FreeStmt ok"} + kDisconnected + kDisconnected +
                                 unit::Lines{"INFO ORMEL_TransMgrClean: After Uninit, Conn count: 0"});
    EXPECT_EQ(ORMEL_NormalTransCreate("f", 1), nullptr) << "no slots after the stop";
    EXPECT_EQ(ORMEL_TransMgrInit(), 0u);
}

TEST_F(TransTest, StoppingLeavesDescriptorsToTheirCache) {
    Have("T", unit::PersonColumns());
    ORMEL_TRANS *slot = ORMEL_SelectTransCreate("T", "f", 1);
    ORMEL_RES_ATT *descriptor = slot->pstResAtt;
    ORMEL_TransMgrClean();
    EXPECT_EQ(slot->pstResAtt, descriptor);
    ORMEL_DestoryResAtt(descriptor);
    EXPECT_EQ(ORMEL_TransMgrInit(), 0u);
}

// --- The dump ---

TEST_F(TransTest, ShowsTheTable) {
    Take();
    ORMEL_TRANS &slot = g_stTransMgr.astTrans[0];
    std::strcpy(slot.acCursor, "cursor");
    std::strcpy(g_stTransMgr.pcFullfile, "file");
    std::strcpy(g_stTransMgr.pcConnstr, "text");
    Log().Forget();
    ORMEL_TransShow(&g_stTransMgr);
    char used[200];
    std::snprintf(used, sizeof(used), "Func: func, Line: 1, Conn: %p, ResAtt: (nil), Cursor: cursor", slot.pConn);
    const std::string name = "TRACE ORMEL_TransShow: ";
    const std::string trans = name + std::string(23, ' ') + "Trans";
    unit::Lines expected = {name + "          ORMEL_CONNECT_INFO",
                            name + "                  pcFullfile : file",
                            name + "                   pcConnstr : text",
                            name + "                     uiCount : 1",
                            name + "                      uiLast : 1",
                            name + "                        stmt : (nil)",
                            trans + "[0]: " + used};
    for (int i = 1; i < 16; ++i) {
        expected.push_back(trans + "[" + std::to_string(i) +
                           "]: Func: -, Line: 0, Conn: (nil), ResAtt: (nil), Cursor: ");
    }
    EXPECT_EQ(Log().Lines(KPL_LOG_TRACE), expected);
    std::memset(g_stTransMgr.pcConnstr, 0, sizeof(g_stTransMgr.pcConnstr));
}

TEST_F(TransTest, ShowsTextsNoFurtherThanTheirFields) {
    std::memset(g_stTransMgr.pcFullfile, 'f', sizeof(g_stTransMgr.pcFullfile));
    std::memset(g_stTransMgr.pcConnstr, 'c', sizeof(g_stTransMgr.pcConnstr));
    std::memset(g_stTransMgr.astTrans[0].acCursor, 'x', 28);
    ORMEL_TransShow(&g_stTransMgr);
    unit::Lines lines = Log().Lines(KPL_LOG_TRACE);
    EXPECT_EQ(lines.at(1), "TRACE ORMEL_TransShow:                   pcFullfile : " + std::string(512, 'f'));
    EXPECT_EQ(lines.at(2), "TRACE ORMEL_TransShow:                    pcConnstr : " + std::string(512, 'c'));
    EXPECT_THAT(lines.at(6), testing::EndsWith("Cursor: " + std::string(27, 'x')));
    std::memset(g_stTransMgr.pcConnstr, 0, sizeof(g_stTransMgr.pcConnstr));
    g_stTransMgr.astTrans[0].acCursor[0] = '\0';
}

TEST_F(TransTest, ADumpThatNobodySeesCostsOneThresholdTest) {
    unit::Threshold debug(KPL_LOG_DEBUG);
    int before = Log().thresholdReads;
    ORMEL_TransShow(&g_stTransMgr);
    EXPECT_EQ(Log().thresholdReads - before, 1);
}

// --- Many threads ---

TEST_F(TransTest, ServesManyThreads) {
    unit::Threshold silent(KPL_LOG_FATAL);
    std::atomic<int> owners[16] = {};
    std::atomic<bool> shared = false;
    std::atomic<int> taken = 0;
    auto work = [&] {
        for (int i = 0; i < 50; ++i) {
            ORMEL_TRANS *slot = ORMEL_NormalTransCreate("f", 1);
            if (slot == nullptr) {
                continue;
            }
            ++taken;
            auto index = static_cast<size_t>(IndexOf(slot));
            shared = shared || ++owners[index] != 1;
            EXPECT_EQ(ORMEL_TransGetConn(slot), slot->pConn);
            --owners[index];
            ORMEL_TransDestory(slot);
        }
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 24; ++t) {
        threads.emplace_back(work);
    }
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(shared);
    EXPECT_GE(taken, 16);
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
}

TEST_F(TransTest, ShowsTheTableWhileSlotsComeAndGo) {
    std::atomic<bool> done = false;
    std::thread taker([&] {
        for (int i = 0; i < 100; ++i) {
            ORMEL_TransDestory(ORMEL_NormalTransCreate("f", 1));
        }
        done = true;
    });
    while (!done) {
        ORMEL_TransShow(&g_stTransMgr);
        ORMEL_TransGetConn(&g_stTransMgr.astTrans[0]);
        ORMEL_TransGetStmt(&g_stTransMgr.astTrans[0]);
        ORMEL_TransGetResAtt(&g_stTransMgr.astTrans[0]);
    }
    taker.join();
}

} // namespace
