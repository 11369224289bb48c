// Writes by objects.
#include "api/operation.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Bytes;
using unit::Client;
using unit::Log;
using unit::operator+;

namespace {

class WriteObjectTest : public unit::OperationTest {
protected:
    // An object of a table of integers with so many items.
    static void SetIntegers(ORMEL_OBJECT &object, int items) {
        ORMEL_ObjectParaClear(&object);
        ORMEL_ObjectNameSet(&object, "WIDE");
        for (int i = 0; i < items; ++i) {
            ORMEL_ObjectInt32Set(&object, ("C" + std::to_string(i)).c_str(), i);
        }
    }
};

// --- What is sent ---

TEST_F(WriteObjectTest, TheRoadOfAnInsert) {
    ORMEL_ObjectNullSet(&object_, "NAME");
    EXPECT_EQ(ORMEL_InsertRecFormObj(&object_), 0u);
    EXPECT_THAT(Client().CallsButReads(),
                ElementsAreArray(
                    unit::Opened("c1") +
                    std::vector<std::string>{
                        "alloc_stmt(c1)", "prepare(s1, select * from PERSON where 1<>1)", "execute(s1)",
                        "free_stmt(s1)", "alloc_stmt(c1)", "prepare(s2, INSERT INTO PERSON (ID, NAME) values (:1, :2))",
                        "set_paramset_size(s2, 1)", "bind_by_pos(s2, 0, 1, '\\07\\00\\00\\00', 4, null)",
                        "bind_by_pos(s2, 1, 9, null, 0, null)", "execute(s2)", "free_stmt(s2)", "commit(c1)"} +
                    unit::Closed("c1")));
}

TEST_F(WriteObjectTest, InsertsItemsInTheirOrderWhateverTheirOperator) {
    ORMEL_ObjectStrOptionLikeSet(&object_, "name", "A%");
    EXPECT_EQ(ORMEL_InsertRecFormObj(&object_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("INSERT INTO PERSON (ID, name) values (:1, :2)"));
    EXPECT_EQ(Bound(), (Values{{0, Bytes(int32_t{7})}, {1, "A%"}}));
}

TEST_F(WriteObjectTest, DeletesByAllItems) {
    ORMEL_ObjectStrOptionLikeSet(&object_, "NAME", "A%");
    object_.astItem[0].uiOp = ORMEL_OP_NOT_EQUAL;
    Client().On("DELETE", {.affected = 5});
    EXPECT_EQ(ORMEL_DeleteRecByObj(&object_, &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("DELETE from PERSON WHERE ID <> :1 AND NAME like :2"));
    EXPECT_EQ(count_, 5u);
}

TEST_F(WriteObjectTest, WithoutItemsEverythingIsDeleted) {
    ORMEL_ObjectParaClear(&object_);
    EXPECT_EQ(ORMEL_DeleteRecByObj(&object_, &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("DELETE from PERSON"));
}

TEST_F(WriteObjectTest, UpdatesByASecondObject) {
    ORMEL_ObjectNullSet(&object_, "NAME");
    where_.astItem[0].uiOp = ORMEL_OP_LESS;
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("UPDATE PERSON SET ID = :1, NAME = :2 WHERE BALANCE < :3"));
    EXPECT_EQ(Bound(), (Values{{0, Bytes(int32_t{7})}, {1, ""}, {2, Bytes(int64_t{-1})}}));
    EXPECT_EQ(count_, 1u);
}

TEST_F(WriteObjectTest, WithoutASecondObjectEverythingIsUpdated) {
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, nullptr, &count_), 0u);
    ORMEL_ObjectParaClear(&where_);
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("UPDATE PERSON SET ID = :1", "UPDATE PERSON SET ID = :1"));
}

TEST_F(WriteObjectTest, TheFirstObjectNamesTheTable) {
    ORMEL_ObjectNameSet(&where_, "OTHER");
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("UPDATE PERSON SET ID = :1 WHERE BALANCE = :2"));
    EXPECT_EQ(ORMEL_ResAttGet("OTHER"), nullptr);
}

