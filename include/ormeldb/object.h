/*
 * Request objects: one statement described without a fixed-layout record.
 *
 * An object names a table, up to 32 values and up to 32 columns to select. Whether its values are written or compared
 * is decided by the operation that it is given to: ORMEL_InsertRecFormObj writes them, ORMEL_SelectRecByObj selects the
 * rows that equal all of them. Order matters in the select list, and between the objects of a batch.
 *
 *     ORMEL_OBJECT part = {0};                          // zeroed before the first use, always
 *     ORMEL_ObjectNameSet(&part, "parts");
 *     ORMEL_ObjectInt32Set(&part, "id", 7);
 *     ORMEL_ObjectStrSet(&part, "name", "cog");
 *     ORMEL_ObjectNullSet(&part, "price");
 *     uint32_t code = ORMEL_InsertRecFormObj(&part);    // INSERT INTO parts (id, name, price) ...
 *     ORMEL_ObjectParaClear(&part);                     // frees the copies; the table name stays
 *
 *     ORMEL_ObjectStrOptionLikeSet(&part, "name", "c%");
 *     ORMEL_ObjectSelectFieldSet(&part, "id");
 *     ORMEL_ObjectSelectRowCountSet(&part, 1, 20, 40);  // the third page of 20 rows
 *     code = ORMEL_SelectRecByObj(&part, &result);      // SELECT id FROM parts WHERE name like ... limit 20 offset 40
 *     ORMEL_ObjectParaClear(&part);
 *
 * The object is its caller's and is used by one thread at a time. Whatever a setter is given is copied.
 */
#ifndef ORMELDB_OBJECT_H
#define ORMELDB_OBJECT_H

#include "base.h"

ORMEL_BEGIN_DECLS

struct ORMEL_RES_ATT;
struct ORMEL_RES_ATT_FIELD;

/*
 * These records are packed to 4 bytes and shared with their callers to the byte. Use members through the record: a
 * pointer to one of the pointer members is not aligned.
 */
#pragma pack(push, 4)

/* One named value. 52 bytes. */
typedef struct ORMEL_OBJECT_ITEM {
    char acName[ORMEL_NAME_SIZE];        /* column name */
    uint32_t uiLength;                   /* bytes of the value */
    void *pValue;                        /* heap copy of the value, owned by the object */
    uint32_t uiOp;                       /* operator code where the item is a condition; clearing the object keeps it */
    struct ORMEL_RES_ATT_FIELD *pstInfo; /* the column's descriptor entry, set by the check of the object */
} ORMEL_OBJECT_ITEM;

/* A request. 1972 bytes; zeroed by its owner before the first use. */
typedef struct ORMEL_OBJECT {
    uint32_t uiReserved;
    int32_t iItemNum;                              /* items in use, 0 to 32 */
    char acTableName[ORMEL_NAME_SIZE];             /* table name */
    ORMEL_OBJECT_ITEM astItem[ORMEL_MAX_ITEMS];    /* values in the order in which they were set */
    int32_t iSelectFieldNum;                       /* select fields in use, 0 to 32 */
    char *apcSelectField[ORMEL_MAX_SELECT_FIELDS]; /* column names, heap blocks of 28 bytes owned by the object */
    uint32_t isLimit;                              /* not 0: the select is paged */
    uint32_t iRowCounts;                           /* rows of a page */
    uint32_t iOffset;                              /* rows to skip */
} ORMEL_OBJECT;

/* A batch of requests for one table. 32 bytes and the objects, back to back. */
typedef struct ORMEL_MULTI_OBJECT {
    char acTableName[ORMEL_NAME_SIZE];
    uint32_t uiRecNum; /* objects that follow */
    ORMEL_FLEXIBLE(ORMEL_OBJECT astObject[]);
} ORMEL_MULTI_OBJECT;

#pragma pack(pop)

/* --- Table ---------------------------------------------------------------------------------------------------------
 */

/*
 * Copies the table's name. Returns 0, always: a name of 28 bytes and more leaves an empty name, which the operation
 * then refuses. A NULL object: nothing happens.
 */
ORMEL_API uint32_t ORMEL_ObjectNameSet(ORMEL_OBJECT *pstObj, const char *pcTableName);
/* The table's name inside the object; NULL for NULL. */
ORMEL_API char *ORMEL_ObjectNameGet(ORMEL_OBJECT *pstObj);
/* The same for a batch; 97 when a pointer is NULL. */
ORMEL_API uint32_t ORMEL_ObjectNameSetForMulti(ORMEL_MULTI_OBJECT *pstMulti, const char *pcTableName);
ORMEL_API char *ORMEL_ObjectNameGetForMulti(ORMEL_MULTI_OBJECT *pstMulti);

/* --- Values --------------------------------------------------------------------------------------------------------
 */

