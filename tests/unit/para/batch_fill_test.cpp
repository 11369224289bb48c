#include "batch_test.h"

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using unit::Array;
using unit::Batch;
using unit::kClob;
using unit::Kind;
using unit::kInt;
using unit::kKinds;
using unit::kMark;
using unit::kOther;
using unit::kText;
using unit::Log;
using unit::Multi;
using unit::Set;

namespace {

using BatchFillTest = unit::BatchTest;

// --- Filling ---

TEST_F(BatchFillTest, EachTypeIsStored) {
    for (const Kind &kind : kKinds) {
        SCOPED_TRACE(kind.type);
        Multi multi = Rows(2, {kind});
        Batch batch = Make(multi);
        EXPECT_EQ(Fill(batch, multi), 0u);
        EXPECT_EQ(batch->uiRecNum, 2u);
        EXPECT_EQ(batch->itemNum, 1);
        EXPECT_EQ(batch->name[0], multi->astObject[0].astItem[0].acName);
        const ORMEL_PARA_BATCH_ITEM &column = batch->astItem[0];
        EXPECT_THAT((std::vector{column.type, column.recIndex, column.arrlen, column.maxlen}),
                    ElementsAre(kind.type, 1u, 2u, kind.size));
        EXPECT_THAT(Array(column.ind, 2), ElementsAre(kind.length, kind.length));
        if (unit::IsLob(kind)) {
            void *values[] = {multi->astObject[0].astItem[0].pValue, multi->astObject[1].astItem[0].pValue};
            EXPECT_THAT(Array(column.lobArray, 2), ElementsAre(values[0], values[1])) << "borrowed, not copied";
            EXPECT_THAT(Array(column.lobLen, 2), Each(kind.value.size()));
        } else {
            std::string element = kind.value;
            element.resize(kind.width);
            EXPECT_EQ(std::string(static_cast<char *>(column.data), 2 * kind.width), element + element);
        }
    }
}

TEST_F(BatchFillTest, NullIsALengthInEveryTypeOfColumn) {
    for (const Kind &kind : kKinds) {
        SCOPED_TRACE(kind.type);
        for (int32_t rows : {1, 3}) {
            Multi multi = Rows(rows, {kind});
            ORMEL_OBJECT *last = &multi->astObject[rows - 1];
            ORMEL_ObjectParaClear(last);
            EXPECT_EQ(ORMEL_ObjectNullSet(last, "C0"), 0u);
            EXPECT_EQ(ORMEL_ObjectCheck(last, att_.get()), 0u);
            Batch batch = Make(multi);
            EXPECT_EQ(Fill(batch, multi), 0u);
            const ORMEL_PARA_BATCH_ITEM &column = batch->astItem[0];
            EXPECT_EQ(column.ind[rows - 1], kind.type == kOther.type ? 0 : kMark);
            if (unit::IsLob(kind)) {
                EXPECT_EQ(column.lobArray[rows - 1], &column) << "tells it from one that nobody supplied";
            }
            EXPECT_EQ(column.ind[0], rows > 1 ? kind.length : column.ind[0]);
        }
    }
}

TEST_F(BatchFillTest, AnEmptyLargeObjectIsNotNull) {
    Kind empty = kClob;
    empty.value = "";
    Multi multi = Rows(1, {empty});
    Batch batch = Make(multi);
    EXPECT_EQ(Fill(batch, multi), 0u);
    void *value = multi->astObject[0].astItem[0].pValue;
    EXPECT_NE(value, nullptr);
    EXPECT_EQ(batch->astItem[0].lobArray[0], value);
    EXPECT_EQ(batch->astItem[0].lobLen[0], 0u);
}

TEST_F(BatchFillTest, LogsEachValue) {
    Multi multi = Rows(2, {kText, kClob, kOther});
    Batch batch = Make(multi);
    EXPECT_EQ(Fill(batch, multi), 0u);
    const std::string notLob = "DEBUG ORMEL_SetBatchParaLobData: ORMEL_SetBatchParaLobData type is not lob.";
    const std::string set = "INFO ORMEL_SetBatchParaByObject: SetPara ";
    unit::Lines lines;
    for (const char *row : {"0.", "1."}) {
        for (const std::string &line : {notLob, set + "type:9 maxlen:7 recIndex:" + row,
                                        std::string("DEBUG ORMEL_SetBatchParaData: ORMEL_SetBatchParaData type lob."),
                                        set + "type:13 maxlen:44 recIndex:" + row,
                                        std::string("INFO ORMEL_SetBatchParaData: ORMEL_SetBatchParaData type :77."),
                                        notLob, set + "type:77 maxlen:7 recIndex:" + row}) {
            lines.push_back(line);
        }
    }
    EXPECT_EQ(Log().Lines(), lines);
}

TEST_F(BatchFillTest, NoRowsSetTheCountsAlone) {
    Multi multi = Rows(1, {kText});
    Batch batch = Make(multi);
    batch->uiRecNum = 9;
    const std::string column = unit::BytesOf(batch->astItem[0]);
    multi->uiRecNum = 0;
    EXPECT_EQ(Fill(batch, multi), 0u);
    multi->uiRecNum = 1;
    EXPECT_EQ(batch->uiRecNum, 0u);
    EXPECT_EQ(batch->itemNum, 1);
    EXPECT_THAT(batch->name, Each(nullptr));
    EXPECT_EQ(unit::BytesOf(batch->astItem[0]), column);
    EXPECT_EQ(batch->astItem[0].ind[0], 0);
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(BatchFillTest, AContainerWithoutObjectsIsNotReadPastItsEnd) {
    Multi none(ORMEL_Multi_object_Init("T", 0));
    Batch batch(ORMEL_BatchInsert_Para_Malloc(0, none.get()));
    EXPECT_EQ(ORMEL_SetBatchParaByObject(batch.get(), none.get(), nullptr), 0u);
    EXPECT_EQ(batch->uiRecNum, 0u);
    EXPECT_EQ(batch->itemNum, 0);
}

TEST_F(BatchFillTest, NamesAreTheFirstObjectsWhateverTheirCase) {
    Multi multi = Rows(2, {kInt, kText});
    ORMEL_OBJECT *second = &multi->astObject[1];
    ORMEL_ObjectParaClear(second);
    Set(*second, "c0", kInt.value);
    Set(*second, "c1", kText.value);
    EXPECT_EQ(ORMEL_ObjectCheck(second, att_.get()), 0u);
    Batch batch = Make(multi);
    EXPECT_EQ(ORMEL_SetBatchParaByObject(batch.get(), multi.get(), nullptr), 0u) << "the descriptor is not read";
    EXPECT_STREQ(batch->name[0], "C0");
    EXPECT_STREQ(batch->name[1], "C1");
}

TEST_F(BatchFillTest, ColumnsThatAreNotFilledAreFreedAsWell) {
    Multi multi = Rows(1, {kInt, kText});
    Batch batch = Make(multi);
    ORMEL_OBJECT *object = &multi->astObject[0];
    ORMEL_ObjectParaClear(object);
    Set(*object, "C0", kInt.value);
    EXPECT_EQ(ORMEL_ObjectCheck(object, att_.get()), 0u);
    EXPECT_EQ(Fill(batch, multi), 0u);
    EXPECT_EQ(batch->itemNum, 1);
}

// --- What is refused ---

// A container of three rows with two columns, and what may be wrong with its third row.
class BatchRefusalTest : public unit::BatchTest {
protected:
    void SetUp() override {
        multi_ = Rows(3, {kInt, kText, kInt});
        batch_ = Make(multi_);
        third_ = &multi_->astObject[2];
    }

    // Lists other items in the third row.
    void Relist(const std::vector<std::pair<std::string, std::string>> &items) {
        ORMEL_ObjectParaClear(third_);
        for (const auto &[name, value] : items) {
            Set(*third_, name, value);
        }
        EXPECT_EQ(ORMEL_ObjectCheck(third_, att_.get()), 0u);
        Log().Forget();
    }

    // Everything that the filling may write.
    std::string Contents() const {
        std::string bytes(reinterpret_cast<char *>(batch_.get()), 264 + 3 * 48);
        for (int k = 0; k < 3; ++k) {
            bytes.append(static_cast<char *>(batch_->astItem[k].data), k == 1 ? 21 : 12);
            bytes.append(reinterpret_cast<char *>(batch_->astItem[k].ind), 6);
        }
        return bytes;
    }

    void ExpectRefused(uint32_t code) {
        const std::string before = Contents();
        EXPECT_EQ(Fill(batch_, multi_), code);
        EXPECT_EQ(Contents(), before) << "something was written";
        EXPECT_EQ(Log().LinesOf("ORMEL_SetBatchParaByObject").size(), 1u);
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR).size(), 1u);
    }

