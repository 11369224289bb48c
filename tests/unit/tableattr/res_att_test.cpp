#include "ormeldb/res_att.h"

#include <cstring>

#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::Log;

namespace {

// The pieces of a dump.
const std::string kShow = "TRACE ORMEL_ResAttShow: ";
const std::string kRule = kShow + std::string(73, '=');
const std::string kHead = kShow + " NO attname          atttypid attlen atttypmod    (len) (offset) (format)";
const std::string kEnd = kShow + " ";

class ResAttTest : public unit::UnitTest {
protected:
    void SetUp() override {
        conn_ = dbConnect("h:1", "u", "p", "REQUIRED");
        Forget();
    }
    void TearDown() override { dbDisconnect(conn_); }

    static void Forget() {
        Client().ForgetCalls();
        Log().Forget();
    }

    unit::Descriptor Create(const std::string &table, const std::vector<unit::Column> &columns) {
        Client().On("", {.columns = columns});
        return unit::Descriptor(ORMEL_ResAttCreate(conn_, table.c_str(), nullptr));
    }

    void *conn_ = nullptr;
};

// --- Making ---

TEST_F(ResAttTest, IsLearntFromTheColumnProbe) {
    auto att = Create("t_person", unit::PersonColumns());
    ASSERT_NE(att, nullptr);
    EXPECT_EQ(att->iAttNum, 3);
    EXPECT_STREQ(att->acTableName, "t_person");
    struct {
        const char *name;
        int32_t type, size, offset, format;
    } fields[] = {{"ID", 1, 4, 0, 1}, {"NAME", 9, 21, 4, 0}, {"BALANCE", 2, 8, 25, 1}};
    for (int32_t i = 0; i < 3; ++i) {
        const ORMEL_RES_ATT_FIELD &field = att->astField[i];
        EXPECT_STREQ(field.attname, fields[i].name);
        EXPECT_EQ(field.atttypid, fields[i].type);
        EXPECT_EQ(field.attlen, fields[i].size);
        EXPECT_EQ(field.atttypmod, 0);
        EXPECT_EQ(field.len, fields[i].size);
        EXPECT_EQ(field.offset, fields[i].offset);
        EXPECT_EQ(field.format, fields[i].format);
        EXPECT_EQ(field.attcolid, i);
    }
    EXPECT_THAT(Client().Calls(), ElementsAre("alloc_stmt(c1)", "prepare(s1, select * from t_person where 1<>1)",
                                              "execute(s1)", "get_column_count(s1)", "desc_column_by_id(s1, 0)",
                                              "desc_column_by_id(s1, 1)", "desc_column_by_id(s1, 2)", "free_stmt(s1)"));
}

TEST_F(ResAttTest, IsShownWhenItIsMade) {
    auto att = Create("T", {{"ID", 1, 4, 1}});
    EXPECT_THAT(Log().Lines(KPL_LOG_TRACE),
                ElementsAre("DEBUG ORMEL_ResAttCreate: Trace in.", "DEBUG dbSelectAtt: sql: select * from T where 1<>1",
                            "DEBUG dbCreateStmt: CreateStmt ok", kRule, kHead,
                            kShow + "  0 ID                      1      4         0        4        0        1", kEnd,
                            "DEBUG dbFreeStmt: FreeStmt ok"));
}

TEST_F(ResAttTest, HoldsARequestsSelectFieldsOnly) {
    char name[] = "NAME";
    ORMEL_OBJECT request{};
    request.iSelectFieldNum = 1;
    request.apcSelectField[0] = name;
    Client().On("SELECT NAME from T", {.columns = {{"NAME", 9, 21}}});
    unit::Descriptor att(ORMEL_ResAttCreate(conn_, "T", &request));
    ASSERT_NE(att, nullptr);
    EXPECT_EQ(att->iAttNum, 1);
    EXPECT_STREQ(att->acTableName, "T");
    EXPECT_EQ(att->astField[0].offset, 0);
}

TEST_F(ResAttTest, HasNoAlignment) {
    auto att = Create("T", {{"A", 1, 4}, {"B", 9, 20}, {"C", 2, 8}});
    EXPECT_EQ(att->astField[0].offset, 0);
    EXPECT_EQ(att->astField[1].offset, 4);
    EXPECT_EQ(att->astField[2].offset, 24);
    EXPECT_EQ(att->astField[2].offset + att->astField[2].len, 32);
}

TEST_F(ResAttTest, CutsLongNames) {
    const std::string name27(27, 'N');
    auto att = Create(std::string(28, 'T'), {{name27, 1, 4}, {name27 + "X", 1, 4}, {name27 + "XYZ", 1, 4}});
    ASSERT_NE(att, nullptr);
    EXPECT_EQ(att->acTableName, std::string(27, 'T'));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(att->astField[i].attname, name27) << i;
    }
}

