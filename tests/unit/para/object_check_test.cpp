// What a table's descriptor says of a request object.
#include <functional>
#include <new>

#include "ormeldb/object.h"
#include "ormeldb/res_att.h"
#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using unit::Log;

namespace {

const std::string kCheck = "ORMEL_ObjectCheck: ";

class ObjectCheckTest : public unit::UnitTest {
protected:
    void SetUp() override { Renew(); }
    void TearDown() override { Clear(); }

    // An object that names the table and nothing else.
    void Renew() {
        Clear();
        object_ = {};
        ORMEL_ObjectNameSet(&object_, "PERSON");
        Log().Forget();
    }

    // The entry that an item was bound to. The record is packed: its pointers are read by value.
    ORMEL_RES_ATT_FIELD *EntryOf(int i) const { return object_.astItem[i].pstInfo; }
    uint32_t Check() { return ORMEL_ObjectCheck(&object_, att_.get()); }

    // Checks the object that `make` makes: its code and, after the first line, what is logged.
    void Expect(const char *what, const std::function<void()> &make, uint32_t code, const unit::Lines &lines = {}) {
        SCOPED_TRACE(what);
        using unit::operator+;
        Renew();
        make();
        EXPECT_EQ(Check(), code);
        EXPECT_EQ(Log().Lines(), unit::Lines{"DEBUG " + kCheck + "Trace in."} + lines);
    }

