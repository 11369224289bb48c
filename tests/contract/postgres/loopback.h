// Sockets of the loopback address.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace contract {

// Owns a descriptor.
class Socket {
public:
    explicit Socket(int descriptor) : descriptor_(descriptor) {}
    Socket(Socket &&other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Socket &operator=(Socket &&) = delete;
    ~Socket();

    int get() const { return descriptor_; }
    // Ends what is under way on it; whoever waits for it goes on.
    void end() const noexcept;
    bool sendAll(const char *data, size_t size) const noexcept;

private:
    int descriptor_;
};

// A free port, which is closed until somebody listens.
class Port {
public:
    Port();

    uint16_t number() const { return number_; }
    std::string text() const { return std::to_string(number_); }
    void listen(int backlog) const;
    const Socket &socket() const { return socket_; }

private:
    Socket socket_;
    uint16_t number_ = 0;
};

// A connection to a port; its descriptor is -1 where there is none.
Socket connectTo(uint16_t port);
// Small messages are not held back.
void sendAtOnce(const Socket &socket);
// One that nobody waits for.
Socket knockAt(uint16_t port);

} // namespace contract
