#include "ormeldb/platform/liblog.h"

#include "log/log_service.h"

#include <cstdio>
#include <exception>

static_assert(sizeof(LIB_LOG_INSTANCE_CFG) == 48);

using ormel::platform::LogFile;
using ormel::platform::LogService;
using ormel::platform::Rotation;

namespace {

constexpr size_t kMiB = size_t{1024} * 1024;

bool usable(const LIB_LOG_INSTANCE_CFG *cfg) {
    return cfg != nullptr && cfg->pcFileName != nullptr && *cfg->pcFileName != '\0' && cfg->uiA > 0 && cfg->uiB > 0;
}

// Runs the action of a C function; what it throws is said and becomes the other answer. Only what is derived from
// std::exception is caught, because a cancelled thread unwinds, too.
template <typename Answer, typename Action> Answer guarded(Answer otherwise, Action action) {
    try {
        return action();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "liblog: %s\n", error.what());
        return otherwise;
    }
}

__attribute__((destructor)) void writeOutAtEnd() {
    guarded(false, [] {
        LogService::get().end();
        return true;
    });
}

} // namespace

void *LIB_LOG_CreateInstance(const LIB_LOG_INSTANCE_CFG *pstCfg) {
    if (!usable(pstCfg)) {
        std::fputs("liblog: a log instance needs a file name, a size of at least 1 MiB and at least 1 file\n", stderr);
        return nullptr;
    }
    return guarded<LogFile *>(nullptr, [&] {
        return LogService::get().open(pstCfg->pcFileName, Rotation{pstCfg->uiA * kMiB, pstCfg->uiB});
    });
}

int32_t LIB_LOG_Print(void *pHandle, const char *pcLine, uint32_t uiLen, int32_t) {
    if (pHandle == nullptr || pcLine == nullptr)
        return -1;
    return guarded(false,
                   [&] {
                       return LogService::get().print(*static_cast<LogFile *>(pHandle), {pcLine, uiLen});
                   })
               ? 0
               : -1;
}

int32_t LIB_LOG_DeleteInstance(void *pHandle) {
    if (pHandle == nullptr)
        return -1;
    return guarded(false, [&] { return LogService::get().close(*static_cast<LogFile *>(pHandle)); }) ? 0 : -1;
}
