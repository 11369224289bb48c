/*
 * liblog: the platform's log service, to which libormeldb hands whole lines.
 *
 * libormeldb.so leaves these names undefined and finds them when it is loaded: in the drop-in library, in the
 * platform's own one, or in the program.
 */
#ifndef ORMELDB_PLATFORM_LIBLOG_H
#define ORMELDB_PLATFORM_LIBLOG_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What an instance is made from; 48 bytes. The texts are only read during the call. */
typedef struct LIB_LOG_INSTANCE_CFG {
    void *pReserved; /* NULL */
    const char *pcCategory;
    const char *pcFileName;
    uint32_t uiA;  /* drop-in library: MiB a file takes before the next one is begun */
    uint32_t uiB;  /* drop-in library: files kept, the current one among them */
    uint64_t ullC; /* not used by the drop-in library */
    uint32_t uiD;  /* not used by the drop-in library */
} LIB_LOG_INSTANCE_CFG;

/* Opens the file for appending, with the directories it lies in; the instance, or NULL. Any thread. */
void *LIB_LOG_CreateInstance(const LIB_LOG_INSTANCE_CFG *pstCfg);

/*
 * Appends uiLen bytes as they stand; 0 when they were taken, else non-zero. A NULL instance loses the line and gives
 * non-zero; a deleted one opens its file again, so that no line is lost. Any thread.
 */
int32_t LIB_LOG_Print(void *pHandle, const char *pcLine, uint32_t uiLen, int32_t iLevel);

/* Writes out what is pending and closes the file; 0, or non-zero for NULL and for an instance already deleted. */
int32_t LIB_LOG_DeleteInstance(void *pHandle);

/*
 * The value of a key of "../conf/log.conf", or NULL. The file is read once, when the library is loaded; the text
 * belongs to the service and stays for the life of the process.
 */
const char *OPB_GetLogConfig(const char *pcName);

/* The threshold: lines of a lower level are not written. 0 TRACE to 6 FATAL, 2 at first. Any thread. */
int32_t FrameDebugLevelGet(void);
void FrameDebugLevelSet(int32_t iLevel);

/*
 * The directory of the log files (empty: "../var/log") and the number of this process's file in it. They come from
 * "log.path" and "log.slot" of "../conf/log.conf"; a program may set them before it starts libormeldb.
 */
extern char g_acLogPath[256];
extern int32_t g_frame_slot_id;

#ifdef __cplusplus
}
#endif

#endif
