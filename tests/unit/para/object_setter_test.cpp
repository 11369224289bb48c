// What the setters of values have in common.
#include "object_test.h"
#include "support/sample.h"

using testing::IsEmpty;
using unit::Bytes;
using unit::kLongest;
using unit::kTooLong;
using unit::Log;

namespace {

struct Setter {
    std::string name;
    uint32_t (*set)(ORMEL_OBJECT *object, const char *column, bool value); // without the value: NULL in its place
    std::string block;                                                     // the copy that it makes; empty: none
    uint32_t length;
    bool pointer = false; // the value is handed over by address
    uint32_t op = 0;
};

// A failing one of these logs why.
const std::string kLike = "ORMEL_ObjectStrOptionLikeSet";

const char *TextOr(bool value) {
    return value ? "ab%" : nullptr;
}

const std::vector<Setter> kSetters = {
    {"ORMEL_ObjectBinarySet",
     [](ORMEL_OBJECT *o, const char *n, bool v) { return ORMEL_ObjectBinarySet(o, n, v ? "a\0b" : nullptr, 3); },
     std::string("a\0b", 3), 3, true},
    {"ORMEL_ObjectInt8Set", [](ORMEL_OBJECT *o, const char *n, bool) { return ORMEL_ObjectInt8Set(o, n, -1); },
     Bytes(int32_t{-1}), 4},
    {"ORMEL_ObjectInt16Set", [](ORMEL_OBJECT *o, const char *n, bool) { return ORMEL_ObjectInt16Set(o, n, INT16_MIN); },
     Bytes(int32_t{INT16_MIN}), 4},
    {"ORMEL_ObjectInt32Set", [](ORMEL_OBJECT *o, const char *n, bool) { return ORMEL_ObjectInt32Set(o, n, INT32_MIN); },
     Bytes(int32_t{INT32_MIN}), 4},
    {"ORMEL_ObjectInt64Set", [](ORMEL_OBJECT *o, const char *n, bool) { return ORMEL_ObjectInt64Set(o, n, INT64_MIN); },
     Bytes(int64_t{INT64_MIN}), 8},
    {"ORMEL_ObjectStrSet", [](ORMEL_OBJECT *o, const char *n, bool v) { return ORMEL_ObjectStrSet(o, n, TextOr(v)); },
     std::string("ab%\0", 4), 3, true},
    {"ORMEL_ObjectJsonSet", [](ORMEL_OBJECT *o, const char *n, bool v) { return ORMEL_ObjectJsonSet(o, n, TextOr(v)); },
     std::string("ab%\0", 4), 3, true},
    {"ORMEL_ObjectJsonbSet",
     [](ORMEL_OBJECT *o, const char *n, bool v) { return ORMEL_ObjectJsonbSet(o, n, TextOr(v)); },
     std::string("ab%\0", 4), 3, true},
    {"ORMEL_ObjectTextSet", [](ORMEL_OBJECT *o, const char *n, bool v) { return ORMEL_ObjectTextSet(o, n, TextOr(v)); },
     std::string("ab%\0", 4), 3, true},
    {kLike, [](ORMEL_OBJECT *o, const char *n, bool v) { return ORMEL_ObjectStrOptionLikeSet(o, n, TextOr(v)); },
     std::string("ab%\0", 4), 3, true, 8},
    {"ORMEL_ObjectNullSet", [](ORMEL_OBJECT *o, const char *n, bool) { return ORMEL_ObjectNullSet(o, n); }, "", 0},
};

class SetterTest : public unit::ObjectTest, public testing::WithParamInterface<Setter> {
protected:
    uint32_t Set(const char *column = "COLUMN") { return GetParam().set(&object_, column, true); }

