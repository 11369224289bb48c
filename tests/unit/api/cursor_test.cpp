#include "ormeldb/cursor.h"

#include "api/operation.h"
#include "ormeldb/cache.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Bytes;
using unit::Client;
using unit::Log;
using unit::operator+;

namespace {

constexpr uint32_t kEnd = 0x202A0056;

using Calls = std::vector<std::string>;

class CursorTest : public unit::OperationTest {
protected:
    static Calls Described(const std::string &s) {
        return {"alloc_stmt(c1)", "prepare(" + s + ", select * from PERSON where 1<>1)", "execute(" + s + ")",
                "free_stmt(" + s + ")"};
    }
    ORMEL_TRANS *Begin() { return ORMEL_BeginSelect("PERSON", "f", 1); }
    ORMEL_TRANS *BeginByObject() { return ORMEL_BeginSelectSpecifyField(&object_, "f", 1); }

    // A begin that must fail: its only line of its own, and nothing left behind.
    void ExpectNoCursor(const std::string &function, const std::function<ORMEL_TRANS *()> &begin,
                        const std::string &error) {
        Log().Forget();
        EXPECT_EQ(begin(), nullptr);
        EXPECT_EQ(Log().LinesOf(function),
                  (unit::Lines{"DEBUG " + function + ": Trace in.", "ERROR " + function + ": " + error}));
        EXPECT_EQ(g_stTransMgr.uiCount, 0u);
        EXPECT_EQ(Client().LiveStatements() + Client().LiveConnections(), 0);
    }
};

// --- Begin ---

TEST_F(CursorTest, TheRoadOfACursor) {
    ORMEL_TRANS *cursor = ORMEL_BeginSelect("PERSON", "caller", 7);
    ASSERT_NE(cursor, nullptr);
    EXPECT_STREQ(cursor->pcFunc, "caller");
    EXPECT_EQ(cursor->uiLine, 7u);
    EXPECT_EQ(cursor->pStmt, Client().Handle("s2"));
    EXPECT_NE(cursor->pstResAtt, nullptr);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 0u);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), kEnd);
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    Calls calls = Client().CallsButReads();
    EXPECT_THAT(calls, testing::Contains("commit(c1)").Times(1));
    const Calls begun = {"set_conn_attr(c1, 101, 0, 4)", "alloc_stmt(c1)", "prepare(s2, SELECT * FROM PERSON)",
                         "execute(s2)"};
    EXPECT_THAT(Calls(calls.begin(), calls.end() - 4), ElementsAreArray(unit::Opened("c1") + Described("s1") + begun));
    EXPECT_THAT(Log().LinesOf("ORMEL_BeginSelect"), ElementsAre("DEBUG ORMEL_BeginSelect: Trace in."));
    EXPECT_THAT(Log().LinesOf("ORMEL_FetchSelectRec"),
                ElementsAre("DEBUG ORMEL_FetchSelectRec: Trace in.", "DEBUG ORMEL_FetchSelectRec: Trace in."));
    EXPECT_EQ(Log().LinesOf("ORMEL_EndSelect").front(), "DEBUG ORMEL_EndSelect: Trace in.");
    EXPECT_NE(ORMEL_ResAttGet("PERSON"), nullptr) << "the descriptor was given back";
}

TEST_F(CursorTest, AFailedBeginLeavesNothing) {
    const struct {
        const char *operation;
        int n;
        const char *error;
        int commits;
    } cases[] = {{"connect", 1, "Create Select Transaction (table:PERSON) Failed .", 0},
                 {"prepare", 1, "Create Select Transaction (table:PERSON) Failed .", 0},
                 {"set_conn_attr", 2, "Start Select Transaction (table:PERSON) Failed.", 1},
                 {"alloc_stmt", 2, "Define Select Transaction's (table:PERSON) stmt Failed.", 1},
                 {"prepare", 2, "Define Select Transaction's (table:PERSON) stmt Failed.", 1},
                 {"execute", 2, "Define Select Transaction's (table:PERSON) stmt Failed.", 1}};
    const std::pair<const char *, std::function<ORMEL_TRANS *()>> begins[] = {
        {"ORMEL_BeginSelect", [&] { return Begin(); }},
        {"ORMEL_BeginSelectSpecifyField", [&] { return BeginByObject(); }}};
    for (const auto &[function, begin] : begins) {
        for (const auto &c : cases) {
            SCOPED_TRACE(std::string(function) + ": " + c.operation + " " + std::to_string(c.n));
            Fresh();
            Client().Fail(c.operation, c.n);
            ExpectNoCursor(function, begin, c.error);
            EXPECT_EQ(Client().Count("commit"), c.commits);
        }
    }
}

