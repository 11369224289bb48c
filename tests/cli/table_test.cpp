#include "cli/table.h"

#include <clocale>
#include <sstream>

#include <gtest/gtest.h>

namespace {

using namespace cli;

class Table : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }

    static std::string printed(const TextTable &table) {
        std::ostringstream out;
        table.print(out);
        return out.str();
    }
};

TEST_F(Table, WithoutRowsPrintsItsHeadings) {
    EXPECT_EQ(printed(TextTable({{"A"}, {"BB"}})), " A | BB\n"
                                                   "---+----\n");
}

TEST_F(Table, ColumnsAreAsWideAsTheirWidestCell) {
    TextTable table({{"ID", Align::right}, {"NAME"}, {"X"}});
    table.add({"7", "Ada", "y"});
    table.add({"1000", "Bartholomew", ""});
    EXPECT_EQ(table.size(), 2u);
    EXPECT_EQ(printed(table), "   ID | NAME        | X\n"
                              "------+-------------+---\n"
                              "    7 | Ada         | y\n"
                              " 1000 | Bartholomew |\n");
}

TEST_F(Table, WideAndCombiningCharactersKeepTheColumnsAligned) {
    TextTable table({{"A"}, {"B"}});
    table.add({"\u732b", "1"});
    table.add({"e\u0301", "2"});
    table.add({"xyz", "3"});
    EXPECT_EQ(printed(table), " A   | B\n"
                              "-----+---\n"
                              " \u732b  | 1\n"
                              " e\u0301   | 2\n"
                              " xyz | 3\n");
}

TEST_F(Table, ARowStaysOneLine) {
    TextTable table({{"A"}});
    table.add({"one\ntwo\x1b[2J"});
    EXPECT_EQ(printed(table), " A\n"
                              "-----------------\n"
                              " one\\ntwo\\x1b[2J\n");
}

} // namespace
