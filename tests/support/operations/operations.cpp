#include "operations/operations.h"

#include <array>
#include <cstring>
#include <thread>

#include "support/database.h"

namespace operations {

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

#pragma pack(push, 1)
struct Item {
    int32_t id;
    char name[81];
    int64_t amount;
};
#pragma pack(pop)

// An item's record, and the buffer around it.
struct ItemRecord {
    Item item = {};
    ORMEL_RECORD_BUFFER buffer = {sizeof item, 1, sizeof item, 0, reinterpret_cast<uint8_t *>(&item)};
};

// A condition on the id of items.
class IdCondition {
public:
    IdCondition(uint32_t op, int32_t id) {
        get()->usCondNum = 1;
        get()->astCond[0].uiOp = op;
        std::memcpy(get()->astCond[0].aucValue, &id, sizeof id);
    }
    ORMEL_COND *get() { return reinterpret_cast<ORMEL_COND *>(bytes_); }

private:
    alignas(ORMEL_COND) uint8_t bytes_[sizeof(ORMEL_COND) + sizeof(ORMEL_COND_ITEM)] = {};
};

uint32_t connect() {
    const Connection connection;
    return connection != nullptr ? ORMEL_OK : kNothing;
}

uint32_t describe() {
    const Connection connection;
    ORMEL_RES_ATT *described = connection != nullptr ? ORMEL_ResAttCreate(connection, "item", nullptr) : nullptr;
    if (described == nullptr)
        return kNothing;
    EXPECT_EQ(described->iAttNum, 3);
    ORMEL_ResAttFree(described);
    return ORMEL_OK;
}

uint32_t catalogue() {
    const Connection connection;
    void *statement = connection != nullptr ? dbSelectAtt1(connection, "ITEM") : nullptr;
    if (statement == nullptr)
        return kNothing;
    uint32_t rows = 0;
    DB_RESULT *row = dbGetFetchResult(statement);
    for (; row != nullptr && row->uiRowCount != 0; row = dbGetFetchResult(statement)) {
        ++rows;
        dbResClear(row);
    }
    const bool ended = row != nullptr;
    dbResClear(row);
    dbFreeStmt(statement);
    if (!ended)
        return kNothing;
    EXPECT_EQ(rows, kColumns);
    return ORMEL_OK;
}

uint32_t insert() {
    ItemRecord added = {{1000, "new", 5}};
    return ORMEL_InsertRec("item", &added.buffer);
}

// The code of a call that counts rows: where it succeeds, it counts so many.
uint32_t counted(uint32_t code, uint32_t rows, uint32_t expected) {
    if (code == ORMEL_OK) {
        EXPECT_EQ(rows, expected);
    }
    return code;
}

uint32_t update() {
    Object values("item");
    Object condition("item");
    ORMEL_ObjectInt64Set(values, "amount", -7);
    ORMEL_ObjectInt32Set(condition, "id", 2);
    uint32_t rows = 0;
    const uint32_t code = ORMEL_UpdateRecByObj(values, condition, &rows);
    return counted(code, rows, 1);
}

uint32_t remove() {
    IdCondition some(ORMEL_OP_LESS_EQUAL, 3);
    uint32_t rows = 0;
    const uint32_t code = ORMEL_DeleteRec("item", some.get(), &rows);
    return counted(code, rows, 3);
}

uint32_t count() {
    IdCondition some(ORMEL_OP_LESS_EQUAL, 30);
    uint32_t rows = 0;
    const uint32_t code = ORMEL_LocalExistRecord("item", some.get(), &rows);
    return counted(code, rows, 30);
}

uint32_t select() {
    Result result;
    if (const uint32_t code = ORMEL_SelectRec2("item", nullptr, 0, result); code != ORMEL_OK)
        return code;
    EXPECT_EQ(ORMEL_SelectResultRecNumGet(result), kItems);
    int64_t sum = 0;
    for (uint32_t row = 0; row < kItems; ++row) {
        int64_t amount = 0;
        EXPECT_EQ(ORMEL_ResultInt64Get(result, row, "amount", &amount), ORMEL_OK);
        sum += amount;
    }
    EXPECT_EQ(sum, 100 * kItems);
    return ORMEL_OK;
}

uint32_t selectRecord() {
    ItemRecord read;
    IdCondition one(ORMEL_OP_EQUAL, 7);
    if (const uint32_t code = ORMEL_SelectRec("item", one.get(), 0, &read.buffer); code != ORMEL_OK)
        return code;
    EXPECT_EQ(read.buffer.usRecNum, 1);
    EXPECT_STREQ(read.item.name, "item 7");
    return ORMEL_OK;
}

uint32_t insertLarge() {
    Object sheet("sheet");
    ORMEL_ObjectInt32Set(sheet, "id", 2);
    ORMEL_ObjectTextSet(sheet, "body", largeText());
    ORMEL_ObjectBinarySet(sheet, "picture", largeText(), kLarge);
    return ORMEL_InsertRecFormObj(sheet);
}

uint32_t selectLarge() {
    Object sheet("sheet");
    Result result;
    if (const uint32_t code = ORMEL_SelectRecByObj(sheet, result); code != ORMEL_OK)
        return code;
    EXPECT_EQ(ORMEL_SelectResultRecNumGet(result), 1U);
    EXPECT_EQ(ORMEL_ResultGetFieldLength(result, 0, "body"), uint32_t{kLarge});
    EXPECT_EQ(ORMEL_ResultGetFieldLength(result, 0, "picture"), 1U + kLarge);
    return ORMEL_OK;
}

uint32_t insertBatch() {
    const Batch batch("sheet", 3);
    for (int32_t row = 0; row < 3; ++row) {
        ORMEL_ObjectInt32Set(batch[static_cast<size_t>(row)], "id", 10 + row);
        ORMEL_ObjectTextSet(batch[static_cast<size_t>(row)], "body", largeText());
    }
    return ORMEL_PatchInsertRecFormObj(batch);
}

// Adds an item, changes one, takes another away.
uint32_t changeThree(Transaction &transaction) {
    Object added("item");
    Object changed("item");
    Object which("item");
    Object removed("item");
    ORMEL_ObjectInt32Set(added, "id", 1001);
    ORMEL_ObjectInt64Set(changed, "amount", 99);
    ORMEL_ObjectInt32Set(which, "id", 3);
    ORMEL_ObjectInt32Set(removed, "id", 4);
    uint32_t rows = 0;
    uint32_t code = ORMEL_InsertRecByObjForTrans(transaction, added);
    if (code == ORMEL_OK)
        code = ORMEL_UpdateRecByObjForTrans(transaction, changed, which, &rows);
    if (code == ORMEL_OK)
        code = ORMEL_DeleteRecByObjForTrans(transaction, removed, &rows);
    return code;
}

template <uint32_t (Transaction::*end)()> uint32_t transact() {
    Transaction transaction;
    if (transaction == nullptr)
        return kNothing;
    const uint32_t code = changeThree(transaction);
    return code == ORMEL_OK ? (transaction.*end)() : code;
}

uint32_t readByCursor() {
    Cursor cursor("item");
    if (cursor == nullptr)
        return kNothing;
    uint32_t rows = 0;
    for (;; ++rows) {
        CursorRow row;
        const uint32_t code = ORMEL_FetchSelectRecEx(cursor, row);
        if (code == ORMEL_END_OF_DATA)
            break;
        if (code != ORMEL_OK)
            return code;
    }
    EXPECT_EQ(rows, kItems);
    return cursor.end();
}

// The client's status of a commit, which the plain forms hand on; the end of a slot has the same for its own.
constexpr uint32_t kNoCommit = ORMEL_ERR_FAILED;

} // namespace

