// Batches put together by hand, and what the client and the log are told of them.
#ifndef UNIT_DAO_BATCH_TEST_H
#define UNIT_DAO_BATCH_TEST_H

#include <regex>

#include "dao_test.h"
#include "ormeldb/batch.h"

namespace unit {

using Calls = std::vector<std::string>;

// What was asked of the client. Slots of large objects have no numbers here: each column has slots of its own.
inline Calls Asked() {
    static const std::regex slot("slot -?[0-9]+");
    Calls calls;
    for (const std::string &call : Client().Calls()) {
        calls.push_back(std::regex_replace(call, slot, "slots"));
    }
    return calls;
}

inline bool IsLob(uint32_t type) {
    return type == 13 || type == 14;
}

// A batch with columns "F0", "F1" ... of some types. Row r of a column holds "<r><r><r><r>", of one of large objects
// "<r>" and as many letters as tell the row.
class BatchStatementTest : public DaoTest {
protected:
    ORMEL_PARA_BATCH *Make(uint32_t rows, const std::vector<uint32_t> &types) {
        columns_ = std::vector<Arrays>(types.size());
        block_.assign((sizeof(ORMEL_PARA_BATCH) + types.size() * sizeof(ORMEL_PARA_BATCH_ITEM)) / 8, 0);
        ORMEL_PARA_BATCH *batch = Get();
        batch->uiRecNum = rows;
        batch->itemNum = static_cast<int32_t>(types.size());
        for (size_t k = 0; k < types.size(); ++k) {
            Fill(columns_[k], rows);
            columns_[k].name = "F" + std::to_string(k);
            if (k < ORMEL_MAX_ITEMS) {
                batch->name[k] = columns_[k].name.c_str();
            }
            ORMEL_PARA_BATCH_ITEM &item = batch->astItem[k];
            item.type = types[k];
            item.arrlen = rows;
            item.maxlen = IsLob(types[k]) ? 44 : 4;
            item.ind = columns_[k].lengths.data();
            if (IsLob(types[k])) {
                item.lobArray = columns_[k].lobs.data();
                item.lobLen = columns_[k].lobLengths.data();
            } else {
                item.data = columns_[k].data.data();
            }
        }
        return batch;
    }

    ORMEL_PARA_BATCH *Get() { return reinterpret_cast<ORMEL_PARA_BATCH *>(block_.data()); }
    ORMEL_PARA_BATCH_ITEM &Column(int k) { return Get()->astItem[k]; }

    static std::string Insert(const std::string &fields, const std::string &values) {
        return "INSERT INTO T (" + fields + ") values (" + values + ")";
    }

private:
    struct Arrays {
        std::string name, data;
        std::vector<uint16_t> lengths;
        std::vector<std::vector<char>> values; // in blocks of their own, without an end
        std::vector<void *> lobs;
        std::vector<uint32_t> lobLengths;
    };

    static void Fill(Arrays &arrays, uint32_t rows) {
        for (uint32_t r = 0; r < rows; ++r) {
            std::string number = std::to_string(r);
            arrays.data += number + number + number + number;
            arrays.lengths.push_back(4);
            std::string value = number + std::string(r, 'x');
            arrays.values.emplace_back(value.begin(), value.end());
            arrays.lobs.push_back(arrays.values.back().data());
            arrays.lobLengths.push_back(static_cast<uint32_t>(value.size()));
        }
    }

    std::vector<Arrays> columns_;
    std::vector<uint64_t> block_;
};

// How the writing of a value is logged.
inline std::string Written(int row, const std::string &value, int position) {
    std::string size = std::to_string(value.size());
    return "DEBUG dbBatchWriteLob: LOB lobarray " + std::to_string(row) + ":" + value + " len:" + size +
           " strlen:" + size + " pos:" + std::to_string(position) + " ";
}

} // namespace unit

#endif
