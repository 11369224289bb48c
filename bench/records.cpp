// Records through ormeldb ("x/ormel").
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <ormeldb.h>

#include "check.h"
#include "work.h"

namespace {

using namespace bench;

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

void insertPlain(benchmark::State &state) {
    Record record;
    for (auto _ : state)
        if (!check(state, ORMEL_InsertRec("made", &record.with(1))))
            break;
}
BENCHMARK(insertPlain)->Name("insert one, connection and commit included/ormel")->UseRealTime();

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

} // namespace
