/*
 * What docs/guide.md shows, in one program. It runs in the bin/ of a home whose database has an empty table
 * CREATE TABLE city (id INTEGER PRIMARY KEY, name VARCHAR(20), people BIGINT)
 */
#include <ormeldb.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#pragma pack(push, 1) /* a record's fields lie back to back */
typedef struct City {
    int32_t id;
    char name[81];
    int64_t people;
} City;
#pragma pack(pop)

enum { ID, NAME, PEOPLE, COLUMNS }; /* positions of the columns, from 0 */

static const City cities[] = {{1, "Oslo", 709037}, {2, "Bergen", 291940}, {3, "Tromsø", 77992}, {4, "Røros", 5581}};

static ORMEL_RECORD_BUFFER bufferOf(City *records, uint16_t count) {
    ORMEL_RECORD_BUFFER buffer = {0};
    buffer.usRecLen = sizeof(City);
    buffer.usRecNum = count;
    buffer.uiBufSize = (uint32_t)(count * sizeof(City));
    buffer.pucData = (uint8_t *)records;
    return buffer;
}

/* A list of one condition. The caller frees it with free. */
static ORMEL_COND *condition(uint8_t column, uint32_t op, const void *value, size_t size) {
    ORMEL_COND *cond = calloc(1, sizeof(ORMEL_COND) + sizeof(ORMEL_COND_ITEM));
    if (cond == NULL)
        abort();
    cond->usCondNum = 1;
    cond->astCond[0].ucFieldId = column;
    cond->astCond[0].uiOp = op;
    memcpy(cond->astCond[0].aucValue, value, size);
    return cond;
}

static int failed(const char *what, uint32_t code) {
    ORMEL_ERROR error = {0};
    if (code == ORMEL_OK)
        return 0;
    ORMEL_LastError(&error);
    fprintf(stderr, "%s: code %u %s\n", what, code, error.acText);
    return 1;
}

/* Whether City is what the database takes for a record. */
static int layoutFits(void) {
    int fits = 0;
    void *conn = ORMEL_DBConnect();
    ORMEL_RES_ATT *table = conn == NULL ? NULL : ORMEL_CreatResAtt(conn, "city", NULL);
    if (table != NULL) {
        const ORMEL_RES_ATT_FIELD *last = &table->astField[table->iAttNum - 1];
        fits = table->iAttNum == COLUMNS && last->offset + last->len == (int32_t)sizeof(City);
    }
    ORMEL_DestoryResAtt(table);
    ORMEL_DBDisConnect(conn);
    return fits;
}

static uint32_t insertAll(void) {
    ORMEL_TRANS *trans = ORMEL_StartTrans(__func__, __LINE__);
    if (trans == NULL)
        return ORMEL_ERR_NO_RESULT;
    for (size_t i = 0; i < sizeof cities / sizeof cities[0]; ++i) {
        City city = cities[i];
        ORMEL_RECORD_BUFFER buffer = bufferOf(&city, 1);
        const uint32_t code = ORMEL_InsertRecForTrans(trans, "city", &buffer);
        if (code != ORMEL_OK) {
            ORMEL_RollbackTrans(trans); /* ends the slot, as a commit does */
            return code;
        }
    }
    return ORMEL_CommitTrans(trans);
}

static uint32_t printOne(int32_t id) {
    City city = {0};
    ORMEL_RECORD_BUFFER buffer = bufferOf(&city, 1);
    ORMEL_COND *cond = condition(ID, ORMEL_OP_EQUAL, &id, sizeof id);
    const uint32_t code = ORMEL_SelectRec("city", cond, 0, &buffer);
    if (code == ORMEL_OK && buffer.usRecNum > 0)
        printf("%d %s %lld\n", city.id, city.name, (long long)city.people);
    free(cond);
    return code;
}

static uint32_t grow(const char *name, int64_t people) {
    City city = {0};
    uint32_t rows = 0;
    ORMEL_RECORD_BUFFER buffer = bufferOf(&city, 1);
    ORMEL_COND *cond = condition(NAME, ORMEL_OP_EQUAL, name, strlen(name));
    ORMEL_FIELD_SELECT *columns = calloc(1, sizeof(ORMEL_FIELD_SELECT) + 1);
    if (columns == NULL)
        abort();
    columns->ucFieldNum = 1;
    columns->aucFieldId[0] = PEOPLE;
    city.people = people; /* the other fields of the record are not looked at */
    const uint32_t code = ORMEL_UpdateRec("city", columns, &buffer, cond, &rows);
    if (code == ORMEL_OK)
        printf("%u updated\n", rows);
    free(columns);
    free(cond);
    return code;
}

/* Turns the rows of a result into records, two at a time. */
static void printResult(const DB_RESULT *result, const ORMEL_RES_ATT *table) {
    City page[2];
    const uint32_t total = dbGetNtuples(result);
    for (uint32_t start = 0; start < total; start += 2) {
        ORMEL_RECORD_BUFFER buffer = bufferOf(page, total - start < 2 ? 1 : 2);
        if (ORMEL_CreatDsbufRangeByRes(&buffer, start, result, table) != ORMEL_OK)
            return;
        for (uint16_t i = 0; i < buffer.usRecNum; ++i)
            printf("%d %s\n", page[i].id, page[i].name);
    }
}

static uint32_t printSmaller(int64_t limit) {
    ORMEL_PARA list = {0};
    DB_RESULT *result = NULL;
    ORMEL_COND *cond = condition(PEOPLE, ORMEL_OP_LESS, &limit, sizeof limit);
    void *conn = ORMEL_DBConnect();
    ORMEL_RES_ATT *table = conn == NULL ? NULL : ORMEL_CreatResAtt(conn, "city", NULL);
    if (table != NULL && ORMEL_ParaCondUpdateByCond(&list, cond, table) == ORMEL_OK)
        result = dbSelectRec(conn, "city", &list);
    if (result != NULL)
        printResult(result, table);
    const uint32_t code = result == NULL ? ORMEL_ERR_NO_RESULT : ORMEL_OK;
    dbResClear(result);
    ORMEL_DestoryResAtt(table);
    ORMEL_DBDisConnect(conn);
    free(cond);
    return code;
}

static uint32_t removeNamed(const char *pattern) {
    uint32_t rows = 0;
    uint32_t left = 0;
    ORMEL_COND *cond = condition(NAME, ORMEL_OP_LIKE, pattern, strlen(pattern));
    uint32_t code = ORMEL_DeleteRec("city", cond, &rows);
    if (code == ORMEL_OK)
        code = ORMEL_LocalExistRecord("city", NULL, &left);
    if (code == ORMEL_OK)
        printf("%u deleted, %u left\n", rows, left);
    free(cond);
    return code;
}

int main(void) {
    if (ORMEL_Init() != ORMEL_OK)
        return 1;
    int bad = !layoutFits();
    bad = bad || failed("insert", insertAll());
    bad = bad || failed("read one", printOne(3));
    bad = bad || failed("update", grow("Røros", 5600));
    bad = bad || failed("read many", printSmaller(300000));
    bad = bad || failed("delete", removeNamed("%s%"));
    ORMEL_UnInit();
    return bad;
}
