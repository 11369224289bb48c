#include "option.h"

#include <charconv>

#include "error.h"

namespace cli {

uint64_t parseCount(const std::string &option, const std::string &text, uint64_t least, uint64_t most) {
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range)
        value = kNoMost;
    if (error == std::errc::invalid_argument || end != text.data() + text.size() || value < least || value > most)
        throw UsageError(option + " takes a whole number from " + std::to_string(least) +
                         (most == kNoMost ? " on" : " to " + std::to_string(most)) + ", not '" + text + "'");
    return value;
}

} // namespace cli
