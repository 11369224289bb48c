// From hosts' names to addresses, within a time.
#pragma once

#include <chrono>
#include <string>

namespace ormel::client::postgres {

// Lists of equal length with commas between their elements: an element for each address of each host.
struct Addresses {
    std::string hosts;
    std::string numbers; // empty elements for sockets in the file system
    std::string ports;
};

// Hosts with commas between them, and as many ports, or one for all. Hosts that are not found are left out. Throws
// Error when none is found until the deadline.
Addresses resolve(const std::string &hosts, const std::string &ports, std::chrono::steady_clock::time_point deadline);

} // namespace ormel::client::postgres
