// Insertions, each into empty tables.
#pragma once

#include <benchmark/benchmark.h>

#include "work.h"

namespace bench {

// Times one insertion after the other.
template <class Insert> void measure(benchmark::State &state, int32_t rows, Insert insert) {
    for (auto _ : state) {
        state.PauseTiming();
        makeBatchTables();
        state.ResumeTiming();
        insert();
    }
    state.SetItemsProcessed(state.iterations() * rows);
}

} // namespace bench
