#include "ormeldb/record.h"
#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Bytes;
using unit::Log;
using unit::Value;

namespace {

const char *const kRecordWarning = "INFO ORMEL_CreatDsbufByRes: WARN:ORMEL_CreatDsbufByRes usRecLen will overflow.";
const char *const kBlockWarning = "INFO ORMEL_CreatDsbufByRes: WARN:ORMEL_CreatDsbufByRes StdBuf will overflow.";

class RecordBufferTest : public unit::UnitTest {
protected:
    // A block of so many bytes; what lies behind it is guarded.
    ORMEL_RECORD_BUFFER Block(size_t size, uint16_t recordLength, uint16_t records = 0) {
        block_.assign(size, '#');
        block_.shrink_to_fit();
        return {recordLength, records, static_cast<uint32_t>(size), 0, reinterpret_cast<uint8_t *>(block_.data())};
    }

    // A row of a table of people; text comes with its NUL.
    static std::vector<Value> Row(int32_t id, const std::string &name, int64_t balance) {
        return {{1, Bytes(id)}, {9, name + '\0'}, {2, Bytes(balance)}};
    }

    static std::string Record(int32_t id, const char *name, int64_t balance) {
        return Bytes(unit::MakePerson(id, name, balance));
    }

    std::vector<char> block_;
    unit::Descriptor att_ = unit::Describe("PERSON", unit::PersonColumns());

    std::string Text() const { return std::string(block_.begin(), block_.end()); }
};

// A one-column table and a one-row result of it.
struct Single {
    Single(uint16_t type, uint16_t size, std::optional<std::string> value)
        : att(unit::Describe("T", {{"COLUMN", type, size}})), result(unit::MakeResult({{{type, std::move(value)}}})) {}
    unit::Descriptor att;
    unit::Result result;
};

using ByResTest = RecordBufferTest;
using RangeByResTest = RecordBufferTest;

// --- From the first row on ---

TEST_F(ByResTest, WritesTheFirstRowWhole) {
    auto result = unit::MakeResult({Row(7, "Ann", -1)});
    auto buffer = Block(33, 33);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att_.get()), 0u);
    EXPECT_EQ(buffer.usRecNum, 1);
    EXPECT_EQ(Text(), Record(7, "Ann", -1));
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(ByResTest, NoRowsWriteNothing) {
    auto result = unit::MakeResult({});
    auto buffer = Block(33, 33, 5);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att_.get()), 0u);
    EXPECT_EQ(buffer.usRecNum, 0);
    EXPECT_EQ(Text(), std::string(33, '#'));
}

TEST_F(ByResTest, NullIsZeros) {
    auto result = unit::MakeResult({{{1, std::nullopt}, {9, std::nullopt}, {2, std::nullopt}}});
    auto buffer = Block(33, 33);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att_.get()), 0u);
    EXPECT_EQ(Text(), std::string(33, '\0'));
}

// The position is counted over the whole block, so that a later row takes only values that are empty.
TEST_F(ByResTest, LaterRowsEndAtTheirFirstValue) {
    auto result =
        unit::MakeResult({Row(1, "a", 1), Row(2, "b", 2), {{1, std::nullopt}, {9, "b"}, {2, Bytes(int64_t{2})}}});
    auto buffer = Block(99, 33);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att_.get()), 0u);
    EXPECT_EQ(buffer.usRecNum, 3);
    EXPECT_EQ(Text(), Record(1, "a", 1) + std::string(66, '\0'));
    EXPECT_THAT(Log().Lines(), ElementsAre(kRecordWarning, kRecordWarning));
}

