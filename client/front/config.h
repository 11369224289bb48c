// "../conf/db.conf", read by the rules of the library itself.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "engine.h"

namespace ormel::client {

inline constexpr char kConfigFile[] = "../conf/db.conf";

// Keys as they stand before the "=", values up to the next one, trimmed. The last value that is not empty holds. A line
// longer than 2013 bytes is read in pieces, each a line of its own. Throws Error when the file cannot be read.
std::map<std::string, std::string, std::less<>> readConfig(const char *path = kConfigFile);

// The number of a key, or the fallback where the key is absent. Throws Error for what is no number from 0 on.
uint32_t number(const Settings &settings, const char *key, uint32_t fallback);

} // namespace ormel::client
