// Records through ormeldb ("x/ormel") and the same over SQLite's own interface ("x/raw").
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <vector>

#include <ormeldb.h>

#include "home.h"

namespace {

constexpr int kRowsPerTransaction = 1000;

struct CloseDatabase {
    void operator()(sqlite3 *db) const { sqlite3_close(db); }
};
struct Finalize {
    void operator()(sqlite3_stmt *stmt) const { sqlite3_finalize(stmt); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Prepared = std::unique_ptr<sqlite3_stmt, Finalize>;

void run(sqlite3 *db, const char *sql) {
    sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
}

// Opened as the embedded engine opens it.
Database openDatabase() {
    sqlite3 *db = nullptr;
    sqlite3_open(bench::kDatabase, &db);
    sqlite3_busy_timeout(db, 5000);
    run(db, "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON");
    return Database(db);
}

Prepared prepare(sqlite3 *db, const char *sql) {
    sqlite3_stmt *stmt = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
    return Prepared(stmt);
}

constexpr char kInsert[] = "INSERT INTO made (id, name, city, height, born, active) values (?1, ?2, ?3, ?4, ?5, ?6)";

void insertRaw(sqlite3_stmt *stmt, int id) {
    sqlite3_bind_int(stmt, 1, id);
    sqlite3_bind_text(stmt, 2, "a name", 6, SQLITE_STATIC);
    sqlite3_bind_text(stmt, 3, "a city", 6, SQLITE_STATIC);
    sqlite3_bind_double(stmt, 4, 1.75);
    sqlite3_bind_int64(stmt, 5, 1000000000000);
    sqlite3_bind_int(stmt, 6, 1);
    sqlite3_step(stmt);
    sqlite3_reset(stmt);
}

// A record of the tables people and made; both have the same columns.
class Record {
public:
    Record() {
        void *conn = ORMEL_DBConnect();
        ORMEL_RES_ATT *att = ORMEL_CreatResAtt(conn, "people", nullptr);
        const ORMEL_RES_ATT_FIELD &last = att->astField[att->iAttNum - 1];
        bytes_.resize(static_cast<size_t>(last.offset + last.len));
        put(*att, 1, "a name", 6);
        put(*att, 2, "a city", 6);
        put(*att, 3, 1.75);
        put(*att, 4, int64_t{1000000000000});
        put(*att, 5, int32_t{1});
        ORMEL_DestoryResAtt(att);
        ORMEL_DBDisConnect(conn);
        buffer_.usRecLen = static_cast<uint16_t>(bytes_.size());
        buffer_.uiBufSize = static_cast<uint32_t>(bytes_.size());
        buffer_.pucData = bytes_.data();
    }
    ORMEL_RECORD_BUFFER &with(int32_t id) {
        std::memcpy(bytes_.data(), &id, sizeof id);
        return buffer_;
    }

private:
    void put(const ORMEL_RES_ATT &att, int field, const void *value, size_t size) {
        std::memcpy(bytes_.data() + att.astField[field].offset, value, size);
    }
    template <class T> void put(const ORMEL_RES_ATT &att, int field, T value) { put(att, field, &value, sizeof value); }

    std::vector<uint8_t> bytes_;
    ORMEL_RECORD_BUFFER buffer_ = {};
};

struct KeyCondition {
    KeyCondition() : cond(static_cast<ORMEL_COND *>(std::calloc(1, sizeof(ORMEL_COND) + sizeof(ORMEL_COND_ITEM)))) {
        cond->usCondNum = 1;
    }
    ~KeyCondition() { std::free(cond); }
    KeyCondition(const KeyCondition &) = delete;
    KeyCondition &operator=(const KeyCondition &) = delete;
    ORMEL_COND *with(int32_t id) {
        std::memcpy(cond->astCond[0].aucValue, &id, sizeof id);
        return cond;
    }
    ORMEL_COND *cond;
};

// Fails the benchmark instead of measuring a call that did nothing.
bool check(benchmark::State &state, uint32_t code) {
    if (code == ORMEL_OK)
        return true;
    state.SkipWithError(("code " + std::to_string(code)).c_str());
    return false;
}

void insertInTransaction(benchmark::State &state) {
    Record record;
    for (auto _ : state) {
        ORMEL_TRANS *slot = ORMEL_StartTrans(__func__, __LINE__);
        for (int i = 0; i < kRowsPerTransaction; ++i)
            if (!check(state, ORMEL_InsertRecForTrans(slot, "made", &record.with(i))))
                break;
        check(state, ORMEL_CommitTrans(slot));
    }
    state.SetItemsProcessed(state.iterations() * kRowsPerTransaction);
}
BENCHMARK(insertInTransaction)->Name("insert 1000 in a transaction/ormel")->UseRealTime();

void insertInTransactionRaw(benchmark::State &state) {
    for (auto _ : state) {
        const Database db = openDatabase();
        run(db.get(), "BEGIN IMMEDIATE");
        const Prepared stmt = prepare(db.get(), kInsert);
        for (int i = 0; i < kRowsPerTransaction; ++i)
            insertRaw(stmt.get(), i);
        run(db.get(), "COMMIT");
    }
    state.SetItemsProcessed(state.iterations() * kRowsPerTransaction);
}
BENCHMARK(insertInTransactionRaw)->Name("insert 1000 in a transaction/raw")->UseRealTime();

void insertPlain(benchmark::State &state) {
    Record record;
    for (auto _ : state)
        if (!check(state, ORMEL_InsertRec("made", &record.with(1))))
            break;
}
BENCHMARK(insertPlain)->Name("insert one, connection and commit included/ormel")->UseRealTime();

void insertPlainRaw(benchmark::State &state) {
    for (auto _ : state) {
        const Database db = openDatabase();
        run(db.get(), "BEGIN IMMEDIATE");
        insertRaw(prepare(db.get(), kInsert).get(), 1);
        run(db.get(), "COMMIT");
    }
}
BENCHMARK(insertPlainRaw)->Name("insert one, connection and commit included/raw")->UseRealTime();

void selectByKey(benchmark::State &state) {
    Record record;
    KeyCondition key;
    void *conn = ORMEL_DBConnect();
    int32_t id = 0;
    for (auto _ : state)
        if (!check(state, ORMEL_SelectRecForConn(conn, "people", key.with(id++ % bench::kPeople), 0, &record.with(0))))
            break;
    ORMEL_DBDisConnect(conn);
}
BENCHMARK(selectByKey)->Name("select one by key/ormel")->UseRealTime();

void selectByKeyRaw(benchmark::State &state) {
    const Database db = openDatabase();
    int id = 0;
    for (auto _ : state) {
        const Prepared stmt = prepare(db.get(), "SELECT * FROM people WHERE id = ?1");
        sqlite3_bind_int(stmt.get(), 1, id++ % bench::kPeople);
        sqlite3_step(stmt.get());
        benchmark::DoNotOptimize(sqlite3_column_text(stmt.get(), 1));
    }
}
BENCHMARK(selectByKeyRaw)->Name("select one by key/raw")->UseRealTime();

void selectAll(benchmark::State &state) {
    void *conn = ORMEL_DBConnect();
    const ORMEL_PARA everything = {};
    for (auto _ : state) {
        DB_RESULT *res = dbSelectRec(conn, "people", &everything);
        check(state, dbGetNtuples(res) == bench::kPeople ? ORMEL_OK : ORMEL_ERR_NO_RESULT);
        dbResClear(res);
    }
    ORMEL_DBDisConnect(conn);
    state.SetItemsProcessed(state.iterations() * bench::kPeople);
}
BENCHMARK(selectAll)->Name("select 10000 into a result/ormel")->UseRealTime();

// A row as a program without ormeldb would keep it.
struct Person {
    int id;
    std::string name;
    std::string city;
    double height;
    int64_t born;
    bool active;
};

std::string textOf(sqlite3_stmt *stmt, int column) {
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt, column));
    return {text, static_cast<size_t>(sqlite3_column_bytes(stmt, column))};
}

void selectAllRaw(benchmark::State &state) {
    const Database db = openDatabase();
    for (auto _ : state) {
        const Prepared prepared = prepare(db.get(), "SELECT * FROM people");
        sqlite3_stmt *stmt = prepared.get();
        std::vector<Person> people;
        while (sqlite3_step(stmt) == SQLITE_ROW)
            people.push_back({sqlite3_column_int(stmt, 0), textOf(stmt, 1), textOf(stmt, 2),
                              sqlite3_column_double(stmt, 3), sqlite3_column_int64(stmt, 4),
                              sqlite3_column_int(stmt, 5) != 0});
        benchmark::DoNotOptimize(people.data());
    }
    state.SetItemsProcessed(state.iterations() * bench::kPeople);
}
BENCHMARK(selectAllRaw)->Name("select 10000 into a result/raw")->UseRealTime();

} // namespace
