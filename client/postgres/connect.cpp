#include "connect.h"

#include <cerrno>
#include <chrono>
#include <poll.h>
#include <string>
#include <utility>
#include <vector>

#include "error.h"
#include "resolve.h"
#include "settings.h"

namespace ormel::client::postgres {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kUnableToConnect[] = "08001";

// What a name stands for in libpq's parameters. A parameter that is left out, or empty, is taken from the environment,
// and so every one that matters has a value.
using Parameters = std::vector<std::pair<const char *, std::string>>;

constexpr const char *kSslModes[] = {"disable", "prefer", "require", "verify-ca", "verify-full"};
constexpr uint32_t kVerifyCa = 3;

std::string sessionOptions(const Settings &settings) {
    const long patience = milliseconds(settings, "client.busy_timeout_ms", 5000).count();
    // A server that is told 0 waits for ever.
    return "-c lock_timeout=" + std::to_string(patience > 0 ? patience : 1) +
           " -c DateStyle=ISO -c IntervalStyle=postgres -c bytea_output=hex -c extra_float_digits=3"
           " -c cursor_tuple_fraction=1 -c default_transaction_isolation=read\\ committed";
}

void addCertificates(Parameters &parameters, const Settings &settings) {
    const std::string root = settings.get("auth.sslrootcert", "");
    const bool verifies = settings.sslMode >= kVerifyCa;
    if (verifies && root.empty())
        refuse(kUnableToConnect,
               "auth.sslmode asks for the server's certificate to be verified, and auth.sslrootcert in "
               "../conf/db.conf does not say by which authority; set it to a file of certificates");
    // A certificate that nobody asked to verify neither refuses the server nor leads to a plain connection.
    // Files that do not exist keep libpq from those that it finds for itself.
    parameters.emplace_back("sslrootcert", verifies ? root : "/nonexistent");
    parameters.emplace_back("sslcert", settings.get("auth.sslcert", "/nonexistent"));
    parameters.emplace_back("sslkey", settings.get("auth.sslkey", "/nonexistent"));
    parameters.emplace_back("sslcrl", "/nonexistent");
    parameters.emplace_back("sslcrldir", "/nonexistent");
}

Parameters parametersOf(const Settings &settings, const Addresses &addresses) {
    Parameters parameters = {{"host", addresses.hosts},
                             {"hostaddr", addresses.numbers},
                             {"port", addresses.ports},
                             {"user", settings.user},
                             {"password", settings.password.empty() ? " " : settings.password},
                             {"dbname", settings.get("db.dbname", settings.user)},
                             {"client_encoding", "UTF8"},
                             {"application_name", "ormeldb"},
                             {"options", sessionOptions(settings)},
                             {"sslmode", kSslModes[settings.sslMode]},
                             {"ssl_min_protocol_version", "TLSv1.2"},
                             {"sslcompression", "0"},
                             {"gssencmode", "disable"},
                             {"channel_binding", "prefer"},
                             {"target_session_attrs", "read-write"},
                             {"keepalives_idle", "60"},
                             {"keepalives_interval", "10"},
                             {"keepalives_count", "3"},
                             {"tcp_user_timeout", "90000"},
                             {"replication", "false"}};
    addCertificates(parameters, settings);
    return parameters;
}

// Waits until the connection's socket can be read or written; false when the time is over.
bool await(const PGconn *connection, PostgresPollingStatusType wanted, Clock::time_point deadline) {
    pollfd entry = {PQsocket(connection), static_cast<short>(wanted == PGRES_POLLING_READING ? POLLIN : POLLOUT), 0};
    int ready = 0;
    do { // a signal is no answer
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        ready = left > 0 ? poll(&entry, 1, static_cast<int>(left)) : 0;
    } while (ready < 0 && errno == EINTR);
    return ready != 0;
}

// The SQLSTATE in words like "FATAL:  28P01: password authentication failed".
std::string stateIn(const std::string &words) {
    constexpr std::string_view mark = "FATAL:  ";
    const size_t at = words.find(mark);
    const bool found =
        at != std::string::npos && words.size() > at + mark.size() + 6 && words[at + mark.size() + 5] == ':';
    return found ? words.substr(at + mark.size(), 5) : kUnableToConnect;
}

// The words of a failed connect without the place in the server's own sources, which the verbose form brings along.
std::string wordsOfConnect(const PGconn *connection) {
    const std::string words = wordsOf(connection);
    return words.substr(0, words.find(" LOCATION:"));
}

// The environment can give a session another form of dates, which all readers of text would see.
void useIsoDates(PGconn *connection) {
    const char *style = PQparameterStatus(connection, "DateStyle");
    if (style == nullptr || std::string_view(style).substr(0, 3) == "ISO")
        return;
    const OwnedResult result(PQexec(connection, kIsoDates));
    if (PQresultStatus(result.get()) != PGRES_COMMAND_OK)
        throw errorOf(result.get());
}

OwnedConnection start(const Parameters &parameters) {
    std::vector<const char *> names;
    std::vector<const char *> values;
    for (const auto &[name, value] : parameters) {
        names.push_back(name);
        values.push_back(value.c_str());
    }
    names.push_back(nullptr);
    values.push_back(nullptr);
    OwnedConnection connection(PQconnectStartParams(names.data(), values.data(), 0));
    if (connection == nullptr)
        throw std::bad_alloc();
    PQsetErrorVerbosity(connection.get(), PQERRORS_VERBOSE);
    PQsetNoticeReceiver(
        connection.get(), [](void *, const PGresult *) {}, nullptr);
    return connection;
}

std::string nameOf(const Settings &settings) {
    return "cannot connect to " + settings.host + ":" + settings.port;
}

} // namespace

OwnedConnection openConnection(const Settings &settings) {
    const auto deadline = Clock::now() + milliseconds(settings, "client.connect_timeout_ms", 2000);
    const Addresses addresses = resolve(settings.host, settings.port, deadline);
    OwnedConnection connection = start(parametersOf(settings, addresses));
    PostgresPollingStatusType status = PGRES_POLLING_WRITING;
    while (status != PGRES_POLLING_OK) {
        if (PQstatus(connection.get()) == CONNECTION_BAD || status == PGRES_POLLING_FAILED) {
            const std::string words = wordsOfConnect(connection.get());
            refuse(stateIn(words), nameOf(settings) + ": " + words);
        }
        if (!await(connection.get(), status, deadline))
            refuse(kUnableToConnect, nameOf(settings) + ": there was no answer within client.connect_timeout_ms; " +
                                         wordsOf(connection.get()));
        status = PQconnectPoll(connection.get());
    }
    PQsetErrorVerbosity(connection.get(), PQERRORS_DEFAULT);
    useIsoDates(connection.get());
    return connection;
}

} // namespace ormel::client::postgres
