#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <limits>
#include <random>
#include <sqlite3.h>

#include "seed.h"
#include "support.h"

namespace ormel::client::sqlite {

using testing::HasSubstr;

namespace {

class ValuesTest : public DatabaseTest {
protected:
    // A value written by SQL into a column of this declared type, as it comes back.
    Text readBack(const std::string &declared, const std::string &sqlValue) {
        const auto connection = connect();
        run(*connection, "CREATE TABLE t (v " + declared + ")");
        run(*connection, "INSERT INTO t VALUES (" + sqlValue + ")");
        return query(*connection, "SELECT v FROM t").at(0).at(0);
    }

    Error readError(const std::string &declared, const std::string &sqlValue) {
        return errorOf([&] { readBack(declared, sqlValue); });
    }
};

} // namespace

TEST_F(ValuesTest, integersStayInTheirWidth) {
    EXPECT_EQ(readBack("INTEGER", "2147483647"), "2147483647");
    EXPECT_EQ(readBack("INTEGER", "-2147483648"), "-2147483648");
    EXPECT_EQ(readBack("BIGINT", "-9223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(readBack("BOOLEAN", "TRUE"), "1");
    EXPECT_EQ(readBack("INTEGER", "NULL"), Text());
}

TEST_F(ValuesTest, whatDoesNotFitIsAnErrorThatNamesItsColumn) {
    const Error large = readError("INTEGER", "2147483648");
    EXPECT_EQ(large.code, static_cast<uint32_t>(SQLITE_MISMATCH));
    EXPECT_THAT(large.message, HasSubstr("column V"));
    EXPECT_THAT(large.message, HasSubstr("the integer 2147483648"));
    EXPECT_THAT(readError("INTEGER", "'one'").message, HasSubstr("a row holds text"));
    EXPECT_THAT(readError("INTEGER", "x'01'").message, HasSubstr("a row holds bytes"));
    EXPECT_THAT(readError("INTEGER", "1.5").message, HasSubstr("the number 1.5"));
    EXPECT_THAT(readError("BIGINT", "1.5").message, HasSubstr("64 bits"));
    EXPECT_THAT(readError("BIGINT", "9223372036854775808").message, HasSubstr("the number 9223372036854775808"));
    EXPECT_THAT(readError("BOOLEAN", "2").message, HasSubstr("boolean"));
    EXPECT_THAT(readError("BOOLEAN", "-1").message, HasSubstr("boolean"));
    EXPECT_THAT(readError("DOUBLE", "'x'").message, HasSubstr("double"));
    EXPECT_THAT(readError("BLOB", "5").message, HasSubstr("bytes"));
    EXPECT_THAT(readError("BINARY(4)", "0.5").message, HasSubstr("bytes"));
}

TEST_F(ValuesTest, integersWidenToDoublesOnlyExactly) {
    // An expression is described by its first row.
    const auto connection = connect();
    EXPECT_EQ(query(*connection, "SELECT 0.5 AS v UNION ALL SELECT 9007199254740992").at(1).at(0),
              "9007199254740992.000000");
    const Error error = errorOf([&] { query(*connection, "SELECT 0.5 AS v UNION ALL SELECT 9007199254740993"); });
    EXPECT_THAT(error.message, HasSubstr("9007199254740993"));
}

TEST_F(ValuesTest, numbersTravelAsTextWithoutLoss) {
    EXPECT_EQ(readBack("NUMERIC", "12"), "12");
    EXPECT_EQ(readBack("NUMERIC(10,2)", "12.25"), "12.25");
    EXPECT_EQ(readBack("NUMERIC", "0.1"), "0.1");
    EXPECT_EQ(readBack("NUMERIC", "-0.00001"), "-0.00001");
    EXPECT_EQ(readBack("NUMERIC", "1e20"), "1e+20");
    EXPECT_EQ(readBack("NUMERIC", "9007199254740993"), "9007199254740993");
    EXPECT_EQ(readBack("", "100000.0"), "100000");
    EXPECT_EQ(readBack("", "5"), "5");
    EXPECT_EQ(readBack("DATE", "'2024-02-29'"), "2024-02-29");
}

// SQLite's own doing, which its page tells of.
TEST_F(ValuesTest, textThatLooksLikeANumberBecomesOneOutsideOfTextColumns) {
    EXPECT_EQ(readBack("DATE", "'007'"), "7");
    EXPECT_EQ(readBack("JSON", "'1.0'"), "1");
    EXPECT_EQ(readBack("VARCHAR(5)", "'007'"), "007");
}

TEST_F(ValuesTest, realsAsTextReadBackAsTheSameNumber) {
    const auto seed = seedOfRun();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const auto connection = connect();
    run(*connection, "CREATE TABLE t (v)");
    const auto insert = connection->prepare("INSERT INTO t VALUES (?1)");
    std::vector<double> values;
    while (values.size() < 1000) {
        const uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value))
            continue;
        values.push_back(value);
        insert->execute({real(value)}, 1);
    }
    const auto rows = query(*connection, "SELECT v FROM t ORDER BY rowid");
    ASSERT_EQ(rows.size(), values.size());
    for (size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(std::strtod(rows[i][0]->c_str(), nullptr), values[i]) << *rows[i][0];
}

TEST_F(ValuesTest, textAndBytesComeBackWhole) {
    const std::string withNul("a\0b", 3);
    const std::string large(100000, 'x');
    const auto connection = connect();
    run(*connection, "CREATE TABLE t (c CHAR(2), v VARCHAR(2), n TEXT, b BINARY(2), l BLOB)");
    const auto insert = connection->prepare("INSERT INTO t VALUES (?1, ?2, ?3, ?4, ?5)");
    const auto back = [&] {
        TextRow row = query(*connection, "SELECT * FROM t").at(0);
        run(*connection, "DELETE FROM t");
        return row;
    };
    insert->execute({text("ab  "), text("longer than declared"), text(large), bytes(withNul), bytes(large)}, 1);
    EXPECT_EQ(back(), (TextRow{"ab  ", "longer than declared", large, withNul, large}));
    insert->execute({text(""), text(withNul), text(withNul), text("tx"), bytes("")}, 1);
    EXPECT_EQ(back(), (TextRow{"", withNul, withNul, "tx", ""}));
    insert->execute({bytes("by"), {}, {}, {}, {}}, 1);
    EXPECT_EQ(back(), (TextRow{"by", {}, {}, {}, {}}));
}

TEST_F(ValuesTest, emptyIsNotNull) {
    const auto connection = connect();
    const auto rows = query(*connection, "SELECT typeof(?1), typeof(?2), typeof(?3)", {text(""), bytes(""), {}});
    EXPECT_EQ(rows.at(0), (TextRow{"text", "blob", "null"}));
}

TEST_F(ValuesTest, otherEncodingsAreReadAsUtf8) {
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path("test.db").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other,
                           "PRAGMA encoding = 'UTF-16'; CREATE TABLE t (v VARCHAR(9)); INSERT INTO t VALUES ('aé€')",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(other);
    EXPECT_EQ(query(*connect(), "SELECT v FROM t").at(0).at(0), "aé€");
}

TEST_F(ValuesTest, doublesComeBackAsTheyWentIn) {
    const auto connection = connect();
    run(*connection, "CREATE TABLE t (v DOUBLE)");
    for (const double value : {0.1, -1.5e300, 5e-324, std::numeric_limits<double>::infinity(), 3.0}) {
        run(*connection, "DELETE FROM t");
        run(*connection, "INSERT INTO t VALUES (?1)", {real(value)});
        const auto statement = connection->prepare("SELECT v FROM t");
        statement->execute({}, 1);
        RowBuffer rows;
        ASSERT_TRUE(statement->fetch(rows));
        std::vector<Cell> cells(1);
        rows.take(cells);
        double back = 0;
        ASSERT_EQ(cells[0].size, sizeof back);
        std::memcpy(&back, cells[0].data, sizeof back);
        EXPECT_EQ(back, value);
    }
}

TEST_F(ValuesTest, notANumberIsRefused) {
    const auto connection = connect();
    run(*connection, "CREATE TABLE t (v DOUBLE)");
    const Error error = errorOf([&] { run(*connection, "INSERT INTO t VALUES (?1)", {real(std::nan(""))}); });
    EXPECT_THAT(error.message, HasSubstr("parameter 1"));
    EXPECT_TRUE(query(*connection, "SELECT * FROM t").empty());
}

TEST_F(ValuesTest, aRowThatDoesNotFitLeavesTheBufferAsItWas) {
    const auto connection = connect();
    run(*connection, "CREATE TABLE t (id INTEGER, big TEXT, n INTEGER)");
    run(*connection, "INSERT INTO t VALUES (1, ?1, 1), (2, ?2, 'x')", {text("first"), text(std::string(20000, 'b'))});
    const auto statement = connection->prepare("SELECT * FROM t ORDER BY id");
    statement->execute({}, 1);
    RowBuffer rows;
    ASSERT_TRUE(statement->fetch(rows));
    errorOf([&] { statement->fetch(rows); });
    errorOf([&] { statement->fetch(rows); });
    EXPECT_EQ(rows.rows(), 1U);
    std::vector<Cell> cells(3);
    ASSERT_TRUE(rows.take(cells));
    EXPECT_EQ(cells[1].size, 5U);
    EXPECT_FALSE(rows.take(cells));
}

} // namespace ormel::client::sqlite
