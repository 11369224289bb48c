// Values come back exactly as they went in, or are refused.
#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>

#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::AnyOf;

class ValuesTest : public ContractTest {
protected:
    // What a column of the type gives back for a value that was bound.
    template <class T> Value throughColumn(Connection &db, const std::string &type, const T &value) {
        const std::string table = "v" + std::to_string(tables_++);
        db.run("create table " + table + " (x " + type + ")");
        EXPECT_EQ(db.run("insert into " + table + " (x) values (:1)", value), 1U);
        return db.rows("select x from " + table).at(0).at(0);
    }
    Value throughColumn(Connection &db, const std::string &type, uint32_t typeId, const std::string &bytes) {
        const std::string table = "v" + std::to_string(tables_++);
        db.run("create table " + table + " (x " + type + ")");
        Statement insert(db, "insert into " + table + " (x) values (:1)");
        if (typeId == kClob || typeId == kBlob)
            insert.setLob(0, typeId, bytes);
        else
            insert.setBytes(0, typeId, bytes);
        insert.execute();
        return db.rows("select x from " + table).at(0).at(0);
    }

private:
    int tables_ = 0;
};
CONTRACT_SUITE(ValuesTest);

std::string allBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

TEST_P(ValuesTest, Integers) {
    Connection db = connect();
    for (const int32_t value : {0, 1, -1, INT32_MAX, INT32_MIN})
        EXPECT_EQ(throughColumn(db, "integer", value), std::to_string(value));
    for (const int32_t value : {0, 1, -1, 32767, -32768})
        EXPECT_EQ(throughColumn(db, "smallint", value), std::to_string(value));
    for (const int64_t value : {int64_t{0}, int64_t{INT32_MAX} + 1, INT64_MAX, INT64_MIN, (int64_t{1} << 53) + 1})
        EXPECT_EQ(throughColumn(db, "bigint", value), std::to_string(value));
}

TEST_P(ValuesTest, Booleans) {
    Connection db = connect();
    db.run("create table b (x boolean)");
    for (const int32_t value : {0, 1}) {
        Statement insert(db, "insert into b (x) values (:1)");
        insert.bind(0, kBoolean, &value, sizeof value);
        insert.execute();
    }
    EXPECT_EQ(db.rows("select x from b order by x"), (Rows{rowOf("0"), rowOf("1")}));
}

TEST_P(ValuesTest, Doubles) {
    Connection db = connect();
    for (const double value : {0.0, 1.0, -1.5, 0.1, 1e15, 123456789012345678.0, DBL_MAX, -DBL_MAX, DBL_MIN,
                               DBL_TRUE_MIN, DBL_EPSILON, HUGE_VAL, -HUGE_VAL}) {
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), "%.17g", value);
        EXPECT_EQ(throughColumn(db, engine().realType(), value), text.data());
    }
}

TEST_P(ValuesTest, TheSignOfZero) {
    NEEDS(negativeZero);
    Connection db = connect();
    EXPECT_EQ(throughColumn(db, engine().realType(), -0.0), "-0");
}

// It may be refused; NULL or a number would be another value.
TEST_P(ValuesTest, ANotANumberIsNeverSomethingElse) {
    Connection db = connect();
    db.run(std::string("create table r (x ") + engine().realType() + ")");
    Statement insert(db, "insert into r (x) values (:1)");
    const double nan = std::numeric_limits<double>::quiet_NaN();
    if (qdc_bind_by_pos(insert, 0, kReal, const_cast<double *>(&nan), sizeof nan, nullptr) != 0 ||
        qdc_execute(insert) != 0)
        return;
    EXPECT_THAT(db.rows("select x from r").at(0).at(0), AnyOf("nan", "-nan"));
}

TEST_P(ValuesTest, Texts) {
    Connection db = connect();
    const std::string wide = "\xF0\x9D\x84\x9E\xF0\x9D\x84\x9E"; // four bytes a character
    for (const std::string &text :
         {std::string("a"), std::string("it's \"quoted\" :1 ?1 $1"), std::string("line\r\n\ttab"), std::string("007"),
          std::string("1e5"), std::string("NULL"), std::string("Gr\xC3\xBC\xC3\x9F"), wide}) {
        EXPECT_EQ(throughColumn(db, "varchar(30)", kVarchar, text), text);
        EXPECT_EQ(throughColumn(db, "text", kClob, text), text);
        EXPECT_EQ(throughColumn(db, "char(30)", kChar, text), text);
    }
}

