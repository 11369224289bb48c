#include <cstring>
#include <strings.h>

#include "dao/qdc.h"
#include "log/log.h"
#include "ormeldb/dao.h"

namespace {

constexpr char kLogFile[] = "ormel_dao";

struct SslMode {
    const char *name;
    uint32_t value;
};
constexpr SslMode kSslModes[] = {
    {"DISABLED", 0}, {"PREFERRED", 1}, {"REQUIRED", 2}, {"VERIFY_CA", 3}, {"VERIFY_FULL", 4},
};

struct Operator {
    uint32_t code;
    const char *text;
};
constexpr Operator kOperators[] = {
    {ORMEL_OP_NOT_EQUAL, "<>"}, {ORMEL_OP_LESS, "<"}, {ORMEL_OP_LESS_EQUAL, "<="}, {ORMEL_OP_LIKE, "like"}};

template <class T> T load(const void *from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

// Sets the SSL mode and opens the connection.
bool open(const char *func, void *conn, const char *address, const char *user, const char *password,
          const char *sslMode) {
    if (dbSetSSLMode(conn, sslMode) != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "dbSetSSLMode failed");
        return false;
    }
    if (qdc_connect(conn, address, user, password) != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_connect failed");
        return false;
    }
    return true;
}

} // namespace

void *dbConnect(const char *pcAddress, const char *pcUser, const char *pcPassword, const char *pcSslMode) {
    void *conn = nullptr;
    if (qdc_alloc_conn(&conn) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_alloc_conn failed");
        return nullptr;
    }
    if (open(__func__, conn, pcAddress, pcUser, pcPassword, pcSslMode)) {
        ORMEL_LOG(KPL_LOG_DEBUG, "Connection ok");
        return conn;
    }
    dbPrintError(conn);
    qdc_free_conn(conn);
    return nullptr;
}

void dbDisconnect(void *pConn) {
    if (pConn == nullptr)
        return;
    qdc_disconnect(pConn);
    qdc_free_conn(pConn);
    ORMEL_LOG(KPL_LOG_DEBUG, "DisConnection ok");
}

uint32_t dbSslModeType(const char *pcName) {
    const char *name = pcName != nullptr ? pcName : "";
    for (const SslMode &mode : kSslModes)
        if (strcasecmp(name, mode.name) == 0)
            return mode.value;
    ORMEL_LOG(KPL_LOG_ERROR, "SSLMode %s", name);
    return 0;
}

uint32_t dbSetSSLMode(void *pConn, const char *pcName) {
    if (pConn == nullptr)
        return ORMEL_ERR_FAILED;
    const uint32_t mode = dbSslModeType(pcName);
    const uint32_t status = qdc_set_conn_attr(pConn, QDC_ATTR_SSL_MODE, &mode, sizeof mode);
    if (status != 0)
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_set_conn_attr mode :%s failed ", pcName != nullptr ? pcName : "");
    return status;
}

void *dbCreateStmt(void *pConn) {
    if (pConn == nullptr)
        return nullptr;
    void *stmt = nullptr;
    if (qdc_alloc_stmt(pConn, &stmt) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_alloc_stmt error\n");
        return nullptr;
    }
    ORMEL_LOG(KPL_LOG_DEBUG, "CreateStmt ok");
    return stmt;
}

void dbFreeStmt(void *pStmt) {
    if (pStmt == nullptr)
        return;
    qdc_free_stmt(pStmt);
    ORMEL_LOG(KPL_LOG_DEBUG, "FreeStmt ok");
}

uint32_t dbStartTrans(void *pConn) {
    const uint32_t on = 0;
    return pConn == nullptr ? ORMEL_ERR_FAILED : qdc_set_conn_attr(pConn, QDC_ATTR_TRANS, &on, sizeof on);
}

uint32_t dbCommitTrans(void *pConn) {
    return pConn == nullptr ? ORMEL_ERR_FAILED : qdc_commit(pConn);
}

uint32_t dbRollbackTrans(void *pConn) {
    return pConn == nullptr ? ORMEL_ERR_FAILED : qdc_rollback(pConn);
}

const char *dbGetOpStr(uint32_t uiOp) {
    for (const Operator &op : kOperators)
        if (op.code == uiOp)
            return op.text;
    return "=";
}

int64_t dbGetIntValue(const void *pValue, uint32_t uiSize) {
    if (uiSize == 0 || pValue == nullptr)
        return 0;
    switch (uiSize) {
    case 1:
        return load<int8_t>(pValue);
    case 2:
        return load<uint16_t>(pValue);
    case 4:
        return load<uint32_t>(pValue);
    default:
        return load<int64_t>(pValue);
    }
}
