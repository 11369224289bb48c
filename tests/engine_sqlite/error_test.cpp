#include "sqlite/error.h"

#include <gmock/gmock.h>

#include "sqlite/handles.h"
#include "support.h"

namespace ormel::client::sqlite {

TEST(EngineError, carriesExtendedCodePlaceAndWords) {
    sqlite3 *raw = nullptr;
    ASSERT_EQ(sqlite3_open_v2(":memory:", &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_EXRESCODE, nullptr), SQLITE_OK);
    const OwnedDatabase database(raw);
    run(raw, "CREATE TABLE t (a PRIMARY KEY) WITHOUT ROWID; INSERT INTO t VALUES (1)");
    const Error error = errorOf([&] { run(raw, "INSERT INTO t VALUES (1)"); });
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_CONSTRAINT_PRIMARYKEY));
    EXPECT_EQ(error.message, "UNIQUE constraint failed: t.a");
    EXPECT_EQ(lastError(raw, "row 3").message, "row 3: UNIQUE constraint failed: t.a");
}

TEST(EngineError, refusesInItsOwnWords) {
    const Error error = errorOf([] { refuse(SQLITE_MISMATCH, "words"); });
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_MISMATCH));
    EXPECT_EQ(error.message, "words");
}

} // namespace ormel::client::sqlite
