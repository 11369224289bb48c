#include "dao_test.h"
#include "support/process.h"

using testing::ElementsAre;
using unit::Cell;
using unit::Client;
using unit::Lob;
using unit::Log;

namespace {

const uint16_t kKinds[] = {13, 14};

// Bytes that tell their position.
std::string Content(size_t size) {
    std::string content(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        content[i] = static_cast<char>('a' + i / 1000 % 26);
    }
    return content;
}

class LobTest : public unit::DaoTest {
protected:
    // Reads a row of two columns, text and a large object.
    uint32_t Read(uint16_t type, const Cell &lob) {
        Clear();
        Execute({.columns = {{"T", 9, 10}, {"L", type, 44}}, .rows = {{unit::Text("text"), lob}}});
        dbMoveNext(stmt_);
        Forget();
        unit::Capture error(stderr); // values that make a log line too long are reported there
        return dbGetFields(stmt_, cells_, 2);
    }

    void Clear() {
        dbFieldClear(cells_, 2);
        dbFreeStmt(stmt_);
        stmt_ = nullptr;
    }

    void TearDown() override {
        Clear();
        DaoTest::TearDown();
    }

    std::string Value() const { return std::string(static_cast<const char *>(cells_[1].pValue), cells_[1].uiLength); }

    void ExpectRowFailed(uint32_t code) const {
        EXPECT_EQ(code, 0xFFFFFFFFu);
        for (const DB_FIELD &cell : cells_) {
            EXPECT_EQ(cell.pValue, nullptr);
            EXPECT_EQ(cell.uiLength, 0u);
        }
    }

    static std::vector<std::string> Reads() {
        std::vector<std::string> reads;
        for (const std::string &call : Client().Calls()) {
            if (call.rfind("read_", 0) == 0) {
                reads.push_back(call.substr(call.find(", ") + 2));
            }
        }
        return reads;
    }

    DB_FIELD cells_[2] = {};
};

TEST_F(LobTest, IsReadInChunks) {
    for (uint16_t type : kKinds) {
        EXPECT_EQ(Read(type, Lob(Content(2500))), 0u);
        EXPECT_EQ(Value(), Content(2500));
        EXPECT_THAT(Reads(), ElementsAre("0, 1000)", "1000, 1000)", "2000, 1000)"));
        EXPECT_EQ(Client().Count(type == 13 ? "read_clob" : "read_blob"), 3);
    }
}

TEST_F(LobTest, MayComeInSmallerPiecesAndEndLate) {
    for (uint16_t type : kKinds) {
        EXPECT_EQ(Read(type, Cell{.bytes = "abcdefg", .size = 44, .chunk = 3, .lateEnd = true}), 0u);
        EXPECT_EQ(Value(), "abcdefg");
        EXPECT_THAT(Reads(), ElementsAre("0, 1000)", "3, 1000)", "6, 1000)", "7, 1000)"));
    }
}

TEST_F(LobTest, OnlyTheClobIsLoggedAtItsEnd) {
    Read(13, Lob("value"));
    EXPECT_EQ(Log().LinesOf("dbGetFields").back(),
              "DEBUG dbGetFields: qdc_read_clob value:value datasize:65535 offset:5");
    Read(14, Lob("value"));
    EXPECT_EQ(Log().LinesOf("dbGetFields").back(), "DEBUG dbGetFields: get data  datasize:44 isnull:0");
    EXPECT_TRUE(Log().LinesOf("dbValueShow", KPL_LOG_TRACE).size() == 2) << "only the text is shown";
}

TEST_F(LobTest, OfKnownSizeGetsABlockOfThatSize) {
    for (uint16_t type : kKinds) {
        EXPECT_EQ(Read(type, Lob("value", 5)), 0u);
        EXPECT_EQ(Value(), "value");
        EXPECT_EQ(Read(type, Lob("", 0)), 0u);
        EXPECT_EQ(Value(), "");
        EXPECT_NE(cells_[1].pValue, nullptr) << "empty is not NULL";
    }
    Read(13, Lob("value", 5));
    EXPECT_EQ(Log().LinesOf("dbGetFields").back(), "DEBUG dbGetFields: qdc_read_clob value:value datasize:5 offset:5");
}

TEST_F(LobTest, AClobCanBeReadAsText) {
    for (uint32_t size : {44u, 5u, 100u}) {
        Read(13, Lob("value", size));
        EXPECT_STREQ(static_cast<char *>(cells_[1].pValue), "value") << size;
    }
    Read(13, Lob("", 0));
    EXPECT_STREQ(static_cast<char *>(cells_[1].pValue), "");
}

TEST_F(LobTest, MayFillTheBlockOfALocator) {
    for (uint16_t type : kKinds) {
        EXPECT_EQ(Read(type, Lob(Content(65535))), 0u);
        EXPECT_EQ(Value(), Content(65535));
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), unit::Lines{});
    }
}

