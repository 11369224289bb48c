#include "connection.h"

#include <poll.h>

#include "connect.h"
#include "error.h"
#include "pipeline.h"
#include "sql_text.h"
#include "statement.h"

namespace ormel::client::postgres {

namespace {

constexpr size_t kLargestKept = 4 * 1024 * 1024; // a message, in whose size the connection keeps buffers

} // namespace

void PostgresConnection::learnColumns(const PGresult *result, Description &description) {
    std::vector<std::pair<Oid, int>> types;
    for (int i = 0; i < PQnfields(result); ++i)
        types.emplace_back(PQftype(result, i), PQfmod(result, i));
    description.columns = columns_.describe(result);
    description.types = std::move(types);
    description.binary = allInBinary(result);
}

Description PostgresConnection::describe(const std::string &sql, bool query) {
    Description description;
    // A query is only looked at: its cursor has a text of its own.
    if (!query)
        description.name = session_.newName('s');
    Pipeline pipeline(session_, Pipeline::Begin::no);
    pipeline.prepare(description.name, sql);
    pipeline.describe(description.name);
    const auto results = pipeline.finish();
    const PGresult *described = results[1].get();
    for (int i = 0; i < PQnparams(described); ++i)
        description.parameters.push_back(PQparamtype(described, i));
    learnColumns(described, description);
    return description;
}

std::unique_ptr<Statement> PostgresConnection::prepare(const std::string &sql) {
    const std::string_view text = statementIn(sql);
    if (text.empty())
        refuse("42601", "the text holds no statement");
    const Role role = roleOf(text);
    const bool alters = mayAlterSession(text);
    altered_ = altered_ || alters;
    spoilt_ = spoilt_ || (alters && leavesForGood(text));
    if (role == Role::control)
        refuse("0A000", firstWord(text) +
                            " cannot be run as a statement: transactions begin by themselves and end by the "
                            "connection's commit and rollback");
    if (firstWord(text) == "COPY" && (hasWord(text, "STDIN") || hasWord(text, "STDOUT")))
        refuse("0A000",
               "COPY from or to the client cannot be run as a statement; use a file of the server's, or a batch");
    std::string whole = withCatalogue(std::string(text));
    std::optional<Description> known = statements_.take(whole);
    const bool fresh = !known.has_value();
    try {
        if (fresh)
            known = describe(whole, role == Role::query);
        return std::make_unique<PostgresStatement>(*this, std::move(whole), role, *std::move(known), fresh);
    } catch (const std::bad_alloc &) {
        altered_ = true; // nobody knows any longer what the server has prepared
        throw;
    }
}

void PostgresConnection::giveBack(std::string sql, Description description) noexcept {
    try {
        session_.dropLater(statements_.give(std::move(sql), std::move(description)));
    } catch (const std::bad_alloc &) {
        altered_ = true;
    }
}

void PostgresConnection::drop(const std::string &name) noexcept {
    try {
        session_.dropLater(name);
    } catch (const std::bad_alloc &) {
        altered_ = true;
    }
}

// One that stays open ends with its transaction.
void PostgresConnection::closeCursor(const std::string &name) noexcept {
    try {
        session_.later("CLOSE " + name);
    } catch (const std::bad_alloc &) {
        return;
    }
}

void PostgresConnection::forgetPrepared() noexcept {
    session_.forgetDrops();
    statements_ = StatementCache();
    ++generation_;
}

// Settings, temporary tables, locks, listens, cursors and prepared statements of the session.
bool PostgresConnection::recycle() noexcept {
    if (spoilt_ || session_.largestMessage() > kLargestKept)
        return false;
    try {
        if (!altered_) {
            session_.sendRollback();
        } else {
            session_.rollback();
            session_.forgetDrops();
            Pipeline pipeline(session_, Pipeline::Begin::no);
            for (const char *command :
                 {"DEALLOCATE ALL", "RESET SESSION AUTHORIZATION", "RESET ALL", kIsoDates, "CLOSE ALL", "UNLISTEN *",
                  "SELECT pg_catalog.pg_advisory_unlock_all()", "DISCARD TEMP", "DISCARD SEQUENCES"})
                pipeline.run(command);
            pipeline.finish();
            forgetPrepared(); // be it the user's or the engine's own
        }
        altered_ = false;
        return PQstatus(session_.raw()) == CONNECTION_OK;
    } catch (...) {
        return false;
    }
}

// Nobody speaks while nobody asks: what can be read is the end of the connection, or the server's words before it.
bool PostgresConnection::alive() noexcept {
    pollfd entry = {PQsocket(session_.raw()), POLLIN, 0};
    return session_.settle() && PQstatus(session_.raw()) == CONNECTION_OK && poll(&entry, 1, 0) == 0;
}

} // namespace ormel::client::postgres
