/*
 * A program as it was written for the first headers: it uses every family of the interface. Never edited; README.md
 * beside it says why. It runs in the bin/ of a home whose embedded database is empty.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <ormeldb.h>
#include <ormeldb/cache.h>
#include <ormeldb/qdc.h>
#include <ormeldb/tree.h>

#define REQUIRE(condition)                                                                                             \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            printf("%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                                             \
            exit(1);                                                                                                   \
        }                                                                                                              \
    } while (0)

#pragma pack(push, 1)
typedef struct City {
    int32_t id;
    char name[81];
    int64_t people;
} City;
#pragma pack(pop)

enum { ID, NAME, PEOPLE, COLUMNS };

static ORMEL_RECORD_BUFFER buffer_of(City *cities, uint16_t count) {
    ORMEL_RECORD_BUFFER buffer = {sizeof *cities, count, (uint32_t)(count * sizeof *cities), 0, (uint8_t *)cities};
    return buffer;
}

static ORMEL_COND *by_id(uint32_t op, int32_t id) {
    ORMEL_COND *list = calloc(1, sizeof *list + sizeof *list->astCond);
    REQUIRE(list != NULL);
    list->usCondNum = 1;
    list->astCond[0].ucFieldId = ID;
    list->astCond[0].uiOp = op;
    memcpy(list->astCond[0].aucValue, &id, sizeof id);
    return list;
}

/* The client and the access layer: the table is made by a statement of one's own. */
static void make_table(void) {
    void *conn = ORMEL_DBConnect();
    void *stmt = dbCreateStmt(conn);
    REQUIRE(stmt != NULL);
    REQUIRE(qdc_prepare(stmt, "CREATE TABLE city (id INTEGER PRIMARY KEY, name VARCHAR(20), people BIGINT)") == 0);
    REQUIRE(qdc_execute(stmt) == 0);
    dbFreeStmt(stmt);
    REQUIRE(dbCommitTrans(conn) == 0);
    ORMEL_DBDisConnect(conn);
}

/* Descriptors. */
static void look_at_table(void) {
    char names[COLUMNS][ORMEL_NAME_SIZE];
    uint8_t count = 0;
    void *conn = ORMEL_DBConnect();
    ORMEL_RES_ATT *city = ORMEL_CreatResAtt(conn, "city", NULL);
    REQUIRE(city != NULL && city->iAttNum == COLUMNS && strcmp(city->acTableName, "city") == 0);
    REQUIRE(city->astField[ID].atttypid == (int32_t)QDC_TYPE_INT32 && city->astField[ID].format == 1);
    REQUIRE(city->astField[NAME].atttypid == (int32_t)QDC_TYPE_VARCHAR && city->astField[NAME].len == 81);
    REQUIRE(city->astField[PEOPLE].offset == 85 && city->astField[PEOPLE].attcolid == PEOPLE);
    REQUIRE(ORMEL_GetFieldIdByNameFromResAttr(city, "people") == PEOPLE);
    ORMEL_DestoryResAtt(city);
    ORMEL_DBDisConnect(conn);
    REQUIRE(ORMEL_AllFieldsGet("city", names, COLUMNS, &count) == ORMEL_OK && count == COLUMNS);
    REQUIRE(strcmp(names[NAME], "NAME") == 0);
}

/* Records, with a transaction, and conditions. */
static void use_records(void) {
    City oslo = {1, "Oslo", 709037}, bergen = {2, "Bergen", 291940}, read = {0, "", 0};
    ORMEL_RECORD_BUFFER in = buffer_of(&oslo, 1), out = buffer_of(&read, 1);
    ORMEL_COND *second = by_id(ORMEL_OP_EQUAL, 2);
    ORMEL_FIELD_SELECT *people = calloc(1, sizeof *people + 1);
    uint32_t count = 0;
    REQUIRE(ORMEL_InsertRec("city", &in) == ORMEL_OK);
    ORMEL_TRANS *slot = ORMEL_StartTrans(__func__, __LINE__);
    REQUIRE(slot != NULL && slot->uiLine != 0 && g_stTransMgr.uiCount == 1);
    in = buffer_of(&bergen, 1);
    REQUIRE(ORMEL_InsertRecForTrans(slot, "city", &in) == ORMEL_OK);
    REQUIRE(ORMEL_CommitTrans(slot) == ORMEL_OK);
    REQUIRE(ORMEL_LocalExistRecord("city", NULL, &count) == ORMEL_OK && count == 2);
    REQUIRE(people != NULL);
    people->ucFieldNum = 1;
    people->aucFieldId[0] = PEOPLE;
    bergen.people = 300000;
    REQUIRE(ORMEL_UpdateRec("city", people, &in, second, &count) == ORMEL_OK && count == 1);
    REQUIRE(ORMEL_SelectRec("city", second, 0, &out) == ORMEL_OK && out.usRecNum == 1);
    REQUIRE(read.id == 2 && strcmp(read.name, "Bergen") == 0 && read.people == 300000);
    REQUIRE(ORMEL_InsertRec("city", &in) == ORMEL_ERR_NO_RESULT); /* the number is taken */
    free(people);
    free(second);
}

