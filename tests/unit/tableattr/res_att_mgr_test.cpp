#include <thread>

#include "ormeldb/cache.h"
#include "ormeldb/res_att.h"
#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::Log;

namespace {

class ResAttMgrTest : public unit::UnitTest {
protected:
    void SetUp() override {
        ORMEL_ResAttMgrInit();
        conn_ = dbConnect("h:1", "u", "p", "REQUIRED");
        Client().On("select * from", {.columns = unit::PersonColumns()});
        Forget();
    }
    void TearDown() override {
        dbDisconnect(conn_);
        ORMEL_ResAttMgrUnInit();
    }

    static void Forget() {
        Client().ForgetCalls();
        Log().Forget();
    }

    // A fresh descriptor of one integer column, to be handed over.
    static ORMEL_RES_ATT *Fresh(const char *table) { return unit::Describe(table, unit::Integers(1)).release(); }

    static int32_t Cached() { return ORMEL_ResAttrCacheMgrGet()->iCount; }

    void *conn_ = nullptr;
};

TEST_F(ResAttMgrTest, DescriptorsAreCached) {
    EXPECT_EQ(ORMEL_ResAttNeedCache(), 1);
}

TEST_F(ResAttMgrTest, StartsAndStopsEmpty) {
    ORMEL_ResAttMgrUnInit();
    Forget();
    EXPECT_EQ(ORMEL_ResAttMgrInit(), 0u);
    EXPECT_EQ(Cached(), 0);
    EXPECT_EQ(ORMEL_ResAttrCacheMgrGet()->iMax, -1);
    EXPECT_THAT(Log().Lines(KPL_LOG_TRACE), ElementsAre("DEBUG ORMEL_ResAttMgrInit: Trace in.",
                                                        "TRACE ORMEL_CacheShow:              ORMEL_CACHE_MGR",
                                                        "TRACE ORMEL_CacheShow:                       iCount : 0",
                                                        "TRACE ORMEL_CacheShow:                         iMax : -1"));
    ORMEL_ResAttPush(Fresh("T"));
    Forget();
    EXPECT_EQ(ORMEL_ResAttMgrUnInit(), 0);
    EXPECT_EQ(Cached(), 0);
    EXPECT_EQ(ORMEL_ResAttGet("T"), nullptr);
    EXPECT_EQ(Log().Lines(KPL_LOG_TRACE).front(), "DEBUG ORMEL_ResAttMgrUnInit: Trace in.");
    EXPECT_EQ(Log().LinesOf("ORMEL_CacheShow", KPL_LOG_TRACE).size(), 3u);
    ORMEL_ResAttMgrInit();
}

TEST_F(ResAttMgrTest, ShowsItsDescriptors) {
    ORMEL_ResAttPush(Fresh("B"));
    ORMEL_ResAttPush(Fresh("A"));
    Forget();
    ORMEL_CacheShow(ORMEL_ResAttrCacheMgrGet());
    EXPECT_EQ(Log().LinesOf("ORMEL_ResAttShow", KPL_LOG_TRACE).size(), 2u * 4);
}

// --- Getting ---

TEST_F(ResAttMgrTest, AskingForATableProbesItOnce) {
    ORMEL_RES_ATT *first = ORMEL_CreatResAtt(conn_, "PERSON", nullptr);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(Cached(), 0) << "a descriptor is cached when it is given back";
    ORMEL_DestoryResAtt(first);
    EXPECT_EQ(Cached(), 1);
    Forget();
    ORMEL_RES_ATT *cached = ORMEL_CreatResAtt(conn_, "person", nullptr);
    EXPECT_EQ(cached, ORMEL_ResAttGet("PERSON"));
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_CreatResAtt: Trace in."));
    ORMEL_DestoryResAtt(cached);
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), cached) << "giving the cached one back neither frees nor re-adds it";
    EXPECT_EQ(Cached(), 1);
}

