/*
 * Select results: a table's descriptor together with rows of it.
 *
 *     ORMEL_SELECT_RESULT parts = {0};
 *     if (ORMEL_SelectRecByObj(&request, &parts) == ORMEL_OK) {
 *         for (uint32_t row = 0; row < ORMEL_SelectResultRecNumGet(&parts); row++) {
 *             int32_t id = 0;
 *             int64_t weight = 0;
 *             uint32_t code = ORMEL_ResultInt32Get(&parts, row, "id", &id);
 *             const char *name = ORMEL_ResultStrGet(&parts, row, "name");    // NULL: SQL NULL
 *             if (code == ORMEL_OK && ORMEL_ResultInt64Get(&parts, row, "weight", &weight) == ORMEL_ERR_ABSENT)
 *                 printf("%d %s has no weight\n", id, name != NULL ? name : "(nameless)");
 *         }
 *         ORMEL_SelectResultClear(&parts);
 *     }
 *
 * Rows and columns count from 0. What a getter points at lies in the result and is valid until that is cleared. A
 * result is used by one thread at a time. The functions by name look the column up in the descriptor, ignoring case;
 * a thread remembers where it found the names that it used last, so that this costs the same in a narrow table and in a
 * wide one. docs/performance.md compares them with the functions by position.
 *
 * NULL, empty and unknown are told apart so: of an empty text the getters give the address of "" and the length 1 (of
 * an empty CLOB, 0), of an empty byte string an address and the length 0; of SQL NULL they give NULL and the length 0,
 * and so they do of a column, row or position that the result does not have: ask ORMEL_GetFieldIdByNameFromResAttr
 * whether a column is known.
 */
#ifndef ORMELDB_RESULT_H
#define ORMELDB_RESULT_H

#include "dao.h"

ORMEL_BEGIN_DECLS

/* What a select hands out; 24 bytes, zeroed by the caller. */
typedef struct ORMEL_SELECT_RESULT {
    ORMEL_RES_ATT *pstResAtt;
    DB_RESULT *pstRes;
    uint32_t uiRecNum; /* records selected */
} ORMEL_SELECT_RESULT;

/* --- Numbers -------------------------------------------------------------------------------------------------------
 */

/*
 * Stores a number. uiType 1 and 25: 4 bytes at pOut, the value's low 32 bits; any other: as many bytes as the value
 * has, whatever room there is at pOut.
 *
 * Returns 0; 97 when a pointer is NULL; 5, with an ERROR line and nothing stored, when the column is unknown, the row
 * does not exist or the value is NULL; 69, with an ERROR line, when the value has no bytes (types 1 and 25: 0 is
 * stored).
 */
ORMEL_API uint32_t ORMEL_ResultNumberGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                         void *pOut, uint32_t uiType);
/*
 * All three store 4 bytes, whatever their names say: the caller's variable is an int32_t. Of an 8-byte column they
 * store the low half. Codes as above.
 */
ORMEL_API uint32_t ORMEL_ResultInt8Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                       int32_t *piOut);
ORMEL_API uint32_t ORMEL_ResultInt16Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                        int32_t *piOut);
ORMEL_API uint32_t ORMEL_ResultInt32Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                        int32_t *piOut);
/*
 * Stores the value's bytes as they are: 8 of a BIGINT, but 4 of an INTEGER, which leave the other half as it was, and
 * more than 8 of a long text. Use it for 8-byte columns only; of a DOUBLE, ORMEL_ResultNumberGet with QDC_TYPE_DOUBLE
 * stores the 8 bytes. Codes as above.
 */
ORMEL_API uint32_t ORMEL_ResultInt64Get(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName,
                                        int64_t *pllOut);

/* --- Texts and bytes -----------------------------------------------------------------------------------------------
 */

/*
 * The address of a value, NULL for SQL NULL and for what is not there; nothing is logged. Texts end with a NUL, which
 * their length counts; a CLOB's is not counted. By position, and by name; the four by position are one function, and
 * the five by name another.
 */
