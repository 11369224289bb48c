// The numbers of errors that the client itself finds; those of a database are smaller.
#pragma once

#include <string>

#include "engine.h"

namespace ormel::client {

inline constexpr uint32_t kMisuse = 90000;        // a call out of order or an argument that cannot be
inline constexpr uint32_t kOutOfMemory = 90001;   // nothing could be allocated
inline constexpr uint32_t kConfiguration = 90002; // configuration file or engine
inline constexpr uint32_t kValue = 90003;         // a bound value that its parameter cannot take
inline constexpr uint32_t kResultLost = 90004;    // rows that were not read before their transaction ended

[[noreturn]] inline void fail(uint32_t code, std::string message) {
    throw Error{code, std::move(message)};
}

} // namespace ormel::client
