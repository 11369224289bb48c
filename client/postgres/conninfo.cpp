#include "conninfo.h"

#include "error.h"
#include "settings.h"

namespace ormel::client::postgres {

namespace {

constexpr const char *kSslModes[] = {"disable", "prefer", "require", "verify-ca", "verify-full"};
constexpr uint32_t kRequire = 2;
constexpr uint32_t kVerifyCa = 3;
constexpr char kConfigFileError[] = "F0000";

std::string sessionOptions(const Settings &settings) {
    const long patience = milliseconds(settings, "client.busy_timeout_ms", 5000).count();
    // A server that is told 0 waits for ever.
    return "-c lock_timeout=" + std::to_string(patience > 0 ? patience : 1) +
           " -c DateStyle=ISO -c IntervalStyle=postgres -c bytea_output=hex -c extra_float_digits=3"
           " -c standard_conforming_strings=on -c cursor_tuple_fraction=1"
           " -c default_transaction_isolation=read\\ committed";
}

void addCertificates(Conninfo &conninfo, const Settings &settings) {
    const std::string root = settings.get("auth.sslrootcert", "");
    const bool verifies = settings.sslMode >= kVerifyCa;
    if (verifies && root.empty())
        refuse(kConfigFileError,
               "auth.sslmode asks for the server's certificate to be verified, and auth.sslrootcert in "
               "../conf/db.conf does not say by which authority; set it to a file of certificates");
    // A certificate that nobody asked to verify neither refuses the server nor leads to a plain connection.
    // Files that do not exist keep libpq from those that it finds for itself.
    conninfo.emplace_back("sslrootcert", verifies ? root : "/nonexistent");
    conninfo.emplace_back("sslcert", settings.get("auth.sslcert", "/nonexistent"));
    conninfo.emplace_back("sslkey", settings.get("auth.sslkey", "/nonexistent"));
    conninfo.emplace_back("sslcrl", "/nonexistent");
    conninfo.emplace_back("sslcrldir", "/nonexistent");
}

// A folder has no number, and an empty list would be taken from the environment; one of two empty elements is not.
void addAddress(Conninfo &conninfo, const Address &address) {
    const bool twice = address.number.empty();
    const auto add = [&](const char *name, const std::string &element) {
        conninfo.emplace_back(name, twice ? element + "," + element : element);
    };
    add("host", address.host);
    add("hostaddr", address.number);
    add("port", address.port);
}

// What passes through a socket in the file system is never encrypted, and libpq would not say so.
[[noreturn]] void refuseSocket(const Address &address) {
    refuse(kUnableToConnect, "auth.sslmode asks for encryption, which there is none of at the socket " +
                                 (address.host.empty() ? "that libpq finds" : "in " + address.host) +
                                 "; set db.host to the server's name, or auth.sslmode to PREFERRED or DISABLED");
}

} // namespace

Conninfo conninfoOf(const Settings &settings, const Address &address) {
    if (settings.user.empty())
        refuse(kConfigFileError, "db.user in ../conf/db.conf does not say who connects");
    if (settings.sslMode >= kRequire && address.number.empty())
        refuseSocket(address);
    Conninfo conninfo = {{"user", settings.user},
                         {"password", settings.password.empty() ? " " : settings.password},
                         {"passfile", "/nonexistent"},
                         {"dbname", settings.get("db.dbname", settings.user)},
                         {"client_encoding", "UTF8"},
                         {"application_name", "ormeldb"},
                         {"options", sessionOptions(settings)},
                         {"sslmode", kSslModes[settings.sslMode]},
                         {"sslsni", "1"},
                         {"ssl_min_protocol_version", "TLSv1.2"},
                         {"ssl_max_protocol_version", "TLSv1.3"},
                         {"sslcompression", "0"},
                         {"gssencmode", "disable"},
                         {"krbsrvname", "postgres"},
                         {"channel_binding", "prefer"},
                         {"target_session_attrs", "read-write"},
                         {"connect_timeout", "0"},
                         {"keepalives", "1"},
                         {"keepalives_idle", "60"},
                         {"keepalives_interval", "10"},
                         {"keepalives_count", "3"},
                         {"tcp_user_timeout", "90000"},
                         {"replication", "false"}};
    addAddress(conninfo, address);
    addCertificates(conninfo, settings);
    return conninfo;
}

} // namespace ormel::client::postgres
