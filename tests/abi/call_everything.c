/*
 * Calls every exported function from C, mostly with NULL: before the start, while the library runs, after the stop.
 * Nothing may crash, and where a header says what NULL gives, that is what comes back.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ormeldb.h"
#include "ormeldb/cache.h"
#include "ormeldb/tree.h"

static int failures;

#define EXPECT(condition)                                                                                              \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            failures++;                                                                                                \
            printf("%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                                             \
        }                                                                                                              \
    } while (0)

static void call_log(void) {
    EXPECT(strcmp(g_stLogCfgs[KPL_LOG_CFG_ORMEL].pcModule, "LOG_ORMEL") == 0);
    EXPECT(strcmp(g_apcLogLeveNameMap[KPL_LOG_FATAL], "FATAL") == 0);
    EXPECT(g_VemloLogLevel >= KPL_LOG_TRACE);
    KPL_LogInit();
    EXPECT(strstr(g_acVemloLogFileName, "/slot-") != NULL);
    EXPECT(g_pstVemloLogHandle != NULL);
    KPL_VemloLogToFile("LOG_ORMEL", __FILE__, strlen(__FILE__), __func__, strlen(__func__), __LINE__, KPL_LOG_ERROR,
                       "%s", "one line");
    KPL_ZlogUnInit();
    KPL_ZlogInit();
    KPL_LogUnInit();
}

static void call_version_and_error(void) {
    EXPECT(strcmp(ORMEL_Version(), ORMELDB_VERSION) == 0);
    EXPECT(ORMEL_LastError(NULL) == ORMEL_ERR_NULL_ARG);
}

static void call_config(void) {
    char text[ORMEL_CONN_STR_SIZE];
    EXPECT(ORMEL_ConnCfgRead(NULL) == ORMEL_INVALID);
    EXPECT(ORMEL_TransBuildConnStr(NULL) == ORMEL_ERR_FAILED);
    EXPECT(ORMEL_TransBuildConnStr(text) == ORMEL_OK);
    EXPECT(ORMEL_TransConnStr() == g_stTransMgr.pcConnstr);
    EXPECT(ORMEL_StrNCpy(NULL, NULL, 0) == ORMEL_INVALID);
}

static void call_slots(void) {
    EXPECT(ORMEL_TransMgrGet() == &g_stTransMgr);
    EXPECT(ORMEL_TransGetPos(NULL) == ORMEL_INVALID);
    EXPECT(OrmelFindUsableTrans(NULL, NULL, 0) == NULL);
    EXPECT(ORMEL_SelectTransCreate(NULL, NULL, 0) == NULL);
    EXPECT(ORMEL_TransGetConn(NULL) == NULL);
    EXPECT(ORMEL_TransGetStmt(NULL) == NULL);
    EXPECT(ORMEL_TransGetResAtt(NULL) == NULL);
    ORMEL_TransDestory(ORMEL_NormalTransCreate(NULL, 0));
    ORMEL_TransDestory(NULL);
    ORMEL_TransSetStmt(NULL, NULL);
    ORMEL_TransSetResAtt(NULL, NULL);
    ORMEL_TransShow(NULL);
}

static void call_lifecycle(void) {
    ORMEL_GetDeltaCpuTick(NULL, NULL, NULL);
    ORMEL_DBDisConnect(ORMEL_DBConnect());
    ORMEL_DBDisConnect(NULL);
    ORMEL_RollbackTrans(ORMEL_StartTrans(NULL, 0));
    EXPECT(ORMEL_CommitTrans(NULL) == ORMEL_ERR_FAILED);
    EXPECT(ORMEL_RollbackTrans(NULL) == ORMEL_ERR_FAILED);
}

static void call_descriptors(void) {
    ORMEL_RES_ATT a = {0, ""};
    ORMEL_RES_ATT b = {0, "B"};
    EXPECT(g_pstResAtt == NULL);
    EXPECT(ORMEL_CreatResAtt(NULL, NULL, NULL) == NULL);
    EXPECT(ORMEL_ResAttCreate(NULL, NULL, NULL) == NULL);
    EXPECT(ORMEL_ResAttGet(NULL) == NULL);
    EXPECT(ORMEL_GetResAttInfoByName(NULL, NULL) == NULL);
    EXPECT(ORMEL_GetFieldIdByNameFromResAttr(NULL, NULL) == ORMEL_INVALID);
    EXPECT(ORMEL_GetAllFieldByRes(NULL, NULL, 0, NULL) == ORMEL_ERR_FAILED);
    EXPECT(ORMEL_ResAttPush(NULL) == ORMEL_OK);
    EXPECT(ORMEL_ResAttNeedCache() == 1);
    EXPECT(ORMEL_ResAttrCacheMgrGet() != NULL);
    EXPECT(ORMEL_ResAttCmp(&a, &b) < 0);
    ORMEL_ResAttShow(NULL);
    ORMEL_ResAttFree(NULL);
    ORMEL_DestoryResAtt(NULL);
}

static void call_cache(void) {
    ORMEL_CACHE_MGR cache;
    ORMEL_RES_ATT block = {0, "T"};
    ORMEL_CACHE_NODE *node = NULL;
    EXPECT(ORMEL_CacheInit(NULL, NULL, NULL) == 1);
    EXPECT(ORMEL_CacheInit(&cache, ORMEL_ResAttCmp, ORMEL_ResAttShow) == 0);
    EXPECT(ORMEL_CacheAdd(&cache, &block, sizeof block) == ORMEL_OK);
    EXPECT(ORMEL_CacheFind(&cache, &block) != NULL);
    EXPECT(ORMEL_CacheFind(NULL, NULL) == NULL);
    EXPECT(ORMEL_CacheShow(&cache) == 0);
    EXPECT(ORMEL_CacheDel(&cache, &block) == ORMEL_OK);
    node = ORMEL_CacheNodeCreat(&cache, &block, sizeof block);
    EXPECT(ORMEL_CacheNodeInsert(&cache, node) == ORMEL_OK);
    EXPECT(ORMEL_CacheNodeRemove(&cache, node) == 0);
    ORMEL_CacheNodeDestory(node);
    ORMEL_CacheNodeDestory(NULL);
    EXPECT(ORMEL_CacheClear(&cache) == 0);
    EXPECT(ORMEL_CacheUnInit(&cache) == 0);
}

static void call_tree(void) {
    ORMEL_AVL_TREE tree = {NULL, ORMEL_ResAttCmp, NULL, 0, 0};
    EXPECT(ormel_avl_insert(NULL, NULL) == ORMEL_INVALID);
    EXPECT(ormel_avl_insert_or_find(NULL, NULL) == NULL);
    EXPECT(ormel_avl_serach(NULL, NULL) == NULL);
    EXPECT(ormel_avl_get_first(&tree) == NULL);
    EXPECT(ormel_avl_get_last(&tree) == NULL);
    EXPECT(ormel_avl_get_next(NULL, NULL) == NULL);
    EXPECT(ormel_avl_get_prev(NULL, NULL) == NULL);
    ormel_avl_node_init(NULL);
    ormel_avl_delete(NULL, NULL);
    ormel_avl_tree_destroy(NULL);
}

static void call_balancing(void) {
    ORMEL_AVL_NODE *root = NULL;
    ORMEL_AVL_NODE first;
    ORMEL_AVL_NODE second;
    EXPECT(rb_first(&root) == NULL && rb_last(&root) == NULL);
    rb_link_node(&first, NULL, &root);
    rb_insert_color(&first, &root);
    EXPECT(rb_next(&first) == NULL && rb_prev(&first) == NULL);
    rb_replace_node(&first, &second, &root);
    EXPECT(root == &second);
    rb_set_color(&second, 1);
    rb_set_parent(&second, NULL);
    rb_erase(&second, &root);
    EXPECT(root == NULL);
}

static void call_lists_and_records(void) {
    ORMEL_ParaItemInit(NULL, 0, NULL, NULL);
    ORMEL_ParaValueShow(QDC_TYPE_VARCHAR, NULL, 0);
    EXPECT(ORMEL_ParaFieldUpdateByDsbuf(NULL, NULL, NULL, NULL) == ORMEL_ERR_FAILED);
    EXPECT(ORMEL_ParaCondUpdateByCond(NULL, NULL, NULL) == ORMEL_ERR_FAILED);
    EXPECT(ORMEL_ParaFieldUpdateByObject(NULL, NULL) == ORMEL_ERR_FAILED);
    EXPECT(ORMEL_ParaCondUpdateByObject(NULL, NULL) == ORMEL_ERR_FAILED);
    EXPECT(ORMEL_ParaShow(NULL) == ORMEL_OK);
    EXPECT(ORMEL_CreatDsbufByRes(NULL, NULL, NULL) == ORMEL_OK);
    EXPECT(ORMEL_CreatDsbufRangeByRes(NULL, 0, NULL, NULL) == ORMEL_ERR_FAILED);
}

static void call_objects(void) {
    ORMEL_OBJECT obj = {0};
    EXPECT(ORMEL_ObjectNameSet(NULL, NULL) == ORMEL_OK);
    EXPECT(ORMEL_ObjectNameSet(&obj, "T") == ORMEL_OK);
    EXPECT(strcmp(ORMEL_ObjectNameGet(&obj), "T") == 0);
    EXPECT(ORMEL_ObjectNameGet(NULL) == NULL);
    EXPECT(ORMEL_ObjectNameSetForMulti(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_ObjectNameGetForMulti(NULL) == NULL);
    EXPECT(ORMEL_ObjectBinarySet(&obj, "a", "\1\2", 2) == ORMEL_OK);
    EXPECT(ORMEL_ObjectInt8Set(&obj, "b", -1) == ORMEL_OK);
    EXPECT(ORMEL_ObjectInt16Set(&obj, "c", -1) == ORMEL_OK);
    EXPECT(ORMEL_ObjectInt32Set(&obj, "d", -1) == ORMEL_OK);
    EXPECT(ORMEL_ObjectInt64Set(&obj, "e", -1) == ORMEL_OK);
    EXPECT(ORMEL_ObjectStrSet(&obj, "f", "") == ORMEL_OK);
    EXPECT(ORMEL_ObjectJsonSet(&obj, "g", "{}") == ORMEL_OK);
    EXPECT(ORMEL_ObjectJsonbSet(&obj, "h", "{}") == ORMEL_OK);
    EXPECT(ORMEL_ObjectTextSet(&obj, "i", "text") == ORMEL_OK);
    EXPECT(ORMEL_ObjectStrOptionLikeSet(&obj, "j", "t%") == ORMEL_OK);
    EXPECT(ORMEL_ObjectNullSet(&obj, "k") == ORMEL_OK);
    EXPECT(ORMEL_ObjectSelectFieldSet(&obj, "a") == ORMEL_OK);
    EXPECT(ORMEL_ObjectSelectRowCountSet(&obj, 1, 2, 3) == ORMEL_OK);
    EXPECT(ORMEL_ObjectCheck(&obj, NULL) == ORMEL_ERR_CHECK);
    EXPECT(ORMEL_ObjectCheck(NULL, NULL) == ORMEL_ERR_CHECK);
    ORMEL_ObjectParaClear(&obj);
    ORMEL_ObjectParaClear(&obj);
    ORMEL_ObjectParaClear(NULL);
}

static void call_select_results(void) {
    ORMEL_SELECT_RESULT result = {NULL, NULL, 0};
    uint8_t count = 0;
    EXPECT(ORMEL_ResultNumberGet(NULL, 0, NULL, NULL, QDC_TYPE_INT64) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_ResultInt8Get(NULL, 0, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_ResultInt16Get(NULL, 0, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_ResultInt32Get(NULL, 0, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_ResultInt64Get(NULL, 0, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_ResultBinaryGetByPos(NULL, 0, 0) == NULL);
    EXPECT(ORMEL_ResultTextGetByPos(NULL, 0, 0) == NULL);
    EXPECT(ORMEL_ResultJsonGetByPos(NULL, 0, 0) == NULL);
    EXPECT(ORMEL_ResultJsonbGetByPos(NULL, 0, 0) == NULL);
    EXPECT(ORMEL_ResultBinaryGet(NULL, 0, NULL) == NULL);
    EXPECT(ORMEL_ResultStrGet(&result, 0, "a") == NULL);
    EXPECT(ORMEL_ResultTextGet(&result, 0, NULL) == NULL);
    EXPECT(ORMEL_ResultJsonGet(&result, 0, "a") == NULL);
    EXPECT(ORMEL_ResultJsonbGet(&result, 0, "a") == NULL);
    EXPECT(ORMEL_SelectResultRecNumGet(NULL) == 0);
    EXPECT(ORMEL_ResultGetFieldNum(NULL) == 0);
    EXPECT(ORMEL_ResultGetFieldValue(NULL, 0, 0) == NULL);
    EXPECT(ORMEL_ResultGetFieldLengthByPos(NULL, 0, 0) == ORMEL_INVALID);
    EXPECT(ORMEL_ResultGetFieldLength(NULL, 0, "a") == ORMEL_INVALID);
    EXPECT(ORMEL_ResultGetFieldType(NULL, 0) == 0);
    EXPECT(ORMEL_ResultGetFieldOffset(NULL, 0) == ORMEL_INVALID);
    EXPECT(ORMEL_ResultSetFieldValue(NULL, 0, 0, NULL) == ORMEL_ERR_ABSENT);
    EXPECT(ORMEL_ResultDiffFieldsGet(NULL, NULL, NULL, 0, &count) == ORMEL_ERR_FAILED);
    ORMEL_SelectResultSet(NULL, NULL, NULL, 0);
    ORMEL_SelectResultSet(&result, NULL, NULL, 0);
    ORMEL_SelectResultClear(&result);
    ORMEL_SelectResultClear(NULL);
    ORMEL_SelectResultClearForFetch(&result);
    ORMEL_SelectResultClearForFetch(NULL);
}

static void call_connections(void) {
    dbDisconnect(dbConnect(NULL, NULL, NULL, NULL));
    dbDisconnect(NULL);
    dbPrintError(NULL);
    dbFreeStmt(NULL);
    EXPECT(dbSslModeType(NULL) == 0);
    EXPECT(dbSetSSLMode(NULL, NULL) != 0);
    EXPECT(dbCreateStmt(NULL) == NULL);
    EXPECT(dbStartTrans(NULL) != 0);
    EXPECT(dbCommitTrans(NULL) != 0);
    EXPECT(dbRollbackTrans(NULL) != 0);
    EXPECT(strcmp(dbGetOpStr(ORMEL_OP_LIKE), "like") == 0);
    EXPECT(dbGetIntValue(NULL, 0) == 0);
    EXPECT(dbSelectAtt(NULL, NULL, NULL) == NULL);
    EXPECT(dbSelectAtt1(NULL, NULL) == NULL);
    EXPECT(dbGetFieldTypebyName(NULL, NULL) == 0);
}

static void call_statements(void) {
    void *lobs = NULL;
    EXPECT(dbCountMallocSql(NULL, NULL) == NULL);
    EXPECT(dbSelectMallocSql(NULL, NULL) == NULL);
    EXPECT(dbInsertMallocSql(NULL, NULL) == NULL);
    EXPECT(dbDeleteMallocSql(NULL, NULL) == NULL);
    EXPECT(dbUpdateMallocSql(NULL, NULL) == NULL);
    EXPECT(dbLobCount(NULL, 1, 1) == 0);
    EXPECT(dbBindPara(NULL, NULL, 1, 1, 0, &lobs) == 0);
    free(dbMallocLob(1));
    EXPECT(dbCount(NULL, NULL, NULL) == NULL);
    EXPECT(dbSelectRec(NULL, NULL, NULL) == NULL);
    EXPECT(dbInsertRec(NULL, NULL, NULL) == NULL);
    EXPECT(dbDeleteRec(NULL, NULL, NULL) == NULL);
    EXPECT(dbUpdateRec(NULL, NULL, NULL) == NULL);
    EXPECT(dbSelectRec1(NULL, NULL, NULL) == NULL);
    EXPECT(dbSelectRecWithCount(NULL, NULL, NULL, 0) == NULL);
    EXPECT(dbBeginFetch(NULL, NULL) == NULL);
}

static void call_results(void) {
    char target[8] = "";
    DB_RESULT *res = dbMallocResult(1, 1);
    EXPECT(res != NULL && res->uiRowCount == 0 && res->uiFieldCount == 0);
    res->uiRowCount = 1; /* what is cleared is what the counts cover */
    res->uiFieldCount = 1;
    dbResClear(res);
    dbResClear(NULL);
    dbFieldClear(NULL, 0);
    dbValueShow(QDC_TYPE_INT32, NULL, 0);
    dbSetFieldValue(target, "abc", 3, QDC_TYPE_VARCHAR);
    EXPECT(strcmp(target, "abc") == 0);
    EXPECT(getFieldValue("xyz", target, 3) == target);
    EXPECT(dbGetFieldAttr(NULL, 0, NULL) != 0);
    EXPECT(dbMoveNext(NULL) == 0);
    EXPECT(dbGetFields(NULL, NULL, 0) == ORMEL_ERR_NULL_ARG);
    EXPECT(dbGetResult(NULL, NULL) == NULL);
    EXPECT(dbGetResultWithCount(NULL, NULL, 0) == NULL);
    EXPECT(dbGetFetchResult(NULL) == NULL);
    EXPECT(dbCheckTupleField(NULL, 0, 0) == 0);
    EXPECT(dbGetValueFromRes(NULL, 0, 0) == NULL);
    EXPECT(dbGetLengthFromRes(NULL, 0, 0) == 0);
    EXPECT(dbGetTypeFromRes(NULL, 0, 0) == 0);
    EXPECT(dbGetNameFromRes(NULL, 0, 0) == NULL);
    EXPECT(dbGetNtuples(NULL) == 0);
    EXPECT(dbGetNfields(NULL) == 0);
}