    Multi multi_;
    Batch batch_;
    ORMEL_OBJECT *third_ = nullptr;
};

TEST_F(BatchRefusalTest, OtherColumnsThanTheFirstObjects) {
    const std::pair<std::string, std::string> id = {"C0", kInt.value}, text = {"C1", "abc"}, last = {"C2", kInt.value};
    const std::vector<std::vector<std::pair<std::string, std::string>>> lists = {
        {id, last, text}, {text, id, last}, {last, text, id}, {id, text}, {id, text, last, last}, {id, text, id}, {}};
    for (const auto &list : lists) {
        SCOPED_TRACE(list.size());
        Relist(list);
        ExpectRefused(98);
    }
    Relist({id, text, last});
    EXPECT_EQ(Fill(batch_, multi_), 0u);
}

TEST_F(BatchRefusalTest, AnObjectThatWasNeverChecked) {
    for (int k = 0; k < 3; ++k) {
        ORMEL_RES_ATT_FIELD *entry = third_->astItem[k].pstInfo;
        third_->astItem[k].pstInfo = nullptr;
        Log().Forget();
        ExpectRefused(98);
        third_->astItem[k].pstInfo = entry;
    }
    EXPECT_EQ(Fill(batch_, multi_), 0u);
}

// Columns of the same name that are not the same would lie at another width.
TEST_F(BatchRefusalTest, AnObjectThatWasCheckedAgainstAnotherTable) {
    Kind narrow = kText, bytes = kText;
    narrow.width = narrow.size = 5;
    bytes.type = 12;
    for (const Kind &kind : {narrow, bytes}) {
        unit::Descriptor other = unit::Table({kInt, kind, kInt});
        EXPECT_EQ(ORMEL_ObjectCheck(third_, other.get()), 0u);
        Log().Forget();
        ExpectRefused(98);
    }
}

