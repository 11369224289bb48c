// What servers call to write, in its variants.
#include "variants.h"

namespace fault {

namespace {

constexpr uint32_t kTable = ORMEL_ERR_TABLE;
constexpr uint32_t kNoResult = ORMEL_ERR_NO_RESULT;

const Codes kByRecord = {kTable, kNoResult};
const Codes kByObject = {ORMEL_ERR_OBJ_TABLE, kNoResult};
const Codes kChecked = {ORMEL_ERR_OBJ_TABLE, ORMEL_ERR_CHECK, kNoResult};

const Variants kWrites[] = {
    {.plain = "ORMEL_InsertRec",
     .forConn = "ORMEL_InsertRecForConn",
     .forTrans = "ORMEL_InsertRecForTrans",
     .onOwn = [](Scene &s) { return ORMEL_InsertRec("PERSON", &s.record); },
     .onConn = [](Scene &s, void *conn) { return ORMEL_InsertRecForConn(conn, "PERSON", &s.record); },
     .onSlot = [](Scene &s) { return ORMEL_InsertRecForTrans(s.slot, "PERSON", &s.record); },
     .writes = true,
     .client = kByRecord,
     .memory = kByRecord,
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
     .client = kByRecord,
     .memory = kByRecord,
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
     .client = kByRecord,
     .memory = kByRecord,
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
     .client = kChecked,
     .memory = kByObject,
     .tolerates = kParameterRows + kAffected,
     .noConnection = kNoResult},
    {.plain = "ORMEL_DeleteRecByObj",
     .forConn = "ORMEL_DeleteRecForConn2",
     .forTrans = "ORMEL_DeleteRecByObjForTrans",
     .onOwn = [](Scene &s) { return ORMEL_DeleteRecByObj(&s.where, &s.out.count); },
     .onConn = [](Scene &s, void *conn) { return ORMEL_DeleteRecForConn2(conn, &s.where, &s.out.count); },
     .onSlot = [](Scene &s) { return ORMEL_DeleteRecByObjForTrans(s.slot, &s.where, &s.out.count); },
     .writes = true,
     .client = kChecked,
     .memory = kByObject,
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
     .client = kChecked,
     .memory = kByObject,
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
     .client = kChecked,
     .memory = kByObject,
     .tolerates = kParameterRows + kAffected,
     .noConnection = kNoResult,
     .forgives = 1 + 1 + 2 * 2 + 2 * 3,
     .needs = kMulti,
     .exception = Exception::silence},
};

} // namespace

void AddWrites(Operations &all) {
    for (const Variants &variants : kWrites) {
        Add(all, variants);
    }
}

} // namespace fault
