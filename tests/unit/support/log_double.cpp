#include "log_double.h"

#include <cstring>
#include <regex>

#include <gtest/gtest.h>

#include "ormeldb/platform/decrypt.h"

namespace unit {

namespace {

int LevelNumber(const std::string &name) {
    static const char *const kNames[] = {"TRACE", "DEBUG", "INFO", "NOTICE", "WARN", "ERROR", "FATAL"};
    for (int level = 0; level < 7; ++level) {
        if (name == kNames[level]) {
            return level;
        }
    }
    return -1;
}

// "<date> <time> <LEVEL> <module>:<line>:<function>: <message>\r\n"
bool Parse(Line &line) {
    static const std::regex head(R"(^(\S+ \S+) (\S+) ([^:]*):(\d+):([^:]*): )");
    std::smatch parts;
    size_t size = line.raw.size();
    if (size < 2 || line.raw.compare(size - 2, 2, "\r\n") != 0 || !std::regex_search(line.raw, parts, head)) {
        return false;
    }
    line.time = parts[1];
    line.level = LevelNumber(parts[2]);
    line.module = parts[3];
    line.source = std::stoi(parts[4]);
    line.function = parts[5];
    auto begin = static_cast<size_t>(parts[0].length());
    line.message = line.raw.substr(begin, size - 2 - begin);
    return true;
}

} // namespace

LogDouble &Log() {
    static LogDouble log;
    return log;
}

void LogDouble::Reset() {
    Forget();
    threshold = KPL_LOG_TRACE;
    thresholdReads = 0;
    thresholdSets.clear();
    hook = nullptr;
    debugValue = nullptr;
    instance = this;
    made.clear();
    madeFiles.clear();
    deleted.clear();
    linesWhenDeleted = 0;
    reads = true;
    FailNothing();
    failed_ = false;
}

void LogDouble::Fail(int n, bool lasting) {
    failed_ = false;
    lasting_ = lasting;
    left_ = n;
}

void LogDouble::FailNothing() {
    left_ = 0;
    lasting_ = false;
}

bool LogDouble::Called() {
    bool fails = left_ > 0 ? --left_ == 0 : lasting_ && failed_;
    failed_ = failed_ || fails;
    return !fails;
}

std::vector<std::string> LogDouble::LinesOf(const std::string &function, int from) const {
    std::lock_guard guard(mutex_);
    std::vector<std::string> shown;
    for (const Line &line : lines_) {
        if (line.level >= from && line.function.rfind(function, 0) == 0) {
            shown.push_back(std::string(g_apcLogLeveNameMap[line.level]) + " " + line.function + ": " + line.message);
        }
    }
    return shown;
}

std::vector<std::string> LogDouble::Lines(int from) const {
    return LinesOf("", from);
}

std::vector<Line> LogDouble::Raw() const {
    std::lock_guard guard(mutex_);
    return lines_;
}

void LogDouble::Forget() {
    std::lock_guard guard(mutex_);
    lines_.clear();
}

bool LogDouble::Says(const std::string &text) const {
    std::lock_guard guard(mutex_);
    for (const Line &line : lines_) {
        if (line.raw.find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void LogDouble::Take(void *handle, const char *text, uint32_t length, int32_t level) {
    if (!reads) {
        return;
    }
    Line line{handle, std::string(text, length), length, level, -1, "", "", 0, "", ""};
    EXPECT_TRUE(Parse(line)) << "not a log line: " << line.raw;
    EXPECT_EQ(line.level, level) << line.raw;
    if (hook) {
        hook(line);
    }
    std::lock_guard guard(mutex_);
    lines_.push_back(std::move(line));
}

void SetPassword(const std::string &password) {
    ASSERT_LT(password.size(), sizeof(g_decrypt_info_s) - ORMEL_DECRYPT_PASSWORD_OFFSET);
    std::memset(g_decrypt_info_s, 0, sizeof(g_decrypt_info_s));
    std::memcpy(g_decrypt_info_s + ORMEL_DECRYPT_PASSWORD_OFFSET, password.c_str(), password.size() + 1);
}

} // namespace unit

extern "C" {

char g_acLogPath[256];
int32_t g_frame_slot_id;
unsigned char g_decrypt_info_s[8192];

void *LIB_LOG_CreateInstance(const LIB_LOG_INSTANCE_CFG *pstCfg) {
    unit::Log().made.push_back(*pstCfg);
    unit::Log().madeFiles.emplace_back(pstCfg->pcFileName);
    return unit::Log().Called() ? unit::Log().instance : nullptr;
}

int32_t LIB_LOG_Print(void *pHandle, const char *pcLine, uint32_t uiLen, int32_t iLevel) {
    EXPECT_EQ(std::strlen(pcLine), uiLen);
    if (!unit::Log().Called()) {
        return -1;
    }
    unit::Log().Take(pHandle, pcLine, uiLen, iLevel);
    return 0;
}

int32_t LIB_LOG_DeleteInstance(void *pHandle) {
    unit::Log().deleted.push_back(pHandle);
    unit::Log().linesWhenDeleted = unit::Log().Raw().size();
    return unit::Log().Called() ? 0 : -1;
}

const char *OPB_GetLogConfig(const char *pcName) {
    EXPECT_STREQ(pcName, "OPB_VEMLO_DEBUG");
    return unit::Log().Called() ? unit::Log().debugValue : nullptr;
}

int32_t FrameDebugLevelGet(void) {
    ++unit::Log().thresholdReads;
    return unit::Log().Called() ? unit::Log().threshold.load() : INT32_MAX;
}

void FrameDebugLevelSet(int32_t iLevel) {
    unit::Log().thresholdSets.push_back(iLevel);
    unit::Log().threshold = iLevel;
}
}
