// A table to work with, and the callers' structures that go with it.
#ifndef UNIT_SAMPLE_H
#define UNIT_SAMPLE_H

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "client_double.h"
#include "ormeldb/dao.h"

namespace unit {

// ID, an integer of 4 bytes; NAME, text of 20 and its NUL; BALANCE, an integer of 8 bytes. They lie at 0, 4 and 25.
inline std::vector<Column> PersonColumns() {
    return {{"ID", 1, 4, 1}, {"NAME", 9, 21, 0}, {"BALANCE", 2, 8, 1}};
}

#pragma pack(push, 1)
struct Person {
    int32_t id = 0;
    char name[21] = {};
    int64_t balance = 0;
};
#pragma pack(pop)
static_assert(sizeof(Person) == 33);

inline Person MakePerson(int32_t id, const char *name, int64_t balance) {
    Person person;
    person.id = id;
    std::strncpy(person.name, name, sizeof(person.name) - 1);
    person.balance = balance;
    return person;
}

inline std::vector<Cell> PersonRow(int32_t id, const std::string &name, int64_t balance) {
    return {Int32(id), Text(name), Int64(balance)};
}

inline ORMEL_RECORD_BUFFER BufferOf(Person &person) {
    return {sizeof(Person), 1, sizeof(Person), 0, reinterpret_cast<uint8_t *>(&person)};
}

// A table of so many integer columns, "C0", "C1" ...
inline std::vector<Column> Integers(size_t count) {
    std::vector<Column> columns;
    for (size_t i = 0; i < count; ++i) {
        columns.push_back({"C" + std::to_string(i), 1, 4, 1});
    }
    return columns;
}

struct FreeDeleter {
    void operator()(void *block) const { std::free(block); }
};
using Descriptor = std::unique_ptr<ORMEL_RES_ATT, FreeDeleter>;

// The descriptor that such columns lead to.
inline Descriptor Describe(const std::string &table, const std::vector<Column> &columns) {
    size_t size = sizeof(ORMEL_RES_ATT) + columns.size() * sizeof(ORMEL_RES_ATT_FIELD);
    Descriptor descriptor(static_cast<ORMEL_RES_ATT *>(std::calloc(1, size)));
    descriptor->iAttNum = static_cast<int32_t>(columns.size());
    std::strncpy(descriptor->acTableName, table.c_str(), ORMEL_NAME_SIZE - 1);
    int32_t offset = 0;
    for (size_t i = 0; i < columns.size(); ++i) {
        ORMEL_RES_ATT_FIELD &field = descriptor->astField[i];
        std::strncpy(field.attname, columns[i].name.c_str(), ORMEL_NAME_SIZE - 1);
        field.atttypid = columns[i].type;
        field.attlen = field.len = columns[i].size;
        field.offset = offset;
        field.format = columns[i].format;
        field.attcolid = static_cast<int32_t>(i);
        offset += columns[i].size;
    }
    return descriptor;
}

// The bytes of a value.
template <class T> std::string Bytes(const T &value) {
    return std::string(reinterpret_cast<const char *>(&value), sizeof(value));
}

// A condition list, as callers of fixed records make it.
class Conditions {
public:
    Conditions() { Grow(); }

    Conditions &Add(uint8_t field, uint32_t op, const std::string &value) {
        uint16_t index = Get()->usCondNum;
        items_ = index + 1u;
        Grow();
        Get()->usCondNum = static_cast<uint16_t>(items_);
        ORMEL_COND_ITEM &item = Get()->astCond[index];
        item.ucFieldId = field;
        item.uiOp = op;
        std::memcpy(item.aucValue, value.data(), std::min(value.size(), sizeof(item.aucValue)));
        return *this;
    }

    ORMEL_COND *Get() { return reinterpret_cast<ORMEL_COND *>(bytes_.data()); }

private:
    void Grow() { bytes_.resize(sizeof(ORMEL_COND) + items_ * sizeof(ORMEL_COND_ITEM)); }

    size_t items_ = 0;
    std::vector<uint8_t> bytes_;
};

// A field selection list.
class Selection {
public:
    explicit Selection(const std::vector<uint8_t> &fields) : bytes_(sizeof(ORMEL_FIELD_SELECT)) {
        bytes_.insert(bytes_.end(), fields.begin(), fields.end());
        Get()->ucFieldNum = static_cast<uint8_t>(fields.size());
    }
    ORMEL_FIELD_SELECT *Get() { return reinterpret_cast<ORMEL_FIELD_SELECT *>(bytes_.data()); }

private:
    std::vector<uint8_t> bytes_;
};

struct Value {
    uint16_t type;
    std::optional<std::string> bytes; // none: SQL NULL
};

struct ResultDeleter {
    void operator()(DB_RESULT *result) const { dbResClear(result); }
};
using Result = std::unique_ptr<DB_RESULT, ResultDeleter>;

// A result put together from blocks of malloc.
inline Result MakeResult(const std::vector<std::vector<Value>> &rows) {
    auto *result = static_cast<DB_RESULT *>(std::calloc(1, sizeof(DB_RESULT)));
    result->uiRowCount = static_cast<uint32_t>(rows.size());
    result->uiFieldCount = rows.empty() ? 0 : static_cast<uint32_t>(rows[0].size());
    result->ppRows = static_cast<DB_FIELD **>(std::calloc(rows.size() + 1, sizeof(DB_FIELD *)));
    for (size_t r = 0; r < rows.size(); ++r) {
        result->ppRows[r] = static_cast<DB_FIELD *>(std::calloc(rows[r].size() + 1, sizeof(DB_FIELD)));
        for (size_t f = 0; f < rows[r].size(); ++f) {
            DB_FIELD &cell = result->ppRows[r][f];
            cell.usType = rows[r][f].type;
            cell.uiColumnId = static_cast<uint32_t>(f);
            if (const auto &bytes = rows[r][f].bytes) {
                cell.uiLength = static_cast<uint32_t>(bytes->size());
                cell.pValue = std::malloc(bytes->size());
                std::memcpy(cell.pValue, bytes->data(), bytes->size());
            }
        }
    }
    return Result(result);
}

} // namespace unit

#endif
