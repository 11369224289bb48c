/*
 * Request objects: rows written, found and changed by naming values. It runs in the bin/ of a home whose database has
 * an empty table CREATE TABLE city (id INTEGER PRIMARY KEY, name VARCHAR(20), people BIGINT)
 */
#include <ormeldb.h>
#include <stdio.h>

static int failed(const char *what, uint32_t code) {
    ORMEL_ERROR error = {0};
    if (code == ORMEL_OK)
        return 0;
    ORMEL_LastError(&error);
    fprintf(stderr, "%s: code %u %s\n", what, code, error.acText);
    return 1;
}

/* Inserts one row; people below 0 are not known, which NULL says. */
static uint32_t insert(int32_t id, const char *name, int64_t people) {
    ORMEL_OBJECT city = {0};
    ORMEL_ObjectNameSet(&city, "city");
    ORMEL_ObjectInt32Set(&city, "id", id);
    ORMEL_ObjectStrSet(&city, "name", name);
    if (people < 0)
        ORMEL_ObjectNullSet(&city, "people");
    else
        ORMEL_ObjectInt64Set(&city, "people", people);
    const uint32_t code = ORMEL_InsertRecFormObj(&city); /* commits on its own */
    ORMEL_ObjectParaClear(&city);
    return code;
}

static void printPage(const ORMEL_SELECT_RESULT *page) {
    for (uint32_t row = 0; row < ORMEL_SelectResultRecNumGet(page); ++row) {
        int64_t people = 0;
        printf("  %s: ", ORMEL_ResultStrGet(page, row, "name"));
        if (ORMEL_ResultGetFieldLength(page, row, "people") == 0) /* NULL; asking before keeps the log quiet */
            printf("not known\n");
        else if (ORMEL_ResultInt64Get(page, row, "people", &people) == ORMEL_OK)
            printf("%lld\n", (long long)people);
    }
}

/* Prints the cities whose names meet a pattern, two at a time. */
static uint32_t printLike(const char *pattern) {
    ORMEL_OBJECT wanted = {0};
    uint32_t rows = 0;
    uint32_t code = ORMEL_OK;
    ORMEL_ObjectNameSet(&wanted, "city");
    ORMEL_ObjectStrOptionLikeSet(&wanted, "name", pattern);
    ORMEL_ObjectSelectFieldSet(&wanted, "name");
    ORMEL_ObjectSelectFieldSet(&wanted, "people");
    for (uint32_t start = 0; code == ORMEL_OK && rows == start; start += 2) {
        ORMEL_SELECT_RESULT page = {0};
        ORMEL_ObjectSelectRowCountSet(&wanted, 1, 2, start);
        code = ORMEL_SelectRecByObj(&wanted, &page);
        if (code != ORMEL_OK)
            break;
        rows += ORMEL_SelectResultRecNumGet(&page);
        printf("page %u\n", start / 2 + 1);
        printPage(&page);
        ORMEL_SelectResultClear(&page);
    }
    ORMEL_ObjectParaClear(&wanted);
    return code;
}

/* Cities of fewer people than that get a new number of them. */
static uint32_t grow(int64_t fewerThan, int64_t people) {
    ORMEL_OBJECT values = {0};
    ORMEL_OBJECT which = {0};
    uint32_t rows = 0;
    ORMEL_ObjectNameSet(&values, "city");
    ORMEL_ObjectInt64Set(&values, "people", people);
    ORMEL_ObjectNameSet(&which, "city");
    ORMEL_ObjectInt64Set(&which, "people", fewerThan);
    which.astItem[which.iItemNum - 1].uiOp = ORMEL_OP_LESS; /* a zeroed item compares for equality */
    const uint32_t code = ORMEL_UpdateRecByObj(&values, &which, &rows);
    if (code == ORMEL_OK)
        printf("%u grew\n", rows);
    ORMEL_ObjectParaClear(&values);
    ORMEL_ObjectParaClear(&which);
    return code;
}

int main(void) {
    if (ORMEL_Init() != ORMEL_OK)
        return 1;
    int bad = failed("insert", insert(1, "Oslo", 709037));
    bad = bad || failed("insert", insert(2, "Bergen", 291940));
    bad = bad || failed("insert", insert(3, "Tromsø", 77992));
    bad = bad || failed("insert", insert(4, "Røros", 5581));
    bad = bad || failed("insert", insert(5, "Soria Moria", -1));
    bad = bad || failed("update", grow(100000, 100000));
    bad = bad || failed("select", printLike("%s%"));
    ORMEL_UnInit();
    return bad;
}
