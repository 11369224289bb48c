// The platform under the library.
#pragma once

namespace fuzz {

// Whether dumps and traces are formatted, or nothing at all.
void logEverything(bool on);

} // namespace fuzz
