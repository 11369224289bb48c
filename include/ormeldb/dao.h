/*
 * The access layer: connections, statements, results. It keeps no state; a connection and all that belongs to it is
 * used by one thread at a time. Connection and statement handles are the client's and opaque.
 */
#ifndef ORMELDB_DAO_H
#define ORMELDB_DAO_H

#include "base.h"
#include "para.h"

ORMEL_BEGIN_DECLS

/* --- Connections and statements -------------------------------------------------------------------------------- */

/*
 * Opens a connection to "host:port" with an SSL mode by name (DISABLED, PREFERRED, REQUIRED, VERIFY_CA, VERIFY_FULL;
 * other text counts as DISABLED). NULL on failure; the log says why. Close it with dbDisconnect.
 */
ORMEL_API void *dbConnect(const char *pcAddress, const char *pcUser, const char *pcPassword, const char *pcSslMode);
/* Closes a connection; what was not committed is discarded. NULL: nothing. */
ORMEL_API void dbDisconnect(void *pConn);
/* The number of an SSL mode's name, whatever its case, 0 to 4; 0 for other text. */
ORMEL_API uint32_t dbSslModeType(const char *pcName);
/* Sets the SSL mode of a connection not yet opened; 0, or the client's status. */
ORMEL_API uint32_t dbSetSSLMode(void *pConn, const char *pcName);
/* A statement of the connection, or NULL. Free it with dbFreeStmt. */
ORMEL_API void *dbCreateStmt(void *pConn);
/* Frees a statement. NULL: nothing. */
ORMEL_API void dbFreeStmt(void *pStmt);
/* Begins a transaction; 0, or the client's status. */
ORMEL_API uint32_t dbStartTrans(void *pConn);
/* Commit and roll back; 0, or the client's status. */
ORMEL_API uint32_t dbCommitTrans(void *pConn);
ORMEL_API uint32_t dbRollbackTrans(void *pConn);
/* Logs the connection's last error at ERROR as "QD-<code> <text>" and keeps it for ORMEL_LastError. */
ORMEL_API void dbPrintError(void *pConn);
/* The SQL text of an operator code; constant. */
ORMEL_API const char *dbGetOpStr(uint32_t uiOp);
/*
 * An integer of 0 (nothing is read, 0), 1 (signed), 2 or 4 (unsigned) or 8 bytes; every other size reads 8 bytes. The
 * address needs no alignment.
 */
ORMEL_API int64_t dbGetIntValue(const void *pValue, uint32_t uiSize);

/* --- What a table looks like ----------------------------------------------------------------------------------- */

/*
 * An executed statement without rows whose columns are the table's, or the request's select fields where it has some.
 * NULL on failure. Free it with dbFreeStmt.
 */
ORMEL_API void *dbSelectAtt(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj);
/*
 * An executed statement over the catalogue: column name, type name, length and position. The table name goes into the
 * text as it stands. NULL on failure; the statement is then kept by the client until the connection closes. Free it
 * with dbFreeStmt.
 */
ORMEL_API void *dbSelectAtt1(void *pConn, const char *pcTableName);
/* The type id of a column by name, which is turned to upper case in place; 0 when there is none. */
ORMEL_API uint32_t dbGetFieldTypebyName(void *pStmt, char *pcName);

/* --- SQL texts ------------------------------------------------------------------------------------------------- */

/*
 * The text of one statement over a parameter list, with placeholders ":1", ":2" ... in slot order. The caller frees it
 * with free. NULL when it cannot be allocated, a pointer is NULL or a count is outside its capacity. Names go into the
 * text as they stand, values never do.
 */
ORMEL_API char *dbCountMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API char *dbSelectMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API char *dbInsertMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API char *dbDeleteMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API char *dbUpdateMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara);

/* --- Binding --------------------------------------------------------------------------------------------------- */

/* Large-object slots among the fields and among the conditions of a list. */
ORMEL_API uint32_t dbLobCount(const ORMEL_PARA *pstPara, int32_t iWithFields, int32_t iWithConds);
/* A zeroed block of uiCount * 16 bytes for large-object slots, or NULL. The caller frees it with free. */
ORMEL_API void *dbMallocLob(uint32_t uiCount);
/*
 * Binds the slots from iStart on: up to the last field where iWithFields is set, else up to the last condition where
 * iWithConds is set. Slot i fills placeholder i+1. *ppLobData receives the large-object slots, or NULL; free them with
 * free after the statement has run, on every path, also where the binding failed. It is not written where they cannot
 * be allocated.
 *
 * Returns 1 when all are bound, else 0 (the reverse of the client's status codes).
 */
ORMEL_API uint32_t dbBindPara(void *pStmt, const ORMEL_PARA *pstPara, int32_t iWithFields, int32_t iWithConds,
                              int32_t iStart, void **ppLobData);

/* --- Results --------------------------------------------------------------------------------------------------- */

