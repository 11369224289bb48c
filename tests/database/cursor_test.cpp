// Cursors over real tables: what else runs beside them, what they hand out, and how they end.
#include <cstring>

#include "support/database.h"

namespace {

using namespace database;
using testing::ElementsAre;
using testing::HasSubstr;

// A record of the table t.
#pragma pack(push, 1)
struct Part {
    int32_t id;
    char name[81];
    int64_t weight;
};
#pragma pack(pop)

class CursorTest : public DatabaseTest {
protected:
    // Rows (1, 'piece 1', 10), (2, 'piece 2', 20) ...
    static void makeRows(int rows) {
        make("t", "id INTEGER, name VARCHAR(20), weight BIGINT");
        execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(rows) +
                ") INSERT INTO t SELECT i, 'piece ' || i, i * 10 FROM n");
    }
};

// The id of the next row, or minus the code of the fetch.
int64_t nextId(ORMEL_TRANS *cursor) {
    CursorRow row;
    int32_t id = 0;
    const uint32_t code = ORMEL_FetchSelectRecEx(cursor, row);
    if (code != ORMEL_OK)
        return -int64_t{code};
    EXPECT_EQ(ORMEL_ResultInt32Get(row, 0, "id", &id), ORMEL_OK);
    return id;
}

constexpr int64_t kEnd = -int64_t{ORMEL_END_OF_DATA};

TEST_F(CursorTest, BothFormsReadTheSameRowsInTurn) {
    makeRows(4);
    Cursor cursor("t");
    ASSERT_NE(cursor, nullptr);
    for (int id = 1; id <= 4; id += 2) {
        EXPECT_EQ(nextId(cursor), id);
        Records record(sizeof(Part));
        ASSERT_EQ(ORMEL_FetchSelectRec(cursor, record), ORMEL_OK);
        Part part = {};
        std::memcpy(&part, record->pucData, sizeof part);
        EXPECT_EQ(int32_t{part.id}, id + 1);
        EXPECT_STREQ(part.name, ("piece " + std::to_string(id + 1)).c_str());
        EXPECT_EQ(int64_t{part.weight}, (id + 1) * 10);
    }
    EXPECT_EQ(nextId(cursor), kEnd);
    EXPECT_EQ(cursor.end(), ORMEL_OK);
}

TEST_F(CursorTest, OtherStatementsRunOnItsConnectionBetweenTwoFetches) {
    constexpr int kRows = 300;
    makeRows(kRows);
    make("copy", "id INTEGER, name VARCHAR(20), weight BIGINT");
    Object copy("copy");
    Object beside("t");
    Cursor cursor("t");
    ASSERT_NE(cursor, nullptr);
    for (int id = 1; id <= kRows; ++id) {
        ASSERT_EQ(nextId(cursor), id);
        ORMEL_ObjectInt32Set(copy, "id", id);
        ASSERT_EQ(ORMEL_InsertRecByObjForTrans(cursor, copy), ORMEL_OK);
        ORMEL_ObjectParaClear(copy);
        ORMEL_ObjectInt32Set(beside, "id", kRows + 1 - id);
        Result found;
        ASSERT_EQ(ORMEL_SelectRecByObjForTrans(cursor, beside, found), ORMEL_OK);
        EXPECT_EQ(found->uiRecNum, 1U);
        ORMEL_ObjectParaClear(beside);
        uint32_t copied = 0;
        ASSERT_EQ(ORMEL_LocalExistRecordForTrans(cursor, "copy", nullptr, &copied), ORMEL_OK);
        EXPECT_EQ(copied, static_cast<uint32_t>(id));
    }
    EXPECT_EQ(nextId(cursor), kEnd);
    EXPECT_THAT(query("SELECT count(*) FROM copy"), ElementsAre("0")) << "nothing is committed before the end";
    EXPECT_EQ(cursor.end(), ORMEL_OK);
    EXPECT_THAT(query("SELECT count(*) FROM copy"), ElementsAre("300"));
}