static void expect_error(void) {
    ORMEL_ERROR error;
    REQUIRE(ORMEL_LastError(&error) == ORMEL_OK && error.uiCode != 0 && strstr(error.acText, "city.id") != NULL);
}

/* Batches. */
static void insert_batch(void) {
    ORMEL_MULTI_OBJECT *cities = ORMEL_Multi_object_Init("city", 3);
    REQUIRE(cities != NULL && cities->uiRecNum == 3);
    for (int32_t i = 0; i < 3; ++i) {
        REQUIRE(ORMEL_ObjectInt32Set(&cities->astObject[i], "id", 10 + i) == ORMEL_OK);
        REQUIRE(ORMEL_ObjectStrSet(&cities->astObject[i], "name", "Somewhere") == ORMEL_OK);
        REQUIRE(i == 2 ? ORMEL_ObjectNullSet(&cities->astObject[i], "people") == ORMEL_OK
                       : ORMEL_ObjectInt64Set(&cities->astObject[i], "people", 1000 + i) == ORMEL_OK);
    }
    REQUIRE(ORMEL_PatchInsertRecFormObj(cities) == ORMEL_OK);
    ORMEL_Multi_object_UnInit(cities);
}

/* Request objects and what they select. */
static void use_objects(void) {
    ORMEL_OBJECT city;
    ORMEL_SELECT_RESULT found = {NULL, NULL, 0};
    City record;
    ORMEL_RECORD_BUFFER buffer = buffer_of(&record, 1);
    int64_t people = 0;
    int32_t id = 0;
    memset(&city, 0, sizeof city);
    ORMEL_ObjectNameSet(&city, "city");
    REQUIRE(ORMEL_ObjectStrOptionLikeSet(&city, "name", "Some%") == ORMEL_OK);
    REQUIRE(city.iItemNum == 1 && city.astItem[0].uiOp == ORMEL_OP_LIKE && city.astItem[0].uiLength == 5);
    REQUIRE(ORMEL_ObjectSelectRowCountSet(&city, 1, 2, 1) == ORMEL_OK);
    REQUIRE(ORMEL_SelectRecByObj(&city, &found) == ORMEL_OK && found.uiRecNum == 2);
    REQUIRE(found.pstRes->uiFieldCount == COLUMNS && found.pstRes->ppRows[0][NAME].uiLength == 10);
    REQUIRE(strcmp(found.pstRes->ppRows[0][NAME].acName, "NAME") == 0);
    REQUIRE(ORMEL_ResultInt32Get(&found, 0, "id", &id) == ORMEL_OK && id == 11);
    REQUIRE(ORMEL_ResultInt64Get(&found, 0, "people", &people) == ORMEL_OK && people == 1001);
    REQUIRE(ORMEL_ResultInt64Get(&found, 1, "people", &people) == ORMEL_ERR_ABSENT);
    REQUIRE(strcmp(ORMEL_ResultStrGet(&found, 1, "name"), "Somewhere") == 0);
    REQUIRE(ORMEL_ResultConvertDsBuf(&found, &buffer, 0) == ORMEL_OK && record.id == 11 && record.people == 1001);
    ORMEL_SelectResultClear(&found);
    ORMEL_ObjectParaClear(&city);
}

/* Cursors, over an object with select fields. */
static void read_by_cursor(void) {
    ORMEL_OBJECT city;
    ORMEL_SELECT_RESULT row = {NULL, NULL, 0};
    uint32_t rows = 0, code;
    memset(&city, 0, sizeof city);
    ORMEL_ObjectNameSet(&city, "city");
    REQUIRE(ORMEL_ObjectSelectFieldSet(&city, "name") == ORMEL_OK && city.iSelectFieldNum == 1);
    ORMEL_TRANS *cursor = ORMEL_BeginSelectSpecifyField(&city, __func__, __LINE__);
    REQUIRE(cursor != NULL && cursor->pstResAtt->iAttNum == 1);
    while ((code = ORMEL_FetchSelectRecEx(cursor, &row)) == ORMEL_OK) {
        REQUIRE(ORMEL_ResultGetFieldNum(&row) == 1 && ORMEL_ResultStrGet(&row, 0, "name") != NULL);
        ORMEL_SelectResultClearForFetch(&row);
        ++rows;
    }
    ORMEL_SelectResultClearForFetch(&row);
    REQUIRE(code == ORMEL_END_OF_DATA && rows == 5);
    REQUIRE(ORMEL_EndSelect(cursor) == ORMEL_OK);
    ORMEL_ObjectParaClear(&city);
}

