#include "resolve.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <netdb.h>
#include <optional>
#include <sys/socket.h>
#include <thread>
#include <vector>

#include "error.h"

namespace ormel::client::postgres {

namespace {

constexpr char kUnableToConnect[] = "08001";

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

void add(std::string &list, bool first, const std::string &element) {
    list += (first ? "" : ",") + element;
}

} // namespace

Addresses resolve(const std::string &hosts, const std::string &ports, std::chrono::steady_clock::time_point deadline) {
    const auto names = split(hosts);
    const auto numbers = split(ports.empty() ? "5432" : ports);
    if (numbers.size() != 1 && numbers.size() != names.size())
        refuse(kUnableToConnect, "db.host names " + std::to_string(names.size()) + " hosts, and db.port " +
                                     std::to_string(numbers.size()) + " ports; give one for all, or one for each");
    Addresses addresses;
    bool first = true;
    for (size_t i = 0; i < names.size(); ++i) {
        const bool known = names[i].empty() || names[i][0] == '/' || isNumber(names[i]);
        const std::string number = !names[i].empty() && names[i][0] == '/' ? std::string() : names[i];
        for (const std::string &address : known ? std::vector<std::string>{number} : lookUpUntil(names[i], deadline)) {
            add(addresses.hosts, first, names[i]);
            add(addresses.numbers, first, address);
            add(addresses.ports, first, numbers[numbers.size() == 1 ? 0 : i]);
            first = false;
        }
    }
    if (first)
        refuse(kUnableToConnect, "no such host: " + hosts + "; set db.host in ../conf/db.conf");
    // An empty list would be taken from the environment, one of two empty elements is not.
    if (addresses.numbers.empty())
        for (std::string *list : {&addresses.hosts, &addresses.numbers, &addresses.ports})
            *list += "," + *list;
    return addresses;
}

} // namespace ormel::client::postgres
