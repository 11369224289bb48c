#include "log/log.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sys/time.h>

#include "ormeldb/platform/opbbase.h"

KPL_LOG_CFG g_stLogCfgs[KPL_LOG_CFG_NUM] = {
    {"LOG_KOBRADEN", "LOG_VEMLO"}, {"LOG_MIRVEL", "LOG_VEMLO"}, {"LOG_PASTURIN", "LOG_VEMLO"},
    {"LOG_ORMEL", "LOG_VEMLO"},    {"LOG_DUNMOR", "LOG_VEMLO"},
};
const char *g_apcLogLeveNameMap[7] = {"TRACE", "DEBUG", "INFO", "NOTICE", "WARN", "ERROR", "FATAL"};
int32_t g_VemloLogLevel = KPL_LOG_INFO;
char g_acVemloLogFileName[256];
void *g_pstVemloLogHandle;

namespace {

constexpr char kDefaultLogPath[] = "../var/log";
constexpr size_t kMessageSize = 1023;
constexpr size_t kTimeSize = 100;
constexpr size_t kLineSize = 1023;

void formatTime(char (&text)[kTimeSize]) {
    timeval now{};
    gettimeofday(&now, nullptr);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    snprintf_s(text, kTimeSize, kTimeSize, "%04d-%02d-%02d %02d:%02d:%02d.%06lu", local.tm_year + 1900,
               local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
               static_cast<unsigned long>(now.tv_usec));
}

const char *levelName(int level) {
    return static_cast<unsigned>(level) <= KPL_LOG_FATAL ? g_apcLogLeveNameMap[level] : "?";
}

void writeLine(const char *module, const char *func, int line, int level, const char *message) {
    char time[kTimeSize];
    formatTime(time);
    char text[kLineSize];
    const int length = snprintf_s(text, kLineSize, kLineSize - 1, "%s %s %s:%d:%s: %s\r\n", time, levelName(level),
                                  module, line, func, message);
    // A negative length, as unsigned, is too long as well.
    if (static_cast<unsigned>(length) < kLineSize)
        LIB_LOG_Print(g_pstVemloLogHandle, text, static_cast<uint32_t>(length), level);
    else
        std::fprintf(stderr, "KPL_VemloLogToFile snprintf_s fail.iLen=%d\n", length);
}

void writeMessage(const char *module, const char *func, int line, int level, const char *fmt, va_list args) {
    char message[kMessageSize];
    vsnprintf_s(message, kMessageSize, kMessageSize - 1, fmt, args);
    writeLine(module, func, line, level, message);
}

} // namespace

void KPL_LogInit() {
    if (const char *level = OPB_GetLogConfig("OPB_VEMLO_DEBUG")) {
        g_VemloLogLevel = static_cast<int32_t>(std::strtol(level, nullptr, 10));
        FrameDebugLevelSet(g_VemloLogLevel);
    }
    KPL_ZlogInit();
}

void KPL_ZlogInit() {
    char directory[256] = {};
    strcpy_s(directory, sizeof directory, g_acLogPath[0] != '\0' ? g_acLogPath : kDefaultLogPath);
    snprintf_s(g_acVemloLogFileName, sizeof g_acVemloLogFileName, sizeof g_acVemloLogFileName - 1, "%s/slot-%d",
               directory, g_frame_slot_id);
    if (g_pstVemloLogHandle != nullptr)
        return;
    const LIB_LOG_INSTANCE_CFG cfg = {nullptr, g_stLogCfgs[0].pcCategory, g_acVemloLogFileName, 50, 20, 60, 0};
    g_pstVemloLogHandle = LIB_LOG_CreateInstance(&cfg);
    if (g_pstVemloLogHandle == nullptr) {
        constexpr char refused[] = "KPL_ZlogInit LIB_LOG_CreateInstance fail.\n";
        std::fwrite(refused, 1, sizeof refused - 1, stderr);
    }
}

// The handle is kept: what is logged after the stop goes to the deleted instance, which the service allows.
void KPL_ZlogUnInit() {
    if (g_pstVemloLogHandle != nullptr)
        LIB_LOG_DeleteInstance(g_pstVemloLogHandle);
}

void KPL_LogUnInit() {
    KPL_ZlogUnInit();
}

void KPL_VemloLogToFile(const char *module, const char *, size_t, const char *func, size_t, int line, int level,
                        const char *fmt, ...) {
    if (!ormel::passes(level))
        return;
    va_list args;
    va_start(args, fmt);
    writeMessage(module, func, line, level, fmt, args);
    va_end(args);
}

void ormel::logLine(const char *, const char *func, int line, int level, const char *fmt, ...) {
    if (!logs(level))
        return;
    va_list args;
    va_start(args, fmt);
    writeMessage(g_stLogCfgs[KPL_LOG_CFG_ORMEL].pcModule, func, line, level, fmt, args);
    va_end(args);
}
