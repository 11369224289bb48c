#include "postgres/postgres_engine.h"

#include <cstdlib>
#include <libpq-fe.h>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "postgres/loopback.h"

namespace contract {

CONTRACT_ENGINE(PostgresEngine);

namespace {

using Server = std::unique_ptr<PGconn, decltype(&PQfinish)>;

std::string fromEnvironment(const char *name) {
    const char *value = std::getenv(name);
    if (value == nullptr)
        throw ClientError(std::string(name) + " is not set; run the test through tests/support/with_postgres.py");
    return value;
}

Server serverWith(const std::string &database) {
    const std::string words = "host=127.0.0.1 user=postgres port=" + fromEnvironment("ORMEL_POSTGRES_PORT") +
                              " password=" + fromEnvironment("ORMEL_POSTGRES_PASSWORD") + " dbname=" + database;
    Server server(PQconnectdb(words.c_str()), PQfinish);
    if (PQstatus(server.get()) != CONNECTION_OK)
        throw ClientError(PQerrorMessage(server.get()));
    PQsetNoticeProcessor(
        server.get(), [](void *, const char *) {}, nullptr);
    return server;
}

void run(PGconn *server, const std::string &sql) {
    const std::unique_ptr<PGresult, decltype(&PQclear)> result(PQexec(server, sql.c_str()), PQclear);
    if (PQresultStatus(result.get()) != PGRES_COMMAND_OK)
        throw ClientError(sql + ": " + PQerrorMessage(server));
}

// A database for each process that runs tests.
std::string ownDatabase() {
    static const std::string name = [] {
        std::string made = "contract_" + std::to_string(getpid());
        run(serverWith("postgres").get(), "CREATE DATABASE " + made);
        return made;
    }();
    return name;
}

} // namespace

const char *PostgresEngine::lacks(Feature feature) const {
    switch (feature) {
    case Feature::fixedBytes:
        return "bytes have no width";
    case Feature::misfits:
        return "columns refuse values that do not fit";
    case Feature::knownNotNull:
        return "a query does not tell whether a column takes NULL";
    case Feature::workAfterError:
        return "a transaction refuses further work after a failed statement";
    default:
        return nullptr;
    }
}

std::string PostgresEngine::makeDatabase(const Home & /*home*/) {
    const std::string name = ownDatabase();
    run(serverWith(name).get(), "DROP SCHEMA public CASCADE; CREATE SCHEMA public");
    // Where time is not what a test is about, it is not to fail on a machine that has other things to do.
    return "db.driver=postgres\ndb.dbname=" + name + "\nclient.connect_timeout_ms=20000\n";
}

Target PostgresEngine::target() const {
    return {"127.0.0.1:" + fromEnvironment("ORMEL_POSTGRES_PORT"), "postgres",
            fromEnvironment("ORMEL_POSTGRES_PASSWORD")};
}

std::vector<DeclaredType> PostgresEngine::declaredTypes() const {
    return {
        {"smallint", kInteger, 4, 5},
        {"int", kInteger, 4, 10},
        {"INTEGER", kInteger, 4, 10},
        {"boolean", kBoolean, 4},
        {"bigint", kBigint, 8, 19},
        {"oid", kBigint, 8, 10},
        {"real", kReal, 8},
        {"double precision", kReal, 8},
        {"float", kReal, 8},
        {"char(1)", kChar, 5},
        {"char", kChar, 5},
        {"char(20)", kChar, 81},
        {"char(16383)", kChar, 65533},
        {"char(16384)", kClob, 44},
        {"varchar(1)", kVarchar, 5},
        {"varchar(20)", kVarchar, 81},
        {"character varying(20)", kVarchar, 81},
        {"varchar(16383)", kVarchar, 65533},
        {"varchar(16384)", kClob, 44},
        {"varchar", kClob, 44},
        {"numeric", kText, 512},
        {"decimal", kText, 512},
        {"numeric(10)", kText, 14, 10},
        {"numeric(10,2)", kText, 14, 10, 2},
        {"numeric(200,100)", kText, 204, 200, 100},
        {"date", kText, 36},
        {"time", kText, 36},
        {"time with time zone", kText, 36},
        {"timestamp", kText, 36},
        {"timestamptz", kText, 36},
        {"uuid", kText, 37},
        {"interval", kText, 128},
        {"inet", kText, 64},
        {"bit(8)", kText, 9},
        {"bit varying(300)", kClob, 44},
        {"text", kClob, 44},
        {"json", kClob, 44},
        {"jsonb", kClob, 44},
        {"xml", kClob, 44},
        {"integer[]", kClob, 44},
        {"bytea", kBlob, 44},
    };
}

std::vector<Expression> PostgresEngine::expressions() const {
    return {
        {"1::bigint + id", kBigint}, {"count(*)", kBigint}, {"sum(id)", kBigint},
        {"id * 1.5::float8", kReal}, {"'x' || v", kClob},   {"cast(id as text)", kClob},
        {"'\\x00ff'::bytea", kBlob}, {"v::varchar", kClob},
    };
}

uint16_t serverPort() {
    return static_cast<uint16_t>(std::stoi(fromEnvironment("ORMEL_POSTGRES_PORT")));
}

void runOnServer(const std::string &sql) {
    run(serverWith(ownDatabase()).get(), sql);
}

void restartServer(const std::string &signal) {
    const std::string path = fromEnvironment("ORMEL_POSTGRES_CONTROL");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const Socket control(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (connect(control.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        throw ClientError("the server cannot be restarted by " + path);
    control.sendAll(signal.data(), signal.size());
    char nothing = 0;
    recv(control.get(), &nothing, 1, 0); // until it is closed
}

} // namespace contract
