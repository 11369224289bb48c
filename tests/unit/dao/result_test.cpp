#include <utility>

#include "ormeldb/dao.h"
#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Log;

namespace {

class ResultTest : public unit::UnitTest {};

// --- Making and clearing ---

TEST_F(ResultTest, AFreshResultHasZeroedCellsAndNoCounts) {
    DB_RESULT *result = dbMallocResult(2, 3);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->uiRowCount, 0u);
    EXPECT_EQ(result->uiFieldCount, 0u);
    for (int row = 0; row < 2; ++row) {
        for (int field = 0; field < 3; ++field) {
            EXPECT_EQ(unit::BytesOf(result->ppRows[row][field]), std::string(sizeof(DB_FIELD), '\0'));
        }
    }
    result->uiRowCount = 2;
    result->uiFieldCount = 3;
    dbResClear(result);
}

TEST_F(ResultTest, AResultMayHaveNoRows) {
    DB_RESULT *result = dbMallocResult(0, 3);
    ASSERT_NE(result, nullptr);
    EXPECT_NE(result->ppRows, nullptr);
    dbResClear(result);
}

TEST_F(ResultTest, WithoutMemoryNothingIsLeft) {
    size_t before = unit::LiveBlocks();
    DB_RESULT *result = nullptr;
    int allocations = unit::ForEachAllocation([&] { result = dbMallocResult(2, 3); },
                                              [&](int) {
                                                  EXPECT_EQ(result, nullptr);
                                                  EXPECT_EQ(unit::LiveBlocks(), before);
                                              });
    EXPECT_EQ(allocations, 4) << "the header, the array of rows, and each row";
    result->uiRowCount = 2;
    result->uiFieldCount = 3;
    dbResClear(result);
}

TEST_F(ResultTest, HugeCountsFailAsAllocationsDo) {
    EXPECT_EQ(dbMallocResult(0xFFFFFFFF, 1), nullptr);
    EXPECT_EQ(dbMallocResult(1, 0xFFFFFFFF), nullptr);
    EXPECT_EQ(dbMallocResult(0xFFFFFFFF, 0xFFFFFFFF), nullptr);
    EXPECT_EQ(dbMallocResult(0x20000001, 1), nullptr) << "rows that would wrap round in 32 bits";
}

TEST_F(ResultTest, ClearingACellFreesItsValue) {
    DB_FIELD cells[2] = {};
    cells[1].pValue = std::malloc(4);
    cells[1].uiLength = 4;
    cells[1].usType = 9;
    dbFieldClear(cells, 2);
    EXPECT_EQ(cells[1].pValue, nullptr);
    EXPECT_EQ(cells[1].uiLength, 0u);
    EXPECT_EQ(cells[1].usType, 9);
    dbFieldClear(cells, 2);
    dbFieldClear(nullptr, 2);
}

TEST_F(ResultTest, ClearsResultsOfEveryShape) {
    dbResClear(nullptr);
    unit::MakeResult({{{9, "abc"}, {9, std::nullopt}}, {{9, ""}, {1, "1234"}}});
    auto *write = static_cast<DB_RESULT *>(std::calloc(1, sizeof(DB_RESULT)));
    write->uiRowCount = 5;
    dbResClear(write);
    auto *halfDone = static_cast<DB_RESULT *>(std::calloc(1, sizeof(DB_RESULT)));
    halfDone->uiRowCount = 2;
    halfDone->uiFieldCount = 3;
    halfDone->ppRows = static_cast<DB_FIELD **>(std::calloc(2, sizeof(DB_FIELD *)));
    dbResClear(halfDone);
}

// --- Reading ---

TEST_F(ResultTest, ReadsCells) {
    auto result = unit::MakeResult({{{9, "abc"}, {1, "1234"}}, {{9, std::nullopt}, {1, "56"}}});
    std::strcpy(result->ppRows[0][1].acName, "NAME");
    EXPECT_EQ(dbGetNtuples(result.get()), 2u);
    EXPECT_EQ(dbGetNfields(result.get()), 2u);
    EXPECT_EQ(dbGetValueFromRes(result.get(), 0, 0), result->ppRows[0][0].pValue);
    EXPECT_EQ(dbGetValueFromRes(result.get(), 1, 0), nullptr);
    EXPECT_EQ(dbGetLengthFromRes(result.get(), 0, 0), 3u);
    EXPECT_EQ(dbGetLengthFromRes(result.get(), 1, 1), 2u);
    EXPECT_EQ(dbGetTypeFromRes(result.get(), 0, 1), 1u);
    EXPECT_STREQ(dbGetNameFromRes(result.get(), 0, 1), "NAME");
}

TEST_F(ResultTest, ThereIsNothingBeyondTheLastCell) {
    auto result = unit::MakeResult({{{9, "abc"}, {1, "1234"}}});
    auto rowsOnly = unit::MakeResult({});
    rowsOnly->uiRowCount = rowsOnly->uiFieldCount = 1;
    std::free(rowsOnly->ppRows);
    rowsOnly->ppRows = nullptr;
    auto rowMissing = unit::MakeResult({{{9, std::nullopt}}});
    std::free(std::exchange(rowMissing->ppRows[0], nullptr));
    struct {
        const DB_RESULT *result;
        uint32_t row;
        int32_t field;
        bool counted;
        bool there;
    } cases[] = {{result.get(), 0, 0, true, true},           {result.get(), 0, 1, true, true},
                 {result.get(), 0, 2, false, false},         {result.get(), 0, -1, false, false},
                 {result.get(), 1, 0, false, false},         {result.get(), 0xFFFFFFFF, 0, false, false},
                 {result.get(), 0, INT32_MIN, false, false}, {nullptr, 0, 0, false, false},
                 {rowsOnly.get(), 0, 0, true, false},        {rowMissing.get(), 0, 0, true, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.row << ',' << c.field);
        EXPECT_EQ(dbCheckTupleField(c.result, c.row, c.field), c.counted ? 1u : 0u);
        EXPECT_EQ(dbGetValueFromRes(c.result, c.row, c.field) != nullptr, c.there);
        EXPECT_EQ(dbGetLengthFromRes(c.result, c.row, c.field) != 0, c.there);
        EXPECT_EQ(dbGetTypeFromRes(c.result, c.row, c.field) != 0, c.there);
        EXPECT_EQ(dbGetNameFromRes(c.result, c.row, c.field) != nullptr, c.there);
    }
    EXPECT_EQ(dbGetNtuples(nullptr), 0u);
    EXPECT_EQ(dbGetNfields(nullptr), 0u);
}

