#ifndef ORMELDB_PLATFORM_TICK_H
#define ORMELDB_PLATFORM_TICK_H
#include <stdint.h>
typedef struct XOS_CPU_TICK {
    uint32_t uiLow;
    uint32_t uiHigh;
} XOS_CPU_TICK;
#endif