TEST_F(ResAttTest, AColumnThatCannotBeDescribedTakesNoRoom) {
    auto att = Create("T", {{"A", 1, 4, 1},
                            {.name = "B", .type = 9, .size = 20, .format = 1, .described = false},
                            {"C", 2, 8, 1},
                            {.name = "", .type = 1, .size = 4, .named = false}});
    ASSERT_NE(att, nullptr);
    EXPECT_STREQ(att->astField[1].attname, "");
    EXPECT_EQ(att->astField[1].atttypid, 0);
    EXPECT_EQ(att->astField[1].len, 0);
    EXPECT_EQ(att->astField[1].format, 0);
    EXPECT_EQ(att->astField[1].attcolid, 1);
    EXPECT_EQ(att->astField[2].offset, 4);
    EXPECT_STREQ(att->astField[3].attname, "") << "a column without a name";
}

TEST_F(ResAttTest, FailsWithTheProbe) {
    for (const char *operation : {"alloc_stmt", "prepare", "execute"}) {
        Client().Fail(operation);
        EXPECT_EQ(Create("T", unit::PersonColumns()), nullptr) << operation;
    }
    EXPECT_EQ(Log().LinesOf("ORMEL_ResAttCreate", KPL_LOG_INFO), unit::Lines{}) << "the probe has said it";
}

TEST_F(ResAttTest, FailsWithoutColumns) {
    Client().Fail("get_column_count");
    EXPECT_EQ(Create("T", unit::PersonColumns()), nullptr);
    EXPECT_EQ(Create("T", {}), nullptr);
    EXPECT_THAT(Log().LinesOf("ORMEL_ResAttCreate", KPL_LOG_ERROR),
                ElementsAre("ERROR ORMEL_ResAttCreate: qdc_get_column_count :T failed",
                            "ERROR ORMEL_ResAttCreate: qdc_get_column_count :T failed, count = 0"));
    EXPECT_EQ(Client().LiveStatements(), 0);
}

TEST_F(ResAttTest, FailsSilentlyWithoutMemory) {
    unit::FailingAllocation fail(1);
    EXPECT_EQ(Create("T", unit::PersonColumns()), nullptr);
    EXPECT_THAT(fail.Sizes(), ElementsAre(32u + 3 * 56));
    EXPECT_THAT(Log().Lines(KPL_LOG_INFO), IsEmpty());
    EXPECT_EQ(Client().LiveStatements(), 0);
}

TEST_F(ResAttTest, AHugeColumnCountFailsAsAnAllocationDoes) {
    Client().On("", {.columnCount = 0xFFFFFFFF});
    EXPECT_EQ(ORMEL_ResAttCreate(conn_, "T", nullptr), nullptr);
    EXPECT_EQ(Client().LiveStatements(), 0);
}

TEST_F(ResAttTest, ALayoutWhoseOffsetsOverflowIsNone) {
    unit::Threshold silent(KPL_LOG_FATAL);
    EXPECT_EQ(Create("T", std::vector<unit::Column>(40000, {"C", 9, 65535})), nullptr);
    EXPECT_EQ(Client().LiveStatements(), 0);
}

