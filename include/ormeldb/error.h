/* The database error that the calling thread met last. */
#ifndef ORMELDB_ERROR_H
#define ORMELDB_ERROR_H

#include "base.h"

ORMEL_BEGIN_DECLS

/* What the database said. 1036 bytes. */
typedef struct ORMEL_ERROR {
    uint32_t uiCode;   /* the database's own number, as in the log line "QD-..." */
    char acClass[8];   /* SQLSTATE where the database has one, else empty */
    char acText[1024]; /* the database's own words, cut at 1023 bytes */
} ORMEL_ERROR;

/*
 * Copies the error that this thread's calls printed last. It stays until the next one is printed, also over calls
 * that succeed: ask right after a failed call. An addition of this library.
 *
 * Returns 0; 5 when this thread has met no error yet (nothing is written); 97 when pstError is NULL. Any thread.
 */
ORMEL_API uint32_t ORMEL_LastError(ORMEL_ERROR *pstError);

ORMEL_END_DECLS

#endif
