#include "ormeldb/platform/opbbase.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string upper(std::string text) {
    EXPECT_EQ(XOS_StrToUpper(text.data()), text.data());
    return text;
}

std::string trimmed(std::string text) {
    return LOC_Trimwhitespace(text.data());
}

TEST(StrToUpper, TurnsTheLettersAToZOnly) {
    EXPECT_EQ(upper("az_AZ-09 {`@["), "AZ_AZ-09 {`@[");
    EXPECT_EQ(upper(""), "");
    EXPECT_EQ(upper("stra\xC3\x9F"
                    "e \xC3\xA4"),
              "STRA\xC3\x9F"
              "E \xC3\xA4");
}

TEST(StrToUpper, TakesNoText) {
    EXPECT_EQ(XOS_StrToUpper(nullptr), nullptr);
}

TEST(Trimwhitespace, CutsBlanksOfEveryKindAtBothEnds) {
    EXPECT_EQ(trimmed(" \t\r\n\v\fa b\t c \t\r\n\v\f"), "a b\t c");
    EXPECT_EQ(trimmed("dbserver\n"), "dbserver");
    EXPECT_EQ(trimmed("x"), "x");
}

TEST(Trimwhitespace, LeavesNothingOfBlanksAlone) {
    EXPECT_EQ(trimmed(" \t\r\n"), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(Trimwhitespace, ReturnsAPlaceInItsArgument) {
    char text[] = "  ab  ";
    EXPECT_EQ(LOC_Trimwhitespace(text), text + 2);
    EXPECT_EQ(std::string(text, sizeof text), std::string("  ab\0 \0", 7));
}

TEST(Trimwhitespace, TakesNoText) {
    EXPECT_EQ(LOC_Trimwhitespace(nullptr), nullptr);
}

} // namespace
