#include "batch_test.h"

#include <csignal>

#include "support/process.h"

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

using BatchMakeTest = unit::BatchTest;

// --- Making ---

TEST_F(BatchMakeTest, EachTypeHasArraysOfItsWidth) {
    for (const Kind &kind : kKinds) {
        SCOPED_TRACE(kind.type);
        Multi multi = Rows(3, {kind});
        unit::FailingAllocation count(0);
        Batch batch(ORMEL_BatchInsert_Para_Malloc(1, multi.get()));
        ASSERT_NE(batch, nullptr);
        std::vector<size_t> sizes = count.Sizes();
        const ORMEL_PARA_BATCH_ITEM &column = batch->astItem[0];
        EXPECT_THAT(Array(column.ind, 3), Each(0));
        if (unit::IsLob(kind)) {
            EXPECT_THAT(sizes, ElementsAre(264u + 48, 6u, 24u, 12u));
            EXPECT_EQ(column.data, nullptr);
            EXPECT_THAT(Array(column.lobArray, 3), Each(nullptr));
            EXPECT_THAT(Array(column.lobLen, 3), Each(0u));
            continue;
        }
        EXPECT_THAT(sizes, ElementsAre(264u + 48, 6u,
                                       kind.width > 0 ? 3 * kind.width : testing::Matcher<size_t>(testing::Le(1u))));
        ASSERT_NE(column.data, nullptr);
        EXPECT_THAT(Array(static_cast<char *>(column.data), 3 * kind.width), Each(0));
        EXPECT_EQ(column.lobArray, nullptr);
        EXPECT_EQ(column.lobLen, nullptr);
    }
}

TEST_F(BatchMakeTest, LogsEachColumnAndLeavesItsHeader) {
    Multi multi = Rows(2, {kInt, kText, kClob, kOther});
    Batch batch(ORMEL_BatchInsert_Para_Malloc(4, multi.get()));
    ASSERT_NE(batch, nullptr);
    const std::string function = "INFO ORMEL_BatchInsert_Para_Malloc: BatchInsert_Para_Malloc ";
    EXPECT_THAT(Log().Lines(),
                ElementsAre(function + "arrlen:2 itemNum:4.", function + "type:1 maxlen:4 datasize:8.",
                            function + "type:9 maxlen:7 datasize:14.", function + "type:13 maxlen:44 datasize:0.",
                            function + "type:77 maxlen:7 datasize:0."));
    EXPECT_EQ(batch->itemNum, 4);
    EXPECT_THAT(batch->name, Each(nullptr));
    for (int k = 0; k < 4; ++k) {
        const ORMEL_PARA_BATCH_ITEM &column = batch->astItem[k];
        EXPECT_THAT((std::vector{column.type, column.recIndex, column.arrlen, column.maxlen}), Each(0u));
    }
}

TEST_F(BatchMakeTest, MayHaveNoColumns) {
    for (int32_t rows : {0, 2}) {
        Multi multi = Rows(rows, {});
        unit::FailingAllocation count(0);
        Batch batch(ORMEL_BatchInsert_Para_Malloc(0, multi.get()));
        ASSERT_NE(batch, nullptr);
        EXPECT_EQ(batch->itemNum, 0);
        EXPECT_THAT(count.Sizes(), ElementsAre(264u));
    }
}

TEST_F(BatchMakeTest, MayHaveAsManyColumnsAsAnObject) {
    Multi multi = Rows(1, std::vector<Kind>(32, kInt));
    EXPECT_NE(Batch(ORMEL_BatchInsert_Para_Malloc(32, multi.get())), nullptr);
    EXPECT_EQ(Batch(ORMEL_BatchInsert_Para_Malloc(33, multi.get())), nullptr);
}

TEST_F(BatchMakeTest, EveryAllocationMayFail) {
    Multi multi = Rows(2, {kInt, kClob});
    const std::vector<std::string> failed = {"pBatchParas", "pItem->ind",      "pItem->data",
                                             "pItem->ind",  "pItem->lobArray", "pItem->lobLen"};
    size_t before = unit::LiveBlocks();
    ORMEL_PARA_BATCH *batch = nullptr;
    int allocations = unit::ForEachAllocation(
        [&] {
            Log().Forget();
            batch = ORMEL_BatchInsert_Para_Malloc(2, multi.get());
        },
        [&](int n) {
            EXPECT_EQ(batch, nullptr);
            EXPECT_EQ(unit::LiveBlocks(), before);
            EXPECT_THAT(Log().Lines(KPL_LOG_ERROR), ElementsAre("ERROR ORMEL_BatchInsert_Para_Malloc: Malloc " +
                                                                failed.at(static_cast<size_t>(n) - 1) + " failed."));
        });
    EXPECT_EQ(allocations, 6);
    ORMEL_BatchInsert_Para_Free(batch);
}

