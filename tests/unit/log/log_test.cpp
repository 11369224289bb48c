#include <cstdlib>
#include <ctime>
#include <regex>
#include <thread>

#include "ormeldb/dao.h"
#include "support/process.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Log;

namespace {

const int32_t kLevelAtLoad = g_VemloLogLevel;

class LogTest : public unit::UnitTest {
protected:
    ~LogTest() override { g_stLogCfgs[KPL_LOG_CFG_ORMEL] = ormel_; }

    static void Write(int level, const std::string &message) {
        KPL_VemloLogToFile("LOG_ORMEL", "file.cpp", 8, "Function", 8, 214, level, "%s", message.c_str());
    }

private:
    KPL_LOG_CFG ormel_ = g_stLogCfgs[KPL_LOG_CFG_ORMEL];
};

// --- Tables ---

TEST_F(LogTest, NamesModulesAndLevels) {
    const char *modules[] = {"LOG_KOBRADEN", "LOG_MIRVEL", "LOG_PASTURIN", "LOG_ORMEL", "LOG_DUNMOR"};
    for (int i = 0; i < KPL_LOG_CFG_NUM; ++i) {
        EXPECT_STREQ(g_stLogCfgs[i].pcModule, modules[i]);
        EXPECT_STREQ(g_stLogCfgs[i].pcCategory, "LOG_VEMLO");
    }
    const char *levels[] = {"TRACE", "DEBUG", "INFO", "NOTICE", "WARN", "ERROR", "FATAL"};
    for (int i = 0; i < 7; ++i) {
        EXPECT_STREQ(g_apcLogLeveNameMap[i], levels[i]);
    }
    EXPECT_EQ(kLevelAtLoad, 2);
}

// --- Start ---

TEST_F(LogTest, WithoutAValueTheThresholdStays) {
    KPL_LogInit();
    EXPECT_THAT(Log().thresholdSets, IsEmpty());
    EXPECT_EQ(g_VemloLogLevel, 2);
}

TEST_F(LogTest, TakesTheThresholdFromTheValue) {
    struct {
        const char *value;
        int32_t level;
    } cases[] = {{"0", 0}, {"5", 5}, {" 3x", 3}, {"-1", -1}, {"abc", 0}, {"", 0}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.value);
        Log().thresholdSets.clear();
        Log().debugValue = c.value;
        KPL_LogInit();
        EXPECT_EQ(g_VemloLogLevel, c.level);
        EXPECT_THAT(Log().thresholdSets, ElementsAre(c.level));
    }
}

TEST_F(LogTest, MakesAnInstanceOfItsFile) {
    g_pstVemloLogHandle = nullptr;
    KPL_LogInit();
    ASSERT_EQ(Log().made.size(), 1u);
    const LIB_LOG_INSTANCE_CFG &cfg = Log().made[0];
    EXPECT_EQ(cfg.pReserved, nullptr);
    EXPECT_STREQ(cfg.pcCategory, "LOG_VEMLO");
    EXPECT_EQ(cfg.pcFileName, g_acVemloLogFileName);
    EXPECT_EQ(cfg.uiA, 50u);
    EXPECT_EQ(cfg.uiB, 20u);
    EXPECT_EQ(cfg.ullC, 60u);
    EXPECT_EQ(cfg.uiD, 0u);
    EXPECT_EQ(g_pstVemloLogHandle, Log().instance);
}

TEST_F(LogTest, NamesTheFileAfterDirectoryAndSlot) {
    struct {
        std::string directory;
        int32_t slot;
        std::string file;
    } cases[] = {{"", 3, "../var/log/slot-3"},
                 {"/x", 3, "/x/slot-3"},
                 {"", -1, "../var/log/slot--1"},
                 {std::string(255, 'd'), 0, std::string(255, 'd')},
                 {std::string(250, 'd'), 12, std::string(250, 'd') + "/slot"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file);
        c.directory.copy(g_acLogPath, sizeof(g_acLogPath));
        g_acLogPath[c.directory.size()] = '\0';
        g_frame_slot_id = c.slot;
        KPL_ZlogInit();
        EXPECT_EQ(g_acVemloLogFileName, c.file);
    }
}

TEST_F(LogTest, ASecondStartNamesTheFileAnewAndMakesNoInstance) {
    g_pstVemloLogHandle = nullptr;
    KPL_LogInit();
    g_frame_slot_id = 7;
    KPL_LogInit();
    EXPECT_STREQ(g_acVemloLogFileName, "../var/log/slot-7");
    EXPECT_THAT(Log().madeFiles, ElementsAre("../var/log/slot-0"));
}

TEST_F(LogTest, SaysOnStandardErrorThatThereIsNoInstance) {
    g_pstVemloLogHandle = nullptr;
    Log().instance = nullptr;
    unit::Capture error(stderr);
    KPL_ZlogInit();
    EXPECT_EQ(error.Text(), "KPL_ZlogInit LIB_LOG_CreateInstance fail.\n");
    EXPECT_EQ(g_pstVemloLogHandle, nullptr);
    Write(KPL_LOG_INFO, "goes to a service without instance");
    ASSERT_EQ(Log().Raw().size(), 1u);
    EXPECT_EQ(Log().Raw()[0].handle, nullptr);
}

// --- Stop ---

