// Results compared, made and released.
#include "ormeldb/res_att.h"
#include "ormeldb/result.h"
#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Log;
using unit::Value;

namespace {

constexpr auto kNull = std::nullopt;

// --- Comparing ---

class DiffTest : public unit::UnitTest {
protected:
    // A result of one row whose columns are "C0", "C1" ...
    class Row {
    public:
        explicit Row(const std::vector<Value> &values) : rows_(unit::MakeResult({values})) {
            for (size_t i = 0; i < values.size(); ++i) {
                std::strcpy(rows_->ppRows[0][i].acName, ("C" + std::to_string(i)).c_str());
            }
            result = {nullptr, rows_.get(), 1};
        }
        ORMEL_SELECT_RESULT result;

    private:
        unit::Result rows_;
    };

    DiffTest() : names_(300) {}

    uint32_t Diff(const Row &a, const Row &b, int32_t max = 300) {
        count_ = 99;
        std::memset(names_.data(), 0, names_.size() * sizeof(names_[0]));
        return ORMEL_ResultDiffFieldsGet(&a.result, &b.result, reinterpret_cast<char(*)[28]>(names_.data()), max,
                                         &count_);
    }
    // The names that were written.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (size_t i = 0; i < names_.size() && names_[i][0] != '\0'; ++i) {
            names.emplace_back(names_[i].data());
        }
        return names;
    }

    std::vector<std::array<char, 28>> names_;
    uint8_t count_ = 99;
};

