// The rows of a cursor.
#include "api/operation.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Bytes;
using unit::Client;
using unit::Log;
using unit::MakePerson;
using unit::PersonRow;

namespace {

constexpr uint32_t kEnd = 0x202A0056;

class CursorFetchTest : public unit::OperationTest {
protected:
    static void HaveRows(const std::vector<std::vector<unit::Cell>> &rows) {
        Client().On("SELECT * FROM PERSON", {.columns = unit::PersonColumns(), .rows = rows});
    }
};

TEST_F(CursorFetchTest, FetchesOneRecordAfterTheOther) {
    HaveRows({PersonRow(1, "a", 10), PersonRow(2, "b", 20)});
    ORMEL_TRANS *cursor = ORMEL_BeginSelect("PERSON", "f", 1);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 0u);
    EXPECT_EQ(Bytes(person_), Bytes(MakePerson(1, "a", 10)));
    EXPECT_EQ(buffer_.usRecNum, 1);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 0u);
    EXPECT_EQ(Bytes(person_), Bytes(MakePerson(2, "b", 20)));
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), kEnd) << "also after the end";
        EXPECT_EQ(buffer_.usRecNum, 0);
    }
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
}

TEST_F(CursorFetchTest, WithoutABlockTheEndIsTheEndAsWell) {
    HaveRows({PersonRow(1, "a", 10)});
    ORMEL_TRANS *cursor = ORMEL_BeginSelect("PERSON", "f", 1);
    buffer_.pucData = nullptr;
    buffer_.usRecNum = 9;
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 0u);
    EXPECT_EQ(buffer_.usRecNum, 0);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), kEnd);
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
}

TEST_F(CursorFetchTest, FetchesOneResultAfterTheOther) {
    HaveRows({PersonRow(1, "a", 10), PersonRow(2, "b", 20)});
    ORMEL_TRANS *cursor = ORMEL_BeginSelect("PERSON", "f", 1);
    for (const char *name : {"a", "b"}) {
        EXPECT_EQ(ORMEL_FetchSelectRecEx(cursor, &result_), 0u);
        EXPECT_EQ(result_.uiRecNum, 1u);
        EXPECT_EQ(result_.pstResAtt, cursor->pstResAtt) << "borrowed from the slot";
        EXPECT_STREQ(ORMEL_ResultStrGet(&result_, 0, "NAME"), name);
        ORMEL_SelectResultClearForFetch(&result_);
    }
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(ORMEL_FetchSelectRecEx(cursor, &result_), kEnd);
        EXPECT_EQ(result_.uiRecNum, 0u);
        EXPECT_NE(result_.pstRes, nullptr) << "the empty result is the caller's too";
        ORMEL_SelectResultClearForFetch(&result_);
        ORMEL_SelectResultClearForFetch(&result_);
    }
    result_ = {};
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
}

TEST_F(CursorFetchTest, AnEmptyTableEndsAtOnce) {
    HaveRows({});
    ORMEL_TRANS *cursor = ORMEL_BeginSelect("PERSON", "f", 1);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), kEnd);
    EXPECT_EQ(buffer_.usRecNum, 0);
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
}

TEST_F(CursorFetchTest, AFailedFetchLeavesTheCursor) {
    HaveRows({PersonRow(1, "a", 10), PersonRow(2, "b", 20)});
    ORMEL_TRANS *cursor = ORMEL_BeginSelect("PERSON", "f", 1);
    void *stmt = cursor->pStmt;
    Client().Fail("fetch");
    Log().Forget();
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 211u);
    EXPECT_THAT(Log().LinesOf("ORMEL_"), ElementsAre("DEBUG ORMEL_FetchSelectRec: Trace in."));
    Client().Fail("fetch");
    Log().Forget();
    result_.uiRecNum = 99;
    EXPECT_EQ(ORMEL_FetchSelectRecEx(cursor, &result_), 255u);
    EXPECT_EQ(result_.uiRecNum, 99u) << "the result is not touched";
    EXPECT_EQ(result_.pstRes, nullptr);
    EXPECT_THAT(Log().LinesOf("ORMEL_"), ElementsAre("DEBUG ORMEL_FetchSelectRecEx: Trace in.",
                                                     "ERROR ORMEL_FetchSelectRecEx: FetchResultEx Get res Failed."));
    EXPECT_EQ(cursor->pStmt, stmt);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 0u);
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u) << "an end after an error";
}

TEST_F(CursorFetchTest, AFetchNeedsItsArguments) {
    ORMEL_TRANS slot = {};
    EXPECT_EQ(ORMEL_FetchSelectRec(nullptr, &buffer_), 97u);
    EXPECT_EQ(ORMEL_FetchSelectRec(&slot, nullptr), 97u);
    EXPECT_EQ(ORMEL_FetchSelectRecEx(nullptr, &result_), 97u);
    EXPECT_EQ(ORMEL_FetchSelectRecEx(&slot, nullptr), 97u);
    EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(CursorFetchTest, AFetchNeedsAWholeSlot) {
    int something = 0;
    ORMEL_TRANS slot = {};
    auto expect = [&](const std::string &missing) {
        const std::string error = "Get " + missing + " Failed.";
        Log().Forget();
        EXPECT_EQ(ORMEL_FetchSelectRec(&slot, &buffer_), 255u);
        EXPECT_EQ(ORMEL_FetchSelectRecEx(&slot, &result_), 255u);
        EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_FetchSelectRec: Trace in.",
                                               "ERROR ORMEL_FetchSelectRec: ORMEL_FetchSelectRec " + error,
                                               "DEBUG ORMEL_FetchSelectRecEx: Trace in.",
                                               "ERROR ORMEL_FetchSelectRecEx: ORMEL_FetchSelectRec " + error));
    };
    expect("conn");
    slot.pConn = &something;
    expect("stmt");
    slot.pStmt = &something;
    expect("pstResAtt");
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_EQ(result_.pstRes, nullptr);
}

TEST_F(CursorFetchTest, OtherStatementsRunBetweenTwoFetches) {
    HaveRows({PersonRow(1, "a", 10), PersonRow(2, "b", 20)});
    ORMEL_TRANS *cursor = ORMEL_BeginSelect("PERSON", "f", 1);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 0u);
    EXPECT_EQ(ORMEL_DeleteRecByObjForTrans(cursor, &object_, &count_), 0u);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 0u);
    EXPECT_EQ(Bytes(person_), Bytes(MakePerson(2, "b", 20)));
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
}

} // namespace