TEST_F(BatchRefusalTest, AValueThatCannotBeCounted) {
    for (size_t size : {65535u, 65536u, 65540u, 131072u}) {
        SCOPED_TRACE(size);
        Relist({{"C0", kInt.value}, {"C1", std::string(size, 'x')}, {"C2", kInt.value}});
        ExpectRefused(98);
    }
    Relist({{"C0", kInt.value}, {"C1", std::string(65534, 'x')}, {"C2", kInt.value}});
    EXPECT_EQ(Fill(batch_, multi_), 0u);
    EXPECT_EQ(batch_->astItem[1].ind[2], 65534);
    EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), unit::Lines{});
}

TEST_F(BatchRefusalTest, ByteStringsAreCountedAndLargeObjectsAreNot) {
    for (int type : {8, 10, 11, 12, 23, 13, 14}) {
        SCOPED_TRACE(type);
        Multi multi = Rows(1, {{static_cast<uint16_t>(type), 60000, 60000, std::string(70000, 'x'), kMark}});
        Batch batch = Make(multi);
        bool large = type == 13 || type == 14;
        EXPECT_EQ(Fill(batch, multi), large ? 0u : 98u);
        EXPECT_EQ(large ? batch->astItem[0].lobLen[0] : batch->astItem[0].ind[0], large ? 70000u : 0u);
    }
}

TEST_F(BatchRefusalTest, CountsThatDoNotFitTheBatch) {
    for (int32_t items : {-1, 4, 32, 33, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(items);
        Log().Forget();
        multi_->astObject[0].iItemNum = items;
        ExpectRefused(1);
    }
    multi_->astObject[0].iItemNum = 3;
    for (int32_t items : {-1, 33, INT32_MAX}) {
        SCOPED_TRACE(items);
        Log().Forget();
        third_->iItemNum = items;
        ExpectRefused(98);
    }
    third_->iItemNum = 3;
    Log().Forget();
    batch_->uiRecNum = 2;
    ExpectRefused(1);
}

TEST_F(BatchRefusalTest, AColumnOfAnotherSizeThanItsTypeHas) {
    for (const Kind &kind : {Kind{1, 8, 8, "12345678", 8}, Kind{2, 4, 4, "1234", 4}}) {
        SCOPED_TRACE(kind.type);
        multi_ = Rows(1, {kind});
        Batch batch = Make(multi_);
        EXPECT_EQ(Fill(batch, multi_), 98u);
        EXPECT_THAT(Log().Lines(KPL_LOG_ERROR),
                    ElementsAre("ERROR ORMEL_SetBatchParaByObject: row 0, column C0: the database describes another "
                                "size than the type has"));
    }
}

// Nobody is asked what lies behind the last column that there can be.
TEST_F(BatchRefusalTest, ABatchOfMoreColumnsThanThereCanBeIsFreedWithoutThem) {
    Batch batch(ORMEL_BatchInsert_Para_Malloc(0, multi_.get()));
    ASSERT_NE(batch, nullptr);
    batch->itemNum = 33;
}

TEST_F(BatchRefusalTest, ALostValueWithALengthIsNoNull) {
    multi_ = Rows(1, {unit::kClob});
    Batch batch = Make(multi_);
    void *value = multi_->astObject[0].astItem[0].pValue;
    multi_->astObject[0].astItem[0].pValue = nullptr;
    EXPECT_EQ(Fill(batch, multi_), 0u);
    EXPECT_EQ(batch->astItem[0].lobArray[0], nullptr);
    multi_->astObject[0].astItem[0].pValue = value;
}

TEST_F(BatchRefusalTest, NullPointers) {
    EXPECT_EQ(ORMEL_SetBatchParaByObject(nullptr, multi_.get(), att_.get()), 1u);
    EXPECT_EQ(ORMEL_SetBatchParaByObject(batch_.get(), nullptr, att_.get()), 1u);
    ORMEL_BatchInsert_Para_Free(nullptr);
}

} // namespace
