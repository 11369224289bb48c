#include "ormeldb/para.h"

#include <list>

#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using unit::BufferOf;
using unit::Bytes;
using unit::Conditions;
using unit::Log;
using unit::MakePerson;
using unit::Person;
using unit::Selection;

namespace {

class ParaTest : public unit::UnitTest {
protected:
    // What a slot holds, its value as bytes.
    struct Slot {
        std::string name;
        std::string value;
        uint32_t format, op, type;
        bool operator==(const Slot &) const = default;
    };
    Slot At(int32_t i) const {
        return {para_.name[i], std::string(static_cast<char *>(para_.value[i]), para_.length[i]), para_.format[i],
                para_.op[i], para_.type[i]};
    }
    bool InCell(int32_t i) const { return para_.value[i] == para_.cell[i]; }

    // Runs a filling that must be refused: code 1, one line at ERROR, nothing written.
    template <class Fill> void ExpectRefused(const char *function, Fill fill) {
        const std::string before = unit::BytesOf(para_);
        Log().Forget();
        EXPECT_EQ(fill(), 1u);
        EXPECT_EQ(unit::BytesOf(para_), before);
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR).size(), 1u);
        EXPECT_EQ(Log().LinesOf(function, KPL_LOG_ERROR).size(), 1u);
    }

    ORMEL_PARA para_{};
    unit::Descriptor att_ = unit::Describe("PERSON", unit::PersonColumns());
    Person person_ = MakePerson(7, "Ann", -1);
    ORMEL_RECORD_BUFFER buffer_ = BufferOf(person_);
};

using ParaByRecordTest = ParaTest;
using ParaByCondTest = ParaTest;

// --- One slot ---

TEST_F(ParaByRecordTest, FillsASlotFromARecord) {
    ORMEL_ParaItemInit(&para_, 5, &buffer_, &att_->astField[2]);
    EXPECT_EQ(At(5), (Slot{"BALANCE", Bytes(int64_t{-1}), 1, 23, 2}));
    EXPECT_TRUE(InCell(5)) << "a value of 8 bytes is copied into the slot's cell";
    EXPECT_EQ(para_.name[5], att_->astField[2].attname);
    person_.balance = 0;
    EXPECT_EQ(At(5).value, Bytes(int64_t{-1}));
}

TEST_F(ParaByRecordTest, PointsAtWiderValuesWhereTheyLie) {
    ORMEL_ParaItemInit(&para_, 0, &buffer_, &att_->astField[1]);
    EXPECT_EQ(At(0), (Slot{"NAME", std::string(person_.name, 21), 0, 23, 9}));
    EXPECT_EQ(para_.value[0], person_.name);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(para_.cell), sizeof(para_.cell)), std::string(256, '\0'));
}

TEST_F(ParaByRecordTest, FillsNoSlotThatThereIsNot) {
    const std::string before = unit::BytesOf(para_);
    for (int32_t i : {-1, 32, INT32_MAX, INT32_MIN}) {
        ORMEL_ParaItemInit(&para_, i, &buffer_, &att_->astField[0]);
    }
    ORMEL_ParaItemInit(nullptr, 0, &buffer_, &att_->astField[0]);
    ORMEL_ParaItemInit(&para_, 0, nullptr, &att_->astField[0]);
    ORMEL_ParaItemInit(&para_, 0, &buffer_, nullptr);
    buffer_.pucData = nullptr;
    ORMEL_ParaItemInit(&para_, 0, &buffer_, &att_->astField[0]);
    EXPECT_EQ(unit::BytesOf(para_), before);
}

