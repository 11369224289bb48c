#include "postgres/loopback.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace contract {

namespace {

sockaddr_in loopback(uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void must(int result, const char *what) {
    if (result != 0)
        throw std::system_error(errno, std::generic_category(), what);
}

bool beginConnect(const Socket &socket, uint16_t port) {
    const sockaddr_in address = loopback(port);
    return connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

} // namespace

Socket::~Socket() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

void Socket::end() const noexcept {
    shutdown(descriptor_, SHUT_RDWR);
}

bool Socket::sendAll(const char *data, size_t size) const noexcept {
    while (size > 0) {
        const ssize_t sent = send(descriptor_, data, size, MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        data += sent;
        size -= static_cast<size_t>(sent);
    }
    return true;
}

Port::Port() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    must(bind(socket_.get(), reinterpret_cast<sockaddr *>(&address), size), "bind");
    must(getsockname(socket_.get(), reinterpret_cast<sockaddr *>(&address), &size), "getsockname");
    number_ = ntohs(address.sin_port);
}

void Port::listen(int backlog) const {
    must(::listen(socket_.get(), backlog), "listen");
}

Socket connectTo(uint16_t port) {
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!beginConnect(socket, port))
        return Socket(-1);
    sendAtOnce(socket);
    return socket;
}

Socket knockAt(uint16_t port) {
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    beginConnect(socket, port);
    return socket;
}

void sendAtOnce(const Socket &socket) {
    const int on = 1;
    setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

} // namespace contract