TEST_F(WriteObjectTest, NothingAffectedIsCommittedAndCounted) {
    for (const char *statement : {"DELETE", "UPDATE"}) {
        Client().On(statement, {.affected = 0});
    }
    EXPECT_EQ(ORMEL_DeleteRecByObj(&object_, &count_), 0u);
    EXPECT_EQ(count_, 0u);
    count_ = kUnwritten;
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 0u);
    EXPECT_EQ(count_, 0u);
    EXPECT_EQ(Client().Count("commit"), 2);
}

TEST_F(WriteObjectTest, LargeObjectsAreWrittenFromTheObject) {
    Have("NOTE", {{"ID", 1, 4, 1}, {"TEXT", 13, 44}});
    ORMEL_ObjectNameSet(&object_, "NOTE");
    ORMEL_ObjectTextSet(&object_, "TEXT", "a long text");
    EXPECT_EQ(ORMEL_InsertRecFormObj(&object_), 0u);
    EXPECT_THAT(Client().Calls(), testing::Contains(testing::StartsWith("write_clob(s2, 1, 'a long text'")));
}

// --- What is refused ---

TEST_F(WriteObjectTest, ARefusedConditionIsNoUpdate) {
    ORMEL_ObjectInt32Set(&where_, "NOBODY", 1);
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 98u);
    ORMEL_ObjectParaClear(&where_);
    ORMEL_ObjectNullSet(&where_, "NAME");
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 98u) << "nothing equals NULL";
    ORMEL_ObjectParaClear(&where_);
    where_.acTableName[0] = '\0';
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 98u) << "a second object without a table";
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_EQ(Client().Count("commit"), 0);
    EXPECT_EQ(count_, kUnwritten);
    EXPECT_THAT(Log().LinesOf("ORMEL_UpdateRecForConn2").back(), testing::EndsWith("Update Rec return: 0x62"));
}

TEST_F(WriteObjectTest, BothObjectsTogetherHaveAtMost32Items) {
    Have("WIDE", unit::Integers(32));
    SetIntegers(object_, 31);
    SetIntegers(where_, 1);
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 0u);
    SetIntegers(where_, 2);
    Client().ForgetCalls();
    count_ = kUnwritten;
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, &where_, &count_), 1u);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_EQ(Client().Count("commit"), 0);
    EXPECT_EQ(count_, kUnwritten);
    SetIntegers(object_, 32);
    EXPECT_EQ(ORMEL_InsertRecFormObj(&object_), 0u);
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, nullptr, &count_), 0u);
}

TEST_F(WriteObjectTest, AnItemThatDoesNotHaveItsColumnsWidthIsRefused) {
    ORMEL_ObjectParaClear(&object_);
    ORMEL_ObjectInt64Set(&object_, "ID", 7);
    EXPECT_EQ(ORMEL_InsertRecFormObj(&object_), 98u);
    EXPECT_EQ(ORMEL_DeleteRecByObj(&object_, &count_), 98u);
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object_, nullptr, &count_), 98u);
    EXPECT_EQ(ORMEL_UpdateRecByObj(&where_, &object_, &count_), 98u);
    EXPECT_THAT(Statements(), IsEmpty());
    EXPECT_EQ(count_, kUnwritten);
}

TEST_F(WriteObjectTest, AnObjectStaysItsCallersAndCanBeUsedAgain) {
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(ORMEL_InsertRecFormObj(&object_), 0u);
        EXPECT_EQ(object_.iItemNum, 1);
    }
    ORMEL_ObjectParaClear(&object_);
    ORMEL_ObjectStrSet(&object_, "NAME", "Bea");
    Client().ForgetCalls();
    EXPECT_EQ(ORMEL_InsertRecFormObj(&object_), 0u);
    EXPECT_THAT(Statements(), ElementsAre("INSERT INTO PERSON (NAME) values (:1)"));
}

} // namespace
