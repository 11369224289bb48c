// Stands between a client and its server, passes their messages on, counts them, and fails where it is told to.
//
//     Proxy proxy(portOfServer);
//     proxy.fail({Proxy::toServer, 3, Proxy::Unit::messages, Proxy::Action::cut});
//     ... connect to proxy.port(), without encryption ...
//
// Messages are held until they are whole.
#pragma once

#include <chrono>
#include <list>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>

#include "postgres/loopback.h"

namespace contract {

class Proxy {
public:
    enum Direction { toServer, toClient };
    // halves: so many messages, and half of the next one; queries: so many simple queries (Q) of the client's
    enum class Unit { messages, halves, bytes, queries };
    // outage: a cut of every connection, and from then on of every new one
    // silence: nothing passes any more, in neither direction
    enum class Action { cut, outage, delay, silence };
    static constexpr std::chrono::milliseconds kDelay{5};

    // Happens once, when so much has passed in one direction and more is on its way; what lasts, lasts until count().
    struct Fault {
        Direction direction;
        uint64_t after;
        Unit unit;
        Action action;
    };

    struct Passed {
        uint64_t messages = 0;
        uint64_t bytes = 0;
        uint64_t queries = 0;
    };

    explicit Proxy(uint16_t server);
    ~Proxy();
    Proxy(const Proxy &) = delete;
    Proxy &operator=(const Proxy &) = delete;

    uint16_t port() const { return port_.number(); }

    // Counts anew, and fails there.
    void fail(const Fault &fault);
    bool hasFailed() const;
    // Counts anew, and fails no more.
    void count();
    Passed passed(Direction direction) const;
    // How often the client asked after the server had spoken. What it sends as a simple query, it does not wait for.
    uint64_t roundTrips() const;

private:
    struct Link;

    void serve();
    // Takes a connection on, and forgets those that have ended.
    void link(Socket client, Socket server);
    // Ends what there is and what will come, if the fault was an outage.
    void breakDown();
    void pump(Link &link, Direction direction);
    void passOn(Link &link, Direction direction);
    bool pass(Link &link, Direction direction, std::string_view message);
    // How much of a message passes before the fault happens; all of it: it does not.
    size_t head(Direction direction, std::string_view message) const;
    // Returns what happens to a message that is not passed whole.
    std::optional<Action> note(Direction direction, std::string_view message, size_t &passing);

    const Port port_;
    const uint16_t server_;
    mutable std::mutex mutex_;
    Passed passed_[2];
    Direction last_ = toClient;
    uint64_t roundTrips_ = 0;
    Fault fault_ = {};
    bool armed_ = false;
    bool silent_ = false;
    bool down_ = false;
    std::list<Link> links_; // the acceptor adds and removes them
    std::thread acceptor_;
};

} // namespace contract
