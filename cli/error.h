// The two ways in which a command ends early; main turns them into one line on stderr and an exit code.
#pragma once

#include <stdexcept>

namespace cli {

// The command line is wrong: exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The command line is fine and the work failed: exit code 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace cli