TEST_F(CursorTest, AStatementThatFailsBesideItLeavesItOpen) {
    NEEDS(workAfterError);
    makeRows(3);
    Object absent("nowhere");
    Cursor cursor("t");
    EXPECT_EQ(nextId(cursor), 1);
    Result nothing;
    EXPECT_EQ(ORMEL_SelectRecByObjForTrans(cursor, absent, nothing), ORMEL_ERR_TABLE);
    EXPECT_EQ(nextId(cursor), 2);
    EXPECT_EQ(nextId(cursor), 3);
    EXPECT_EQ(nextId(cursor), kEnd);
}

// Two columns, in another order than the table's, of the third and fourth of the rows that meet both conditions.
class ByObjectTest : public CursorTest {
protected:
    ByObjectTest() {
        makeRows(20);
        ORMEL_ObjectStrOptionLikeSet(object_, "name", "piece 1%"); // 1 and 10 to 19
        ORMEL_ObjectInt64Set(object_, "weight", 10);
        object_.last().uiOp = ORMEL_OP_NOT_EQUAL;
        ORMEL_ObjectSelectFieldSet(object_, "weight");
        ORMEL_ObjectSelectFieldSet(object_, "name");
        ORMEL_ObjectSelectRowCountSet(object_, 1, 2, 2);
    }
    Object object_{"t"};
};

TEST_F(ByObjectTest, RecordsAreLaidOutByTheSelectedColumns) {
    Cursor cursor(object_);
    ASSERT_NE(cursor, nullptr);
    ORMEL_ObjectParaClear(object_);
    for (const int id : {12, 13}) {
        Records record(sizeof Part::weight + sizeof Part::name);
        ASSERT_EQ(ORMEL_FetchSelectRec(cursor, record), ORMEL_OK);
        int64_t weight = 0;
        std::memcpy(&weight, record->pucData, sizeof weight);
        EXPECT_EQ(weight, id * 10);
        EXPECT_STREQ(record.record(0).c_str() + sizeof weight, ("piece " + std::to_string(id)).c_str());
    }
    Records record(sizeof(Part));
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, record), ORMEL_END_OF_DATA);
    EXPECT_EQ(record->usRecNum, 0U);
}

TEST_F(ByObjectTest, ResultsKnowTheSelectedColumns) {
    Cursor cursor(object_);
    ASSERT_NE(cursor, nullptr);
    for (const int id : {12, 13}) {
        CursorRow row;
        ASSERT_EQ(ORMEL_FetchSelectRecEx(cursor, row), ORMEL_OK);
        EXPECT_EQ(ORMEL_ResultGetFieldNum(row), 2U);
        EXPECT_STREQ(ORMEL_ResultStrGet(row, 0, "name"), ("piece " + std::to_string(id)).c_str());
        EXPECT_EQ(ORMEL_ResultTextGetByPos(row, 0, 1), ORMEL_ResultStrGet(row, 0, "name"));
        int64_t weight = 0;
        EXPECT_EQ(ORMEL_ResultInt64Get(row, 0, "weight", &weight), ORMEL_OK);
        EXPECT_EQ(weight, id * 10);
        int32_t none = 0;
        EXPECT_EQ(ORMEL_ResultInt32Get(row, 0, "id", &none), ORMEL_ERR_ABSENT);
    }
    EXPECT_EQ(nextId(cursor), kEnd);
}

TEST_F(ByObjectTest, TheTableKeepsItsOwnDescriptor) {
    {
        const Cursor cursor(object_);
        ASSERT_NE(cursor, nullptr);
        EXPECT_EQ(ORMEL_TransGetResAtt(cursor)->iAttNum, 2);
    }
    ASSERT_NE(ORMEL_ResAttGet("t"), nullptr);
    EXPECT_EQ(ORMEL_ResAttGet("t")->iAttNum, 3);
    Cursor whole("t");
    EXPECT_EQ(nextId(whole), 1);
}

