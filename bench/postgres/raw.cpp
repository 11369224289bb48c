#include "postgres/raw.h"

#include <cstdlib>
#include <cstring>
#include <endian.h>

#include "home.h"

const char *const bench::kBytes = "BYTEA";

namespace {

std::string fromEnvironment(const char *name) {
    const char *value = std::getenv(name);
    if (value == nullptr)
        bench::die(std::string(name) + " is not set; run this program through tests/support/with_postgres.py");
    return value;
}

template <class Number> std::string bytesOf(Number number) {
    return {reinterpret_cast<const char *>(&number), sizeof number};
}

template <class Number> Number numberAt(const PGresult *rows, int row, int column) {
    Number number;
    std::memcpy(&number, PQgetvalue(rows, row, column), sizeof number);
    return number;
}

int64_t longAt(const PGresult *rows, int row, int column) {
    return static_cast<int64_t>(be64toh(numberAt<uint64_t>(rows, row, column)));
}

std::string textAt(const PGresult *rows, int row, int column) {
    return {PQgetvalue(rows, row, column), static_cast<size_t>(PQgetlength(rows, row, column))};
}

} // namespace

std::string bench::settings() {
    return "db.driver=postgres\ndb.host=127.0.0.1\ndb.dbname=postgres\ndb.user=postgres\nauth.sslmode=DISABLED\n"
           "db.port=" +
           fromEnvironment("ORMEL_POSTGRES_PORT") + "\n";
}

std::string bench::password() {
    return fromEnvironment("ORMEL_POSTGRES_PASSWORD");
}

bench::Server bench::connect() {
    const std::string words =
        "host=127.0.0.1 dbname=postgres user=postgres sslmode=disable port=" + fromEnvironment("ORMEL_POSTGRES_PORT") +
        " password=" + password();
    Server server(PQconnectdb(words.c_str()));
    if (PQstatus(server.get()) != CONNECTION_OK)
        die(PQerrorMessage(server.get()));
    PQsetNoticeProcessor(
        server.get(), [](void *, const char *) {}, nullptr);
    return server;
}

bench::Answer bench::checked(PGconn *server, PGresult *result) {
    Answer answer(result);
    switch (PQresultStatus(result)) {
    case PGRES_COMMAND_OK:
    case PGRES_TUPLES_OK:
    case PGRES_COPY_IN:
    case PGRES_PIPELINE_SYNC:
        return answer;
    default:
        die(PQerrorMessage(server));
    }
}

void bench::run(PGconn *server, const char *sql) {
    checked(server, PQexec(server, sql));
}

void bench::run(const std::string &sql) {
    run(connect().get(), sql.c_str());
}

std::string bench::wire(int32_t number) {
    return bytesOf(htobe32(static_cast<uint32_t>(number)));
}

std::string bench::wire(int64_t number) {
    return bytesOf(htobe64(static_cast<uint64_t>(number)));
}

std::string bench::wire(double number) {
    uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bytesOf(htobe64(bits));
}

std::string bench::wire(bool flag) {
    return std::string(1, flag ? '\1' : '\0');
}

bench::Parameters::Parameters(const std::vector<std::string> &values) : formats_(values.size(), 1) {
    for (const std::string &value : values) {
        pointers_.push_back(value.data());
        lengths_.push_back(static_cast<int>(value.size()));
    }
}

bench::Person bench::personOf(const PGresult *rows, int row) {
    const uint64_t bits = be64toh(numberAt<uint64_t>(rows, row, 3));
    double height = 0;
    std::memcpy(&height, &bits, sizeof height);
    return {static_cast<int>(be32toh(numberAt<uint32_t>(rows, row, 0))),
            textAt(rows, row, 1),
            textAt(rows, row, 2),
            height,
            longAt(rows, row, 4),
            *PQgetvalue(rows, row, 5) != 0};
}