TEST_F(CursorTest, NeedsATableOrAnObject) {
    EXPECT_EQ(ORMEL_BeginSelect(nullptr, "f", 1), nullptr);
    EXPECT_EQ(ORMEL_BeginSelectSpecifyField(nullptr, "f", 1), nullptr);
    EXPECT_THAT(Log().Lines(),
                ElementsAre("DEBUG ORMEL_BeginSelect: Trace in.", "DEBUG ORMEL_BeginSelectSpecifyField: Trace in."));
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
}

TEST_F(CursorTest, ThereAreSixteen) {
    std::vector<ORMEL_TRANS *> cursors;
    for (int i = 0; i < 16; ++i) {
        cursors.push_back(Begin());
        EXPECT_NE(cursors.back(), nullptr);
    }
    Log().Forget();
    EXPECT_EQ(Begin(), nullptr);
    EXPECT_EQ(BeginByObject(), nullptr);
    EXPECT_TRUE(Log().Says("Create Select Transaction (table:PERSON) Failed ."));
    for (ORMEL_TRANS *cursor : cursors) {
        EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
    }
}

TEST_F(CursorTest, EveryAllocationOfABeginMayFail) {
    unit::Threshold silent(KPL_LOG_FATAL);
    ORMEL_ObjectSelectFieldSet(&object_, "ID");
    for (const auto &begin :
         std::vector<std::function<ORMEL_TRANS *()>>{[&] { return Begin(); }, [&] { return BeginByObject(); }}) {
        ORMEL_TRANS *cursor = nullptr;
        int allocations = unit::ForEachAllocation(
            [&] {
                Fresh();
                Client().On("SELECT ID", {.columns = {{"ID", 1, 4, 1}}, .rows = {{unit::Int32(7)}}});
                cursor = begin();
            },
            [&](int n) {
                SCOPED_TRACE(n);
                EXPECT_EQ(g_stTransMgr.uiCount, cursor == nullptr ? 0u : 1u);
                if (cursor != nullptr) {
                    ORMEL_EndSelect(cursor);
                }
                EXPECT_EQ(Client().LiveConnections() + Client().LiveStatements(), 0);
            });
        EXPECT_GE(allocations, 1);
        ASSERT_NE(cursor, nullptr);
        ORMEL_EndSelect(cursor);
    }
}

// --- Begin by an object ---

TEST_F(CursorTest, AnObjectGivesConditionsColumnsAndAPage) {
    Client().On("SELECT NAME, ID",
                {.columns = {{"NAME", 9, 21}, {"ID", 1, 4, 1}}, .rows = {{unit::Text("Ann"), unit::Int32(7)}}});
    ORMEL_ObjectSelectFieldSet(&object_, "NAME");
    ORMEL_ObjectSelectFieldSet(&object_, "ID");
    ORMEL_ObjectSelectRowCountSet(&object_, 1, 2, 3);
    ORMEL_TRANS *cursor = BeginByObject();
    ASSERT_NE(cursor, nullptr);
    ORMEL_ObjectParaClear(&object_);
    EXPECT_EQ(Statements().back(), "SELECT NAME, ID FROM PERSON WHERE ID = :1 limit 2 offset 3");
    EXPECT_EQ(Bound(), (Values{{0, Bytes(int32_t{7})}}));
    EXPECT_EQ(Client().Count("fetch"), 0);
    EXPECT_EQ(Client().Count("set_stmt_attr"), 0);
    ASSERT_NE(cursor->pstResAtt, nullptr);
    EXPECT_EQ(cursor->pstResAtt->iAttNum, 2);
    // Rows are laid out by the selected columns.
    char record[25];
    ORMEL_RECORD_BUFFER buffer = {25, 0, 25, 0, reinterpret_cast<uint8_t *>(record)};
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer), 0u);
    EXPECT_EQ(std::string(record, 25), "Ann" + std::string(18, '\0') + Bytes(int32_t{7}));
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
    ASSERT_NE(ORMEL_ResAttGet("PERSON"), nullptr);
    EXPECT_EQ(ORMEL_ResAttGet("PERSON")->iAttNum, 3) << "the cache has the whole table's";
}

