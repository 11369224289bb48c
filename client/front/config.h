// "../conf/db.conf", read by the rules of the library itself.
#pragma once

#include <functional>
#include <map>
#include <string>

namespace ormel::client {

inline constexpr char kConfigFile[] = "../conf/db.conf";

// Keys as they stand before the "=", values up to the next one, trimmed. The last value that is not empty holds. Throws
// Error when the file cannot be read.
std::map<std::string, std::string, std::less<>> readConfig(const char *path = kConfigFile);

} // namespace ormel::client
