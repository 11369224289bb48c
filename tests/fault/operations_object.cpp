// Requests: objects, parameter lists, batches.
#include "operation.h"

namespace fault {

namespace {

const char *const kInPlace = "works on its caller's memory";
const char *const kFrees = "gives blocks back";

const Operations kBatches = {
    {.name = "ORMEL_Multi_object_Init",
     .run = [](Scene &s) { return s.Made(ORMEL_Multi_object_Init("PARTS", 2)); },
     .memory = {kNull}},
    {.name = "ORMEL_Multi_object_UnInit",
     .safe = kFrees,
     .needs = kMulti,
     .run =
         [](Scene &s) {
             ORMEL_Multi_object_UnInit(std::exchange(s.multi, nullptr));
             return ORMEL_OK;
         },
     .consumes = true},
    {.name = "ORMEL_BatchInsert_Para_Malloc",
     .needs = kMulti,
     .run = [](Scene &s) { return s.Made(ORMEL_BatchInsert_Para_Malloc(4, s.multi)); },
     .memory = {kNull}},
    {.name = "ORMEL_BatchInsert_Para_Free",
     .safe = kFrees,
     .needs = kBatch,
     .run =
         [](Scene &s) {
             ORMEL_BatchInsert_Para_Free(std::exchange(s.batch, nullptr));
             return ORMEL_OK;
         },
     .consumes = true},
    {.name = "ORMEL_SetBatchParaByObject",
     .safe = kInPlace,
     .needs = kBatch,
     .run = [](Scene &s) { return ORMEL_SetBatchParaByObject(s.batch, s.multi, s.parts.get()); }},
    {.name = "ORMEL_SetBatchParaData",
     .safe = kInPlace,
     .needs = kBatch,
     .run =
         [](Scene &s) {
             ORMEL_SetBatchParaData(&s.batch->astItem[0], &s.person.id, 4, QDC_TYPE_INT32, 0);
             return ORMEL_OK;
         }},
    {.name = "ORMEL_SetBatchParaLobData",
     .safe = kInPlace,
     .needs = kBatch,
     .run =
         [](Scene &s) {
             ORMEL_SetBatchParaLobData(&s.batch->astItem[2], s.part.astItem[2].pValue, 4, QDC_TYPE_CLOB, 0);
             return ORMEL_OK;
         }},
    {.name = "dbPatchInsertRec",
     .needs = kConn | kBatch,
     .run = [](Scene &s) { return s.Made(dbPatchInsertRec(s.conn, "PARTS", s.batch)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = kParameterRows + kAffected + kFreeing},
    {.name = "dbBatchWriteLob",
     .needs = kPrepared | kBatch,
     .run =
         [](Scene &s) {
             uint8_t slots[32] = {};
             uint16_t lengths[2] = {16, 16};
             return dbBatchWriteLob(s.stmt, 2, &s.batch->astItem[2], slots, lengths);
         },
     .client = {kStatus}},
};

const std::pair<const char *, uint32_t (*)(ORMEL_OBJECT *)> kSetters[] = {
    {"ORMEL_ObjectBinarySet", [](ORMEL_OBJECT *o) { return ORMEL_ObjectBinarySet(o, "PHOTO", "bytes", 5); }},
    {"ORMEL_ObjectInt8Set", [](ORMEL_OBJECT *o) { return ORMEL_ObjectInt8Set(o, "ID", 7); }},
    {"ORMEL_ObjectInt16Set", [](ORMEL_OBJECT *o) { return ORMEL_ObjectInt16Set(o, "ID", 7); }},
    {"ORMEL_ObjectInt32Set", [](ORMEL_OBJECT *o) { return ORMEL_ObjectInt32Set(o, "ID", 7); }},
    {"ORMEL_ObjectInt64Set", [](ORMEL_OBJECT *o) { return ORMEL_ObjectInt64Set(o, "ID", 7); }},
    {"ORMEL_ObjectStrSet", [](ORMEL_OBJECT *o) { return ORMEL_ObjectStrSet(o, "NAME", "cog"); }},
    {"ORMEL_ObjectJsonSet", [](ORMEL_OBJECT *o) { return ORMEL_ObjectJsonSet(o, "NAME", "{}"); }},
    {"ORMEL_ObjectJsonbSet", [](ORMEL_OBJECT *o) { return ORMEL_ObjectJsonbSet(o, "NAME", "{}"); }},
    {"ORMEL_ObjectTextSet", [](ORMEL_OBJECT *o) { return ORMEL_ObjectTextSet(o, "NOTE", "text"); }},
    {"ORMEL_ObjectStrOptionLikeSet", [](ORMEL_OBJECT *o) { return ORMEL_ObjectStrOptionLikeSet(o, "NAME", "c%"); }},
    {"ORMEL_ObjectSelectFieldSet", [](ORMEL_OBJECT *o) { return ORMEL_ObjectSelectFieldSet(o, "NAME"); }},
};

const std::pair<const char *, uint32_t (*)(Scene &)> kInPlaceFunctions[] = {
    {"ORMEL_ObjectNullSet", [](Scene &s) { return ORMEL_ObjectNullSet(&s.fresh, "NAME"); }},
    {"ORMEL_ObjectNameSet", [](Scene &s) { return ORMEL_ObjectNameSet(&s.fresh, "PARTS"); }},
    {"ORMEL_ObjectNameGet", [](Scene &s) { return uint32_t(std::strcmp(ORMEL_ObjectNameGet(&s.part), "PARTS")); }},
    {"ORMEL_ObjectNameSetForMulti", [](Scene &s) { return ORMEL_ObjectNameSetForMulti(s.multi, "PARTS"); }},
    {"ORMEL_ObjectNameGetForMulti",
     [](Scene &s) { return uint32_t(std::strcmp(ORMEL_ObjectNameGetForMulti(s.multi), "PARTS")); }},
    {"ORMEL_ObjectSelectRowCountSet", [](Scene &s) { return ORMEL_ObjectSelectRowCountSet(&s.fresh, 1, 2, 3); }},
    {"ORMEL_ObjectCheck", [](Scene &s) { return ORMEL_ObjectCheck(&s.part, s.parts.get()); }},
    {"ORMEL_ParaItemInit",
     [](Scene &s) {
         ORMEL_ParaItemInit(&s.para, 0, &s.record, &s.persons->astField[0]);
         return ORMEL_OK;
     }},
    {"ORMEL_ParaFieldUpdateByDsbuf",
     [](Scene &s) { return ORMEL_ParaFieldUpdateByDsbuf(&s.para, nullptr, &s.record, s.persons.get()); }},
    {"ORMEL_ParaCondUpdateByCond",
     [](Scene &s) { return ORMEL_ParaCondUpdateByCond(&s.para, s.conditions.Get(), s.persons.get()); }},
    {"ORMEL_ParaFieldUpdateByObject", [](Scene &s) { return ORMEL_ParaFieldUpdateByObject(&s.para, &s.part); }},
    {"ORMEL_ParaCondUpdateByObject", [](Scene &s) { return ORMEL_ParaCondUpdateByObject(&s.para, &s.some); }},
    {"ORMEL_ParaShow", [](Scene &s) { return ORMEL_ParaShow(&s.para); }},
    {"ORMEL_ParaValueShow",
     [](Scene &s) {
         ORMEL_ParaValueShow(QDC_TYPE_BINARY, &s.person, sizeof(s.person));
         return ORMEL_OK;
     }},
};

} // namespace

void AddObjects(Operations &all) {
    for (const auto &[name, set] : kSetters) {
        all.push_back({.name = name,
                       .run = [set = set](Scene &s) { return set(&s.fresh); },
                       .memory = {ORMEL_ERR_FAILED},
                       .failed =
                           [](Scene &s) {
                               EXPECT_EQ(s.fresh.iItemNum, 0);
                               EXPECT_EQ(s.fresh.iSelectFieldNum, 0);
                           }});
    }
    for (const auto &[name, run] : kInPlaceFunctions) {
        all.push_back({.name = name, .safe = kInPlace, .needs = kMulti, .run = run});
    }
    all.push_back({.name = "ORMEL_ObjectParaClear",
                   .safe = kFrees,
                   .run =
                       [](Scene &s) {
                           ORMEL_ObjectParaClear(&s.some);
                           return ORMEL_OK;
                       },
                   .consumes = true});
}

void AddBatches(Operations &all) {
    all.insert(all.end(), kBatches.begin(), kBatches.end());
}

} // namespace fault
