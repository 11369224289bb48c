// Large objects of every length: in by object and by batch, back whole and the same, and what memory that takes.
#include <algorithm>
#include <cstring>
#include <functional>
#include <set>

#include "support/database.h"
#include "support/memory.h"

namespace {

using namespace database;
using testing::ElementsAre;

constexpr size_t kMiB = size_t{1} << 20;
constexpr size_t kLargest = 64 * kMiB;

// About what is read at a time, what a locator measures and what a column without a known length is read into.
constexpr size_t kSizes[] = {0, 1, 2, 43, 44, 45, 999, 1000, 1001, 2000, 65534, 65535, 65536, kMiB};

// Characters of two, three and four bytes, each of which some end of a thousand bytes cuts at every place. What is
// left of the size, which holds no whole character, stands at the start.
std::string textOf(size_t size) {
    static const std::string characters = "\xC3\x9F\xE2\x82\xAC\xF0\x9F\x94\xA9";
    std::string text(size % characters.size(), 'x');
    text.reserve(size);
    while (text.size() < size)
        text += characters;
    return text;
}

// Zeros at both ends, in the midst, and over more than a thousand bytes.
std::string bytesOf(size_t size) {
    static const std::string pattern = [] {
        std::string bytes(1009, '\0');
        for (size_t i = 0; i < 4003; ++i)
            bytes += static_cast<char>(i * i % 251);
        return bytes;
    }();
    std::string bytes;
    bytes.reserve(size);
    while (bytes.size() < size)
        bytes.append(pattern, 0, size - bytes.size());
    if (size > 0)
        bytes.back() = '\0';
    return bytes;
}

// --- Writing ---

struct Row {
    std::string text;
    std::string bytes;
};

uint32_t setBytes(ORMEL_OBJECT *object, const char *column, const std::string &value) {
    // The setter of bytes takes none of them.
    return value.empty() ? ORMEL_ObjectStrSet(object, column, "")
                         : ORMEL_ObjectBinarySet(object, column, value.data(), static_cast<int32_t>(value.size()));
}

// A text by both of its setters in turn.
void fill(ORMEL_OBJECT *object, int32_t id, const Row &row) {
    EXPECT_EQ(ORMEL_ObjectInt32Set(object, "id", id), ORMEL_OK);
    EXPECT_EQ(id % 2 == 0 ? ORMEL_ObjectTextSet(object, "c", row.text.c_str()) : setBytes(object, "c", row.text),
              ORMEL_OK);
    EXPECT_EQ(setBytes(object, "b", row.bytes), ORMEL_OK);
}

using Write = void (*)(const std::vector<Row> &rows);

void writeObjects(const std::vector<Row> &rows) {
    for (size_t i = 0; i < rows.size(); ++i) {
        Object object("lobs");
        fill(object, static_cast<int32_t>(i), rows[i]);
        ASSERT_EQ(ORMEL_InsertRecFormObj(object), ORMEL_OK);
    }
}

void writeBatch(const std::vector<Row> &rows) {
    const Batch batch("lobs", rows.size());
    for (size_t i = 0; i < rows.size(); ++i)
        fill(batch[i], static_cast<int32_t>(i), rows[i]);
    ASSERT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_OK);
}

// --- Reading ---

using See = std::function<void(const ORMEL_SELECT_RESULT *result, uint32_t row)>;

template <uint32_t (*select)(ORMEL_OBJECT *, ORMEL_SELECT_RESULT *)> void readResult(const See &see) {
    Object object("lobs");
    Result result;
    ASSERT_EQ(select(object, result), ORMEL_OK);
    for (uint32_t row = 0; row < ORMEL_SelectResultRecNumGet(result); ++row)
        see(result, row);
}

void readCursor(const See &see) {
    Cursor cursor("lobs");
    for (;;) {
        CursorRow row;
        const uint32_t code = ORMEL_FetchSelectRecEx(cursor, row);
        if (code != ORMEL_OK) {
            EXPECT_EQ(code, ORMEL_END_OF_DATA);
            return;
        }
        see(row, 0);
    }
}

struct Reader {
    const char *name;
    void (*read)(const See &see);
};
constexpr Reader kReaders[] = {
    {"select", readResult<ORMEL_SelectRecByObj>},
    {"counted select", readResult<ORMEL_SelectBatchRecByObj>},
    {"cursor", readCursor},
};

// Without printing either of them.
void expectSame(const ORMEL_SELECT_RESULT *result, uint32_t row, const char *column, const std::string &value) {
    SCOPED_TRACE(column + std::string(" of ") + std::to_string(value.size()) + " bytes");
    const auto *read = static_cast<const char *>(ORMEL_ResultBinaryGet(result, row, column));
    ASSERT_NE(read, nullptr);
    ASSERT_EQ(ORMEL_ResultGetFieldLength(result, row, column), value.size());
    EXPECT_TRUE(std::memcmp(read, value.data(), value.size()) == 0);
    if (*column == 'c') {
        EXPECT_EQ(read[value.size()], '\0');
    }
}

