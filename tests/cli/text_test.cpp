#include "cli/text.h"

#include <clocale>

#include <gtest/gtest.h>

namespace {

using namespace cli;

class Text : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }
};

TEST_F(Text, WellFormedUtf8HasNoInvalidByte) {
    EXPECT_EQ(firstInvalidByte(""), std::nullopt);
    EXPECT_EQ(firstInvalidByte("abc"), std::nullopt);
    EXPECT_EQ(firstInvalidByte("\u00e9 \u20ac \U0001F600 \U0010FFFF"), std::nullopt);
}

TEST_F(Text, TheFirstInvalidByteIsFound) {
    EXPECT_EQ(firstInvalidByte("a\x80"), 1u) << "a byte that continues nothing";
    EXPECT_EQ(firstInvalidByte("ab\xC3"), 2u) << "a character that is cut";
    EXPECT_EQ(firstInvalidByte("\xC3("), 0u) << "a character that is broken";
    EXPECT_EQ(firstInvalidByte("\xC0\x80"), 0u) << "overlong, two bytes";
    EXPECT_EQ(firstInvalidByte("\xE0\x9F\xBF"), 0u) << "overlong, three bytes";
    EXPECT_EQ(firstInvalidByte("\xF0\x8F\xBF\xBF"), 0u) << "overlong, four bytes";
    EXPECT_EQ(firstInvalidByte("\xED\xA0\x80"), 0u) << "half of a surrogate pair";
    EXPECT_EQ(firstInvalidByte("\xF4\x90\x80\x80"), 0u) << "beyond U+10FFFF";
    EXPECT_EQ(firstInvalidByte("\xFF"), 0u);
}

TEST_F(Text, ControlCharactersAndBrokenBytesAreEscaped) {
    EXPECT_EQ(printable("a\nb\tc\rd"), "a\\nb\\tc\\rd");
    EXPECT_EQ(printable("\x1b[31m"), "\\x1b[31m");
    EXPECT_EQ(printable(std::string_view("\0x", 2)), "\\x00x") << "wcwidth gives 0 for NUL";
    EXPECT_EQ(printable("\u0085"), "\\u{85}");
    EXPECT_EQ(printable("a\xFFz"), "a\\xffz");
    EXPECT_EQ(printable("gr\u00fc\u00df \u732b"), "gr\u00fc\u00df \u732b");
}

TEST_F(Text, WidthCountsTerminalColumns) {
    EXPECT_EQ(displayWidth(""), 0u);
    EXPECT_EQ(displayWidth("abc"), 3u);
    EXPECT_EQ(displayWidth("gr\u00fc\u00df"), 4u);
    EXPECT_EQ(displayWidth("\u732b"), 2u) << "wide";
    EXPECT_EQ(displayWidth("e\u0301"), 1u) << "a combining accent takes none";
}

TEST_F(Text, SmallHelpers) {
    EXPECT_EQ(lowerCase("LiKe\u00c4"), "like\u00c4") << "ASCII only";
    EXPECT_EQ(trimmed(" \t a b \t"), "a b");
    EXPECT_EQ(trimmed(" \t "), "");
    EXPECT_EQ(rows(0), "0 rows");
    EXPECT_EQ(rows(1), "1 row");
    EXPECT_EQ(rows(34924), "34924 rows");
}

} // namespace