TEST_F(ParaByRecordTest, FillsNoSlotFromBehindAStatedEnd) {
    const std::string before = unit::BytesOf(para_);
    const ORMEL_RES_ATT_FIELD &balance = att_->astField[2];
    const uint32_t end = static_cast<uint32_t>(balance.offset + balance.len);
    for (const auto &[length, size] : {std::pair(end - 1, 0U), std::pair(0U, end - 1), std::pair(end, 1U)}) {
        unit::Log().Forget();
        buffer_.usRecLen = static_cast<uint16_t>(length);
        buffer_.uiBufSize = size;
        ORMEL_ParaItemInit(&para_, 0, &buffer_, &balance);
        EXPECT_EQ(unit::BytesOf(para_), before) << length << " " << size;
        EXPECT_EQ(unit::Log().LinesOf("ORMEL_ParaItemInit", KPL_LOG_ERROR).size(), 1u);
    }
    buffer_.usRecLen = static_cast<uint16_t>(end);
    buffer_.uiBufSize = end;
    ORMEL_ParaItemInit(&para_, 0, &buffer_, &balance);
    EXPECT_EQ(At(0).value, Bytes(int64_t{-1}));
}

// --- Fields of a record ---

TEST_F(ParaByRecordTest, TakesEveryColumn) {
    EXPECT_EQ(ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer_, att_.get()), 0u);
    EXPECT_EQ(para_.iFieldNum, 3);
    EXPECT_EQ(para_.iCondNum, 0);
    EXPECT_EQ(At(0), (Slot{"ID", Bytes(int32_t{7}), 1, 23, 1}));
    EXPECT_EQ(At(1), (Slot{"NAME", std::string(person_.name, 21), 0, 23, 9}));
    EXPECT_EQ(At(2), (Slot{"BALANCE", Bytes(int64_t{-1}), 1, 23, 2}));
    EXPECT_FALSE(Log().LinesOf("ORMEL_ParaShow").empty()) << "the list is shown";
}

TEST_F(ParaByRecordTest, TakesSelectedColumnsInTheirOrder) {
    Selection fields({2, 0, 2});
    EXPECT_EQ(ORMEL_ParaFieldUpdateByDsbuf(&para_, fields.Get(), &buffer_, att_.get()), 0u);
    EXPECT_EQ(para_.iFieldNum, 3);
    EXPECT_EQ(At(0).name, "BALANCE");
    EXPECT_EQ(At(1).name, "ID");
    EXPECT_EQ(At(2).name, "BALANCE");
}

TEST_F(ParaByRecordTest, MayTakeNone) {
    Selection none({});
    para_.iFieldNum = 9;
    EXPECT_EQ(ORMEL_ParaFieldUpdateByDsbuf(&para_, none.Get(), &buffer_, att_.get()), 0u);
    EXPECT_EQ(para_.iFieldNum, 0);
}

TEST_F(ParaByRecordTest, TheFirstRecordCounts) {
    Person people[2] = {MakePerson(1, "a", 1), MakePerson(2, "b", 2)};
    ORMEL_RECORD_BUFFER buffer = {33, 2, 66, 0, reinterpret_cast<uint8_t *>(people)};
    EXPECT_EQ(ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer, att_.get()), 0u);
    EXPECT_EQ(At(0).value, Bytes(int32_t{1}));
}

TEST_F(ParaByRecordTest, ThirtyTwoColumnsFitAndNoMore) {
    std::vector<int32_t> values(33);
    auto fits = unit::Describe("T", unit::Integers(32));
    auto wide = unit::Describe("T", unit::Integers(33));
    ORMEL_RECORD_BUFFER buffer = {132, 1, 132, 0, reinterpret_cast<uint8_t *>(values.data())};
    EXPECT_EQ(ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer, fits.get()), 0u);
    EXPECT_EQ(At(31).name, "C31");
    const char *function = "ORMEL_ParaFieldUpdateByDsbuf";
    ExpectRefused(function, [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer, wide.get()); });
    Selection all(std::vector<uint8_t>(33, 0));
    ExpectRefused(function, [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, all.Get(), &buffer, wide.get()); });
    Selection last({32});
    EXPECT_EQ(ORMEL_ParaFieldUpdateByDsbuf(&para_, last.Get(), &buffer, wide.get()), 0u);
    EXPECT_EQ(At(0).name, "C32");
}