    // PERSON and a column that has a format and no width.
    unit::Descriptor att_ = unit::Describe("PERSON", [] {
        auto columns = unit::PersonColumns();
        columns.push_back({"WIDTHLESS", 1, 0, 1});
        return columns;
    }());
    ORMEL_OBJECT object_{};

private:
    void Clear() { ORMEL_ObjectParaClear(&object_); }
};

// Its pointers are then at odd places, and in a container every other request lies so.
TEST_F(ObjectCheckTest, ARequestLiesAtAnyMultipleOfFour) {
    alignas(8) unsigned char block[sizeof(ORMEL_OBJECT) + 4];
    for (size_t at : {0, 4}) {
        auto *object = new (block + at) ORMEL_OBJECT{};
        ORMEL_ObjectNameSet(object, "PERSON");
        ORMEL_ObjectInt32Set(object, "ID", 1);
        ORMEL_ObjectStrSet(object, "NAME", "Ann");
        ORMEL_ObjectSelectFieldSet(object, "NAME");
        ORMEL_ObjectSelectFieldSet(object, "ID");
        EXPECT_EQ(ORMEL_ObjectCheck(object, att_.get()), 0u) << at;
        for (int i : {0, 1}) {
            ORMEL_RES_ATT_FIELD *entry = object->astItem[i].pstInfo;
            EXPECT_EQ(entry, &att_->astField[i]) << at;
        }
        ORMEL_ObjectParaClear(object);
    }
}

TEST_F(ObjectCheckTest, ItemsAreBoundToTheirColumns) {
    ORMEL_ObjectInt64Set(&object_, "balance", 1);
    ORMEL_ObjectInt32Set(&object_, "ID", 1);
    ORMEL_ObjectStrSet(&object_, "Name", "Ann");
    ORMEL_ObjectSelectFieldSet(&object_, "name");
    EXPECT_EQ(Check(), 0u);
    EXPECT_EQ(EntryOf(0), &att_->astField[2]);
    EXPECT_EQ(EntryOf(1), &att_->astField[0]);
    EXPECT_EQ(EntryOf(2), &att_->astField[1]);
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG " + kCheck + "Trace in."));
}

TEST_F(ObjectCheckTest, ATableNeedsAName) {
    Expect(
        "nothing but the name", [] {}, 0);
    Expect(
        "no name", [&] { object_.acTableName[0] = '\0'; }, 98);
    Expect(
        "no end", [&] { std::memset(object_.acTableName, 'T', sizeof(object_.acTableName)); }, 98);
}

TEST_F(ObjectCheckTest, ItemsNeedTheNameOfAColumn) {
    Expect(
        "an empty name", [&] { ORMEL_ObjectInt32Set(&object_, "", 1); }, 98);
    Expect(
        "an empty name after a good one",
        [&] {
            ORMEL_ObjectInt32Set(&object_, "ID", 1);
            ORMEL_ObjectInt32Set(&object_, "", 1);
        },
        98);
    EXPECT_EQ(EntryOf(0), &att_->astField[0]);
    Expect(
        "a name that did not fit", [&] { ORMEL_ObjectInt32Set(&object_, std::string(28, 'N').c_str(), 1); }, 98);
    Expect("an unknown name", [&] { ORMEL_ObjectInt32Set(&object_, "NOBODY", 1); }, 98,
           {"INFO " + kCheck + "pstInfo is NULL fieldname=NOBODY."});
    EXPECT_EQ(EntryOf(0), nullptr);
}

TEST_F(ObjectCheckTest, ANameWithoutEndIsReadNoFurtherThanItsRoom) {
    ORMEL_ObjectInt32Set(&object_, "ID", 1);
    std::memset(object_.astItem[0].acName, 'X', ORMEL_NAME_SIZE);
    EXPECT_EQ(Check(), 98u);
    EXPECT_EQ(Log().Lines().back(), "INFO " + kCheck + "pstInfo is NULL fieldname=" + std::string(28, 'X') + ".");
}

// The name of the column is the item's first 27 characters.
TEST_F(ObjectCheckTest, ANameWithoutEndIsNoColumns) {
    const std::string longest(27, 'X');
    att_ = unit::Describe("PERSON", {{longest, 1, 4, 1}});
    ORMEL_ObjectInt32Set(&object_, longest.c_str(), 1);
    EXPECT_EQ(Check(), 0u);
    object_.astItem[0].acName[27] = 'X';
    EXPECT_EQ(Check(), 98u);
}

TEST_F(ObjectCheckTest, ASelectFieldWithoutEndIsReadNoFurtherThanItsBlock) {
    ORMEL_ObjectSelectFieldSet(&object_, "ID");
    std::memset(object_.apcSelectField[0], 'X', ORMEL_NAME_SIZE);
    EXPECT_EQ(Check(), 98u);
}

TEST_F(ObjectCheckTest, ValuesHaveTheirColumnsWidth) {
    const auto wrong = [](int width, int length) {
        return unit::Lines{"DEBUG " + kCheck + "pstInfo: len=" + std::to_string(width) +
                           ", format=1; pstItem: len:" + std::to_string(length)};
    };
    Expect(
        "wider than its column", [&] { ORMEL_ObjectInt64Set(&object_, "ID", 1); }, 98, wrong(4, 8));
    EXPECT_EQ(EntryOf(0), nullptr);
    Expect(
        "narrower than its column", [&] { ORMEL_ObjectInt32Set(&object_, "BALANCE", 1); }, 98, wrong(8, 4));
    Expect(
        "an empty text", [&] { ORMEL_ObjectStrSet(&object_, "ID", ""); }, 98, wrong(4, 0));
    Expect(
        "a text longer than its column", [&] { ORMEL_ObjectStrSet(&object_, "NAME", std::string(99, 'n').c_str()); },
        0);
    Expect(
        "an empty text in a column of no format", [&] { ORMEL_ObjectStrSet(&object_, "NAME", ""); }, 0);
    Expect(
        "any width where the column has none", [&] { ORMEL_ObjectInt64Set(&object_, "WIDTHLESS", 1); }, 0);
}

TEST_F(ObjectCheckTest, AnItemWithoutAValuePassesWhateverTheWidth) {
    for (const char *column : {"ID", "NAME", "BALANCE", "WIDTHLESS"}) {
        Expect(
            column, [&] { ORMEL_ObjectNullSet(&object_, column); }, 0);
        EXPECT_NE(EntryOf(0), nullptr);
    }
    Expect("but it has a column", [&] { ORMEL_ObjectNullSet(&object_, "NOBODY"); }, 98,
           {"INFO " + kCheck + "pstInfo is NULL fieldname=NOBODY."});
}

// A length without a value is a mistake, not NULL.
TEST_F(ObjectCheckTest, ALostValueStillHasItsWidth) {
    ORMEL_ObjectNullSet(&object_, "ID");
    object_.astItem[0].uiLength = 3;
    EXPECT_EQ(ORMEL_ObjectCheck(&object_, att_.get()), 98u);
    object_.astItem[0].uiLength = 4;
    EXPECT_EQ(ORMEL_ObjectCheck(&object_, att_.get()), 0u);
}

TEST_F(ObjectCheckTest, SelectFieldsAreColumns) {
    Expect(
        "two of them",
        [&] {
            ORMEL_ObjectSelectFieldSet(&object_, "ID");
            ORMEL_ObjectSelectFieldSet(&object_, "balance");
        },
        0);
    Expect(
        "an empty name", [&] { ORMEL_ObjectSelectFieldSet(&object_, ""); }, 98);
    Expect(
        "an empty name after a good one",
        [&] {
            ORMEL_ObjectSelectFieldSet(&object_, "ID");
            ORMEL_ObjectSelectFieldSet(&object_, "");
        },
        98);
    Expect("an unknown name", [&] { ORMEL_ObjectSelectFieldSet(&object_, "NOBODY"); }, 98,
           {"INFO " + kCheck + "pstInfo1 is NULL fieldname=NOBODY."});
    Expect(
        "no name", [&] { object_.iSelectFieldNum = 1; }, 98);
}

TEST_F(ObjectCheckTest, ItemsAreCheckedBeforeSelectFields) {
    Expect("both unknown",
           [&] {
               ORMEL_ObjectSelectFieldSet(&object_, "NEITHER");
               ORMEL_ObjectInt32Set(&object_, "NOBODY", 1);
           },
           98, {"INFO " + kCheck + "pstInfo is NULL fieldname=NOBODY."});
}

TEST_F(ObjectCheckTest, CountsOutsideTheirCapacityAreRefused) {
    for (int32_t count : {-1, 33, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(count);
        Expect(
            "items", [&] { object_.iItemNum = count; }, 98);
        Expect(
            "select fields", [&] { object_.iSelectFieldNum = count; }, 98);
    }
    object_.iItemNum = object_.iSelectFieldNum = 0;
}

TEST_F(ObjectCheckTest, NeedsBoth) {
    EXPECT_EQ(ORMEL_ObjectCheck(nullptr, att_.get()), 98u);
    EXPECT_EQ(ORMEL_ObjectCheck(&object_, nullptr), 98u);
    EXPECT_EQ(ORMEL_ObjectCheck(nullptr, nullptr), 98u);
}

} // namespace
