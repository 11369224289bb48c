/*
 * Cursors: a table read row by row, however large. It runs in the bin/ of a home whose database has a table
 * CREATE TABLE city (id INTEGER PRIMARY KEY, name VARCHAR(20), people BIGINT)
 */
#include <ormeldb.h>
#include <stdio.h>

/* Adds up a column over the whole table. */
static uint32_t countPeople(int64_t *total) {
    ORMEL_TRANS *cursor = ORMEL_BeginSelect("city", __func__, __LINE__);
    ORMEL_SELECT_RESULT city = {0};
    uint32_t code = ORMEL_ERR_NO_RESULT;
    if (cursor == NULL)
        return code; /* the log says why; there is nothing to end */
    while ((code = ORMEL_FetchSelectRecEx(cursor, &city)) == ORMEL_OK) {
        int64_t people = 0;
        if (ORMEL_ResultGetFieldLength(&city, 0, "people") > 0) /* not NULL */
            ORMEL_ResultInt64Get(&city, 0, "people", &people);
        *total += people;
        ORMEL_SelectResultClearForFetch(&city);
    }
    ORMEL_SelectResultClearForFetch(&city); /* the end of data has an empty result */
    ORMEL_EndSelect(cursor);                /* always, also after an error */
    return code == ORMEL_END_OF_DATA ? ORMEL_OK : code;
}

#pragma pack(push, 1) /* a record of the selected columns, in their order */
typedef struct NameAndId {
    char name[81];
    int32_t id;
} NameAndId;
#pragma pack(pop)

/* Prints the names of the cities up to an id, as records. */
static uint32_t printNames(int32_t lastId) {
    ORMEL_OBJECT wanted = {0};
    NameAndId city = {0};
    ORMEL_RECORD_BUFFER buffer = {0};
    uint32_t code = ORMEL_ERR_NO_RESULT;
    buffer.usRecLen = sizeof city;
    buffer.uiBufSize = sizeof city;
    buffer.pucData = (uint8_t *)&city;
    ORMEL_ObjectNameSet(&wanted, "city");
    ORMEL_ObjectInt32Set(&wanted, "id", lastId);
    wanted.astItem[0].uiOp = ORMEL_OP_LESS_EQUAL;
    ORMEL_ObjectSelectFieldSet(&wanted, "name");
    ORMEL_ObjectSelectFieldSet(&wanted, "id");
    ORMEL_TRANS *cursor = ORMEL_BeginSelectSpecifyField(&wanted, __func__, __LINE__);
    ORMEL_ObjectParaClear(&wanted); /* the statement has what it needs */
    if (cursor == NULL)
        return code;
    while ((code = ORMEL_FetchSelectRec(cursor, &buffer)) == ORMEL_OK)
        printf("%d %s\n", city.id, city.name);
    ORMEL_EndSelect(cursor);
    return code == ORMEL_END_OF_DATA ? ORMEL_OK : code;
}

int main(void) {
    int64_t total = 0;
    if (ORMEL_Init() != ORMEL_OK)
        return 1;
    uint32_t code = countPeople(&total);
    if (code == ORMEL_OK)
        printf("%lld people\n", (long long)total);
    if (code == ORMEL_OK)
        code = printNames(2);
    if (code != ORMEL_OK)
        fprintf(stderr, "code %u; the log says why\n", code);
    ORMEL_UnInit();
    return code == ORMEL_OK ? 0 : 1;
}
