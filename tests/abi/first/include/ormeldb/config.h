#ifndef ORMELDB_CONFIG_H
#define ORMELDB_CONFIG_H
#include "base.h"
ORMEL_BEGIN_DECLS
typedef struct ORMEL_CONN_CFG {
    char acHost[64];
    char acPort[16];
    char acDbName[64];
    char acUser[64];
    char acPassword[256];
    char acSslCert[512];
    char acSslKey[512];
    char acSslRootCert[512];
    char acSslMode[16];
} ORMEL_CONN_CFG;
ORMEL_API uint32_t ORMEL_ConnCfgRead(ORMEL_CONN_CFG *pstCfg);
ORMEL_API uint32_t ORMEL_TransBuildConnStr(char *pcOut);
ORMEL_API char *ORMEL_TransConnStr(void);
ORMEL_API uint32_t ORMEL_StrNCpy(char *dst, const char *src, size_t n);
ORMEL_END_DECLS
#endif
