// A large table row by row, and what it takes of memory.
#include <benchmark/benchmark.h>

#include <ormeldb.h>

#include "check.h"
#include "database.h"
#include "memory.h"
#include "work.h"

namespace {

using namespace bench;

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
    makeCrowd();
    const MemoryGrowth memory;
    for (auto _ : state) {
        ORMEL_TRANS *cursor = ORMEL_BeginSelect("crowd", __func__, __LINE__);
        check(state, fetchAll(cursor) == kCrowd ? ORMEL_OK : ORMEL_ERR_NO_RESULT);
        check(state, ORMEL_EndSelect(cursor));
    }
    state.counters["peak memory grows by MiB"] = memory.peakMiB();
}
BENCHMARK(fetchByCursor)->Name("read 1000000 by cursor/ormel")->UseRealTime();

} // namespace

void bench::makeCrowd() {
    [[maybe_unused]] static const bool made = [] {
        run("CREATE TABLE crowd (" + kPersonColumns + "); INSERT INTO crowd " + persons(kCrowd));
        return true;
    }();
}
