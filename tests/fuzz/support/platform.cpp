// The platform's log service and password as the library finds them in these programs: lines are read and dropped.
#include <cstring>

#include "ormeldb/log.h"
#include "ormeldb/platform/decrypt.h"
#include "ormeldb/platform/liblog.h"
#include "platform.h"
#include "require.h"

namespace {

int32_t g_threshold = KPL_LOG_FATAL;

} // namespace

void fuzz::logEverything(bool on) {
    g_threshold = on ? KPL_LOG_TRACE : KPL_LOG_FATAL;
    g_pstVemloLogHandle = &g_threshold;
}

extern "C" {

char g_acLogPath[256];
int32_t g_frame_slot_id;
unsigned char g_decrypt_info_s[8192];

void *LIB_LOG_CreateInstance(const LIB_LOG_INSTANCE_CFG *) {
    return &g_threshold;
}

int32_t LIB_LOG_Print(void *, const char *pcLine, uint32_t uiLen, int32_t) {
    fuzz::require(std::strlen(pcLine) == uiLen, "a line has the length that is said");
    return 0;
}

int32_t LIB_LOG_DeleteInstance(void *) {
    return 0;
}

const char *OPB_GetLogConfig(const char *) {
    return nullptr;
}

int32_t FrameDebugLevelGet(void) {
    return g_threshold;
}

void FrameDebugLevelSet(int32_t iLevel) {
    g_threshold = iLevel;
}
}
