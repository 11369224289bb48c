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
#define ORMEL_API __attribute__((visibility("default")))
#if defined(__clang__) && defined(__cplusplus)
#define ORMEL_FLEXIBLE(member)                                                                                         \
    _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wc99-extensions\"")                          \
        member _Pragma("clang diagnostic pop")
#else
#define ORMEL_FLEXIBLE(member) __extension__ member
#endif
#define ORMEL_NAME_SIZE 28
#define ORMEL_MAX_SLOTS 16
#define ORMEL_MAX_ITEMS 32
#define ORMEL_MAX_SELECT_FIELDS 32
#define ORMEL_COND_VALUE_SIZE 256
#define ORMEL_CONN_STR_SIZE 512
#define PREFETCH_ROWS 100000
#define ORMEL_OK 0u
#define ORMEL_ERR_FAILED 1u
#define ORMEL_ERR_ABSENT 5u
#define ORMEL_ERR_EMPTY 69u
#define ORMEL_ERR_NULL_ARG 97u
#define ORMEL_ERR_CHECK 98u
#define ORMEL_ERR_OBJ_TABLE 125u
#define ORMEL_ERR_NO_RESULT 211u
#define ORMEL_ERR_TABLE 255u
#define ORMEL_END_OF_DATA 0x202A0056u
#define ORMEL_INVALID 0xFFFFFFFFu
#define QDC_TYPE_INT32 1u
#define QDC_TYPE_INT64 2u
#define QDC_TYPE_DOUBLE 3u
#define QDC_TYPE_CHAR 8u
#define QDC_TYPE_VARCHAR 9u
#define QDC_TYPE_TEXT 10u
#define QDC_TYPE_BINARY 11u
#define QDC_TYPE_VARBINARY 12u
#define QDC_TYPE_CLOB 13u
#define QDC_TYPE_BLOB 14u
#define QDC_TYPE_RAW 23u
#define QDC_TYPE_BOOL 25u
#define ORMEL_OP_EQUAL 0u
#define ORMEL_OP_NOT_EQUAL 1u
#define ORMEL_OP_LESS 2u
#define ORMEL_OP_LESS_EQUAL 3u
#define ORMEL_OP_LIKE 8u
#endif
