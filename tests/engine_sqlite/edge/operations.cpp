#include "edge/operations.h"

#include <array>
#include <cstring>

#include "support/database.h"

namespace edge {

using database::Batch;
using database::Connection;
using database::Cursor;
using database::CursorRow;
using database::Object;
using database::Result;
using database::Transaction;

namespace {

constexpr uint32_t kItems = 40; // more than a cursor reads ahead
constexpr uint32_t kColumns = 3;
constexpr int32_t kLarge = 20000; // bytes: several pages, and more than is packed among a row's other values

// A text of that size, which is bytes as well.
const char *largeText() {
    static const auto text = [] {
        std::array<char, kLarge + 1> letters = {};
        for (size_t i = 0; i < kLarge; ++i)
            letters[i] = static_cast<char>('a' + i % 26);
        return letters;
    }();
    return text.data();
}

bool connect() {
    const Connection connection;
    return connection != nullptr;
}

bool describe() {
    const Connection connection;
    ORMEL_RES_ATT *described = connection != nullptr ? ORMEL_ResAttCreate(connection, "item", nullptr) : nullptr;
    if (described == nullptr)
        return false;
    EXPECT_EQ(described->iAttNum, 3);
    ORMEL_ResAttFree(described);
    return true;
}

bool catalogue() {
    const Connection connection;
    void *statement = connection != nullptr ? dbSelectAtt1(connection, "ITEM") : nullptr;
    if (statement == nullptr)
        return false;
    uint32_t rows = 0;
    DB_RESULT *row = dbGetFetchResult(statement);
    for (; row != nullptr && row->uiRowCount != 0; row = dbGetFetchResult(statement)) {
        ++rows;
        dbResClear(row);
    }
    const bool ended = row != nullptr;
    dbResClear(row);
    dbFreeStmt(statement);
    if (ended) {
        EXPECT_EQ(rows, kColumns);
    }
    return ended;
}

bool insert() {
#pragma pack(push, 1)
    struct Item {
        int32_t id;
        char name[81];
        int64_t amount;
    };
#pragma pack(pop)
    Item item = {1000, "new", 5};
    ORMEL_RECORD_BUFFER buffer = {sizeof item, 1, sizeof item, 0, reinterpret_cast<uint8_t *>(&item)};
    return ORMEL_InsertRec("item", &buffer) == ORMEL_OK;
}

bool update() {
    Object values("item");
    Object condition("item");
    ORMEL_ObjectInt64Set(values, "amount", -7);
    ORMEL_ObjectInt32Set(condition, "id", 2);
    uint32_t rows = 0;
    if (ORMEL_UpdateRecByObj(values, condition, &rows) != ORMEL_OK)
        return false;
    EXPECT_EQ(rows, 1U);
    return true;
}

bool select() {
    Result result;
    if (ORMEL_SelectRec2("item", nullptr, 0, result) != ORMEL_OK)
        return false;
    EXPECT_EQ(ORMEL_SelectResultRecNumGet(result), kItems);
    int64_t sum = 0;
    for (uint32_t row = 0; row < kItems; ++row) {
        int64_t amount = 0;
        EXPECT_EQ(ORMEL_ResultInt64Get(result, row, "amount", &amount), ORMEL_OK);
        sum += amount;
    }
    EXPECT_EQ(sum, 100 * kItems);
    return true;
}

bool insertLarge() {
    Object sheet("sheet");
    ORMEL_ObjectInt32Set(sheet, "id", 2);
    ORMEL_ObjectTextSet(sheet, "body", largeText());
    ORMEL_ObjectBinarySet(sheet, "picture", largeText(), kLarge);
    return ORMEL_InsertRecFormObj(sheet) == ORMEL_OK;
}

bool selectLarge() {
    Object sheet("sheet");
    Result result;
    if (ORMEL_SelectRecByObj(sheet, result) != ORMEL_OK)
        return false;
    EXPECT_EQ(ORMEL_SelectResultRecNumGet(result), 1U);
    EXPECT_EQ(ORMEL_ResultGetFieldLength(result, 0, "body"), uint32_t{kLarge});
    EXPECT_EQ(ORMEL_ResultGetFieldLength(result, 0, "picture"), 1U + kLarge);
    return true;
}

bool insertBatch() {
    const Batch batch("sheet", 3);
    for (int32_t row = 0; row < 3; ++row) {
        ORMEL_ObjectInt32Set(batch[static_cast<size_t>(row)], "id", 10 + row);
        ORMEL_ObjectTextSet(batch[static_cast<size_t>(row)], "body", largeText());
    }
    return ORMEL_PatchInsertRecFormObj(batch) == ORMEL_OK;
}

// Adds a row, changes one, takes another away.
bool transact() {
    Transaction transaction;
    Object added("item");
    Object changed("item");
    Object which("item");
    Object removed("item");
    ORMEL_ObjectInt32Set(added, "id", 1001);
    ORMEL_ObjectInt64Set(changed, "amount", 99);
    ORMEL_ObjectInt32Set(which, "id", 3);
    ORMEL_ObjectInt32Set(removed, "id", 4);
    uint32_t rows = 0;
    return transaction != nullptr && ORMEL_InsertRecByObjForTrans(transaction, added) == ORMEL_OK &&
           ORMEL_UpdateRecByObjForTrans(transaction, changed, which, &rows) == ORMEL_OK &&
           ORMEL_DeleteRecByObjForTrans(transaction, removed, &rows) == ORMEL_OK && transaction.commit() == ORMEL_OK;
}

bool readByCursor() {
    Cursor cursor("item");
    uint32_t rows = 0;
    uint32_t code = ORMEL_ERR_FAILED;
    while (cursor != nullptr) {
        CursorRow row;
        code = ORMEL_FetchSelectRecEx(cursor, row);
        if (code != ORMEL_OK)
            break;
        ++rows;
    }
    if (code != ORMEL_END_OF_DATA)
        return false;
    EXPECT_EQ(rows, kItems);
    return cursor.end() == ORMEL_OK;
}

} // namespace

const char *const kTables = "CREATE TABLE item (id INTEGER PRIMARY KEY, name VARCHAR(20), amount BIGINT);"
                            "CREATE TABLE sheet (id INTEGER PRIMARY KEY, body TEXT, picture BLOB);";

const char *const kRows = "DELETE FROM item; DELETE FROM sheet;"
                          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 40)"
                          " INSERT INTO item SELECT i, 'item ' || i, 100 FROM n;"
                          "INSERT INTO sheet VALUES (1, replace(hex(zeroblob(10000)), '0', 'x'), zeroblob(20001));";

const Operation kOperations[] = {
    {"connect", connect, true},
    {"describe", describe, true},
    {"catalogue", catalogue, false},
    {"insert", insert, true},
    {"update", update, true},
    {"select", select, true},
    {"insertLarge", insertLarge, true},
    {"selectLarge", selectLarge, true},
    {"insertBatch", insertBatch, true},
    {"transact", transact, true},
    {"readByCursor", readByCursor, false},
};

} // namespace edge
