#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "log/log.h"
#include "ormeldb/config.h"
#include "ormeldb/platform/decrypt.h"
#include "ormeldb/platform/opbbase.h"
#include "ormeldb/trans.h"

namespace {

constexpr char kLogFile[] = "ormel_trans";
constexpr char kConfigFile[] = "../conf/db.conf";
constexpr size_t kLineSize = 2014;

// Where the value of a key goes.
struct Key {
    const char *name;
    size_t offset;
    size_t size;
};

#define ORMEL_KEY(name, field)                                                                                         \
    { name, offsetof(ORMEL_CONN_CFG, field), sizeof(ORMEL_CONN_CFG::field) }
constexpr Key kKeys[] = {
    ORMEL_KEY("db.host", acHost),
    ORMEL_KEY("db.port", acPort),
    ORMEL_KEY("db.dbname", acDbName),
    ORMEL_KEY("db.user", acUser),
    ORMEL_KEY("auth.sslcert", acSslCert),
    ORMEL_KEY("auth.sslkey", acSslKey),
    ORMEL_KEY("auth.sslrootcert", acSslRootCert),
    ORMEL_KEY("auth.sslmode", acSslMode),
};
#undef ORMEL_KEY

// Holds the lock under which the process reads its configuration files.
class ConfigLock {
public:
    ConfigLock() { XOS_MutexLock(&g_cfgParseMutex); }
    ~ConfigLock() { XOS_MutexUnlock(&g_cfgParseMutex); }
    ConfigLock(const ConfigLock &) = delete;
    ConfigLock &operator=(const ConfigLock &) = delete;
};

void readLine(ORMEL_CONN_CFG &cfg, char *line) {
    const char *key = strsep(&line, "=");
    char *value = strsep(&line, "=");
    if (value == nullptr)
        return;
    for (const Key &known : kKeys)
        if (std::strcmp(key, known.name) == 0) {
            ORMEL_StrNCpy(reinterpret_cast<char *>(&cfg) + known.offset, LOC_Trimwhitespace(value), known.size - 1);
            return;
        }
}

// False when the file cannot be opened or read (a directory opens and does not read).
bool readFile(ORMEL_CONN_CFG &cfg, const char *path) {
    FILE *file = std::fopen(path, "r");
    if (file == nullptr)
        return false;
    char line[kLineSize] = {};
    while (std::fgets(line, sizeof line, file) != nullptr)
        readLine(cfg, line);
    const bool whole = std::ferror(file) == 0;
    std::fclose(file);
    return whole;
}

bool readPassword(const char *func, ORMEL_CONN_CFG &cfg) {
    const auto *password = reinterpret_cast<const char *>(g_decrypt_info_s) + ORMEL_DECRYPT_PASSWORD_OFFSET;
    if (password[0] == '\0') {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "get db decrypt password fail.");
        return false;
    }
    ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "get db decrypt password ok.");
    ORMEL_StrNCpy(cfg.acPassword, password, sizeof cfg.acPassword - 1);
    return true;
}

} // namespace

uint32_t ORMEL_ConnCfgRead(ORMEL_CONN_CFG *pstCfg) {
    if (pstCfg == nullptr)
        return ORMEL_INVALID;
    memset_s(pstCfg, sizeof *pstCfg, 0, sizeof *pstCfg);
    char path[PATH_MAX] = {};
    if (realpath(kConfigFile, path) == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "File [%s] realpath failed.", kConfigFile);
        return ORMEL_INVALID;
    }
    {
        const ConfigLock lock;
        if (readFile(*pstCfg, path)) {
            ORMEL_LOG(KPL_LOG_INFO, "db.conf host:%s port:%s dbname:%s db.user:%s", pstCfg->acHost, pstCfg->acPort,
                      pstCfg->acDbName, pstCfg->acUser);
            return readPassword(__func__, *pstCfg) ? ORMEL_OK : ORMEL_INVALID;
        }
    }
    ORMEL_LOG(KPL_LOG_ERROR, "Open File [%s] failed.", kConfigFile);
    return ORMEL_INVALID;
}

uint32_t ORMEL_TransBuildConnStr(char *pcOut) {
    const ORMEL_TRANS_MGR *mgr = ORMEL_TransMgrGet();
    if (pcOut == nullptr)
        return ORMEL_ERR_FAILED;
    if (mgr->pcConnstr[0] != '\0') {
        strncpy_s(pcOut, ORMEL_CONN_STR_SIZE, mgr->pcConnstr, ORMEL_CONN_STR_SIZE - 1);
        ORMEL_LOG(KPL_LOG_DEBUG, "OrmelConnStr is:%s", pcOut);
        return ORMEL_OK;
    }
    const ORMEL_CONN_CFG &cfg = mgr->stConnCfg;
    snprintf_s(pcOut, ORMEL_CONN_STR_SIZE, ORMEL_CONN_STR_SIZE - 1, "host=%s port=%s user=%s password=%s dbname=%s",
               cfg.acHost, cfg.acPort, cfg.acUser, cfg.acPassword, cfg.acDbName);
    ORMEL_LOG(KPL_LOG_DEBUG, "OrmelConnStr is: host=%s, port=%s, user=%s, dbname=%s", cfg.acHost, cfg.acPort,
              cfg.acUser, cfg.acDbName);
    return ORMEL_OK;
}

char *ORMEL_TransConnStr() {
    return ORMEL_TransMgrGet()->pcConnstr;
}

uint32_t ORMEL_StrNCpy(char *dst, const char *src, size_t n) {
    if (dst == nullptr || src == nullptr || src[0] == '\0' || n == 0)
        return ORMEL_INVALID;
    return static_cast<uint32_t>(strncpy_s(dst, n, src, n - 1));
}
