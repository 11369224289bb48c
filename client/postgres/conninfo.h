// What libpq is told of a connection.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine.h"

namespace ormel::client::postgres {

inline constexpr char kUnableToConnect[] = "08001";

// One address of one host.
struct Address {
    std::string host;   // the name that certificates are made out to, or a folder of sockets
    std::string number; // empty: a folder
    std::string port;
};

// A parameter that is left out, or empty, is taken from the environment, and so every one that matters has a value.
using Conninfo = std::vector<std::pair<const char *, std::string>>;

// Throws Error for settings that do not fit together.
Conninfo conninfoOf(const Settings &settings, const Address &address);

} // namespace ormel::client::postgres
