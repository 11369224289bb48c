#include "object_test.h"

#include "ormeldb/res_att.h"
#include "support/sample.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Bytes;
using unit::kLongest;
using unit::kTooLong;
using unit::Log;

namespace {

using ObjectTest = unit::ObjectTest;

// --- What is special to one ---

TEST_F(ObjectTest, BytesHaveALength) {
    for (int32_t length : {0, -1, INT32_MIN}) {
        EXPECT_EQ(ORMEL_ObjectBinarySet(&object_, "C", "abc", length), 97u);
    }
    EXPECT_EQ(object_.iItemNum, 0);
    EXPECT_EQ(ORMEL_ObjectBinarySet(&object_, "C", "abc", INT32_MAX), 1u) << "a block of that size is refused";
    EXPECT_EQ(object_.iItemNum, 0);
    EXPECT_EQ(ORMEL_ObjectBinarySet(&object_, "C", "abc", 1), 0u);
    EXPECT_EQ(Value(), "a");
}

TEST_F(ObjectTest, NarrowIntegersKeepTheirSign) {
    ORMEL_ObjectInt8Set(&object_, "A", INT8_MIN);
    ORMEL_ObjectInt8Set(&object_, "B", INT8_MAX);
    ORMEL_ObjectInt16Set(&object_, "C", -1);
    ORMEL_ObjectInt16Set(&object_, "D", INT16_MAX);
    EXPECT_EQ(Value(0), Bytes(int32_t{-128}));
    EXPECT_EQ(Value(1), Bytes(int32_t{127}));
    EXPECT_EQ(Value(2), Bytes(int32_t{-1}));
    EXPECT_EQ(Value(3), Bytes(int32_t{32767}));
}

TEST_F(ObjectTest, AnEmptyTextIsAValue) {
    using Set = uint32_t (*)(ORMEL_OBJECT *, const char *, const char *);
    for (Set set : {Set{ORMEL_ObjectStrSet}, Set{ORMEL_ObjectStrOptionLikeSet}}) {
        EXPECT_EQ(set(&object_, "C", ""), 0u);
        const int last = object_.iItemNum - 1;
        EXPECT_EQ(Item(last).uiLength, 0u);
        ASSERT_NE(Address(last), nullptr);
        EXPECT_EQ(Value(last, 1), std::string(1, '\0'));
    }
}

TEST_F(ObjectTest, AClearedPatternLeavesItsOperatorToTheNextValue) {
    ORMEL_ObjectStrOptionLikeSet(&object_, "C", "a%");
    ORMEL_ObjectParaClear(&object_);
    ORMEL_ObjectStrSet(&object_, "C", "b");
    EXPECT_EQ(Item().uiOp, 8u);
    EXPECT_EQ(Value(), "b");
}

// --- The table's name ---

TEST_F(ObjectTest, TheTablesNameIsCopied) {
    EXPECT_EQ(ORMEL_ObjectNameSet(&object_, kLongest.c_str()), 0u);
    EXPECT_EQ(object_.acTableName, kLongest);
    EXPECT_EQ(ORMEL_ObjectNameGet(&object_), object_.acTableName);
    EXPECT_EQ(ORMEL_ObjectNameSet(&object_, kTooLong.c_str()), 0u);
    EXPECT_STREQ(object_.acTableName, "");
    EXPECT_EQ(ORMEL_ObjectNameSet(nullptr, "T"), 0u);
    EXPECT_EQ(ORMEL_ObjectNameSet(&object_, nullptr), 0u);
    EXPECT_EQ(ORMEL_ObjectNameGet(nullptr), nullptr);
}

TEST_F(ObjectTest, ABatchHasATableToo) {
    ORMEL_MULTI_OBJECT batch = {};
    EXPECT_EQ(ORMEL_ObjectNameSetForMulti(&batch, kLongest.c_str()), 0u);
    EXPECT_EQ(batch.acTableName, kLongest);
    EXPECT_EQ(batch.uiRecNum, 0u);
    EXPECT_EQ(static_cast<void *>(ORMEL_ObjectNameGetForMulti(&batch)), &batch) << "the name is its first member";
    EXPECT_EQ(ORMEL_ObjectNameSetForMulti(&batch, kTooLong.c_str()), 0u);
    EXPECT_EQ(batch.uiRecNum, 0u);
    EXPECT_EQ(ORMEL_ObjectNameSetForMulti(nullptr, "T"), 97u);
    EXPECT_EQ(ORMEL_ObjectNameSetForMulti(&batch, nullptr), 97u);
    EXPECT_EQ(ORMEL_ObjectNameGetForMulti(nullptr), nullptr);
}

// --- What a select returns ---

class SelectFieldTest : public ObjectTest {
protected:
    static unit::Lines Error(const std::string &message) { return {"ERROR ORMEL_ObjectSelectFieldSet: " + message}; }
};

TEST_F(SelectFieldTest, NamesAreCopiedIntoBlocksOfTheirOwn) {
    {
        unit::FailingAllocation count(0);
        EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, "ID"), 0u);
        EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, kLongest.c_str()), 0u);
        EXPECT_THAT(count.Sizes(), ElementsAre(28u, 28u));
    }
    EXPECT_EQ(object_.iSelectFieldNum, 2);
    EXPECT_EQ(std::string(Field(0), 28), "ID" + std::string(26, '\0'));
    EXPECT_EQ(Field(1), kLongest);
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(SelectFieldTest, NeedsItsArguments) {
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(nullptr, "ID"), 97u);
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, nullptr), 97u);
    EXPECT_EQ(unit::BytesOf(object_), std::string(sizeof(object_), '\0'));
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(SelectFieldTest, ThirtyTwoNamesFitAndNoMore) {
    for (int i = 0; i < 32; ++i) {
        EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, "ID"), 0u);
    }
    const std::string before = unit::BytesOf(object_);
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, "ID"), 1u);
    EXPECT_EQ(unit::BytesOf(object_), before);
    EXPECT_EQ(Log().Lines(), Error("ORMEL_ObjectSelectFieldSet error. iSelectFieldNum is full."));
}