ORMEL_API void *ORMEL_ResultBinaryGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos);
ORMEL_API char *ORMEL_ResultTextGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos);
ORMEL_API char *ORMEL_ResultJsonGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos);
ORMEL_API char *ORMEL_ResultJsonbGetByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iPos);
ORMEL_API void *ORMEL_ResultBinaryGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API char *ORMEL_ResultStrGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API char *ORMEL_ResultTextGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API char *ORMEL_ResultJsonGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);
ORMEL_API char *ORMEL_ResultJsonbGet(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, const char *pcFieldName);

/* --- Cells by position ---------------------------------------------------------------------------------------------
 */

/* Records in the result; 0 for NULL. */
ORMEL_API uint32_t ORMEL_SelectResultRecNumGet(const ORMEL_SELECT_RESULT *pstResult);
/* Columns of its rows; 0 for NULL and without rows. */
ORMEL_API uint32_t ORMEL_ResultGetFieldNum(const ORMEL_SELECT_RESULT *pstResult);
/* The address of a value; NULL for SQL NULL and for what is not there. */
ORMEL_API void *ORMEL_ResultGetFieldValue(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol);
/* Its bytes, a text's NUL included; 0 for SQL NULL and for what is not there; 0xFFFFFFFF without a result or name. */
ORMEL_API uint32_t ORMEL_ResultGetFieldLengthByPos(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol);
ORMEL_API uint32_t ORMEL_ResultGetFieldLength(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow,
                                              const char *pcFieldName);
/* The client type id of a column, taken from the first row; 0 when there is none. */
ORMEL_API uint32_t ORMEL_ResultGetFieldType(const ORMEL_SELECT_RESULT *pstResult, int32_t iCol);
/*
 * The LENGTH of a column's field in a record, in spite of the name: callers step through a record with it. 0xFFFFFFFF
 * when the result, its descriptor or the column is not there.
 */
ORMEL_API uint32_t ORMEL_ResultGetFieldOffset(const ORMEL_SELECT_RESULT *pstResult, int32_t iCol);
/*
 * Stores a value at pOut: 4 bytes of integers and booleans (types 1 and 25), else as many as the value has, a text's
 * NUL included. Returns 0; 5, with nothing stored, when the value is NULL or is not there, or an argument is NULL.
 */
ORMEL_API uint32_t ORMEL_ResultSetFieldValue(const ORMEL_SELECT_RESULT *pstResult, uint32_t uiRow, int32_t iCol,
                                             void *pOut);

/* --- Comparison ----------------------------------------------------------------------------------------------------
 */

/*
 * The names of the columns in which two results of one record each differ, in column order. acNames has room for iMax
 * names of 28 bytes; the result *pucCount is their number modulo 256. Columns differ in the lengths or bytes of their
 * values; a NULL differs from a value only by its length.
 *
 * Returns 0; 1 when a pointer is NULL, a result does not have exactly one record, the numbers of columns differ or are
 * more than iMax, or a column's types differ, in which case the names written so far stay and *pucCount is not written.
 */
ORMEL_API uint32_t ORMEL_ResultDiffFieldsGet(const ORMEL_SELECT_RESULT *pstA, const ORMEL_SELECT_RESULT *pstB,
                                             char acNames[][ORMEL_NAME_SIZE], int32_t iMax, uint8_t *pucCount);

/* --- Making and releasing ------------------------------------------------------------------------------------------
 */

/* Stores the three members; what was there before is not freed. NULL: nothing. */
ORMEL_API void ORMEL_SelectResultSet(ORMEL_SELECT_RESULT *pstResult, ORMEL_RES_ATT *pstResAtt, DB_RESULT *pstRes,
                                     uint32_t uiRecNum);
/* Gives the descriptor back, frees the rows and zeroes the result; before ORMEL_UnInit. Twice is harmless, and NULL. */
ORMEL_API void ORMEL_SelectResultClear(ORMEL_SELECT_RESULT *pstResult);
/* The same for a row that a cursor fetched: its descriptor belongs to the slot and stays in the result. */
ORMEL_API void ORMEL_SelectResultClearForFetch(ORMEL_SELECT_RESULT *pstResult);

ORMEL_END_DECLS

#endif
