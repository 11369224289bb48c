// Keeps rows in the table "kept" until it is killed, and tells on standard output what was kept as soon as it is.
//
//     keeper write RUN    lots of rows: one alone, several as a batch, several in a transaction, in turn. A commit that
//                         returned 0 is told as "kept FIRST COUNT", the ids; any other as "refused FIRST BEGUN ENDED
//                         CODE TEXT", with the system's steady clock in nanoseconds at both ends of the lot, whereupon
//                         a line is awaited on standard input
//     keeper list RUN     the rows of a run as they are read: id, lot, size of the lot, name and body between tabs
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <ormeldb.h>

namespace {

constexpr int64_t kIdsOfRun = 1000000;
constexpr int64_t kLongestBody = 3000;

struct Lot {
    int64_t first;
    int32_t size;
};

// A row is told by its id, so that anybody can check it.
void fill(ORMEL_OBJECT *row, const Lot &lot, int64_t id) {
    const std::string digits = std::to_string(id);
    std::string body;
    while (static_cast<int64_t>(body.size()) < id % kLongestBody)
        body += digits;
    body.resize(static_cast<size_t>(id % kLongestBody));
    ORMEL_ObjectNameSet(row, "kept");
    ORMEL_ObjectInt64Set(row, "id", id);
    ORMEL_ObjectInt32Set(row, "run", static_cast<int32_t>(id / kIdsOfRun));
    ORMEL_ObjectInt64Set(row, "lot", lot.first);
    ORMEL_ObjectInt32Set(row, "size", lot.size);
    ORMEL_ObjectStrSet(row, "name", ("row " + digits).c_str());
    ORMEL_ObjectTextSet(row, "body", body.c_str());
}

template <class Insert> uint32_t insertRow(const Lot &lot, int64_t id, Insert insert) {
    ORMEL_OBJECT row = {};
    fill(&row, lot, id);
    const uint32_t code = insert(&row);
    ORMEL_ObjectParaClear(&row);
    return code;
}

uint32_t keepRow(const Lot &lot) {
    return insertRow(lot, lot.first, ORMEL_InsertRecFormObj);
}

uint32_t keepBatch(const Lot &lot) {
    ORMEL_MULTI_OBJECT *batch = ORMEL_Multi_object_Init("kept", lot.size);
    for (int32_t i = 0; i < lot.size; ++i)
        fill(&batch->astObject[i], lot, lot.first + i);
    const uint32_t code = ORMEL_PatchInsertRecFormObj(batch);
    ORMEL_Multi_object_UnInit(batch);
    return code;
}

uint32_t keepTransaction(const Lot &lot) {
    ORMEL_TRANS *slot = ORMEL_StartTrans(__func__, __LINE__);
    if (slot == nullptr)
        return ORMEL_ERR_NO_RESULT;
    uint32_t code = ORMEL_OK;
    for (int32_t i = 0; i < lot.size && code == ORMEL_OK; ++i)
        code =
            insertRow(lot, lot.first + i, [&](ORMEL_OBJECT *row) { return ORMEL_InsertRecByObjForTrans(slot, row); });
    if (code == ORMEL_OK)
        return ORMEL_CommitTrans(slot);
    ORMEL_RollbackTrans(slot);
    return code;
}

struct Way {
    int32_t rows;
    uint32_t (*keep)(const Lot &lot);
};
constexpr Way kWays[] = {{1, keepRow}, {40, keepBatch}, {5, keepTransaction}};

long long now() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void keep(const Way &way, const Lot &lot) {
    const long long begun = now();
    const uint32_t code = way.keep(lot);
    const long long ended = now();
    if (code == ORMEL_OK) {
        std::printf("kept %lld %d\n", static_cast<long long>(lot.first), lot.size);
        return;
    }
    ORMEL_ERROR error = {};
    ORMEL_LastError(&error);
    std::printf("refused %lld %lld %lld %u %.200s\n", static_cast<long long>(lot.first), begun, ended, code,
                error.acText);
    std::getchar();
}

int write(int64_t run) {
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    int64_t id = run * kIdsOfRun;
    for (size_t turn = 0;; ++turn) {
        const Way &way = kWays[turn % std::size(kWays)];
        keep(way, {id, way.rows});
        id += way.rows;
    }
}

void print(const ORMEL_SELECT_RESULT &row) {
    int64_t id = 0;
    int64_t lot = 0;
    int32_t size = 0;
    ORMEL_ResultInt64Get(&row, 0, "id", &id);
    ORMEL_ResultInt64Get(&row, 0, "lot", &lot);
    ORMEL_ResultInt32Get(&row, 0, "size", &size);
    std::printf("%lld\t%lld\t%d\t%s\t%s\n", static_cast<long long>(id), static_cast<long long>(lot), size,
                ORMEL_ResultStrGet(&row, 0, "name"), ORMEL_ResultTextGet(&row, 0, "body"));
}

int list(int32_t run) {
    ORMEL_OBJECT which = {};
    ORMEL_ObjectNameSet(&which, "kept");
    ORMEL_ObjectInt32Set(&which, "run", run);
    ORMEL_TRANS *cursor = ORMEL_BeginSelectSpecifyField(&which, __func__, __LINE__);
    ORMEL_ObjectParaClear(&which);
    if (cursor == nullptr)
        return EXIT_FAILURE;
    ORMEL_SELECT_RESULT row = {};
    uint32_t code = ORMEL_OK;
    while ((code = ORMEL_FetchSelectRecEx(cursor, &row)) == ORMEL_OK) {
        print(row);
        ORMEL_SelectResultClearForFetch(&row);
    }
    ORMEL_SelectResultClearForFetch(&row);
    return ORMEL_EndSelect(cursor) == ORMEL_OK && code == ORMEL_END_OF_DATA ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3 || ORMEL_Init() != ORMEL_OK)
        return EXIT_FAILURE;
    const int run = std::atoi(argv[2]);
    const int status = std::strcmp(argv[1], "list") == 0 ? list(run) : write(run);
    ORMEL_UnInit();
    return status;
}