TEST_F(ByResTest, AnEmptyValueOfTheSecondRowPasses) {
    auto result = unit::MakeResult({{{9, "a"}}, {{9, ""}}});
    auto att = unit::Describe("T", {{"C", 9, 4}});
    auto buffer = Block(8, 4);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att.get()), 0u);
    EXPECT_THAT(Log().Lines(), IsEmpty());
    auto third = unit::MakeResult({{{9, "a"}}, {{9, ""}}, {{9, ""}}});
    buffer = Block(12, 4);
    ORMEL_CreatDsbufByRes(&buffer, third.get(), att.get());
    EXPECT_THAT(Log().Lines(), ElementsAre(kRecordWarning)) << "beyond the second row the position alone is too far";
}

TEST_F(ByResTest, StopsWhereTheBlockEnds) {
    auto result = unit::MakeResult({{{1, "1234"}}, {{1, "1234"}}, {{1, "1234"}}});
    auto att = unit::Describe("T", unit::Integers(1));
    auto buffer = Block(100, 40);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att.get()), 0u);
    EXPECT_EQ(buffer.usRecNum, 3) << "the count of the result, although fewer were written";
    EXPECT_EQ(Text(), "1234" + std::string(76, '\0') + std::string(20, '#'));
    EXPECT_THAT(Log().Lines(), ElementsAre(kRecordWarning, kBlockWarning));
    Log().Forget();
    buffer = Block(39, 40);
    ORMEL_CreatDsbufByRes(&buffer, result.get(), att.get());
    EXPECT_EQ(Text(), std::string(39, '#'));
    EXPECT_THAT(Log().Lines(), ElementsAre(kBlockWarning));
}

TEST_F(ByResTest, ThePositionIsCountedIn64Bits) {
    std::vector<std::vector<Value>> rows(65535, {{1, std::nullopt}});
    auto result = unit::MakeResult(rows);
    auto att = unit::Describe("T", unit::Integers(1));
    auto buffer = Block(65535, 65535);
    unit::Threshold silent(KPL_LOG_FATAL);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att.get()), 0u);
    EXPECT_EQ(buffer.usRecNum, 65535);
}

TEST_F(ByResTest, TheCountIsCutTo16Bits) {
    auto result = unit::MakeResult(std::vector<std::vector<Value>>(70000, {{9, ""}}));
    auto att = unit::Describe("T", {{"C", 9, 1}});
    auto buffer = Block(5000, 1);
    unit::Threshold silent(KPL_LOG_FATAL);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att.get()), 0u);
    EXPECT_EQ(buffer.usRecNum, 4464);
    EXPECT_EQ(Text(), std::string(4464, '\0') + std::string(536, '#'));
}

TEST_F(ByResTest, AValueThatEndsBeyondTheRecordEndsTheRow) {
    Single longer(9, 4, "12345678");
    auto buffer = Block(16, 6);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, longer.result.get(), longer.att.get()), 0u);
    EXPECT_EQ(Text(), std::string(6, '\0') + std::string(10, '#'));
    EXPECT_THAT(Log().Lines(), ElementsAre(kRecordWarning));
}

TEST_F(ByResTest, NothingIsDoneWithNothing) {
    auto result = unit::MakeResult({Row(7, "Ann", -1)});
    auto buffer = Block(33, 33, 9);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(nullptr, result.get(), att_.get()), 0u);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, nullptr, att_.get()), 0u);
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), nullptr), 0u);
    EXPECT_EQ(Text(), std::string(33, '#'));
    buffer.pucData = nullptr;
    EXPECT_EQ(ORMEL_CreatDsbufByRes(&buffer, result.get(), att_.get()), 0u);
    EXPECT_EQ(buffer.usRecNum, 9);
}

// --- A range of rows ---

TEST_F(RangeByResTest, WritesTheRowsOfTheRange) {
    auto result = unit::MakeResult({Row(1, "a", 1), Row(2, "b", 2), Row(3, "c", 3), Row(4, "d", 4)});
    auto buffer = Block(70, 33, 2);
    buffer.uiBufSize = 0; // not looked at
    EXPECT_EQ(ORMEL_CreatDsbufRangeByRes(&buffer, 1, result.get(), att_.get()), 0u);
    EXPECT_EQ(Text(), Record(2, "b", 2) + Record(3, "c", 3) + "####");
    EXPECT_EQ(buffer.usRecNum, 2);
}

