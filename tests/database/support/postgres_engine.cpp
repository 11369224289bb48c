#include <cstdlib>
#include <libpq-fe.h>
#include <memory>
#include <regex>
#include <stdexcept>

#include "support/engine.h"

namespace database {

namespace {

using Server = std::unique_ptr<PGconn, decltype(&PQfinish)>;
using Rows = std::unique_ptr<PGresult, decltype(&PQclear)>;

// What the tests' statements say in the other engine's words.
struct Word {
    std::regex theirs;
    const char *ours;
};

std::string translated(std::string sql) {
    static const Word words[] = {
        {std::regex("\\bINTEGER PRIMARY KEY\\b"), "SERIAL PRIMARY KEY"},
        {std::regex("\\bDOUBLE\\b"), "DOUBLE PRECISION"},
        {std::regex("\\bBLOB\\b"), "BYTEA"},
        {std::regex("\\b(VAR)?BINARY\\(\\d+\\)"), "BYTEA"},
    };
    for (const Word &word : words)
        sql = std::regex_replace(sql, word.theirs, word.ours);
    return sql;
}

// A value as a literal, in the other engine's form.
constexpr char kQuote[] = R"(
    CREATE OR REPLACE FUNCTION quote(value anyelement) RETURNS text LANGUAGE sql AS $$
        SELECT CASE
            WHEN value IS NULL THEN 'NULL'
            WHEN pg_typeof(value) = 'bytea'::regtype THEN 'X''' || upper(substr(value::text, 3)) || ''''
            WHEN pg_typeof(value) = 'boolean'::regtype THEN (value::text = 'true')::integer::text
            WHEN pg_typeof(value) = 'double precision'::regtype AND value::text !~ '\.' THEN value::text || '.0'
            WHEN pg_typeof(value)::text ~ '^(text|char|date)' THEN quote_literal(value::text)
            ELSE value::text END $$)";

std::string fromEnvironment(const char *name) {
    const char *value = std::getenv(name);
    if (value == nullptr)
        throw std::runtime_error(std::string(name) +
                                 " is not set; run the test through tests/support/with_postgres.py");
    return value;
}

Server connect() {
    const std::string words =
        "host=127.0.0.1 user=postgres dbname=postgres port=" + fromEnvironment("ORMEL_POSTGRES_PORT") +
        " password=" + fromEnvironment("ORMEL_POSTGRES_PASSWORD");
    Server server(PQconnectdb(words.c_str()), PQfinish);
    if (PQstatus(server.get()) != CONNECTION_OK)
        throw std::runtime_error(PQerrorMessage(server.get()));
    PQsetNoticeProcessor(
        server.get(), [](void *, const char *) {}, nullptr);
    return server;
}

Rows execute(PGconn *server, const std::string &sql) {
    Rows rows(PQexec(server, sql.c_str()), PQclear);
    const ExecStatusType status = PQresultStatus(rows.get());
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK)
        throw std::runtime_error(sql + ": " + PQerrorMessage(server));
    return rows;
}

class PostgresEngine : public Engine {
public:
    PostgresEngine() { execute(server_.get(), kQuote); }

    const char *name() const override { return "postgres"; }

    const char *lacks(Feature feature) const override {
        switch (feature) {
        case Feature::fixedBytes:
            return "bytes have no width";
        case Feature::misfits:
            return "columns refuse values that do not fit";
        case Feature::emptyNumbers:
            return "a number or a date is never empty";
        case Feature::numericAsWritten:
            return "a NUMERIC has all of its decimals";
        case Feature::likeOfNumbers:
            return "LIKE compares texts";
        case Feature::workAfterError:
            return "a transaction refuses further work after a failed statement";
        default:
            return nullptr;
        }
    }

    std::vector<std::string> run(const std::string &sql) const override {
        const Rows rows = execute(server_.get(), translated(sql));
        std::vector<std::string> texts;
        for (int row = 0; row < PQntuples(rows.get()); ++row)
            texts.emplace_back(PQgetvalue(rows.get(), row, 0));
        return texts;
    }

    std::string refusal(const std::string &place, Rule rule, const std::string &table,
                        const std::string &name) const override {
        switch (rule) {
        case Rule::key:
            return "23505: " + place + "duplicate key value violates unique constraint \"" + table + "_pkey\"; Key (" +
                   name + ")=";
        case Rule::presence:
            return "23502: " + place + "null value in column \"" + name + "\" of relation \"" + table +
                   "\" violates not-null constraint";
        case Rule::reference:
            return "23503: " + place + "nothing was committed: insert or update on table \"" + table +
                   "\" violates foreign key constraint \"" + table + "_" + name + "_fkey\"";
        default:
            return "23514: " + place + "new row for relation \"" + table + "\" violates check constraint \"" + name +
                   "\"";
        }
    }

    // As it came over the wire, too.
    size_t copiesRead() const override { return 3; }

private:
    Server server_ = connect();
};

} // namespace

const Engine &postgresEngine() {
    static const PostgresEngine engine;
    return engine;
}

} // namespace database