TEST_F(LobTest, BeyondItsBlockIsCutWhileTheLengthCounts) {
    for (uint16_t type : kKinds) {
        EXPECT_EQ(Read(type, Lob(Content(66500))), 0u);
        EXPECT_EQ(cells_[1].uiLength, 66500u);
        EXPECT_EQ(Value(), Content(65000) + std::string(1500, '\0')) << "a chunk that does not fit whole is left out";
        EXPECT_THAT(Log().Lines(KPL_LOG_ERROR),
                    ElementsAre("ERROR dbGetFields: copy data failed", "ERROR dbGetFields: copy data failed"));
    }
}

TEST_F(LobTest, LongerThanItsReportedSizeIsCutWhileTheLengthCounts) {
    for (uint16_t type : kKinds) {
        EXPECT_EQ(Read(type, Cell{.bytes = "abcdefgh", .size = 5, .chunk = 3}), 0u);
        EXPECT_EQ(Value(), std::string("abc\0\0\0\0\0", 8));
        EXPECT_EQ(static_cast<char *>(cells_[1].pValue)[0], 'a');
    }
}

TEST_F(LobTest, ShorterThanItsReportedSizeHasItsOwnLength) {
    for (uint16_t type : kKinds) {
        EXPECT_EQ(Read(type, Lob("abc", 5000)), 0u);
        EXPECT_EQ(Value(), "abc");
    }
}

TEST_F(LobTest, AFailedReadClearsTheRow) {
    for (uint16_t type : kKinds) {
        ExpectRowFailed(Read(type, Cell{.bytes = Content(2500), .size = 44, .refusedAt = 1000}));
        std::string line = type == 13 ? "qdc_read_clob failed" : "qdc_read_blob failed";
        EXPECT_THAT(Log().Lines(KPL_LOG_ERROR), ElementsAre("ERROR dbGetFields: " + line));
    }
}

TEST_F(LobTest, AReadWithoutBytesOrEndFails) {
    for (uint16_t type : kKinds) {
        ExpectRowFailed(Read(type, Cell{.bytes = Content(2500), .size = 44, .stuckAt = 1000}));
        EXPECT_EQ(Reads().size(), 2u);
    }
}

TEST_F(LobTest, WithoutALocatorTheRowFails) {
    for (uint16_t type : kKinds) {
        ExpectRowFailed(Read(type, Cell{.bytes = "abc", .size = 44, .data = false}));
        EXPECT_THAT(Reads(), testing::IsEmpty());
    }
}

TEST_F(LobTest, NullHasNothingToRead) {
    for (uint16_t type : kKinds) {
        EXPECT_EQ(Read(type, unit::Null()), 0u);
        EXPECT_EQ(cells_[1].pValue, nullptr);
        EXPECT_THAT(Reads(), testing::IsEmpty());
    }
}

TEST_F(LobTest, WithoutMemoryTheRowFails) {
    for (uint16_t type : kKinds) {
        Execute({.columns = {{"T", 9, 10}, {"L", type, 44}}, .rows = {{unit::Text("text"), Lob(Content(66500))}}});
        dbMoveNext(stmt_);
        unit::Capture error(stderr);
        uint32_t code = 0;
        int allocations =
            unit::ForEachAllocation([&] { code = dbGetFields(stmt_, cells_, 2); }, [&](int) { ExpectRowFailed(code); });
        EXPECT_EQ(allocations, 3) << "text, block, and the larger block";
        EXPECT_EQ(code, 0u);
        Clear();
    }
}

} // namespace