TEST_F(ParaByRecordTest, RefusesWhatIsNotThere) {
    const char *function = "ORMEL_ParaFieldUpdateByDsbuf";
    Selection beyond({0, 3});
    ExpectRefused(function, [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, beyond.Get(), &buffer_, att_.get()); });
    ExpectRefused(function, [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, nullptr, att_.get()); });
    ExpectRefused(function, [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer_, nullptr); });
    auto none = unit::Describe("T", {});
    Selection first({0});
    ExpectRefused(function, [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, first.Get(), &buffer_, none.get()); });
    none->iAttNum = -1;
    ExpectRefused(function, [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer_, none.get()); });
    buffer_.pucData = nullptr;
    ExpectRefused(function, [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer_, att_.get()); });
    EXPECT_EQ(ORMEL_ParaFieldUpdateByDsbuf(nullptr, nullptr, &buffer_, att_.get()), 1u);
}

TEST_F(ParaByRecordTest, RefusesRecordsShorterThanTheTables) {
    struct {
        uint16_t recordLength;
        uint32_t bufferSize;
        bool fits;
    } cases[] = {{33, 33, true}, {0, 0, true},   {0, 33, true},   {33, 0, true},   {34, 100, true},
                 {32, 0, false}, {0, 32, false}, {32, 33, false}, {33, 32, false}, {1, 1, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.recordLength << ", " << c.bufferSize);
        buffer_.usRecLen = c.recordLength;
        buffer_.uiBufSize = c.bufferSize;
        auto fill = [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer_, att_.get()); };
        if (c.fits) {
            EXPECT_EQ(fill(), 0u);
        } else {
            ExpectRefused("ORMEL_ParaFieldUpdateByDsbuf", fill);
        }
    }
    Selection first({0});
    buffer_.usRecLen = 4;
    ExpectRefused("ORMEL_ParaFieldUpdateByDsbuf",
                  [&] { return ORMEL_ParaFieldUpdateByDsbuf(&para_, first.Get(), &buffer_, att_.get()); });
}

// --- Conditions of a list ---

TEST_F(ParaByCondTest, TakesConditions) {
    Conditions conditions;
    conditions.Add(0, 2, Bytes(int32_t{9})).Add(1, 8, "A%").Add(0, 77, Bytes(int32_t{1}));
    EXPECT_EQ(ORMEL_ParaCondUpdateByCond(&para_, conditions.Get(), att_.get()), 0u);
    EXPECT_EQ(para_.iFieldNum, 0);
    EXPECT_EQ(para_.iCondNum, 3);
    EXPECT_EQ(At(0), (Slot{"ID", Bytes(int32_t{9}), 1, 2, 1}));
    EXPECT_EQ(At(1), (Slot{"NAME", std::string("A%") + std::string(19, '\0'), 0, 8, 9}));
    EXPECT_EQ(At(2), (Slot{"ID", Bytes(int32_t{1}), 1, 77, 1}));
    EXPECT_TRUE(InCell(0));
    EXPECT_EQ(para_.value[1], conditions.Get()->astCond[1].aucValue);
    EXPECT_FALSE(Log().LinesOf("ORMEL_ParaShow").empty());
}

TEST_F(ParaByCondTest, ConditionsFollowTheFields) {
    EXPECT_EQ(ORMEL_ParaFieldUpdateByDsbuf(&para_, nullptr, &buffer_, att_.get()), 0u);
    Conditions conditions;
    conditions.Add(2, 3, Bytes(int64_t{5}));
    EXPECT_EQ(ORMEL_ParaCondUpdateByCond(&para_, conditions.Get(), att_.get()), 0u);
    EXPECT_EQ(para_.iFieldNum, 3);
    EXPECT_EQ(para_.iCondNum, 1);
    EXPECT_EQ(At(3), (Slot{"BALANCE", Bytes(int64_t{5}), 1, 3, 2}));
    EXPECT_EQ(At(2).value, Bytes(int64_t{-1})) << "no slot touches another";
}

TEST_F(ParaByCondTest, MayTakeNone) {
    para_.iCondNum = 3;
    EXPECT_EQ(ORMEL_ParaCondUpdateByCond(&para_, Conditions().Get(), att_.get()), 0u);
    EXPECT_EQ(para_.iCondNum, 0);
}