/* Parameter lists and the access layer under them. */
static void use_lists(void) {
    ORMEL_PARA list;
    ORMEL_COND *small = by_id(ORMEL_OP_LESS_EQUAL, 2);
    void *conn = ORMEL_DBConnect();
    ORMEL_RES_ATT *city = ORMEL_CreatResAtt(conn, "city", NULL);
    memset(&list, 0, sizeof list);
    REQUIRE(ORMEL_ParaCondUpdateByCond(&list, small, city) == ORMEL_OK);
    REQUIRE(list.iCondNum == 1 && list.op[0] == ORMEL_OP_LESS_EQUAL && list.length[0] == 4 && list.type[0] == 1);
    char *text = dbDeleteMallocSql("city", &list);
    REQUIRE(text != NULL && strcmp(text, "DELETE from city WHERE ID <= :1") == 0);
    free(text);
    DB_RESULT *rows = dbSelectRec(conn, "city", &list);
    REQUIRE(dbGetNtuples(rows) == 2 && dbGetNfields(rows) == COLUMNS);
    REQUIRE(dbGetIntValue(dbGetValueFromRes(rows, 1, ID), dbGetLengthFromRes(rows, 1, ID)) == 2);
    dbResClear(rows);
    DB_RESULT *gone = dbDeleteRec(conn, "city", &list);
    REQUIRE(gone != NULL && gone->uiRowCount == 2 && gone->ppRows == NULL);
    dbResClear(gone);
    ORMEL_DestoryResAtt(city);
    ORMEL_DBDisConnect(conn);
    free(small);
}

typedef struct Element {
    ORMEL_AVL_NODE node;
    int32_t key;
} Element;

static int compare(const void *a, const void *b) {
    const int32_t left = *(const int32_t *)a, right = *(const int32_t *)b;
    return (left > right) - (left < right);
}

/* The tree and the cache. */
static void use_tree_and_cache(void) {
    Element elements[3] = {{{0, NULL, NULL}, 2}, {{0, NULL, NULL}, 3}, {{0, NULL, NULL}, 1}};
    ORMEL_AVL_TREE tree = {NULL, compare, NULL, offsetof(Element, key), offsetof(Element, node)};
    ORMEL_CACHE_MGR cache;
    const int32_t key = 7;
    for (int i = 0; i < 3; ++i) {
        ormel_avl_node_init(&elements[i].node);
        REQUIRE(ormel_avl_insert(&tree, &elements[i].node) == ORMEL_OK);
    }
    REQUIRE(ormel_avl_get_first(&tree) == &elements[2] && ormel_avl_get_last(&tree) == &elements[1]);
    memset(&cache, 0, sizeof cache);
    REQUIRE(ORMEL_CacheInit(&cache, compare, NULL) == 0);
    REQUIRE(ORMEL_CacheAdd(&cache, &key, sizeof key) == ORMEL_OK && cache.iCount == 1);
    REQUIRE(*(const int32_t *)ORMEL_CacheFind(&cache, &key) == 7);
    ORMEL_CacheUnInit(&cache);
}

/* Configuration, log and version. */
static void use_the_rest(void) {
    ORMEL_CONN_CFG config;
    REQUIRE(ORMEL_ConnCfgRead(&config) == ORMEL_OK);
    REQUIRE(strcmp(config.acDbName, "../data/ormel.db") == 0 && config.acPassword[0] != '\0');
    REQUIRE(strcmp(g_stLogCfgs[KPL_LOG_CFG_ORMEL].pcModule, "LOG_ORMEL") == 0);
    KPL_VemloLogToFile("LOG_ORMEL", __FILE__, strlen(__FILE__), __func__, strlen(__func__), __LINE__, KPL_LOG_INFO,
                       "%d", 1);
    REQUIRE(ORMEL_Version()[0] >= '0' && ORMEL_Version()[0] <= '9');
}

int main(void) {
    REQUIRE(ORMEL_Init() == ORMEL_OK);
    make_table();
    look_at_table();
    use_records();
    expect_error();
    insert_batch();
    use_objects();
    read_by_cursor();
    use_lists();
    use_tree_and_cache();
    use_the_rest();
    ORMEL_UnInit();
    printf("what was built first still runs\n");
    return 0;
}
