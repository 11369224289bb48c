#include "api/variant.h"

namespace {

constexpr char kLogFile[] = "ormel_api";

} // namespace

void ormel::traceIn(const char *func) {
    ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "Trace in.");
}

uint32_t ormel::commit(void *conn) {
    const uint32_t status = dbCommitTrans(conn);
    if (status != 0)
        dbPrintError(conn);
    return status;
}

void ormel::keepFromCache(ORMEL_RES_ATT &reduced) {
    if (ORMEL_ResAttGet(reduced.acTableName) == nullptr)
        reduced.acTableName[0] = '\0';
}