/* One cell. 56 bytes. */
typedef struct DB_FIELD {
    char acName[ORMEL_NAME_SIZE]; /* column name; empty where it has 28 characters and more */
    uint32_t uiColumnId;          /* position of the column, from 0 */
    uint16_t usType;              /* client type id */
    uint16_t usReserved;          /* 0 */
    uint32_t uiIsType4;           /* 1 when the type id is 4 */
    uint32_t uiLength;            /* bytes of the value, a text's NUL included, a CLOB's not; 0 for SQL NULL */
    void *pValue;                 /* the value, owned by the cell; NULL for SQL NULL */
} DB_FIELD;

/* Rows of a query, or the affected rows of a write (then without rows). 16 bytes. Free it with dbResClear. */
typedef struct DB_RESULT {
    uint32_t uiRowCount;
    uint32_t uiFieldCount;
    DB_FIELD **ppRows;
} DB_RESULT;

/* Describes one column of an executed statement into a cell, whose value stays; 0, or the client's status. */
ORMEL_API uint32_t dbGetFieldAttr(void *pStmt, uint32_t uiPos, DB_FIELD *pstField);
/* A result with zeroed cells and both counts 0, or NULL. */
ORMEL_API DB_RESULT *dbMallocResult(uint32_t uiRows, uint32_t uiFields);
/* Goes to the next row; the rows fetched, 0 at the end and on failure. */
ORMEL_API uint32_t dbMoveNext(void *pStmt);
/*
 * Copies the current row into cells. 0; 97 when pstFields is NULL; 0xFFFFFFFF when a large object cannot be read or
 * a value not be allocated (the row's cells are then cleared).
 */
ORMEL_API uint32_t dbGetFields(void *pStmt, DB_FIELD *pstFields, uint32_t uiFieldCount);
/* The rows of an executed query, PREFETCH_ROWS at most, or NULL. The table's name is used in messages. */
ORMEL_API DB_RESULT *dbGetResult(void *pStmt, const char *pcTableName);
/* Frees the values of cells, and a whole result. NULL: nothing. */
ORMEL_API void dbFieldClear(DB_FIELD *pstFields, uint32_t uiCount);
ORMEL_API void dbResClear(DB_RESULT *pstRes);
/* Dumps a value to the log at TRACE, as ORMEL_ParaValueShow does. */
ORMEL_API void dbValueShow(uint32_t uiType, const void *pValue, uint32_t uiLength);
/* 1 when the result has that cell, else 0. */
ORMEL_API uint32_t dbCheckTupleField(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
/* Parts of a cell; NULL or 0 when there is no such cell. What they point at belongs to the result. */
ORMEL_API void *dbGetValueFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
ORMEL_API uint32_t dbGetLengthFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
ORMEL_API uint32_t dbGetTypeFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
ORMEL_API char *dbGetNameFromRes(const DB_RESULT *pstRes, uint32_t uiRow, int32_t iField);
/* Rows and columns; 0 for NULL. */
ORMEL_API uint32_t dbGetNtuples(const DB_RESULT *pstRes);
ORMEL_API uint32_t dbGetNfields(const DB_RESULT *pstRes);
/* Stores a value: types 1 and 25 as a 4-byte integer read by dbGetIntValue, others as uiLength bytes. */
ORMEL_API void dbSetFieldValue(void *pDest, const void *pSrc, uint32_t uiLength, uint32_t uiType);
/* Copies uiLength bytes and returns pDest. */
ORMEL_API void *getFieldValue(const void *pSrc, void *pDest, uint32_t uiLength);

/* --- Statements over a parameter list -------------------------------------------------------------------------- */

/*
 * Each builds its text, prepares, binds, executes and collects the result; nothing is committed. NULL on failure, with
 * the cause in the log. A write's result has the affected rows as its row count, also 0.
 */
ORMEL_API DB_RESULT *dbCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbSelectRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbInsertRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbDeleteRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
ORMEL_API DB_RESULT *dbUpdateRec(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
/*
 * Selects all columns and returns the statement itself, also when preparing, binding or executing it failed; NULL only
 * when there is no statement. Free it with dbFreeStmt.
 */
ORMEL_API void *dbSelectRec1(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara);
/* As dbSelectRec, with uiCount rows at most, also beyond PREFETCH_ROWS. 0: an empty result. */
ORMEL_API DB_RESULT *dbSelectRecWithCount(void *pConn, const char *pcTableName, const ORMEL_PARA *pstPara,
                                          uint32_t uiCount);
/*
 * The first uiCount rows of an executed query, or NULL; room for all of them is made before the first is read. The
 * table's name is used in messages.
 */
ORMEL_API DB_RESULT *dbGetResultWithCount(void *pStmt, const char *pcTableName, uint32_t uiCount);

/* --- Row by row ------------------------------------------------------------------------------------------------ */

/* Executes "SELECT * FROM" the table; the statement, before its first row, or NULL. Free it with dbFreeStmt. */
ORMEL_API void *dbBeginFetch(void *pConn, const char *pcTableName);
/*
 * The next row as a result of one row, an empty result at the end of data, or NULL when it cannot be read: the
 * statement stays as it is. Free each with dbResClear.
 */
ORMEL_API DB_RESULT *dbGetFetchResult(void *pStmt);

ORMEL_END_DECLS

#endif