TEST_F(ResAttTest, IsFreed) {
    ORMEL_ResAttFree(Create("T", unit::PersonColumns()).release());
    Forget();
    ORMEL_ResAttFree(nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_ResAttFree: Trace in."));
}

TEST_F(ResAttTest, NothingIsMadeOfNothing) {
    EXPECT_EQ(ORMEL_ResAttCreate(nullptr, "T", nullptr), nullptr);
    EXPECT_EQ(ORMEL_ResAttCreate(conn_, nullptr, nullptr), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// --- Showing ---

TEST_F(ResAttTest, ShowsEveryColumn) {
    auto att = unit::Describe("T", {{"ID", 1, 4, 1}, {"A_NAME_OF_TWENTY_SEVEN_CHARS", 9, 40000, 0}});
    att->astField[1].atttypmod = -1;
    ORMEL_ResAttShow(att.get());
    EXPECT_THAT(
        Log().Lines(KPL_LOG_TRACE),
        ElementsAre(kRule, kHead, kShow + "  0 ID                      1      4         0        4        0        1",
                    kShow + "  1 A_NAME_OF_TWENTY_SEVEN_CHAR        9  40000        -1    40000        4        0",
                    kEnd));
}

TEST_F(ResAttTest, ShowsThatThereAreNoColumns) {
    for (int32_t count : {0, -1, INT32_MIN}) {
        auto att = unit::Describe("T", {});
        att->iAttNum = count;
        Forget();
        ORMEL_ResAttShow(att.get());
        EXPECT_THAT(Log().Lines(KPL_LOG_TRACE), ElementsAre(kRule, kHead, kEnd));
    }
}

TEST_F(ResAttTest, ShowsThatThereIsNoDescriptor) {
    ORMEL_ResAttShow(nullptr);
    EXPECT_THAT(Log().Lines(KPL_LOG_TRACE),
                ElementsAre(kRule, kHead, "ERROR ORMEL_ResAttShow: ORMEL_ResAttShow parameter error."));
    unit::Threshold errors(KPL_LOG_ERROR);
    Forget();
    ORMEL_ResAttShow(nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR ORMEL_ResAttShow: ORMEL_ResAttShow parameter error."));
}

TEST_F(ResAttTest, ADumpThatNobodySeesCostsOneThresholdTest) {
    auto att = unit::Describe("T", unit::Integers(200));
    unit::Threshold debug(KPL_LOG_DEBUG);
    int before = Log().thresholdReads;
    ORMEL_ResAttShow(att.get());
    EXPECT_EQ(Log().thresholdReads - before, 1);
}

// --- Looking up ---

TEST_F(ResAttTest, ComparesTablesByNameIgnoringCase) {
    auto a = unit::Describe("t_user", {});
    auto b = unit::Describe("T_USER", {});
    auto c = unit::Describe("T_USERS", {});
    EXPECT_EQ(ORMEL_ResAttCmp(a.get(), b.get()), 0);
    EXPECT_LT(ORMEL_ResAttCmp(a.get(), c.get()), 0);
    EXPECT_GT(ORMEL_ResAttCmp(c.get(), b.get()), 0);
}

TEST_F(ResAttTest, FindsColumnsIgnoringCase) {
    auto att = unit::Describe("T", {{"ID", 1, 4}, {"NAME", 9, 20}, {"name", 9, 20}});
    struct {
        const char *name;
        uint32_t index;
    } cases[] = {{"ID", 0},   {"id", 0},           {"Id", 0},        {"NAME", 1},
                 {"name", 1}, {"NAM", 0xFFFFFFFF}, {"", 0xFFFFFFFF}, {nullptr, 0xFFFFFFFF}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name == nullptr ? "null" : c.name);
        EXPECT_EQ(ORMEL_GetFieldIdByNameFromResAttr(att.get(), c.name), c.index);
        EXPECT_EQ(ORMEL_GetResAttInfoByName(att.get(), c.name),
                  c.index == 0xFFFFFFFF ? nullptr : &att->astField[c.index]);
    }
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(ResAttTest, FindsNothingInNothing) {
    auto att = unit::Describe("T", unit::PersonColumns());
    EXPECT_EQ(ORMEL_GetFieldIdByNameFromResAttr(nullptr, "ID"), 0xFFFFFFFFu);
    EXPECT_EQ(ORMEL_GetResAttInfoByName(nullptr, "ID"), nullptr);
    for (int32_t count : {0, -1}) {
        att->iAttNum = count;
        EXPECT_EQ(ORMEL_GetFieldIdByNameFromResAttr(att.get(), "ID"), 0xFFFFFFFFu);
        EXPECT_EQ(ORMEL_GetResAttInfoByName(att.get(), "ID"), nullptr);
    }
}

TEST_F(ResAttTest, CopiesColumnNames) {
    auto att = unit::Describe("T", unit::PersonColumns());
    char names[4][ORMEL_NAME_SIZE];
    std::memset(names, 'x', sizeof(names));
    uint8_t count = 99;
    for (int32_t capacity : {3, 4}) {
        count = 99;
        EXPECT_EQ(ORMEL_GetAllFieldByRes(att.get(), names, capacity, &count), 0u);
        EXPECT_EQ(count, 3);
    }
    EXPECT_STREQ(names[0], "ID");
    EXPECT_STREQ(names[1], "NAME");
    EXPECT_STREQ(names[2], "BALANCE");
    EXPECT_EQ(names[3][0], 'x');
}

TEST_F(ResAttTest, CopiesAllNamesOrNone) {
    auto att = unit::Describe("T", unit::PersonColumns());
    char names[3][ORMEL_NAME_SIZE];
    std::memset(names, 'x', sizeof(names));
    uint8_t count = 99;
    for (int32_t capacity : {2, 0, -1}) {
        EXPECT_EQ(ORMEL_GetAllFieldByRes(att.get(), names, capacity, &count), 1u);
    }
    EXPECT_EQ(ORMEL_GetAllFieldByRes(nullptr, names, 3, &count), 1u);
    EXPECT_EQ(ORMEL_GetAllFieldByRes(att.get(), nullptr, 3, &count), 1u);
    EXPECT_EQ(ORMEL_GetAllFieldByRes(att.get(), names, 3, nullptr), 1u);
    EXPECT_EQ(count, 99);
    EXPECT_EQ(names[0][0], 'x');
}

TEST_F(ResAttTest, TheNumberOfNamesIsOneByte) {
    auto att = unit::Describe("T", unit::Integers(257));
    std::vector<char> names(257 * ORMEL_NAME_SIZE);
    uint8_t count = 99;
    EXPECT_EQ(ORMEL_GetAllFieldByRes(att.get(), reinterpret_cast<char(*)[ORMEL_NAME_SIZE]>(names.data()), 257, &count),
              0u);
    EXPECT_EQ(count, 1);
    EXPECT_STREQ(&names[256 * ORMEL_NAME_SIZE], "C256");
}

TEST_F(ResAttTest, TheUnusedGlobalIsNull) {
    EXPECT_EQ(g_pstResAtt, nullptr);
}

// A descriptor may come to lie where another lay, and names are remembered by their addresses.
TEST_F(ResAttTest, TheFirstOfTwoColumnsOfOneNameIsMeantWhateverWasFoundThereBefore) {
    static const char name[] = "NAME";
    auto before = Create("t", {{"ID", 1, 4, 1}, {"X", 9, 5}, {"NAME", 9, 5}});
    EXPECT_EQ(ORMEL_GetFieldIdByNameFromResAttr(before.get(), name), 2u);
    auto twins = Create("t", {{"ID", 1, 4, 1}, {"Name", 9, 5}, {"NAME", 9, 5}});
    std::memcpy(before.get(), twins.get(), sizeof(ORMEL_RES_ATT) + 3 * sizeof(ORMEL_RES_ATT_FIELD));
    EXPECT_EQ(ORMEL_GetFieldIdByNameFromResAttr(before.get(), name), 1u);
    EXPECT_EQ(ORMEL_GetFieldIdByNameFromResAttr(before.get(), name), 1u) << "and remembered so";
}

} // namespace