TEST_F(LogTest, RemembersADeletedInstance) {
    for (auto stop : {KPL_ZlogUnInit, KPL_LogUnInit}) {
        Log().Reset();
        g_pstVemloLogHandle = Log().instance;
        stop();
        EXPECT_THAT(Log().deleted, ElementsAre(Log().instance));
        EXPECT_EQ(g_pstVemloLogHandle, Log().instance);
        Write(KPL_LOG_INFO, "after the stop");
        EXPECT_EQ(Log().Raw().at(0).handle, Log().instance);
        KPL_ZlogInit();
        EXPECT_THAT(Log().made, IsEmpty());
    }
}

TEST_F(LogTest, WithoutAnInstanceNothingIsDeleted) {
    g_pstVemloLogHandle = nullptr;
    KPL_ZlogUnInit();
    KPL_LogUnInit();
    EXPECT_THAT(Log().deleted, IsEmpty());
}

// --- The writer ---

TEST_F(LogTest, WritesTimeLevelModuleLineFunctionMessage) {
    time_t before = time(nullptr);
    KPL_VemloLogToFile("LOG_X", "ignored.cpp", 11, "ORMEL_ResAttFree", 16, 214, KPL_LOG_DEBUG, "Trace %s%c", "in", '.');
    time_t after = time(nullptr);
    ASSERT_EQ(Log().Raw().size(), 1u);
    const unit::Line line = Log().Raw()[0];
    EXPECT_EQ(line.raw, line.time + " DEBUG LOG_X:214:ORMEL_ResAttFree: Trace in.\r\n");
    EXPECT_TRUE(std::regex_match(line.time, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6})"))) << line.time;
    tm parts{};
    strptime(line.time.c_str(), "%Y-%m-%d %H:%M:%S", &parts);
    parts.tm_isdst = -1;
    EXPECT_GE(mktime(&parts), before);
    EXPECT_LE(mktime(&parts), after);
    EXPECT_EQ(line.handle, g_pstVemloLogHandle);
    EXPECT_EQ(line.stated, KPL_LOG_DEBUG);
}

TEST_F(LogTest, ALevelThatThereIsNotHasNoName) {
    Log().threshold = -1;
    KPL_VemloLogToFile("LOG_X", "f", 1, "F", 1, 1, -1, "%s", "a");
    ASSERT_EQ(Log().Raw().size(), 1u);
    EXPECT_THAT(Log().Raw()[0].raw, testing::HasSubstr(" ? LOG_X:1:F: a\r\n"));
}

TEST_F(LogTest, WritesFromTheThresholdOnAndFatalAlways) {
    for (int threshold = -1; threshold <= 8; ++threshold) {
        for (int level = KPL_LOG_TRACE; level <= KPL_LOG_FATAL; ++level) {
            Log().Forget();
            Log().threshold = threshold;
            Write(level, "m");
            bool written = threshold <= level || level == KPL_LOG_FATAL;
            EXPECT_EQ(Log().Raw().size(), written ? 1u : 0u) << "threshold " << threshold << ", level " << level;
        }
    }
}

TEST_F(LogTest, FormatsNothingBelowTheThreshold) {
    unit::Threshold errorsOnly(KPL_LOG_ERROR);
    const char *nowhere = reinterpret_cast<const char *>(1);
    KPL_VemloLogToFile("LOG_ORMEL", "f", 1, "F", 1, 1, KPL_LOG_DEBUG, "%s", nowhere);
    EXPECT_THAT(Log().Lines(KPL_LOG_TRACE), IsEmpty());
    EXPECT_EQ(Log().thresholdReads, 1);
}

TEST_F(LogTest, AnOverlongLineGoesToStandardError) {
    Write(KPL_LOG_INFO, "");
    size_t longest = 1022 - Log().Raw().at(0).raw.size();
    const std::string error = "KPL_VemloLogToFile snprintf_s fail.iLen=-1\n";
    struct {
        size_t message;
        bool written;
    } cases[] = {{longest, true}, {longest + 1, false}, {1022, false}, {1023, false}, {2000, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.message);
        Log().Forget();
        unit::Capture captured(stderr);
        Write(KPL_LOG_INFO, std::string(c.message, 'm'));
        EXPECT_EQ(Log().Raw().size(), c.written ? 1u : 0u);
        EXPECT_EQ(captured.Text(), c.written ? "" : error);
        if (c.written) {
            EXPECT_EQ(Log().Raw()[0].message, std::string(c.message, 'm'));
        }
    }
}

TEST_F(LogTest, WritesWholeLinesFromManyThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 100; ++i) {
                Write(KPL_LOG_INFO, std::to_string(t) + "/" + std::to_string(i));
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    std::set<std::string> messages;
    for (const unit::Line &line : Log().Raw()) {
        messages.insert(line.message);
    }
    EXPECT_EQ(Log().Raw().size(), 800u);
    EXPECT_EQ(messages.size(), 800u);
}

// --- How the library calls it ---

TEST_F(LogTest, TheLibraryLogsUnderItsEntryOfTheTable) {
    g_stLogCfgs[KPL_LOG_CFG_ORMEL].pcModule = "LOG_OTHER";
    dbSslModeType("nonsense");
    ASSERT_EQ(Log().Raw().size(), 1u);
    EXPECT_EQ(Log().Raw()[0].module, "LOG_OTHER");
    EXPECT_GT(Log().Raw()[0].source, 0);
}

TEST_F(LogTest, TheLibraryIsSilentWithoutACategory) {
    g_stLogCfgs[KPL_LOG_CFG_ORMEL].pcCategory = nullptr;
    dbSslModeType("nonsense");
    dbValueShow(QDC_TYPE_INT32, "1234", 4);
    EXPECT_THAT(Log().Raw(), IsEmpty());
}

} // namespace