void expectRows(const std::vector<Row> &rows) {
    for (const Reader &reader : kReaders) {
        SCOPED_TRACE(reader.name);
        std::set<int32_t> seen;
        reader.read([&](const ORMEL_SELECT_RESULT *result, uint32_t row) {
            int32_t id = -1;
            ORMEL_ResultInt32Get(result, row, "id", &id);
            ASSERT_LT(static_cast<size_t>(id), rows.size());
            EXPECT_TRUE(seen.insert(id).second) << id;
            expectSame(result, row, "c", rows[static_cast<size_t>(id)].text);
            expectSame(result, row, "b", rows[static_cast<size_t>(id)].bytes);
        });
        EXPECT_EQ(seen.size(), rows.size());
    }
}

// --- Tests ---

class LobTest : public DatabaseTest, public testing::WithParamInterface<Write> {
protected:
    LobTest() { make("lobs", "id INTEGER, c TEXT, b BLOB"); }
};

TEST_P(LobTest, ComeBackAsTheyWentIn) {
    std::vector<Row> rows;
    for (const size_t size : kSizes)
        rows.push_back({textOf(size), bytesOf(size)});
    GetParam()(rows);
    for (const char *column : {"c", "b"}) {
        std::vector<std::string> sizes;
        for (const size_t size : kSizes)
            sizes.push_back(std::to_string(size));
        EXPECT_EQ(query(std::string("SELECT length(CAST(") + column + " AS BLOB)) FROM lobs ORDER BY id"), sizes);
    }
    expectRows(rows);
}

TEST_P(LobTest, TheLargestComesBackWhole) {
    const std::vector<Row> rows = {{"before", "x"}, {"", bytesOf(kLargest)}, {"behind", "y"}};
    GetParam()(rows);
    expectRows(rows);
}

TEST_P(LobTest, AnEmptyOneIsNotNullAndOneThatIsLeftOutIs) {
    GetParam()({{"", ""}, {"", ""}});
    const Batch batch("lobs", 2);
    ORMEL_ObjectInt32Set(batch[0], "id", 2);
    ORMEL_ObjectInt32Set(batch[1], "id", 3);
    ASSERT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_OK);
    EXPECT_THAT(query("SELECT quote(c) || quote(b) FROM lobs ORDER BY id"),
                ElementsAre("''X''", "''X''", "NULLNULL", "NULLNULL"));
}

std::string nameOf(const testing::TestParamInfo<Write> &info) {
    return info.param == writeObjects ? "Objects" : "Batch";
}
INSTANTIATE_TEST_SUITE_P(By, LobTest, testing::Values(writeObjects, writeBatch), nameOf);

// --- Memory ---

constexpr size_t kConstant = 8 * kMiB; // what all else takes: the database's pages, above all

class LobMemoryTest : public LobTest {
protected:
    // One row with a value, which is the caller's own and counts, and one without.
    static void expectWritten(std::string Row::*member, std::string (*make)(size_t)) {
        const MemoryGrowth growth;
        std::vector<Row> rows(2);
        rows.front().*member = make(kLargest);
        GetParam()(rows);
        EXPECT_GE(growth.peak(), kLargest);
        EXPECT_LE(growth.peak(), 3 * kLargest + kConstant);
    }

    static void expectRead(const Reader &reader, const char *column) {
        SCOPED_TRACE(reader.name);
        const MemoryGrowth growth;
        size_t longest = 0;
        reader.read([&](const ORMEL_SELECT_RESULT *result, uint32_t row) {
            longest = std::max<size_t>(longest, ORMEL_ResultGetFieldLength(result, row, column));
        });
        EXPECT_EQ(longest, kLargest);
        EXPECT_GE(growth.peak(), kLargest);
        EXPECT_LE(growth.peak(), engine().copiesRead() * kLargest + kConstant);
    }
};

TEST_P(LobMemoryTest, IsThreeTimesTheValueToWriteAndAFewToRead) {
    if (const std::string why = whyUnmeasured(); !why.empty())
        GTEST_SKIP() << why;
    expectWritten(&Row::bytes, bytesOf);
    for (const Reader &reader : kReaders)
        expectRead(reader, "b");
    execute("DELETE FROM lobs");
    expectWritten(&Row::text, textOf);
    for (const Reader &reader : kReaders)
        expectRead(reader, "c");
}

INSTANTIATE_TEST_SUITE_P(By, LobMemoryTest, testing::Values(writeObjects, writeBatch), nameOf);

} // namespace
