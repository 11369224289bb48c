// Many rows at once: a batch of request objects. It logs a line for every value at INFO, so the threshold is part of
// it.
#include <benchmark/benchmark.h>
#include <string>

#include <ormeldb.h>
#include <ormeldb/platform/liblog.h>

#include "check.h"
#include "database.h"
#include "measure.h"
#include "work.h"

namespace {

using namespace bench;

// Fills the container and inserts it; the caller times all of it, for the values have to get there either way.
template <class Fill> uint32_t insertBatch(const char *table, int32_t rows, Fill fill) {
    ORMEL_MULTI_OBJECT *multi = ORMEL_Multi_object_Init(table, rows);
    for (int32_t i = 0; multi != nullptr && i < rows; ++i)
        fill(multi->astObject[i], i);
    const uint32_t code = ORMEL_PatchInsertRecFormObj(multi);
    ORMEL_Multi_object_UnInit(multi);
    return code;
}

// The log's threshold for the length of a benchmark.
class Threshold {
public:
    explicit Threshold(int32_t level) { FrameDebugLevelSet(level); }
    ~Threshold() { FrameDebugLevelSet(before_); }
    Threshold(const Threshold &) = delete;
    Threshold &operator=(const Threshold &) = delete;

private:
    int32_t before_ = FrameDebugLevelGet();
};

void rowsInBatch(benchmark::State &state, int32_t level) {
    const Threshold threshold(level);
    measure(state, kRowsPerBatch, [&] {
        check(state, insertBatch("loaded", kRowsPerBatch, [](ORMEL_OBJECT &row, int32_t i) {
                  const double height = 1.75;
                  ORMEL_ObjectInt32Set(&row, "id", i);
                  ORMEL_ObjectStrSet(&row, "name", "a name");
                  ORMEL_ObjectStrSet(&row, "city", "a city");
                  ORMEL_ObjectBinarySet(&row, "height", &height, sizeof height);
                  ORMEL_ObjectInt64Set(&row, "born", 1000000000000);
                  ORMEL_ObjectInt32Set(&row, "active", 1);
              }));
    });
}
BENCHMARK_CAPTURE(rowsInBatch, notice, KPL_LOG_NOTICE)
    ->Name("insert 100000 in one batch/ormel")
    ->UseRealTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(rowsInBatch, info, KPL_LOG_INFO)
    ->Name("insert 100000 in one batch, log at INFO")
    ->UseRealTime()
    ->Iterations(1);

void imagesInBatch(benchmark::State &state) {
    const Threshold threshold(KPL_LOG_NOTICE);
    const std::string bytes(kImageSize, 'x');
    measure(state, kImages, [&] {
        check(state, insertBatch("image", kImages, [&](ORMEL_OBJECT &row, int32_t i) {
                  ORMEL_ObjectInt32Set(&row, "id", i);
                  ORMEL_ObjectBinarySet(&row, "bytes", bytes.data(), static_cast<int32_t>(bytes.size()));
              }));
    });
}
BENCHMARK(imagesInBatch)->Name("insert 1000 of 64 KiB in one batch/ormel")->UseRealTime()->Iterations(1);

} // namespace

void bench::makeBatchTables() {
    run("DROP TABLE IF EXISTS loaded; DROP TABLE IF EXISTS image; CREATE TABLE loaded (" + kPersonColumns +
        "); CREATE TABLE image (id INTEGER PRIMARY KEY, bytes " + kBytes + ")");
}
