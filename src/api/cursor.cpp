#include "ormeldb/cursor.h"

#include "api/variant.h"
#include "dao/cursor.h"
#include "ormeldb/lifecycle.h"

using ormel::Result;
using ormel::Statement;

namespace {

constexpr char kLogFile[] = "ormel_api";

// Logs which step of a begin failed, ends the slot and gives the begin's answer.
ORMEL_TRANS *fail(const char *func, const char *format, const char *table, ORMEL_TRANS *slot) {
    ORMEL_LOG_AS(func, KPL_LOG_ERROR, format, table);
    ORMEL_CommitTrans(slot); // a commit is what ends a half-started transaction
    return nullptr;
}

// A slot of the table with a transaction begun on it.
ORMEL_TRANS *startSlot(const char *func, const char *table, const char *caller, uint32_t line) {
    ORMEL_TRANS *slot = ORMEL_SelectTransCreate(table, caller, line);
    if (slot == nullptr) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "Create Select Transaction (table:%s) Failed .", table);
        return nullptr;
    }
    if (dbStartTrans(ORMEL_TransGetConn(slot)) == 0)
        return slot;
    return fail(func, "Start Select Transaction (table:%s) Failed.", table, slot);
}

// Has the slot describe the object's select fields, where it has some, so that rows are laid out by them.
bool reduce(ORMEL_TRANS *slot, ORMEL_OBJECT &obj) {
    if (obj.iSelectFieldNum < 1)
        return true;
    ORMEL_RES_ATT *reduced = ORMEL_ResAttCreate(ORMEL_TransGetConn(slot), obj.acTableName, &obj);
    if (reduced == nullptr)
        return false;
    ORMEL_DestoryResAtt(ORMEL_TransGetResAtt(slot));
    ormel::keepFromCache(*reduced);
    ORMEL_TransSetResAtt(slot, reduced);
    return true;
}

// A row, or the code of the failure to get one.
struct Fetched {
    uint32_t code;
    Result res;
};

// Reads the next row: 255 from a slot that lacks something, 211 where it cannot be read.
Fetched fetch(const char *func, ORMEL_TRANS *slot) {
    ormel::traceIn(func);
    const char *missing = nullptr;
    if (ORMEL_TransGetConn(slot) == nullptr)
        missing = "conn";
    else if (ORMEL_TransGetStmt(slot) == nullptr)
        missing = "stmt";
    else if (ORMEL_TransGetResAtt(slot) == nullptr)
        missing = "pstResAtt";
    if (missing != nullptr) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "ORMEL_FetchSelectRec Get %s Failed.", missing);
        return {ORMEL_ERR_TABLE, nullptr};
    }
    Result res(dbGetFetchResult(ORMEL_TransGetStmt(slot)));
    const uint32_t code = res != nullptr ? ORMEL_OK : ORMEL_ERR_NO_RESULT;
    return {code, std::move(res)};
}

uint32_t delivered(const DB_RESULT &res) {
    return res.uiRowCount != 0 ? ORMEL_OK : ORMEL_END_OF_DATA;
}

} // namespace

ORMEL_TRANS *ORMEL_BeginSelect(const char *pcTableName, const char *pcFunc, uint32_t uiLine) {
    ormel::traceIn(__func__);
    if (pcTableName == nullptr)
        return nullptr;
    ORMEL_TRANS *slot = startSlot(__func__, pcTableName, pcFunc, uiLine);
    if (slot == nullptr)
        return nullptr;
    void *stmt = dbBeginFetch(ORMEL_TransGetConn(slot), pcTableName);
    if (stmt == nullptr)
        return fail(__func__, "Define Select Transaction's (table:%s) stmt Failed.", pcTableName, slot);
    ORMEL_TransSetStmt(slot, stmt);
    return slot;
}

ORMEL_TRANS *ORMEL_BeginSelectSpecifyField(ORMEL_OBJECT *pstObj, const char *pcFunc, uint32_t uiLine) {
    ormel::traceIn(__func__);
    if (pstObj == nullptr)
        return nullptr;
    const char *table = ormel::tableOf(*pstObj);
    ORMEL_TRANS *slot = startSlot(__func__, table, pcFunc, uiLine);
    if (slot == nullptr)
        return nullptr;
    if (dbBeginFetchSpecifyField(slot, pstObj) != ORMEL_OK)
        return fail(__func__, "Define Select Transaction's (table:%s) stmt Failed.", table, slot);
    if (!reduce(slot, *pstObj))
        return fail(__func__, "update Transaction's (table:%s) Attr Failed.", table, slot);
    return slot;
}

uint32_t dbBeginFetchSpecifyField(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj) {
    if (pstTrans == nullptr || pstObj == nullptr)
        return ORMEL_ERR_NULL_ARG;
    ormel::traceIn(__func__);
    ORMEL_PARA para = {};
    if (ORMEL_ObjectCheck(pstObj, ORMEL_TransGetResAtt(pstTrans)) != ORMEL_OK ||
        ORMEL_ParaCondUpdateByObject(&para, pstObj) != ORMEL_OK)
        return ORMEL_ERR_TABLE;
    Statement stmt = ormel::openSelect(ORMEL_TransGetConn(pstTrans), pstObj->acTableName, para);
    if (stmt == nullptr)
        return ORMEL_ERR_TABLE;
    ORMEL_TransSetStmt(pstTrans, stmt.release());
    return ORMEL_OK;
}

uint32_t ORMEL_FetchSelectRec(ORMEL_TRANS *pstTrans, ORMEL_RECORD_BUFFER *pstDsbuf) {
    if (pstTrans == nullptr || pstDsbuf == nullptr)
        return ORMEL_ERR_NULL_ARG;
    const Fetched row = fetch(__func__, pstTrans);
    if (row.code != ORMEL_OK)
        return row.code;
    pstDsbuf->usRecNum = 0; // also where there is no block to write to
    ORMEL_CreatDsbufByRes(pstDsbuf, row.res.get(), ORMEL_TransGetResAtt(pstTrans));
    return delivered(*row.res);
}

uint32_t ORMEL_FetchSelectRecEx(ORMEL_TRANS *pstTrans, ORMEL_SELECT_RESULT *pstResult) {
    if (pstTrans == nullptr || pstResult == nullptr)
        return ORMEL_ERR_NULL_ARG;
    Fetched row = fetch(__func__, pstTrans);
    if (row.code == ORMEL_ERR_NO_RESULT) {
        ORMEL_LOG(KPL_LOG_ERROR, "FetchResultEx Get res Failed.");
        return ORMEL_ERR_TABLE;
    }
    if (row.code != ORMEL_OK)
        return row.code;
    const uint32_t code = delivered(*row.res);
    DB_RESULT *rows = row.res.release();
    ORMEL_SelectResultSet(pstResult, ORMEL_TransGetResAtt(pstTrans), rows, rows->uiRowCount);
    return code;
}

uint32_t ORMEL_EndSelect(ORMEL_TRANS *pstTrans) {
    ormel::traceIn(__func__);
    return ORMEL_CommitTrans(pstTrans);
}
