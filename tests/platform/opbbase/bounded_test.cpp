#include "ormeldb/platform/opbbase.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr char kGuard = '#';

// A destination of 8 bytes between bytes that nobody may write.
struct Guarded {
    char before[8];
    char dst[8];
    char after[8];

    Guarded() { std::memset(static_cast<void *>(this), kGuard, sizeof *this); }

    bool untouched() const { return std::string(dst, sizeof dst) == std::string(sizeof dst, kGuard); }
    ~Guarded() {
        EXPECT_EQ(std::string(before, sizeof before), std::string(sizeof before, kGuard));
        EXPECT_EQ(std::string(after, sizeof after), std::string(sizeof after, kGuard));
    }
};

int formatList(char *dst, size_t dstMax, size_t count, const char *fmt, ...) __attribute__((format(printf, 4, 5)));
int formatList(char *dst, size_t dstMax, size_t count, const char *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int length = vsnprintf_s(dst, dstMax, count, fmt, args);
    va_end(args);
    return length;
}

TEST(StrcpyS, CopiesWhatFitsWithItsTerminator) {
    Guarded g;
    EXPECT_EQ(strcpy_s(g.dst, 8, "1234567"), 0);
    EXPECT_STREQ(g.dst, "1234567");
    EXPECT_EQ(strcpy_s(g.dst, 8, ""), 0);
    EXPECT_STREQ(g.dst, "");
}

TEST(StrcpyS, WritesNoFurtherThanTheTerminator) {
    Guarded g;
    EXPECT_EQ(strcpy_s(g.dst, 8, "ab"), 0);
    EXPECT_EQ(std::string(g.dst, 8), std::string("ab\0#####", 8));
}

TEST(StrcpyS, LeavesAnEmptyTextWhenRefused) {
    Guarded g;
    EXPECT_NE(strcpy_s(g.dst, 8, "12345678"), 0);
    EXPECT_STREQ(g.dst, "");
    std::strcpy(g.dst, "old");
    EXPECT_NE(strcpy_s(g.dst, 8, nullptr), 0);
    EXPECT_STREQ(g.dst, "");
}

TEST(StrcpyS, RefusesNoDestination) {
    Guarded g;
    EXPECT_NE(strcpy_s(nullptr, 8, "a"), 0);
    EXPECT_NE(strcpy_s(g.dst, 0, "a"), 0);
    EXPECT_TRUE(g.untouched());
}

// The source of a long text need not be terminated where it is not looked at.
TEST(StrcpyS, ReadsNoFurtherThanTheDestinationIsLong) {
    Guarded g;
    const std::string source(8, 'x');
    EXPECT_NE(strcpy_s(g.dst, 8, source.data()), 0);
    EXPECT_STREQ(g.dst, "");
}

TEST(StrncpyS, CopiesAtMostCountCharacters) {
    Guarded g;
    EXPECT_EQ(strncpy_s(g.dst, 8, "abcdef", 3), 0);
    EXPECT_STREQ(g.dst, "abc");
    EXPECT_EQ(strncpy_s(g.dst, 8, "123456789", 7), 0);
    EXPECT_STREQ(g.dst, "1234567");
    EXPECT_EQ(strncpy_s(g.dst, 8, "abc", 0), 0);
    EXPECT_STREQ(g.dst, "");
}

TEST(StrncpyS, TakesAShorterTextThanCount) {
    Guarded g;
    EXPECT_EQ(strncpy_s(g.dst, 8, "abc", 100), 0);
    EXPECT_STREQ(g.dst, "abc");
}

TEST(StrncpyS, ReadsNoFurtherThanCount) {
    Guarded g;
    const char source[3] = {'a', 'b', 'c'};
    EXPECT_EQ(strncpy_s(g.dst, 8, source, sizeof source), 0);
    EXPECT_STREQ(g.dst, "abc");
}

TEST(StrncpyS, RefusesCharactersThatLeaveNoRoomForTheTerminator) {
    Guarded g;
    EXPECT_NE(strncpy_s(g.dst, 8, "123456789", 8), 0);
    EXPECT_STREQ(g.dst, "");
    EXPECT_NE(strncpy_s(g.dst, 8, nullptr, 1), 0);
    EXPECT_NE(strncpy_s(nullptr, 8, "a", 1), 0);
    EXPECT_NE(strncpy_s(g.dst, 0, "a", 1), 0);
}

TEST(MemcpyS, CopiesUpToTheWholeDestination) {
    Guarded g;
    EXPECT_EQ(memcpy_s(g.dst, 8, "12345678", 8), 0);
    EXPECT_EQ(std::string(g.dst, 8), "12345678");
    EXPECT_EQ(memcpy_s(g.dst, 8, "ab", 2), 0);
    EXPECT_EQ(std::string(g.dst, 8), "ab345678");
}

