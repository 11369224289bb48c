// Opening a connection.
#pragma once

#include "engine.h"
#include "handles.h"

namespace ormel::client::postgres {

// Connects within the time that the configuration allows for all of it. Only what the configuration says counts, not
// the environment. Throws Error in the server's words, or libpq's.
OwnedConnection openConnection(const Settings &settings);

} // namespace ormel::client::postgres
