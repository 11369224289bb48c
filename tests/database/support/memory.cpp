#include "support/memory.h"

#include <fstream>
#include <malloc.h>

// g++ has macros for them, clang features.
#ifndef __has_feature
#define __has_feature(feature) 0
#endif

namespace database {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || __has_feature(address_sanitizer) ||               \
    __has_feature(thread_sanitizer)
constexpr bool kSanitizer = true;
#else
constexpr bool kSanitizer = false;
#endif

// The kernel forgets the peak of the process.
bool forgetPeak() {
    std::ofstream file("/proc/self/clear_refs");
    file << "5" << std::flush;
    return file.good();
}

// A line of the process's status, which has KiB, in bytes.
size_t status(const std::string &name) {
    std::ifstream file("/proc/self/status");
    size_t value = 0;
    for (std::string word; file >> word;)
        if (word == name)
            file >> value;
    return value * 1024;
}

} // namespace

std::string whyUnmeasured() {
    if (kSanitizer)
        return "a sanitizer holds back what is freed";
    if (!forgetPeak() || status("VmHWM:") == 0)
        return "the kernel does not let a process measure its peak: /proc/self/clear_refs cannot be written";
    return "";
}

MemoryGrowth::MemoryGrowth() {
    malloc_trim(0);
    forgetPeak();
    before_ = status("VmRSS:");
}

size_t MemoryGrowth::peak() const {
    const size_t peak = status("VmHWM:");
    return peak > before_ ? peak - before_ : 0;
}

} // namespace database
