// The same work over SQLite's own interface.
#include <benchmark/benchmark.h>
#include <ormeldb/base.h>
#include <vector>

#include "check.h"
#include "measure.h"
#include "memory.h"
#include "sqlite/raw.h"

namespace {

using namespace bench;

constexpr char kInsert[] = "INSERT INTO made (id, name, city, height, born, active) values (?1, ?2, ?3, ?4, ?5, ?6)";

void bindPerson(sqlite3_stmt *stmt, int id) {
    sqlite3_bind_int(stmt, 1, id);
    sqlite3_bind_text(stmt, 2, "a name", 6, SQLITE_STATIC);
    sqlite3_bind_text(stmt, 3, "a city", 6, SQLITE_STATIC);
    sqlite3_bind_double(stmt, 4, 1.75);
    sqlite3_bind_int64(stmt, 5, 1000000000000);
    sqlite3_bind_int(stmt, 6, 1);
}

// Inserts rows with a prepared statement.
template <class Bind> void insertRaw(sqlite3 *db, const char *sql, int rows, Bind bind) {
    const Prepared stmt = prepare(db, sql);
    for (int i = 0; i < rows; ++i) {
        bind(stmt.get(), i);
        sqlite3_step(stmt.get());
        sqlite3_reset(stmt.get());
    }
}

void insertInTransactionRaw(benchmark::State &state) {
    for (auto _ : state) {
        const Database db = openDatabase();
        run(db.get(), "BEGIN IMMEDIATE");
        insertRaw(db.get(), kInsert, kRowsPerTransaction, bindPerson);
        run(db.get(), "COMMIT");
    }
    state.SetItemsProcessed(state.iterations() * kRowsPerTransaction);
}
BENCHMARK(insertInTransactionRaw)->Name("insert 1000 in a transaction/raw")->UseRealTime();

void insertPlainRaw(benchmark::State &state) {
    for (auto _ : state) {
        const Database db = openDatabase();
        run(db.get(), "BEGIN IMMEDIATE");
        insertRaw(db.get(), kInsert, 1, bindPerson);
        run(db.get(), "COMMIT");
    }
}
BENCHMARK(insertPlainRaw)->Name("insert one, connection and commit included/raw")->UseRealTime();

void selectByKeyRaw(benchmark::State &state) {
    const Database db = openDatabase();
    int id = 0;
    for (auto _ : state) {
        const Prepared stmt = prepare(db.get(), "SELECT * FROM people WHERE id = ?1");
        sqlite3_bind_int(stmt.get(), 1, id++ % kPeople);
        sqlite3_step(stmt.get());
        benchmark::DoNotOptimize(sqlite3_column_text(stmt.get(), 1));
    }
}
BENCHMARK(selectByKeyRaw)->Name("select one by key/raw")->UseRealTime();

void selectAllRaw(benchmark::State &state) {
    const Database db = openDatabase();
    for (auto _ : state) {
        const Prepared prepared = prepare(db.get(), "SELECT * FROM people");
        sqlite3_stmt *stmt = prepared.get();
        std::vector<Person> people;
        while (sqlite3_step(stmt) == SQLITE_ROW)
            people.push_back(currentPerson(stmt));
        benchmark::DoNotOptimize(people.data());
    }
    state.SetItemsProcessed(state.iterations() * kPeople);
}
BENCHMARK(selectAllRaw)->Name("select 10000 into a result/raw")->UseRealTime();

void fetchRaw(benchmark::State &state) {
    makeCrowd();
    const MemoryGrowth memory;
    for (auto _ : state) {
        const Database db = openDatabase();
        const Prepared stmt = prepare(db.get(), "SELECT * FROM crowd");
        int rows = 0;
        for (; sqlite3_step(stmt.get()) == SQLITE_ROW; ++rows)
            benchmark::DoNotOptimize(currentPerson(stmt.get()));
        check(state, rows == kCrowd ? ORMEL_OK : ORMEL_ERR_NO_RESULT);
    }
    state.counters["peak memory grows by MiB"] = memory.peakMiB();
}
BENCHMARK(fetchRaw)->Name("read 1000000 by cursor/raw")->UseRealTime();

void rowsRaw(benchmark::State &state) {
    measure(state, kRowsPerBatch, [] {
        const Database db = openDatabase();
        run(db.get(), "BEGIN");
        insertRaw(db.get(), "INSERT INTO loaded VALUES (?1, ?2, ?3, ?4, ?5, ?6)", kRowsPerBatch, bindPerson);
        run(db.get(), "COMMIT");
    });
}
BENCHMARK(rowsRaw)->Name("insert 100000 in one batch/raw")->UseRealTime()->Iterations(1);

void imagesRaw(benchmark::State &state) {
    const std::string bytes(kImageSize, 'x');
    measure(state, kImages, [&] {
        const Database db = openDatabase();
        run(db.get(), "BEGIN");
        insertRaw(db.get(), "INSERT INTO image VALUES (?1, ?2)", kImages, [&](sqlite3_stmt *stmt, int i) {
            sqlite3_bind_int(stmt, 1, i);
            sqlite3_bind_blob(stmt, 2, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
        });
        run(db.get(), "COMMIT");
    });
}
BENCHMARK(imagesRaw)->Name("insert 1000 of 64 KiB in one batch/raw")->UseRealTime()->Iterations(1);

} // namespace