TEST_F(BatchMakeTest, ColumnsThatNoObjectHasAreNone) {
    Multi multi = Rows(1, {kInt, kText});
    for (int32_t columns : {-1, -5, -6, -1000, 3, 32, 33, 1000}) {
        EXPECT_EQ(ORMEL_BatchInsert_Para_Malloc(columns, multi.get()), nullptr) << columns;
    }
    EXPECT_EQ(ORMEL_BatchInsert_Para_Malloc(1, nullptr), nullptr);
    Multi none = Rows(0, {});
    EXPECT_EQ(ORMEL_BatchInsert_Para_Malloc(1, none.get()), nullptr);
}

TEST_F(BatchMakeTest, AnObjectThatWasNeverCheckedTellsNoColumns) {
    Multi multi(ORMEL_Multi_object_Init("T", 1));
    Set(multi->astObject[0], "C0", "abc");
    EXPECT_EQ(ORMEL_BatchInsert_Para_Malloc(1, multi.get()), nullptr);
}

// The items beyond an object's count are what is left of its last use.
TEST_F(BatchMakeTest, OnlyItemsInUseTellColumns) {
    Multi multi = Rows(1, {kInt, kText});
    ORMEL_ObjectParaClear(&multi->astObject[0]);
    Set(multi->astObject[0], "C0", kInt.value);
    EXPECT_EQ(ORMEL_ObjectCheck(&multi->astObject[0], att_.get()), 0u);
    EXPECT_EQ(Batch(ORMEL_BatchInsert_Para_Malloc(2, multi.get())), nullptr);
    EXPECT_NE(Batch(ORMEL_BatchInsert_Para_Malloc(1, multi.get())), nullptr);
}

TEST_F(BatchMakeTest, SizesBeyond32BitsEndTheProcess) {
    Multi multi = Rows(1, {kInt});
    auto ending = [&](int32_t columns, uint32_t rows) {
        return unit::RunInChild([&] {
                   multi->uiRecNum = rows;
                   ORMEL_BatchInsert_Para_Malloc(columns, multi.get());
               })
            .status;
    };
    EXPECT_EQ(ending(44739238, 1), -SIGABRT) << "columns";
    EXPECT_EQ(ending(INT32_MAX, 1), -SIGABRT);
    EXPECT_EQ(ending(INT32_MIN, 1), -SIGABRT);
    EXPECT_EQ(ending(44739237, 1), 99) << "a sum that can be counted, of more columns than there are";
    EXPECT_EQ(ending(1, 0x40000000), -SIGABRT) << "lengths of 2 bytes";
    EXPECT_EQ(ending(1, UINT32_MAX), -SIGABRT);
    EXPECT_EQ(ending(1, 0x3FFFFFFF), 99) << "can be counted and not be had";
    Multi large = Rows(1, {kClob});
    multi = std::move(large);
    EXPECT_EQ(ending(1, 0x10000000), -SIGABRT) << "addresses of 8 bytes";
    multi->uiRecNum = 1;
}

// --- One value ---

// One column of three elements, filled by hand.
class BatchValueTest : public unit::UnitTest {
protected:
    explicit BatchValueTest(uint32_t maxlen = 10) {
        column_.arrlen = 3;
        column_.maxlen = maxlen;
        column_.data = data_;
        column_.ind = ind_;
        column_.lobArray = lobs_;
        column_.lobLen = lobLens_;
    }

    // The middle element of so many bytes, after a value was stored in it.
    std::string Store(uint32_t type, const std::string &value, size_t width) {
        std::memset(data_, 0, sizeof(data_));
        ind_[1] = 0;
        // A block of its own, so that reading past the value is noticed.
        std::vector<char> exact(value.begin(), value.end());
        char nothing = 0;
        ORMEL_SetBatchParaData(&column_, exact.empty() ? &nothing : exact.data(), static_cast<uint32_t>(value.size()),
                               type, 1);
        std::string all(data_, sizeof(data_));
        EXPECT_EQ(all.substr(0, width) + all.substr(2 * width), std::string(sizeof(data_) - width, '\0'))
            << "another element was written";
        EXPECT_EQ(ind_[0] + ind_[2], 0);
        return all.substr(width, width);
    }

