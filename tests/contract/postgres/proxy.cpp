#include "postgres/proxy.h"

#include <array>
#include <atomic>
#include <cstring>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>

namespace contract {

// A client, its server, and a thread for each direction.
struct Proxy::Link {
    Link(Proxy &proxy, Socket of, Socket at)
        : client(std::move(of)), server(std::move(at)), up(&Proxy::pump, &proxy, std::ref(*this), toServer),
          down(&Proxy::pump, &proxy, std::ref(*this), toClient) {}
    ~Link() {
        end();
        up.join();
        down.join();
    }
    void end() const noexcept {
        client.end();
        server.end();
    }
    bool hasEnded() const { return running == 0; }

    const Socket client;
    const Socket server;
    std::atomic<int> running = 2;
    std::thread up;
    std::thread down;
};

namespace {

// The size of the message that the bytes begin with, 0 if it is not whole. All but the very first of a client begin
// with a letter; then comes their length.
size_t messageSize(std::string_view bytes, bool first) {
    const size_t letter = first ? 0 : 1;
    uint32_t length = 0;
    if (bytes.size() < letter + sizeof length)
        return 0;
    std::memcpy(&length, bytes.data() + letter, sizeof length);
    const size_t size = letter + ntohl(length);
    return bytes.size() < size ? 0 : size;
}

bool isQuery(Proxy::Direction direction, std::string_view message) {
    return direction == Proxy::toServer && message.front() == 'Q';
}

} // namespace

Proxy::Proxy(uint16_t server) : server_(server) {
    port_.listen(16);
    acceptor_ = std::thread(&Proxy::serve, this);
}

Proxy::~Proxy() {
    port_.socket().end();
    acceptor_.join();
}

void Proxy::fail(const Fault &fault) {
    count();
    const std::lock_guard lock(mutex_);
    fault_ = fault;
    armed_ = true;
}

bool Proxy::hasFailed() const {
    const std::lock_guard lock(mutex_);
    return !armed_;
}

void Proxy::count() {
    const std::lock_guard lock(mutex_);
    passed_[toServer] = passed_[toClient] = {};
    roundTrips_ = 0;
    armed_ = false;
    silent_ = false;
    down_ = false;
}

Proxy::Passed Proxy::passed(Direction direction) const {
    const std::lock_guard lock(mutex_);
    return passed_[direction];
}

uint64_t Proxy::roundTrips() const {
    const std::lock_guard lock(mutex_);
    return roundTrips_;
}

void Proxy::serve() {
    for (;;) {
        Socket client(accept4(port_.socket().get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (client.get() < 0)
            break;
        sendAtOnce(client);
        Socket server = connectTo(server_);
        if (server.get() >= 0)
            link(std::move(client), std::move(server));
    }
    std::list<Link> ended;
    const std::lock_guard lock(mutex_);
    ended.swap(links_);
}

// Their threads may still want the lock, so that they are waited for without it.
void Proxy::link(Socket client, Socket server) {
    std::list<Link> ended;
    const std::lock_guard lock(mutex_);
    for (auto known = links_.begin(); known != links_.end();) {
        const auto each = known++;
        if (each->hasEnded())
            ended.splice(ended.end(), links_, each);
    }
    if (!down_)
        links_.emplace_back(*this, std::move(client), std::move(server));
}

void Proxy::breakDown() {
    const std::lock_guard lock(mutex_);
    if (!down_)
        return;
    for (const Link &each : links_)
        each.end();
}

void Proxy::pump(Link &link, Direction direction) {
    passOn(link, direction);
    breakDown();
    link.end();
    --link.running;
}

void Proxy::passOn(Link &link, Direction direction) {
    const Socket &from = direction == toServer ? link.client : link.server;
    std::array<char, 65536> chunk;
    std::string held;
    bool first = direction == toServer;
    for (ssize_t size = 0; (size = recv(from.get(), chunk.data(), chunk.size(), 0)) > 0;) {
        held.append(chunk.data(), static_cast<size_t>(size));
        std::string_view rest = held;
        while (const size_t whole = messageSize(rest, first)) {
            if (!pass(link, direction, rest.substr(0, whole)))
                return;
            rest.remove_prefix(whole);
            first = false;
        }
        held.erase(0, held.size() - rest.size());
    }
}

bool Proxy::pass(Link &link, Direction direction, std::string_view message) {
    const Socket &to = direction == toServer ? link.server : link.client;
    size_t head = 0;
    const std::optional<Action> action = note(direction, message, head);
    if (!to.sendAll(message.data(), head) || action == Action::cut || action == Action::outage)
        return false;
    if (action != Action::delay)
        return true;
    std::this_thread::sleep_for(kDelay);
    return to.sendAll(message.data() + head, message.size() - head);
}

std::optional<Proxy::Action> Proxy::note(Direction direction, std::string_view message, size_t &passing) {
    const std::lock_guard lock(mutex_);
    const bool query = isQuery(direction, message);
    roundTrips_ += direction == toServer && last_ == toClient && !query ? 1 : 0;
    last_ = query ? last_ : direction;
    const bool fails = armed_ && direction == fault_.direction && head(direction, message) < message.size();
    passing = silent_ ? 0 : fails ? head(direction, message) : message.size();
    armed_ = armed_ && !fails;
    silent_ = silent_ || (fails && fault_.action == Action::silence);
    down_ = down_ || (fails && fault_.action == Action::outage);
    ++passed_[direction].messages;
    passed_[direction].bytes += message.size();
    passed_[direction].queries += query ? 1 : 0;
    return fails ? std::optional(fault_.action) : std::nullopt;
}

size_t Proxy::head(Direction direction, std::string_view message) const {
    const Passed &passed = passed_[direction];
    const bool within = passed.messages >= fault_.after;
    switch (fault_.unit) {
    case Unit::messages:
        return within ? 0 : message.size();
    case Unit::halves:
        return within ? message.size() / 2 : message.size();
    case Unit::queries:
        return isQuery(direction, message) && passed.queries >= fault_.after ? 0 : message.size();
    default:
        return fault_.after - passed.bytes;
    }
}

} // namespace contract
