// The ways in which a client can bring many rows to the server: prepared inserts that nobody waits for ("x/raw"), one
// insert of many rows, arrays that are unnested, and COPY. Each in one transaction.
#include <algorithm>
#include <benchmark/benchmark.h>

#include "home.h"
#include "measure.h"
#include "postgres/shapes.h"

namespace {

using namespace bench;

// One connection for all of them, as the library keeps one.
PGconn *kept() {
    static const Server server = connect();
    return server.get();
}

void inTransaction(benchmark::State &state, const Shape &shape, void (*insert)(PGconn *, const Shape &)) {
    measure(state, shape.rows, [&] {
        run(kept(), "BEGIN");
        insert(kept(), shape);
        run(kept(), "COMMIT");
    });
}

void send(PGconn *server, const char *name, const Parameters &row) {
    if (PQsendQueryPrepared(server, name, row.count(), row.values(), row.lengths(), row.formats(), 0) != 1)
        die(PQerrorMessage(server));
}

// The answers to as many commands and to the point behind them.
void receive(PGconn *server, int commands) {
    PQpipelineSync(server);
    for (int i = 0; i < commands; ++i) {
        checked(server, PQgetResult(server));
        PQgetResult(server); // the end of one command's answer
    }
    checked(server, PQgetResult(server));
}

// A thousand rows are on the way at a time, as in the library.
void pipeline(PGconn *server, const Shape &shape) {
    constexpr int step = 1000;
    const std::vector<Oid> types = shape.types();
    checked(server, PQprepare(server, "one", shape.insert().c_str(), static_cast<int>(types.size()), types.data()));
    PQenterPipelineMode(server);
    for (int first = 0; first < shape.rows; first += step) {
        const int end = std::min(first + step, shape.rows);
        for (int id = first; id < end; ++id) {
            const std::vector<std::string> row = shape.row(id);
            send(server, "one", Parameters(row));
        }
        receive(server, end - first);
    }
    PQexitPipelineMode(server);
    run(server, "DEALLOCATE one");
}

// A statement takes 65535 parameters.
void manyValues(PGconn *server, const Shape &shape) {
    const int step = std::min(1000, shape.rows);
    std::vector<Oid> types;
    for (int row = 0; row < step; ++row)
        for (const ValueType &column : shape.columns)
            types.push_back(column.value);
    checked(server,
            PQprepare(server, "many", shape.insert(step).c_str(), static_cast<int>(types.size()), types.data()));
    for (int first = 0; first < shape.rows; first += step) {
        std::vector<std::string> values;
        for (int id = first; id < first + step; ++id)
            for (std::string &value : shape.row(id))
                values.push_back(std::move(value));
        const Parameters rows(values);
        checked(server, PQexecPrepared(server, "many", rows.count(), rows.values(), rows.lengths(), rows.formats(), 0));
    }
    run(server, "DEALLOCATE many");
}

void appendSized(std::string &bytes, const std::string &value) {
    bytes += wire(static_cast<int32_t>(value.size()));
    bytes += value;
}

// An array for each column: dimensions, whether there is a NULL, type, size and first index, then the elements.
void unnest(PGconn *server, const Shape &shape) {
    std::vector<std::string> arrays;
    std::vector<Oid> types;
    std::string sql = std::string("INSERT INTO ") + shape.table + " SELECT * FROM unnest(";
    for (const ValueType &column : shape.columns) {
        arrays.push_back(wire(int32_t{1}) + wire(int32_t{0}) + wire(static_cast<int32_t>(column.value)) +
                         wire(int32_t{shape.rows}) + wire(int32_t{1}));
        types.push_back(column.array);
        sql += (types.size() == 1 ? "$" : ", $") + std::to_string(types.size()) + "::" + column.arrayName;
    }
    for (int id = 0; id < shape.rows; ++id) {
        const std::vector<std::string> row = shape.row(id);
        for (size_t column = 0; column < row.size(); ++column)
            appendSized(arrays[column], row[column]);
    }
    const Parameters parameters(arrays);
    checked(server, PQexecParams(server, (sql + ")").c_str(), parameters.count(), types.data(), parameters.values(),
                                 parameters.lengths(), parameters.formats(), 0));
}

// In binary form: a signature, flags, an empty extension; the number of fields before each row, and -1 at the end.
void copy(PGconn *server, const Shape &shape) {
    const auto number = [](size_t fields) { return wire(static_cast<int32_t>(fields)).substr(2); };
    checked(server, PQexec(server, (std::string("COPY ") + shape.table + " FROM STDIN (FORMAT binary)").c_str()));
    std::string bytes = std::string("PGCOPY\n\377\r\n\0", 11) + std::string(8, '\0');
    for (int id = 0; id < shape.rows; ++id) {
        bytes += number(shape.columns.size());
        for (const std::string &value : shape.row(id))
            appendSized(bytes, value);
        if (bytes.size() < 65536)
            continue;
        PQputCopyData(server, bytes.data(), static_cast<int>(bytes.size()));
        bytes.clear();
    }
    bytes += "\377\377";
    PQputCopyData(server, bytes.data(), static_cast<int>(bytes.size()));
    PQputCopyEnd(server, nullptr);
    checked(server, PQgetResult(server));
    PQgetResult(server);
}

struct Way {
    const char *name;
    void (*insert)(PGconn *server, const Shape &shape);
};

[[maybe_unused]] const bool registered = [] {
    const std::pair<const char *, const Shape *> works[] = {{"insert 100000 in one batch", &kLoaded},
                                                            {"insert 1000 of 64 KiB in one batch", &kImage}};
    const Way ways[] = {{"raw", pipeline}, {"COPY", copy}, {"unnest", unnest}, {"VALUES", manyValues}};
    for (const auto &[work, shape] : works)
        for (const Way &way : ways)
            benchmark::RegisterBenchmark(
                (std::string(work) + "/" + way.name).c_str(),
                [shape = shape, way](benchmark::State &state) { inTransaction(state, *shape, way.insert); })
                ->UseRealTime()
                ->Iterations(1);
    return true;
}();

} // namespace