TEST_F(CursorTest, ADescriptorOfSomeColumnsNeverBecomesTheTables) {
    ORMEL_ResAttrCacheMgrGet()->iMax = 0; // the whole one cannot be kept
    Client().On("SELECT NAME", {.columns = {{"NAME", 9, 21}}});
    ORMEL_ObjectSelectFieldSet(&object_, "NAME");
    ORMEL_TRANS *cursor = BeginByObject();
    ORMEL_ResAttrCacheMgrGet()->iMax = -1;
    ASSERT_NE(cursor, nullptr);
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), nullptr);
}

TEST_F(CursorTest, WithoutSelectFieldsTheTableIsDescribedOnce) {
    ORMEL_TRANS *cursor = BeginByObject();
    ASSERT_NE(cursor, nullptr);
    EXPECT_THAT(Statements(), ElementsAre("SELECT * FROM PERSON WHERE ID = :1"));
    EXPECT_EQ(Client().Count("alloc_stmt"), 2);
    EXPECT_EQ(cursor->pstResAtt->iAttNum, 3);
    EXPECT_EQ(ORMEL_EndSelect(cursor), 0u);
}

TEST_F(CursorTest, ARefusedObjectIsNoCursor) {
    const std::string error = "Define Select Transaction's (table:PERSON) stmt Failed.";
    const char *function = "ORMEL_BeginSelectSpecifyField";
    ORMEL_ObjectInt32Set(&object_, "NOBODY", 1);
    ExpectNoCursor(
        function, [&] { return BeginByObject(); }, error);
    ORMEL_ObjectParaClear(&object_);
    ORMEL_ObjectNullSet(&object_, "NAME");
    ExpectNoCursor(
        function, [&] { return BeginByObject(); }, error);
    object_.iItemNum = 33;
    ExpectNoCursor(
        function, [&] { return BeginByObject(); }, error);
    object_.iItemNum = 1;
    EXPECT_THAT(Statements(), IsEmpty());
}

TEST_F(CursorTest, SelectedColumnsThatCannotBeDescribedAreNoCursor) {
    Client().On("SELECT ID", {.columns = {{"ID", 1, 4, 1}}});
    ORMEL_ObjectSelectFieldSet(&object_, "ID");
    Client().Fail("prepare", 3);
    ExpectNoCursor(
        "ORMEL_BeginSelectSpecifyField", [&] { return BeginByObject(); },
        "update Transaction's (table:PERSON) Attr Failed.");
    EXPECT_EQ(Client().Count("commit"), 1);
}

// --- End ---

TEST_F(CursorTest, TheEndReturnsWhatTheCommitDoes) {
    ORMEL_TRANS *cursor = Begin();
    Client().Fail("commit");
    EXPECT_EQ(ORMEL_EndSelect(cursor), 1u);
    EXPECT_EQ(g_stTransMgr.uiCount, 0u) << "the slot is free all the same";
    EXPECT_EQ(ORMEL_EndSelect(nullptr), 1u);
    EXPECT_EQ(ORMEL_FetchSelectRec(cursor, &buffer_), 255u) << "a fetch after the end of the cursor";
}

} // namespace
