/* What every header of ormeldb shares: linkage, capacities, return codes, type ids and operator codes. */
#ifndef ORMELDB_BASE_H
#define ORMELDB_BASE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define ORMEL_BEGIN_DECLS extern "C" {
#define ORMEL_END_DECLS }
#else
#define ORMEL_BEGIN_DECLS
#define ORMEL_END_DECLS
#endif

/* Marks what libormeldb.so exports. */
#define ORMEL_API __attribute__((visibility("default")))

/* A trailing array whose length a count in front of it gives; C++ has no such arrays of its own. */
#if defined(__clang__) && defined(__cplusplus)
#define ORMEL_FLEXIBLE(member)                                                                                         \
    _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wc99-extensions\"")                          \
        member _Pragma("clang diagnostic pop")
#else
#define ORMEL_FLEXIBLE(member) __extension__ member
#endif

/* --- Capacities ------------------------------------------------------------------------------------------------ */

#define ORMEL_NAME_SIZE 28         /* bytes of a table or column name with its NUL: 27 characters at most */
#define ORMEL_MAX_SLOTS 16         /* transaction slots of a process */
#define ORMEL_MAX_ITEMS 32         /* values of a request object; slots of a parameter list */
#define ORMEL_MAX_SELECT_FIELDS 32 /* select fields of a request object */
#define ORMEL_COND_VALUE_SIZE 256  /* bytes of a condition's value */
#define ORMEL_CONN_STR_SIZE 512    /* bytes of a connection string with its NUL */
#define PREFETCH_ROWS 100000       /* rows asked for ahead, and the most rows of one result buffer */

/* --- Return codes ---------------------------------------------------------------------------------------------- */

#define ORMEL_OK 0u                   /* success */
#define ORMEL_ERR_FAILED 1u           /* size or bounds check, full list, allocation, copy, commit or rollback failed */
#define ORMEL_ERR_ABSENT 5u           /* unknown column or absent value */
#define ORMEL_ERR_EMPTY 69u           /* the value read has length 0 */
#define ORMEL_ERR_NULL_ARG 97u        /* a required argument is NULL */
#define ORMEL_ERR_CHECK 98u           /* a request object fails its check */
#define ORMEL_ERR_OBJ_TABLE 125u      /* object forms: the table's descriptor could not be obtained */
#define ORMEL_ERR_NO_RESULT 211u      /* no connection, or the statement gave no result */
#define ORMEL_ERR_TABLE 255u          /* no descriptor of the table; selects into results: also no result */
#define ORMEL_END_OF_DATA 0x202A0056u /* a cursor has no more rows */
#define ORMEL_INVALID 0xFFFFFFFFu     /* configuration unreadable, slot table full, failed look-up, and more */

/* --- Client type ids ------------------------------------------------------------------------------------------- */

#define QDC_TYPE_INT32 1u      /* 4-byte integer */
#define QDC_TYPE_INT64 2u      /* 8-byte integer */
#define QDC_TYPE_DOUBLE 3u     /* 8-byte floating point */
#define QDC_TYPE_CHAR 8u       /* text of fixed width */
#define QDC_TYPE_VARCHAR 9u    /* text of bounded length */
#define QDC_TYPE_TEXT 10u      /* numbers, dates and the like that travel as text */
#define QDC_TYPE_BINARY 11u    /* byte string of fixed width */
#define QDC_TYPE_VARBINARY 12u /* byte string of bounded length */
#define QDC_TYPE_CLOB 13u      /* large text */
#define QDC_TYPE_BLOB 14u      /* large byte string */
#define QDC_TYPE_RAW 23u       /* byte string, third form */
#define QDC_TYPE_BOOL 25u      /* 4-byte integer, 0 or 1 */

/* --- Operator codes of conditions; every other code means equality --------------------------------------------- */

#define ORMEL_OP_EQUAL 0u
#define ORMEL_OP_NOT_EQUAL 1u
#define ORMEL_OP_LESS 2u
#define ORMEL_OP_LESS_EQUAL 3u
#define ORMEL_OP_LIKE 8u

#endif
