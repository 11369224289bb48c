// Values bound one row at a time.
#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::HasSubstr;

class BindTest : public ContractTest {
protected:
    // Inserts memory as the text of the only column and returns what is there afterwards.
    static Value inserted(Connection &db, uint32_t type, const void *data, size_t length) {
        db.run("delete from s");
        Statement insert(db, "insert into s (x) values (:1)");
        insert.bind(0, type, data, length);
        insert.execute();
        return db.rows("select x from s").at(0).at(0);
    }
};
CONTRACT_SUITE(BindTest);

TEST_P(BindTest, TextEndsAtItsFirstNulOrAtItsLength) {
    Connection db = connect();
    db.run("create table s (x varchar(20))");
    struct Case {
        const char *bytes;
        size_t length;
        const char *expected;
    };
    for (const uint32_t type : {kChar, kVarchar, kText})
        for (const Case &c : {Case{"abc", 3, "abc"}, Case{"abcdef", 3, "abc"}, Case{"ab\0\0\0\0", 6, "ab"},
                              Case{"ab\0cd", 5, "ab"}, Case{"\0\0\0", 3, ""}, Case{"\0b", 2, ""}, Case{"abc", 0, ""}})
            EXPECT_EQ(inserted(db, type, c.bytes, c.length), c.expected) << type << ", length " << c.length;
}

TEST_P(BindTest, AnEmptyTextIsNotNull) {
    Connection db = connect();
    db.run("create table s (x varchar(20))");
    EXPECT_EQ(inserted(db, kVarchar, "", 0), "");
    EXPECT_EQ(inserted(db, kVarchar, "", 1), "");
    EXPECT_EQ(inserted(db, kVarchar, nullptr, 0), std::nullopt);
    EXPECT_EQ(inserted(db, kVarchar, nullptr, 20), std::nullopt);
}

TEST_P(BindTest, ANullPointerIsNullInEveryType) {
    Connection db = connect();
    db.run(std::string("create table n (i integer, g bigint, r ") + engine().realType() +
           ", o boolean, c char(5), v varchar(5), m numeric(5), t text, b " + engine().blobType() + ")");
    Statement insert(db, "insert into n values (:1, :2, :3, :4, :5, :6, :7, :8, :9)");
    uint32_t position = 0;
    for (const uint32_t type : {kInteger, kBigint, kReal, kBoolean, kChar, kVarchar, kText, kClob, kBlob})
        insert.bind(position++, type, nullptr, 4);
    EXPECT_EQ(insert.execute(), 1U);
    EXPECT_EQ(db.rows("select * from n"), Rows{Row(9)});
}

TEST_P(BindTest, BytesKeepTheirZeros) {
    Connection db = connect();
    db.run(std::string("create table s (x ") + engine().blobType() + ")");
    const std::string bytes("\0a\0\0", 4);
    for (const uint32_t type : {11U, 12U, 23U})
        EXPECT_EQ(inserted(db, type, bytes.data(), bytes.size()), bytes);
    EXPECT_EQ(inserted(db, kVarbinary, "", 0), "");
    EXPECT_EQ(inserted(db, kVarbinary, nullptr, 4), std::nullopt);
}

