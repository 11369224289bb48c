// What the configuration of a new home says about its database.
#pragma once

#include <string>

#include "commands.h"

namespace cli {

// Whether the database is to be on a server. Throws UsageError where nobody knows the engine.
bool isServer(const HomeRequest &request);

// The text of conf/db.conf. Throws UsageError where the words leave something out or do not go together, or where a
// value would not come back from the file as it was given.
std::string databaseSettings(const HomeRequest &request);

} // namespace cli
