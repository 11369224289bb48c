/* Where the database is: "../conf/db.conf" and the password. */
#ifndef ORMELDB_CONFIG_H
#define ORMELDB_CONFIG_H

#include "base.h"

ORMEL_BEGIN_DECLS

/*
 * The connection data; every field is NUL-terminated text. 2016 bytes. Values longer than a field less two characters
 * are cut.
 */
typedef struct ORMEL_CONN_CFG {
    char acHost[64];         /* db.host */
    char acPort[16];         /* db.port, as text */
    char acDbName[64];       /* db.dbname */
    char acUser[64];         /* db.user */
    char acPassword[256];    /* from libdecrypt */
    char acSslCert[512];     /* auth.sslcert */
    char acSslKey[512];      /* auth.sslkey */
    char acSslRootCert[512]; /* auth.sslrootcert */
    char acSslMode[16];      /* auth.sslmode */
} ORMEL_CONN_CFG;

/*
 * Clears the record and fills it from "../conf/db.conf", relative to the working directory: lines key=value, the key
 * as it stands, the value up to the next "=" and trimmed; unknown keys and other lines are skipped. The password comes
 * from libdecrypt.
 *
 * Returns 0; 0xFFFFFFFF when the file cannot be resolved or opened or when there is no password (the other fields
 * then stay filled), with an ERROR line. ORMEL_Init calls it. Serialised by g_cfgParseMutex.
 */
ORMEL_API uint32_t ORMEL_ConnCfgRead(ORMEL_CONN_CFG *pstCfg);

/*
 * Writes the connection string, password included, into pcOut, which has room for 512 bytes: the preset one (see
 * ORMEL_TransConnStr) where there is one, else "host=... port=... user=... password=... dbname=...". A preset string is
 * logged whole at DEBUG, passwords in it included; the other form is logged without its password.
 *
 * Returns 0; 1 when pcOut is NULL. Reads the configuration without a lock, so after the start only.
 */
ORMEL_API uint32_t ORMEL_TransBuildConnStr(char *pcOut);

/*
 * The preset connection string: 512 bytes of the library's own, empty at first, that the caller may fill with
 * NUL-terminated text after the start. Whatever stands there is logged at DEBUG as it is.
 */
ORMEL_API char *ORMEL_TransConnStr(void);

/*
 * Copies at most n-1 characters of src and a NUL into dst, which has room for n bytes. Returns 0; 0xFFFFFFFF, with dst
 * untouched, when a pointer is NULL, src is empty or n is 0; else the code of a refused copy. Any thread.
 */
ORMEL_API uint32_t ORMEL_StrNCpy(char *dst, const char *src, size_t n);

ORMEL_END_DECLS

#endif
