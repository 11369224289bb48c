#include "ormeldb/platform/opbbase.h"

#include <cstdio>

void DQA_Assert(const char *pcFile, int32_t iLine, int32_t iValue) {
    std::fprintf(stderr, "Assertion failed: %s:%d (value %d)\n", pcFile != nullptr ? pcFile : "?", iLine, iValue);
}