TEST_F(RangeByResTest, TheRangeLiesWithinTheResult) {
    auto result = unit::MakeResult(std::vector<std::vector<Value>>(7, Row(1, "a", 1)));
    struct {
        uint32_t start;
        uint16_t count;
        uint32_t code;
    } cases[] = {{0, 7, 0}, {4, 3, 0}, {5, 3, 1},          {7, 0, 0},
                 {8, 0, 1}, {0, 8, 1}, {0xFFFFFFFF, 1, 1}, {0xFFFFFFFF, 2, 1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << '+' << c.count);
        auto buffer = Block(300, 33, c.count);
        EXPECT_EQ(ORMEL_CreatDsbufRangeByRes(&buffer, c.start, result.get(), att_.get()), c.code);
        EXPECT_EQ(Text() == std::string(300, '#'), c.code == 1 || c.count == 0);
    }
}

TEST_F(RangeByResTest, NothingIsDoneWithNothing) {
    auto result = unit::MakeResult({Row(7, "Ann", -1)});
    auto buffer = Block(33, 33, 1);
    EXPECT_EQ(ORMEL_CreatDsbufRangeByRes(nullptr, 0, result.get(), att_.get()), 1u);
    EXPECT_EQ(ORMEL_CreatDsbufRangeByRes(&buffer, 0, nullptr, att_.get()), 1u);
    EXPECT_EQ(ORMEL_CreatDsbufRangeByRes(&buffer, 0, result.get(), nullptr), 1u);
    EXPECT_EQ(Text(), std::string(33, '#'));
    buffer.pucData = nullptr;
    EXPECT_EQ(ORMEL_CreatDsbufRangeByRes(&buffer, 0, result.get(), att_.get()), 1u);
}

// --- Values, both ways ---

// Writes the row of a result into a block of the given record length.
class ValueTest : public RecordBufferTest, public testing::WithParamInterface<bool> {
protected:
    std::string Written(const DB_RESULT *result, const ORMEL_RES_ATT *att, uint16_t recordLength) {
        auto buffer = Block(recordLength + size_t{8}, recordLength, 1);
        EXPECT_EQ(GetParam() ? ORMEL_CreatDsbufRangeByRes(&buffer, 0, result, att)
                             : ORMEL_CreatDsbufByRes(&buffer, result, att),
                  0u);
        EXPECT_EQ(Text().substr(recordLength), std::string(8, '#')) << "written beyond the record";
        return Text().substr(0, recordLength);
    }
    std::string Written(const Single &single, uint16_t recordLength) {
        return Written(single.result.get(), single.att.get(), recordLength);
    }
};

