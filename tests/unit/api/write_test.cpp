#include "ormeldb/write.h"

#include "api/operation.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Bytes;
using unit::Client;
using unit::Conditions;
using unit::Log;
using unit::Selection;
using unit::operator+;

namespace {

class WriteTest : public unit::OperationTest {
protected:
    // A table of integers and a record of them.
    void HaveIntegers(size_t columns) {
        Have("WIDE", unit::Integers(columns));
        values_.assign(columns, 5);
        wide_ = {static_cast<uint16_t>(columns * 4), 1, 0, 0, reinterpret_cast<uint8_t *>(values_.data())};
    }

    const std::string name_ = std::string("Ann") + std::string(18, '\0');
    ORMEL_RECORD_BUFFER wide_{};

private:
    std::vector<int32_t> values_;
};

// --- The road of one call ---

TEST_F(WriteTest, TheRoadOfAnInsert) {
    EXPECT_EQ(ORMEL_InsertRec("PERSON", &buffer_), 0u);
    EXPECT_THAT(
        Client().Calls(),
        ElementsAreArray(
            unit::Opened("c1") +
            std::vector<std::string>{
                "alloc_stmt(c1)", "prepare(s1, select * from PERSON where 1<>1)", "execute(s1)", "get_column_count(s1)",
                "desc_column_by_id(s1, 0)", "desc_column_by_id(s1, 1)", "desc_column_by_id(s1, 2)", "free_stmt(s1)",
                "alloc_stmt(c1)", "prepare(s2, INSERT INTO PERSON (ID, NAME, BALANCE) values (:1, :2, :3))",
                "set_paramset_size(s2, 1)", "bind_by_pos(s2, 0, 1, '\\07\\00\\00\\00', 4, null)",
                "bind_by_pos(s2, 1, 9, 'Ann\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00\\00', "
                "21, null)",
                "bind_by_pos(s2, 2, 2, '\\ff\\ff\\ff\\ff\\ff\\ff\\ff\\ff', 8, null)", "execute(s2)",
                "get_affected_rows(s2)", "free_stmt(s2)", "commit(c1)"} +
            unit::Closed("c1")));
    EXPECT_THAT(Log().Lines(),
                ElementsAre("DEBUG ORMEL_InsertRec: Trace in.", "DEBUG dbConnect: Connection ok",
                            "DEBUG ORMEL_InsertRecForConn: Trace in.", "DEBUG ORMEL_CreatResAtt: Trace in.",
                            "DEBUG ORMEL_ResAttCreate: Trace in.",
                            "DEBUG dbSelectAtt: sql: select * from PERSON where 1<>1",
                            "DEBUG dbCreateStmt: CreateStmt ok", "DEBUG dbFreeStmt: FreeStmt ok",
                            "DEBUG ORMEL_ParaShow: Trace in.", "DEBUG ORMEL_ParaShow: isLimit:0,iRowCounts:0,iOffset:0",
                            "DEBUG dbCreateStmt: CreateStmt ok", "DEBUG dbBindPara: qdc_bind_by_pos :0, type:1, len:4 ",
                            "DEBUG dbBindPara: qdc_bind_by_pos :1, type:9, len:21 ",
                            "DEBUG dbBindPara: qdc_bind_by_pos :2, type:2, len:8 ",
                            "ERROR dbInsertRec: Insert rec rowCount = 1", "DEBUG dbFreeStmt: FreeStmt ok",
                            "DEBUG ORMEL_DestoryResAtt: Trace in.", "DEBUG ORMEL_ResAttPush: Trace in.",
                            "DEBUG ORMEL_CacheAdd: Trace in.", "DEBUG ORMEL_InsertRecForConn: Insert Rec return: 0x0",
                            "DEBUG dbDisconnect: DisConnection ok"));
}

// --- What is sent ---

TEST_F(WriteTest, DeletesByConditions) {
    conditions_.Add(1, ORMEL_OP_LIKE, "A%");
    EXPECT_EQ(ORMEL_DeleteRec("PERSON", conditions_.Get(), &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("DELETE from PERSON WHERE ID = :1 AND NAME like :2"));
    EXPECT_EQ(Bound(), (Values{{0, Bytes(int32_t{7})}, {1, std::string("A%") + std::string(19, '\0')}}));
    EXPECT_EQ(count_, 1u);
}

TEST_F(WriteTest, WithoutConditionsEverythingIsDeleted) {
    Client().On("DELETE", {.affected = 1000});
    EXPECT_EQ(ORMEL_DeleteRec("PERSON", nullptr, &count_), 0u);
    EXPECT_EQ(count_, 1000u);
    EXPECT_EQ(ORMEL_DeleteRec("PERSON", Conditions().Get(), &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("DELETE from PERSON", "DELETE from PERSON"));
    EXPECT_THAT(Bound(), IsEmpty());
}

TEST_F(WriteTest, UpdatesSelectedColumnsByConditions) {
    Selection fields({2, 1});
    EXPECT_EQ(ORMEL_UpdateRec("PERSON", fields.Get(), &buffer_, conditions_.Get(), &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("UPDATE PERSON SET BALANCE = :1, NAME = :2 WHERE ID = :3"));
    EXPECT_EQ(Bound(), (Values{{0, Bytes(int64_t{-1})}, {1, name_}, {2, Bytes(int32_t{7})}}));
    EXPECT_EQ(count_, 1u);
}

TEST_F(WriteTest, UpdatesEveryColumnOfEveryRecord) {
    EXPECT_EQ(ORMEL_UpdateRec("PERSON", nullptr, &buffer_, nullptr, &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("UPDATE PERSON SET ID = :1, NAME = :2, BALANCE = :3"));
}

TEST_F(WriteTest, NothingAffectedIsCommittedAndCounted) {
    Client().On("UPDATE", {.affected = 0});
    EXPECT_EQ(ORMEL_UpdateRec("PERSON", nullptr, &buffer_, conditions_.Get(), &count_), 0u);
    EXPECT_EQ(count_, 0u);
    EXPECT_EQ(Client().Count("commit"), 1);
}

TEST_F(WriteTest, LargeObjectsAreWrittenFromTheRecord) {
    Have("NOTE", {{"ID", 1, 4, 1}, {"TEXT", 13, 44}});
    char record[48] = {1, 0, 0, 0, 't', 'e', 'x', 't'};
    ORMEL_RECORD_BUFFER buffer = {48, 1, 48, 0, reinterpret_cast<uint8_t *>(record)};
    EXPECT_EQ(ORMEL_InsertRec("NOTE", &buffer), 0u);
    EXPECT_EQ(Client().Count("write_clob"), 1);
    EXPECT_EQ(Client().Bounds()[1].length, 16u);
}

// --- What is refused ---

TEST_F(WriteTest, BodiesLogTheCodeOfATableThatCannotBeDescribed) {
    void *conn = ORMEL_DBConnect();
    Client().FailFrom("prepare");
    ORMEL_InsertRecForConn(conn, "PERSON", &buffer_);
    ORMEL_DeleteRecForConn(conn, "PERSON", nullptr, &count_);
    ORMEL_UpdateRecForConn(conn, "PERSON", nullptr, &buffer_, nullptr, &count_);
    EXPECT_EQ(Log().LinesOf("ORMEL_InsertRecForConn").back(), "DEBUG ORMEL_InsertRecForConn: Insert Rec return: 0xff");
    EXPECT_EQ(Log().LinesOf("ORMEL_DeleteRecForConn").back(), "DEBUG ORMEL_DeleteRecForConn: Delete Rec return: 0xff");
    EXPECT_EQ(Log().LinesOf("ORMEL_UpdateRecForConn").back(), "DEBUG ORMEL_UpdateRecForConn: Update Rec return: 0xff");
    ORMEL_DBDisConnect(conn);
}

TEST_F(WriteTest, WhatDoesNotFitIsRefusedBeforeAnythingIsSent) {
    Selection unknownField({3});
    Conditions unknownColumn;
    unknownColumn.Add(3, 0, "");
    ORMEL_RECORD_BUFFER shortRecord = buffer_;
    shortRecord.usRecLen = 32;
    ORMEL_RECORD_BUFFER shortBlock = buffer_;
    shortBlock.uiBufSize = 32;
    const std::pair<const char *, std::function<uint32_t()>> calls[] = {
        {"insert of a short record", [&] { return ORMEL_InsertRec("PERSON", &shortRecord); }},
        {"insert of a short block", [&] { return ORMEL_InsertRec("PERSON", &shortBlock); }},
        {"delete by an unknown column", [&] { return ORMEL_DeleteRec("PERSON", unknownColumn.Get(), &count_); }},
        {"update of an unknown column",
         [&] { return ORMEL_UpdateRec("PERSON", unknownField.Get(), &buffer_, nullptr, &count_); }},
        {"update by an unknown column",
         [&] { return ORMEL_UpdateRec("PERSON", nullptr, &buffer_, unknownColumn.Get(), &count_); }},
        {"update from a short record",
         [&] { return ORMEL_UpdateRec("PERSON", nullptr, &shortRecord, conditions_.Get(), &count_); }},
    };
    for (const auto &[what, call] : calls) {
        SCOPED_TRACE(what);
        Log().Forget();
        EXPECT_EQ(call(), 1u);
        EXPECT_THAT(Statements(), IsEmpty());
        EXPECT_EQ(Client().Count("commit"), 0);
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR).size(), 1u);
        EXPECT_EQ(count_, kUnwritten);
    }
    EXPECT_THAT(Log().LinesOf("ORMEL_UpdateRecForConn").back(), testing::EndsWith("Update Rec return: 0x1"));
}

TEST_F(WriteTest, ATableOf33ColumnsTakesNoWholeRecord) {
    HaveIntegers(33);
    EXPECT_EQ(ORMEL_InsertRec("WIDE", &wide_), 1u);
    EXPECT_EQ(ORMEL_UpdateRec("WIDE", nullptr, &wide_, nullptr, &count_), 1u);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_EQ(Client().Count("commit"), 0);
    Selection last({32});
    Conditions conditions;
    conditions.Add(32, ORMEL_OP_LESS, Bytes(int32_t{9}));
    EXPECT_EQ(ORMEL_UpdateRec("WIDE", last.Get(), &wide_, conditions.Get(), &count_), 0u);
    EXPECT_EQ(ORMEL_DeleteRec("WIDE", conditions.Get(), &count_), 0u);
    EXPECT_THAT(Statements(),
                ElementsAre("UPDATE WIDE SET C32 = :1 WHERE C32 < :2", "DELETE from WIDE WHERE C32 < :1"));
}

TEST_F(WriteTest, FieldsAndConditionsBeyond32AreRefused) {
    HaveIntegers(32);
    Conditions one;
    one.Add(0, 0, Bytes(int32_t{1}));
    EXPECT_EQ(ORMEL_InsertRec("WIDE", &wide_), 0u);
    EXPECT_EQ(ORMEL_UpdateRec("WIDE", nullptr, &wide_, nullptr, &count_), 0u);
    Client().ForgetCalls();
    EXPECT_EQ(ORMEL_UpdateRec("WIDE", nullptr, &wide_, one.Get(), &count_), 1u);
    EXPECT_THAT(Statements(), IsEmpty());
}

} // namespace
