#include "result_test.h"

#include "ormeldb/res_att.h"

using testing::IsEmpty;
using unit::Bytes;
using unit::Log;
using unit::Target;

namespace {

constexpr uint32_t kInvalid = 0xFFFFFFFF;

using SelectResultTest = unit::SelectResultTest;

// --- Values by address ---

using ByPos = const void *(*)(const ORMEL_SELECT_RESULT *, uint32_t, int32_t);
using ByName = const void *(*)(const ORMEL_SELECT_RESULT *, uint32_t, const char *);
using R = const ORMEL_SELECT_RESULT *;

const ByPos kByPos[] = {
    [](R r, uint32_t row, int32_t pos) -> const void * { return ORMEL_ResultBinaryGetByPos(r, row, pos); },
    [](R r, uint32_t row, int32_t pos) -> const void * { return ORMEL_ResultTextGetByPos(r, row, pos); },
    [](R r, uint32_t row, int32_t pos) -> const void * { return ORMEL_ResultJsonGetByPos(r, row, pos); },
    [](R r, uint32_t row, int32_t pos) -> const void * { return ORMEL_ResultJsonbGetByPos(r, row, pos); },
    [](R r, uint32_t row, int32_t pos) -> const void * { return ORMEL_ResultGetFieldValue(r, row, pos); },
};
const ByName kByName[] = {
    [](R r, uint32_t row, const char *name) -> const void * { return ORMEL_ResultBinaryGet(r, row, name); },
    [](R r, uint32_t row, const char *name) -> const void * { return ORMEL_ResultStrGet(r, row, name); },
    [](R r, uint32_t row, const char *name) -> const void * { return ORMEL_ResultTextGet(r, row, name); },
    [](R r, uint32_t row, const char *name) -> const void * { return ORMEL_ResultJsonGet(r, row, name); },
    [](R r, uint32_t row, const char *name) -> const void * { return ORMEL_ResultJsonbGet(r, row, name); },
};

TEST_F(SelectResultTest, GivesTheAddressOfAValueByPosition) {
    ORMEL_SELECT_RESULT rowless = {att_.get(), nullptr, 2};
    for (ByPos get : kByPos) {
        EXPECT_EQ(get(&result_, 0, 2), rows_->ppRows[0][2].pValue);
        EXPECT_NE(get(&result_, 0, 3), nullptr) << "no bytes are not NULL";
        EXPECT_EQ(get(&result_, 1, 2), nullptr);
        EXPECT_EQ(get(&result_, 2, 0), nullptr);
        EXPECT_EQ(get(&result_, 0, 5), nullptr);
        EXPECT_EQ(get(&result_, 0, -1), nullptr);
        EXPECT_EQ(get(&result_, 0, INT32_MIN), nullptr);
        EXPECT_EQ(get(&rowless, 0, 0), nullptr);
        EXPECT_EQ(get(nullptr, 0, 0), nullptr);
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(SelectResultTest, GivesTheAddressOfAValueByName) {
    ORMEL_SELECT_RESULT rowless = {att_.get(), nullptr, 2};
    ORMEL_SELECT_RESULT undescribed = {nullptr, rows_.get(), 2};
    for (ByName get : kByName) {
        EXPECT_EQ(get(&result_, 0, "NAME"), rows_->ppRows[0][2].pValue);
        EXPECT_EQ(get(&result_, 0, "name"), rows_->ppRows[0][2].pValue) << "whatever the case";
        EXPECT_EQ(get(&result_, 0, "Id"), rows_->ppRows[0][0].pValue);
        EXPECT_EQ(get(&result_, 1, "NAME"), nullptr);
        EXPECT_EQ(get(&result_, 2, "NAME"), nullptr);
        EXPECT_EQ(get(&result_, 0, "NOBODY"), nullptr);
        EXPECT_EQ(get(&result_, 0, ""), nullptr);
        EXPECT_EQ(get(&result_, 0, nullptr), nullptr);
        EXPECT_EQ(get(&rowless, 0, "NAME"), nullptr);
        EXPECT_EQ(get(&undescribed, 0, "NAME"), nullptr);
        EXPECT_EQ(get(nullptr, 0, "NAME"), nullptr);
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

// --- Names that were looked up before ---

// Descriptors come and go, and one may lie where another lay.
class NameTest : public SelectResultTest {
protected:
    // Makes the result's descriptor, where it lies, one of other columns.
    void Describe(const std::vector<std::string> &names) {
        ASSERT_LE(names.size(), 5u);
        for (size_t i = 0; i < names.size(); ++i) {
            std::strncpy(att_->astField[i].attname, names[i].c_str(), ORMEL_NAME_SIZE - 1);
        }
        att_->iAttNum = static_cast<int32_t>(names.size());
    }
    int32_t Find(const char *name) const {
        return static_cast<int32_t>(ORMEL_GetFieldIdByNameFromResAttr(att_.get(), name));
    }
};

TEST_F(NameTest, AreFoundAnewWhereTheDescriptorBecameAnother) {
    static const char name[] = "NAME";
    EXPECT_EQ(Find(name), 2);
    Describe({"NAME", "ID"});
    EXPECT_EQ(Find(name), 0);
    EXPECT_EQ(ORMEL_ResultStrGet(&result_, 0, name), rows_->ppRows[0][0].pValue);
    Describe({"ID", "BALANCE"});
    EXPECT_EQ(Find(name), -1);
    EXPECT_EQ(ORMEL_ResultStrGet(&result_, 0, name), nullptr);
    Describe({"A", "B", "C", "name"});
    EXPECT_EQ(Find(name), 3);
    Describe({"A", "B", "C"});
    EXPECT_EQ(Find(name), -1) << "the column lies past the end";
    att_->iAttNum = -1;
    EXPECT_EQ(Find(name), -1);
    att_->iAttNum = 5;
}

TEST_F(NameTest, AreFoundAnewWhereTheTextBecameAnother) {
    char name[8] = "ID";
    EXPECT_EQ(Find(name), 0);
    std::strcpy(name, "SIZE");
    EXPECT_EQ(Find(name), 4);
    std::strcpy(name, "NOBODY");
    EXPECT_EQ(Find(name), -1);
    std::strcpy(name, "id");
    EXPECT_EQ(Find(name), 0);
}

TEST_F(NameTest, ManyNamesKeepTheirColumns) {
    auto wide = unit::Describe("WIDE", unit::Integers(1000));
    std::vector<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        names.push_back("c" + std::to_string(i));
    }
    for (int round = 0; round < 2; ++round) {
        for (uint32_t i = 0; i < 1000; ++i) {
            EXPECT_EQ(ORMEL_GetFieldIdByNameFromResAttr(wide.get(), names[i].c_str()), i);
        }
    }
}

// --- Cells ---

TEST_F(SelectResultTest, TellsItsSize) {
    EXPECT_EQ(ORMEL_SelectResultRecNumGet(&result_), 2u);
    EXPECT_EQ(ORMEL_ResultGetFieldNum(&result_), 5u);
    EXPECT_EQ(ORMEL_SelectResultRecNumGet(nullptr), 0u);
    EXPECT_EQ(ORMEL_ResultGetFieldNum(nullptr), 0u);
    result_.pstRes = nullptr;
    EXPECT_EQ(ORMEL_ResultGetFieldNum(&result_), 0u);
}

TEST_F(SelectResultTest, TellsLengths) {
    struct {
        uint32_t row;
        int32_t column;
        const char *name;
        uint32_t length;
    } cases[] = {{0, 0, "id", 4},   {0, 2, "NAME", 4},   {0, 3, "BYTES", 0},          {1, 2, "NAME", 0},
                 {2, 2, "NAME", 0}, {0, 5, "NOBODY", 0}, {0, INT32_MIN, "NOBODY", 0}, {0, -1, "", 0}};
    for (const auto &c : cases) {
        EXPECT_EQ(ORMEL_ResultGetFieldLengthByPos(&result_, c.row, c.column), c.length) << c.name;
        EXPECT_EQ(ORMEL_ResultGetFieldLength(&result_, c.row, c.name), c.length) << c.name;
    }
    EXPECT_EQ(ORMEL_ResultGetFieldLengthByPos(nullptr, 0, 0), kInvalid);
    EXPECT_EQ(ORMEL_ResultGetFieldLength(nullptr, 0, "ID"), kInvalid);
    EXPECT_EQ(ORMEL_ResultGetFieldLength(&result_, 0, nullptr), kInvalid);
    result_.pstRes = nullptr;
    EXPECT_EQ(ORMEL_ResultGetFieldLengthByPos(&result_, 0, 0), kInvalid);
    EXPECT_EQ(ORMEL_ResultGetFieldLength(&result_, 0, "ID"), kInvalid);
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(SelectResultTest, TellsTypesByTheFirstRow) {
    EXPECT_EQ(ORMEL_ResultGetFieldType(&result_, 2), 9u);
    EXPECT_EQ(ORMEL_ResultGetFieldType(&result_, 5), 0u);
    EXPECT_EQ(ORMEL_ResultGetFieldType(&result_, -1), 0u);
    EXPECT_EQ(ORMEL_ResultGetFieldType(nullptr, 0), 0u);
    result_.pstRes = nullptr;
    EXPECT_EQ(ORMEL_ResultGetFieldType(&result_, 0), 0u);
}

TEST_F(SelectResultTest, TheOffsetOfAFieldIsItsLength) {
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(&result_, 0), 4u);
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(&result_, 2), 21u);
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(&result_, 5), kInvalid);
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(&result_, INT32_MAX), kInvalid);
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(&result_, -1), kInvalid);
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(nullptr, 0), kInvalid);
    result_.pstResAtt = nullptr;
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(&result_, 0), kInvalid);
}

