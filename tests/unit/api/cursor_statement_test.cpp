// The statement that a cursor reads by an object.
#include "api/operation.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::Log;

namespace {

class CursorStatementTest : public unit::OperationTest {
protected:
    void SetUp() override {
        OperationTest::SetUp();
        slot_ = ORMEL_SelectTransCreate("PERSON", "f", 1);
        Client().ForgetCalls();
        Log().Forget();
    }
    void TearDown() override {
        ORMEL_TransDestory(slot_);
        OperationTest::TearDown();
    }
    // What the access layer logs when an operation fails.
    unit::Lines Failing(const char *operation) {
        Client().ForgetCalls();
        Log().Forget();
        Client().Fail(operation);
        EXPECT_EQ(dbBeginFetchSpecifyField(slot_, &object_), 255u);
        EXPECT_EQ(slot_->pStmt, nullptr);
        EXPECT_EQ(Client().LiveStatements(), 0);
        EXPECT_EQ(Client().Count("get_error"), 0);
        return Log().LinesOf("dbBeginFetchSpecifyField");
    }

    ORMEL_TRANS *slot_ = nullptr;
};

TEST_F(CursorStatementTest, IsParkedInTheSlot) {
    EXPECT_EQ(dbBeginFetchSpecifyField(slot_, &object_), 0u);
    EXPECT_EQ(slot_->pStmt, Client().Handle("s2"));
    EXPECT_THAT(Client().Calls(), ElementsAre("alloc_stmt(c1)", "prepare(s2, SELECT * FROM PERSON WHERE ID = :1)",
                                              "bind_by_pos(s2, 0, 1, '\\07\\00\\00\\00', 4, null)", "execute(s2)"));
    EXPECT_THAT(Log().LinesOf("dbBeginFetchSpecifyField"), ElementsAre("DEBUG dbBeginFetchSpecifyField: Trace in."));
}

TEST_F(CursorStatementTest, EachFailureIsLogged) {
    const std::string sql = "SELECT * FROM PERSON WHERE ID = :1";
    const std::string begin = "DEBUG dbBeginFetchSpecifyField: Trace in.";
    const std::string error = "ERROR dbBeginFetchSpecifyField: ";
    EXPECT_THAT(Failing("alloc_stmt"), ElementsAre(begin, error + "qdc_alloc_stmt failed"));
    EXPECT_THAT(Failing("prepare"), ElementsAre(begin, error + "prepare sql:" + sql + " failed"));
    EXPECT_THAT(Failing("bind_by_pos"), ElementsAre(begin, error + "dbBindPara failed"));
    EXPECT_THAT(Failing("execute"), ElementsAre(begin, error + "exec sql:" + sql + " failed"));
}

TEST_F(CursorStatementTest, NeedsASlotAndAnObjectThatFits) {
    EXPECT_EQ(dbBeginFetchSpecifyField(nullptr, &object_), 97u);
    EXPECT_EQ(dbBeginFetchSpecifyField(slot_, nullptr), 97u);
    EXPECT_THAT(Log().Lines(), IsEmpty());
    ORMEL_TRANS empty = {};
    EXPECT_EQ(dbBeginFetchSpecifyField(&empty, &object_), 255u);
    ORMEL_ObjectInt32Set(&object_, "NOBODY", 1);
    EXPECT_EQ(dbBeginFetchSpecifyField(slot_, &object_), 255u) << "not the check's own code";
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(CursorStatementTest, WithoutMemoryNothingIsLeft) {
    size_t before = unit::LiveBlocks();
    uint32_t code = 0;
    int allocations = unit::ForEachAllocation([&] { code = dbBeginFetchSpecifyField(slot_, &object_); },
                                              [&](int) {
                                                  EXPECT_EQ(code, 255u);
                                                  EXPECT_EQ(unit::LiveBlocks(), before);
                                                  EXPECT_EQ(Client().LiveStatements(), 0);
                                              });
    EXPECT_GE(allocations, 1);
    EXPECT_EQ(code, 0u);
}

} // namespace
