#include "cli/batch.h"

#include <gtest/gtest.h>

namespace {

using namespace cli;

struct Words {
    std::string said;
    size_t rows;
    std::optional<size_t> row;
    std::string left;
};

TEST(RefusedRow, IsTakenFromTheDatabasesWords) {
    for (const Words &words : {Words{"row 0: it is there", 2, 0, "it is there"},
                               Words{"row 1, column ID (:1): too wide", 2, 1, "column ID (:1): too wide"},
                               Words{"row 1, parameter :2: too wide", 1000, 1, "parameter :2: too wide"},
                               Words{"23505: row 1: it is there", 2, 1, "23505: it is there"},
                               Words{"row 999: row 1: x", 1000, 999, "row 1: x"}}) {
        std::string text = words.said;
        EXPECT_EQ(takeRow(text, words.rows), words.row) << words.said;
        EXPECT_EQ(text, words.left);
    }
}

TEST(RefusedRow, OfOneItIsKnownWhateverIsSaid) {
    std::string text = "row 7: says a trigger";
    EXPECT_EQ(takeRow(text, 1), 0u);
    EXPECT_EQ(text, "row 7: says a trigger");
    text = "row 0: it is there";
    EXPECT_EQ(takeRow(text, 1), 0u);
    EXPECT_EQ(text, "it is there");
}

TEST(RefusedRow, IsNotKnownFromOtherWords) {
    for (const std::string words :
         {"", "row", "row ", "row 1", "row 1:", "row 1 x", "row x: y", "row -1: y", "row 2: y",
          "row 99999999999999999999: y", "rows 1: y", "database is locked", "23505: rows 1: y", "23505: "}) {
        std::string text = words;
        EXPECT_EQ(takeRow(text, 2), std::nullopt) << words;
        EXPECT_EQ(text, words);
    }
}

} // namespace
