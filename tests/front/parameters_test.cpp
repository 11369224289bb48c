#include "front/parameters.h"

#include <array>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "front/errors.h"

namespace {

using namespace ormel::client;
using testing::AllOf;
using testing::HasSubstr;

constexpr uint32_t kClob = 13;
constexpr uint32_t kBlob = 14;

Parameter parameter(uint32_t type, const void *data, size_t length, const uint16_t *lengths = nullptr) {
    return {true, type, static_cast<uint8_t *>(const_cast<void *>(data)), static_cast<uint32_t>(length), lengths};
}

// The value of one bound parameter.
Value bound(uint32_t type, const void *data, size_t length) {
    Parameters parameters;
    parameters.reset(1);
    parameters.bind(0, parameter(type, data, length));
    return parameters.at(0, 0);
}

std::string textOf(const Value &value) {
    return {value.data, value.size};
}

template <class Work> std::string refusalOf(Work work) {
    try {
        work();
    } catch (const Error &error) {
        return error.message;
    }
    ADD_FAILURE() << "was taken";
    return "";
}

TEST(ParametersTest, IntegersOfEveryLength) {
    const int8_t tiny = -1;
    const int16_t small = -300;
    const int32_t plain = INT32_MIN;
    const int64_t big = INT64_MAX;
    for (const uint32_t type : {1U, 2U, 25U}) {
        EXPECT_EQ(bound(type, &tiny, 1).integer, -1);
        EXPECT_EQ(bound(type, &small, 2).integer, -300);
        EXPECT_EQ(bound(type, &plain, 4).integer, INT32_MIN);
        EXPECT_EQ(bound(type, &big, 8).integer, INT64_MAX);
        EXPECT_EQ(bound(type, &big, 8).kind, Kind::integer);
        EXPECT_EQ(bound(type, &big, 8).type, type);
    }
}

TEST(ParametersTest, RealsOfBothLengths) {
    const double wide = 0.1;
    const float narrow = 0.5F;
    EXPECT_EQ(bound(3, &wide, 8).real, 0.1);
    EXPECT_EQ(bound(3, &narrow, 4).real, 0.5);
    EXPECT_EQ(bound(3, &wide, 8).kind, Kind::real);
}

TEST(ParametersTest, TextEndsAtItsNulAndBytesDoNot) {
    for (const uint32_t type : {8U, 9U, 10U}) {
        EXPECT_EQ(textOf(bound(type, "ab\0cd", 5)), "ab");
        EXPECT_EQ(textOf(bound(type, "abcd", 3)), "abc");
        EXPECT_EQ(bound(type, "", 0).kind, Kind::text);
    }
    for (const uint32_t type : {11U, 12U, 23U}) {
        EXPECT_EQ(textOf(bound(type, "ab\0cd", 5)), std::string("ab\0cd", 5));
        EXPECT_EQ(bound(type, "", 0).kind, Kind::bytes);
        EXPECT_NE(bound(type, "", 0).data, nullptr);
    }
}

TEST(ParametersTest, ANullPointerIsNull) {
    for (const uint32_t type : {1U, 2U, 3U, 8U, 9U, 10U, 11U, 12U, 13U, 14U, 23U, 25U})
        EXPECT_EQ(bound(type, nullptr, 4).kind, Kind::null) << type;
}

TEST(ParametersTest, WhatCannotBeBoundIsRefused) {
    const std::array<int64_t, 2> value{};
    struct Case {
        uint32_t type;
        size_t length;
    };
    for (const Case &c : {Case{0, 4}, Case{4, 4}, Case{15, 4}, Case{1, 0}, Case{1, 3}, Case{2, 16}, Case{3, 2},
                          Case{13, 15}, Case{14, 0}, Case{0xFFFFFFFF, 4}}) {
        SCOPED_TRACE(std::to_string(c.type) + ", " + std::to_string(c.length));
        EXPECT_THAT(refusalOf([&] { bound(c.type, value.data(), c.length); }),
                    AllOf(HasSubstr(":1"), HasSubstr(std::to_string(c.type))));
    }
    Parameters two;
    two.reset(2);
    EXPECT_THAT(refusalOf([&] { two.bind(2, parameter(1, value.data(), 4)); }), HasSubstr("position 2"));
    EXPECT_THAT(refusalOf([&] { two.check(1); }), HasSubstr(":1"));
    two.bind(0, parameter(1, value.data(), 4));
    EXPECT_THAT(refusalOf([&] { two.check(1); }), HasSubstr(":2"));
}

TEST(ParametersTest, RowsOfAnArray) {
    const std::string block("abc\0de\0\0f\0\0\0", 12);
    const std::array<uint16_t, 4> lengths{3, 2, 65535, 0};
    Parameters parameters;
    parameters.reset(1);
    parameters.bind(0, parameter(9, block.data(), 4, lengths.data()));
    parameters.check(3);
    EXPECT_EQ(textOf(parameters.at(0, 0)), "abc");
    EXPECT_EQ(textOf(parameters.at(1, 0)), "de");
    EXPECT_EQ(parameters.at(2, 0).kind, Kind::null);
}

TEST(ParametersTest, LengthsThatDoNotFitNameRowAndParameter) {
    const std::array<char, 32> block{};
    struct Case {
        uint32_t type;
        uint16_t length;
        bool fits;
    };
    for (const Case &c : {Case{9, 7, true}, Case{9, 8, false}, Case{9, 9, false}, Case{8, 8, false}, Case{10, 8, false},
                          Case{12, 8, true}, Case{12, 9, false}, Case{12, 65534, false}, Case{1, 8, true},
                          Case{1, 3, false}, Case{2, 4, true}, Case{3, 5, false}}) {
        SCOPED_TRACE(std::to_string(c.type) + ", " + std::to_string(c.length));
        const std::array<uint16_t, 2> lengths{4, c.length};
        Parameters parameters;
        parameters.reset(1);
        parameters.bind(0, parameter(c.type, block.data(), 8, lengths.data()));
        if (c.fits)
            parameters.check(2);
        else
            EXPECT_THAT(refusalOf([&] { parameters.check(2); }), AllOf(HasSubstr("row 1"), HasSubstr(":1")));
        parameters.check(1);
    }
}

TEST(ParametersTest, SlotsOfLargeObjects) {
    std::array<std::array<char, 16>, 3> slots{};
    const std::array<uint16_t, 3> lengths{16, 16, 16};
    Parameters parameters;
    parameters.reset(1);
    parameters.bind(0, parameter(kClob, slots.data(), 16, lengths.data()));
    EXPECT_EQ(parameters.writeLob(0, kClob, 0, 3, "text\0\0", 6), 6U);
    EXPECT_EQ(parameters.writeLob(0, kClob, 1, 3, "", 0), 0U);
    EXPECT_EQ(textOf(parameters.at(0, 0)), "text");
    EXPECT_EQ(parameters.at(1, 0).kind, Kind::text);
    EXPECT_EQ(parameters.at(1, 0).size, 0U);
    EXPECT_EQ(parameters.at(2, 0).kind, Kind::null);
    EXPECT_THAT(refusalOf([&] { parameters.writeLob(0, kClob, 2, 3, "a\0b", 3); }), HasSubstr("row 2"));
    EXPECT_THAT(refusalOf([&] { parameters.writeLob(0, kClob, 3, 3, "a", 1); }), HasSubstr("no row 3"));
    EXPECT_FALSE(refusalOf([&] { parameters.writeLob(0, kBlob, 0, 3, "a", 1); }).empty());
    EXPECT_FALSE(refusalOf([&] { parameters.writeLob(1, kClob, 0, 3, "a", 1); }).empty());
    EXPECT_EQ(parameters.at(2, 0).kind, Kind::null);
}

TEST(ParametersTest, BytesOfALargeObjectKeepTheirZeros) {
    std::array<char, 16> slot{};
    Parameters parameters;
    parameters.reset(1);
    parameters.bind(0, parameter(kBlob, slot.data(), 16));
    EXPECT_EQ(parameters.writeLob(0, kBlob, 0, 1, "a\0b\0", 4), 4U);
    EXPECT_EQ(textOf(parameters.at(0, 0)), std::string("a\0b\0", 4));
    EXPECT_EQ(parameters.at(0, 0).kind, Kind::bytes);
}

} // namespace