// --- Storing ---

// Stores the first bytes of a value into a field that is surrounded by others.
std::string Stored(const std::string &value, size_t length, uint32_t type) {
    std::string record(1 + std::max<size_t>(length, 4) + 1, '#');
    dbSetFieldValue(record.data() + 1, value.data(), static_cast<uint32_t>(length), type);
    return record;
}

TEST_F(ResultTest, StoresFourByteIntegers) {
    const std::string value = "\xFF\xFE\xFD\x7C\x01\x02\x03\x04\x05";
    struct {
        size_t length;
        std::string stored;
    } cases[] = {{0, std::string(4, '\0')}, {1, "\xFF\xFF\xFF\xFF"}, {2, std::string("\xFF\xFE\0\0", 4)},
                 {3, value.substr(0, 4)},   {4, value.substr(0, 4)}, {5, value.substr(0, 4)},
                 {8, value.substr(0, 4)},   {9, value.substr(0, 4)}};
    for (uint32_t type : {QDC_TYPE_INT32, QDC_TYPE_BOOL}) {
        for (const auto &c : cases) {
            EXPECT_EQ(Stored(value, c.length, type).substr(0, 5), "#" + c.stored) << c.length;
            EXPECT_EQ(Stored(value, c.length, type).back(), '#') << c.length;
        }
    }
}

TEST_F(ResultTest, StoresEverythingElseByteForByte) {
    for (uint32_t type : {2u, 3u, 4u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 23u, 99u}) {
        EXPECT_EQ(Stored("abcdefghij", 10, type), "#abcdefghij#") << type;
        EXPECT_EQ(Stored("abcdefghij", 0, type), "######") << type;
    }
}

TEST_F(ResultTest, StoresNothingFromOrToNowhere) {
    char field[4] = {1, 2, 3, 4};
    dbSetFieldValue(nullptr, field, 4, 1);
    dbSetFieldValue(field, nullptr, 4, 9);
    EXPECT_EQ(field[0], 1);
    EXPECT_EQ(getFieldValue(nullptr, field, 4), field);
    EXPECT_EQ(getFieldValue(field, nullptr, 4), nullptr);
}

TEST_F(ResultTest, CopiesBytes) {
    char target[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(getFieldValue("abc", target, 3), target);
    EXPECT_EQ(std::string(target, 4), "abc#");
}

// --- Showing ---

// The messages of a shown value.
unit::Lines Shown(uint32_t type, const void *value, uint32_t length) {
    Log().Forget();
    dbValueShow(type, value, length);
    unit::Lines messages;
    for (const unit::Line &line : Log().Raw()) {
        EXPECT_EQ(line.level, KPL_LOG_TRACE);
        EXPECT_EQ(line.function, "dbValueShow");
        messages.push_back(line.message);
    }
    return messages;
}

TEST_F(ResultTest, ShowsTextInALine) {
    for (uint32_t type : {8u, 9u, 10u, 13u}) {
        EXPECT_THAT(Shown(type, "abc", 4), ElementsAre(" abc", " "));
        EXPECT_THAT(Shown(type, nullptr, 0), ElementsAre(" ", " "));
    }
}

TEST_F(ResultTest, ShowsOtherValuesByteByByte) {
    for (uint32_t type : {1u, 2u, 3u, 4u, 11u, 12u, 14u, 23u, 25u, 99u}) {
        EXPECT_THAT(Shown(type, "\x01\xAB\x00", 3), ElementsAre(" 01", " ab", " 00", " "));
        EXPECT_THAT(Shown(type, "abc", 0), ElementsAre(" "));
        EXPECT_THAT(Shown(type, nullptr, 3), ElementsAre(" "));
    }
}

TEST_F(ResultTest, ShowsTextNoFurtherThanItsLength) {
    std::unique_ptr<char, unit::FreeDeleter> text(static_cast<char *>(std::malloc(3)));
    std::memcpy(text.get(), "abc", 3);
    EXPECT_THAT(Shown(9, text.get(), 3), ElementsAre(" abc", " "));
    EXPECT_THAT(Shown(9, text.get(), 2), ElementsAre(" ab", " "));
    EXPECT_THAT(Shown(9, text.get(), 0), ElementsAre(" ", " "));
}

TEST_F(ResultTest, AValueThatNobodySeesCostsOneThresholdTest) {
    unit::Threshold debug(KPL_LOG_DEBUG);
    std::string value(1000, 'v');
    for (uint32_t type : {9u, 11u}) {
        int before = Log().thresholdReads;
        dbValueShow(type, value.data(), 1000);
        EXPECT_EQ(Log().thresholdReads - before, 1);
    }
    EXPECT_THAT(Log().Raw(), IsEmpty());
}

} // namespace