// The described size has room for the widest text and its terminator.
TEST_P(ValuesTest, TheWidestTextFitsTheDescribedSize) {
    Connection db = connect();
    std::string widest;
    for (int i = 0; i < 10; ++i)
        widest += "\xF0\x9F\x98\x80";
    for (const char *type : {"varchar(10)", "char(10)"}) {
        db.run(std::string("create table w (x ") + type + ")");
        db.run("insert into w (x) values (:1)", widest);
        Statement query(db, "select x from w");
        query.execute();
        EXPECT_EQ(query.describe(0).usSize, widest.size() + 1);
        EXPECT_EQ(query.rest(), Rows{rowOf(widest)});
        db.run("drop table w");
    }
}

TEST_P(ValuesTest, PaddingOfCharIsTheEnginesOwn) {
    Connection db = connect();
    EXPECT_EQ(throughColumn(db, "char(10)", "ab"), "ab");
    EXPECT_EQ(throughColumn(db, "char(10)", " ab"), " ab");
    EXPECT_EQ(throughColumn(db, "char(10)", ""), "");
    EXPECT_EQ(throughColumn(db, "varchar(10)", "ab  "), "ab  ");
    EXPECT_EQ(throughColumn(db, "text", "ab  "), "ab  ");
}

TEST_P(ValuesTest, BlanksAtTheEndOfCharStayWhereNoneAreAdded) {
    if (engine().lacks(Feature::paddedChar) == nullptr)
        GTEST_SKIP() << engine().name() << ": blanks at the end of a CHAR are the engine's padding";
    Connection db = connect();
    EXPECT_EQ(throughColumn(db, "char(10)", "ab  "), "ab  ");
}

TEST_P(ValuesTest, Bytes) {
    Connection db = connect();
    for (const std::string &bytes : {allBytes(), std::string(3, '\0'), std::string(), std::string("text")})
        EXPECT_EQ(throughColumn(db, engine().blobType(), kBlob, bytes), bytes);
    EXPECT_EQ(throughColumn(db, engine().blobType(), kVarbinary, allBytes()), allBytes());
}

TEST_P(ValuesTest, FixedBytes) {
    NEEDS(fixedBytes);
    Connection db = connect();
    EXPECT_EQ(throughColumn(db, "binary(256)", kBinary, allBytes()), allBytes());
    EXPECT_EQ(throughColumn(db, "varbinary(300)", kVarbinary, allBytes()), allBytes());
    EXPECT_EQ(throughColumn(db, "varbinary(300)", kVarbinary, std::string(5, '\0')), std::string(5, '\0'));
    EXPECT_EQ(throughColumn(db, "varbinary(300)", kVarbinary, ""), "");
}

TEST_P(ValuesTest, NumericsOfFifteenDigits) {
    Connection db = connect();
    for (const char *number : {"0", "1", "-1", "0.5", "-123456.789", "123456789012345", "99999999999.9999"})
        EXPECT_EQ(throughColumn(db, "numeric", number), number);
    EXPECT_EQ(throughColumn(db, "numeric(15,4)", "12345678901.2345"), "12345678901.2345");
}

TEST_P(ValuesTest, NumericsOfManyDigits) {
    NEEDS(exactNumeric);
    Connection db = connect();
    for (const char *number : {"12345678901234567890123456789.123456789", "1.10"})
        EXPECT_EQ(throughColumn(db, "numeric", number), number);
}

TEST_P(ValuesTest, DatesAndTimes) {
    Connection db = connect();
    EXPECT_EQ(throughColumn(db, "date", "2024-02-29"), "2024-02-29");
    EXPECT_EQ(throughColumn(db, "time", "23:59:59"), "23:59:59");
    EXPECT_EQ(throughColumn(db, "timestamp", "1999-12-31 23:59:59.123456"), "1999-12-31 23:59:59.123456");
}