TEST_F(SelectResultTest, StoresAValueByItsOwnType) {
    for (auto [column, stored] : std::vector<std::pair<int32_t, std::string>>{{0, Bytes(int32_t{300})},
                                                                              {1, Bytes(int64_t{-2})},
                                                                              {2, std::string("Ann\0", 4)},
                                                                              {3, ""},
                                                                              {4, Bytes(2.5)}}) {
        Target target;
        EXPECT_EQ(ORMEL_ResultSetFieldValue(&result_, 0, column, target.At()), 0u);
        EXPECT_EQ(target.First(stored.size()), stored);
        EXPECT_TRUE(target.Untouched(stored.size()));
    }
    for (uint16_t type : std::vector<uint16_t>{1, 25}) {
        Target target;
        Single(type, "abc");
        EXPECT_EQ(ORMEL_ResultSetFieldValue(&result_, 0, 0, target.At()), 0u);
        EXPECT_EQ(target.First(4), std::string("abc\0", 4));
        EXPECT_TRUE(target.Untouched(4));
    }
}

TEST_F(SelectResultTest, StoresNothingThatIsNotThere) {
    Target target;
    EXPECT_EQ(ORMEL_ResultSetFieldValue(&result_, 1, 0, target.At()), 5u);
    EXPECT_EQ(ORMEL_ResultSetFieldValue(&result_, 2, 0, target.At()), 5u);
    EXPECT_EQ(ORMEL_ResultSetFieldValue(&result_, 0xFFFFFFFF, 0, target.At()), 5u);
    EXPECT_EQ(ORMEL_ResultSetFieldValue(&result_, 0, -1, target.At()), 5u);
    EXPECT_EQ(ORMEL_ResultSetFieldValue(&result_, 0, 5, target.At()), 5u);
    EXPECT_EQ(ORMEL_ResultSetFieldValue(nullptr, 0, 0, target.At()), 5u);
    EXPECT_EQ(ORMEL_ResultSetFieldValue(&result_, 0, 0, nullptr), 5u);
    EXPECT_TRUE(target.Untouched(0));
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

} // namespace
