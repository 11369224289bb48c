/*
 * ormeldb: keeps the records of a server process in a relational database, without SQL.
 *
 * CONVENTIONS. They hold wherever a declaration does not say otherwise.
 *
 * (1) Linkage. Everything has C linkage and compiles as C99, C11 and C++20. Structures are allocated by callers and
 *     have fixed layouts; their sizes stand beside them. Callers zero what they pass; there are no initialisers.
 *
 * (2) Codes. A status is a uint32_t: 0 is success, the others are named in ormeldb/base.h. A function that makes
 *     something returns a pointer, NULL on failure. Nothing throws and nothing is retried, but for the connection check
 *     of ORMEL_Init. The log says why a call failed, in the database's own words where these exist; ORMEL_LastError has
 *     them for a program.
 *
 * (3) Handles and who ends them.
 *       connection     ORMEL_DBConnect       ORMEL_DBDisConnect
 *       slot           ORMEL_StartTrans      ORMEL_CommitTrans or ORMEL_RollbackTrans, once, whatever they return
 *       descriptor     ORMEL_CreatResAtt     ORMEL_DestoryResAtt; the cache keeps it until ORMEL_UnInit
 *       cursor         ORMEL_BeginSelect     ORMEL_EndSelect, once, whatever the fetches returned
 *       result         dbSelectRec ...       dbResClear
 *       select result  ORMEL_SelectRec2 ...  ORMEL_SelectResultClear; of a fetch, ORMEL_SelectResultClearForFetch
 *       object         ORMEL_Object...Set    ORMEL_ObjectParaClear
 *       batch          ORMEL_Multi_object_Init   ORMEL_Multi_object_UnInit
 *       statement      dbCreateStmt ...      dbFreeStmt
 *       SQL text       db...MallocSql        free
 *     Record buffers, condition lists and field selections are the caller's and are only read or filled. Pointers that
 *     a getter returns belong to what they were got from.
 *
 * (4) Text. UTF-8, ended by a NUL where a field has room for one. Names of tables and columns have at most 27 bytes,
 *     are compared ignoring case, and go into statements as they stand: they never come from untrusted input. Values
 *     never go into statement texts.
 *
 * (5) Records. A record is the values of a table's columns back to back, in column order, without any padding: a field
 *     begins where the one before it ends. Take a table
 *
 *         CREATE TABLE parts (id INTEGER, name VARCHAR(4), price DOUBLE, weight BIGINT)
 *
 *     whose descriptor says, in bytes (text of 4 characters takes 16 in UTF-8, and one for its NUL):
 *
 *         column    type          offset  length
 *         ID        1 integer          0       4    bytes  0 to  3
 *         NAME      9 text             4      17    bytes  4 to 20, filled up with zeros
 *         PRICE     3 double          21       8    bytes 21 to 28, not aligned: copy it with memcpy
 *         WEIGHT    2 integer         29       8    bytes 29 to 36
 *                                             37    usRecLen
 *
 *     Numbers are in the byte order of the machine. A text ends at its first NUL or at its field's end. NULL cannot be
 *     told from zeros, nor can a large object be carried; ormeldb/dao.h and docs/records.md say what to do.
 *
 * (6) Units. Lengths, sizes and offsets are bytes; rows, columns and records are counted from 0, placeholders from 1;
 *     time-outs say their unit in their name.
 *
 * (7) Threads. The library has no threads of its own and runs in any number of callers' threads. ORMEL_Init and
 *     ORMEL_UnInit exclude all else. A connection, and so a slot, is used by one thread at a time; plain operations
 *     have a connection of their own and need no care. After a fork, only the process that made a connection may use
 *     it.
 *
 * (8) Files. The library reads "../conf/db.conf" and logs to "../var/log", both relative to the working directory when
 *     it is started.
 *
 * A first program: docs/guide.md. The ordered tree and the cache, ormeldb/tree.h and ormeldb/cache.h, are installed and
 * not included here, because their names are generic.
 */
#ifndef ORMELDB_H
#define ORMELDB_H

#include "ormeldb/base.h"
#include "ormeldb/batch.h"
#include "ormeldb/config.h"
#include "ormeldb/cursor.h"
#include "ormeldb/dao.h"
#include "ormeldb/error.h"
#include "ormeldb/lifecycle.h"
#include "ormeldb/log.h"
#include "ormeldb/object.h"
#include "ormeldb/para.h"
#include "ormeldb/record.h"
#include "ormeldb/res_att.h"
#include "ormeldb/result.h"
#include "ormeldb/select.h"
#include "ormeldb/trans.h"
#include "ormeldb/version.h"
#include "ormeldb/write.h"

#endif
