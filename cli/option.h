// Numbers behind options.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace cli {

constexpr uint64_t kNoMost = std::numeric_limits<uint64_t>::max();

// The whole number that stands behind an option; one that no variable holds is as good as the largest. Throws
// UsageError unless it lies between the two others.
uint64_t parseCount(const std::string &option, const std::string &text, uint64_t least, uint64_t most = kNoMost);

} // namespace cli