TEST_P(ValuesTest, Uuids) {
    Connection db = connect();
    const std::string uuid = "00112233-4455-6677-8899-aabbccddeeff";
    EXPECT_EQ(throughColumn(db, "uuid", uuid), uuid);
}

TEST_P(ValuesTest, TextLongerThanItsColumnIsRefusedOrComesWhole) {
    Connection db = connect();
    db.run("create table w (x varchar(3))");
    if (engine().lacks(Feature::enforcedWidths) == nullptr) {
        Statement insert(db, "insert into w (x) values (:1)");
        insert.set(0, "four");
        EXPECT_FAILS(qdc_execute(insert));
        return;
    }
    const std::string longer(50000, 'x');
    db.run("insert into w (x) values (:1)", longer);
    EXPECT_EQ(db.rows("select x from w"), Rows{rowOf(longer)});
}

TEST_P(ValuesTest, WidthsAreEnforced) {
    NEEDS(enforcedWidths);
    Connection db = connect();
    db.run("create table w (x varchar(3))");
    db.commit();
    EXPECT_FALSE(db.refusal("insert into w (x) values ('four')").empty());
    db.rollback();
    EXPECT_EQ(count(db, "w"), 0);
}

// What a query reads ahead fails its execution.
TEST_P(ValuesTest, AMisfitReadAheadFailsTheExecution) {
    NEEDS(misfits);
    Connection db = connect();
    for (const Misfit &misfit : engine().misfits()) {
        SCOPED_TRACE(std::string(misfit.words) + " with " + misfit.literal);
        db.run(std::string("create table m (id integer, x ") + misfit.words + ")");
        db.run(std::string("insert into m (id, x) values (1, ") + misfit.literal + ")");
        Statement query(db, "select x from m");
        EXPECT_FAILS(qdc_execute(query));
        EXPECT_FALSE(db.error().empty());
        EXPECT_EQ(qdc_get_affected_rows(query), 0U);
        // The column's other values are not lost by it.
        EXPECT_EQ(db.rows("select id from m"), Rows{rowOf("1")});
        db.run("drop table m");
    }
}

TEST_P(ValuesTest, ALaterMisfitFailsItsFetch) {
    NEEDS(misfits);
    Connection db = connect();
    for (const Misfit &misfit : engine().misfits()) {
        SCOPED_TRACE(std::string(misfit.words) + " with " + misfit.literal);
        db.run(std::string("create table m (id integer, x ") + misfit.words + ")");
        for (const char *values : {"(1, 1)", "(2, 1)"})
            db.run(std::string("insert into m (id, x) values ") + values);
        db.run(std::string("insert into m (id, x) values (3, ") + misfit.literal + ")");
        {
            Statement query(db, "select id, x from m order by id");
            query.readAhead(1);
            EXPECT_EQ(query.execute(), 1U);
            EXPECT_TRUE(query.fetch());
            EXPECT_TRUE(query.fetch());
            uint32_t rows = 77;
            EXPECT_FAILS(qdc_fetch(query, &rows));
            EXPECT_EQ(rows, 0U);
            EXPECT_FALSE(db.error().empty());
        }
        db.run("drop table m");
    }
}

// What was read of a row that failed must not turn up in another.
TEST_P(ValuesTest, NothingOfAFailedRowIsLeft) {
    NEEDS(misfits);
    Connection db = connect();
    const Misfit misfit = engine().misfits().at(0);
    db.run(std::string("create table m (id integer, big text, x ") + misfit.words + ")");
    for (int id = 1; id <= 4; ++id)
        db.run("insert into m (id, big, x) values (" + std::to_string(id) + ", :1, " +
                   (id == 2 ? misfit.literal : "1") + ")",
               std::string(40000, static_cast<char>('a' + id)));
    Statement query(db, "select id, big, x from m order by id");
    query.readAhead(1);
    query.execute();
    EXPECT_TRUE(query.fetch());
    uint32_t rows = 0;
    EXPECT_FAILS(qdc_fetch(query, &rows));
    // Going on is the caller's risk, but never gives it a wrong row.
    while (qdc_fetch(query, &rows) == 0 && rows == 1) {
        const Row row = query.row();
        EXPECT_EQ(row.at(1), std::string(40000, static_cast<char>('a' + std::stoi(row.at(0).value()))));
    }
}

} // namespace
