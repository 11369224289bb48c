#include "resolve.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <netdb.h>
#include <optional>
#include <sys/socket.h>
#include <thread>
#include <vector>

#include "conninfo.h"
#include "error.h"

namespace ormel::client::postgres {

namespace {

std::vector<std::string> split(const std::string &list) {
    std::vector<std::string> elements;
    size_t begin = 0;
    for (size_t comma = list.find(','); comma != std::string::npos; comma = list.find(',', begin)) {
        elements.push_back(list.substr(begin, comma - begin));
        begin = comma + 1;
    }
    elements.push_back(list.substr(begin));
    return elements;
}

std::string numberOf(const addrinfo &address) {
    char text[NI_MAXHOST] = "";
    getnameinfo(address.ai_addr, address.ai_addrlen, text, sizeof text, nullptr, 0, NI_NUMERICHOST);
    return text;
}

// The addresses of a host as the system finds them; empty where it finds none.
std::vector<std::string> lookUp(const std::string &host) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *list = nullptr;
    std::vector<std::string> numbers;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &list) != 0)
        return numbers;
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(list, freeaddrinfo);
    for (const addrinfo *address = list; address != nullptr; address = address->ai_next)
        numbers.push_back(numberOf(*address));
    return numbers;
}

// A look-up that nobody may wait for any longer: the system offers none that can be given up.
struct LookUp {
    std::mutex mutex;
    std::condition_variable done;
    std::optional<std::vector<std::string>> numbers;
};

std::vector<std::string> lookUpUntil(const std::string &host, std::chrono::steady_clock::time_point deadline) {
    auto work = std::make_shared<LookUp>();
    std::thread([work, host] {
        std::vector<std::string> numbers;
        try {
            numbers = lookUp(host);
        } catch (const std::bad_alloc &) {
            numbers.clear(); // as if it were not found
        }
        const std::lock_guard lock(work->mutex);
        work->numbers = std::move(numbers);
        work->done.notify_one();
    }).detach();
    std::unique_lock lock(work->mutex);
    if (!work->done.wait_until(lock, deadline, [&] { return work->numbers.has_value(); }))
        refuse(kUnableToConnect,
               "the host " + host + " was not found within client.connect_timeout_ms; is db.host right?");
    return *std::move(work->numbers);
}

// Whether the host is an address already, which costs no look-up.
bool isNumber(const std::string &host) {
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST;
    addrinfo *list = nullptr;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &list) != 0)
        return false;
    freeaddrinfo(list);
    return true;
}

} // namespace

std::vector<Host> hostsOf(const std::string &hosts, const std::string &ports) {
    const auto names = split(hosts);
    const auto numbers = split(ports.empty() ? "5432" : ports);
    if (numbers.size() != 1 && numbers.size() != names.size())
        refuse(kUnableToConnect, "db.host names " + std::to_string(names.size()) + " hosts, and db.port " +
                                     std::to_string(numbers.size()) + " ports; give one for all, or one for each");
    std::vector<Host> list;
    for (size_t i = 0; i < names.size(); ++i)
        list.push_back({names[i], numbers[numbers.size() == 1 ? 0 : i]});
    return list;
}

std::vector<std::string> addressesOf(const std::string &name, std::chrono::steady_clock::time_point deadline) {
    if (name.empty() || name[0] == '/')
        return {""};
    if (isNumber(name))
        return {name};
    std::vector<std::string> numbers = lookUpUntil(name, deadline);
    if (numbers.empty())
        refuse(kUnableToConnect, "no such host: " + name + "; set db.host in ../conf/db.conf");
    return numbers;
}

} // namespace ormel::client::postgres