TEST_F(SelectFieldTest, ACountOutsideItsCapacityTakesNothing) {
    for (int32_t count : {-1, 33, INT32_MIN, INT32_MAX}) {
        object_.iSelectFieldNum = count;
        const std::string before = unit::BytesOf(object_);
        EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, "ID"), 1u);
        EXPECT_EQ(unit::BytesOf(object_), before);
    }
}

TEST_F(SelectFieldTest, WithoutMemoryTheCountStays) {
    {
        unit::FailingAllocation fail(1);
        EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, "NAME"), 1u);
    }
    EXPECT_EQ(object_.iSelectFieldNum, 0);
    EXPECT_EQ(Log().Lines(), Error("ORMEL_MALLOC error. fieldname=NAME."));
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, "NAME"), 0u);
    EXPECT_STREQ(Field(0), "NAME");
}

// A refused name leaves its block in a slot that the count does not cover.
TEST_F(SelectFieldTest, TheBlockOfARefusedNameIsFreedByTheNextSet) {
    size_t before = unit::LiveBlocks();
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, kTooLong.c_str()), 1u);
    EXPECT_EQ(object_.iSelectFieldNum, 0);
    EXPECT_EQ(Log().Lines(), Error("strcpy_s error in ORMEL_ObjectSelectFieldSet."));
    EXPECT_EQ(unit::LiveBlocks(), before + 1);
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, kTooLong.c_str()), 1u);
    EXPECT_EQ(unit::LiveBlocks(), before + 1);
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, "ID"), 0u);
    EXPECT_EQ(unit::LiveBlocks(), before + 1);
    EXPECT_STREQ(Field(0), "ID");
}

TEST_F(SelectFieldTest, TheBlockOfARefusedNameIsFreedByTheClear) {
    size_t before = unit::LiveBlocks();
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, "ID"), 0u);
    EXPECT_EQ(ORMEL_ObjectSelectFieldSet(&object_, kTooLong.c_str()), 1u);
    EXPECT_EQ(unit::LiveBlocks(), before + 2);
    ORMEL_ObjectParaClear(&object_);
    EXPECT_EQ(unit::LiveBlocks(), before);
    EXPECT_EQ(Field(1), nullptr);
}

TEST_F(SelectFieldTest, PagesAreStoredAsTheyAre) {
    EXPECT_EQ(ORMEL_ObjectSelectRowCountSet(&object_, 2, 0xFFFFFFFF, 40), 0u);
    EXPECT_EQ(object_.isLimit, 2u);
    EXPECT_EQ(object_.iRowCounts, 0xFFFFFFFFu);
    EXPECT_EQ(object_.iOffset, 40u);
    EXPECT_EQ(ORMEL_ObjectSelectRowCountSet(nullptr, 1, 1, 1), 97u);
}

// --- Clearing ---

TEST_F(ObjectTest, ClearingFreesValuesAndNamesAndKeepsTheRest) {
    ORMEL_ObjectNameSet(&object_, "T");
    ORMEL_ObjectStrOptionLikeSet(&object_, "NAME", "a%");
    ORMEL_ObjectNullSet(&object_, "ID");
    ORMEL_ObjectSelectFieldSet(&object_, "ID");
    ORMEL_ObjectSelectRowCountSet(&object_, 1, 2, 3);
    ORMEL_RES_ATT_FIELD entry = {};
    object_.astItem[0].pstInfo = &entry;
    ORMEL_OBJECT expected = object_;
    expected.iItemNum = expected.iSelectFieldNum = 0;
    expected.astItem[0].pValue = nullptr;
    expected.apcSelectField[0] = nullptr;
    size_t before = unit::LiveBlocks();
    for (int times = 0; times < 2; ++times) {
        Log().Forget();
        ORMEL_ObjectParaClear(&object_);
        EXPECT_EQ(unit::BytesOf(object_), unit::BytesOf(expected));
        EXPECT_EQ(unit::LiveBlocks(), before - 2);
        EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_ObjectParaClear: Trace in."));
    }
    ORMEL_ObjectParaClear(nullptr);
}

TEST_F(ObjectTest, ACountOutsideItsCapacityIsClearedAsNone) {
    ORMEL_ObjectInt32Set(&object_, "ID", 1);
    for (int32_t count : {-1, 33, INT32_MIN, INT32_MAX}) {
        object_.iItemNum = count;
        object_.iSelectFieldNum = count;
        ORMEL_ObjectParaClear(&object_);
        EXPECT_EQ(object_.iItemNum, 0);
        EXPECT_EQ(object_.iSelectFieldNum, 0);
        EXPECT_EQ(Value(), Bytes(int32_t{1})) << "no value of it is touched";
    }
    object_.iItemNum = 1;
}

} // namespace
