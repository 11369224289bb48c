// Rows: fetching them, results and their cells, select results.
#include "operation.h"

namespace fault {

namespace {

const char *const kReadsResult = "reads a result in memory";
const char *const kFrees = "gives blocks back";

// The filler of a result sets its counts, by which it is cleared.
DB_RESULT *Counted(DB_RESULT *result) {
    if (result != nullptr) {
        result->uiRowCount = 2;
        result->uiFieldCount = 3;
    }
    return result;
}

// A row that fails keeps what it says of its columns, and no values.
void ExpectNoValues(Scene &s) {
    for (const DB_FIELD &cell : s.out.cells) {
        EXPECT_EQ(cell.pValue, nullptr);
        EXPECT_EQ(cell.uiLength, 0u);
    }
    std::memset(s.out.cells, 0, sizeof(s.out.cells));
}

uint32_t Same(const void *a, const void *b) {
    return a == b ? ORMEL_OK : kNull;
}

void *Value(const Scene &s, uint32_t row, int32_t column) {
    return s.rows->ppRows[row][column].pValue;
}

const Operations kFetches = {
    {.name = "dbGetFieldAttr",
     .needs = kQuery,
     .run = [](Scene &s) { return dbGetFieldAttr(s.stmt, 1, &s.out.cells[0]); },
     .client = {kStatus}},
    {.name = "dbMallocResult",
     .run = [](Scene &s) { return s.Made(Counted(dbMallocResult(2, 3))); },
     .memory = {kNull}},
    {.name = "dbMoveNext",
     .needs = kQuery,
     .run = [](Scene &s) { return dbMoveNext(s.stmt); },
     .success = 1,
     .client = {0}},
    {.name = "dbGetFields",
     .needs = kRow,
     .run = [](Scene &s) { return dbGetFields(s.stmt, s.out.cells, 4); },
     .client = {ORMEL_INVALID},
     .memory = {ORMEL_INVALID},
     .tolerates = {"get_column_by_id", "desc_column_by_id"},
     .failed = ExpectNoValues},
    {.name = "dbGetResult",
     .needs = kQuery,
     .run = [](Scene &s) { return s.Made(dbGetResult(s.stmt, "PARTS")); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = kReading},
    {.name = "dbGetResultWithCount",
     .needs = kQuery,
     .run = [](Scene &s) { return s.Made(dbGetResultWithCount(s.stmt, "PARTS", 2)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = {"fetch", "get_column_by_id", "desc_column_by_id"}},
    {.name = "dbGetResultWithCount",
     .form = "more than there are",
     .needs = kQuery,
     .run = [](Scene &s) { return s.Made(dbGetResultWithCount(s.stmt, "PARTS", 4)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = {"fetch", "get_column_by_id", "desc_column_by_id"}},
    {.name = "dbGetFetchResult",
     .needs = kQuery,
     .run = [](Scene &s) { return s.Made(dbGetFetchResult(s.stmt)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = {"get_column_by_id", "desc_column_by_id"}},
};

// Functions of a result, a row and a column, or a name, that give an address: here that of the first part's name.
using ByPos = void *(*)(const ORMEL_SELECT_RESULT *, uint32_t, int32_t);
using ByName = void *(*)(const ORMEL_SELECT_RESULT *, uint32_t, const char *);

const std::pair<const char *, ByPos> kByPos[] = {
    {"ORMEL_ResultBinaryGetByPos", ORMEL_ResultBinaryGetByPos},
    {"ORMEL_ResultTextGetByPos",
     [](auto r, auto row, auto pos) -> void * { return ORMEL_ResultTextGetByPos(r, row, pos); }},
    {"ORMEL_ResultJsonGetByPos",
     [](auto r, auto row, auto pos) -> void * { return ORMEL_ResultJsonGetByPos(r, row, pos); }},
    {"ORMEL_ResultJsonbGetByPos",
     [](auto r, auto row, auto pos) -> void * { return ORMEL_ResultJsonbGetByPos(r, row, pos); }},
    {"ORMEL_ResultGetFieldValue", ORMEL_ResultGetFieldValue}};

const std::pair<const char *, ByName> kByName[] = {
    {"ORMEL_ResultBinaryGet", ORMEL_ResultBinaryGet},
    {"ORMEL_ResultStrGet", [](auto r, auto row, auto name) -> void * { return ORMEL_ResultStrGet(r, row, name); }},
    {"ORMEL_ResultTextGet", [](auto r, auto row, auto name) -> void * { return ORMEL_ResultTextGet(r, row, name); }},
    {"ORMEL_ResultJsonGet", [](auto r, auto row, auto name) -> void * { return ORMEL_ResultJsonGet(r, row, name); }},
    {"ORMEL_ResultJsonbGet", [](auto r, auto row, auto name) -> void * { return ORMEL_ResultJsonbGet(r, row, name); }}};

// Those that answer a number or store one.
const struct {
    const char *name;
    uint32_t success;
    uint32_t (*run)(Scene &);
} kNumbers[] = {
    {"dbCheckTupleField", 1, [](Scene &s) { return dbCheckTupleField(s.rows.get(), 1, 3); }},
    {"dbGetValueFromRes", 0, [](Scene &s) { return Same(dbGetValueFromRes(s.rows.get(), 0, 1), Value(s, 0, 1)); }},
    {"dbGetLengthFromRes", 4, [](Scene &s) { return dbGetLengthFromRes(s.rows.get(), 0, 1); }},
    {"dbGetTypeFromRes", 9, [](Scene &s) { return dbGetTypeFromRes(s.rows.get(), 0, 1); }},
    {"dbGetNameFromRes", 0,
     [](Scene &s) { return Same(dbGetNameFromRes(s.rows.get(), 0, 1), s.rows->ppRows[0][1].acName); }},
    {"dbGetNtuples", 2, [](Scene &s) { return dbGetNtuples(s.rows.get()); }},
    {"dbGetNfields", 4, [](Scene &s) { return dbGetNfields(s.rows.get()); }},
    {"ORMEL_SelectResultRecNumGet", 2, [](Scene &s) { return ORMEL_SelectResultRecNumGet(&s.selected); }},
    {"ORMEL_ResultGetFieldNum", 4, [](Scene &s) { return ORMEL_ResultGetFieldNum(&s.selected); }},
    {"ORMEL_ResultGetFieldLengthByPos", 4, [](Scene &s) { return ORMEL_ResultGetFieldLengthByPos(&s.selected, 0, 1); }},
    {"ORMEL_ResultGetFieldLength", 4, [](Scene &s) { return ORMEL_ResultGetFieldLength(&s.selected, 0, "NAME"); }},
    {"ORMEL_ResultGetFieldType", 9, [](Scene &s) { return ORMEL_ResultGetFieldType(&s.selected, 1); }},
    {"ORMEL_ResultGetFieldOffset", 21, [](Scene &s) { return ORMEL_ResultGetFieldOffset(&s.selected, 1); }},
    {"ORMEL_ResultSetFieldValue", 0,
     [](Scene &s) { return ORMEL_ResultSetFieldValue(&s.selected, 0, 1, s.out.bytes); }},
    {"ORMEL_ResultNumberGet", 0,
     [](Scene &s) { return ORMEL_ResultNumberGet(&s.selected, 0, "ID", &s.out.number, QDC_TYPE_INT32); }},
    {"ORMEL_ResultInt8Get", 0, [](Scene &s) { return ORMEL_ResultInt8Get(&s.selected, 0, "ID", &s.out.integer); }},
    {"ORMEL_ResultInt16Get", 0, [](Scene &s) { return ORMEL_ResultInt16Get(&s.selected, 0, "ID", &s.out.integer); }},
    {"ORMEL_ResultInt32Get", 0, [](Scene &s) { return ORMEL_ResultInt32Get(&s.selected, 0, "ID", &s.out.integer); }},
    {"ORMEL_ResultInt64Get", 0, [](Scene &s) { return ORMEL_ResultInt64Get(&s.selected, 0, "ID", &s.out.number); }},
    {"ORMEL_ResultDiffFieldsGet", 0,
     [](Scene &s) {
         ORMEL_SELECT_RESULT one = s.selected;
         one.uiRecNum = 1;
         return ORMEL_ResultDiffFieldsGet(&one, &one, s.out.names, 8, &s.out.fields);
     }},
    {"ORMEL_ResultConvertDsBuf", 0,
     [](Scene &s) {
         s.out.buffer.usRecLen = 4 + 21 + 44 + 44;
         s.out.buffer.usRecNum = 2;
         return ORMEL_ResultConvertDsBuf(&s.selected, &s.out.buffer, 0);
     }},
    {"ORMEL_CreatDsbufByRes", 0,
     [](Scene &s) {
         s.out.buffer.usRecLen = 4 + 21 + 44 + 44;
         return ORMEL_CreatDsbufByRes(&s.out.buffer, s.rows.get(), s.parts.get());
     }},
    {"ORMEL_CreatDsbufRangeByRes", 0,
     [](Scene &s) {
         s.out.buffer.usRecLen = 4 + 21 + 44 + 44;
         s.out.buffer.usRecNum = 2;
         return ORMEL_CreatDsbufRangeByRes(&s.out.buffer, 0, s.rows.get(), s.parts.get());
     }},
    {"dbSetFieldValue", 7,
     [](Scene &s) {
         dbSetFieldValue(&s.out.integer, Value(s, 0, 0), 4, QDC_TYPE_INT32);
         return uint32_t(s.out.integer);
     }},
    {"getFieldValue", 0, [](Scene &s) { return Same(getFieldValue(Value(s, 0, 0), s.out.bytes, 4), s.out.bytes); }},
    {"dbValueShow", 0,
     [](Scene &s) {
         dbValueShow(QDC_TYPE_VARCHAR, Value(s, 0, 1), 4);
         return ORMEL_OK;
     }},
    {"ORMEL_SelectResultSet", 0,
     [](Scene &s) {
         ORMEL_SELECT_RESULT other = {};
         ORMEL_SelectResultSet(&other, s.parts.get(), s.rows.get(), 2);
         return Same(other.pstRes, s.rows.get());
     }},
};

// Those that free; of the descriptor, which is given back, the cache takes a copy.
const struct {
    const char *name;
    void (*run)(Scene &);
    int forgives;
} kClearings[] = {
    {"dbFieldClear", [](Scene &s) { dbFieldClear(s.rows->ppRows[0], 4); }, 0},
    {"dbResClear", [](Scene &s) { dbResClear(s.rows.release()); }, 0},
    {"ORMEL_SelectResultClear",
     [](Scene &s) {
         s.selected = {s.parts.release(), s.rows.release(), 2};
         ORMEL_SelectResultClear(&s.selected);
     },
     1},
    {"ORMEL_SelectResultClearForFetch",
     [](Scene &s) {
         s.selected.pstRes = s.rows.release();
         ORMEL_SelectResultClearForFetch(&s.selected);
     },
     0},
};

} // namespace

void AddFetches(Operations &all) {
    all.insert(all.end(), kFetches.begin(), kFetches.end());
}

void AddResults(Operations &all) {
    const Operation reads = {.safe = kReadsResult, .needs = kResult};
    for (const auto &[name, get] : kByPos) {
        all.push_back(reads);
        all.back().name = name;
        all.back().run = [get = get](Scene &s) { return Same(get(&s.selected, 0, 1), Value(s, 0, 1)); };
    }
    for (const auto &[name, get] : kByName) {
        all.push_back(reads);
        all.back().name = name;
        all.back().run = [get = get](Scene &s) { return Same(get(&s.selected, 0, "NAME"), Value(s, 0, 1)); };
    }
    for (const auto &number : kNumbers) {
        all.push_back(reads);
        all.back().name = number.name;
        all.back().run = number.run;
        all.back().success = number.success;
    }
    for (const auto &clearing : kClearings) {
        const auto clear = [run = clearing.run](Scene &s) {
            run(s);
            return ORMEL_OK;
        };
        all.push_back({.name = clearing.name,
                       .safe = kFrees,
                       .needs = kResult,
                       .run = clear,
                       .forgives = clearing.forgives,
                       .consumes = true});
    }
}

} // namespace fault
