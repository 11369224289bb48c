#include "ormeldb/batch.h"

#include <cstdlib>
#include <memory>

#include "api/variant.h"
#include "dao/owners.h"

using ormel::Commit;
using ormel::onOwnConnection;
using ormel::onSlot;
using ormel::present;
using ormel::Result;
using ormel::TableAttributes;

namespace {

constexpr char kLogFile[] = "ormel_api";

struct FreeBatch {
    void operator()(ORMEL_PARA_BATCH *batch) const { ORMEL_BatchInsert_Para_Free(batch); }
};
using Batch = std::unique_ptr<ORMEL_PARA_BATCH, FreeBatch>;

// Bytes of a container for some objects; more than 32 bits can count end the process.
size_t containerSize(int32_t objects) {
    int32_t size = 0;
    if (__builtin_mul_overflow(objects, static_cast<int32_t>(sizeof(ORMEL_OBJECT)), &size) ||
        __builtin_add_overflow(size, static_cast<int32_t>(sizeof(ORMEL_MULTI_OBJECT)), &size))
        std::abort();
    return static_cast<size_t>(size);
}

uint32_t checkObjects(const char *func, ORMEL_MULTI_OBJECT &multi, ORMEL_RES_ATT *att) {
    for (uint32_t row = 0; row < multi.uiRecNum; ++row)
        if (const uint32_t code = ORMEL_ObjectCheck(&multi.astObject[row], att); code != ORMEL_OK) {
            ORMEL_LOG_AS(func, KPL_LOG_ERROR, "PatchInsert ObjectCheck return: 0x%x", code);
            return code;
        }
    return ORMEL_OK;
}

} // namespace

uint32_t ORMEL_PatchInsertRecForConn2(void *pConn, ORMEL_MULTI_OBJECT *pstMulti) {
    if (pConn == nullptr || !present(pstMulti))
        return ORMEL_ERR_NULL_ARG;
    const char *table = ormel::tableOf(*pstMulti);
    const TableAttributes att(pConn, table);
    if (att.get() == nullptr)
        return ORMEL_ERR_OBJ_TABLE;
    if (pstMulti->uiRecNum == 0)
        return ORMEL_ERR_TABLE;
    if (const uint32_t code = checkObjects(__func__, *pstMulti, att.get()); code != ORMEL_OK)
        return code;
    const Batch batch(ORMEL_BatchInsert_Para_Malloc(pstMulti->astObject[0].iItemNum, pstMulti));
    if (batch == nullptr)
        return ORMEL_OK; // callers rely on the code of the check, whatever became of the memory; the log has the
                         // failure
    if (const uint32_t code = ORMEL_SetBatchParaByObject(batch.get(), pstMulti, att.get()); code != ORMEL_OK)
        return code;
    const Result res(dbPatchInsertRec(pConn, table, batch.get()));
    if (res != nullptr)
        return ORMEL_OK;
    ORMEL_LOG(KPL_LOG_ERROR, "dbPatchInsertRec return: 0x%x", ORMEL_ERR_NO_RESULT);
    return ORMEL_ERR_NO_RESULT;
}

uint32_t ORMEL_PatchInsertRecFormObj(ORMEL_MULTI_OBJECT *pstMulti) {
    return onOwnConnection(__func__, present(pstMulti), Commit::yes,
                           [&](void *conn) { return ORMEL_PatchInsertRecForConn2(conn, pstMulti); });
}

uint32_t ORMEL_PatchInsertRecFormObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_MULTI_OBJECT *pstMulti) {
    return onSlot(__func__, pstTrans, present(pstMulti),
                  [&](void *conn) { return ORMEL_PatchInsertRecForConn2(conn, pstMulti); });
}

ORMEL_MULTI_OBJECT *ORMEL_Multi_object_Init(const char *pcTableName, int32_t iRecNum) {
    if (pcTableName == nullptr)
        return nullptr;
    const int32_t objects = iRecNum > 0 ? iRecNum : 0;
    auto *multi = static_cast<ORMEL_MULTI_OBJECT *>(std::calloc(1, containerSize(objects)));
    if (multi == nullptr)
        return nullptr;
    ORMEL_ObjectNameSetForMulti(multi, pcTableName);
    multi->uiRecNum = static_cast<uint32_t>(objects);
    for (int32_t i = 0; i < objects; ++i)
        ORMEL_ObjectNameSet(&multi->astObject[i], pcTableName);
    return multi;
}

void ORMEL_Multi_object_UnInit(ORMEL_MULTI_OBJECT *pstMulti) {
    if (pstMulti == nullptr)
        return;
    for (uint32_t i = 0; i < pstMulti->uiRecNum; ++i)
        ORMEL_ObjectParaClear(&pstMulti->astObject[i]);
    std::free(pstMulti);
}
