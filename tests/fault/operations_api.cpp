// What servers call, in its variants: writes, selects, cursors.
#include "operation.h"

namespace fault {

namespace {

constexpr uint32_t kTable = ORMEL_ERR_TABLE;
constexpr uint32_t kNoResult = ORMEL_ERR_NO_RESULT;

// An operation and its variants. Its body works on a connection; the plain variant opens one of its own; the third
// works on a slot.
struct Variants {
    std::string plain, forConn, forTrans; // names; none: there is no such variant
    std::string form = {};
    uint32_t (*onOwn)(Scene &);
    uint32_t (*onConn)(Scene &, void *conn);
    uint32_t (*onSlot)(Scene &);
    bool writes;
    Codes client, memory;  // of the body
    Names tolerates;       // of the body
    uint32_t noConnection; // the plain variant's code
    int forgives = 1;      // the cache's copy of the descriptor
    unsigned needs = kNothing;
    bool describes = true;
    Exception exception = Exception::none;
    bool counts = false; // tells how many rows it wrote
};

// What the statement counted has reached its caller when the commit is refused.
void ForgetCount(Scene &s) {
    if (unit::Client().Count("commit") > 0) {
        EXPECT_LE(s.out.count, 1u);
        s.out.LayOut();
    }
}

void Add(Operations &all, const Variants &v) {
    Operation op = {.form = v.form,
                    .needs = v.needs,
                    .client = v.client,
                    .memory = v.memory,
                    .tolerates = v.tolerates + kFreeing,
                    .forgives = v.forgives,
                    .describes = v.describes,
                    .exception = v.exception};
    op.name = v.forConn;
    op.needs = v.needs | kConn;
    op.run = [run = v.onConn](Scene &s) { return run(s, s.conn); };
    all.push_back(op);
    if (!v.forTrans.empty()) {
        op.name = v.forTrans;
        op.needs = v.needs | kSlot;
        op.run = v.onSlot;
        all.push_back(op);
    }
    op.name = v.plain;
    op.needs = v.needs;
    op.run = v.onOwn;
    op.client.insert(v.noConnection);
    if (v.writes) {
        op.client.insert(kStatus); // of the commit
        op.failed = v.counts ? ForgetCount : nullptr;
    }
    op.tolerates = op.tolerates + kClosing;
    all.push_back(op);
}

} // namespace

void AddWrites(Operations &all) {
    const Codes byRecord = {kTable, kNoResult};
    const Codes byObject = {ORMEL_ERR_OBJ_TABLE, kNoResult};
    const Codes checked = {ORMEL_ERR_OBJ_TABLE, ORMEL_ERR_CHECK, kNoResult};
    const Variants family[] = {
        {.plain = "ORMEL_InsertRec",
         .forConn = "ORMEL_InsertRecForConn",
         .forTrans = "ORMEL_InsertRecForTrans",
         .onOwn = [](Scene &s) { return ORMEL_InsertRec("PERSON", &s.record); },
         .onConn = [](Scene &s, void *conn) { return ORMEL_InsertRecForConn(conn, "PERSON", &s.record); },
         .onSlot = [](Scene &s) { return ORMEL_InsertRecForTrans(s.slot, "PERSON", &s.record); },
         .writes = true,
         .client = byRecord,
         .memory = byRecord,
         .tolerates = kDescribing + kParameterRows + kAffected,
         .noConnection = kNoResult},
        {.plain = "ORMEL_DeleteRec",
         .forConn = "ORMEL_DeleteRecForConn",
         .forTrans = "ORMEL_DeleteRecForTrans",
         .onOwn = [](Scene &s) { return ORMEL_DeleteRec("PERSON", s.conditions.Get(), &s.out.count); },
         .onConn = [](Scene &s,
                      void *conn) { return ORMEL_DeleteRecForConn(conn, "PERSON", s.conditions.Get(), &s.out.count); },
         .onSlot = [](Scene &s) { return ORMEL_DeleteRecForTrans(s.slot, "PERSON", s.conditions.Get(), &s.out.count); },
         .writes = true,
         .client = byRecord,
         .memory = byRecord,
         .tolerates = kDescribing + kAffected,
         .noConnection = kNoResult,
         .counts = true},
        {.plain = "ORMEL_UpdateRec",
         .forConn = "ORMEL_UpdateRecForConn",
         .forTrans = "ORMEL_UpdateRecForTrans",
         .onOwn =
             [](Scene &s) {
                 return ORMEL_UpdateRec("PERSON", s.selection.Get(), &s.record, s.conditions.Get(), &s.out.count);
             },
         .onConn =
             [](Scene &s, void *conn) {
                 return ORMEL_UpdateRecForConn(conn, "PERSON", s.selection.Get(), &s.record, s.conditions.Get(),
                                               &s.out.count);
             },
         .onSlot =
             [](Scene &s) {
                 return ORMEL_UpdateRecForTrans(s.slot, "PERSON", s.selection.Get(), &s.record, s.conditions.Get(),
                                                &s.out.count);
             },
         .writes = true,
         .client = byRecord,
         .memory = byRecord,
         .tolerates = kDescribing + kAffected,
         .noConnection = kNoResult,
         .counts = true},
        {.plain = "ORMEL_InsertRecFormObj",
         .forConn = "ORMEL_InsertRecForConn2",
         .forTrans = "ORMEL_InsertRecByObjForTrans",
         .onOwn = [](Scene &s) { return ORMEL_InsertRecFormObj(&s.part); },
         .onConn = [](Scene &s, void *conn) { return ORMEL_InsertRecForConn2(conn, &s.part); },
         .onSlot = [](Scene &s) { return ORMEL_InsertRecByObjForTrans(s.slot, &s.part); },
         .writes = true,
         .client = checked,
         .memory = byObject,
         .tolerates = kParameterRows + kAffected,
         .noConnection = kNoResult},
        {.plain = "ORMEL_DeleteRecByObj",
         .forConn = "ORMEL_DeleteRecForConn2",
         .forTrans = "ORMEL_DeleteRecByObjForTrans",
         .onOwn = [](Scene &s) { return ORMEL_DeleteRecByObj(&s.where, &s.out.count); },
         .onConn = [](Scene &s, void *conn) { return ORMEL_DeleteRecForConn2(conn, &s.where, &s.out.count); },
         .onSlot = [](Scene &s) { return ORMEL_DeleteRecByObjForTrans(s.slot, &s.where, &s.out.count); },
         .writes = true,
         .client = checked,
         .memory = byObject,
         .tolerates = kDescribing + kAffected,
         .noConnection = kNoResult,
         .counts = true},
        {.plain = "ORMEL_UpdateRecByObj",
         .forConn = "ORMEL_UpdateRecForConn2",
         .forTrans = "ORMEL_UpdateRecByObjForTrans",
         .onOwn = [](Scene &s) { return ORMEL_UpdateRecByObj(&s.part, &s.where, &s.out.count); },
         .onConn = [](Scene &s, void *conn) { return ORMEL_UpdateRecForConn2(conn, &s.part, &s.where, &s.out.count); },
         .onSlot = [](Scene &s) { return ORMEL_UpdateRecByObjForTrans(s.slot, &s.part, &s.where, &s.out.count); },
         .writes = true,
         .client = checked,
         .memory = byObject,
         .tolerates = kAffected,
         .noConnection = kNoResult,
         .counts = true},
        // Of its allocations the batch and its arrays are forgiven as well: two for each column, three for large ones.
        {.plain = "ORMEL_PatchInsertRecFormObj",
         .forConn = "ORMEL_PatchInsertRecForConn2",
         .forTrans = "ORMEL_PatchInsertRecFormObjForTrans",
         .onOwn = [](Scene &s) { return ORMEL_PatchInsertRecFormObj(s.multi); },
         .onConn = [](Scene &s, void *conn) { return ORMEL_PatchInsertRecForConn2(conn, s.multi); },
         .onSlot = [](Scene &s) { return ORMEL_PatchInsertRecFormObjForTrans(s.slot, s.multi); },
         .writes = true,
         .client = checked,
         .memory = byObject,
         .tolerates = kParameterRows + kAffected,
         .noConnection = kNoResult,
         .forgives = 1 + 1 + 2 * 2 + 2 * 3,
         .needs = kMulti,
         .exception = Exception::silence},
    };
    for (const Variants &variants : family) {
        Add(all, variants);
    }
}

void AddSelects(Operations &all) {
    const Variants family[] = {
        {.plain = "ORMEL_LocalExistRecord",
         .forConn = "ORMEL_LocalExistRecordForConn",
         .forTrans = "ORMEL_LocalExistRecordForTrans",
         .onOwn = [](Scene &s) { return ORMEL_LocalExistRecord("PERSON", s.conditions.Get(), &s.out.count); },
         .onConn =
             [](Scene &s, void *conn) {
                 return ORMEL_LocalExistRecordForConn(conn, "PERSON", s.conditions.Get(), &s.out.count);
             },
         .onSlot =
             [](Scene &s) {
                 return ORMEL_LocalExistRecordForTrans(s.slot, "PERSON", s.conditions.Get(), &s.out.count);
             },
         .writes = false,
         .client = {kNoResult},
         .memory = {kNoResult},
         .tolerates = kReading,
         .noConnection = kNoResult},
        {.plain = "ORMEL_SelectRec",
         .forConn = "ORMEL_SelectRecForConn",
         .forTrans = "ORMEL_SelectRecForTrans",
         .onOwn = [](Scene &s) { return ORMEL_SelectRec("PERSON", s.conditions.Get(), 0, &s.out.buffer); },
         .onConn =
             [](Scene &s, void *conn) {
                 return ORMEL_SelectRecForConn(conn, "PERSON", s.conditions.Get(), 0, &s.out.buffer);
             },
         .onSlot =
             [](Scene &s) { return ORMEL_SelectRecForTrans(s.slot, "PERSON", s.conditions.Get(), 0, &s.out.buffer); },
         .writes = false,
         .client = {kTable, kNoResult},
         .memory = {kTable, kNoResult},
         .tolerates = kReading,
         .noConnection = kNoResult},
        {.plain = "ORMEL_SelectRec2",
         .forConn = "ORMEL_SelectRecForConn2",
         .forTrans = "ORMEL_SelectRecForTrans2",
         .onOwn = [](Scene &s) { return ORMEL_SelectRec2("PERSON", s.conditions.Get(), 0, &s.out.result); },
         .onConn =
             [](Scene &s, void *conn) {
                 return ORMEL_SelectRecForConn2(conn, "PERSON", s.conditions.Get(), 0, &s.out.result);
             },
         .onSlot =
             [](Scene &s) { return ORMEL_SelectRecForTrans2(s.slot, "PERSON", s.conditions.Get(), 0, &s.out.result); },
         .writes = false,
         .client = {kTable},
         .memory = {kTable},
         .tolerates = kReading,
         .noConnection = kNoResult},
        {.plain = "ORMEL_SelectRecByObj",
         .forConn = "ORMEL_SelectRecForConn3",
         .forTrans = "ORMEL_SelectRecByObjForTrans",
         .onOwn = [](Scene &s) { return ORMEL_SelectRecByObj(&s.where, &s.out.result); },
         .onConn = [](Scene &s, void *conn) { return ORMEL_SelectRecForConn3(conn, &s.where, &s.out.result); },
         .onSlot = [](Scene &s) { return ORMEL_SelectRecByObjForTrans(s.slot, &s.where, &s.out.result); },
         .writes = false,
         .client = {kTable, ORMEL_ERR_CHECK},
         .memory = {kTable},
         .tolerates = kReading,
         .noConnection = kTable,
         .forgives = 0},
        {.plain = "ORMEL_SelectRecByObj",
         .forConn = "ORMEL_SelectRecForConn3",
         .forTrans = "ORMEL_SelectRecByObjForTrans",
         .form = "fields",
         .onOwn = [](Scene &s) { return ORMEL_SelectRecByObj(&s.some, &s.out.result); },
         .onConn = [](Scene &s, void *conn) { return ORMEL_SelectRecForConn3(conn, &s.some, &s.out.result); },
         .onSlot = [](Scene &s) { return ORMEL_SelectRecByObjForTrans(s.slot, &s.some, &s.out.result); },
         .writes = false,
         .client = {kTable, ORMEL_ERR_CHECK},
         .memory = {kTable},
         .tolerates = kReading,
         .noConnection = kTable,
         .exception = Exception::rows},
        {.plain = "ORMEL_SelectBatchRecByObj",
         .forConn = "ORMEL_SelectBatchRecForConn",
         .forTrans = "",
         .onOwn = [](Scene &s) { return ORMEL_SelectBatchRecByObj(&s.where, &s.out.result); },
         .onConn = [](Scene &s, void *conn) { return ORMEL_SelectBatchRecForConn(conn, &s.where, &s.out.result); },
         .onSlot = nullptr,
         .writes = false,
         .client = {kTable, ORMEL_ERR_CHECK, kNoResult},
         .memory = {kTable, kNoResult},
         .tolerates = kReading,
         .noConnection = kTable,
         .forgives = 0},
    };
    for (const Variants &variants : family) {
        Add(all, variants);
    }
    const Operations others = {
        {.name = "ORMEL_GetBatchSelectCount",
         .needs = kConn | kSetAndWhere,
         .run = [](Scene &s) { return ORMEL_GetBatchSelectCount(s.conn, "PARTS", &s.para, &s.out.count); },
         .client = {kNoResult},
         .memory = {kNoResult},
         .tolerates = kReading + kFreeing},
        {.name = "ORMEL_GetAllFieldForCache",
         .safe = "asks nobody but the cache",
         .needs = kCached,
         .run = [](Scene &s) { return ORMEL_GetAllFieldForCache("PARTS", s.out.names, 8, &s.out.fields); }},
        {.name = "ORMEL_GetAllFieldForConn",
         .needs = kConn,
         .run = [](Scene &s) { return ORMEL_GetAllFieldForConn(s.conn, "PARTS", s.out.names, 8, &s.out.fields); },
         .client = {kTable},
         .memory = {kTable},
         .tolerates = kDescribing + kFreeing,
         .forgives = 1,
         .describes = true},
        {.name = "ORMEL_AllFieldsGet",
         .run = [](Scene &s) { return ORMEL_AllFieldsGet("PARTS", s.out.names, 8, &s.out.fields); },
         .client = {kNoResult, kTable},
         .memory = {kTable},
         .tolerates = kDescribing + kFreeing + kClosing,
         .forgives = 1,
         .describes = true},
    };
    all.insert(all.end(), others.begin(), others.end());
}

void AddCursors(Operations &all) {
    const Operations family = {
        {.name = "ORMEL_BeginSelect",
         .run = [](Scene &s) { return s.Made(ORMEL_BeginSelect("PARTS", "f", 1)); },
         .client = {kNull},
         .memory = {kNull},
         .tolerates = kDescribing + kFreeing,
         .describes = true,
         .exception = Exception::commit},
        {.name = "ORMEL_BeginSelectSpecifyField",
         .run = [](Scene &s) { return s.Made(ORMEL_BeginSelectSpecifyField(&s.where, "f", 1)); },
         .client = {kNull},
         .memory = {kNull},
         .tolerates = kDescribing + kFreeing,
         .describes = true,
         .exception = Exception::commit},
        {.name = "ORMEL_BeginSelectSpecifyField",
         .form = "fields",
         .run = [](Scene &s) { return s.Made(ORMEL_BeginSelectSpecifyField(&s.some, "f", 1)); },
         .client = {kNull},
         .memory = {kNull},
         .tolerates = kDescribing + kFreeing,
         .forgives = 1,
         .describes = true,
         .exception = Exception::commit},
        {.name = "dbBeginFetchSpecifyField",
         .needs = kSelectSlot,
         .run = [](Scene &s) { return dbBeginFetchSpecifyField(s.slot, &s.some); },
         .client = {kTable},
         .memory = {kTable},
         .undo =
             [](Scene &s) {
                 dbFreeStmt(ORMEL_TransGetStmt(s.slot));
                 ORMEL_TransSetStmt(s.slot, nullptr);
             }},
        {.name = "ORMEL_FetchSelectRec",
         .needs = kCursor,
         .run = [](Scene &s) { return ORMEL_FetchSelectRec(s.slot, &s.out.buffer); },
         .client = {kNoResult},
         .memory = {kNoResult},
         .tolerates = {"get_column_by_id", "desc_column_by_id"}},
        {.name = "ORMEL_FetchSelectRecEx",
         .needs = kCursor,
         .run = [](Scene &s) { return ORMEL_FetchSelectRecEx(s.slot, &s.out.result); },
         .client = {kTable},
         .memory = {kTable},
         .tolerates = {"get_column_by_id", "desc_column_by_id"}},
        {.name = "ORMEL_EndSelect",
         .needs = kCursor,
         .run = [](Scene &s) { return ORMEL_EndSelect(std::exchange(s.slot, nullptr)); },
         .client = {ORMEL_ERR_FAILED},
         .tolerates = kFreeing + kClosing,
         .forgives = 1,
         .consumes = true},
    };
    all.insert(all.end(), family.begin(), family.end());
}

} // namespace fault
