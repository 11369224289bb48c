// What a log line costs.
#include <benchmark/benchmark.h>

#include <ormeldb.h>

namespace {

void filteredLine(benchmark::State &state) {
    for (auto _ : state)
        KPL_VemloLogToFile("LOG_ORMEL", "bench", 5, "filteredLine", 12, 1, KPL_LOG_DEBUG, "a value: %d", 1);
}
BENCHMARK(filteredLine)->Name("log/filtered");

void writtenLine(benchmark::State &state) {
    for (auto _ : state)
        KPL_VemloLogToFile("LOG_ORMEL", "bench", 5, "writtenLine", 11, 1, KPL_LOG_ERROR, "a value: %d", 1);
}
BENCHMARK(writtenLine)->Name("log/written");

} // namespace
