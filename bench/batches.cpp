// Many rows at once: a batch of request objects ("x/ormel"), and one prepared statement in a loop over SQLite's own
// interface, in one transaction ("x/raw"). A batch logs a line for every value at INFO, so the threshold is part of it.
#include <benchmark/benchmark.h>
#include <string>

#include <ormeldb.h>
#include <ormeldb/platform/liblog.h>

#include "check.h"
#include "raw.h"

namespace {

using namespace bench;

constexpr int32_t kRows = 100000;
constexpr int32_t kImages = 1000;
constexpr size_t kImageSize = 64 * 1024;

void makeTables() {
    run(openDatabase().get(),
        "DROP TABLE IF EXISTS loaded; DROP TABLE IF EXISTS image;"
        "CREATE TABLE loaded (id INTEGER PRIMARY KEY, name VARCHAR(32), city VARCHAR(32), height DOUBLE, born BIGINT,"
        " active BOOLEAN);"
        "CREATE TABLE image (id INTEGER PRIMARY KEY, bytes BLOB)");
}

std::string image() {
    return std::string(kImageSize, 'x');
}

// Fills the container and inserts it; the caller times all of it, for the values have to get there either way.
template <class Fill> uint32_t insertBatch(const char *table, int32_t rows, Fill fill) {
    ORMEL_MULTI_OBJECT *multi = ORMEL_Multi_object_Init(table, rows);
    for (int32_t i = 0; multi != nullptr && i < rows; ++i)
        fill(multi->astObject[i], i);
    const uint32_t code = ORMEL_PatchInsertRecFormObj(multi);
    ORMEL_Multi_object_UnInit(multi);
    return code;
}

template <class Fill> void insertRaw(const char *sql, int32_t rows, Fill fill) {
    const Database db = openDatabase();
    const Prepared stmt = prepare(db.get(), sql);
    run(db.get(), "BEGIN");
    for (int32_t i = 0; i < rows; ++i) {
        fill(stmt.get(), i);
        sqlite3_step(stmt.get());
        sqlite3_reset(stmt.get());
    }
    run(db.get(), "COMMIT");
}

// Times one insertion after the other, each into empty tables.
template <class Insert> void measure(benchmark::State &state, int32_t rows, Insert insert) {
    for (auto _ : state) {
        state.PauseTiming();
        makeTables();
        state.ResumeTiming();
        insert();
    }
    state.SetItemsProcessed(state.iterations() * rows);
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
    measure(state, kRows, [&] {
        check(state, insertBatch("loaded", kRows, [](ORMEL_OBJECT &row, int32_t i) {
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

void rowsRaw(benchmark::State &state) {
    measure(state, kRows, [] {
        insertRaw("INSERT INTO loaded VALUES (?1, ?2, ?3, ?4, ?5, ?6)", kRows, [](sqlite3_stmt *stmt, int32_t i) {
            sqlite3_bind_int(stmt, 1, i);
            sqlite3_bind_text(stmt, 2, "a name", 6, SQLITE_STATIC);
            sqlite3_bind_text(stmt, 3, "a city", 6, SQLITE_STATIC);
            sqlite3_bind_double(stmt, 4, 1.75);
            sqlite3_bind_int64(stmt, 5, 1000000000000);
            sqlite3_bind_int(stmt, 6, 1);
        });
    });
}
BENCHMARK(rowsRaw)->Name("insert 100000 in one batch/raw")->UseRealTime()->Iterations(1);

void imagesInBatch(benchmark::State &state) {
    const Threshold threshold(KPL_LOG_NOTICE);
    const std::string bytes = image();
    measure(state, kImages, [&] {
        check(state, insertBatch("image", kImages, [&](ORMEL_OBJECT &row, int32_t i) {
                  ORMEL_ObjectInt32Set(&row, "id", i);
                  ORMEL_ObjectBinarySet(&row, "bytes", bytes.data(), static_cast<int32_t>(bytes.size()));
              }));
    });
}
BENCHMARK(imagesInBatch)->Name("insert 1000 of 64 KiB in one batch/ormel")->UseRealTime()->Iterations(1);

void imagesRaw(benchmark::State &state) {
    const std::string bytes = image();
    measure(state, kImages, [&] {
        insertRaw("INSERT INTO image VALUES (?1, ?2)", kImages, [&](sqlite3_stmt *stmt, int32_t i) {
            sqlite3_bind_int(stmt, 1, i);
            sqlite3_bind_blob(stmt, 2, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
        });
    });
}
BENCHMARK(imagesRaw)->Name("insert 1000 of 64 KiB in one batch/raw")->UseRealTime()->Iterations(1);

} // namespace