TEST_P(ValueTest, IntegersAreStoredInFourBytes) {
    struct {
        std::string value;
        std::string stored;
    } cases[] = {{"\xFF", "\xFF\xFF\xFF\xFF"},
                 {"ab", std::string("ab\0\0", 4)},
                 {"abcd", "abcd"},
                 {"abcdefgh", "abcd"},
                 {"abc", std::string("abc\0", 4)},
                 {"abcde", "abcd"},
                 {"abcdef", "abcd"},
                 {"abcdefg", "abcd"},
                 {"", std::string(4, '\0')}};
    for (uint16_t type : std::vector<uint16_t>{1, 25}) {
        for (const auto &c : cases) {
            SCOPED_TRACE(c.value.size());
            EXPECT_EQ(Written(Single(type, 4, c.value), 8).substr(0, 4), c.stored);
        }
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(ValueTest, AShorterTextIsTerminatedByTheFill) {
    EXPECT_EQ(Written(Single(9, 6, "abc"), 6), std::string("abc\0\0\0", 6));
    EXPECT_EQ(Written(Single(9, 6, "abcdef"), 6), "abcdef");
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(ValueTest, ALongerValueIsCutAndReported) {
    for (uint16_t type : std::vector<uint16_t>{2, 9, 12, 13, 14}) {
        SCOPED_TRACE(type);
        Log().Forget();
        EXPECT_EQ(Written(Single(type, 4, "abcdefgh"), 20), std::string("abcd") + std::string(16, '\0'));
        ASSERT_EQ(Log().Lines().size(), 1u);
        EXPECT_THAT(Log().Lines(KPL_LOG_ERROR), ElementsAre(testing::HasSubstr("COLUMN")));
        EXPECT_EQ(Log().Raw()[0].function, GetParam() ? "ORMEL_CreatDsbufRangeByRes" : "ORMEL_CreatDsbufByRes");
    }
}

TEST_P(ValueTest, ACutValueLeavesTheNextFieldAlone) {
    auto result = unit::MakeResult({{{9, "abcdefgh"}, {9, std::nullopt}, {9, "xy"}}});
    auto att = unit::Describe("T", {{"A", 9, 4}, {"B", 9, 4}, {"C", 9, 4}});
    EXPECT_EQ(Written(result.get(), att.get(), 12), std::string("abcd\0\0\0\0xy\0\0", 12));
}

TEST_P(ValueTest, AnIntegerWithoutRoomIsLeftOut) {
    EXPECT_EQ(Written(Single(1, 4, "\x01"), 3), std::string(3, '\0'));
    auto result = unit::MakeResult({{{9, "ab"}, {1, "\x01"}}});
    auto att = unit::Describe("T", {{"A", 9, 4}, {"B", 1, 4}});
    EXPECT_EQ(Written(result.get(), att.get(), 6), std::string("ab\0\0\0\0", 6));
}

TEST_P(ValueTest, ColumnsBeyondTheDescriptorAreLeftOut) {
    auto result = unit::MakeResult({{{9, "ab"}, {9, "cd"}}});
    auto att = unit::Describe("T", {{"A", 9, 4}});
    EXPECT_EQ(Written(result.get(), att.get(), 8), std::string("ab\0\0\0\0\0\0", 8));
    att->iAttNum = -1;
    EXPECT_EQ(Written(result.get(), att.get(), 8), std::string(8, '\0'));
}

TEST_P(ValueTest, ColumnsThatTheResultLacksAreZeros) {
    auto result = unit::MakeResult({{{9, "ab"}}});
    auto att = unit::Describe("T", {{"A", 9, 4}, {"B", 9, 4}});
    EXPECT_EQ(Written(result.get(), att.get(), 8), std::string("ab\0\0\0\0\0\0", 8));
}

// A text that fills its field has its terminator cut off, which is nothing to report, unless the record ends before.
TEST_P(ValueTest, ATextMayFillItsField) {
    for (uint16_t type : std::vector<uint16_t>{8, 9, 10}) {
        EXPECT_EQ(Written(Single(type, 4, std::string("abcd\0", 5)), 20), "abcd" + std::string(16, '\0'));
        EXPECT_THAT(Log().Lines(), IsEmpty());
        EXPECT_EQ(Written(Single(type, 4, std::string("abcd\0", 5)), 3), GetParam() ? "abc" : std::string(3, '\0'));
        EXPECT_EQ(Log().Lines().size(), 1u);
        Log().Forget();
    }
}

TEST_P(ValueTest, ARecordOfNoLengthTakesNothing) {
    EXPECT_EQ(Written(Single(9, 4, "abcd"), 0), "");
    EXPECT_EQ(Written(Single(1, 4, "abcd"), 0), "");
}

INSTANTIATE_TEST_SUITE_P(Conversions, ValueTest, testing::Bool(),
                         [](const auto &info) { return info.param ? "RangeByRes" : "ByRes"; });

} // namespace
