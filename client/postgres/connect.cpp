#include "connect.h"

#include <cerrno>
#include <chrono>
#include <optional>
#include <poll.h>
#include <string>
#include <vector>

#include "conninfo.h"
#include "error.h"
#include "resolve.h"
#include "settings.h"

namespace ormel::client::postgres {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kNotNow[] = "57P03"; // a server that starts or stops

// The end of an even share of the time that is left.
Clock::time_point endOfShare(Clock::time_point deadline, size_t shares) {
    const auto now = Clock::now();
    return now + (deadline - now) / static_cast<Clock::rep>(shares);
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

// The words of a failed connect without the place in the server's own sources, which the verbose form brings along.
std::string wordsOfConnect(const PGconn *connection) {
    const std::string words = wordsOf(connection);
    return words.substr(0, words.find(" LOCATION:"));
}

OwnedConnection start(const Conninfo &conninfo) {
    std::vector<const char *> names;
    std::vector<const char *> values;
    for (const auto &[name, value] : conninfo) {
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

[[noreturn]] void failSilent(const Address &address) {
    refuse(kUnableToConnect, "no answer from " + (address.number.empty() ? address.host : address.number) + ", port " +
                                 address.port + ", within client.connect_timeout_ms");
}

void logIn(PGconn *connection, const Address &address, Clock::time_point deadline) {
    PostgresPollingStatusType status = PGRES_POLLING_WRITING;
    while (status != PGRES_POLLING_OK) {
        if (PQstatus(connection) == CONNECTION_BAD || status == PGRES_POLLING_FAILED) {
            const std::string words = wordsOfConnect(connection);
            const std::string_view state = stateIn(words);
            refuse(state.empty() ? kUnableToConnect : state, words);
        }
        if (!await(connection, status, deadline))
            failSilent(address);
        status = PQconnectPoll(connection);
    }
    PQsetErrorVerbosity(connection, PQERRORS_DEFAULT);
}

// The next answer, or NULL when there is none left.
OwnedResult answerOf(PGconn *connection, const Address &address, Clock::time_point deadline) {
    while (PQisBusy(connection) != 0) {
        if (!await(connection, PGRES_POLLING_READING, deadline))
            failSilent(address);
        if (PQconsumeInput(connection) != 1)
            refuse(kUnableToConnect, wordsOf(connection));
    }
    return OwnedResult(PQgetResult(connection));
}

// The environment can give a session another form of dates, which all readers of text would see.
void useIsoDates(PGconn *connection, const Address &address, Clock::time_point deadline) {
    const char *style = PQparameterStatus(connection, "DateStyle");
    if (style == nullptr || std::string_view(style).substr(0, 3) == "ISO")
        return;
    if (PQsendQuery(connection, kIsoDates) != 1)
        refuse(kUnableToConnect, wordsOf(connection));
    while (const OwnedResult answer = answerOf(connection, address, deadline))
        if (PQresultStatus(answer.get()) != PGRES_COMMAND_OK)
            throw errorOf(answer.get());
}

// Whether another address may do better: this one is not there, not ready, or takes no writes.
bool isOfAddress(const Error &error) {
    return error.message.starts_with(kUnableToConnect) || error.message.starts_with(kNotNow);
}

// What an attempt gives for the first of the places that it succeeds with, each in an even share of the time.
template <class Place, class Attempt>
OwnedConnection firstOf(const std::vector<Place> &places, Clock::time_point deadline, Attempt attempt) {
    std::optional<Error> failed;
    for (size_t i = 0; i < places.size(); ++i) {
        try {
            return attempt(places[i], endOfShare(deadline, places.size() - i));
        } catch (Error &error) {
            if (!isOfAddress(error))
                throw;
            if (failed)
                addSentence(failed->message, wordsIn(error));
            else
                failed = std::move(error);
        }
    }
    throw *std::move(failed);
}

// What the configuration names, as far as it does.
std::string placeOf(const Settings &settings) {
    const std::string host = settings.host.empty() ? "this machine (db.host is not set)" : settings.host;
    return settings.port.empty() ? host : host + ":" + settings.port;
}

} // namespace

OwnedConnection openConnection(const Settings &settings) {
    const auto deadline = Clock::now() + connectTimeout(settings);
    const auto tryAddress = [&](const Address &address, Clock::time_point end) {
        OwnedConnection connection = start(conninfoOf(settings, address));
        logIn(connection.get(), address, end);
        useIsoDates(connection.get(), address, end);
        return connection;
    };
    const auto tryHost = [&](const Host &host, Clock::time_point end) {
        std::vector<Address> addresses;
        for (const std::string &number : addressesOf(host.name, end))
            addresses.push_back({host.name, number, host.port});
        return firstOf(addresses, end, tryAddress);
    };
    try {
        return firstOf(hostsOf(settings.host, settings.port), deadline, tryHost);
    } catch (const Error &error) {
        throw makeError(stateOf(error), "cannot connect to " + placeOf(settings) + ": " + std::string(wordsIn(error)));
    }
}

} // namespace ormel::client::postgres
