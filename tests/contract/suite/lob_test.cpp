// Large objects: locators, reads in chunks, slots.
#include <array>
#include <cstring>
#include <numeric>

#include "support/contract_test.h"

namespace {

using namespace contract;

// Around the locator's size, a chunk, the 16-bit lengths, and far beyond.
constexpr size_t kLengths[] = {0, 1, 43, 44, 45, 999, 1000, 1001, 65534, 65535, 65536, 1 << 20};

std::string bytesOf(size_t length) {
    std::string bytes(length, '\0');
    for (size_t i = 0; i < length; ++i)
        bytes[i] = static_cast<char>(i * 31 + i / 251);
    return bytes;
}

std::string textOf(size_t length) {
    std::string text(length, '\0');
    for (size_t i = 0; i < length; ++i)
        text[i] = static_cast<char>('a' + (i + i / 26) % 26);
    return text;
}

struct Chunk {
    uint32_t status;
    uint32_t bytes;
    uint32_t ended;
};

class LobTest : public ContractTest {
protected:
    void makeLobs(Connection &db) const {
        db.run(std::string("create table lobs (id integer, c text, b ") + engine().blobType() + ")");
    }
    static void insert(Connection &db, int32_t id, const std::optional<std::string> &text,
                       const std::optional<std::string> &bytes) {
        Statement statement(db, "insert into lobs (id, c, b) values (:1, :2, :3)");
        statement.set(0, id);
        statement.setLob(1, kClob, text);
        statement.setLob(2, kBlob, bytes);
        EXPECT_EQ(statement.execute(), 1U);
    }
    // The locator of a value of the current row; size is set to the value's.
    static void *locator(Connection &db, Statement &query, uint32_t column, uint32_t &size) {
        void *data = nullptr;
        uint32_t isNull = 77;
        EXPECT_OK(db, qdc_get_column_by_id(query, column, &data, &size, &isNull));
        EXPECT_EQ(isNull, 0U);
        return data;
    }
    static Chunk readClob(Statement &query, void *locator, uint32_t offset, uint32_t size) {
        std::string buffer(size + 1, '#');
        uint32_t characters = 0;
        Chunk chunk = {};
        chunk.status =
            qdc_read_clob(query, locator, offset, buffer.data(), size, &characters, &chunk.bytes, &chunk.ended);
        EXPECT_EQ(buffer.back(), '#') << "written past the buffer";
        return chunk;
    }
};
CONTRACT_SUITE(LobTest);

TEST_P(LobTest, EveryLengthComesBackWhole) {
    Connection db = connect();
    makeLobs(db);
    for (size_t i = 0; i < std::size(kLengths); ++i)
        insert(db, static_cast<int32_t>(i), textOf(kLengths[i]), bytesOf(kLengths[i]));
    Statement query(db, "select c, b from lobs order by id");
    query.readAhead(100000);
    EXPECT_EQ(query.execute(), std::size(kLengths));
    for (const size_t length : kLengths) {
        SCOPED_TRACE(length);
        ASSERT_TRUE(query.fetch());
        for (const uint32_t column : {0U, 1U}) {
            EXPECT_EQ(query.describe(column).usSize, 44);
            uint32_t size = 77;
            void *data = locator(db, query, column, size);
            EXPECT_EQ(size, length);
            EXPECT_EQ(query.readLob(column == 0 ? kClob : kBlob, data), column == 0 ? textOf(length) : bytesOf(length));
        }
    }
}

TEST_P(LobTest, ChunksOfAnySize) {
    Connection db = connect();
    makeLobs(db);
    insert(db, 1, textOf(2500), bytesOf(2500));
    Statement query(db, "select c, b from lobs");
    query.execute();
    EXPECT_TRUE(query.fetch());
    uint32_t size = 0;
    for (const uint32_t chunk : {1U, 7U, 999U, 1000U, 1250U, 2499U, 2500U, 2501U, 100000U}) {
        SCOPED_TRACE(chunk);
        EXPECT_EQ(query.readLob(kClob, locator(db, query, 0, size), chunk), textOf(2500));
        EXPECT_EQ(query.readLob(kBlob, locator(db, query, 1, size), chunk), bytesOf(2500));
    }
}

TEST_P(LobTest, TheEndIsSaidWithTheLastBytes) {
    Connection db = connect();
    makeLobs(db);
    insert(db, 1, textOf(2000), bytesOf(1));
    Statement query(db, "select c from lobs");
    query.execute();
    EXPECT_TRUE(query.fetch());
    uint32_t size = 0;
    void *data = locator(db, query, 0, size);
    struct Case {
        uint32_t offset, size, bytes, ended;
    };
    for (const Case &c : {Case{0, 1000, 1000, 0}, Case{1000, 1000, 1000, 1}, Case{1999, 1000, 1, 1},
                          Case{1000, 999, 999, 0}, Case{2000, 1000, 0, 1}, Case{2001, 1000, 0, 1},
                          Case{0xFFFFFFFF, 1000, 0, 1}, Case{0, 0, 0, 0}, Case{2000, 0, 0, 1}}) {
        SCOPED_TRACE(std::to_string(c.offset) + "+" + std::to_string(c.size));
        const Chunk chunk = readClob(query, data, c.offset, c.size);
        EXPECT_EQ(chunk.status, 0U);
        EXPECT_EQ(chunk.bytes, c.bytes);
        EXPECT_EQ(chunk.ended, c.ended);
    }
}

// The locator stands for 44 bytes of memory, as described.
TEST_P(LobTest, ALocatorHasItsSize) {
    Connection db = connect();
    makeLobs(db);
    insert(db, 1, "", "x");
    Statement query(db, "select c, b from lobs");
    query.execute();
    EXPECT_TRUE(query.fetch());
    std::array<void *, 2> locators{};
    for (const uint32_t column : {0U, 1U}) {
        uint32_t size = 0;
        locators[column] = locator(db, query, column, size);
        ASSERT_NE(locators[column], nullptr);
        std::array<char, 44> copy{};
        std::memcpy(copy.data(), locators[column], copy.size());
    }
    EXPECT_NE(locators[0], locators[1]);
}

TEST_P(LobTest, CharactersAreCountedOnceAcrossChunks) {
    Connection db = connect();
    makeLobs(db);
    std::string text;
    for (int i = 0; i < 700; ++i)
        text += i % 2 == 0 ? "\xC3\xBC" : "\xF0\x9F\x98\x80";
    insert(db, 1, text, std::nullopt);
    Statement query(db, "select c from lobs");
    query.execute();
    EXPECT_TRUE(query.fetch());
    uint32_t size = 0;
    void *data = locator(db, query, 0, size);
    ASSERT_EQ(size, text.size());
    uint32_t all = 0;
    std::string chunk(1000, '\0');
    for (uint32_t offset = 0, ended = 0; ended == 0;) {
        uint32_t characters = 0;
        uint32_t bytes = 0;
        ASSERT_EQ(qdc_read_clob(query, data, offset, chunk.data(), 1000, &characters, &bytes, &ended), 0U);
        all += characters;
        offset += bytes;
    }
    EXPECT_EQ(all, 700U);
}

TEST_P(LobTest, WrongLocatorsAreRefused) {
    Connection db = connect();
    makeLobs(db);
    insert(db, 1, "text", "bytes");
    insert(db, 2, std::nullopt, std::nullopt);
    Statement query(db, "select c, b, id from lobs order by id");
    query.execute();
    EXPECT_TRUE(query.fetch());
    uint32_t size = 0;
    void *text = locator(db, query, 0, size);
    void *bytes = locator(db, query, 1, size);
    void *number = locator(db, query, 2, size);
    std::array<char, 100> buffer{};
    uint32_t read = 0;
    uint32_t ended = 0;
    std::array<char, 44> mine{};
    for (void *wrong : {bytes, number, static_cast<void *>(mine.data()), static_cast<void *>(nullptr),
                        static_cast<void *>(static_cast<char *>(text) + 1)})
        EXPECT_NE(readClob(query, wrong, 0, 100).status, 0U);
    EXPECT_FAILS(qdc_read_blob(query, text, 0, buffer.data(), 100, &read, &ended));
    EXPECT_FALSE(db.error().empty());
    Statement other(db, "select c from lobs");
    other.execute();
    EXPECT_TRUE(other.fetch());
    EXPECT_NE(readClob(other, text, 0, 100).status, 0U);
    // The next row has no values to read.
    EXPECT_TRUE(query.fetch());
    EXPECT_EQ(query.row(), rowOf(std::nullopt, std::nullopt, "2"));
    EXPECT_NE(readClob(query, text, 0, 100).status, 0U);
    EXPECT_FALSE(query.fetch());
    EXPECT_NE(readClob(query, text, 0, 100).status, 0U);
}

TEST_P(LobTest, AnUnfilledSlotIsNullAndAnEmptyValueIsNot) {
    Connection db = connect();
    makeLobs(db);
    insert(db, 1, std::nullopt, std::nullopt);
    insert(db, 2, "", "");
    EXPECT_EQ(db.rows("select c, b from lobs order by id"), (Rows{rowOf(std::nullopt, std::nullopt), rowOf("", "")}));
    EXPECT_EQ(db.rows("select id from lobs where c is null and b is null"), Rows{rowOf("1")});
}

TEST_P(LobTest, TextEndsAtItsPadding) {
    Connection db = connect();
    makeLobs(db);
    Statement insert(db, "insert into lobs (c) values (:1)");
    std::array<char, 16> slot{};
    const std::string padded("ab\0\0\0\0", 6);
    insert.bind(0, kClob, slot.data(), slot.size());
    uint32_t written = 77;
    EXPECT_OK(db, qdc_write_clob(insert, 0, padded.data(), 6, &written));
    EXPECT_EQ(written, 6U);
    insert.execute();
    EXPECT_EQ(db.rows("select c from lobs"), Rows{rowOf("ab")});
}

TEST_P(LobTest, TextWithMoreBehindItsNulIsRefused) {
    Connection db = connect();
    makeLobs(db);
    Statement insert(db, "insert into lobs (c) values (:1)");
    std::array<char, 16> slot{};
    const std::string text("ab\0c", 4);
    insert.bind(0, kClob, slot.data(), slot.size());
    uint32_t written = 0;
    const bool refused = qdc_write_clob(insert, 0, text.data(), 4, &written) != 0 || qdc_execute(insert) != 0;
    EXPECT_TRUE(refused);
    EXPECT_FALSE(db.error().empty());
    EXPECT_EQ(count(db, "lobs"), 0);
}

TEST_P(LobTest, BytesKeepTheirZeros) {
    Connection db = connect();
    makeLobs(db);
    const std::string bytes("\0a\0\0b\0", 6);
    insert(db, 1, std::nullopt, bytes);
    EXPECT_EQ(db.rows("select b from lobs"), Rows{rowOf(bytes)});
}

TEST_P(LobTest, WritesThatFitNoSlotAreRefused) {
    Connection db = connect();
    makeLobs(db);
    Statement insert(db, "insert into lobs (id, c, b) values (:1, :2, :3)");
    std::array<char, 16> slots[2] = {};
    uint32_t written = 0;
    EXPECT_FAILS(qdc_write_clob(insert, 1, "x", 1, &written)); // not bound yet
    insert.set(0, 1);
    insert.bind(1, kClob, slots[0].data(), 16);
    insert.bind(2, kBlob, slots[1].data(), 16);
    EXPECT_FAILS(qdc_write_clob(insert, 0, "x", 1, &written));
    EXPECT_FAILS(qdc_write_clob(insert, 2, "x", 1, &written));
    EXPECT_FAILS(qdc_write_blob(insert, 1, "x", 1));
    EXPECT_FAILS(qdc_write_clob(insert, 3, "x", 1, &written));
    EXPECT_FAILS(qdc_write_batch_clob(insert, 1, 1, "x", 1, &written));
    EXPECT_FAILS(qdc_write_batch_blob(insert, 2, 1, "x", 1));
    insert.execute();
    EXPECT_EQ(db.rows("select id, c, b from lobs"), Rows{rowOf("1", std::nullopt, std::nullopt)});
}

TEST_P(LobTest, UpdatesAndConditionsTakeLargeObjects) {
    Connection db = connect();
    makeLobs(db);
    insert(db, 1, "before", "b");
    Statement update(db, "update lobs set c = :1, b = :2 where c = :3");
    update.setLob(0, kClob, textOf(70000));
    update.setLob(1, kBlob, bytesOf(70000));
    update.setLob(2, kClob, "before");
    EXPECT_EQ(update.execute(), 1U);
    EXPECT_EQ(db.rows("select c, b from lobs"), Rows{rowOf(textOf(70000), bytesOf(70000))});
}

} // namespace
