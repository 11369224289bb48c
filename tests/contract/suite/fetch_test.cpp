// Rows one by one, read ahead and streamed.
#include <malloc.h>

#include <algorithm>
#include <cstring>

#include "support/contract_test.h"

// Present in programs with a sanitizer, whose allocator mallinfo2 does not see.
extern "C" __attribute__((weak)) size_t __sanitizer_get_current_allocated_bytes();

namespace {

using namespace contract;

class FetchTest : public ContractTest {};
CONTRACT_SUITE(FetchTest);

// A query of as many rows without a table.
std::string numbers(int count, const char *columns = "i") {
    return "with recursive n(i) as (select 1 union all select i + 1 from n where i < " + std::to_string(count) +
           ") select " + columns + " from n";
}

TEST_P(FetchTest, OneRowAtATime) {
    Connection db = connect();
    makeTable(db, 3);
    Statement query(db, "select id, v from t order by id");
    query.readAhead(100000);
    query.execute();
    for (int id = 1; id <= 3; ++id) {
        uint32_t rows = 77;
        EXPECT_OK(db, qdc_fetch(query, &rows));
        EXPECT_EQ(rows, 1U);
        EXPECT_EQ(query.row(), rowOf(std::to_string(id), "row " + std::to_string(id)));
    }
    EXPECT_FALSE(query.fetch());
}

TEST_P(FetchTest, ReadingAheadMayMeanAll) {
    Connection db = connect();
    makeTable(db, 3);
    for (const uint32_t ahead : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        Statement query(db, "select id from t");
        query.readAhead(ahead);
        EXPECT_EQ(query.execute(), 3U);
        EXPECT_EQ(query.rest().size(), 3U);
    }
}

TEST_P(FetchTest, TheEndStaysTheEnd) {
    Connection db = connect();
    makeTable(db, 1);
    for (const char *sql : {"select id from t", "select id from t where 1<>1"}) {
        Statement query(db, sql);
        query.execute();
        query.rest();
        for (int i = 0; i < 3; ++i) {
            uint32_t rows = 77;
            EXPECT_OK(db, qdc_fetch(query, &rows));
            EXPECT_EQ(rows, 0U);
        }
    }
}

TEST_P(FetchTest, ValuesAreCountedFromZeroAndHaveTheirLength) {
    Connection db = connect();
    db.run("create table v (i integer, t varchar(10), e varchar(10), n varchar(10))");
    db.run("insert into v values (:1, :2, :3, :4)", 7, "seven", "", std::nullopt);
    Statement query(db, "select * from v");
    query.execute();
    EXPECT_TRUE(query.fetch());
    struct Expected {
        uint32_t size;
        uint32_t isNull;
        const char *bytes;
    };
    const int32_t seven = 7;
    const Expected expected[] = {
        {4, 0, reinterpret_cast<const char *>(&seven)}, {5, 0, "seven"}, {0, 0, ""}, {0, 1, nullptr}};
    for (uint32_t column = 0; column < 4; ++column) {
        SCOPED_TRACE(column);
        void *data = nullptr;
        uint32_t size = 77;
        uint32_t isNull = 77;
        EXPECT_OK(db, qdc_get_column_by_id(query, column, &data, &size, &isNull));
        EXPECT_EQ(size, expected[column].size);
        EXPECT_EQ(isNull, expected[column].isNull);
        if (isNull == 0) {
            EXPECT_EQ(std::string(static_cast<char *>(data), size), std::string(expected[column].bytes, size));
        }
    }
    void *data = nullptr;
    uint32_t size = 0;
    uint32_t isNull = 0;
    EXPECT_FAILS(qdc_get_column_by_id(query, 4, &data, &size, &isNull));
}

TEST_P(FetchTest, NoRowNoValue) {
    Connection db = connect();
    makeTable(db, 1);
    Statement query(db, "select id from t");
    void *data = nullptr;
    uint32_t size = 0;
    uint32_t isNull = 0;
    EXPECT_FAILS(qdc_get_column_by_id(query, 0, &data, &size, &isNull));
    query.execute();
    EXPECT_FAILS(qdc_get_column_by_id(query, 0, &data, &size, &isNull));
    EXPECT_TRUE(query.fetch());
    EXPECT_OK(db, qdc_get_column_by_id(query, 0, &data, &size, &isNull));
    EXPECT_FALSE(query.fetch());
    EXPECT_FAILS(qdc_get_column_by_id(query, 0, &data, &size, &isNull));
}

TEST_P(FetchTest, OnlyAnExecutedQueryHasRows) {
    Connection db = connect();
    makeTable(db, 1);
    uint32_t rows = 77;
    Statement query(db, "select id from t");
    EXPECT_FAILS(qdc_fetch(query, &rows));
    Statement insert(db, "insert into t (id, v) values (2, 'x')");
    insert.execute();
    EXPECT_FAILS(qdc_fetch(insert, &rows));
}

TEST_P(FetchTest, AffectedRowsAreThoseReadAhead) {
    Connection db = connect();
    makeTable(db, 25);
    struct Case {
        uint32_t readAhead; // 0: not set
        const char *condition;
        uint32_t least;
        uint32_t most;
        size_t rows;
    };
    for (const Case &c : {Case{10, "1=1", 10, 10, 25}, Case{25, "1=1", 25, 25, 25}, Case{100000, "1=1", 25, 25, 25},
                          Case{1, "1=1", 1, 1, 25}, Case{0, "1=1", 1, 25, 25}, Case{0, "id = 3", 1, 1, 1},
                          Case{10, "1<>1", 0, 0, 0}, Case{0, "1<>1", 0, 0, 0}}) {
        SCOPED_TRACE(std::string(c.condition) + ", " + std::to_string(c.readAhead));
        Statement query(db);
        if (c.readAhead > 0)
            query.readAhead(c.readAhead);
        query.prepare(std::string("select id from t where ") + c.condition + " order by id");
        const uint32_t affected = query.execute();
        EXPECT_GE(affected, c.least);
        EXPECT_LE(affected, c.most);
        const Rows rows = query.rest();
        EXPECT_EQ(rows.size(), c.rows);
        EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end(), [](const Row &a, const Row &b) {
            return std::stoi(a.at(0).value()) < std::stoi(b.at(0).value());
        }));
        EXPECT_EQ(qdc_get_affected_rows(query), affected);
    }
}