/*
 * Each appends one named value as the object's next item, in a heap block of its own.
 *
 * They return 0; 97 when a pointer is NULL (or, for bytes, their number is below 1); 1 when the object has 32 items or
 * the block cannot be allocated. A failing setter leaves the count as it was. A column name of 28 bytes and more is
 * stored as an empty one, which the operation then refuses with 98; ORMEL_ObjectStrOptionLikeSet refuses it with 1.
 *
 * A value whose column has a fixed width (integers, booleans, doubles) must have that width, or the operation refuses
 * the object with 98: set a BIGINT with Int64Set, an INTEGER with one of the narrower ones, a DOUBLE as its 8 bytes.
 */

/*
 * Copies iLen bytes: any column. A text set so carries no terminator and ends at its first NUL or at iLen. An empty
 * byte string is set by ORMEL_ObjectStrSet with "".
 */
ORMEL_API uint32_t ORMEL_ObjectBinarySet(ORMEL_OBJECT *pstObj, const char *pcName, const void *pValue, int32_t iLen);
/* Store 4 bytes, the value with its sign: columns of client type 1 and 25. */
ORMEL_API uint32_t ORMEL_ObjectInt8Set(ORMEL_OBJECT *pstObj, const char *pcName, int8_t cValue);
ORMEL_API uint32_t ORMEL_ObjectInt16Set(ORMEL_OBJECT *pstObj, const char *pcName, int16_t sValue);
ORMEL_API uint32_t ORMEL_ObjectInt32Set(ORMEL_OBJECT *pstObj, const char *pcName, int32_t iValue);
/* Stores 8 bytes: columns of client type 2. */
ORMEL_API uint32_t ORMEL_ObjectInt64Set(ORMEL_OBJECT *pstObj, const char *pcName, int64_t llValue);
/*
 * Copy a text and its terminator, which the item's length does not count: columns that travel as text, numbers with
 * decimals and dates among them. All four are the same function. An empty text is a value, not NULL.
 */
ORMEL_API uint32_t ORMEL_ObjectStrSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue);
ORMEL_API uint32_t ORMEL_ObjectJsonSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue);
ORMEL_API uint32_t ORMEL_ObjectJsonbSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue);
ORMEL_API uint32_t ORMEL_ObjectTextSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue);
/*
 * Copies a pattern for a condition "name like pattern" as it stands, '%' and '_' included, and gives the item the
 * operator code 8. Failures are logged. The code stays with the item when the object is cleared: the next value that
 * takes its place compares with "like" too until its uiOp is set to 0.
 */
ORMEL_API uint32_t ORMEL_ObjectStrOptionLikeSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcPattern);
/*
 * An addition of this library: an item without a value, SQL NULL in inserts and updates of every type of column. As a
 * condition it is refused with 98, since no value equals NULL; see docs/limits.md for selecting rows by NULL.
 */
ORMEL_API uint32_t ORMEL_ObjectNullSet(ORMEL_OBJECT *pstObj, const char *pcName);

/*
 * Other operators have no setter: a caller writes the code into the item that was set last.
 *
 *     ORMEL_ObjectInt32Set(&part, "id", 100);
 *     part.astItem[part.iItemNum - 1].uiOp = 2;         // id < 100; dbGetOpStr tells the codes
 */

/* --- What a select returns -----------------------------------------------------------------------------------------
 */

/*
 * Appends a column to the select list; without any, a select returns all columns. Returns 0; 97 when a pointer is
 * NULL; 1, with a line in the log, when there are 32, the name has 28 bytes and more or memory is short.
 */
ORMEL_API uint32_t ORMEL_ObjectSelectFieldSet(ORMEL_OBJECT *pstObj, const char *pcFieldName);
/*
 * Pages a select: with uiIsLimit not 0, at most uiRowCounts rows after the first uiOffset ones, each up to 2147483647:
 * larger numbers reach the database as negative ones. Rows come in no particular order, so page over a table that does
 * not change. Returns 0; 97 when the object is NULL.
 */
ORMEL_API uint32_t ORMEL_ObjectSelectRowCountSet(ORMEL_OBJECT *pstObj, uint32_t uiIsLimit, uint32_t uiRowCounts,
                                                 uint32_t uiOffset);

/* --- Check and release ---------------------------------------------------------------------------------------------
 */

/*
 * Compares the object with a table's descriptor and notes in every item the entry of its column, which must live until
 * the object's statement has run. The operations do this themselves.
 *
 * Returns 0; 98 when the object or descriptor is NULL, the table's name, an item's or a select field's is empty or has
 * no end, a column is unknown, a value does not have its column's fixed width, or a count is not 0 to 32.
 */
ORMEL_API uint32_t ORMEL_ObjectCheck(ORMEL_OBJECT *pstObj, struct ORMEL_RES_ATT *pstResAtt);

/*
 * Frees the values and select fields and sets both counts to 0. The table's name, the paging and the items' operator
 * codes stay. Twice is harmless, and so is NULL.
 */
ORMEL_API void ORMEL_ObjectParaClear(ORMEL_OBJECT *pstObj);

ORMEL_END_DECLS

#endif
