#include "ormeldb/select.h"

#include "api/variant.h"
#include "dao/owners.h"
#include "para/record_length.h"

using ormel::Commit;
using ormel::onOwnConnection;
using ormel::onSlot;
using ormel::present;
using ormel::Result;
using ormel::TableAttributes;

namespace {

constexpr char kLogFile[] = "ormel_api";

// Selects the rows of a described table that meet the conditions; noResult is the code of a statement that gives none.
uint32_t select(void *conn, const char *table, const ORMEL_COND *cond, ORMEL_RES_ATT *att, uint32_t noResult,
                Result &res) {
    ORMEL_PARA para = {};
    if (cond != nullptr)
        if (const uint32_t code = ORMEL_ParaCondUpdateByCond(&para, cond, att); code != ORMEL_OK)
            return code;
    res.reset(dbSelectRec(conn, table, &para));
    return res != nullptr ? ORMEL_OK : noResult;
}

} // namespace

uint32_t ORMEL_SelectRecForConn(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond, uint32_t,
                                ORMEL_RECORD_BUFFER *pstDsbuf) {
    if (pConn == nullptr || !present(pcTableName, pstDsbuf))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    const TableAttributes att(pConn, pcTableName);
    if (att.get() == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "Get sql table's Attributes Failed.");
        return ORMEL_ERR_TABLE;
    }
    Result res;
    const uint32_t code = select(pConn, pcTableName, pstCond, att.get(), ORMEL_ERR_NO_RESULT, res);
    return code != ORMEL_OK ? code : ORMEL_CreatDsbufByRes(pstDsbuf, res.get(), att.get());
}

uint32_t ORMEL_SelectRec(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t uiReserved,
                         ORMEL_RECORD_BUFFER *pstDsbuf) {
    return onOwnConnection(__func__, present(pcTableName, pstDsbuf), Commit::no, [&](void *conn) {
        return ORMEL_SelectRecForConn(conn, pcTableName, pstCond, uiReserved, pstDsbuf);
    });
}

uint32_t ORMEL_SelectRecForTrans(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                 uint32_t uiReserved, ORMEL_RECORD_BUFFER *pstDsbuf) {
    return onSlot(__func__, pstTrans, present(pcTableName, pstDsbuf),
                  [&](void *conn) { return ORMEL_SelectRecForConn(conn, pcTableName, pstCond, uiReserved, pstDsbuf); });
}

uint32_t ORMEL_SelectRecForConn2(void *pConn, const char *pcTableName, const ORMEL_COND *pstCond, uint32_t,
                                 ORMEL_SELECT_RESULT *pstResult) {
    if (pConn == nullptr || !present(pcTableName, pstResult))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    Result res;
    {
        const TableAttributes att(pConn, pcTableName);
        if (att.get() == nullptr)
            return ORMEL_ERR_TABLE;
        const uint32_t code = select(pConn, pcTableName, pstCond, att.get(), ORMEL_ERR_TABLE, res);
        if (code != ORMEL_OK)
            return code;
    }
    // The descriptor has been given back: on a table's first select it is gone, and the cache has its copy.
    const uint32_t rows = res->uiRowCount;
    ORMEL_SelectResultSet(pstResult, ORMEL_ResAttGet(pcTableName), res.release(), rows);
    return ORMEL_OK;
}

uint32_t ORMEL_SelectRec2(const char *pcTableName, const ORMEL_COND *pstCond, uint32_t uiReserved,
                          ORMEL_SELECT_RESULT *pstResult) {
    return onOwnConnection(__func__, present(pcTableName, pstResult), Commit::no, [&](void *conn) {
        return ORMEL_SelectRecForConn2(conn, pcTableName, pstCond, uiReserved, pstResult);
    });
}

uint32_t ORMEL_SelectRecForTrans2(ORMEL_TRANS *pstTrans, const char *pcTableName, const ORMEL_COND *pstCond,
                                  uint32_t uiReserved, ORMEL_SELECT_RESULT *pstResult) {
    return onSlot(__func__, pstTrans, present(pcTableName, pstResult), [&](void *conn) {
        return ORMEL_SelectRecForConn2(conn, pcTableName, pstCond, uiReserved, pstResult);
    });
}

uint32_t ORMEL_ResultConvertDsBuf(const ORMEL_SELECT_RESULT *pstResult, ORMEL_RECORD_BUFFER *pstDsbuf,
                                  uint32_t uiStartIndex) {
    if (!present(pstResult, pstDsbuf) || !present(pstResult->pstResAtt, pstResult->pstRes))
        return ORMEL_ERR_NULL_ARG;
    const uint64_t length = ormel::recordLength(*pstResult->pstResAtt);
    if (static_cast<uint16_t>(length) != pstDsbuf->usRecLen) {
        ORMEL_LOG(KPL_LOG_ERROR, "Error: DbRecLen != RecLen, %d, %d", static_cast<int>(length), pstDsbuf->usRecLen);
        return ORMEL_ERR_FAILED;
    }
    if (uint64_t{pstDsbuf->usRecNum} + uiStartIndex > pstResult->uiRecNum) {
        ORMEL_LOG(KPL_LOG_ERROR, "Error: Out of bounds of index, startIndex:%d, bufRecNum:%d, acturalRecNum:%d",
                  static_cast<int>(uiStartIndex), pstDsbuf->usRecNum, static_cast<int>(pstResult->uiRecNum));
        return ORMEL_ERR_FAILED;
    }
    return ORMEL_CreatDsbufRangeByRes(pstDsbuf, uiStartIndex, pstResult->pstRes, pstResult->pstResAtt);
}
