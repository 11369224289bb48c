#include "batch_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Asked;
using unit::Client;
using unit::kClientStatus;
using unit::Log;
using unit::Written;

namespace {

class BatchLobTest : public unit::BatchStatementTest {
protected:
    void SetUp() override {
        DaoTest::SetUp();
        Execute({});
    }

    // Writes the batch's only column at position 7.
    uint32_t Write() {
        Forget();
        return dbBatchWriteLob(stmt_, 7, &Column(0), slots_, lengths_);
    }

    char slots_[4 * 16] = {};
    uint16_t lengths_[4] = {16, 16, 16, 16};
};

struct LobKind {
    uint32_t type;
    std::string operation, bound, failed;
};
const LobKind kLobs[] = {{13, "write_batch_clob", "bind_by_pos(s1, 7, 13, slots, 16, lengths)", "clob:7 failed "},
                         {14, "write_batch_blob", "bind_by_pos(s1, 7, 14, slots, 16, lengths)", "blob:7 failed"}};

TEST_F(BatchLobTest, EachRowIsWritten) {
    for (const LobKind &kind : kLobs) {
        Make(3, {kind.type});
        std::memset(slots_, 0, sizeof(slots_));
        EXPECT_EQ(Write(), 0u);
        const std::string write = kind.operation + "(s1, 7, ";
        EXPECT_THAT(Asked(), ElementsAre(kind.bound, write + "0, 1)", write + "1, 2)", write + "2, 3)"));
        EXPECT_THAT(Log().Lines(), ElementsAre(Written(0, "0", 7), Written(1, "1x", 7), Written(2, "2xx", 7)));
        EXPECT_EQ(Client().Bounds()[0].address, slots_);
        EXPECT_EQ(Client().Bounds()[0].rowLengths, lengths_);
    }
}

TEST_F(BatchLobTest, NoRowsAreBoundAndNotWritten) {
    Make(1, {13});
    Column(0).arrlen = 0;
    EXPECT_EQ(Write(), 0u);
    EXPECT_THAT(Asked(), ElementsAre(kLobs[0].bound));
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(BatchLobTest, AnEmptyOneIsWrittenAndBytesEndTheTextInTheLog) {
    Make(2, {14});
    char bytes[] = {'a', '\0', 'b'};
    Column(0).lobLen[0] = 0;
    Column(0).lobArray[1] = bytes;
    Column(0).lobLen[1] = 3;
    EXPECT_EQ(Write(), 0u);
    EXPECT_THAT(Asked(), ElementsAre(kLobs[1].bound, "write_batch_blob(s1, 7, 0, 0)", "write_batch_blob(s1, 7, 1, 3)"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbBatchWriteLob: LOB lobarray 0: len:0 strlen:0 pos:7 ",
                                           "DEBUG dbBatchWriteLob: LOB lobarray 1:a len:3 strlen:1 pos:7 "));
}

TEST_F(BatchLobTest, TheFirstMissingOneEndsTheWriting) {
    for (const LobKind &kind : kLobs) {
        for (int missing : {0, 2, 3}) {
            SCOPED_TRACE(kind.operation + " " + std::to_string(missing));
            Make(4, {kind.type});
            Column(0).lobArray[missing] = nullptr;
            std::memset(slots_, 0, sizeof(slots_));
            EXPECT_EQ(Write(), 0u);
            EXPECT_EQ(Client().Count(kind.operation), missing);
            EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), unit::Lines{"ERROR dbBatchWriteLob: LOB pstItem->lobArray[i]:" +
                                                              std::to_string(missing) + " is NULL "});
        }
    }
}

TEST_F(BatchLobTest, ARowWithoutAValueIsSkipped) {
    for (const LobKind &kind : kLobs) {
        Make(4, {kind.type});
        Column(0).lobArray[0] = Column(0).lobArray[2] = &Column(0);
        std::memset(slots_, 0, sizeof(slots_));
        EXPECT_EQ(Write(), 0u);
        EXPECT_THAT(Asked(),
                    ElementsAre(kind.bound, kind.operation + "(s1, 7, 1, 2)", kind.operation + "(s1, 7, 3, 4)"));
        EXPECT_THAT(Log().Lines(KPL_LOG_ERROR), IsEmpty());
        Column(0).lobArray[1] = Column(0).lobArray[3] = &Column(0);
        std::memset(slots_, 0, sizeof(slots_));
        EXPECT_EQ(Write(), 0u);
        EXPECT_THAT(Asked(), ElementsAre(kind.bound));
    }
}

TEST_F(BatchLobTest, AFailureIsTheClientsStatus) {
    for (const LobKind &kind : kLobs) {
        Make(3, {kind.type});
        std::memset(slots_, 0, sizeof(slots_));
        Client().Fail(kind.operation, 2);
        EXPECT_EQ(Write(), kClientStatus);
        EXPECT_EQ(Client().Count(kind.operation), 2);
        EXPECT_THAT(Log().Lines(KPL_LOG_ERROR),
                    ElementsAre("ERROR dbBatchWriteLob: LOB qdc_write_batch_" + kind.failed));
        std::memset(slots_, 0, sizeof(slots_));
        Client().Fail("bind_by_pos");
        EXPECT_EQ(Write(), kClientStatus);
        EXPECT_EQ(Client().Count(kind.operation), 0);
        EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbBatchWriteLob: LOB qdc_bind_by_pos failed"));
    }
}

TEST_F(BatchLobTest, NeedsItsArguments) {
    Make(1, {13});
    const std::string line = "ERROR dbBatchWriteLob: ORMEL_PARA_BATCH_ITEM:7 is null";
    EXPECT_EQ(dbBatchWriteLob(stmt_, 7, nullptr, slots_, lengths_), 0xFFFFFFFFu);
    EXPECT_EQ(dbBatchWriteLob(stmt_, 7, &Column(0), nullptr, lengths_), 0xFFFFFFFFu);
    EXPECT_EQ(dbBatchWriteLob(stmt_, 7, &Column(0), slots_, nullptr), 0xFFFFFFFFu);
    EXPECT_THAT(Log().Lines(), ElementsAre(line, line, line));
    EXPECT_EQ(dbBatchWriteLob(nullptr, 7, &Column(0), slots_, lengths_), 0xFFFFFFFFu);
    const ORMEL_PARA_BATCH_ITEM column = Column(0);
    Column(0).lobLen = nullptr;
    EXPECT_EQ(dbBatchWriteLob(stmt_, 7, &Column(0), slots_, lengths_), 0xFFFFFFFFu);
    Column(0).lobArray = nullptr;
    EXPECT_EQ(dbBatchWriteLob(stmt_, 7, &Column(0), slots_, lengths_), 0xFFFFFFFFu);
    Column(0) = column;
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(BatchLobTest, OtherTypesAreNotWritten) {
    Make(2, {13});
    Column(0).type = 11;
    EXPECT_EQ(Write(), 0u);
    EXPECT_EQ(Client().Count("write_batch_clob") + Client().Count("write_batch_blob"), 0);
}

} // namespace