    // What a failure logs: only one of the setters says why.
    static unit::Lines Why(const std::string &message) {
        return GetParam().name == kLike ? unit::Lines{"ERROR " + kLike + ": " + message} : unit::Lines{};
    }
};

TEST_P(SetterTest, AppendsAnItemWithACopyOfTheValue) {
    object_.iItemNum = 1;
    {
        unit::FailingAllocation count(0);
        EXPECT_EQ(Set(), 0u);
        auto expected = GetParam().block.empty() ? std::vector<size_t>{} : std::vector<size_t>{GetParam().block.size()};
        EXPECT_EQ(count.Sizes(), expected) << "one block of just that size";
    }
    EXPECT_EQ(object_.iItemNum, 2);
    EXPECT_STREQ(Item(1).acName, "COLUMN");
    EXPECT_EQ(Item(1).uiLength, GetParam().length);
    EXPECT_EQ(Item(1).uiOp, GetParam().op);
    EXPECT_TRUE(Item(1).pstInfo == nullptr);
    if (GetParam().block.empty()) {
        EXPECT_EQ(Address(1), nullptr);
    } else {
        EXPECT_EQ(Value(1, GetParam().block.size() - GetParam().length), GetParam().block);
    }
    EXPECT_EQ(unit::BytesOf(Item(0)), std::string(sizeof(ORMEL_OBJECT_ITEM), '\0')) << "no other item is touched";
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(SetterTest, NeedsItsArguments) {
    for (int32_t items : {0, 32}) {
        object_.iItemNum = items;
        const std::string before = unit::BytesOf(object_);
        EXPECT_EQ(GetParam().set(nullptr, "C", true), 97u);
        EXPECT_EQ(GetParam().set(&object_, nullptr, true), 97u);
        if (GetParam().pointer) {
            EXPECT_EQ(GetParam().set(&object_, "C", false), 97u);
        }
        EXPECT_EQ(unit::BytesOf(object_), before);
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(SetterTest, ThirtyTwoItemsFitAndNoMore) {
    for (int i = 0; i < 32; ++i) {
        EXPECT_EQ(Set(("C" + std::to_string(i)).c_str()), 0u);
    }
    EXPECT_STREQ(Item(31).acName, "C31");
    const std::string before = unit::BytesOf(object_);
    EXPECT_EQ(Set(), 1u);
    EXPECT_EQ(unit::BytesOf(object_), before);
    EXPECT_EQ(Log().Lines(), Why("ORMEL_ObjectStrOptionLikeSet error. iItemNum is full."));
}

TEST_P(SetterTest, ACountOutsideItsCapacityTakesNothing) {
    for (int32_t count : {-1, 33, INT32_MIN, INT32_MAX}) {
        object_.iItemNum = count;
        const std::string before = unit::BytesOf(object_);
        EXPECT_EQ(Set(), 1u);
        EXPECT_EQ(unit::BytesOf(object_), before);
    }
}

TEST_P(SetterTest, ANameThatDoesNotFitIsEmpty) {
    EXPECT_EQ(Set(kLongest.c_str()), 0u);
    EXPECT_EQ(Item(0).acName, kLongest);
    const bool like = GetParam().name == kLike;
    EXPECT_EQ(Set(kTooLong.c_str()), like ? 1u : 0u);
    EXPECT_EQ(object_.iItemNum, like ? 1 : 2);
    EXPECT_STREQ(Item(1).acName, "");
    EXPECT_EQ(Log().Lines(), Why("strcpy_s error in ORMEL_ObjectStrOptionLikeSet."));
    EXPECT_EQ(Set("NEXT"), 0u) << "the next call takes the place";
    EXPECT_STREQ(Item(object_.iItemNum - 1).acName, "NEXT");
}

TEST_P(SetterTest, WithoutMemoryTheCountStays) {
    {
        unit::FailingAllocation fail(1);
        EXPECT_EQ(Set(), GetParam().block.empty() ? 0u : 1u);
    }
    EXPECT_EQ(object_.iItemNum, GetParam().block.empty() ? 1 : 0);
    EXPECT_EQ(Address(0), nullptr);
    EXPECT_EQ(Log().Lines(), Why("ORMEL_MALLOC error."));
    EXPECT_EQ(Set("NEXT"), 0u);
    EXPECT_STREQ(Item(object_.iItemNum - 1).acName, "NEXT");
}

TEST_P(SetterTest, ItemsCanBeSetAnewAfterClearing) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Set("A"), 0u);
        EXPECT_EQ(Set("B"), 0u);
        EXPECT_EQ(object_.iItemNum, 2);
        ORMEL_ObjectParaClear(&object_);
        EXPECT_EQ(object_.iItemNum, 0);
    }
}

TEST_P(SetterTest, TheOperatorOfThePlaceStaysUnlessItIsSet) {
    object_.astItem[0].uiOp = 3;
    EXPECT_EQ(Set(), 0u);
    EXPECT_EQ(Item().uiOp, GetParam().op == 0 ? 3u : GetParam().op);
    ORMEL_ObjectParaClear(&object_);
    EXPECT_EQ(Item().uiOp, GetParam().op == 0 ? 3u : GetParam().op) << "clearing keeps it";
}

INSTANTIATE_TEST_SUITE_P(Setters, SetterTest, testing::ValuesIn(kSetters),
                         [](const auto &info) { return info.param.name.substr(6); });

} // namespace
