#include "row_buffer.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using ormel::client::Cell;
using ormel::client::RowBuffer;

constexpr size_t kLarge = 100000;

template <class T> T valueOf(const Cell &cell) {
    EXPECT_FALSE(cell.null);
    EXPECT_EQ(cell.size, sizeof(T));
    T value;
    std::memcpy(&value, cell.data, sizeof value);
    return value;
}

std::string textOf(const Cell &cell) {
    EXPECT_FALSE(cell.null);
    EXPECT_NE(cell.data, nullptr);
    return {reinterpret_cast<const char *>(cell.data), cell.size};
}

void append(RowBuffer &rows, const std::string &text) {
    rows.appendBytes(text.data(), text.size());
}

TEST(RowBufferTest, IsEmptyAtFirst) {
    RowBuffer rows;
    std::vector<Cell> row(1);
    EXPECT_EQ(rows.rows(), 0U);
    EXPECT_FALSE(rows.take(row));
}

TEST(RowBufferTest, GivesBackEveryKindOfValue) {
    RowBuffer rows;
    rows.appendInt32(INT32_MIN);
    rows.appendInt64(INT64_MAX);
    rows.appendDouble(-0.5);
    append(rows, std::string("a\0b", 3));
    append(rows, "");
    rows.appendNull();
    append(rows, std::string(kLarge, 'L'));
    rows.endRow();
    EXPECT_EQ(rows.rows(), 1U);
    std::vector<Cell> row(7);
    ASSERT_TRUE(rows.take(row));
    EXPECT_EQ(valueOf<int32_t>(row[0]), INT32_MIN);
    EXPECT_EQ(valueOf<int64_t>(row[1]), INT64_MAX);
    EXPECT_EQ(valueOf<double>(row[2]), -0.5);
    EXPECT_EQ(textOf(row[3]), std::string("a\0b", 3));
    EXPECT_EQ(textOf(row[4]), "");
    EXPECT_TRUE(row[5].null);
    EXPECT_EQ(row[5].size, 0U);
    EXPECT_EQ(textOf(row[6]), std::string(kLarge, 'L'));
    EXPECT_EQ(rows.rows(), 0U);
    EXPECT_FALSE(rows.take(row));
}

TEST(RowBufferTest, TextsOfEveryLengthAroundWhereTheyMoveOut) {
    constexpr size_t kEdge = 16 * 1024;
    RowBuffer rows;
    for (size_t length = kEdge - 3; length <= kEdge + 3; ++length) {
        append(rows, std::string(length, 'x'));
        rows.appendInt32(static_cast<int32_t>(length));
        rows.endRow();
    }
    std::vector<Cell> row(2);
    for (size_t length = kEdge - 3; length <= kEdge + 3; ++length) {
        ASSERT_TRUE(rows.take(row));
        EXPECT_EQ(row[0].size, length);
        EXPECT_EQ(valueOf<int32_t>(row[1]), static_cast<int32_t>(length));
    }
}

// Far more than a block, appended and taken in turns that drift apart and meet again.
TEST(RowBufferTest, RowsComeOutInOrderWhateverTheTurns) {
    RowBuffer rows;
    std::vector<Cell> row(2);
    int32_t appended = 0;
    int32_t taken = 0;
    for (int turn = 0; turn < 200; ++turn) {
        for (int i = 0; i < turn % 50; ++i, ++appended) {
            rows.appendInt32(appended);
            append(rows, std::string(static_cast<size_t>(appended % 3000), 'a'));
            rows.endRow();
        }
        for (int i = 0; i < turn % 47 && rows.take(row); ++i, ++taken) {
            ASSERT_EQ(valueOf<int32_t>(row[0]), taken);
            ASSERT_EQ(row[1].size, static_cast<size_t>(taken % 3000));
        }
        ASSERT_EQ(rows.rows(), static_cast<size_t>(appended - taken));
    }
    for (; rows.take(row); ++taken)
        ASSERT_EQ(valueOf<int32_t>(row[0]), taken);
    EXPECT_EQ(taken, appended);
}

TEST(RowBufferTest, ARowLargerThanABlock) {
    RowBuffer rows;
    const std::string text(16000, 'y');
    for (int i = 0; i < 100; ++i)
        append(rows, text);
    rows.endRow();
    rows.appendInt32(1);
    rows.endRow();
    std::vector<Cell> wide(100);
    ASSERT_TRUE(rows.take(wide));
    for (const Cell &cell : wide)
        EXPECT_EQ(textOf(cell), text);
    std::vector<Cell> narrow(1);
    ASSERT_TRUE(rows.take(narrow));
    EXPECT_EQ(valueOf<int32_t>(narrow[0]), 1);
}

// The current row stays where it is while others are appended behind it.
TEST(RowBufferTest, TheRowTakenLastOutlivesAppending) {
    RowBuffer rows;
    append(rows, "small");
    append(rows, std::string(kLarge, '1'));
    rows.endRow();
    std::vector<Cell> row(2);
    ASSERT_TRUE(rows.take(row));
    for (int i = 0; i < 1000; ++i) {
        append(rows, std::string(5000, 'x'));
        append(rows, std::string(20000, 'y'));
        rows.endRow();
    }
    EXPECT_EQ(textOf(row[0]), "small");
    EXPECT_EQ(textOf(row[1]), std::string(kLarge, '1'));
}

TEST(RowBufferTest, ADroppedRowLeavesNothing) {
    RowBuffer rows;
    append(rows, std::string(kLarge, '1'));
    rows.endRow();
    append(rows, std::string(kLarge, '2'));
    rows.appendInt32(2);
    rows.dropRow();
    append(rows, std::string(kLarge, '3'));
    rows.endRow();
    EXPECT_EQ(rows.rows(), 2U);
    std::vector<Cell> row(1);
    for (const char expected : {'1', '3'}) {
        ASSERT_TRUE(rows.take(row));
        EXPECT_EQ(textOf(row[0]), std::string(kLarge, expected));
    }
    EXPECT_FALSE(rows.take(row));
}

TEST(RowBufferTest, ClearingForgetsEverything) {
    RowBuffer rows;
    std::vector<Cell> row(1);
    append(rows, std::string(kLarge, '1'));
    rows.endRow();
    append(rows, std::string(kLarge, '2'));
    rows.endRow();
    ASSERT_TRUE(rows.take(row));
    append(rows, "unfinished");
    rows.clear();
    EXPECT_EQ(rows.rows(), 0U);
    EXPECT_FALSE(rows.take(row));
    append(rows, "new");
    rows.endRow();
    ASSERT_TRUE(rows.take(row));
    EXPECT_EQ(textOf(row[0]), "new");
}

} // namespace
