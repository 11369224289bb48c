// Containers of rows of every type, and the batches that are made of them.
#ifndef UNIT_BATCH_TEST_H
#define UNIT_BATCH_TEST_H

#include "ormeldb/batch.h"
#include "support/sample.h"
#include "support/unit_test.h"

namespace unit {

struct MultiDeleter {
    void operator()(ORMEL_MULTI_OBJECT *multi) const { ORMEL_Multi_object_UnInit(multi); }
};
using Multi = std::unique_ptr<ORMEL_MULTI_OBJECT, MultiDeleter>;
struct BatchDeleter {
    void operator()(ORMEL_PARA_BATCH *batch) const { ORMEL_BatchInsert_Para_Free(batch); }
};
using Batch = std::unique_ptr<ORMEL_PARA_BATCH, BatchDeleter>;

inline constexpr uint16_t kMark = 65535; // the length of a large object, and of a row without a value

// A type id, a column of it and a value that the column takes.
struct Kind {
    uint16_t type;
    uint16_t size;
    uint32_t width; // of an element
    std::string value;
    uint16_t length; // that is noted for the value
};
inline const Kind kInt = {1, 4, 4, std::string("\1\2\0\4", 4), 4};
inline const Kind kText = {9, 7, 7, "abc", 3};
inline const Kind kClob = {13, 44, 0, "large text", kMark};
inline const Kind kOther = {77, 7, 0, "abc", 0};
inline const std::vector<Kind> kKinds = {
    kInt,
    {25, 4, 4, std::string("\1\0\0\0", 4), 4},
    {2, 8, 8, "12345678", 8},
    {3, 8, 8, "abcdefgh", 8},
    {8, 7, 7, "abcdef", 6},
    kText,
    {10, 7, 7, "-1.5", 4},
    {11, 7, 7, "abcdefg", 7},
    {12, 7, 7, std::string("a\0b", 3), 3},
    {23, 7, 7, "a", 1},
    kClob,
    {14, 44, 0, std::string("\0\1", 2), kMark},
    kOther,
};

inline bool IsLob(const Kind &kind) {
    return kind.type == 13 || kind.type == 14;
}

// The columns of a table, "C0", "C1" ...
inline Descriptor Table(const std::vector<Kind> &kinds) {
    std::vector<Column> columns;
    for (const Kind &kind : kinds) {
        bool fixed = kind.width == 4 || kind.width == 8;
        columns.push_back({"C" + std::to_string(columns.size()), kind.type, kind.size, uint8_t(fixed ? 1 : 0)});
    }
    return Describe("T", columns);
}

inline void Set(ORMEL_OBJECT &object, const std::string &name, const std::string &value) {
    uint32_t code =
        value.empty() ? ORMEL_ObjectStrSet(&object, name.c_str(), "")
                      : ORMEL_ObjectBinarySet(&object, name.c_str(), value.data(), static_cast<int32_t>(value.size()));
    EXPECT_EQ(code, 0u);
}

class BatchTest : public UnitTest {
protected:
    // A container of equal rows, checked against a table of such columns.
    Multi Rows(int32_t rows, const std::vector<Kind> &kinds) {
        att_ = Table(kinds);
        Multi multi(ORMEL_Multi_object_Init("T", rows));
        for (int32_t r = 0; r < rows; ++r) {
            for (size_t k = 0; k < kinds.size(); ++k) {
                Set(multi->astObject[r], "C" + std::to_string(k), kinds[k].value);
            }
            EXPECT_EQ(ORMEL_ObjectCheck(&multi->astObject[r], att_.get()), 0u);
        }
        Log().Forget();
        return multi;
    }

    static Batch Make(const Multi &multi) {
        Batch batch(ORMEL_BatchInsert_Para_Malloc(multi->astObject[0].iItemNum, multi.get()));
        EXPECT_NE(batch, nullptr);
        Log().Forget();
        return batch;
    }

    uint32_t Fill(const Batch &batch, const Multi &multi) {
        return ORMEL_SetBatchParaByObject(batch.get(), multi.get(), att_.get());
    }

    Descriptor att_;
};

// The first values of an array.
template <class T> std::vector<T> Array(const T *values, size_t count) {
    return {values, values + count};
}

} // namespace unit

#endif
