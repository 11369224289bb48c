// Numbers in "../conf/db.conf".
#pragma once

#include <chrono>

#include "engine.h"

namespace ormel::client::postgres {

// A time in milliseconds, or the fallback where the key is absent. Throws Error for what is no number.
std::chrono::milliseconds milliseconds(const Settings &settings, const char *key, int fallback);

// The most that one connect may take.
std::chrono::milliseconds connectTimeout(const Settings &settings);

} // namespace ormel::client::postgres
