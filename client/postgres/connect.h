// Opening a connection.
#pragma once

#include "engine.h"
#include "handles.h"

namespace ormel::client::postgres {

// Sets the form of dates that the engine promises; a reset of the session's settings may lead to another.
inline constexpr char kIsoDates[] = "SET DateStyle TO ISO";

// Connects within the time that the configuration allows for all of it. Only what the configuration says counts, not
// the environment. Throws Error in the server's words, or libpq's.
OwnedConnection openConnection(const Settings &settings);

} // namespace ormel::client::postgres
