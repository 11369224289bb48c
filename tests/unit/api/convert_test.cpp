// Results turned into records.
#include "api/operation.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Bytes;
using unit::Log;
using unit::MakePerson;
using unit::Person;

namespace {

class ConvertTest : public unit::UnitTest {
protected:
    // A result of ten people, the n-th of whom has the number n.
    static unit::Result People() {
        std::vector<std::vector<unit::Value>> rows;
        for (int32_t id = 0; id < 10; ++id) {
            rows.push_back({{1, Bytes(id)}, {9, std::string("Ann\0", 4)}, {2, Bytes(int64_t{-id})}});
        }
        return unit::MakeResult(rows);
    }

    uint32_t Convert(uint16_t records, uint32_t start, uint16_t length = sizeof(Person)) {
        buffer_ = {length, records, sizeof(people_), 0, reinterpret_cast<uint8_t *>(people_)};
        std::memset(static_cast<void *>(people_), '#', sizeof(people_));
        Log().Forget();
        return ORMEL_ResultConvertDsBuf(&result_, &buffer_, start);
    }
    bool Written(size_t record) const { return people_[record].id != 0x23232323; }

    unit::Descriptor att_ = unit::Describe("PERSON", unit::PersonColumns());
    unit::Result rows_ = People();
    ORMEL_SELECT_RESULT result_ = {att_.get(), rows_.get(), 10};
    Person people_[11];
    ORMEL_RECORD_BUFFER buffer_{};
};

TEST_F(ConvertTest, CopiesAsManyRecordsAsTheBufferHolds) {
    EXPECT_EQ(Convert(4, 6), 0u) << "up to the very last one";
    for (int32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(Bytes(people_[i]), Bytes(MakePerson(6 + i, "Ann", -6 - i)));
    }
    EXPECT_FALSE(Written(4));
    EXPECT_EQ(buffer_.usRecNum, 4);
    EXPECT_THAT(Log().Lines(KPL_LOG_INFO), IsEmpty());
    EXPECT_EQ(Convert(10, 0), 0u);
    EXPECT_EQ(Bytes(people_[9]), Bytes(MakePerson(9, "Ann", -9)));
    EXPECT_EQ(Convert(0, 10), 0u) << "none, from behind the last";
    EXPECT_FALSE(Written(0));
}

TEST_F(ConvertTest, RefusesRecordsThatAreNotThere) {
    const std::string error = "ERROR ORMEL_ResultConvertDsBuf: Error: Out of bounds of index, ";
    EXPECT_EQ(Convert(4, 7), 1u);
    EXPECT_THAT(Log().Lines(), ElementsAre(error + "startIndex:7, bufRecNum:4, acturalRecNum:10"));
    EXPECT_FALSE(Written(0));
    EXPECT_EQ(Convert(11, 0), 1u);
    EXPECT_EQ(Convert(0, 11), 1u);
    EXPECT_EQ(Convert(1, 0xFFFFFFFF), 1u) << "the sum does not wrap round";
    EXPECT_FALSE(Written(0));
    result_.uiRecNum = 11;
    EXPECT_EQ(Convert(11, 0), 1u) << "a number that the rows do not bear out";
    EXPECT_FALSE(Written(0));
}

TEST_F(ConvertTest, RefusesRecordsOfAnotherLength) {
    for (uint16_t length : std::vector<uint16_t>{32, 34, 0}) {
        EXPECT_EQ(Convert(1, 0, length), 1u);
        EXPECT_THAT(Log().Lines(), ElementsAre("ERROR ORMEL_ResultConvertDsBuf: Error: DbRecLen != RecLen, 33, " +
                                               std::to_string(length)));
        EXPECT_FALSE(Written(0));
    }
}

TEST_F(ConvertTest, ComparesTheLow16BitsOfTheLength) {
    auto wide = unit::Describe("WIDE", {{"A", 9, 65535}, {"B", 9, 5}});
    auto rows = unit::MakeResult({{{9, "ab"}, {9, "cd"}}});
    result_ = {wide.get(), rows.get(), 1};
    EXPECT_EQ(Convert(1, 0, 5), 1u);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR ORMEL_ResultConvertDsBuf: Error: DbRecLen != RecLen, 65540, 5"));
    EXPECT_EQ(Convert(1, 0, 4), 0u);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(people_), 5), std::string("ab\0\0#", 5))
        << "nothing past the record";
}

TEST_F(ConvertTest, ADescriptorWithoutColumnsHasRecordsOfNoLength) {
    auto none = unit::Describe("NONE", {});
    result_.pstResAtt = none.get();
    EXPECT_EQ(Convert(1, 0), 1u);
    none->iAttNum = -1;
    EXPECT_EQ(Convert(1, 0), 1u);
    EXPECT_FALSE(Written(0));
}

TEST_F(ConvertTest, NeedsAResultWithDescriptorAndRows) {
    Convert(1, 0);
    Log().Forget();
    EXPECT_EQ(ORMEL_ResultConvertDsBuf(nullptr, &buffer_, 0), 97u);
    EXPECT_EQ(ORMEL_ResultConvertDsBuf(&result_, nullptr, 0), 97u);
    for (const ORMEL_SELECT_RESULT &lacking : {ORMEL_SELECT_RESULT{nullptr, rows_.get(), 10},
                                               ORMEL_SELECT_RESULT{att_.get(), nullptr, 10}, ORMEL_SELECT_RESULT{}}) {
        EXPECT_EQ(ORMEL_ResultConvertDsBuf(&lacking, &buffer_, 0), 97u);
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(ConvertTest, ABufferWithoutABlockTakesNothing) {
    buffer_ = {sizeof(Person), 1, 0, 0, nullptr};
    EXPECT_EQ(ORMEL_ResultConvertDsBuf(&result_, &buffer_, 0), 1u);
}

} // namespace
