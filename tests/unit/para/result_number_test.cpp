// Numbers of a result.
#include "result_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Bytes;
using unit::Log;
using unit::Target;

namespace {

struct NumberGetter {
    std::string name; // as lines carry it
    uint32_t (*get)(const ORMEL_SELECT_RESULT *, uint32_t row, const char *name, void *out);
    bool fourBytes;
};

const std::vector<NumberGetter> kNumberGetters = {
    {"Int8Get",
     [](const ORMEL_SELECT_RESULT *r, uint32_t row, const char *n, void *out) {
         return ORMEL_ResultInt8Get(r, row, n, static_cast<int32_t *>(out));
     },
     true},
    {"Int16Get",
     [](const ORMEL_SELECT_RESULT *r, uint32_t row, const char *n, void *out) {
         return ORMEL_ResultInt16Get(r, row, n, static_cast<int32_t *>(out));
     },
     true},
    {"Int32Get",
     [](const ORMEL_SELECT_RESULT *r, uint32_t row, const char *n, void *out) {
         return ORMEL_ResultInt32Get(r, row, n, static_cast<int32_t *>(out));
     },
     true},
    {"Int64Get",
     [](const ORMEL_SELECT_RESULT *r, uint32_t row, const char *n, void *out) {
         return ORMEL_ResultInt64Get(r, row, n, static_cast<int64_t *>(out));
     },
     false},
    {"NumberGetOfType1",
     [](const ORMEL_SELECT_RESULT *r, uint32_t row, const char *n, void *out) {
         return ORMEL_ResultNumberGet(r, row, n, out, QDC_TYPE_INT32);
     },
     true},
    {"NumberGetOfType3",
     [](const ORMEL_SELECT_RESULT *r, uint32_t row, const char *n, void *out) {
         return ORMEL_ResultNumberGet(r, row, n, out, QDC_TYPE_DOUBLE);
     },
     false},
};

class NumberTest : public unit::SelectResultTest, public testing::WithParamInterface<NumberGetter> {
protected:
    uint32_t Get(uint32_t row, const char *name) { return GetParam().get(&result_, row, name, alignedTarget_.At()); }

    alignas(8) Target alignedTarget_;
};

TEST_P(NumberTest, StoresFourBytesOrWhatThereIs) {
    EXPECT_EQ(Get(0, "ID"), 0u);
    EXPECT_EQ(alignedTarget_.First(4), Bytes(int32_t{300}));
    EXPECT_TRUE(alignedTarget_.Untouched(4)) << "an INTEGER leaves the other half as it was";
    EXPECT_EQ(Get(0, "BALANCE"), 0u);
    EXPECT_EQ(alignedTarget_.First(GetParam().fourBytes ? 4 : 8),
              std::string(GetParam().fourBytes ? 4 : 8, '\xFF').replace(0, 1, "\xFE"));
    EXPECT_TRUE(alignedTarget_.Untouched(GetParam().fourBytes ? 4 : 8));
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(NumberTest, ReadsEveryLength) {
    struct {
        std::string value, asInteger;
    } cases[] = {{"\xFF", "\xFF\xFF\xFF\xFF"},
                 {"ab", std::string("ab\0\0", 4)},
                 {"abc", std::string("abc\0", 4)},
                 {"abcd", "abcd"},
                 {"abcde", "abcd"},
                 {"abcdef", "abcd"},
                 {"abcdefg", "abcd"},
                 {"abcdefgh", "abcd"},
                 {"abcdefghi", "abcd"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.value.size());
        Single(11, c.value);
        alignedTarget_ = Target();
        EXPECT_EQ(Get(0, "C"), 0u);
        const std::string stored = GetParam().fourBytes ? c.asInteger : c.value;
        EXPECT_EQ(alignedTarget_.First(stored.size()), stored);
        EXPECT_TRUE(alignedTarget_.Untouched(stored.size()));
    }
}

TEST_P(NumberTest, AValueWithoutBytesIsStoredAndReported) {
    EXPECT_EQ(Get(0, "BYTES"), 69u);
    const size_t stored = GetParam().fourBytes ? 4 : 0;
    EXPECT_EQ(alignedTarget_.First(stored), std::string(stored, '\0'));
    EXPECT_TRUE(alignedTarget_.Untouched(stored));
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR ORMEL_ResultNumberGet: fieldlen is 0 fieldname=BYTES."));
}

TEST_P(NumberTest, WhatIsNotThereIsReportedAndNotStored) {
    const std::string error = "ERROR ORMEL_ResultNumberGet: ";
    EXPECT_EQ(Get(0, "NOBODY"), 5u);
    EXPECT_EQ(Get(1, "ID"), 5u);
    EXPECT_EQ(Get(2, "ID"), 5u);
    EXPECT_EQ(Get(0xFFFFFFFF, "ID"), 5u);
    EXPECT_TRUE(alignedTarget_.Untouched(0));
    EXPECT_THAT(Log().Lines(),
                ElementsAre(error + "pos is error fieldname=NOBODY.", error + "dbGetValueFromRes is NULL fieldname=ID.",
                            error + "dbGetValueFromRes is NULL fieldname=ID.",
                            error + "dbGetValueFromRes is NULL fieldname=ID."));
    Log().Forget();
    result_.pstRes = nullptr;
    EXPECT_EQ(Get(0, "ID"), 5u);
    result_.pstResAtt = nullptr;
    EXPECT_EQ(Get(0, "ID"), 5u);
    EXPECT_THAT(Log().Lines(),
                ElementsAre(error + "dbGetValueFromRes is NULL fieldname=ID.", error + "pos is error fieldname=ID."));
}

TEST_P(NumberTest, NeedsItsArguments) {
    EXPECT_EQ(GetParam().get(nullptr, 0, "ID", alignedTarget_.At()), 97u);
    EXPECT_EQ(GetParam().get(&result_, 0, nullptr, alignedTarget_.At()), 97u);
    EXPECT_EQ(GetParam().get(&result_, 0, "ID", nullptr), 97u);
    EXPECT_TRUE(alignedTarget_.Untouched(0));
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Getters, NumberTest, testing::ValuesIn(kNumberGetters),
                         [](const auto &info) { return info.param.name; });

} // namespace
