// Tests of select results: they hold one of two rows.
#ifndef UNIT_RESULT_TEST_H
#define UNIT_RESULT_TEST_H

#include "ormeldb/result.h"
#include "support/sample.h"
#include "support/unit_test.h"

namespace unit {

class SelectResultTest : public UnitTest {
protected:
    void SetUp() override { Log().Forget(); }

    // A result of one row with one column "C" of such a value.
    void Single(uint16_t type, const std::string &bytes) {
        att_ = Describe("T", {{"C", type, 8, 1}});
        rows_ = MakeResult({{{type, bytes}}});
        result_ = {att_.get(), rows_.get(), 1};
    }

    // Two rows; of the second all values are NULL.
    Descriptor att_ =
        Describe("T", {{"ID", 1, 4, 1}, {"BALANCE", 2, 8, 1}, {"NAME", 9, 21}, {"BYTES", 12, 9}, {"SIZE", 3, 8, 1}});
    Result rows_ = MakeResult(
        {{{1, Bytes(int32_t{300})}, {2, Bytes(int64_t{-2})}, {9, std::string("Ann\0", 4)}, {12, ""}, {3, Bytes(2.5)}},
         {{1, std::nullopt}, {2, std::nullopt}, {9, std::nullopt}, {12, std::nullopt}, {3, ""}}});
    ORMEL_SELECT_RESULT result_ = {att_.get(), rows_.get(), 2};
};

// Where a number is stored, and what lies behind it.
struct Target {
    uint8_t bytes[24];
    Target() { std::memset(bytes, '#', sizeof(bytes)); }
    void *At() { return bytes; }
    std::string First(size_t count) const { return std::string(reinterpret_cast<const char *>(bytes), count); }
    // Whether nothing was stored from there on.
    bool Untouched(size_t from) const {
        return std::all_of(bytes + from, bytes + sizeof(bytes), [](uint8_t byte) { return byte == '#'; });
    }
};

} // namespace unit

#endif
