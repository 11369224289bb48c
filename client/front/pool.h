// Connections that nobody uses at the moment, kept for the next user who wants the same.
#pragma once

#include <chrono>

#include "engine.h"

namespace ormel::client {

// The clock by which kept connections grow old.
inline std::chrono::steady_clock::time_point (*g_poolClock)() = std::chrono::steady_clock::now;

// A kept connection with these settings, alive and as new; NULL where there is none.
std::unique_ptr<Connection> takeIdle(const Settings &settings);

// Keeps a connection whose user is done with it, or closes it: where the settings want none kept, or something of its
// user cannot be undone.
void keepIdle(const Settings &settings, std::unique_ptr<Connection> connection) noexcept;

} // namespace ormel::client