const Operation kOperations[] = {
    {"connect", connect, false, {kNothing}, true},
    {"describe", describe, false, {kNothing}, true},
    {"catalogue", catalogue, false, {kNothing}, false},
    {"insert", insert, true, {ORMEL_ERR_TABLE, ORMEL_ERR_NO_RESULT, kNoCommit}, true},
    {"update", update, true, {ORMEL_ERR_OBJ_TABLE, ORMEL_ERR_NO_RESULT, kNoCommit}, true},
    {"remove", remove, true, {ORMEL_ERR_TABLE, ORMEL_ERR_NO_RESULT, kNoCommit}, true},
    {"count", count, false, {ORMEL_ERR_NO_RESULT}, true},
    {"select", select, false, {ORMEL_ERR_TABLE, ORMEL_ERR_NO_RESULT}, true},
    {"selectRecord", selectRecord, false, {ORMEL_ERR_TABLE, ORMEL_ERR_NO_RESULT}, true},
    {"insertLarge", insertLarge, true, {ORMEL_ERR_OBJ_TABLE, ORMEL_ERR_NO_RESULT, kNoCommit}, true},
    {"selectLarge", selectLarge, false, {ORMEL_ERR_TABLE}, true},
    {"insertBatch", insertBatch, true, {ORMEL_ERR_OBJ_TABLE, ORMEL_ERR_NO_RESULT, kNoCommit}, true},
    {"transact",
     transact<&Transaction::commit>,
     true,
     {kNothing, ORMEL_ERR_OBJ_TABLE, ORMEL_ERR_NO_RESULT, kNoCommit},
     true},
    {"takeBack",
     transact<&Transaction::rollback>,
     false,
     {kNothing, ORMEL_ERR_OBJ_TABLE, ORMEL_ERR_NO_RESULT, ORMEL_ERR_FAILED},
     true},
    {"readByCursor", readByCursor, false, {kNothing, ORMEL_ERR_TABLE, ORMEL_ERR_FAILED}, false},
};

Outcome attempt(const std::function<uint32_t()> &run) {
    Outcome outcome;
    std::thread([&] {
        outcome.code = run();
        ORMEL_ERROR error = {};
        if (ORMEL_LastError(&error) == ORMEL_OK)
            outcome.error = error.acText;
    }).join();
    return outcome;
}

} // namespace operations
