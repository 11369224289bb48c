/*
 * An explicit transaction: both sides of a move happen, or neither. It runs in the bin/ of a home whose database has a
 * table CREATE TABLE city (id INTEGER PRIMARY KEY, name VARCHAR(20), people BIGINT)
 */
#include <ormeldb.h>
#include <stdio.h>

static ORMEL_OBJECT cityOf(int32_t id) {
    ORMEL_OBJECT city = {0};
    ORMEL_ObjectNameSet(&city, "city");
    ORMEL_ObjectInt32Set(&city, "id", id);
    return city;
}

/* The people of one city, as the transaction sees them. */
static uint32_t peopleOf(ORMEL_TRANS *trans, int32_t id, int64_t *people) {
    ORMEL_OBJECT city = cityOf(id);
    ORMEL_SELECT_RESULT found = {0};
    uint32_t code = ORMEL_SelectRecByObjForTrans(trans, &city, &found);
    if (code == ORMEL_OK)
        code = ORMEL_ResultInt64Get(&found, 0, "people", people); /* 5 where there is no such city */
    ORMEL_SelectResultClear(&found);
    ORMEL_ObjectParaClear(&city);
    return code;
}

/* Adds to, or takes from, the people of one city. */
static uint32_t change(ORMEL_TRANS *trans, int32_t id, int64_t difference) {
    int64_t people = 0;
    uint32_t rows = 0;
    uint32_t code = peopleOf(trans, id, &people);
    if (code != ORMEL_OK)
        return code;
    ORMEL_OBJECT values = {0};
    ORMEL_OBJECT which = cityOf(id);
    ORMEL_ObjectNameSet(&values, "city");
    ORMEL_ObjectInt64Set(&values, "people", people + difference);
    code = ORMEL_UpdateRecByObjForTrans(trans, &values, &which, &rows);
    ORMEL_ObjectParaClear(&values);
    ORMEL_ObjectParaClear(&which);
    return code;
}

/* Moves people from one city to another, or nobody. */
static uint32_t move(int32_t from, int32_t to, int64_t people) {
    ORMEL_TRANS *trans = ORMEL_StartTrans(__func__, __LINE__);
    if (trans == NULL)
        return ORMEL_ERR_NO_RESULT;
    uint32_t code = change(trans, from, -people);
    if (code == ORMEL_OK)
        code = change(trans, to, people);
    if (code == ORMEL_OK)
        return ORMEL_CommitTrans(trans);
    ORMEL_RollbackTrans(trans); /* what was taken from the first city is back */
    return code;
}

int main(void) {
    if (ORMEL_Init() != ORMEL_OK)
        return 1;
    printf("from 1 to 2: code %u\n", move(1, 2, 37));
    printf("from 1 to 9: code %u\n", move(1, 9, 1000));
    ORMEL_UnInit();
    return 0;
}
