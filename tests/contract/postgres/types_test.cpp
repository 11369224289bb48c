// Types that only servers have.
#include "postgres/postgres_engine.h"
#include "support/contract_test.h"

namespace {

using namespace contract;

class ServerTypesTest : public ContractTest {};
ENGINE_SUITE(ServerTypesTest);

// Each value goes in as text, which the server reads, and comes back as the server writes it.
TEST_P(ServerTypesTest, ValuesComeBackInTheServersForm) {
    struct Case {
        const char *type;
        const char *written;
        uint32_t id;
        uint32_t size;
        const char *read;
    };
    const Case cases[] = {
        {"mood", "happy", kText, 64, "happy"},
        {"inet", "192.168.0.1/24", kText, 64, "192.168.0.1/24"},
        {"inet", "2001:0db8::1", kText, 64, "2001:db8::1"},
        {"cidr", "10.0.0.0/8", kText, 64, "10.0.0.0/8"},
        {"macaddr", "08-00-2B-01-02-03", kText, 64, "08:00:2b:01:02:03"},
        {"interval", "26 hours 3 minutes 4.5 seconds", kText, 128, "26:03:04.5"},
        {"interval", "P1Y2M3DT4H", kText, 128, "1 year 2 mons 3 days 04:00:00"},
        {"integer[]", "{1, 2,NULL}", kClob, 44, "{1,2,NULL}"},
        {"text[]", "{\"a b\",c}", kClob, 44, "{\"a b\",c}"},
        {"mood[]", "{sad,happy}", kClob, 44, "{sad,happy}"},
        {"jsonb", "{\"b\": 1, \"a\":[1,2]}", kClob, 44, "{\"a\": [1, 2], \"b\": 1}"},
        {"json", "{\"b\":  1}", kClob, 44, "{\"b\":  1}"},
        {"oid", "4294967295", kBigint, 8, "4294967295"},
        {"date", "29 February 2024", kText, 36, "2024-02-29"},
        {"time(3)", "23:59:59.1234", kText, 36, "23:59:59.123"},
        {"timetz", "10:00+02", kText, 36, "10:00:00+02"},
        {"timestamp", "2024-02-29T12:34:56.789", kText, 36, "2024-02-29 12:34:56.789"},
        {"timestamptz", "2024-02-29 12:00:00+02", kText, 36, "2024-02-29 10:00:00+00"},
        {"uuid", "A0EEBC99-9C0B-4EF8-BB6D-6BB9BD380A11", kText, 37, "a0eebc99-9c0b-4ef8-bb6d-6bb9bd380a11"},
        {"bit(5)", "10110", kText, 6, "10110"},
        {"bit varying(5)", "101", kText, 6, "101"},
        {"smallint", "-32768", kInteger, 4, "-32768"},
        {"boolean", "yes", kBoolean, 4, "1"},
        {"real", "0.5", kReal, 8, "0.5"},
        {"numeric", "12345678901234567890.0987654321000", kText, 512, "12345678901234567890.0987654321000"},
        {"numeric(4,2)", "1.5", kText, 8, "1.50"},
        {"name", "a name", kText, 64, "a name"},
        {"int4range", "[1,5]", kClob, 44, "[1,6)"},
        {"positive", "7", kInteger, 4, "7"},
        {"bytea", "\\x00ff", kBlob, 44, nullptr},
    };
    Connection db = connect();
    db.run("create type mood as enum ('sad', 'happy')");
    db.run("create domain positive as integer check (value > 0)");
    db.run("set timezone = 'UTC'");
    int tables = 0;
    for (const Case &each : cases) {
        SCOPED_TRACE(each.type);
        const std::string table = "x" + std::to_string(++tables);
        db.run("create table " + table + " (a " + each.type + ")");
        EXPECT_EQ(db.run("insert into " + table + " (a) values (:1)", each.written), 1U);
        EXPECT_EQ(db.run("insert into " + table + " (a) values (:1)", std::nullopt), 1U);
        Statement query(db, "select a from " + table + " order by a is null");
        query.execute();
        EXPECT_EQ(query.describe(0).usType, each.id);
        EXPECT_EQ(query.describe(0).usSize, each.size);
        const Value expected = each.read != nullptr ? Value(each.read) : std::string("\0\xFF", 2);
        EXPECT_EQ(query.rest(), (Rows{{expected}, {std::nullopt}}));
    }
}

// But for one: before there were zones, every place had a time of its own, to the second, and with a year before Christ
// that takes 38 bytes.
TEST_P(ServerTypesTest, TheLongestTimesFitTheirSizes) {
    const std::pair<const char *, const char *> longest[] = {
        {"date", "5874897-12-31"},
        {"date", "4713-01-01 BC"},
        {"time", "23:59:59.999999"},
        {"timetz", "23:59:59.999999+15:59:59"},
        {"timestamp", "294276-12-31 23:59:59.999999"},
        {"timestamp", "0044-03-15 12:34:56.789012 BC"},
        {"timestamptz", "294276-12-31 23:59:59.999999+01"},
        {"timestamptz", "0044-03-15 12:34:56+00:53:28 BC"},
    };
    Connection db = connect();
    db.run("set timezone = 'Europe/Berlin'");
    for (const auto &[type, value] : longest) {
        SCOPED_TRACE(value);
        Statement query(db, std::string("select '") + value + "'::" + type);
        query.execute();
        EXPECT_LT(std::string(value).size(), query.describe(0).usSize);
        EXPECT_EQ(query.rest(), Rows{rowOf(value)});
    }
}

TEST_P(ServerTypesTest, WhatIsNoneOfItsTypeIsRefused) {
    const std::pair<const char *, const char *> wrong[] = {
        {"mood", "angry"},
        {"inet", "1.2.3"},
        {"jsonb", "{"},
        {"integer[]", "{1"},
        {"timestamptz", "2024-02-30"},
        {"uuid", "no uuid"},
        {"oid", "-1x"},
        {"bit(5)", "1012"},
        {"numeric(4,2)", "1000"},
    };
    Connection db = connect();
    db.run("create type mood as enum ('sad', 'happy')");
    db.commit();
    for (const auto &[type, value] : wrong) {
        SCOPED_TRACE(type);
        db.run("drop table if exists x");
        db.run(std::string("create table x (a ") + type + ")");
        db.commit();
        EXPECT_THROW(db.run("insert into x (a) values (:1)", value), ClientError);
        EXPECT_THAT(db.error(), testing::StartsWith("22"));
        db.rollback();
    }
}

TEST_P(ServerTypesTest, ASliceNeedsABlankBehindItsColon) {
    Connection db = connect();
    EXPECT_EQ(db.rows("select (array[1, 2, 3])[1: 2]"), Rows{rowOf("{1,2}")});
    EXPECT_THAT(db.refusal("select (array[1, 2, 3])[1:2]"), testing::StartsWith("42601: "));
}

TEST_P(ServerTypesTest, QuotedNamesKeepTheirCase) {
    Connection db = connect();
    db.run("create table \"Mixed Table\" (\"MixedName\" integer, plain integer, \"with space\" text, \"select\" inet)");
    db.run("insert into \"Mixed Table\" (\"MixedName\", plain, \"with space\", \"select\") values (:1, :2, :3, :4)", 1,
           2, "three", "10.0.0.4");
    Statement query(db, "select * from \"Mixed Table\"");
    query.execute();
    const char *names[] = {"MixedName", "PLAIN", "WITH SPACE", "SELECT"};
    for (uint32_t i = 0; i < 4; ++i)
        EXPECT_STREQ(query.describe(i).pcName, names[i]);
    EXPECT_EQ(query.describe("MixedName").usType, kInteger);
    EXPECT_EQ(query.rest(), Rows{rowOf("1", "2", "three", "10.0.0.4")});
    EXPECT_THAT(db.refusal("select MixedName from \"Mixed Table\""), testing::StartsWith("42703: "));
}

// A kept connection knows statements by their texts, and the table behind one has become another.
TEST_P(ServerTypesTest, AColumnOfAnotherTypeIsReadAndWrittenAsWhatItIsNow) {
    Connection keeper = connect();
    const std::pair<const char *, const char *> types[] = {
        {"integer", "1"}, {"varchar(20)", "abcd"}, {"varchar(40)", "abcd"},  {"double precision", "0.5"},
        {"bigint", "5"},  {"text", "abcd"},        {"numeric(4,1)", "12.5"}, {"integer", "2"}};
    for (const auto &[type, value] : types) {
        SCOPED_TRACE(type);
        keeper.run("drop table if exists x");
        keeper.run(std::string("create table x (a ") + type + ")");
        keeper.commit();
        Connection db = connect();
        EXPECT_EQ(db.run("insert into x (a) values (:1)", value), 1U);
        db.commit();
        EXPECT_EQ(db.rows("select a from x"), Rows{rowOf(value)});
    }
}

// What the server keeps prepared does not grow, however statements and transactions follow each other.
TEST_P(ServerTypesTest, ManyStatementsAreNotAllKept) {
    Connection db = connect();
    makeTable(db, 1);
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(db.run("update t set v = 'x' where id = " + std::to_string(i)), i == 1 ? 1U : 0U);
        if (i % 3 == 0)
            db.commit();
        else if (i % 3 == 1)
            db.rollback();
    }
    EXPECT_LE(std::stoi(db.rows("select count(*) from pg_prepared_statements").at(0).at(0).value()), 66);
}

} // namespace
