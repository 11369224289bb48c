// What the libraries are to the linker: the names they export and the names they are found by.
#include "support/child.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

namespace {

using Names = std::set<std::string>;

struct Library {
    const char *path;
    const char *soname;
    Names names;
};

std::string outputOf(std::vector<std::string> argv) {
    const auto outcome = ormel::test::run("/", std::move(argv));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return outcome.out;
}

Names exportedBy(const std::string &path) {
    std::istringstream lines(outputOf({ORMEL_NM, "-D", "--defined-only", "--format=posix", path}));
    Names names;
    std::string line;
    while (std::getline(lines, line))
        names.insert(line.substr(0, line.find(' ')));
    return names;
}

class Exports : public testing::TestWithParam<Library> {};

TEST_P(Exports, AreTheNamesOfTheHeaderAndNoOthers) {
    EXPECT_EQ(exportedBy(GetParam().path), GetParam().names);
}

TEST_P(Exports, AreFoundByTheFileNameWithoutAVersion) {
    std::istringstream words(outputOf({ORMEL_OBJDUMP, "-p", GetParam().path}));
    std::string word;
    while (words >> word && word != "SONAME") {
    }
    words >> word;
    EXPECT_EQ(word, GetParam().soname);
}

// A host may bring another version of what a library is made with.
TEST_P(Exports, NeedNoOtherPackage) {
    const std::string headers = outputOf({ORMEL_OBJDUMP, "-p", GetParam().path});
    EXPECT_EQ(headers.find("libspdlog"), std::string::npos);
    EXPECT_EQ(headers.find("libfmt"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Platform, Exports,
    testing::Values(Library{ORMEL_LIBOPBBASE,
                            "libopbbase.so",
                            {"g_cfgParseMutex", "XOS_MutexLock", "XOS_MutexUnlock", "XOS_GetCpuTick", "XOS_CpuTick2Ms",
                             "OPB_sleep", "XOS_StrToUpper", "LOC_Trimwhitespace", "DQA_Assert", "strcpy_s", "strncpy_s",
                             "memcpy_s", "memset_s", "sprintf_s", "snprintf_s", "vsnprintf_s"}},
                    Library{ORMEL_LIBLOG,
                            "liblog.so",
                            {"LIB_LOG_CreateInstance", "LIB_LOG_Print", "LIB_LOG_DeleteInstance", "OPB_GetLogConfig",
                             "FrameDebugLevelGet", "FrameDebugLevelSet", "g_acLogPath", "g_frame_slot_id"}},
                    Library{ORMEL_LIBDECRYPT, "libdecrypt.so", {"g_decrypt_info_s"}}),
    [](const auto &info) {
        const std::string soname = info.param.soname;
        return soname.substr(0, soname.find('.'));
    });

} // namespace
