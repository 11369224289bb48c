// Sets of parameters: many rows in one execution, all or none.
#include <array>

#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::ContainsRegex;
using testing::HasSubstr;

class ArrayTest : public ContractTest {
protected:
    static constexpr uint32_t kWidth = 8; // of a text element

    // Texts back to back, as the library lays them out.
    static std::string column(const std::vector<std::string> &texts) {
        std::string block;
        for (const std::string &text : texts)
            block += text + std::string(kWidth - text.size(), '\0');
        return block;
    }

    // A statement with its arrays: integers as keys and texts of kWidth bytes.
    struct Insert {
        Insert(Connection &db, std::vector<int32_t> keys, const std::vector<std::string> &texts)
            : statement(db, "insert into t (id, v) values (:1, :2)"), ids(std::move(keys)), block(column(texts)),
              idLengths(ids.size(), 4) {
            for (const std::string &text : texts)
                textLengths.push_back(static_cast<uint16_t>(text.size()));
            statement.rows(static_cast<uint32_t>(ids.size()));
        }
        void bind() {
            statement.bind(0, kInteger, ids.data(), 4, idLengths.data());
            statement.bind(1, kVarchar, block.data(), kWidth, textLengths.data());
        }
        // Lengths may be refused when they are bound or when the statement runs.
        bool refused() {
            return qdc_bind_by_pos(statement, 0, kInteger, ids.data(), 4, idLengths.data()) != 0 ||
                   qdc_bind_by_pos(statement, 1, kVarchar, block.data(), kWidth, textLengths.data()) != 0 ||
                   qdc_execute(statement) != 0;
        }

        Statement statement;
        std::vector<int32_t> ids;
        std::string block;
        std::vector<uint16_t> idLengths;
        std::vector<uint16_t> textLengths;
    };
};
CONTRACT_SUITE(ArrayTest);

TEST_P(ArrayTest, RowsOfASet) {
    Connection db = connect();
    makeTable(db);
    Insert insert(db, {1, 2, 3}, {"one", "", "seven77"});
    insert.bind();
    EXPECT_EQ(insert.statement.execute(), 3U);
    EXPECT_EQ(db.rows("select id, v from t order by id"),
              (Rows{rowOf("1", "one"), rowOf("2", ""), rowOf("3", "seven77")}));
}

TEST_P(ArrayTest, ASetOfOneRow) {
    Connection db = connect();
    makeTable(db);
    Insert insert(db, {5}, {"five"});
    insert.bind();
    EXPECT_EQ(insert.statement.execute(), 1U);
    EXPECT_EQ(db.rows("select id, v from t"), Rows{rowOf("5", "five")});
}

TEST_P(ArrayTest, ASetOfNoRowsAffectsNothing) {
    Connection db = connect();
    makeTable(db, 1);
    Insert insert(db, {}, {});
    insert.bind();
    EXPECT_EQ(insert.statement.execute(), 0U);
    EXPECT_EQ(count(db), 1);
    // Also where rows were affected before.
    Insert again(db, {7}, {"seven"});
    again.bind();
    EXPECT_EQ(again.statement.execute(), 1U);
    again.statement.rows(0);
    EXPECT_EQ(again.statement.execute(), 0U);
    EXPECT_EQ(count(db), 2);
}

TEST_P(ArrayTest, ThousandsOfRows) {
    Connection db = connect();
    makeTable(db);
    std::vector<int32_t> keys(5000);
    std::vector<std::string> texts;
    for (int32_t &key : keys) {
        key = static_cast<int32_t>(&key - keys.data()) + 1;
        texts.push_back(std::to_string(key));
    }
    Insert insert(db, keys, texts);
    insert.bind();
    EXPECT_EQ(insert.statement.execute(), 5000U);
    EXPECT_EQ(count(db), 5000);
    EXPECT_EQ(db.rows("select v from t where id = 4321"), Rows{rowOf("4321")});
}

TEST_P(ArrayTest, TextsEndAtNulOrLength) {
    Connection db = connect();
    makeTable(db);
    Insert insert(db, {1, 2}, {"ab", "cdefg"});
    insert.textLengths = {7, 3};
    insert.bind();
    EXPECT_EQ(insert.statement.execute(), 2U);
    EXPECT_EQ(db.rows("select v from t order by id"), (Rows{rowOf("ab"), rowOf("cde")}));
}

