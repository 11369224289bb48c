// Whether a call did what is to be measured.
#pragma once

#include <benchmark/benchmark.h>
#include <string>

#include <ormeldb/base.h>

namespace bench {

// Fails the benchmark instead of measuring a call that did nothing.
inline bool check(benchmark::State &state, uint32_t code) {
    if (code == ORMEL_OK)
        return true;
    state.SkipWithError(("code " + std::to_string(code)).c_str());
    return false;
}

} // namespace bench