TEST_F(ParaByCondTest, FieldsAndConditionsShareThirtyTwoSlots) {
    Conditions conditions;
    for (int i = 0; i < 32; ++i) {
        conditions.Add(0, 0, Bytes(int32_t{i}));
    }
    EXPECT_EQ(ORMEL_ParaCondUpdateByCond(&para_, conditions.Get(), att_.get()), 0u);
    EXPECT_EQ(At(31).value, Bytes(int32_t{31}));
    const char *function = "ORMEL_ParaCondUpdateByCond";
    for (int32_t fields : {1, 32, -1, INT32_MAX}) {
        para_ = {};
        para_.iFieldNum = fields;
        ExpectRefused(function, [&] { return ORMEL_ParaCondUpdateByCond(&para_, conditions.Get(), att_.get()); });
    }
    para_ = {};
    conditions.Add(0, 0, "");
    ExpectRefused(function, [&] { return ORMEL_ParaCondUpdateByCond(&para_, conditions.Get(), att_.get()); });
}

TEST_F(ParaByCondTest, RefusesWhatIsNotThere) {
    const char *function = "ORMEL_ParaCondUpdateByCond";
    Conditions conditions;
    conditions.Add(0, 0, "").Add(3, 0, "");
    ExpectRefused(function, [&] { return ORMEL_ParaCondUpdateByCond(&para_, conditions.Get(), att_.get()); });
    ExpectRefused(function, [&] { return ORMEL_ParaCondUpdateByCond(&para_, nullptr, att_.get()); });
    ExpectRefused(function, [&] { return ORMEL_ParaCondUpdateByCond(&para_, conditions.Get(), nullptr); });
    EXPECT_EQ(ORMEL_ParaCondUpdateByCond(nullptr, conditions.Get(), att_.get()), 1u);
}

TEST_F(ParaByCondTest, AConditionHolds256Bytes) {
    Conditions conditions;
    conditions.Add(0, 0, std::string(256, 'v'));
    struct {
        uint16_t type, size;
        uint32_t length; // 0: refused
    } cases[] = {{8, 256, 256},  {8, 257, 256},  {9, 4001, 256}, {10, 512, 256}, {11, 256, 256},
                 {12, 256, 256}, {23, 256, 256}, {11, 257, 0},   {12, 4000, 0},  {23, 257, 0},
                 {13, 44, 44},   {14, 44, 44},   {13, 300, 256}, {14, 300, 0}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type << " of " << c.size);
        para_ = {};
        auto att = unit::Describe("T", {{"C", c.type, c.size}});
        auto fill = [&] { return ORMEL_ParaCondUpdateByCond(&para_, conditions.Get(), att.get()); };
        if (c.length == 0) {
            ExpectRefused("ORMEL_ParaCondUpdateByCond", fill);
        } else {
            EXPECT_EQ(fill(), 0u);
            EXPECT_EQ(At(0).value, std::string(c.length, 'v'));
        }
    }
}

// --- Request objects ---

class ParaByObjectTest : public ParaTest {
protected:
    // Adds an item as the setters and the check leave it.
    void Add(const char *name, const std::string &value, uint32_t op, int32_t column) {
        ORMEL_OBJECT_ITEM &item = object_.astItem[object_.iItemNum];
        std::strcpy(item.acName, name);
        values_.push_back(value);
        item.uiLength = static_cast<uint32_t>(value.size());
        item.pValue = values_.back().data();
        item.uiOp = op;
        item.pstInfo = &att_->astField[column];
        ++object_.iItemNum;
    }

    void Page() {
        object_.iSelectFieldNum = 2;
        object_.apcSelectField[0] = name_;
        object_.apcSelectField[1] = name_ + 1;
        object_.isLimit = 1;
        object_.iRowCounts = 2;
        object_.iOffset = 3;
    }

    ORMEL_OBJECT object_{};
    char name_[8] = "NAME";

private:
    std::list<std::string> values_;
};