static void call_selects(void) {
    EXPECT(ORMEL_LocalExistRecordForConn(NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_LocalExistRecord(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_LocalExistRecordForTrans(NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_GetBatchSelectCount(NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRecForConn(NULL, NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRec(NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRecForTrans(NULL, NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRecForConn2(NULL, NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRec2(NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRecForTrans2(NULL, NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRecForConn3(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRecByObj(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectRecByObjForTrans(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectBatchRecForConn(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_SelectBatchRecByObj(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_ResultConvertDsBuf(NULL, NULL, 0) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_GetAllFieldForCache(NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_GetAllFieldForConn(NULL, NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_AllFieldsGet(NULL, NULL, 0, NULL) == ORMEL_ERR_NULL_ARG);
}

static void call_cursors(void) {
    EXPECT(ORMEL_BeginSelect(NULL, NULL, 0) == NULL);
    EXPECT(ORMEL_BeginSelectSpecifyField(NULL, NULL, 0) == NULL);
    EXPECT(dbBeginFetchSpecifyField(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_FetchSelectRec(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_FetchSelectRecEx(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_EndSelect(NULL) == ORMEL_ERR_FAILED);
}

static void call_writes(void) {
    EXPECT(ORMEL_InsertRecForConn(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_InsertRec(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_InsertRecForTrans(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_DeleteRecForConn(NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_DeleteRec(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_DeleteRecForTrans(NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_UpdateRecForConn(NULL, NULL, NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_UpdateRec(NULL, NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_UpdateRecForTrans(NULL, NULL, NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_InsertRecForConn2(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_InsertRecFormObj(NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_InsertRecByObjForTrans(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_DeleteRecForConn2(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_DeleteRecByObj(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_DeleteRecByObjForTrans(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_UpdateRecForConn2(NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_UpdateRecByObj(NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_UpdateRecByObjForTrans(NULL, NULL, NULL, NULL) == ORMEL_ERR_NULL_ARG);
}

static void call_batches(void) {
    ORMEL_MULTI_OBJECT *multi = ORMEL_Multi_object_Init("T", 2);
    EXPECT(multi != NULL && multi->uiRecNum == 2 && strcmp(multi->astObject[1].acTableName, "T") == 0);
    EXPECT(ORMEL_BatchInsert_Para_Malloc(1, multi) == NULL);
    EXPECT(ORMEL_BatchInsert_Para_Malloc(-1, multi) == NULL);
    ORMEL_BatchInsert_Para_Free(ORMEL_BatchInsert_Para_Malloc(0, multi));
    ORMEL_BatchInsert_Para_Free(NULL);
    ORMEL_Multi_object_UnInit(multi);
    ORMEL_Multi_object_UnInit(NULL);
    EXPECT(ORMEL_Multi_object_Init(NULL, 1) == NULL);
    EXPECT(ORMEL_SetBatchParaByObject(NULL, NULL, NULL) == ORMEL_ERR_FAILED);
    ORMEL_SetBatchParaData(NULL, NULL, 0, QDC_TYPE_INT32, 0);
    ORMEL_SetBatchParaLobData(NULL, NULL, 0, QDC_TYPE_BLOB, 0);
    EXPECT(dbPatchInsertRec(NULL, NULL, NULL) == NULL);
    EXPECT(dbBatchWriteLob(NULL, 0, NULL, NULL, NULL) == ORMEL_INVALID);
    EXPECT(ORMEL_PatchInsertRecForConn2(NULL, NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_PatchInsertRecFormObj(NULL) == ORMEL_ERR_NULL_ARG);
    EXPECT(ORMEL_PatchInsertRecFormObjForTrans(NULL, NULL) == ORMEL_ERR_NULL_ARG);
}

/* Everything but the start and the stop. */
static void call_all(void) {
    call_version_and_error();
    call_config();
    call_slots();
    call_lifecycle();
    call_descriptors();
    call_cache();
    call_tree();
    call_balancing();
    call_lists_and_records();
    call_objects();
    call_select_results();
    call_connections();
    call_statements();
    call_results();
    call_selects();
    call_cursors();
    call_writes();
    call_batches();
}

static void start_and_stop_the_parts(void) {
    EXPECT(ORMEL_ResAttMgrInit() == ORMEL_OK);
    EXPECT(ORMEL_ResAttMgrUnInit() == 0);
    EXPECT(ORMEL_TransMgrInit() == ORMEL_OK);
    ORMEL_TransMgrClean();
}

int main(void) {
    EXPECT(ORMEL_DBConnect() == NULL);
    call_log();
    call_all();
    start_and_stop_the_parts();
    EXPECT(ORMEL_Init() == ORMEL_OK);
    EXPECT(ORMEL_CheckDbStatus(0, 1, 1000) == ORMEL_OK);
    call_all();
    ORMEL_UnInit();
    call_all();
    EXPECT(ORMEL_DBConnect() == NULL);
    printf("%d expectations failed\n", failures);
    return failures == 0 ? 0 : 1;
}
