#include "cli/condition.h"

#include <gtest/gtest.h>

namespace {

using namespace cli;

void expectCondition(const char *text, const char *column, uint32_t op, const char *value) {
    SCOPED_TRACE(text);
    const Condition condition = parseCondition(text);
    EXPECT_EQ(condition.column, column);
    EXPECT_EQ(condition.op, op);
    EXPECT_EQ(condition.value, value);
}

template <typename Parse> std::string refusal(Parse parse, const char *text) {
    try {
        parse(text);
    } catch (const UsageError &error) {
        return error.what();
    }
    return "taken";
}

TEST(Condition, KnowsFiveOperators) {
    expectCondition("AGE = 30", "AGE", ORMEL_OP_EQUAL, "30");
    expectCondition("AGE <> 30", "AGE", ORMEL_OP_NOT_EQUAL, "30");
    expectCondition("AGE < 30", "AGE", ORMEL_OP_LESS, "30");
    expectCondition("AGE <= 30", "AGE", ORMEL_OP_LESS_EQUAL, "30");
    expectCondition("NAME like A%", "NAME", ORMEL_OP_LIKE, "A%");
    expectCondition("NAME LIKE A%", "NAME", ORMEL_OP_LIKE, "A%");
}

TEST(Condition, BlanksAroundTheWordsDoNotCount) {
    expectCondition("AGE<=30", "AGE", ORMEL_OP_LESS_EQUAL, "30");
    expectCondition("  AGE  <  -5  ", "AGE", ORMEL_OP_LESS, "-5");
    expectCondition("NAME =  a  b ", "NAME", ORMEL_OP_EQUAL, "a  b");
    expectCondition("NAME = <control>", "NAME", ORMEL_OP_EQUAL, "<control>");
    expectCondition("NAME =", "NAME", ORMEL_OP_EQUAL, "");
}

TEST(Condition, AQuotedValueIsTakenAsItStands) {
    expectCondition("NAME = ' x '", "NAME", ORMEL_OP_EQUAL, " x ");
    expectCondition("NAME='it''s'", "NAME", ORMEL_OP_EQUAL, "it's");
    expectCondition("NAME = ''''", "NAME", ORMEL_OP_EQUAL, "'");
    expectCondition("NAME = ''", "NAME", ORMEL_OP_EQUAL, "");
    expectCondition("NAME = 'NULL'", "NAME", ORMEL_OP_EQUAL, "NULL");
    expectCondition("NAME = O'Brien", "NAME", ORMEL_OP_EQUAL, "O'Brien");
}

TEST(Condition, OtherOperatorsAreRefusedWithAWayOut) {
    EXPECT_EQ(
        refusal(parseCondition, "AGE > 30"),
        "there is no operator '>': use = <> < <= or like, or say it in SQL: ormel sql \"SELECT ... WHERE AGE > 30\"");
    EXPECT_EQ(
        refusal(parseCondition, "NAME is null"),
        "there is no operator 'is': use = <> < <= or like, or say it in SQL: ormel sql \"SELECT ... WHERE NAME is "
        "null\"");
    for (const char *text : {"A >= 1", "A != 1", "A in (1)", "A between 1", "A not like x", "A glob x", "A ~ 1"})
        EXPECT_EQ(refusal(parseCondition, text).rfind("there is no operator '", 0), 0u) << text;
    for (const char *text : {"A == 1", "A => 1", "A=<control>", "A =! 1"})
        EXPECT_NE(refusal(parseCondition, text).find("needs a blank before it"), std::string::npos) << text;
}

TEST(Condition, WhatIsNoConditionIsRefused) {
    for (const char *text : {"", "  ", "AGE", "= 5", "'AGE"})
        EXPECT_EQ(refusal(parseCondition, text),
                  "'" + std::string(text) + "' is no condition: write 'COL OP VALUE', for example 'AGE <= 30'");
    EXPECT_EQ(refusal(parseCondition, "A = 'x"), "the value 'x begins with a quote and does not end with one");
    EXPECT_EQ(refusal(parseCondition, "A = '"), "the value ' begins with a quote and does not end with one");
    EXPECT_EQ(refusal(parseCondition, "A = 'x'y'"), "a quote inside the quoted value 'x'y' is written twice: ''");
    EXPECT_EQ(refusal(parseCondition, "A = '''"), "a quote inside the quoted value ''' is written twice: ''");
}

TEST(Condition, IsNeverTrueWithNull) {
    EXPECT_EQ(refusal(parseCondition, "A = NULL"),
              "no comparison with NULL is ever true: ask in SQL, ormel sql \"SELECT ... WHERE A IS NULL\" (or IS NOT "
              "NULL), or write 'NULL' in quotes for the text");
    for (const char *text : {"A <> null", "A < Null", "A <= nULL", "A like NULL"})
        EXPECT_EQ(refusal(parseCondition, text).rfind("no comparison with NULL", 0), 0u) << text;
    EXPECT_EQ(refusal(parseCondition, "A > NULL").rfind("there is no operator '>'", 0), 0u);
    expectCondition("A = NULLS", "A", ORMEL_OP_EQUAL, "NULLS");
}

TEST(Condition, AStatementTakesSoMany) {
    std::vector<std::string> texts(ORMEL_MAX_ITEMS, "A = 1");
    EXPECT_EQ(parseConditions(texts).size(), 32u);
    texts.emplace_back("A = 1");
    EXPECT_THROW(parseConditions(texts), UsageError);
}

TEST(Assignment, HasAColumnAndAValue) {
    for (const char *text : {"A=x y", " A = x y ", "A='x y'"}) {
        const Assignment assignment = parseAssignment(text);
        EXPECT_EQ(assignment.column, "A");
        EXPECT_EQ(assignment.value, "x y");
    }
    EXPECT_EQ(parseAssignment("A=1=2").value, "1=2");
    EXPECT_EQ(parseAssignment("A=").value, "");
    EXPECT_EQ(parseAssignment("A=''").value, "");
    for (const char *text : {"", "A", "=1", " = 1"})
        EXPECT_EQ(refusal(parseAssignment, text),
                  "'" + std::string(text) + "' is no assignment: write COL=VALUE, for example AGE=30");
}

TEST(Assignment, TheBareWordNullIsNoValue) {
    for (const char *text : {"A=NULL", "A=null", "A = Null "})
        EXPECT_EQ(parseAssignment(text).value, std::nullopt) << text;
    EXPECT_EQ(parseAssignment("A='NULL'").value, "NULL");
    EXPECT_EQ(parseAssignment("A=NULL NULL").value, "NULL NULL");
}

} // namespace
