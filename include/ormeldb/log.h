/* The line writer: what the library logs with, open to its host. */
#ifndef ORMELDB_LOG_H
#define ORMELDB_LOG_H

#include "base.h"

/* Levels. Lines below the threshold of the log service are dropped; FATAL always passes. */
#define KPL_LOG_TRACE 0
#define KPL_LOG_DEBUG 1
#define KPL_LOG_INFO 2
#define KPL_LOG_NOTICE 3
#define KPL_LOG_WARN 4
#define KPL_LOG_ERROR 5
#define KPL_LOG_FATAL 6

/* Entries of g_stLogCfgs. */
#define KPL_LOG_CFG_NUM 5
#define KPL_LOG_CFG_ORMEL 3

ORMEL_BEGIN_DECLS

/* A module and the category of the log service that it logs under. 16 bytes. */
typedef struct KPL_LOG_CFG {
    const char *pcModule;
    const char *pcCategory;
} KPL_LOG_CFG;

/*
 * The modules that share the service; entry KPL_LOG_CFG_ORMEL is this library's. An entry whose category is NULL is
 * silent.
 */
ORMEL_API extern KPL_LOG_CFG g_stLogCfgs[KPL_LOG_CFG_NUM];
/* Level names by level number. */
ORMEL_API extern const char *g_apcLogLeveNameMap[7];
/* The level read from "OPB_VEMLO_DEBUG" at start, 2 before. */
ORMEL_API extern int32_t g_VemloLogLevel;
/* The file handed to the log service, "<directory>/slot-<number>". */
ORMEL_API extern char g_acVemloLogFileName[256];
/* The log service's instance, NULL until it is made; kept after it was deleted. */
ORMEL_API extern void *g_pstVemloLogHandle;

/*
 * Takes the threshold from the value "OPB_VEMLO_DEBUG" of the log configuration (a decimal number; other text is 0)
 * if there is one, then KPL_ZlogInit. Called by ORMEL_Init. Not for several threads at once.
 */
ORMEL_API void KPL_LogInit(void);

/*
 * Builds the file name from g_acLogPath (empty: "../var/log") and g_frame_slot_id, and makes the instance if there is
 * none. When the service refuses, one line goes to standard error and lines are lost. Not for several threads at once.
 */
ORMEL_API void KPL_ZlogInit(void);

/* Deletes the instance if there is one; its address is remembered. Not for several threads at once. */
ORMEL_API void KPL_ZlogUnInit(void);

/* The same as KPL_ZlogUnInit. Called by ORMEL_UnInit. */
ORMEL_API void KPL_LogUnInit(void);

/*
 * Writes one line: local time with microseconds, level name, module, line, function, message, CR LF. The source file
 * name and the two lengths are accepted and not printed. Nothing happens below the threshold. A message that makes
 * the line longer than 1022 bytes is reported on standard error instead. level is 0 to 6. Any thread.
 */
ORMEL_API void KPL_VemloLogToFile(const char *module, const char *file, size_t fileLen, const char *func,
                                  size_t funcLen, int line, int level, const char *fmt, ...)
    __attribute__((format(printf, 8, 9)));

ORMEL_END_DECLS

#endif