TEST_F(ParaByObjectTest, ItemsBecomeFields) {
    Add("balance", Bytes(int64_t{5}), 8, 2);
    Add("name", "a longer text", 1, 1);
    Page();
    EXPECT_EQ(ORMEL_ParaFieldUpdateByObject(&para_, &object_), 0u);
    EXPECT_EQ(para_.iFieldNum, 2);
    EXPECT_EQ(At(0), (Slot{"balance", Bytes(int64_t{5}), 1, 23, 2}));
    EXPECT_EQ(At(1), (Slot{"name", "a longer text", 0, 23, 9}));
    EXPECT_EQ(para_.name[1], object_.astItem[1].acName);
    EXPECT_EQ(para_.value[1], object_.astItem[1].pValue) << "values are not copied";
    EXPECT_EQ(para_.iSelectFieldNum, 0) << "select fields and paging belong to conditions";
    EXPECT_EQ(para_.isLimit, 0u);
    EXPECT_FALSE(Log().LinesOf("ORMEL_ParaShow").empty());
}

TEST_F(ParaByObjectTest, ItemsBecomeConditionsWithSelectFieldsAndPaging) {
    Add("id", Bytes(int32_t{5}), 2, 0);
    Page();
    EXPECT_EQ(ORMEL_ParaCondUpdateByObject(&para_, &object_), 0u);
    EXPECT_EQ(para_.iCondNum, 1);
    EXPECT_EQ(At(0), (Slot{"id", Bytes(int32_t{5}), 1, 2, 1}));
    EXPECT_EQ(para_.iSelectFieldNum, 2);
    EXPECT_EQ(para_.selectField[0], name_);
    EXPECT_EQ(para_.selectField[1], name_ + 1);
    EXPECT_EQ(para_.isLimit, 1u);
    EXPECT_EQ(para_.iRowCounts, 2u);
    EXPECT_EQ(para_.iOffset, 3u);
}

TEST_F(ParaByObjectTest, ConditionsFollowTheFields) {
    Add("name", "new", 0, 1);
    ORMEL_OBJECT set = object_;
    object_ = {};
    Add("id", Bytes(int32_t{5}), 0, 0);
    EXPECT_EQ(ORMEL_ParaFieldUpdateByObject(&para_, &set), 0u);
    EXPECT_EQ(ORMEL_ParaCondUpdateByObject(&para_, &object_), 0u);
    EXPECT_EQ(At(0).name, "name");
    EXPECT_EQ(At(1), (Slot{"id", Bytes(int32_t{5}), 1, 0, 1}));
}

TEST_F(ParaByObjectTest, RefusesWrongCountsAndUncheckedItems) {
    using Fill = uint32_t (*)(ORMEL_PARA *, ORMEL_OBJECT *);
    const std::pair<const char *, Fill> fills[] = {{"ORMEL_ParaFieldUpdateByObject", ORMEL_ParaFieldUpdateByObject},
                                                   {"ORMEL_ParaCondUpdateByObject", ORMEL_ParaCondUpdateByObject}};
    Add("id", Bytes(int32_t{5}), 0, 0);
    const ORMEL_OBJECT good = object_;
    for (const auto &entry : fills) {
        const char *name = entry.first;
        const Fill fill = entry.second;
        SCOPED_TRACE(name);
        for (int32_t count : {-1, 33, INT32_MAX, INT32_MIN}) {
            object_ = good;
            object_.iItemNum = count;
            ExpectRefused(name, [&] { return fill(&para_, &object_); });
        }
        object_ = good;
        object_.astItem[0].pstInfo = nullptr;
        ExpectRefused(name, [&] { return fill(&para_, &object_); });
        ExpectRefused(name, [&] { return fill(&para_, nullptr); });
        EXPECT_EQ(fill(nullptr, &object_), 1u);
    }
    for (int32_t count : {-1, 33}) {
        object_ = good;
        object_.iSelectFieldNum = count;
        ExpectRefused("ORMEL_ParaCondUpdateByObject", [&] { return ORMEL_ParaCondUpdateByObject(&para_, &object_); });
    }
    object_ = good;
    para_.iFieldNum = 32;
    ExpectRefused("ORMEL_ParaCondUpdateByObject", [&] { return ORMEL_ParaCondUpdateByObject(&para_, &object_); });
}

} // namespace
