// The configuration file: the library's reader and the client's agree on every key that both know.
#include <cctype>

#include "front/config.h"
#include "ormeldb/config.h"
#include "ormeldb/platform/decrypt.h"
#include "support/home.h"
#include "support/input.h"
#include "support/platform.h"

namespace {

constexpr char kFile[] = "../conf/db.conf";

struct Key {
    const char *name;
    const char *(*value)(const ORMEL_CONN_CFG &cfg);
    size_t size;
};

#define FUZZ_KEY(name, field)                                                                                          \
    {                                                                                                                  \
        name, [](const ORMEL_CONN_CFG &cfg) -> const char * { return cfg.field; }, sizeof(ORMEL_CONN_CFG::field)       \
    }
constexpr Key kKeys[] = {
    FUZZ_KEY("db.host", acHost),
    FUZZ_KEY("db.port", acPort),
    FUZZ_KEY("db.dbname", acDbName),
    FUZZ_KEY("db.user", acUser),
    FUZZ_KEY("auth.sslcert", acSslCert),
    FUZZ_KEY("auth.sslkey", acSslKey),
    FUZZ_KEY("auth.sslrootcert", acSslRootCert),
    FUZZ_KEY("auth.sslmode", acSslMode),
};
#undef FUZZ_KEY

// The numbers among the client's own keys are numbers or refused.
void readNumbers(const ormel::client::Settings &settings) {
    for (const char *key : {"client.pool", "client.connect_timeout_ms", "client.busy_timeout_ms"})
        try {
            ormel::client::number(settings, key, 7);
        } catch (const ormel::client::Error &) {
            fuzz::require(settings.config.count(key) == 1, "what is absent is not refused");
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const fuzz::Home home;
    fuzz::Home::write(kFile, std::string(reinterpret_cast<const char *>(data), size));
    fuzz::logEverything(size % 2 == 0);
    g_decrypt_info_s[ORMEL_DECRYPT_PASSWORD_OFFSET] = 'x';
    ORMEL_CONN_CFG cfg;
    fuzz::require(ORMEL_ConnCfgRead(&cfg) == ORMEL_OK, "whatever stands in the file, it is read");
    ormel::client::Settings settings;
    settings.config = ormel::client::readConfig();
    for (const Key &key : kKeys) {
        // The library's fields are of fixed width and cut.
        const std::string value = settings.get(key.name, "").substr(0, key.size - 2);
        fuzz::require(value == key.value(cfg), "the library and the client read the same");
    }
    readNumbers(settings);
    return 0;
}
