#include "support/batches.h"

namespace database {

namespace {

// A refused row may have failed the transaction, and the error of its commit would hide that of the row.
bool canCommit(uint32_t inserted) {
    return inserted == ORMEL_OK || engine().lacks(Feature::workAfterError) == nullptr;
}

uint32_t onConnection(ORMEL_MULTI_OBJECT *multi) {
    const Connection connection;
    const uint32_t code = ORMEL_PatchInsertRecForConn2(connection, multi);
    if (canCommit(code)) {
        EXPECT_EQ(dbCommitTrans(connection), ORMEL_OK);
    }
    return code;
}

uint32_t onSlot(ORMEL_MULTI_OBJECT *multi) {
    Transaction transaction;
    const uint32_t code = ORMEL_PatchInsertRecFormObjForTrans(transaction, multi);
    if (canCommit(code)) {
        EXPECT_EQ(transaction.commit(), ORMEL_OK);
    }
    return code;
}

uint32_t setBytes(ORMEL_OBJECT *object, const char *column, const std::string &bytes) {
    return ORMEL_ObjectBinarySet(object, column, bytes.data(), static_cast<int32_t>(bytes.size()));
}

} // namespace

std::string partColumns() {
    return "id INTEGER PRIMARY KEY, name VARCHAR(10), price DOUBLE CONSTRAINT not_negative CHECK (price >= 0), "
           "code BINARY(4), note VARCHAR(10) NOT NULL, remark TEXT, drawing BLOB";
}

void fill(ORMEL_OBJECT *object, const Part &part) {
    EXPECT_EQ(ORMEL_ObjectInt32Set(object, "id", part.id), ORMEL_OK);
    EXPECT_EQ(ORMEL_ObjectStrSet(object, "name", part.name.c_str()), ORMEL_OK);
    EXPECT_EQ(ORMEL_ObjectBinarySet(object, "price", &part.price, sizeof part.price), ORMEL_OK);
    EXPECT_EQ(setBytes(object, "code", part.code), ORMEL_OK);
    EXPECT_EQ(part.note ? ORMEL_ObjectStrSet(object, "note", part.note->c_str()) : ORMEL_ObjectNullSet(object, "note"),
              ORMEL_OK);
    EXPECT_EQ(setBytes(object, "remark", part.remark), ORMEL_OK);
    EXPECT_EQ(setBytes(object, "drawing", part.drawing), ORMEL_OK);
}

void fill(const Batch &batch, const std::vector<Part> &parts) {
    for (size_t row = 0; row < parts.size(); ++row)
        fill(batch[row], parts[row]);
}

std::vector<Part> partsFrom(int32_t first, size_t count) {
    std::vector<Part> parts(count);
    for (Part &part : parts)
        part.id = first++;
    return parts;
}

const std::vector<Variant> &variants() {
    static const std::vector<Variant> all = {
        {"plain", ORMEL_PatchInsertRecFormObj},
        {"connection", onConnection},
        {"slot", onSlot},
    };
    return all;
}

} // namespace database