TEST_P(BindTest, UnknownTypesAreRefused) {
    Connection db = connect();
    makeTable(db);
    const int64_t value = 0;
    for (const uint32_t type : {0U, 99U, 65536U + 9U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(type);
        Statement insert(db, "insert into t (id) values (:1)");
        const bool refused = qdc_bind_by_pos(insert, 0, type, const_cast<int64_t *>(&value), 8, nullptr) != 0 ||
                             qdc_execute(insert) != 0;
        EXPECT_TRUE(refused);
        EXPECT_THAT(db.error(), HasSubstr(std::to_string(type)));
    }
    EXPECT_EQ(count(db), 0);
}

TEST_P(BindTest, NumbersOfAnImpossibleLengthAreRefused) {
    Connection db = connect();
    makeTable(db);
    struct Case {
        uint32_t type;
        uint32_t length;
    };
    const int64_t value[4] = {};
    for (const Case &c : {Case{kInteger, 0}, Case{kInteger, 3}, Case{kInteger, 16}, Case{kBigint, 5}, Case{kReal, 3},
                          Case{kReal, 16}, Case{kBoolean, 0}, Case{kClob, 8}, Case{kBlob, 0}}) {
        SCOPED_TRACE(std::to_string(c.type) + ", " + std::to_string(c.length));
        Statement insert(db, "insert into t (id) values (:1)");
        const bool refused = qdc_bind_by_pos(insert, 0, c.type, const_cast<int64_t *>(value), c.length, nullptr) != 0 ||
                             qdc_execute(insert) != 0;
        EXPECT_TRUE(refused);
    }
    EXPECT_EQ(count(db), 0);
}

TEST_P(BindTest, PositionsThatAreNotThereAreRefused) {
    Connection db = connect();
    makeTable(db);
    int32_t value = 1;
    Statement insert(db, "insert into t (id) values (:1)");
    EXPECT_FAILS(qdc_bind_by_pos(insert, 1, kInteger, &value, 4, nullptr));
    EXPECT_FAILS(qdc_bind_by_pos(insert, 0xFFFFFFFF, kInteger, &value, 4, nullptr));
    Statement plain(db, "select id from t");
    EXPECT_FAILS(qdc_bind_by_pos(plain, 0, kInteger, &value, 4, nullptr));
}

TEST_P(BindTest, AParameterThatIsNotBoundFailsTheExecution) {
    Connection db = connect();
    makeTable(db);
    Statement insert(db, "insert into t (id, v) values (:1, :2)");
    insert.set(0, 1);
    EXPECT_FAILS(qdc_execute(insert));
    EXPECT_THAT(db.error(), HasSubstr(":2"));
    EXPECT_EQ(count(db), 0);
    insert.set(1, "now");
    EXPECT_EQ(insert.execute(), 1U);
}

// The value is read when the statement runs, so that one binding serves many executions.
TEST_P(BindTest, ValuesAreReadWhenTheStatementRuns) {
    Connection db = connect();
    makeTable(db);
    Statement insert(db, "insert into t (id, v) values (:1, :2)");
    int32_t id = 0;
    char text[8] = "x";
    insert.bind(0, kInteger, &id, sizeof id);
    insert.bind(1, kVarchar, text, sizeof text);
    for (id = 1; id <= 3; ++id) {
        text[0] = static_cast<char>('a' + id);
        insert.execute();
    }
    EXPECT_EQ(db.rows("select id, v from t order by id"), (Rows{rowOf("1", "b"), rowOf("2", "c"), rowOf("3", "d")}));
}

// The memory is the caller's again when execute returns, also while rows are still to come.
TEST_P(BindTest, ValuesAreNotNeededAfterTheExecution) {
    Connection db = connect();
    makeTable(db, 100);
    Statement query(db, "select id from t where id > :1 and v <> :2 order by id");
    query.readAhead(1);
    {
        const auto limit = std::make_unique<int32_t>(10);
        const std::string text = "row 50 and nothing but row 50";
        query.bind(0, kInteger, limit.get(), sizeof *limit);
        query.bind(1, kVarchar, text.data(), 6);
        EXPECT_EQ(query.execute(), 1U);
    }
    EXPECT_EQ(query.rest().size(), 89U);
}

TEST_P(BindTest, ValuesNeedNoAlignment) {
    Connection db = connect();
    makeTable(db);
    const std::string memory = std::string("#") + std::string("\x07\0\0\0", 4);
    Statement insert(db, "insert into t (id, v) values (:1, 'x')");
    insert.bind(0, kInteger, memory.data() + 1, 4);
    insert.execute();
    EXPECT_EQ(db.rows("select id from t"), Rows{rowOf("7")});
}

// A value never becomes part of the statement's text.
TEST_P(BindTest, ValuesAreNoSql) {
    Connection db = connect();
    makeTable(db, 3);
    for (const char *text : {"'; drop table t; --", "x' or '1'='1", "\\'; --", ":1"}) {
        EXPECT_TRUE(db.rows("select id from t where v = :1", text).empty());
        EXPECT_EQ(db.run("update t set v = :1 where id = :2", text, 1), 1U);
        EXPECT_EQ(db.rows("select id from t where v = :1", text), Rows{rowOf("1")});
    }
    EXPECT_EQ(count(db), 3);
}

TEST_P(BindTest, PlaceholdersMayRepeatAndComeInAnyOrder) {
    Connection db = connect();
    makeTable(db, 3);
    EXPECT_EQ(db.rows("select id from t where v = :2 and id = :1 and id <= :1", 2, "row 2"), Rows{rowOf("2")});
}

TEST_P(BindTest, OnlyPlaceholdersAreReplaced) {
    Connection db = connect();
    makeTable(db, 1);
    EXPECT_EQ(db.rows("select ':1', v as \":2\", ':3' /* :4 */ from t -- :5\n where id = :1", 1),
              Rows{rowOf(":1", "row 1", ":3")});
    EXPECT_EQ(db.rows("select 'it''s :1' from t where id=:1", 1), Rows{rowOf("it's :1")});
}

TEST_P(BindTest, ManyParameters) {
    Connection db = connect();
    constexpr int kMany = 200;
    std::string sql = "select 1 where 1 in (0";
    for (int i = 1; i <= kMany; ++i)
        sql += ", :" + std::to_string(i);
    Statement query(db, sql + ")");
    for (uint32_t i = 0; i < kMany; ++i)
        query.set(i, i == kMany - 1 ? 1 : 5);
    EXPECT_EQ(query.execute(), 1U);
}

// Conditions carry the column's type with the value.
TEST_P(BindTest, ConditionsOfEveryType) {
    Connection db = connect();
    db.run(std::string("create table c (i integer, g bigint, r ") + engine().realType() +
           ", o boolean, c char(5), v varchar(5), m numeric(5))");
    const auto bindAll = [](Statement &statement) {
        static const int32_t yes = 1;
        statement.set(0, int32_t{-7});
        statement.set(1, int64_t{1} << 40);
        statement.set(2, 0.25);
        statement.bind(3, kBoolean, &yes, sizeof yes);
        statement.setBytes(4, kChar, std::string_view("ab\0\0", 4));
        statement.setBytes(5, kVarchar, "cd");
        statement.setBytes(6, kText, "42");
    };
    Statement insert(db, "insert into c values (:1, :2, :3, :4, :5, :6, :7)");
    bindAll(insert);
    insert.execute();
    Statement query(db, "select count(*) from c where i = :1 and g = :2 and r = :3 and o = :4 and c = :5 and v = :6"
                        " and m = :7");
    bindAll(query);
    query.execute();
    EXPECT_EQ(query.rest(), Rows{rowOf("1")});
}

} // namespace
