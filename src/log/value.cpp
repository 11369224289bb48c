#include "log/log.h"

namespace {

constexpr char kLogFile[] = "ormel_log";

bool isCharacterType(uint32_t type) {
    return type == QDC_TYPE_CHAR || type == QDC_TYPE_VARCHAR || type == QDC_TYPE_TEXT || type == QDC_TYPE_CLOB;
}

} // namespace

namespace ormel {

void logValue(const char *func, uint32_t type, const void *value, uint32_t length) {
    if (!logs(KPL_LOG_TRACE))
        return;
    const auto *bytes = static_cast<const unsigned char *>(value);
    if (isCharacterType(type))
        ORMEL_LOG_AS(func, KPL_LOG_TRACE, " %.*s", textLength(value, length), static_cast<const char *>(value));
    else
        for (uint32_t i = 0; bytes != nullptr && i < length; ++i)
            ORMEL_LOG_AS(func, KPL_LOG_TRACE, " %02x", bytes[i]);
    ORMEL_LOG_AS(func, KPL_LOG_TRACE, " ");
}

} // namespace ormel
