#include "api/operation.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Client;
using unit::Log;

namespace {

class ColumnsTest : public unit::OperationTest {
protected:
    ColumnsTest() { std::memset(names_, 'x', sizeof(names_)); }

    void ExpectNames() const {
        EXPECT_EQ(number_, 3);
        EXPECT_STREQ(names_[0], "ID");
        EXPECT_STREQ(names_[1], "NAME");
        EXPECT_STREQ(names_[2], "BALANCE");
    }
    void ExpectNothingWritten() const {
        EXPECT_EQ(number_, 99);
        EXPECT_EQ(names_[0][0], 'x');
    }
    // Puts the table into the cache.
    static void Cache() { ORMEL_ResAttPush(unit::Describe("PERSON", unit::PersonColumns()).release()); }

    char names_[4][ORMEL_NAME_SIZE];
    uint8_t number_ = 99;
};

// --- From the cache ---

TEST_F(ColumnsTest, TheCacheNeverAsksTheDatabase) {
    EXPECT_EQ(ORMEL_GetAllFieldForCache("PERSON", names_, 3, &number_), 255u);
    ExpectNothingWritten();
    Cache();
    EXPECT_EQ(ORMEL_GetAllFieldForCache("person", names_, 3, &number_), 0u);
    ExpectNames();
    EXPECT_EQ(ORMEL_GetAllFieldForCache("PERSON", names_, 3, &number_), 0u) << "the descriptor stays cached";
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// --- Over a connection ---

TEST_F(ColumnsTest, AConnectionDescribesTheTable) {
    void *conn = ORMEL_DBConnect();
    EXPECT_EQ(ORMEL_GetAllFieldForConn(conn, "PERSON", names_, 3, &number_), 0u);
    ExpectNames();
    EXPECT_NE(ORMEL_ResAttGet("PERSON"), nullptr) << "the descriptor was given back";
    ORMEL_DBDisConnect(conn);
}

TEST_F(ColumnsTest, AConnectionThatCannotDescribeTheTable) {
    void *conn = ORMEL_DBConnect();
    Client().Fail("prepare");
    EXPECT_EQ(ORMEL_GetAllFieldForConn(conn, "PERSON", names_, 3, &number_), 255u);
    EXPECT_THAT(Log().LinesOf("ORMEL_GetAllFieldForConn", KPL_LOG_ERROR),
                ElementsAre("ERROR ORMEL_GetAllFieldForConn: Get sql table's Attributes Failed."));
    ExpectNothingWritten();
    ORMEL_DBDisConnect(conn);
}

// --- From wherever they are ---

TEST_F(ColumnsTest, TheCacheIsAskedFirst) {
    Cache();
    EXPECT_EQ(ORMEL_AllFieldsGet("PERSON", names_, 3, &number_), 0u);
    ExpectNames();
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(ColumnsTest, ThenTheDatabase) {
    EXPECT_EQ(ORMEL_AllFieldsGet("PERSON", names_, 3, &number_), 0u);
    ExpectNames();
    EXPECT_THAT(Client().CallsButReads().front(), unit::Opened("c1")[0]);
    EXPECT_EQ(Client().Calls().back(), "free_conn(c1)");
    EXPECT_EQ(Client().Count("commit"), 0);
    Client().ForgetCalls();
    EXPECT_EQ(ORMEL_AllFieldsGet("PERSON", names_, 3, &number_), 0u);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

// Any failure of the cache leads to the database, also that the names do not fit.
TEST_F(ColumnsTest, TooManyNames) {
    Cache();
    EXPECT_EQ(ORMEL_GetAllFieldForCache("PERSON", names_, 2, &number_), 1u);
    EXPECT_EQ(ORMEL_AllFieldsGet("PERSON", names_, 2, &number_), 1u);
    EXPECT_THAT(Client().Calls(), ElementsAreArray([] {
                    using unit::operator+;
                    return unit::Opened("c1") + unit::Closed("c1");
                }()));
    ExpectNothingWritten();
}

TEST_F(ColumnsTest, WithoutAConnection) {
    Client().Fail("connect");
    EXPECT_EQ(ORMEL_AllFieldsGet("PERSON", names_, 3, &number_), 211u);
    ExpectNothingWritten();
}

TEST_F(ColumnsTest, ATableThatCannotBeDescribed) {
    Client().Fail("prepare");
    EXPECT_EQ(ORMEL_AllFieldsGet("NOWHERE", names_, 3, &number_), 255u);
    ExpectNothingWritten();
}

TEST_F(ColumnsTest, NeedsItsArguments) {
    void *conn = ORMEL_DBConnect();
    Client().ForgetCalls();
    EXPECT_EQ(ORMEL_GetAllFieldForCache(nullptr, names_, 3, &number_), 97u);
    EXPECT_EQ(ORMEL_GetAllFieldForCache("PERSON", names_, 3, nullptr), 97u);
    EXPECT_EQ(ORMEL_GetAllFieldForConn(nullptr, "PERSON", names_, 3, &number_), 97u);
    EXPECT_EQ(ORMEL_GetAllFieldForConn(conn, nullptr, names_, 3, &number_), 97u);
    EXPECT_EQ(ORMEL_GetAllFieldForConn(conn, "PERSON", names_, 3, nullptr), 97u);
    EXPECT_EQ(ORMEL_AllFieldsGet(nullptr, names_, 3, &number_), 97u);
    EXPECT_EQ(ORMEL_AllFieldsGet("PERSON", names_, 3, nullptr), 97u);
    EXPECT_THAT(Client().Calls(), IsEmpty());
    ExpectNothingWritten();
    ORMEL_DBDisConnect(conn);
}

TEST_F(ColumnsTest, NamesNeedRoom) {
    void *conn = ORMEL_DBConnect();
    Cache();
    for (uint32_t code : {ORMEL_GetAllFieldForCache("PERSON", nullptr, 3, &number_),
                          ORMEL_GetAllFieldForConn(conn, "PERSON", nullptr, 3, &number_),
                          ORMEL_AllFieldsGet("PERSON", nullptr, 3, &number_)}) {
        EXPECT_TRUE(code == 1u || code == 97u) << code;
    }
    ExpectNothingWritten();
    ORMEL_DBDisConnect(conn);
}

} // namespace
