/*
 * libopbbase: locking, time, text helpers and bounded copies of the platform.
 *
 * libormeldb.so leaves these names undefined and finds them when it is loaded: in the drop-in library, in the
 * platform's own one, or in the program.
 */
#ifndef ORMELDB_PLATFORM_OPBBASE_H
#define ORMELDB_PLATFORM_OPBBASE_H

#include <pthread.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#include "tick.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- Locking --------------------------------------------------------------------------------------------------- */

/* Serialises every reader of configuration files in the process. */
extern pthread_mutex_t g_cfgParseMutex;

/* Lock and unlock; 0, or the error number of the POSIX call. */
uint32_t XOS_MutexLock(pthread_mutex_t *pstMutex);
uint32_t XOS_MutexUnlock(pthread_mutex_t *pstMutex);

/* --- Time ------------------------------------------------------------------------------------------------------ */

/* Reads the clock: the low and the high word of the count. A NULL word is not written. */
void XOS_GetCpuTick(uint32_t *puiLow, uint32_t *puiHigh);

/*
 * Converts a difference of two readings to milliseconds: first the high, then the low word of the 64-bit number. A
 * difference of all ones stands for an unmoved clock and gives 0.
 */
void XOS_CpuTick2Ms(const XOS_CPU_TICK *pstTick, uint32_t *puiMsHigh, uint32_t *puiMsLow);

/* Sleeps that many seconds, whole also when a signal arrives. */
void OPB_sleep(uint32_t uiSeconds);

/* --- Text ------------------------------------------------------------------------------------------------------ */

/* Turns a to z into A to Z in place, whatever the locale; returns its argument. */
char *XOS_StrToUpper(char *pcText);

/*
 * Cuts blanks, tabs, carriage returns, newlines, vertical tabs and form feeds off the end, in place, and returns the
 * first kept character.
 */
char *LOC_Trimwhitespace(char *pcText);

/* Reports a failed assumption on standard error and returns. */
void DQA_Assert(const char *pcFile, int32_t iLine, int32_t iValue);

/* --- Bounded copies and formatting ----------------------------------------------------------------------------- */

/*
 * Copies return 0, or a non-zero code without having written outside dst; a refused string copy leaves dst empty. No
 * copy may overlap. strncpy_s copies at most count characters and refuses when these and the NUL do not fit.
 */
int strcpy_s(char *dst, size_t dstMax, const char *src);
int strncpy_s(char *dst, size_t dstMax, const char *src, size_t count);
int memcpy_s(void *dst, size_t dstMax, const void *src, size_t count);
int memset_s(void *dst, size_t dstMax, int c, size_t count);

/*
 * Formatters return the length, or -1: sprintf_s when the text does not fit (dst is then empty); the other two when
 * it is longer than count or does not fit (dst then holds what fitted, terminated).
 */
int sprintf_s(char *dst, size_t dstMax, const char *fmt, ...) __attribute__((format(printf, 3, 4)));
int snprintf_s(char *dst, size_t dstMax, size_t count, const char *fmt, ...) __attribute__((format(printf, 4, 5)));
int vsnprintf_s(char *dst, size_t dstMax, size_t count, const char *fmt, va_list args)
    __attribute__((format(printf, 4, 0)));

#ifdef __cplusplus
}
#endif

#endif
