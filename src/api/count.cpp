#include "api/variant.h"
#include "dao/owners.h"
#include "ormeldb/select.h"
#include "para/cell_integer.h"

using ormel::Commit;
using ormel::onOwnConnection;
using ormel::onSlot;
using ormel::present;
using ormel::Result;
using ormel::TableAttributes;

namespace {

constexpr char kLogFile[] = "ormel_api";

// Runs the count and stores its one cell.
uint32_t count(void *conn, const char *table, const ORMEL_PARA &para, uint32_t &recNum) {
    const Result res(dbCount(conn, table, &para));
    if (res == nullptr)
        return ORMEL_ERR_NO_RESULT;
    const uint32_t length = dbGetLengthFromRes(res.get(), 0, 0);
    const ormel::CellInteger cell(dbGetValueFromRes(res.get(), 0, 0), length);
    recNum = static_cast<uint32_t>(dbGetIntValue(cell.bytes(), length)); // 0 where there is no value
    return ORMEL_OK;
}

// Counts by a condition list; the table is described only when there are conditions.
uint32_t countBy(void *conn, const char *table, const ORMEL_COND *cond, uint32_t &recNum) {
    ORMEL_PARA para = {};
    if (cond == nullptr || cond->usCondNum == 0)
        return count(conn, table, para, recNum);
    const TableAttributes att(conn, table);
    if (att.get() == nullptr)
        return ORMEL_ERR_NO_RESULT;
    const uint32_t code = ORMEL_ParaCondUpdateByCond(&para, cond, att.get());
    return code != ORMEL_OK ? code : count(conn, table, para, recNum);
}

} // namespace

uint32_t ORMEL_LocalExistRecordForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond,
                                       uint32_t *puiRecNum) {
    if (pConn == nullptr || !present(pcTableName, puiRecNum))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    const uint32_t code = countBy(pConn, pcTableName, pstCond, *puiRecNum);
    ORMEL_LOG(KPL_LOG_DEBUG, "Count uiRet: 0x%x, recNum: %d", code, static_cast<int>(*puiRecNum));
    return code;
}

uint32_t ORMEL_LocalExistRecord(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t *puiRecNum) {
    return onOwnConnection(__func__, present(pcTableName, puiRecNum), Commit::no, [&](void *conn) {
        return ORMEL_LocalExistRecordForConn(conn, pcTableName, pstCond, puiRecNum);
    });
}

uint32_t ORMEL_LocalExistRecordForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                        uint32_t *puiRecNum) {
    return onSlot(__func__, pstTrans, present(pcTableName, puiRecNum),
                  [&](void *conn) { return ORMEL_LocalExistRecordForConn(conn, pcTableName, pstCond, puiRecNum); });
}

uint32_t ORMEL_GetBatchSelectCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara,
                                   uint32_t *puiRecNum) {
    if (pConn == nullptr || !present(pstPara, puiRecNum))
        return ORMEL_ERR_NULL_ARG;
    const uint32_t code = count(pConn, pcTableName, *pstPara, *puiRecNum);
    ORMEL_LOG(KPL_LOG_DEBUG, "Select recNum: %d, return:0x%x", static_cast<int>(*puiRecNum), code);
    return code;
}
