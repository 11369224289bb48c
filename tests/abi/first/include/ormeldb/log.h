#ifndef ORMELDB_LOG_H
#define ORMELDB_LOG_H
#include "base.h"
#define KPL_LOG_TRACE 0
#define KPL_LOG_DEBUG 1
#define KPL_LOG_INFO 2
#define KPL_LOG_NOTICE 3
#define KPL_LOG_WARN 4
#define KPL_LOG_ERROR 5
#define KPL_LOG_FATAL 6
#define KPL_LOG_CFG_NUM 5
#define KPL_LOG_CFG_ORMEL 3
ORMEL_BEGIN_DECLS
typedef struct KPL_LOG_CFG {
    const char *pcModule;
    const char *pcCategory;
} KPL_LOG_CFG;
ORMEL_API extern KPL_LOG_CFG g_stLogCfgs[KPL_LOG_CFG_NUM];
ORMEL_API extern const char *g_apcLogLeveNameMap[7];
ORMEL_API extern int32_t g_VemloLogLevel;
ORMEL_API extern char g_acVemloLogFileName[256];
ORMEL_API extern void *g_pstVemloLogHandle;
ORMEL_API void KPL_LogInit(void);
ORMEL_API void KPL_ZlogInit(void);
ORMEL_API void KPL_ZlogUnInit(void);
ORMEL_API void KPL_LogUnInit(void);
ORMEL_API void KPL_VemloLogToFile(const char *module, const char *file, size_t fileLen, const char *func,
                                  size_t funcLen, int line, int level, const char *fmt, ...)
    __attribute__((format(printf, 8, 9)));
ORMEL_END_DECLS
#endif