TEST_F(ResAttMgrTest, ACachedTableIsTakenWholeWhateverTheRequestSelects) {
    ORMEL_ResAttPush(Fresh("PERSON"));
    char name[] = "NAME";
    ORMEL_OBJECT request{};
    request.iSelectFieldNum = 1;
    request.apcSelectField[0] = name;
    EXPECT_EQ(ORMEL_CreatResAtt(conn_, "PERSON", &request), ORMEL_ResAttGet("PERSON"));
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(ResAttMgrTest, AProbeThatFailsGivesNoDescriptor) {
    Client().Fail("prepare");
    EXPECT_EQ(ORMEL_CreatResAtt(conn_, "NOWHERE", nullptr), nullptr);
    EXPECT_EQ(Cached(), 0);
    EXPECT_THAT(Log().LinesOf("ORMEL_"),
                ElementsAre("DEBUG ORMEL_CreatResAtt: Trace in.", "DEBUG ORMEL_ResAttCreate: Trace in."));
}

TEST_F(ResAttMgrTest, LongNamesAreComparedAsTheyAreCut) {
    const std::string name27(27, 'T');
    ORMEL_ResAttPush(Fresh((name27 + "A").c_str()));
    EXPECT_NE(ORMEL_ResAttGet((name27 + "B").c_str()), nullptr);
    EXPECT_NE(ORMEL_ResAttGet(name27.c_str()), nullptr);
    EXPECT_EQ(ORMEL_ResAttGet(name27.substr(1).c_str()), nullptr);
}

TEST_F(ResAttMgrTest, ThereIsNoDescriptorWithoutAName) {
    EXPECT_EQ(ORMEL_ResAttGet(nullptr), nullptr);
    EXPECT_EQ(ORMEL_CreatResAtt(conn_, nullptr, nullptr), nullptr);
    EXPECT_EQ(ORMEL_CreatResAtt(nullptr, "T", nullptr), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// --- Giving back ---

TEST_F(ResAttMgrTest, TheFirstDescriptorOfATableIsKept) {
    ORMEL_RES_ATT *first = unit::Describe("T", unit::Integers(3)).release();
    const std::string bytes(reinterpret_cast<char *>(first), 32 + 3 * 56);
    EXPECT_EQ(ORMEL_ResAttPush(first), 0u);
    ORMEL_RES_ATT *cached = ORMEL_ResAttGet("T");
    ASSERT_NE(cached, nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(cached), bytes.size()), bytes) << "a copy of the whole block";
    EXPECT_EQ(ORMEL_ResAttPush(Fresh("t")), 0u);
    EXPECT_EQ(ORMEL_ResAttGet("T"), cached);
    EXPECT_EQ(cached->iAttNum, 3);
    EXPECT_EQ(Cached(), 1);
}

TEST_F(ResAttMgrTest, LogsWhatItIsGiven) {
    ORMEL_DestoryResAtt(Fresh("T"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_DestoryResAtt: Trace in.", "DEBUG ORMEL_ResAttPush: Trace in.",
                                           "DEBUG ORMEL_CacheAdd: Trace in."));
    EXPECT_EQ(Log().LinesOf("ORMEL_CacheShow", KPL_LOG_TRACE).size(), 3u);
    Forget();
    ORMEL_DestoryResAtt(ORMEL_ResAttGet("T"));
    EXPECT_THAT(Log().Lines(),
                ElementsAre("DEBUG ORMEL_DestoryResAtt: Trace in.", "DEBUG ORMEL_ResAttPush: Trace in."));
}

TEST_F(ResAttMgrTest, WhatCannotBeKeptIsFreed) {
    {
        unit::FailingAllocation fail(2); // the first is the descriptor
        EXPECT_EQ(ORMEL_ResAttPush(Fresh("T")), 1u);
    }
    ORMEL_ResAttrCacheMgrGet()->iMax = 0;
    EXPECT_EQ(ORMEL_ResAttPush(Fresh("T")), 1u);
    EXPECT_EQ(ORMEL_ResAttGet("T"), nullptr);
}

TEST_F(ResAttMgrTest, WhatTheCacheCannotCountIsFreed) {
    auto *att = static_cast<ORMEL_RES_ATT *>(std::calloc(1, sizeof(ORMEL_RES_ATT)));
    att->acTableName[0] = 'T';
    att->iAttNum = 80000000; // 56 bytes each, of which only the cache would read any
    EXPECT_EQ(ORMEL_ResAttPush(att), 1u);
    EXPECT_EQ(Cached(), 0);
}

TEST_F(ResAttMgrTest, NothingIsGivenBack) {
    EXPECT_EQ(ORMEL_ResAttPush(nullptr), 0u);
    ORMEL_DestoryResAtt(nullptr);
    EXPECT_EQ(Cached(), 0);
}

TEST_F(ResAttMgrTest, WithoutACacheDescriptorsAreMadeAndFreed) {
    ORMEL_ResAttMgrUnInit();
    std::memset(static_cast<void *>(ORMEL_ResAttrCacheMgrGet()), 0, sizeof(ORMEL_CACHE_MGR));
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), nullptr);
    ORMEL_RES_ATT *att = ORMEL_CreatResAtt(conn_, "PERSON", nullptr);
    EXPECT_NE(att, nullptr);
    EXPECT_EQ(ORMEL_ResAttPush(att), 1u);
    ORMEL_ResAttMgrInit();
}

// --- Many threads ---

TEST_F(ResAttMgrTest, ThreadsThatMeetATableTogetherAgreeOnOneDescriptor) {
    unit::Threshold silent(KPL_LOG_FATAL);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([] {
            void *conn = dbConnect("h:1", "u", "p", "REQUIRED");
            for (int i = 0; i < 40; ++i) {
                std::string table = "T" + std::to_string(i % 10);
                ORMEL_RES_ATT *att = ORMEL_CreatResAtt(conn, table.c_str(), nullptr);
                EXPECT_EQ(att->iAttNum, 3);
                EXPECT_EQ(ORMEL_GetFieldIdByNameFromResAttr(att, "balance"), 2u);
                ORMEL_DestoryResAtt(att);
                ORMEL_RES_ATT *cached = ORMEL_ResAttGet(table.c_str());
                EXPECT_NE(cached, nullptr);
                EXPECT_EQ(ORMEL_CreatResAtt(conn, table.c_str(), nullptr), cached);
            }
            dbDisconnect(conn);
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Cached(), 10);
}

} // namespace
