// A million rows by cursor, one of which is held at a time.
#include "support/database.h"
#include "support/memory.h"

namespace {

using namespace database;

constexpr int kRows = 1000000;
constexpr size_t kMost = size_t{8} << 20; // a result of as many rows takes hundreds of MiB

class CursorMemoryTest : public DatabaseTest {
protected:
    static void makeRows() {
        make("crowd", "id INTEGER, name VARCHAR(32), born BIGINT");
        execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(kRows) +
                ") INSERT INTO crowd SELECT i, 'person ' || i, i FROM n");
    }

    static void expectAll(ORMEL_TRANS *cursor) {
        int rows = 0;
        uint32_t code = ORMEL_OK;
        for (CursorRow row; (code = ORMEL_FetchSelectRecEx(cursor, row)) == ORMEL_OK; ++rows)
            ORMEL_SelectResultClearForFetch(row);
        EXPECT_EQ(code, ORMEL_END_OF_DATA);
        EXPECT_EQ(rows, kRows);
    }
};

TEST_F(CursorMemoryTest, StaysFlatOverAMillionRows) {
    if (const std::string why = whyUnmeasured(); !why.empty())
        GTEST_SKIP() << why;
    makeRows();
    Object object("crowd");
    for (const bool byObject : {false, true}) {
        const MemoryGrowth growth;
        Cursor cursor = byObject ? Cursor(object) : Cursor("crowd");
        ASSERT_NE(cursor, nullptr);
        expectAll(cursor);
        EXPECT_EQ(cursor.end(), ORMEL_OK);
        EXPECT_LE(growth.peak(), kMost);
    }
    execute("DROP TABLE crowd");
}

} // namespace
