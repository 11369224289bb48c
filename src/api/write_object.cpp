#include "api/write_frame.h"
#include "ormeldb/write.h"

using ormel::Commit;
using ormel::onOwnConnection;
using ormel::onSlot;
using ormel::present;
using ormel::write;

namespace {

constexpr char kLogFile[] = "ormel_api";

// Makes a checked object's items the fields or the conditions of a list.
using Fill = uint32_t (*)(ORMEL_PARA *para, ORMEL_OBJECT *obj);

uint32_t checkAndFill(ORMEL_PARA *para, ORMEL_OBJECT *obj, ORMEL_RES_ATT *att, Fill fill) {
    const uint32_t code = ORMEL_ObjectCheck(obj, att);
    return code != ORMEL_OK ? code : fill(para, obj);
}

} // namespace

uint32_t ORMEL_InsertRecForConn2(void *pConn, ORMEL_OBJECT *pstObj) {
    if (pConn == nullptr || !present(pstObj))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    const uint32_t code = write(
        pConn, ormel::tableOf(*pstObj), ORMEL_ERR_OBJ_TABLE,
        [&](ORMEL_PARA *para, ORMEL_RES_ATT *att) {
            return checkAndFill(para, pstObj, att, ORMEL_ParaFieldUpdateByObject);
        },
        dbInsertRec, nullptr);
    ORMEL_LOG(KPL_LOG_DEBUG, "Insert Rec return: 0x%x", code);
    return code;
}

uint32_t ORMEL_InsertRecFormObj(ORMEL_OBJECT *pstObj) {
    return onOwnConnection(__func__, present(pstObj), Commit::yes,
                           [&](void *conn) { return ORMEL_InsertRecForConn2(conn, pstObj); });
}

uint32_t ORMEL_InsertRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj) {
    return onSlot(__func__, pstTrans, present(pstObj),
                  [&](void *conn) { return ORMEL_InsertRecForConn2(conn, pstObj); });
}

uint32_t ORMEL_DeleteRecForConn2(void *pConn, ORMEL_OBJECT *pstObj, uint32_t *puiRecNum) {
    if (pConn == nullptr || !present(pstObj, puiRecNum))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    const uint32_t code = write(
        pConn, ormel::tableOf(*pstObj), ORMEL_ERR_OBJ_TABLE,
        [&](ORMEL_PARA *para, ORMEL_RES_ATT *att) {
            return checkAndFill(para, pstObj, att, ORMEL_ParaCondUpdateByObject);
        },
        dbDeleteRec, puiRecNum);
    ORMEL_LOG(KPL_LOG_DEBUG, "Delete Rec return: 0x%x", code);
    return code;
}

uint32_t ORMEL_DeleteRecByObj(ORMEL_OBJECT *pstObj, uint32_t *puiRecNum) {
    return onOwnConnection(__func__, present(pstObj, puiRecNum), Commit::yes,
                           [&](void *conn) { return ORMEL_DeleteRecForConn2(conn, pstObj, puiRecNum); });
}

uint32_t ORMEL_DeleteRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj, uint32_t *puiRecNum) {
    return onSlot(__func__, pstTrans, present(pstObj, puiRecNum),
                  [&](void *conn) { return ORMEL_DeleteRecForConn2(conn, pstObj, puiRecNum); });
}

uint32_t ORMEL_UpdateRecForConn2(void *pConn, ORMEL_OBJECT *pstSetObj, ORMEL_OBJECT *pstCondObj, uint32_t *puiRecNum) {
    if (pConn == nullptr || !present(pstSetObj, puiRecNum))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    const uint32_t code = write(
        pConn, ormel::tableOf(*pstSetObj), ORMEL_ERR_OBJ_TABLE,
        [&](ORMEL_PARA *para, ORMEL_RES_ATT *att) {
            const uint32_t filled = checkAndFill(para, pstSetObj, att, ORMEL_ParaFieldUpdateByObject);
            if (filled != ORMEL_OK || pstCondObj == nullptr)
                return filled;
            return checkAndFill(para, pstCondObj, att, ORMEL_ParaCondUpdateByObject);
        },
        dbUpdateRec, puiRecNum);
    ORMEL_LOG(KPL_LOG_DEBUG, "Update Rec return: 0x%x", code);
    return code;
}

uint32_t ORMEL_UpdateRecByObj(ORMEL_OBJECT *pstSetObj, ORMEL_OBJECT *pstCondObj, uint32_t *puiRecNum) {
    return onOwnConnection(__func__, present(pstSetObj, puiRecNum), Commit::yes,
                           [&](void *conn) { return ORMEL_UpdateRecForConn2(conn, pstSetObj, pstCondObj, puiRecNum); });
}

uint32_t ORMEL_UpdateRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstSetObj, ORMEL_OBJECT *pstCondObj,
                                      uint32_t *puiRecNum) {
    return onSlot(__func__, pstTrans, present(pstSetObj, puiRecNum),
                  [&](void *conn) { return ORMEL_UpdateRecForConn2(conn, pstSetObj, pstCondObj, puiRecNum); });
}