TEST_F(CursorTest, TheEndStaysTheEnd) {
    makeRows(1);
    Cursor cursor("t");
    EXPECT_EQ(nextId(cursor), 1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(nextId(cursor), kEnd);
        Records record(sizeof(Part));
        EXPECT_EQ(ORMEL_FetchSelectRec(cursor, record), ORMEL_END_OF_DATA);
        EXPECT_EQ(record->usRecNum, 0U);
    }
    EXPECT_EQ(cursor.end(), ORMEL_OK);
}

TEST_F(CursorTest, AnEmptyTableIsAtItsEnd) {
    makeRows(1);
    execute("DELETE FROM t");
    Object object("t");
    for (const bool byObject : {false, true}) {
        const Cursor cursor = byObject ? Cursor(object) : Cursor("t");
        ASSERT_NE(cursor, nullptr);
        Records record(sizeof(Part));
        EXPECT_EQ(ORMEL_FetchSelectRec(cursor, record), ORMEL_END_OF_DATA);
        EXPECT_EQ(record->usRecNum, 0U);
        CursorRow row;
        EXPECT_EQ(ORMEL_FetchSelectRecEx(cursor, row), ORMEL_END_OF_DATA);
        EXPECT_EQ(row->uiRecNum, 0U);
    }
}

// A relation like t one of whose rows cannot be read: it holds what its column is not declared as, or where the
// database lets nothing such in, it is computed and cannot be.
std::string spoilt(int row) {
    const std::string id = std::to_string(row);
    if (engine().lacks(Feature::misfits) == nullptr) {
        execute("UPDATE t SET weight = 'heavy' WHERE id = " + id);
        return "t";
    }
    execute("DROP VIEW IF EXISTS spoilt; DROP TABLE IF EXISTS whole; CREATE TABLE whole AS SELECT * FROM t;"
            "CREATE VIEW spoilt AS SELECT id, name, weight / (id - " +
            id + ") AS weight FROM whole");
    return "spoilt";
}

// The row lies far behind what is read ahead.
TEST_F(CursorTest, AnErrorIsAnErrorAndCanBeEnded) {
    constexpr int kBad = 200;
    struct Form {
        uint32_t code;
        uint32_t (*fetch)(ORMEL_TRANS *cursor);
    };
    const Form forms[] = {
        {ORMEL_ERR_NO_RESULT,
         [](ORMEL_TRANS *cursor) {
             Records record(sizeof(Part));
             return ORMEL_FetchSelectRec(cursor, record);
         }},
        {ORMEL_ERR_TABLE,
         [](ORMEL_TRANS *cursor) {
             CursorRow row;
             return ORMEL_FetchSelectRecEx(cursor, row);
         }},
    };
    makeRows(kBad + 1);
    const std::string table = spoilt(kBad);
    for (const Form &form : forms) {
        SCOPED_TRACE(form.code);
        Cursor cursor(table);
        ASSERT_NE(cursor, nullptr);
        uint32_t code = ORMEL_OK;
        int rows = 0;
        while ((code = form.fetch(cursor)) == ORMEL_OK)
            ++rows;
        EXPECT_EQ(code, form.code);
        EXPECT_GT(rows, 0);
        EXPECT_LT(rows, kBad);
        EXPECT_EQ(g_stTransMgr.uiCount, 1U);
        EXPECT_EQ(cursor.end(), engine().lacks(Feature::workAfterError) == nullptr ? ORMEL_OK : ORMEL_ERR_FAILED);
        EXPECT_EQ(g_stTransMgr.uiCount, 0U);
    }
}

