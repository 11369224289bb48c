// Records through ormeldb ("x/ormel") and the same over SQLite's own interface ("x/raw").
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <ormeldb.h>

#include "check.h"
#include "home.h"
#include "raw.h"

namespace {

using namespace bench;

constexpr int kRowsPerTransaction = 1000;

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
        if (!check(state, ORMEL_SelectRecForConn(conn, "people", key.with(id++ % kPeople), 0, &record.with(0))))
            break;
    ORMEL_DBDisConnect(conn);
}
BENCHMARK(selectByKey)->Name("select one by key/ormel")->UseRealTime();

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

void selectAll(benchmark::State &state) {
    void *conn = ORMEL_DBConnect();
    const ORMEL_PARA everything = {};
    for (auto _ : state) {
        DB_RESULT *res = dbSelectRec(conn, "people", &everything);
        check(state, dbGetNtuples(res) == kPeople ? ORMEL_OK : ORMEL_ERR_NO_RESULT);
        dbResClear(res);
    }
    ORMEL_DBDisConnect(conn);
    state.SetItemsProcessed(state.iterations() * kPeople);
}
BENCHMARK(selectAll)->Name("select 10000 into a result/ormel")->UseRealTime();

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

} // namespace
