// What is written comes back the same, to the byte, whichever way it is written and read. ORMEL_SEED=n repeats a run.
#include <algorithm>
#include <numeric>

#include "seed.h"
#include "support/database.h"
#include "support/readers.h"
#include "support/writers.h"

namespace {

using namespace database;

class PropertyTest : public DatabaseTest {};

// The whole table, or the key and some other columns in any order; at once or in pages.
Request randomRequest(Random &random, const Table &table, bool selects) {
    Request request = {std::vector<size_t>(table.columns.size()), !selects || below(random, 3) == 0, 0};
    std::iota(request.fields.begin(), request.fields.end(), 0);
    std::shuffle(request.fields.begin() + 1, request.fields.end(), random);
    request.fields.resize(1 + below(random, request.fields.size()));
    if (selects && below(random, 2) == 0)
        request.page = static_cast<uint32_t>(1 + below(random, table.rows.size() + 1));
    return request;
}

// The parts of the rows that are asked for, as they are kept.
Rows keptRows(const Table &table, const Request &request, const Writer &writer) {
    Rows rows;
    for (const Row &row : table.rows) {
        Row kept;
        for (size_t i = 0; i < (request.whole ? row.size() : request.fields.size()); ++i) {
            const size_t field = request.whole ? i : request.fields[i];
            kept.push_back(writer.keeps(table.columns[field], row[field]));
        }
        rows.push_back(std::move(kept));
    }
    return rows;
}

void sortByKey(Rows &rows) {
    std::sort(rows.begin(), rows.end(), [](const Row &a, const Row &b) { return a[0] < b[0]; });
}

void expectSame(Rows rows, Rows kept, Form form, const std::vector<Column> &columns) {
    ASSERT_EQ(rows.size(), kept.size());
    sortByKey(rows);
    sortByKey(kept);
    for (size_t row = 0; row < rows.size(); ++row)
        for (size_t i = 0; i < columns.size(); ++i) {
            if (!carries(form, columns, i))
                continue;
            ASSERT_EQ(rows[row][i], expected(form, columns[i], kept[row][i]))
                << "row " << row << ", column " << columns[i].name;
        }
}

void readEveryWay(Random &random, const Table &table, const Writer &writer) {
    for (const Reader &reader : readers()) {
        const Request request = randomRequest(random, table, reader.selects);
        SCOPED_TRACE(std::string(reader.name) + (request.whole ? ", all columns" : ", some columns") + ", pages of " +
                     std::to_string(request.page));
        expectSame(reader.read(table, request), keptRows(table, request, writer), reader.form, request.columns(table));
        if (testing::Test::HasFailure())
            return;
    }
}

TEST_F(PropertyTest, WhatIsWrittenIsReadOnEveryWay) {
    constexpr size_t mostRows = 8;
    constexpr int rounds = 16;
    const uint64_t seed = seedOfRun();
    SCOPED_TRACE("ORMEL_SEED=" + std::to_string(seed));
    Random random(seed);
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        // The narrowest and the widest first.
        const size_t columns = round == 0 ? 1 : round == 1 ? ORMEL_MAX_ITEMS : 1 + below(random, ORMEL_MAX_ITEMS);
        const Table table = randomTable(random, columns, below(random, mostRows + 1));
        SCOPED_TRACE(table.creation());
        execute("DROP TABLE IF EXISTS " + table.name);
        execute(table.creation());
        for (const Writer &writer : writers()) {
            if (HasFailure() || !writer.takes(table))
                continue;
            SCOPED_TRACE(std::string("written by ") + writer.name);
            writer.write(table);
            readEveryWay(random, table, writer);
            execute("DELETE FROM " + table.name);
        }
    }
}

} // namespace
