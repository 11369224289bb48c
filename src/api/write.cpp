#include "ormeldb/write.h"

#include "api/write_frame.h"

using ormel::Commit;
using ormel::onOwnConnection;
using ormel::onSlot;
using ormel::present;
using ormel::write;

namespace {

constexpr char kLogFile[] = "ormel_api";

uint32_t fillConditions(ORMEL_PARA *para, const ORMEL_COND *cond, ORMEL_RES_ATT *att) {
    return cond != nullptr ? ORMEL_ParaCondUpdateByCond(para, cond, att) : ORMEL_OK;
}

} // namespace

uint32_t ORMEL_InsertRecForConn(void *pConn, const char *pcTableName, const ORMEL_RECORD_BUFFER *pstDsbuf) {
    if (pConn == nullptr || !present(pcTableName, pstDsbuf))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    const uint32_t code = write(
        pConn, pcTableName, ORMEL_ERR_TABLE,
        [&](ORMEL_PARA *para, ORMEL_RES_ATT *att) {
            return ORMEL_ParaFieldUpdateByDsbuf(para, nullptr, pstDsbuf, att);
        },
        dbInsertRec, nullptr);
    ORMEL_LOG(KPL_LOG_DEBUG, "Insert Rec return: 0x%x", code);
    return code;
}

uint32_t ORMEL_InsertRec(const char *pcTableName, const ORMEL_RECORD_BUFFER *pstDsbuf) {
    return onOwnConnection(__func__, present(pcTableName, pstDsbuf), Commit::yes,
                           [&](void *conn) { return ORMEL_InsertRecForConn(conn, pcTableName, pstDsbuf); });
}

uint32_t ORMEL_InsertRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_RECORD_BUFFER *pstDsbuf) {
    return onSlot(__func__, pstTrans, present(pcTableName, pstDsbuf),
                  [&](void *conn) { return ORMEL_InsertRecForConn(conn, pcTableName, pstDsbuf); });
}

uint32_t ORMEL_DeleteRecForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond, uint32_t *puiRecNum) {
    if (pConn == nullptr || !present(pcTableName, puiRecNum))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    const uint32_t code = write(
        pConn, pcTableName, ORMEL_ERR_TABLE,
        [&](ORMEL_PARA *para, ORMEL_RES_ATT *att) { return fillConditions(para, pstCond, att); }, dbDeleteRec,
        puiRecNum);
    ORMEL_LOG(KPL_LOG_DEBUG, "Delete Rec return: 0x%x", code);
    return code;
}

uint32_t ORMEL_DeleteRec(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t *puiRecNum) {
    return onOwnConnection(__func__, present(pcTableName, puiRecNum), Commit::yes,
                           [&](void *conn) { return ORMEL_DeleteRecForConn(conn, pcTableName, pstCond, puiRecNum); });
}

uint32_t ORMEL_DeleteRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                 uint32_t *puiRecNum) {
    return onSlot(__func__, pstTrans, present(pcTableName, puiRecNum),
                  [&](void *conn) { return ORMEL_DeleteRecForConn(conn, pcTableName, pstCond, puiRecNum); });
}

uint32_t ORMEL_UpdateRecForConn(void *pConn, const char *pcTableName, const ORMEL_FIELD_SELECT *pstFields,
                                const ORMEL_RECORD_BUFFER *pstDsbuf, const ORMEL_COND *pstCond, uint32_t *puiRecNum) {
    if (pConn == nullptr || !present(pcTableName, pstDsbuf, puiRecNum))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    const uint32_t code = write(
        pConn, pcTableName, ORMEL_ERR_TABLE,
        [&](ORMEL_PARA *para, ORMEL_RES_ATT *att) {
            const uint32_t filled = ORMEL_ParaFieldUpdateByDsbuf(para, pstFields, pstDsbuf, att);
            return filled != ORMEL_OK ? filled : fillConditions(para, pstCond, att);
        },
        dbUpdateRec, puiRecNum);
    ORMEL_LOG(KPL_LOG_DEBUG, "Update Rec return: 0x%x", code);
    return code;
}

uint32_t ORMEL_UpdateRec(const char *pcTableName, const ORMEL_FIELD_SELECT *pstFields,
                         const ORMEL_RECORD_BUFFER *pstDsbuf, const ORMEL_COND *pstCond, uint32_t *puiRecNum) {
    return onOwnConnection(__func__, present(pcTableName, pstDsbuf, puiRecNum), Commit::yes, [&](void *conn) {
        return ORMEL_UpdateRecForConn(conn, pcTableName, pstFields, pstDsbuf, pstCond, puiRecNum);
    });
}

uint32_t ORMEL_UpdateRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_FIELD_SELECT *pstFields,
                                 const ORMEL_RECORD_BUFFER *pstDsbuf, const ORMEL_COND *pstCond, uint32_t *puiRecNum) {
    return onSlot(__func__, pstTrans, present(pcTableName, pstDsbuf, puiRecNum), [&](void *conn) {
        return ORMEL_UpdateRecForConn(conn, pcTableName, pstFields, pstDsbuf, pstCond, puiRecNum);
    });
}