TEST_P(ArrayTest, Length65535IsNull) {
    Connection db = connect();
    makeTable(db);
    db.run("create table n (a integer, b varchar(5))");
    Insert insert(db, {1, 2}, {"a", "b"});
    insert.statement.prepare("insert into n (a, b) values (:1, :2)");
    insert.idLengths = {65535, 4};
    insert.textLengths = {1, 65535};
    insert.bind();
    EXPECT_EQ(insert.statement.execute(), 2U);
    EXPECT_EQ(db.rows("select a, b from n where a is null"), Rows{rowOf(std::nullopt, "a")});
    EXPECT_EQ(db.rows("select a, b from n where b is null"), Rows{rowOf("2", std::nullopt)});
}

// What had no room came as an empty text with its full length: it is an error, and never an empty
// value.
TEST_P(ArrayTest, LengthsThatDoNotFitAreRefused) {
    Connection db = connect();
    makeTable(db);
    struct Case {
        uint16_t idLength;
        uint16_t textLength;
        const char *column;
    };
    for (const Case &c : {Case{4, 8, "column v (:2)"}, Case{4, 9, "column v (:2)"}, Case{4, 65534, "column v (:2)"},
                          Case{5, 1, "column id (:1)"}, Case{8, 1, "column id (:1)"}, Case{0, 1, "column id (:1)"}}) {
        SCOPED_TRACE(std::to_string(c.idLength) + ", " + std::to_string(c.textLength));
        Insert insert(db, {1, 2, 3}, {"a", "b", "c"});
        insert.idLengths[2] = c.idLength;
        insert.textLengths[2] = c.textLength;
        EXPECT_TRUE(insert.refused());
        EXPECT_THAT(db.error(), ContainsRegex("row 2[^0-9]"));
        EXPECT_THAT(db.error(), HasSubstr(c.column));
        EXPECT_EQ(count(db), 0);
    }
}

TEST_P(ArrayTest, BytesMayFillTheirElement) {
    Connection db = connect();
    db.run(std::string("create table b (x ") + engine().blobType() + ")");
    const std::string bytes("ab\0dEF\0\0", 8);
    for (const uint32_t type : {kBinary, kVarbinary}) {
        Statement insert(db, "insert into b (x) values (:1)");
        std::array<uint16_t, 2> lengths{4, 3};
        insert.rows(2);
        insert.bind(0, type, bytes.data(), 4, lengths.data());
        EXPECT_EQ(insert.execute(), 2U);
        EXPECT_EQ(db.rows("select x from b order by x"),
                  (Rows{rowOf("EF" + std::string(1, '\0')), rowOf(bytes.substr(0, 4))}));
        lengths = {4, 5};
        const bool refused =
            qdc_bind_by_pos(insert, 0, type, const_cast<char *>(bytes.data()), 4, lengths.data()) != 0 ||
            qdc_execute(insert) != 0;
        EXPECT_TRUE(refused);
        EXPECT_THAT(db.error(), ContainsRegex("row 1[^0-9]"));
        EXPECT_EQ(db.run("delete from b"), 2U);
    }
}

// A duplicate key in the first, a middle and the last row.
TEST_P(ArrayTest, AllRowsOrNone) {
    Connection db = connect();
    makeTable(db, 1);
    for (const size_t bad : {0U, 1U, 4U}) {
        SCOPED_TRACE(bad);
        Insert insert(db, {11, 12, 13, 14, 15}, {"a", "b", "c", "d", "e"});
        insert.ids[bad] = 1;
        insert.bind();
        EXPECT_FAILS(qdc_execute(insert.statement));
        EXPECT_THAT(db.error(), ContainsRegex("row " + std::to_string(bad) + "($|[^0-9])"));
        EXPECT_EQ(qdc_get_affected_rows(insert.statement), 0U);
        // Not a rollback, which would hide rows that were left.
        qdc_commit(db);
        EXPECT_EQ(count(db), 1);
        db.rollback();
    }
}

