#include "support/writers.h"

#include <cstring>

#include "support/database.h"

namespace database {

namespace {

template <class T> T load(const std::string &bytes) {
    T value = {};
    EXPECT_EQ(bytes.size(), sizeof value);
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

// The first row by itself, committed by the call; the others in one transaction.
template <class Plain, class OnSlot> void writeRows(const Table &table, Plain plain, OnSlot onSlot) {
    Transaction transaction;
    for (const Row &row : table.rows) {
        const bool first = &row == &table.rows.front();
        ASSERT_EQ(first ? plain(row) : onSlot(transaction, row), ORMEL_OK);
    }
    ASSERT_EQ(transaction.commit(), ORMEL_OK);
}

// A record has a value in every field, and of a byte string no length.
Cell keptOfRecord(const Column &column, const Cell &cell) {
    const bool ends = column.kind.text();
    return ends ? kept(column, cell).value_or("") : *kept(column, fieldOf(column, cell));
}

std::string recordOf(const Table &table, const Row &row) {
    std::string record;
    for (size_t i = 0; i < row.size(); ++i)
        record += fieldOf(table.columns[i], row[i]);
    return record;
}

void writeRecords(const Table &table) {
    const auto with = [&](const Row &row, auto insert) {
        Records record(recordOf(table, row));
        return insert(record);
    };
    const char *name = table.name.c_str();
    writeRows(
        table,
        [&](const Row &row) {
            return with(row, [&](ORMEL_RECORD_BUFFER *buffer) { return ORMEL_InsertRec(name, buffer); });
        },
        [&](ORMEL_TRANS *slot, const Row &row) {
            return with(row, [&](ORMEL_RECORD_BUFFER *buffer) { return ORMEL_InsertRecForTrans(slot, name, buffer); });
        });
}

// By the setter that is made for the column, where there is one. No setter of bytes takes none of them.
uint32_t set(ORMEL_OBJECT *object, const Column &column, const Cell &cell) {
    const char *name = column.name.c_str();
    if (!cell)
        return ORMEL_ObjectNullSet(object, name);
    if (column.kind.declared == "SMALLINT")
        return ORMEL_ObjectInt16Set(object, name, static_cast<int16_t>(load<int32_t>(*cell)));
    if (column.kind.type == QDC_TYPE_INT32)
        return ORMEL_ObjectInt32Set(object, name, load<int32_t>(*cell));
    if (column.kind.type == QDC_TYPE_BOOL)
        return ORMEL_ObjectInt8Set(object, name, static_cast<int8_t>(load<int32_t>(*cell)));
    if (column.kind.type == QDC_TYPE_INT64)
        return ORMEL_ObjectInt64Set(object, name, load<int64_t>(*cell));
    if (column.kind.type == QDC_TYPE_CLOB)
        return ORMEL_ObjectTextSet(object, name, cell->c_str());
    if (column.kind.text() || cell->empty())
        return ORMEL_ObjectStrSet(object, name, cell->c_str());
    return ORMEL_ObjectBinarySet(object, name, cell->data(), static_cast<int32_t>(cell->size()));
}

// By the one setter that takes any column.
uint32_t setBytes(ORMEL_OBJECT *object, const Column &column, const Cell &cell) {
    if (!cell || cell->empty())
        return set(object, column, cell);
    return ORMEL_ObjectBinarySet(object, column.name.c_str(), cell->data(), static_cast<int32_t>(cell->size()));
}

using Set = uint32_t (*)(ORMEL_OBJECT *object, const Column &column, const Cell &cell);

template <Set set> void writeObjects(const Table &table) {
    const auto with = [&](const Row &row, auto insert) {
        Object object(table.name);
        for (size_t i = 0; i < row.size(); ++i)
            EXPECT_EQ(set(object, table.columns[i], row[i]), ORMEL_OK) << table.columns[i].name;
        return insert(object);
    };
    writeRows(
        table, [&](const Row &row) { return with(row, ORMEL_InsertRecFormObj); },
        [&](ORMEL_TRANS *slot, const Row &row) {
            return with(row, [&](ORMEL_OBJECT *object) { return ORMEL_InsertRecByObjForTrans(slot, object); });
        });
}

// The rows from first on, as many as the batch has objects.
template <class Insert> uint32_t writeBatch(const Table &table, size_t first, size_t rows, Insert insert) {
    const Batch batch(table.name, rows);
    for (size_t row = 0; row < rows; ++row)
        for (size_t i = 0; i < table.columns.size(); ++i)
            EXPECT_EQ(set(batch[row], table.columns[i], table.rows[first + row][i]), ORMEL_OK);
    return insert(batch);
}

// Half of the rows in a batch of their own, committed by the call; the others on a slot.
void writeBatches(const Table &table) {
    const size_t rows = table.rows.size();
    const size_t half = rows / 2;
    if (half > 0) {
        ASSERT_EQ(writeBatch(table, 0, half, ORMEL_PatchInsertRecFormObj), ORMEL_OK);
    }
    Transaction transaction;
    if (rows > half) {
        const auto onSlot = [&](ORMEL_MULTI_OBJECT *batch) {
            return ORMEL_PatchInsertRecFormObjForTrans(transaction, batch);
        };
        ASSERT_EQ(writeBatch(table, half, rows - half, onSlot), ORMEL_OK);
    }
    ASSERT_EQ(transaction.commit(), ORMEL_OK);
}

bool anyTable(const Table &) {
    return true;
}

bool withoutLarge(const Table &table) {
    return !table.hasLarge();
}

} // namespace

const std::vector<Writer> &writers() {
    static const std::vector<Writer> all = {
        {"records", withoutLarge, keptOfRecord, writeRecords},
        {"objects", anyTable, kept, writeObjects<set>},
        {"objects by bytes", anyTable, kept, writeObjects<setBytes>},
        {"batches", anyTable, kept, writeBatches},
    };
    return all;
}

} // namespace database
