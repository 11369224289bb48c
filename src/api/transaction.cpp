#include "log/log.h"
#include "ormeldb/dao.h"
#include "ormeldb/lifecycle.h"

namespace {

constexpr char kLogFile[] = "ormel_api";

// Ends a slot's transaction and releases the slot, whatever came of it.
uint32_t endTransaction(const char *func, ORMEL_TRANS *slot, uint32_t (*end)(void *conn)) {
    ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "Trace in.");
    if (slot == nullptr)
        return ORMEL_ERR_FAILED;
    void *conn = ORMEL_TransGetConn(slot);
    const uint32_t status = end(conn);
    if (status != 0)
        dbPrintError(conn);
    ORMEL_TransDestory(slot);
    return status != 0 ? ORMEL_ERR_FAILED : ORMEL_OK;
}

} // namespace

ORMEL_TRANS *ORMEL_StartTrans(const char *pcFunc, uint32_t uiLine) {
    ORMEL_TRANS *slot = ORMEL_NormalTransCreate(pcFunc, uiLine);
    if (slot == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "Create Normal Transaction Failed.");
        return nullptr;
    }
    if (dbStartTrans(ORMEL_TransGetConn(slot)) != 0) {
        ORMEL_CommitTrans(slot); // a commit is what ends a half-started transaction
        return nullptr;
    }
    return slot;
}

uint32_t ORMEL_CommitTrans(ORMEL_TRANS *pstTrans) {
    return endTransaction(__func__, pstTrans, dbCommitTrans);
}

uint32_t ORMEL_RollbackTrans(ORMEL_TRANS *pstTrans) {
    return endTransaction(__func__, pstTrans, dbRollbackTrans);
}
