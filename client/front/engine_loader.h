// Engines are shared objects that are loaded when they are first asked for, so that a host needs the client library of
// no database but its own.
#pragma once

#include "engine.h"

namespace ormel::client {

// The engine that "db.driver" names; where it names none, sqlite for an empty "db.host" and postgres for another, so
// that a host is never silently ignored. Throws Error when there is no such engine. Any thread.
Engine &loadEngine(const Settings &settings);

} // namespace ormel::client
