// A large table row by row, and what it takes of memory.
#include <benchmark/benchmark.h>

#include <ormeldb.h>

#include "check.h"
#include "memory.h"
#include "raw.h"

namespace {

using namespace bench;

constexpr int kRows = 1000000;

void makeTable() {
    [[maybe_unused]] static const bool made = [] {
        run(openDatabase().get(),
            "CREATE TABLE crowd (id INTEGER PRIMARY KEY, name VARCHAR(32), city VARCHAR(32), height DOUBLE,"
            " born BIGINT, active BOOLEAN);"
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < 1000000)"
            " INSERT INTO crowd SELECT i, 'name ' || i, 'city ' || (i % 100), i * 0.5, i * 1000000000, i % 2 FROM n");
        return true;
    }();
}

int fetchAll(ORMEL_TRANS *cursor) {
    int rows = 0;
    ORMEL_SELECT_RESULT row = {};
    while (ORMEL_FetchSelectRecEx(cursor, &row) == ORMEL_OK) {
        ++rows;
        ORMEL_SelectResultClearForFetch(&row);
    }
    ORMEL_SelectResultClearForFetch(&row);
    return rows;
}

void fetchByCursor(benchmark::State &state) {
    makeTable();
    const MemoryGrowth memory;
    for (auto _ : state) {
        ORMEL_TRANS *cursor = ORMEL_BeginSelect("crowd", __func__, __LINE__);
        check(state, fetchAll(cursor) == kRows ? ORMEL_OK : ORMEL_ERR_NO_RESULT);
        check(state, ORMEL_EndSelect(cursor));
    }
    state.counters["peak memory grows by MiB"] = memory.peakMiB();
}
BENCHMARK(fetchByCursor)->Name("read 1000000 by cursor/ormel")->UseRealTime();

void fetchRaw(benchmark::State &state) {
    makeTable();
    const MemoryGrowth memory;
    for (auto _ : state) {
        const Database db = openDatabase();
        const Prepared stmt = prepare(db.get(), "SELECT * FROM crowd");
        int rows = 0;
        for (; sqlite3_step(stmt.get()) == SQLITE_ROW; ++rows)
            benchmark::DoNotOptimize(currentPerson(stmt.get()));
        check(state, rows == kRows ? ORMEL_OK : ORMEL_ERR_NO_RESULT);
    }
    state.counters["peak memory grows by MiB"] = memory.peakMiB();
}
BENCHMARK(fetchRaw)->Name("read 1000000 by cursor/raw")->UseRealTime();

} // namespace
