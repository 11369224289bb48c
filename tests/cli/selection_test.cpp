#include "cli/selection.h"

#include <gtest/gtest.h>

namespace {

using namespace cli;

SelectRequest request() {
    SelectRequest request;
    request.table = "t";
    return request;
}

std::string refusal(const SelectRequest &request) {
    try {
        const Selection selection(request);
    } catch (const UsageError &error) {
        return error.what();
    }
    return "taken";
}

std::vector<std::string> fieldsOf(const char *text) {
    SelectRequest words = request();
    words.fields = text;
    return Selection(words).fields;
}

std::string fieldsRefusal(const std::string &text) {
    SelectRequest words = request();
    words.fields = text;
    return refusal(words);
}

std::string pageRefusal(std::optional<std::string> limit, std::optional<std::string> offset) {
    SelectRequest words = request();
    words.limit = std::move(limit);
    words.offset = std::move(offset);
    return refusal(words);
}

TEST(Selection, OfNoWordsIsAllOfATable) {
    const Selection all(request());
    EXPECT_TRUE(all.conditions.empty());
    EXPECT_TRUE(all.fields.empty());
    EXPECT_FALSE(all.page);
}

TEST(Selection, FieldsStandBetweenCommas) {
    EXPECT_EQ(fieldsOf("a"), std::vector<std::string>{"a"});
    EXPECT_EQ(fieldsOf(" b , a"), (std::vector<std::string>{"b", "a"}));
    for (const char *text : {"", ",", "a,", ",a", "a,,b", "a, ,b"})
        EXPECT_EQ(fieldsRefusal(text),
                  "--fields '" + std::string(text) + "' lacks a name: write names with commas between them, a,b");
}

TEST(Selection, TakesSoManyFields) {
    std::string text = "a";
    for (int i = 1; i < ORMEL_MAX_SELECT_FIELDS; ++i)
        text += ",a";
    EXPECT_EQ(fieldsOf(text.c_str()).size(), 32u);
    EXPECT_EQ(fieldsRefusal(text + ",a"), "a select takes at most 32 fields, and --fields names 33; leave --fields out "
                                          "for all columns, or use the command sql");
}

TEST(Selection, APageHasALimitAndPerhapsAnOffset) {
    SelectRequest words = request();
    words.limit = "2147483647";
    EXPECT_EQ(Selection(words).page->limit, 2147483647u);
    EXPECT_EQ(Selection(words).page->offset, 0u);
    words.limit = "0";
    words.offset = "7";
    EXPECT_EQ(Selection(words).page->limit, 0u);
    EXPECT_EQ(Selection(words).page->offset, 7u);
}

TEST(Selection, WhatIsNoNumberOfRowsIsRefused) {
    for (const char *text : {"", "x", "-1", "1x", " 1", "1.5", "2147483648", "99999999999"}) {
        EXPECT_EQ(pageRefusal(text, std::nullopt),
                  "--limit takes a whole number from 0 to 2147483647, not '" + std::string(text) + "'");
        EXPECT_EQ(pageRefusal("1", text),
                  "--offset takes a whole number from 0 to 2147483647, not '" + std::string(text) + "'");
    }
    EXPECT_EQ(pageRefusal(std::nullopt, "1"),
              "--offset passes over the first rows of a page; say with --limit how many rows that has");
}

TEST(Selection, HasOneFormat) {
    SelectRequest words = request();
    words.json = words.csv = true;
    EXPECT_EQ(refusal(words), "--json and --csv exclude each other; choose one");
}

TEST(Selection, NamesATable) {
    SelectRequest words = request();
    words.table = "a b";
    EXPECT_EQ(refusal(words).rfind("'a b' is no table name", 0), 0u);
}

} // namespace