    std::string State() const {
        return unit::BytesOf(column_) + unit::BytesOf(data_) + unit::BytesOf(ind_) + unit::BytesOf(lobs_) +
               unit::BytesOf(lobLens_);
    }

    ORMEL_PARA_BATCH_ITEM column_{};
    char data_[30] = {};
    uint16_t ind_[3] = {};
    void *lobs_[3] = {};
    uint32_t lobLens_[3] = {};
};

TEST_F(BatchValueTest, IntegersHaveTheirWidthAsLength) {
    for (uint32_t type : {1u, 25u, 2u, 3u}) {
        SCOPED_TRACE(type);
        uint16_t width = type == 1 || type == 25 ? 4 : 8;
        std::string value(width, 'x');
        EXPECT_EQ(Store(type, value, width), value);
        EXPECT_EQ(ind_[1], width);
        EXPECT_EQ(Store(type, "ab", width), "ab" + std::string(width - 2u, '\0'));
        EXPECT_EQ(ind_[1], width);
        EXPECT_EQ(Store(type, "", width), std::string(width, '\0'));
        EXPECT_EQ(ind_[1], width);
        for (size_t size : {width + 1u, 2u * width}) {
            EXPECT_EQ(Store(type, std::string(size, 'x'), width), std::string(width, '\0')) << "it does not fit";
            EXPECT_EQ(ind_[1], width);
        }
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(BatchValueTest, ATextNeedsRoomForItsEnd) {
    const std::string error = "INFO ORMEL_SetBatchParaData: ORMEL_SetBatchParaData strncpy_s error.";
    const std::string empty(10, '\0');
    for (uint32_t type : {8u, 9u, 10u}) {
        SCOPED_TRACE(type);
        Log().Forget();
        EXPECT_EQ(Store(type, "", 10), empty);
        EXPECT_EQ(ind_[1], 0);
        EXPECT_EQ(Store(type, "abcdefghi", 10), std::string("abcdefghi\0", 10));
        EXPECT_EQ(ind_[1], 9);
        EXPECT_EQ(Store(type, std::string("ab\0cd", 5), 10), std::string("ab\0\0\0\0\0\0\0\0", 10));
        EXPECT_EQ(ind_[1], 5);
        EXPECT_THAT(Log().Lines(), IsEmpty());
        EXPECT_EQ(Store(type, "abcdefghij", 10), empty);
        EXPECT_EQ(ind_[1], 10);
        EXPECT_EQ(Store(type, "abcdefghijkl", 10), empty);
        EXPECT_EQ(ind_[1], 12);
        EXPECT_THAT(Log().Lines(), ElementsAre(error, error));
    }
}

TEST_F(BatchValueTest, AByteStringMayFillItsElement) {
    for (uint32_t type : {11u, 12u, 23u}) {
        SCOPED_TRACE(type);
        Log().Forget();
        EXPECT_EQ(Store(type, "", 10), std::string(10, '\0'));
        EXPECT_EQ(ind_[1], 0);
        EXPECT_EQ(Store(type, std::string("a\0b", 3), 10), std::string("a\0b\0\0\0\0\0\0\0", 10));
        EXPECT_EQ(ind_[1], 3);
        EXPECT_EQ(Store(type, "abcdefghij", 10), "abcdefghij");
        EXPECT_EQ(ind_[1], 10);
        EXPECT_THAT(Log().Lines(), IsEmpty());
        EXPECT_EQ(Store(type, "abcdefghijk", 10), std::string(10, '\0'));
        EXPECT_EQ(ind_[1], 11);
        EXPECT_THAT(Log().Lines(), ElementsAre("INFO ORMEL_SetBatchParaData: ORMEL_SetBatchParaData memcpy_s error."));
    }
}

// A length that lost its upper bits would fit, and the largest one means that there is no value.
TEST_F(BatchValueTest, ALengthThatCannotBeCountedDoesNotFitEither) {
    for (uint32_t type : {9u, 12u}) {
        for (size_t size : {65534u, 65535u, 65536u, 65539u, 131072u}) {
            EXPECT_EQ(Store(type, std::string(size, 'x'), 10), std::string(10, '\0'));
            EXPECT_GT(ind_[1], 10) << size;
            EXPECT_LT(ind_[1], kMark) << size;
        }
    }
}

TEST_F(BatchValueTest, NoValueIsNull) {
    for (const Kind &kind : kKinds) {
        SCOPED_TRACE(kind.type);
        ind_[1] = 0;
        ORMEL_SetBatchParaData(&column_, nullptr, 5, kind.type, 1);
        EXPECT_EQ(ind_[1], kind.type == kOther.type ? 0 : kMark);
        EXPECT_EQ(std::string(data_, sizeof(data_)), std::string(sizeof(data_), '\0'));
    }
}

TEST_F(BatchValueTest, OfLargeObjectsTheMarkAloneIsStored) {
    for (uint32_t type : {13u, 14u}) {
        Log().Forget();
        EXPECT_EQ(Store(type, "large", 10), std::string(10, '\0'));
        EXPECT_EQ(ind_[1], kMark);
        EXPECT_EQ(lobs_[1], nullptr);
        EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_SetBatchParaData: ORMEL_SetBatchParaData type lob."));
    }
}

TEST_F(BatchValueTest, OtherTypesAreLeftOut) {
    for (uint32_t type : {0u, 4u, 15u, 24u, 26u, 99u}) {
        const std::string before = State();
        Log().Forget();
        char value[] = "abc";
        ORMEL_SetBatchParaData(&column_, value, 3, type, 1);
        ORMEL_SetBatchParaLobData(&column_, value, 3, type, 1);
        EXPECT_EQ(State(), before);
        EXPECT_THAT(
            Log().Lines(),
            ElementsAre("INFO ORMEL_SetBatchParaData: ORMEL_SetBatchParaData type :" + std::to_string(type) + ".",
                        "DEBUG ORMEL_SetBatchParaLobData: ORMEL_SetBatchParaLobData type is not lob."));
    }
}

TEST_F(BatchValueTest, ALargeObjectIsNotedWhereItLies) {
    char value[] = "large";
    for (uint32_t type : {13u, 14u}) {
        ORMEL_SetBatchParaLobData(&column_, value, 5, type, 2);
        EXPECT_THAT(lobs_, ElementsAre(nullptr, nullptr, value));
        EXPECT_THAT(lobLens_, ElementsAre(0u, 0u, 5u));
        ORMEL_SetBatchParaLobData(&column_, nullptr, 0, type, 2);
        EXPECT_THAT(lobs_, Each(nullptr));
        EXPECT_THAT(lobLens_, Each(0u));
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
    for (uint32_t type : {1u, 2u, 3u, 8u, 9u, 10u, 11u, 12u, 23u, 25u}) {
        Log().Forget();
        ORMEL_SetBatchParaLobData(&column_, value, 5, type, 2);
        EXPECT_THAT(lobs_, Each(nullptr));
        EXPECT_THAT(Log().Lines(),
                    ElementsAre("DEBUG ORMEL_SetBatchParaLobData: ORMEL_SetBatchParaLobData type is not lob."));
    }
}

TEST_F(BatchValueTest, RowsThatThereAreNot) {
    char value[] = "abcd";
    const std::string before = State();
    for (uint32_t type : {1u, 9u, 12u, 13u}) {
        for (uint32_t row : {3u, 4u, UINT32_MAX}) {
            ORMEL_SetBatchParaData(&column_, value, 4, type, row);
            ORMEL_SetBatchParaLobData(&column_, value, 4, type, row);
            EXPECT_EQ(State(), before) << type << ' ' << row;
        }
        ORMEL_SetBatchParaData(nullptr, value, 4, type, 0);
        ORMEL_SetBatchParaLobData(nullptr, value, 4, type, 0);
    }
    column_.arrlen = 0; // not known yet
    EXPECT_EQ(Store(9, "abc", 10), std::string("abc\0\0\0\0\0\0\0", 10));
    ORMEL_SetBatchParaLobData(&column_, value, 4, 13, 2);
    EXPECT_EQ(lobs_[2], value);
}

TEST_F(BatchValueTest, ArraysThatThereAreNot) {
    char value[] = "abcd";
    for (auto array : {0, 1, 2, 3}) {
        ORMEL_PARA_BATCH_ITEM column = column_;
        column.data = array == 0 ? nullptr : column.data;
        column.ind = array == 1 ? nullptr : column.ind;
        column.lobArray = array == 2 ? nullptr : column.lobArray;
        column.lobLen = array == 3 ? nullptr : column.lobLen;
        for (const Kind &kind : kKinds) {
            ORMEL_SetBatchParaData(&column, value, 4, kind.type, 0);
            ORMEL_SetBatchParaData(&column, nullptr, 4, kind.type, 0);
            ORMEL_SetBatchParaLobData(&column, value, 4, kind.type, 0);
        }
    }
    EXPECT_THAT(Log().Lines(KPL_LOG_ERROR), IsEmpty());
}

} // namespace
