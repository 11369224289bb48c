// Writing and selecting by objects: operators, counts, what is refused, transactions.
#include <limits>
#include <map>

#include "support/database.h"

namespace {

using namespace database;
using testing::ElementsAre;
using testing::IsEmpty;

class ObjectTest : public DatabaseTest {
protected:
    // Rows (1, 'ant'), (2, 'bee'), (3, 'cat'), (4, 'cow').
    static void makeRows() {
        make("t", "id INTEGER, name VARCHAR(20)");
        execute("INSERT INTO t VALUES (1, 'ant'), (2, 'bee'), (3, 'cat'), (4, 'cow')");
    }
    static std::vector<std::string> names() { return query("SELECT name FROM t ORDER BY id"); }
};

// --- Conditions ---

// The names of the rows that meet the object's items.
std::vector<std::string> found(ORMEL_OBJECT *object) {
    std::vector<std::string> names;
    Result result;
    EXPECT_EQ(ORMEL_SelectRecByObj(object, result), ORMEL_OK);
    for (uint32_t row = 0; row < result->uiRecNum; ++row)
        names.emplace_back(ORMEL_ResultStrGet(result, row, "name"));
    return names;
}

TEST_F(ObjectTest, EveryOperatorOfNumbersAndTexts) {
    makeRows();
    struct Case {
        uint32_t op;
        std::vector<std::string> ofNumber; // 3
        std::vector<std::string> ofText;   // 'cat'
    };
    const Case cases[] = {
        {ORMEL_OP_EQUAL, {"cat"}, {"cat"}},
        {ORMEL_OP_NOT_EQUAL, {"ant", "bee", "cow"}, {"ant", "bee", "cow"}},
        {ORMEL_OP_LESS, {"ant", "bee"}, {"ant", "bee"}},
        {ORMEL_OP_LESS_EQUAL, {"ant", "bee", "cat"}, {"ant", "bee", "cat"}},
        {ORMEL_OP_LIKE, {"cat"}, {"cat"}},
        {4, {"cat"}, {"cat"}}, // every other code is equality
        {std::numeric_limits<uint32_t>::max(), {"cat"}, {"cat"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.op);
        Object number("t");
        ORMEL_ObjectInt32Set(number, "id", 3);
        number.last().uiOp = c.op;
        if (c.op != ORMEL_OP_LIKE || engine().lacks(Feature::likeOfNumbers) == nullptr) {
            EXPECT_EQ(found(number), c.ofNumber);
        }
        Object text("t");
        ORMEL_ObjectStrSet(text, "name", "cat");
        text.last().uiOp = c.op;
        EXPECT_EQ(found(text), c.ofText);
    }
}

TEST_F(ObjectTest, LikeTakesThePatternAsItStands) {
    makeRows();
    const std::map<std::string, std::vector<std::string>> cases = {{"c%", {"cat", "cow"}},
                                                                   {"%e", {"bee"}},
                                                                   {"_o_", {"cow"}},
                                                                   {"cat", {"cat"}},
                                                                   {"%", {"ant", "bee", "cat", "cow"}},
                                                                   {"c", {}},
                                                                   {"' OR 1 = 1 --", {}},
                                                                   {"", {}}};
    for (const auto &[pattern, names] : cases) {
        Object object("t");
        ASSERT_EQ(ORMEL_ObjectStrOptionLikeSet(object, "name", pattern.c_str()), ORMEL_OK);
        EXPECT_EQ(found(object), names) << pattern;
    }
}

TEST_F(ObjectTest, AllItemsMustBeMet) {
    makeRows();
    Object object("t");
    ORMEL_ObjectStrOptionLikeSet(object, "name", "c%");
    ORMEL_ObjectInt32Set(object, "id", 4);
    object.last().uiOp = ORMEL_OP_LESS;
    EXPECT_THAT(found(object), ElementsAre("cat"));
}

// --- Updates and deletes ---

TEST_F(ObjectTest, UpdatesChangeTheRowsThatMeetTheSecondObject) {
    makeRows();
    Object values("t");
    Object conditions("t");
    uint32_t count = 0;
    ORMEL_ObjectStrSet(values, "name", "x");
    ORMEL_ObjectStrOptionLikeSet(conditions, "name", "c%");
    ASSERT_EQ(ORMEL_UpdateRecByObj(values, conditions, &count), ORMEL_OK);
    EXPECT_EQ(count, 2U);
    EXPECT_THAT(names(), ElementsAre("ant", "bee", "x", "x"));
    ASSERT_EQ(ORMEL_UpdateRecByObj(values, conditions, &count), ORMEL_OK);
    EXPECT_EQ(count, 0U);
    ASSERT_EQ(ORMEL_UpdateRecByObj(values, nullptr, &count), ORMEL_OK);
    EXPECT_EQ(count, 4U);
    EXPECT_THAT(names(), ElementsAre("x", "x", "x", "x"));
}

TEST_F(ObjectTest, DeletesRemoveTheRowsThatMeetTheObject) {
    makeRows();
    Object object("t");
    uint32_t count = 0;
    ORMEL_ObjectInt32Set(object, "id", 2);
    object.last().uiOp = ORMEL_OP_LESS_EQUAL;
    ASSERT_EQ(ORMEL_DeleteRecByObj(object, &count), ORMEL_OK);
    EXPECT_EQ(count, 2U);
    EXPECT_THAT(names(), ElementsAre("cat", "cow"));
    ASSERT_EQ(ORMEL_DeleteRecByObj(object, &count), ORMEL_OK);
    EXPECT_EQ(count, 0U);
    ORMEL_ObjectParaClear(object);
    ASSERT_EQ(ORMEL_DeleteRecByObj(object, &count), ORMEL_OK);
    EXPECT_EQ(count, 2U);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(ObjectTest, ColumnsThatAnInsertDoesNotNameGetTheirDefaults) {
    make("d", "id INTEGER PRIMARY KEY, name VARCHAR(20) DEFAULT 'nameless', note TEXT");
    Object object("d");
    ORMEL_ObjectStrSet(object, "NOTE", "a note");
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(ORMEL_InsertRecFormObj(object), ORMEL_OK);
    EXPECT_THAT(query("SELECT id || name || note FROM d"), ElementsAre("1namelessa note", "2namelessa note"));
}

// --- An object's life ---

TEST_F(ObjectTest, IsFilledAgainAfterClearing) {
    makeRows();
    Object object("t");
    ORMEL_ObjectStrOptionLikeSet(object, "name", "c%");
    ORMEL_ObjectSelectFieldSet(object, "name");
    ORMEL_ObjectSelectRowCountSet(object, 1, 1, 1);
    EXPECT_THAT(found(object), ElementsAre("cow"));
    for (int twice = 0; twice < 2; ++twice)
        ORMEL_ObjectParaClear(object);
    EXPECT_STREQ(ORMEL_ObjectNameGet(object), "t");
    EXPECT_THAT(found(object), ElementsAre("bee")) << "the page is kept";
    ORMEL_ObjectSelectRowCountSet(object, 0, 0, 0);
    ORMEL_ObjectStrSet(object, "name", "_ee");
    EXPECT_THAT(found(object), ElementsAre("bee")) << "the operator is kept";
    object.last().uiOp = ORMEL_OP_EQUAL;
    EXPECT_THAT(found(object), IsEmpty());
    ORMEL_ObjectParaClear(object);
    ORMEL_ObjectInt32Set(object, "id", 5);
    ORMEL_ObjectStrSet(object, "name", "doe");
    EXPECT_EQ(ORMEL_InsertRecFormObj(object), ORMEL_OK);
    EXPECT_THAT(found(object), ElementsAre("doe"));
}

TEST_F(ObjectTest, IsGoodForAnotherTable) {
    makeRows();
    make("u", "name VARCHAR(20), id BIGINT");
    Object object("t");
    ORMEL_ObjectStrSet(object, "name", "bee");
    EXPECT_THAT(found(object), ElementsAre("bee"));
    ORMEL_ObjectNameSet(object, "u");
    ORMEL_ObjectInt64Set(object, "id", 5000000000);
    EXPECT_EQ(ORMEL_InsertRecFormObj(object), ORMEL_OK);
    EXPECT_THAT(found(object), ElementsAre("bee"));
    ORMEL_ObjectNameSet(object, "t");
    Result result;
    EXPECT_EQ(ORMEL_SelectRecByObj(object, result), ORMEL_ERR_CHECK) << "8 bytes for a column of 4";
}

TEST_F(ObjectTest, WhatIsRefusedWritesNothing) {
    makeRows();
    using Spoil = void (*)(ORMEL_OBJECT * object);
    const std::map<std::string, Spoil> cases = {
        {"unknown column", [](ORMEL_OBJECT *object) { ORMEL_ObjectStrSet(object, "height", "x"); }},
        {"wrong width", [](ORMEL_OBJECT *object) { ORMEL_ObjectInt64Set(object, "id", 1); }},
        {"no name", [](ORMEL_OBJECT *object) { ORMEL_ObjectStrSet(object, "", "x"); }},
        {"long name", [](ORMEL_OBJECT *object) { ORMEL_ObjectInt32Set(object, "a_name_of_twenty_eight_bytes", 1); }},
        {"unknown select field", [](ORMEL_OBJECT *object) { ORMEL_ObjectSelectFieldSet(object, "height"); }},
    };
    for (const auto &[name, spoil] : cases) {
        SCOPED_TRACE(name);
        Object object("t");
        Object values("t");
        uint32_t count = 7;
        ORMEL_ObjectStrSet(object, "name", "x");
        spoil(object);
        ORMEL_ObjectStrSet(values, "name", "y");
        EXPECT_EQ(ORMEL_InsertRecFormObj(object), ORMEL_ERR_CHECK);
        EXPECT_EQ(ORMEL_UpdateRecByObj(object, nullptr, &count), ORMEL_ERR_CHECK);
        EXPECT_EQ(ORMEL_UpdateRecByObj(values, object, &count), ORMEL_ERR_CHECK);
        EXPECT_EQ(ORMEL_DeleteRecByObj(object, &count), ORMEL_ERR_CHECK);
        EXPECT_EQ(count, 7U);
    }
    Object absent("nowhere");
    EXPECT_EQ(ORMEL_InsertRecFormObj(absent), ORMEL_ERR_OBJ_TABLE);
    EXPECT_THAT(names(), ElementsAre("ant", "bee", "cat", "cow"));
}

TEST_F(ObjectTest, NamesMayHaveTwentySevenBytes) {
    const std::string name = "a_name_of_twentyseven_bytes";
    ASSERT_EQ(name.size(), 27U);
    make(name, name + " INTEGER");
    Object object(name);
    ORMEL_ObjectInt32Set(object, name.c_str(), 5);
    ORMEL_ObjectSelectFieldSet(object, name.c_str());
    ASSERT_EQ(ORMEL_InsertRecFormObj(object), ORMEL_OK);
    Result result;
    ASSERT_EQ(ORMEL_SelectRecByObj(object, result), ORMEL_OK);
    int32_t value = 0;
    EXPECT_EQ(ORMEL_ResultInt32Get(result, 0, name.c_str(), &value), ORMEL_OK);
    EXPECT_EQ(value, 5);
}

// --- Transactions ---

// Inserts one row, changes one and deletes one on the slot.
void changeAll(ORMEL_TRANS *slot) {
    Object inserted("t");
    ORMEL_ObjectInt32Set(inserted, "id", 0);
    ORMEL_ObjectStrSet(inserted, "name", "ape");
    ASSERT_EQ(ORMEL_InsertRecByObjForTrans(slot, inserted), ORMEL_OK);
    Object values("t");
    Object conditions("t");
    uint32_t count = 0;
    ORMEL_ObjectStrSet(values, "name", "x");
    ORMEL_ObjectInt32Set(conditions, "id", 1);
    ASSERT_EQ(ORMEL_UpdateRecByObjForTrans(slot, values, conditions, &count), ORMEL_OK);
    EXPECT_EQ(count, 1U);
    Object deleted("t");
    ORMEL_ObjectInt32Set(deleted, "id", 2);
    ASSERT_EQ(ORMEL_DeleteRecByObjForTrans(slot, deleted, &count), ORMEL_OK);
    EXPECT_EQ(count, 1U);
    Object everything("t");
    Result result;
    ASSERT_EQ(ORMEL_SelectRecByObjForTrans(slot, everything, result), ORMEL_OK);
    EXPECT_EQ(result->uiRecNum, 4U);
}

TEST_F(ObjectTest, ASlotsWorkIsSeenWhenItIsCommitted) {
    makeRows();
    Transaction transaction;
    changeAll(transaction);
    EXPECT_THAT(names(), ElementsAre("ant", "bee", "cat", "cow"));
    EXPECT_EQ(transaction.commit(), ORMEL_OK);
    EXPECT_THAT(names(), ElementsAre("ape", "x", "cat", "cow"));
}

TEST_F(ObjectTest, ASlotsWorkIsUndoneByItsRollback) {
    makeRows();
    Transaction transaction;
    changeAll(transaction);
    EXPECT_EQ(transaction.rollback(), ORMEL_OK);
    EXPECT_THAT(names(), ElementsAre("ant", "bee", "cat", "cow"));
}

// Changes everything, and inserts a row that is refused.
class RefusedTest : public ObjectTest {
protected:
    RefusedTest() {
        makeRows();
        execute("CREATE UNIQUE INDEX t_id ON t (id)");
    }

    static void changeAndFail(ORMEL_TRANS *slot) {
        changeAll(slot);
        Object twice("t");
        ORMEL_ObjectInt32Set(twice, "id", 3);
        EXPECT_EQ(ORMEL_InsertRecByObjForTrans(slot, twice), ORMEL_ERR_NO_RESULT);
    }
};

TEST_F(RefusedTest, TheRestOfATransactionStays) {
    NEEDS(workAfterError);
    Transaction transaction;
    changeAndFail(transaction);
    EXPECT_EQ(transaction.commit(), ORMEL_OK);
    EXPECT_THAT(names(), ElementsAre("ape", "x", "cat", "cow"));
}

// The database's words about it are the last error; a commit is none, and says so; a rollback ends the slot as ever.
TEST_F(RefusedTest, TheTransactionIsOver) {
    NEEDS(refusalAfterError);
    for (const bool commits : {true, false}) {
        Transaction transaction;
        changeAndFail(transaction);
        Object everything("t");
        Result result;
        ORMEL_ERROR error = {};
        EXPECT_NE(ORMEL_SelectRecByObjForTrans(transaction, everything, result), ORMEL_OK);
        ORMEL_LastError(&error);
        EXPECT_THAT(error.acText, testing::HasSubstr("current transaction is aborted"));
        EXPECT_EQ(commits ? transaction.commit() : transaction.rollback(), commits ? ORMEL_ERR_FAILED : ORMEL_OK);
        EXPECT_THAT(names(), ElementsAre("ant", "bee", "cat", "cow"));
    }
}

} // namespace