TEST_F(DiffTest, NamesTheColumnsThatDiffer) {
    Row a({{1, "1234"}, {9, "abc"}, {9, "abc"}, {9, "same"}});
    Row b({{1, "1235"}, {9, "abcd"}, {9, kNull}, {9, "same"}});
    EXPECT_EQ(Diff(a, b), 0u);
    EXPECT_EQ(count_, 3);
    EXPECT_THAT(Names(), ElementsAre("C0", "C1", "C2"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_ResultDiffFieldsGet: Trace in."));
    EXPECT_EQ(Diff(a, a), 0u);
    EXPECT_EQ(count_, 0);
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(DiffTest, NullAndNoBytesAreTheSame) {
    Row a({{12, ""}, {12, kNull}, {9, kNull}});
    Row b({{12, kNull}, {12, kNull}, {9, std::string(1, '\0')}});
    EXPECT_EQ(Diff(a, b), 0u);
    EXPECT_THAT(Names(), ElementsAre("C2")) << "an empty text has its terminator";
}

TEST_F(DiffTest, NamesAreThoseOfTheFirst) {
    Row a({{1, "1234"}});
    Row b({{1, "5678"}});
    std::strcpy(b.result.pstRes->ppRows[0][0].acName, "OTHER");
    EXPECT_EQ(Diff(a, b), 0u);
    EXPECT_THAT(Names(), ElementsAre("C0"));
}

TEST_F(DiffTest, AnotherTypeEndsTheComparison) {
    Row a({{1, "1234"}, {9, "abc"}, {9, "abc"}});
    Row b({{1, "1235"}, {8, "abc"}, {9, "abd"}});
    EXPECT_EQ(Diff(a, b), 1u);
    EXPECT_EQ(count_, 99) << "it is not written";
    EXPECT_THAT(Names(), ElementsAre("C0"));
}

TEST_F(DiffTest, OnlyResultsOfOneRecordCompare) {
    Row a({{1, "1234"}});
    Row b({{1, "5678"}});
    for (uint32_t records : {0u, 2u, 0xFFFFFFFFu}) {
        a.result.uiRecNum = records;
        EXPECT_EQ(Diff(a, b), 1u);
        EXPECT_EQ(Diff(b, a), 1u);
        b.result.uiRecNum = records;
        EXPECT_EQ(Diff(a, b), 1u) << "of both alike";
        a.result.uiRecNum = b.result.uiRecNum = 1;
    }
    EXPECT_EQ(count_, 99);
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(DiffTest, ColumnsMustBeAsManyAndFit) {
    Row one({{1, "1234"}});
    Row two({{1, "5678"}, {1, "5678"}});
    EXPECT_EQ(Diff(one, two), 1u);
    EXPECT_EQ(Diff(two, one), 1u);
    EXPECT_EQ(Diff(two, two, 2), 0u);
    EXPECT_EQ(Diff(two, two, 1), 1u);
    EXPECT_EQ(Diff(two, two, 0), 1u);
    EXPECT_EQ(Diff(two, two, -1), 1u);
    EXPECT_EQ(count_, 99);
}

TEST_F(DiffTest, NeedsItsArguments) {
    Row a({{1, "1234"}});
    char name[1][28] = {"#"};
    EXPECT_EQ(ORMEL_ResultDiffFieldsGet(nullptr, &a.result, name, 1, &count_), 1u);
    EXPECT_EQ(ORMEL_ResultDiffFieldsGet(&a.result, nullptr, name, 1, &count_), 1u);
    EXPECT_EQ(ORMEL_ResultDiffFieldsGet(&a.result, &a.result, nullptr, 1, &count_), 1u);
    EXPECT_EQ(ORMEL_ResultDiffFieldsGet(&a.result, &a.result, name, 1, nullptr), 1u);
    EXPECT_STREQ(name[0], "#");
    EXPECT_EQ(count_, 99);
}

TEST_F(DiffTest, CountsModulo256) {
    Row a(std::vector<Value>(257, {1, "1234"}));
    Row b(std::vector<Value>(257, {1, "5678"}));
    EXPECT_EQ(Diff(a, b), 0u);
    EXPECT_EQ(count_, 1);
    EXPECT_EQ(Names().size(), 256u);
    EXPECT_STREQ(names_[0].data(), "C256") << "the names begin anew";
    EXPECT_STREQ(names_[255].data(), "C255");
}

// --- Making and releasing ---

class ReleaseTest : public unit::UnitTest {
protected:
    void SetUp() override {
        ORMEL_ResAttMgrInit();
        Log().Forget();
    }
    void TearDown() override { ORMEL_ResAttMgrUnInit(); }

    static ORMEL_RES_ATT *NewDescriptor() { return unit::Describe("T", unit::PersonColumns()).release(); }
    static DB_RESULT *NewRows() { return unit::MakeResult({{{9, "abc"}, {9, kNull}}}).release(); }
};

TEST_F(ReleaseTest, TakesWhatItIsGiven) {
    ORMEL_RES_ATT att = {};
    DB_RESULT rows = {};
    ORMEL_SELECT_RESULT result = {};
    ORMEL_SelectResultSet(&result, &att, &rows, 7);
    EXPECT_EQ(result.pstResAtt, &att);
    EXPECT_EQ(result.pstRes, &rows);
    EXPECT_EQ(result.uiRecNum, 7u);
    ORMEL_SelectResultSet(nullptr, &att, &rows, 7);
}

TEST_F(ReleaseTest, ClearingGivesTheDescriptorBackAndFreesTheRows) {
    ORMEL_SELECT_RESULT result = {NewDescriptor(), NewRows(), 1};
    ORMEL_SelectResultClear(&result);
    EXPECT_EQ(unit::BytesOf(result), unit::BytesOf(ORMEL_SELECT_RESULT{}));
    EXPECT_NE(ORMEL_ResAttGet("T"), nullptr) << "given back, it is the cached one";
    EXPECT_EQ(Log().Lines().front(), "DEBUG ORMEL_SelectResultClear: Trace in.");
    EXPECT_EQ(Log().LinesOf("ORMEL_DestoryResAtt").size(), 1u);
    Log().Forget();
    ORMEL_SelectResultClear(&result);
    EXPECT_EQ(unit::BytesOf(result), unit::BytesOf(ORMEL_SELECT_RESULT{}));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_SelectResultClear: Trace in."));
}

TEST_F(ReleaseTest, ACachedDescriptorStaysInTheCache) {
    ORMEL_ResAttPush(NewDescriptor());
    ORMEL_RES_ATT *cached = ORMEL_ResAttGet("T");
    ORMEL_SELECT_RESULT result = {cached, NewRows(), 1};
    ORMEL_SelectResultClear(&result);
    EXPECT_EQ(ORMEL_ResAttGet("T"), cached);
}

TEST_F(ReleaseTest, ClearsResultsThatLackSomething) {
    ORMEL_SELECT_RESULT rowless = {NewDescriptor(), nullptr, 1};
    ORMEL_SELECT_RESULT undescribed = {nullptr, NewRows(), 1};
    ORMEL_SelectResultClear(&rowless);
    ORMEL_SelectResultClear(&undescribed);
    EXPECT_EQ(unit::BytesOf(rowless), unit::BytesOf(ORMEL_SELECT_RESULT{}));
    EXPECT_EQ(unit::BytesOf(undescribed), unit::BytesOf(ORMEL_SELECT_RESULT{}));
    ORMEL_SelectResultClear(nullptr);
}

TEST_F(ReleaseTest, ARowOfACursorLeavesTheDescriptor) {
    auto att = unit::Describe("T", unit::PersonColumns());
    ORMEL_SELECT_RESULT row = {att.get(), NewRows(), 1};
    for (int times = 0; times < 2; ++times) {
        Log().Forget();
        ORMEL_SelectResultClearForFetch(&row);
        EXPECT_EQ(row.pstResAtt, att.get());
        EXPECT_EQ(row.pstRes, nullptr);
        EXPECT_EQ(row.uiRecNum, 0u);
        EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_SelectResultClearForFetch: Trace in."));
    }
    EXPECT_EQ(ORMEL_ResAttGet("T"), nullptr);
    ORMEL_SelectResultClearForFetch(nullptr);
}

} // namespace
