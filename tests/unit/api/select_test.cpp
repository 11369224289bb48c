#include "ormeldb/select.h"

#include "api/operation.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Bytes;
using unit::Cell;
using unit::Client;
using unit::Conditions;
using unit::Log;
using unit::MakePerson;
using unit::PersonRow;

namespace {

class SelectTest : public unit::OperationTest {
protected:
    static void HaveRows(const std::vector<std::vector<Cell>> &rows) {
        Client().On("SELECT * FROM PERSON", {.columns = unit::PersonColumns(), .rows = rows});
    }
};

// --- Into a record buffer ---

TEST_F(SelectTest, SelectsTheRecordThatMeetsTheConditions) {
    conditions_.Add(2, ORMEL_OP_LESS_EQUAL, Bytes(int64_t{100}));
    person_ = MakePerson(0, "nobody", 0);
    EXPECT_EQ(ORMEL_SelectRec("PERSON", conditions_.Get(), 99, &buffer_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT * FROM PERSON WHERE ID = :1 AND BALANCE <= :2"));
    EXPECT_THAT(Client().Calls(), testing::Contains("set_stmt_attr(s2, 201, 100000, 0)"));
    EXPECT_EQ(buffer_.usRecNum, 1);
    EXPECT_EQ(Bytes(person_), Bytes(MakePerson(7, "Ann", -1)));
}

TEST_F(SelectTest, WithoutConditionsSelectsEverything) {
    HaveRows({PersonRow(1, "a", 1), PersonRow(2, "b", 2)});
    EXPECT_EQ(ORMEL_SelectRec("PERSON", nullptr, 0, &buffer_), 0u);
    EXPECT_EQ(ORMEL_SelectRec("PERSON", Conditions().Get(), 0, &buffer_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT * FROM PERSON", "SELECT * FROM PERSON"));
    EXPECT_EQ(buffer_.usRecNum, 2);
    EXPECT_EQ(Bytes(person_), Bytes(MakePerson(1, "a", 1)));
}

TEST_F(SelectTest, NothingFoundIsNoFailure) {
    HaveRows({});
    EXPECT_EQ(ORMEL_SelectRec("PERSON", conditions_.Get(), 0, &buffer_), 0u);
    EXPECT_EQ(buffer_.usRecNum, 0);
    EXPECT_EQ(Bytes(person_), Bytes(MakePerson(7, "Ann", -1))) << "nothing is written";
}

TEST_F(SelectTest, SaysThatATableCannotBeDescribed) {
    void *conn = ORMEL_DBConnect();
    Client().Fail("execute");
    EXPECT_EQ(ORMEL_SelectRecForConn(conn, "PERSON", nullptr, 0, &buffer_), 255u);
    EXPECT_THAT(Log().LinesOf("ORMEL_SelectRecForConn"),
                ElementsAre("DEBUG ORMEL_SelectRecForConn: Trace in.",
                            "ERROR ORMEL_SelectRecForConn: Get sql table's Attributes Failed."));
    ORMEL_DBDisConnect(conn);
}

TEST_F(SelectTest, RefusedConditionsSelectNothing) {
    Conditions unknown;
    unknown.Add(3, 0, "");
    EXPECT_EQ(ORMEL_SelectRec("PERSON", unknown.Get(), 0, &buffer_), 1u);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_EQ(Log().Lines(KPL_LOG_ERROR).size(), 1u);
}

TEST_F(SelectTest, WideTablesCanBeSelected) {
    Have("WIDE", unit::Integers(100));
    Client().On("SELECT * FROM WIDE",
                {.columns = unit::Integers(100), .rows = {std::vector<Cell>(100, unit::Int32(3))}});
    std::vector<int32_t> record(100);
    ORMEL_RECORD_BUFFER buffer = {400, 0, 400, 0, reinterpret_cast<uint8_t *>(record.data())};
    Conditions conditions;
    conditions.Add(99, 0, Bytes(int32_t{3}));
    EXPECT_EQ(ORMEL_SelectRec("WIDE", conditions.Get(), 0, &buffer), 0u);
    EXPECT_EQ(record, std::vector<int32_t>(100, 3));
}

// --- Counting ---

class CountTest : public unit::OperationTest {
protected:
    // Counts a table for which the database answers so.
    uint32_t Count(const unit::Answer &answer) {
        count_ = kUnwritten;
        Client().On("SELECT count(*)", answer);
        return ORMEL_LocalExistRecord("PERSON", nullptr, &count_);
    }
};

TEST_F(CountTest, CountsWhatMeetsTheConditions) {
    conditions_.Add(1, ORMEL_OP_NOT_EQUAL, "x");
    EXPECT_EQ(ORMEL_LocalExistRecord("PERSON", conditions_.Get(), &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT count(*) FROM PERSON WHERE ID = :1 AND NAME <> :2"));
    EXPECT_EQ(count_, 1u);
    EXPECT_EQ(Log().LinesOf("ORMEL_LocalExistRecordForConn").back(),
              "DEBUG ORMEL_LocalExistRecordForConn: Count uiRet: 0x0, recNum: 1");
}

TEST_F(CountTest, WithoutConditionsNoTableIsDescribed) {
    EXPECT_EQ(ORMEL_LocalExistRecord("PERSON", nullptr, &count_), 0u);
    EXPECT_EQ(ORMEL_LocalExistRecord("PERSON", Conditions().Get(), &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT count(*) FROM PERSON", "SELECT count(*) FROM PERSON"));
    EXPECT_EQ(Client().Count("prepare"), 2);
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), nullptr);
}

TEST_F(CountTest, ReadsTheCountByItsLength) {
    auto count = [](const std::string &bytes) {
        return unit::Answer{.columns = {{"COUNT", 11, 8}}, .rows = {{unit::Text(bytes)}}};
    };
    struct {
        std::string bytes;
        uint32_t count;
    } cases[] = {{std::string("\x05\0\0\0\0\0\0\0", 8), 5},   {std::string("\x05\0\0\0", 4), 5},
                 {std::string("\x05\x01", 2), 0x105},         {std::string("\x05", 1), 5},
                 {std::string("\x05\x01\x01", 3), 0x010105},  {"", 0},
                 {std::string("\x05\0\0\0\x01\0\0\0", 8), 5}, {std::string("\x05\0\0\0\0", 5), 5}};
    for (const auto &c : cases) {
        EXPECT_EQ(Count(count(c.bytes)), 0u);
        EXPECT_EQ(count_, c.count) << c.bytes.size() << " bytes";
    }
}

TEST_F(CountTest, WithoutACountItIsZero) {
    EXPECT_EQ(Count({.columns = {{"COUNT", 2, 8}}, .rows = {{unit::Null()}}}), 0u);
    EXPECT_EQ(count_, 0u);
    EXPECT_EQ(Count({.columns = {{"COUNT", 2, 8}}}), 0u);
    EXPECT_EQ(count_, 0u);
}

TEST_F(CountTest, AFailedCountWritesNoNumberAndLogsItsCode) {
    Client().Fail("execute");
    EXPECT_EQ(ORMEL_LocalExistRecord("PERSON", nullptr, &count_), 211u);
    EXPECT_EQ(count_, kUnwritten);
    EXPECT_EQ(Log().LinesOf("ORMEL_LocalExistRecordForConn").back(),
              "DEBUG ORMEL_LocalExistRecordForConn: Count uiRet: 0xd3, recNum: 57005");
}

TEST_F(CountTest, RefusedConditionsCountNothing) {
    Conditions unknown;
    unknown.Add(3, 0, "");
    EXPECT_EQ(ORMEL_LocalExistRecord("PERSON", unknown.Get(), &count_), 1u);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_EQ(count_, kUnwritten);
}

// --- Counting by a ready list ---

class BatchCountTest : public unit::OperationTest {
protected:
    void SetUp() override {
        OperationTest::SetUp();
        conn_ = ORMEL_DBConnect();
        Client().ForgetCalls();
        Log().Forget();
    }
    void TearDown() override {
        ORMEL_DBDisConnect(conn_);
        OperationTest::TearDown();
    }

    void *conn_ = nullptr;
    ORMEL_PARA para_{};
};

TEST_F(BatchCountTest, CountsByTheListAsItIs) {
    int32_t id = 7;
    para_.iCondNum = 1;
    para_.name[0] = "ID";
    para_.value[0] = &id;
    para_.length[0] = 4;
    para_.type[0] = 1;
    EXPECT_EQ(ORMEL_GetBatchSelectCount(conn_, "PERSON", &para_, &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("SELECT count(*) FROM PERSON WHERE ID = :1"));
    EXPECT_EQ(count_, 1u);
    EXPECT_THAT(Log().LinesOf("ORMEL_"), ElementsAre("DEBUG ORMEL_GetBatchSelectCount: Select recNum: 1, return:0x0"));
}

TEST_F(BatchCountTest, AFailedCountWritesNoNumber) {
    Client().Fail("prepare");
    EXPECT_EQ(ORMEL_GetBatchSelectCount(conn_, "PERSON", &para_, &count_), 211u);
    EXPECT_EQ(count_, kUnwritten);
    EXPECT_EQ(Log().Lines().back(), "DEBUG ORMEL_GetBatchSelectCount: Select recNum: 57005, return:0xd3");
}

TEST_F(BatchCountTest, NeedsItsArgumentsButTheTable) {
    EXPECT_EQ(ORMEL_GetBatchSelectCount(nullptr, "PERSON", &para_, &count_), 97u);
    EXPECT_EQ(ORMEL_GetBatchSelectCount(conn_, "PERSON", nullptr, &count_), 97u);
    EXPECT_EQ(ORMEL_GetBatchSelectCount(conn_, "PERSON", &para_, nullptr), 97u);
    EXPECT_EQ(ORMEL_GetBatchSelectCount(conn_, nullptr, &para_, &count_), 211u);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

} // namespace