TEST(MemcpyS, WritesNothingWhenRefused) {
    Guarded g;
    EXPECT_NE(memcpy_s(g.dst, 8, "123456789", 9), 0);
    EXPECT_NE(memcpy_s(g.dst, 8, nullptr, 1), 0);
    EXPECT_NE(memcpy_s(nullptr, 8, "a", 1), 0);
    EXPECT_TRUE(g.untouched());
}

TEST(MemcpyS, HasNothingToRefuseInNoBytes) {
    Guarded g;
    EXPECT_EQ(memcpy_s(g.dst, 0, nullptr, 0), 0);
    EXPECT_TRUE(g.untouched());
}

TEST(MemsetS, FillsUpToTheWholeDestination) {
    Guarded g;
    EXPECT_EQ(memset_s(g.dst, 8, 'x', 8), 0);
    EXPECT_EQ(std::string(g.dst, 8), "xxxxxxxx");
    EXPECT_EQ(memset_s(g.dst, 8, 0, 3), 0);
    EXPECT_EQ(std::string(g.dst, 8), std::string("\0\0\0xxxxx", 8));
    EXPECT_EQ(memset_s(g.dst, 0, 'y', 0), 0);
}

TEST(MemsetS, WritesNothingWhenRefused) {
    Guarded g;
    EXPECT_NE(memset_s(g.dst, 8, 'x', 9), 0);
    EXPECT_NE(memset_s(nullptr, 8, 'x', 1), 0);
    EXPECT_TRUE(g.untouched());
}

TEST(SprintfS, ReturnsTheLengthOfWhatFits) {
    Guarded g;
    EXPECT_EQ(sprintf_s(g.dst, 8, "%d-%s", 12, "abcd"), 7);
    EXPECT_STREQ(g.dst, "12-abcd");
    EXPECT_EQ(sprintf_s(g.dst, 8, "%s", ""), 0);
    EXPECT_STREQ(g.dst, "");
}

TEST(SprintfS, LeavesAnEmptyTextWhenRefused) {
    Guarded g;
    EXPECT_EQ(sprintf_s(g.dst, 8, "%s", "12345678"), -1);
    EXPECT_STREQ(g.dst, "");
    EXPECT_EQ(sprintf_s(nullptr, 8, "%s", "a"), -1);
    EXPECT_EQ(sprintf_s(g.dst, 0, "%s", "a"), -1);
}

TEST(SnprintfS, ReturnsTheLengthOfWhatFits) {
    Guarded g;
    EXPECT_EQ(snprintf_s(g.dst, 8, 7, "%s", "1234567"), 7);
    EXPECT_STREQ(g.dst, "1234567");
    EXPECT_EQ(snprintf_s(g.dst, 8, 100, "%s", "abc"), 3);
    EXPECT_STREQ(g.dst, "abc");
}

TEST(SnprintfS, KeepsWhatFittedOfALongerText) {
    Guarded g;
    EXPECT_EQ(snprintf_s(g.dst, 8, 7, "%s", "12345678"), -1);
    EXPECT_STREQ(g.dst, "1234567");
    EXPECT_EQ(snprintf_s(g.dst, 8, 100, "%s", "abcdefghijk"), -1);
    EXPECT_STREQ(g.dst, "abcdefg");
    EXPECT_EQ(snprintf_s(g.dst, 8, SIZE_MAX, "%s", "12345678"), -1);
    EXPECT_STREQ(g.dst, "1234567");
}

TEST(SnprintfS, RefusesATextLongerThanCount) {
    Guarded g;
    EXPECT_EQ(snprintf_s(g.dst, 8, 3, "%s", "abcd"), -1);
    EXPECT_STREQ(g.dst, "abc");
    EXPECT_EQ(snprintf_s(g.dst, 8, 0, "%s", "a"), -1);
    EXPECT_STREQ(g.dst, "");
}

TEST(SnprintfS, RefusesNoDestination) {
    Guarded g;
    EXPECT_EQ(snprintf_s(nullptr, 8, 7, "%s", "a"), -1);
    EXPECT_EQ(snprintf_s(g.dst, 0, 7, "%s", "a"), -1);
    EXPECT_TRUE(g.untouched());
}

TEST(VsnprintfS, DoesAsSnprintfS) {
    Guarded g;
    EXPECT_EQ(formatList(g.dst, 8, 7, "%d", 1234567), 7);
    EXPECT_STREQ(g.dst, "1234567");
    EXPECT_EQ(formatList(g.dst, 8, 3, "%d", 1234567), -1);
    EXPECT_STREQ(g.dst, "123");
}

// A wide character that no multibyte text of the C locale can hold.
TEST(Formatters, LeaveAnEmptyTextWhenTheConversionFails) {
    Guarded g;
    const wchar_t unprintable[] = {0x20AC, 0};
    EXPECT_EQ(sprintf_s(g.dst, 8, "a%ls", unprintable), -1);
    EXPECT_STREQ(g.dst, "");
    EXPECT_EQ(snprintf_s(g.dst, 8, 7, "a%ls", unprintable), -1);
    EXPECT_STREQ(g.dst, "");
}

} // namespace
