#include "ormeldb/error.h"

#include <cctype>
#include <cstring>

#include "dao/qdc.h"
#include "log/log.h"
#include "ormeldb/dao.h"
#include "ormeldb/platform/opbbase.h"

namespace {

constexpr char kLogFile[] = "ormel_dao";
constexpr size_t kStateLength = 5; // characters of an SQLSTATE

struct LastError {
    bool known;
    ORMEL_ERROR error;
};
thread_local LastError g_last;

// Whether a message begins with an SQLSTATE: five digits and capitals, a digit among them, then a colon or a blank.
bool beginsWithState(const char *message) {
    bool digit = false;
    for (size_t i = 0; i < kStateLength; ++i) {
        const auto c = static_cast<unsigned char>(message[i]);
        if (std::isdigit(c) == 0 && std::isupper(c) == 0)
            return false;
        digit = digit || std::isdigit(c) != 0;
    }
    return digit && (message[kStateLength] == ':' || message[kStateLength] == ' ');
}

void remember(uint32_t code, const char *message) {
    ORMEL_ERROR &error = g_last.error;
    g_last.known = true;
    error.uiCode = code;
    std::memset(error.acClass, 0, sizeof error.acClass);
    if (beginsWithState(message))
        std::memcpy(error.acClass, message, kStateLength);
    strncpy_s(error.acText, sizeof error.acText, message, sizeof error.acText - 1);
}

} // namespace

void dbPrintError(void *pConn) {
    if (pConn == nullptr)
        return;
    uint32_t code = 0;
    const char *message = nullptr;
    qdc_get_error(pConn, &code, &message);
    if (message == nullptr)
        message = "";
    ORMEL_LOG(KPL_LOG_ERROR, "QD-%05d %s", static_cast<int>(code), message);
    remember(code, message);
}

uint32_t ORMEL_LastError(ORMEL_ERROR *pstError) {
    if (pstError == nullptr)
        return ORMEL_ERR_NULL_ARG;
    if (!g_last.known)
        return ORMEL_ERR_ABSENT;
    *pstError = g_last.error;
    return ORMEL_OK;
}
