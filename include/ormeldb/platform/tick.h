/* A reading of the platform's clock, or the difference of two. */
#ifndef ORMELDB_PLATFORM_TICK_H
#define ORMELDB_PLATFORM_TICK_H

#include <stdint.h>

/* One 64-bit count in two words; the drop-in libopbbase counts nanoseconds of CLOCK_MONOTONIC. 8 bytes. */
typedef struct XOS_CPU_TICK {
    uint32_t uiLow;
    uint32_t uiHigh;
} XOS_CPU_TICK;

#endif
