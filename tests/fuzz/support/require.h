// What must hold whatever the input is.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

// Ends the process with the words, unless they are true; the fuzzer then keeps the input.
inline void require(bool holds, const char *words) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", words);
    std::abort();
}

} // namespace fuzz
