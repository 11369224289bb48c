// From hosts' names to addresses, within a time.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace ormel::client::postgres {

struct Host {
    std::string name; // or number, or a folder of sockets
    std::string port;
};

// Hosts with commas between them, and as many ports, or one for all. Throws Error where their numbers differ.
std::vector<Host> hostsOf(const std::string &hosts, const std::string &ports);

// The addresses of a host as numbers; an empty one for sockets in the file system. Throws Error when none is found
// until the deadline.
std::vector<std::string> addressesOf(const std::string &name, std::chrono::steady_clock::time_point deadline);

} // namespace ormel::client::postgres