TEST_P(ArrayTest, AFailedSetLeavesTheWorkBeforeIt) {
    NEEDS(workAfterError);
    Connection db = connect();
    makeTable(db, 1);
    fill(db, 2, 2);
    Insert insert(db, {11, 1}, {"a", "b"});
    insert.bind();
    EXPECT_FAILS(qdc_execute(insert.statement));
    EXPECT_EQ(count(db), 2);
    insert.ids = {11, 12};
    insert.bind();
    EXPECT_EQ(insert.statement.execute(), 2U);
    db.commit();
    Connection other = connect();
    EXPECT_EQ(db.rows("select id from t order by id"), (Rows{rowOf("1"), rowOf("2"), rowOf("11"), rowOf("12")}));
    EXPECT_EQ(count(other), 4);
}

TEST_P(ArrayTest, WritesThatMatchManyRowsAddUp) {
    Connection db = connect();
    makeTable(db, 10);
    Statement update(db, "update t set v = 'x' where id <= :1");
    std::array<int32_t, 3> limits{2, 5, 0};
    std::array<uint16_t, 3> lengths{4, 4, 4};
    update.rows(3);
    update.bind(0, kInteger, limits.data(), 4, lengths.data());
    EXPECT_EQ(update.execute(), 7U);
}

class LobArrayTest : public ArrayTest {};
CONTRACT_SUITE(LobArrayTest);

// Large objects of a set lie in 16-byte slots, each with the length 16.
TEST_P(LobArrayTest, SlotsRowByRow) {
    Connection db = connect();
    db.run(std::string("create table lobs (id integer, c text, b ") + engine().blobType() + ")");
    Statement insert(db, "insert into lobs (id, c, b) values (:1, :2, :3)");
    std::array<int32_t, 4> ids{0, 1, 2, 3};
    std::array<uint16_t, 4> idLengths{4, 4, 4, 4};
    std::array<uint16_t, 4> slotLengths{16, 16, 16, 16};
    std::array<std::array<char, 16>, 4> clobs{};
    std::array<std::array<char, 16>, 4> blobs{};
    insert.rows(4);
    insert.bind(0, kInteger, ids.data(), 4, idLengths.data());
    insert.bind(1, kClob, clobs.data(), 16, slotLengths.data());
    insert.bind(2, kBlob, blobs.data(), 16, slotLengths.data());
    const std::vector<std::string> values = {"short", "", std::string(70000, 'x')};
    for (uint32_t row = 0; row < values.size(); ++row) {
        uint32_t written = 77;
        const auto length = static_cast<uint32_t>(values[row].size());
        EXPECT_OK(db, qdc_write_batch_clob(insert, 1, row, values[row].data(), length, &written));
        EXPECT_EQ(written, length);
        EXPECT_OK(db, qdc_write_batch_blob(insert, 2, row, values[row].data(), length));
    }
    uint32_t written = 0;
    EXPECT_FAILS(qdc_write_batch_clob(insert, 1, 4, "x", 1, &written));
    EXPECT_FAILS(qdc_write_batch_blob(insert, 2, 4, "x", 1));
    EXPECT_EQ(insert.execute(), 4U);
    // The last row's slots were never filled.
    EXPECT_EQ(db.rows("select c, b from lobs order by id"),
              (Rows{rowOf(values[0], values[0]), rowOf("", ""), rowOf(values[2], values[2]),
                    rowOf(std::nullopt, std::nullopt)}));
}

TEST_P(LobArrayTest, TextWithMoreBehindItsNulIsRefusedWithItsRow) {
    Connection db = connect();
    db.run("create table lobs (c text)");
    Statement insert(db, "insert into lobs (c) values (:1)");
    std::array<uint16_t, 3> lengths{16, 16, 16};
    std::array<std::array<char, 16>, 3> slots{};
    insert.rows(3);
    insert.bind(0, kClob, slots.data(), 16, lengths.data());
    const std::string bad("a\0b", 3);
    uint32_t written = 0;
    EXPECT_OK(db, qdc_write_batch_clob(insert, 0, 0, "ok", 2, &written));
    const bool refused = qdc_write_batch_clob(insert, 0, 2, bad.data(), 3, &written) != 0 || qdc_execute(insert) != 0;
    EXPECT_TRUE(refused);
    EXPECT_THAT(db.error(), ContainsRegex("row 2[^0-9]"));
    EXPECT_EQ(count(db, "lobs"), 0);
}

} // namespace
