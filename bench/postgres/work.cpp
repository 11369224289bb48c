// The same work over libpq, on one connection that is kept, as the library keeps one.
#include <benchmark/benchmark.h>
#include <ormeldb/base.h>

#include "check.h"
#include "home.h"
#include "memory.h"
#include "postgres/shapes.h"
#include "work.h"

namespace {

using namespace bench;

constexpr char kInsert[] = "INSERT INTO made (id, name, city, height, born, active) values ($1, $2, $3, $4, $5, $6)";

// A connection with a prepared insert.
Server connectToInsert() {
    Server server = connect();
    const std::vector<Oid> types = kLoaded.types();
    checked(server.get(), PQprepare(server.get(), "insert", kInsert, static_cast<int>(types.size()), types.data()));
    return server;
}

void insertPerson(PGconn *server, int id) {
    const std::vector<std::string> values = person(id);
    const Parameters row(values);
    checked(server, PQexecPrepared(server, "insert", row.count(), row.values(), row.lengths(), row.formats(), 0));
}

void insertInTransactionRaw(benchmark::State &state) {
    const Server server = connectToInsert();
    for (auto _ : state) {
        run(server.get(), "BEGIN");
        for (int i = 0; i < kRowsPerTransaction; ++i)
            insertPerson(server.get(), i);
        run(server.get(), "COMMIT");
    }
    state.SetItemsProcessed(state.iterations() * kRowsPerTransaction);
}
BENCHMARK(insertInTransactionRaw)->Name("insert 1000 in a transaction/raw")->UseRealTime();

// Committed by the server with the statement.
void insertPlainRaw(benchmark::State &state) {
    const Server server = connectToInsert();
    for (auto _ : state)
        insertPerson(server.get(), 1);
}
BENCHMARK(insertPlainRaw)->Name("insert one, connection and commit included/raw")->UseRealTime();

// Rows in binary form.
Answer select(PGconn *server, const std::string &sql, const std::vector<std::string> &values = {},
              const std::vector<Oid> &types = {}) {
    const Parameters parameters(values);
    return checked(server, PQexecParams(server, sql.c_str(), parameters.count(), types.data(), parameters.values(),
                                        parameters.lengths(), parameters.formats(), 1));
}

void selectByKeyRaw(benchmark::State &state) {
    const Server server = connect();
    int id = 0;
    for (auto _ : state) {
        const Answer rows =
            select(server.get(), "SELECT * FROM people WHERE id = $1", {wire(int32_t{id++ % kPeople})}, {kInt4});
        benchmark::DoNotOptimize(PQgetvalue(rows.get(), 0, 1));
    }
}
BENCHMARK(selectByKeyRaw)->Name("select one by key/raw")->UseRealTime();

void selectAllRaw(benchmark::State &state) {
    const Server server = connect();
    for (auto _ : state) {
        const Answer rows = select(server.get(), "SELECT * FROM people");
        std::vector<Person> people;
        for (int row = 0; row < PQntuples(rows.get()); ++row)
            people.push_back(personOf(rows.get(), row));
        benchmark::DoNotOptimize(people.data());
    }
    state.SetItemsProcessed(state.iterations() * kPeople);
}
BENCHMARK(selectAllRaw)->Name("select 10000 into a result/raw")->UseRealTime();

// A thousand rows of a cursor at a time.
int fetchAll(PGconn *server) {
    run(server, "BEGIN; DECLARE crowd_rows NO SCROLL CURSOR FOR SELECT * FROM crowd");
    int rows = 0;
    for (;;) {
        const Answer step = select(server, "FETCH FORWARD 1000 FROM crowd_rows");
        const int fetched = PQntuples(step.get());
        for (int row = 0; row < fetched; ++row)
            benchmark::DoNotOptimize(personOf(step.get(), row));
        rows += fetched;
        if (fetched == 0)
            break;
    }
    run(server, "COMMIT");
    return rows;
}

void fetchRaw(benchmark::State &state) {
    makeCrowd();
    const Server server = connect();
    const MemoryGrowth memory;
    for (auto _ : state)
        check(state, fetchAll(server.get()) == kCrowd ? ORMEL_OK : ORMEL_ERR_NO_RESULT);
    state.counters["peak memory grows by MiB"] = memory.peakMiB();
}
BENCHMARK(fetchRaw)->Name("read 1000000 by cursor/raw")->UseRealTime();

} // namespace
