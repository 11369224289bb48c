// A log instance of a test.
#pragma once

#include "ormeldb/platform/liblog.h"

#include <filesystem>
#include <string>

namespace ormel::test {

inline void *createInstance(const std::filesystem::path &file, uint32_t mib = 50, uint32_t files = 20) {
    const LIB_LOG_INSTANCE_CFG cfg{nullptr, "LOG_VEMLO", file.c_str(), mib, files, 60, 0};
    return LIB_LOG_CreateInstance(&cfg);
}

inline int32_t print(void *instance, const std::string &text) {
    return LIB_LOG_Print(instance, text.data(), static_cast<uint32_t>(text.size()), 5);
}

} // namespace ormel::test
