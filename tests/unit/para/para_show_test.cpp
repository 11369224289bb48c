#include "ormeldb/para.h"

#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Log;

namespace {

const std::string kTrace = "TRACE ORMEL_ParaShow: ";
const std::string kValue = "TRACE ORMEL_ParaValueShow: ";

class ParaShowTest : public unit::UnitTest {
protected:
    // Names, text, numbers: two fields and a condition.
    static ORMEL_PARA Sample() {
        static char text[] = "abc";
        static uint8_t number[] = {0x07, 0xFF};
        ORMEL_PARA para{};
        para.iFieldNum = 2;
        para.iCondNum = 1;
        const char *names[] = {"NAME", "ID", "A_NAME_OF_TWENTY_SEVEN_CHA"};
        for (uint32_t i = 0; i < 3; ++i) {
            para.name[i] = names[i];
            para.value[i] = i == 0 ? static_cast<void *>(text) : number;
            para.length[i] = i == 0 ? 3 : 2;
            para.format[i] = i;
            para.op[i] = i == 2 ? 8 : 23;
            para.type[i] = i == 0 ? 9 : 1;
        }
        para.isLimit = 1;
        para.iRowCounts = 20;
        para.iOffset = 40;
        return para;
    }

    // A slot's line; the address takes 18 characters at least.
    static std::string Slot(const char *format, const char *name, void *value, int length, int slotFormat) {
        char text[200];
        std::snprintf(text, sizeof(text), "%-16s %18p %6d %6d ", name, value, length, slotFormat);
        return kTrace + format + text;
    }
};

TEST_F(ParaShowTest, ShowsFieldsAndConditions) {
    ORMEL_PARA para = Sample();
    EXPECT_EQ(ORMEL_ParaShow(&para), 0u);
    EXPECT_THAT(Log().Lines(KPL_LOG_TRACE),
                ElementsAre("DEBUG ORMEL_ParaShow: Trace in.", kTrace + std::string(68, '='),
                            kTrace + " para fieldname\t\t\t\t  value_addr length format op value",
                            Slot(" F1   ", "NAME", para.value[0], 3, 0) + "--", kValue + " abc", kValue + " ",
                            Slot(" F2   ", "ID", para.value[1], 2, 1) + "--", kValue + " 07", kValue + " ff",
                            kValue + " ", Slot(" C3   ", "A_NAME_OF_TWENTY_SEVEN_CHA", para.value[2], 2, 2) + " 8",
                            kValue + " 07", kValue + " ff", kValue + " ", kTrace + " ",
                            "DEBUG ORMEL_ParaShow: isLimit:1,iRowCounts:20,iOffset:40"));
}

TEST_F(ParaShowTest, ShowsAnEmptyList) {
    ORMEL_PARA para{};
    EXPECT_EQ(ORMEL_ParaShow(&para), 0u);
    EXPECT_EQ(Log().Lines(KPL_LOG_TRACE).size(), 5u);
    EXPECT_EQ(Log().Lines().back(), "DEBUG ORMEL_ParaShow: isLimit:0,iRowCounts:0,iOffset:0");
}

TEST_F(ParaShowTest, ACountOutsideItsCapacityShowsNoSlots) {
    for (auto [fields, conditions] : {std::pair{-1, 0}, {33, 0}, {0, -1}, {0, 33}, {INT32_MAX, INT32_MIN}}) {
        ORMEL_PARA para{};
        para.iFieldNum = fields;
        para.iCondNum = conditions;
        Log().Forget();
        EXPECT_EQ(ORMEL_ParaShow(&para), 0u);
        EXPECT_EQ(Log().Lines(KPL_LOG_TRACE).size(), 5u) << fields << ' ' << conditions;
    }
}

TEST_F(ParaShowTest, ShowsNothingOfNothing) {
    EXPECT_EQ(ORMEL_ParaShow(nullptr), 0u);
    ORMEL_PARA para{};
    para.iFieldNum = 1; // a slot that nobody filled
    EXPECT_EQ(ORMEL_ParaShow(&para), 0u);
}

TEST_F(ParaShowTest, ADumpThatNobodySeesDoesNotGrowWithTheList) {
    unit::Threshold info(KPL_LOG_INFO);
    auto reads = [](const ORMEL_PARA &para) {
        int before = Log().thresholdReads;
        ORMEL_ParaShow(&para);
        return Log().thresholdReads - before;
    };
    std::string wide(4000, 'w');
    ORMEL_PARA full{};
    full.iFieldNum = 32;
    for (size_t i = 0; i < 32; ++i) {
        full.name[i] = "N";
        full.value[i] = wide.data();
        full.length[i] = 4000;
        full.type[i] = 12;
    }
    EXPECT_LE(reads(full), 3) << "the two lines at DEBUG, and the test for TRACE";
    EXPECT_EQ(reads(full), reads(ORMEL_PARA{}));
    EXPECT_THAT(Log().Raw(), IsEmpty());
}

// --- One value ---

unit::Lines Shown(uint32_t type, const void *value, uint32_t length) {
    Log().Forget();
    ORMEL_ParaValueShow(type, value, length);
    unit::Lines messages;
    for (const unit::Line &line : Log().Raw()) {
        EXPECT_EQ(line.function, "ORMEL_ParaValueShow");
        EXPECT_EQ(line.level, KPL_LOG_TRACE);
        messages.push_back(line.message);
    }
    return messages;
}

TEST_F(ParaShowTest, ShowsTextInALineAndNoFurtherThanItsLength) {
    std::unique_ptr<char, unit::FreeDeleter> text(static_cast<char *>(std::malloc(3)));
    std::memcpy(text.get(), "abc", 3);
    for (uint32_t type : {8u, 9u, 10u, 13u}) {
        EXPECT_THAT(Shown(type, text.get(), 3), ElementsAre(" abc", " "));
        EXPECT_THAT(Shown(type, "ab\0cd", 5), ElementsAre(" ab", " "));
        EXPECT_THAT(Shown(type, nullptr, 3), ElementsAre(" ", " "));
    }
}

TEST_F(ParaShowTest, ShowsOtherValuesByteByByte) {
    for (uint32_t type : {1u, 2u, 3u, 4u, 11u, 12u, 14u, 23u, 25u}) {
        EXPECT_THAT(Shown(type, "\x01\xAB", 2), ElementsAre(" 01", " ab", " "));
        EXPECT_THAT(Shown(type, nullptr, 2), ElementsAre(" "));
        EXPECT_THAT(Shown(type, "", 0), ElementsAre(" "));
    }
}

TEST_F(ParaShowTest, AValueThatNobodySeesCostsOneThresholdTest) {
    unit::Threshold debug(KPL_LOG_DEBUG);
    std::string value(1000, 'v');
    int before = Log().thresholdReads;
    ORMEL_ParaValueShow(11, value.data(), 1000);
    EXPECT_EQ(Log().thresholdReads - before, 1);
}

} // namespace