TEST_F(CursorTest, ThereAreSixteenAtOnce) {
    makeRows(20);
    std::vector<ORMEL_TRANS *> cursors;
    for (int i = 0; i < ORMEL_MAX_SLOTS; ++i) {
        cursors.push_back(ORMEL_BeginSelect("t", __func__, __LINE__));
        ASSERT_NE(cursors.back(), nullptr);
    }
    Object object("t");
    EXPECT_EQ(ORMEL_BeginSelect("t", __func__, __LINE__), nullptr);
    EXPECT_EQ(ORMEL_BeginSelectSpecifyField(object, __func__, __LINE__), nullptr);
    EXPECT_EQ(ORMEL_StartTrans(__func__, __LINE__), nullptr);
    // Each stands where it stands.
    for (size_t i = 0; i < cursors.size(); ++i)
        for (size_t id = 1; id <= i + 1; ++id)
            EXPECT_EQ(nextId(cursors[i]), static_cast<int64_t>(id));
    EXPECT_EQ(ORMEL_EndSelect(cursors[7]), ORMEL_OK);
    cursors[7] = ORMEL_BeginSelect("t", __func__, __LINE__);
    ASSERT_NE(cursors[7], nullptr);
    EXPECT_EQ(nextId(cursors[7]), 1);
    for (ORMEL_TRANS *cursor : cursors)
        EXPECT_EQ(ORMEL_EndSelect(cursor), ORMEL_OK);
}

TEST_F(CursorTest, WhatIsRefusedLeavesNoSlotTaken) {
    makeRows(1);
    using Refuse = void (*)(ORMEL_OBJECT * object);
    const Refuse refusals[] = {
        [](ORMEL_OBJECT *object) { ORMEL_ObjectInt32Set(object, "height", 1); },
        [](ORMEL_OBJECT *object) { ORMEL_ObjectInt64Set(object, "id", 1); },
        [](ORMEL_OBJECT *object) { ORMEL_ObjectNullSet(object, "name"); },
        [](ORMEL_OBJECT *object) { ORMEL_ObjectSelectFieldSet(object, "height"); },
        [](ORMEL_OBJECT *object) { ORMEL_ObjectNameSet(object, "nowhere"); },
        [](ORMEL_OBJECT *object) { ORMEL_ObjectNameSet(object, "a_name_of_twenty_eight_bytes"); },
    };
    for (const Refuse refuse : refusals) {
        Object object("t");
        refuse(object);
        EXPECT_EQ(ORMEL_BeginSelectSpecifyField(object, __func__, __LINE__), nullptr);
        EXPECT_EQ(g_stTransMgr.uiCount, 0U);
    }
    EXPECT_EQ(ORMEL_BeginSelectSpecifyField(nullptr, __func__, __LINE__), nullptr);
    EXPECT_EQ(ORMEL_BeginSelect("nowhere", __func__, __LINE__), nullptr);
    EXPECT_EQ(ORMEL_BeginSelect(nullptr, __func__, __LINE__), nullptr);
    EXPECT_EQ(g_stTransMgr.uiCount, 0U);
    EXPECT_THAT(log(), HasSubstr("ORMEL_BeginSelectSpecifyField: Define Select Transaction's (table:t) stmt Failed."));
}

TEST_F(CursorTest, ARowClearedTwiceIsClearedOnce) {
    makeRows(2);
    Cursor cursor("t");
    CursorRow row;
    ASSERT_EQ(ORMEL_FetchSelectRecEx(cursor, row), ORMEL_OK);
    for (int i = 0; i < 2; ++i) {
        ORMEL_SelectResultClearForFetch(row);
        EXPECT_EQ(row->pstRes, nullptr);
        EXPECT_EQ(row->uiRecNum, 0U);
        EXPECT_EQ(row->pstResAtt, ORMEL_TransGetResAtt(cursor));
    }
    EXPECT_EQ(nextId(cursor), 2);
}

TEST_F(CursorTest, TheConditionsOutliveTheObject) {
    makeRows(50);
    Object object("t");
    ORMEL_ObjectStrOptionLikeSet(object, "name", "piece 4%");
    Cursor cursor(object);
    ORMEL_ObjectParaClear(object);
    ORMEL_ObjectStrSet(object, "name", "something else");
    std::vector<int64_t> ids;
    for (int64_t id; (id = nextId(cursor)) > 0;)
        ids.push_back(id);
    EXPECT_THAT(ids, ElementsAre(4, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49));
}

} // namespace
