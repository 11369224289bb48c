#include "api/variant.h"
#include "dao/owners.h"
#include "ormeldb/select.h"

using ormel::Commit;
using ormel::onOwnConnection;
using ormel::onSlot;
using ormel::present;
using ormel::Result;
using ormel::TableAttributes;

namespace {

constexpr char kLogFile[] = "ormel_api";

// Selects the rows of a described table by a parameter list.
using Select = uint32_t (*)(const char *func, void *conn, const char *table, const ORMEL_PARA &para, Result &res);

uint32_t selectAhead(const char *, void *conn, const char *table, const ORMEL_PARA &para, Result &res) {
    res.reset(dbSelectRec(conn, table, &para));
    return res != nullptr ? ORMEL_OK : ORMEL_ERR_TABLE;
}

uint32_t selectCounted(const char *func, void *conn, const char *table, const ORMEL_PARA &para, Result &res) {
    uint32_t count = 0;
    if (const uint32_t code = ORMEL_GetBatchSelectCount(conn, table, &para, &count); code != ORMEL_OK) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "Select Rec return: 0x%x", code);
        return code;
    }
    ORMEL_LOG_AS(func, KPL_LOG_INFO, "SelectBatchRec recCount: %d", static_cast<int>(count));
    res.reset(dbSelectRecWithCount(conn, table, &para, count));
    return res != nullptr ? ORMEL_OK : ORMEL_ERR_TABLE;
}

// Makes the descriptor one of the object's select fields only, where it has some; false where it cannot be had.
bool reduce(void *conn, ORMEL_OBJECT &obj, TableAttributes &att) {
    if (obj.iSelectFieldNum < 1)
        return true;
    att.reset(nullptr);
    att.reset(ORMEL_ResAttCreate(conn, obj.acTableName, &obj));
    if (att.get() == nullptr)
        return false;
    ormel::keepFromCache(*att.get());
    return true;
}

uint32_t check(ORMEL_OBJECT &obj, ORMEL_RES_ATT *att, ORMEL_PARA &para) {
    const uint32_t code = ORMEL_ObjectCheck(&obj, att);
    return code != ORMEL_OK ? code : ORMEL_ParaCondUpdateByObject(&para, &obj);
}

// The frame of the selects by object. Only what ends well reaches the result.
uint32_t selectBy(const char *func, void *conn, ORMEL_OBJECT &obj, Select select, bool reduced,
                  ORMEL_SELECT_RESULT *result) {
    TableAttributes att(conn, ormel::tableOf(obj));
    if (att.get() == nullptr)
        return ORMEL_ERR_TABLE;
    ORMEL_PARA para = {};
    if (const uint32_t code = check(obj, att.get(), para); code != ORMEL_OK)
        return code;
    Result res;
    if (const uint32_t code = select(func, conn, obj.acTableName, para, res); code != ORMEL_OK)
        return code;
    DB_RESULT *rows = res.release();
    if (reduced && !reduce(conn, obj, att))
        return ORMEL_ERR_TABLE; // the rows are kept: here a failure has never freed them
    ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "Select recNum: %d", static_cast<int>(rows->uiRowCount));
    ORMEL_SelectResultSet(result, att.release(), rows, rows->uiRowCount);
    return ORMEL_OK;
}

uint32_t runSelect(const char *func, void *conn, ORMEL_OBJECT *obj, Select select, bool reduced,
                   ORMEL_SELECT_RESULT *result) {
    if (conn == nullptr || !present(obj, result))
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(func);
    const uint32_t code = selectBy(func, conn, *obj, select, reduced, result);
    if (code != ORMEL_OK)
        ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "Select Rec return: 0x%x", code);
    return code;
}

} // namespace

uint32_t ORMEL_SelectRecForConn3(void *pConn, ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult) {
    return runSelect(__func__, pConn, pstObj, selectAhead, true, pstResult);
}

uint32_t ORMEL_SelectRecByObj(ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult) {
    return onOwnConnection(
        __func__, present(pstObj, pstResult), Commit::no,
        [&](void *conn) { return ORMEL_SelectRecForConn3(conn, pstObj, pstResult); }, ORMEL_ERR_TABLE);
}

uint32_t ORMEL_SelectRecByObjForTrans(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult) {
    return onSlot(
        __func__, pstTrans, present(pstObj, pstResult),
        [&](void *conn) { return ORMEL_SelectRecForConn3(conn, pstObj, pstResult); }, ORMEL_INVALID);
}

uint32_t ORMEL_SelectBatchRecForConn(void *pConn, ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult) {
    return runSelect(__func__, pConn, pstObj, selectCounted, false, pstResult);
}

uint32_t ORMEL_SelectBatchRecByObj(ORMEL_OBJECT *pstObj, ORMEL_SELECT_RESULT *pstResult) {
    return onOwnConnection(
        __func__, present(pstObj, pstResult), Commit::no,
        [&](void *conn) { return ORMEL_SelectBatchRecForConn(conn, pstObj, pstResult); }, ORMEL_ERR_TABLE);
}
