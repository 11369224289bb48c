// How the library's own sources log.
//
// A source file that logs defines kLogFile, the source name that its lines hand to the writer.
#pragma once

#include <cstring>

#include "ormeldb/log.h"
#include "ormeldb/platform/liblog.h"

// Logs a line that belongs to the exported function func. Shared bodies and helpers are handed its name.
#define ORMEL_LOG_AS(func, level, ...) ormel::logLine(kLogFile, func, __LINE__, level, __VA_ARGS__)

// Logs a line of the enclosing, exported function.
#define ORMEL_LOG(level, ...) ORMEL_LOG_AS(__func__, level, __VA_ARGS__)

namespace ormel {

// Writes a line under this library's entry of g_stLogCfgs, if that has a category.
void logLine(const char *file, const char *func, int line, int level, const char *fmt, ...)
    __attribute__((format(printf, 5, 6)));

// Whether lines of a level pass the threshold.
inline bool passes(int level) {
    return level == KPL_LOG_FATAL || FrameDebugLevelGet() <= level;
}

// Whether this library's lines of a level are written. Dumps ask once and save themselves the formatting of every line.
inline bool logs(int level) {
    return g_stLogCfgs[KPL_LOG_CFG_ORMEL].pcCategory != nullptr && passes(level);
}

// Dumps a value at TRACE: character types as one line, others as a line for each byte; a blank line ends it.
void logValue(const char *func, uint32_t type, const void *value, uint32_t length);

// Length of a text in a block of size bytes that may lack a NUL; 0 for NULL.
inline int textLength(const void *text, size_t size) {
    constexpr size_t longest = 1022; // what fits into a line
    return text == nullptr
               ? 0
               : static_cast<int>(strnlen(static_cast<const char *>(text), size < longest ? size : longest));
}

} // namespace ormel