TEST_P(FetchTest, ExecutingAgainStartsAnew) {
    Connection db = connect();
    makeTable(db, 50);
    Statement query(db, "select id from t where id > :1 order by id");
    query.set(0, 10);
    query.execute();
    EXPECT_TRUE(query.fetch());
    query.set(0, 47);
    EXPECT_EQ(query.execute(), 3U);
    EXPECT_EQ(query.rest(), (Rows{rowOf("48"), rowOf("49"), rowOf("50")}));
    query.set(0, 50);
    EXPECT_EQ(query.execute(), 0U);
    EXPECT_TRUE(query.rest().empty());
}

TEST_P(FetchTest, PreparingAgainReplacesTheStatement) {
    Connection db = connect();
    makeTable(db, 50);
    Statement statement(db, "select id from t");
    statement.execute();
    EXPECT_TRUE(statement.fetch());
    statement.prepare("select v, id from t where id = :1");
    uint32_t rows = 0;
    EXPECT_FAILS(qdc_fetch(statement, &rows));
    EXPECT_EQ(qdc_get_affected_rows(statement), 0U);
    statement.set(0, 5);
    statement.execute();
    EXPECT_EQ(statement.rest(), Rows{rowOf("row 5", "5")});
}

TEST_P(FetchTest, SeveralStatementsAreOpenAtOnce) {
    Connection db = connect();
    makeTable(db, 200);
    db.run("create table other (id integer)");
    Statement first(db, "select id from t order by id");
    Statement second(db, "select id from t order by id desc");
    Statement write(db, "insert into other (id) values (:1)");
    first.readAhead(1);
    second.readAhead(2);
    first.execute();
    second.execute();
    for (int id = 1; id <= 200; ++id) {
        ASSERT_TRUE(first.fetch());
        ASSERT_TRUE(second.fetch());
        EXPECT_EQ(first.row(), rowOf(std::to_string(id)));
        EXPECT_EQ(second.row(), rowOf(std::to_string(201 - id)));
        write.set(0, id);
        EXPECT_EQ(write.execute(), 1U);
    }
    EXPECT_FALSE(first.fetch());
    EXPECT_FALSE(second.fetch());
    EXPECT_EQ(count(db, "other"), 200);
}

TEST_P(FetchTest, ASecondStatementOfTheSameTextIsItsOwn) {
    Connection db = connect();
    makeTable(db, 100);
    const std::string sql = "select id from t where id > :1 order by id";
    Statement first(db, sql);
    Statement second(db, sql);
    first.readAhead(1);
    second.readAhead(1);
    first.set(0, 0);
    second.set(0, 50);
    first.execute();
    second.execute();
    EXPECT_EQ(first.rest().size(), 100U);
    EXPECT_EQ(second.rest().size(), 50U);
}

TEST_P(FetchTest, AFailedStatementLeavesTheOthersOpen) {
    NEEDS(workAfterError);
    Connection db = connect();
    makeTable(db, 100);
    Statement query(db, "select id from t order by id");
    query.readAhead(1);
    query.execute();
    EXPECT_TRUE(query.fetch());
    EXPECT_FALSE(db.refusal("insert into t (id, v) values (1, 'again')").empty());
    EXPECT_EQ(query.rest().size(), 99U);
}

size_t liveBytes() {
    if (__sanitizer_get_current_allocated_bytes != nullptr)
        return __sanitizer_get_current_allocated_bytes();
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// 200,000 rows of 500 bytes are 100 MB; a few of them are kept.
TEST_P(FetchTest, MemoryDoesNotGrowWithTheResult) {
    constexpr int kRows = 200000;
    constexpr size_t kBound = 16U << 20;
    Connection db = connect();
    Statement query(db, numbers(kRows, "i, :1"));
    query.set(0, std::string(500, 'x'));
    const size_t before = liveBytes();
    size_t most = before;
    EXPECT_LT(query.execute(), 10000U);
    int rows = 0;
    uint32_t fetched = 0;
    while (qdc_fetch(query, &fetched) == 0 && fetched == 1)
        if (++rows % 1000 == 0)
            most = std::max(most, liveBytes());
    EXPECT_EQ(rows, kRows);
    EXPECT_LT(most - before, kBound);
}

// Rows read ahead and rows that stream in are the same rows.
TEST_P(FetchTest, NoRowIsLostOrDoubledAtTheSeam) {
    Connection db = connect();
    for (const uint32_t readAhead : {1U, 2U, 999U, 1000U, 1001U}) {
        Statement query(db, numbers(1000));
        query.readAhead(readAhead);
        EXPECT_EQ(query.execute(), std::min(readAhead, 1000U));
        int expected = 0;
        for (const Row &row : query.rest())
            EXPECT_EQ(row, rowOf(std::to_string(++expected)));
        EXPECT_EQ(expected, 1000);
    }
}

} // namespace
