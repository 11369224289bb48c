// When lines reach the kernel, and what becomes of them at the end of a process and at its forks.
#include "log/instance.h"
#include "support/child.h"
#include "support/files.h"
#include "support/sanitizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

namespace {

using namespace ormel::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class LogService : public testing::Test {
protected:
    Child start(const std::string &command) const { return {dir_.path(), {ORMEL_LOG_CHILD, command, file()}}; }
    Outcome runAs(const std::vector<std::string> &words) const {
        std::vector<std::string> argv = {ORMEL_LOG_CHILD};
        argv.insert(argv.end(), words.begin(), words.end());
        return run(dir_.path(), argv);
    }
    std::string file() const { return dir_ / "slot-3"; }
    std::string logged() const { return readFile(file()); }
    // The file that a process made beside the first one's, of which there must be one.
    std::string loggedBeside() const {
        std::vector<std::string> beside;
        for (const auto &name : namesIn(dir_.path()))
            if (name.starts_with("slot-3-") && !name.ends_with(".lock"))
                beside.push_back(name);
        EXPECT_EQ(beside.size(), 1u);
        return beside.empty() ? "" : readFile(dir_ / beside.front());
    }

    TempDir dir_;
};

constexpr char kNoThreadsAfterFork[] = "the thread sanitizer takes no new thread in a child of several threads";

// The number of write calls of this process; none where the kernel does not count them.
size_t writeCalls() {
    std::ifstream in("/proc/self/io");
    std::string word;
    size_t count = 0;
    while (in >> word)
        if (word == "syscw:")
            in >> count;
    return count;
}

// What the kernel tells of the thread that hands lines over; nothing where there is none.
std::string flusherStatus() {
    for (const auto &task : namesIn("/proc/self/task")) {
        std::string status = readFile("/proc/self/task/" + task + "/status");
        if (status.starts_with("Name:\tormel-log\n"))
            return status;
    }
    return {};
}

TEST_F(LogService, MakesNoWriteCallPerLine) {
    constexpr size_t kLines = 10000;
    const std::string line = "2024-03-05 14:07:09.000421 ERROR LOG_ORMEL:214:ORMEL_ResAttFree: a line\r\n";
    if (!std::filesystem::exists("/proc/self/io"))
        GTEST_SKIP() << "the kernel does not count calls: there is no /proc/self/io";
    void *log = createInstance(file());
    const size_t before = writeCalls();
    for (size_t i = 0; i < kLines; ++i)
        print(log, line);
    LIB_LOG_DeleteInstance(log);
    const size_t calls = writeCalls() - before;
    EXPECT_EQ(logged().size(), kLines * line.size());
    EXPECT_GT(calls, 0u);
    EXPECT_LT(calls, kLines / 10);
}

// The child waits for us, so that nothing but the passing of time can have brought the line.
TEST_F(LogService, WritesALineWhileTheProcessGoesOn) {
    Child child = start("hold");
    EXPECT_TRUE(eventually([&] { return logged() == "held\r\n"; }));
    EXPECT_EQ(child.finish().exitCode, 0);
}

TEST_F(LogService, WritesLinesAgainAfterAPause) {
    void *log = createInstance(file());
    std::string expected;
    for (int i = 0; i < 3; ++i) {
        const std::string line = "line " + std::to_string(i) + "\r\n";
        print(log, line);
        expected += line;
        EXPECT_TRUE(eventually([&] { return logged() == expected; }));
        EXPECT_TRUE(eventually([] { return flusherStatus().empty(); }));
    }
    LIB_LOG_DeleteInstance(log);
}

// The host's signals are for the host's threads.
TEST_F(LogService, TakesNoSignals) {
    void *log = createInstance(file());
    print(log, "line\r\n");
    const std::string status = flusherStatus();
    const size_t mask = status.find("SigBlk:\t");
    ASSERT_NE(mask, std::string::npos) << status;
    const uint64_t blocked = std::stoull(status.substr(mask + 8), nullptr, 16);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGALRM, SIGUSR1, SIGCHLD})
        EXPECT_NE(blocked & uint64_t{1} << (signal - 1), 0u) << signal;
    LIB_LOG_DeleteInstance(log);
}

TEST_F(LogService, WritesEverythingBeforeANormalEnd) {
    for (const std::string end : {"return", "exit", "quick_exit", "delete"}) {
        std::filesystem::remove(file());
        EXPECT_EQ(runAs({"lines", file(), "3", end}).exitCode, 0);
        EXPECT_EQ(logged(), "line 0\r\nline 1\r\nline 2\r\n") << end;
    }
}

TEST_F(LogService, WritesEverythingWhenTheLastThreadEnds) {
    if (kThreadSanitizer)
        GTEST_SKIP() << "the thread sanitizer has a thread of its own, which never ends";
    EXPECT_EQ(runAs({"leave", file()}).exitCode, 0);
    EXPECT_EQ(logged(), "main thread\r\n");
}

TEST_F(LogService, WritesLinesOfADeletedInstanceBeforeTheEnd) {
    EXPECT_EQ(runAs({"after-delete", file()}).exitCode, 0);
    EXPECT_EQ(logged(), "before\r\nafter\r\n");
}

TEST_F(LogService, WritesLinesThatComeWhileTheProcessEnds) {
    EXPECT_EQ(runAs({"late", file()}).exitCode, 0);
    EXPECT_EQ(logged(), "main\r\nexit handler\r\nstatic destructor\r\nlibrary destructor\r\n");
}

TEST_F(LogService, KeepsWrittenLinesThroughKill) {
    Child child = start("hold");
    ASSERT_TRUE(eventually([&] { return logged() == "held\r\n"; }));
    child.kill(SIGKILL);
    EXPECT_EQ(child.finish().signal, SIGKILL);
    EXPECT_EQ(logged(), "held\r\n");
}

TEST_F(LogService, KeepsWrittenLinesThroughAbort) {
    Child child = start("abort");
    ASSERT_TRUE(eventually([&] { return logged() == "first\r\n"; }));
    EXPECT_EQ(child.finish().signal, SIGABRT);
    EXPECT_THAT(logged(), testing::AnyOf("first\r\n", "first\r\nsecond\r\n"));
}

TEST_F(LogService, GivesAForkedChildAFileOfItsOwn) {
    if (kThreadSanitizer)
        GTEST_SKIP() << kNoThreadsAfterFork;
    const Outcome outcome = runAs({"fork", file()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(logged(), "parent before\r\nparent after\r\n");
    EXPECT_THAT(loggedBeside(), testing::MatchesRegex("child [0-9]+\r\n"));
    EXPECT_THAT(outcome.err, HasSubstr("belongs to another process"));
}

TEST_F(LogService, WritesPendingLinesOnceThoughAForkedChildEnds) {
    const Outcome outcome = runAs({"fork-silent", file()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.err, Not(HasSubstr("liblog:")));
    EXPECT_EQ(logged(), "parent\r\n");
    EXPECT_THAT(namesIn(dir_.path()), ElementsAre("slot-3", "slot-3.lock"));
}

TEST_F(LogService, LeavesTheFileToAChildWhoseParentHasEnded) {
    if (kThreadSanitizer)
        GTEST_SKIP() << kNoThreadsAfterFork;
    EXPECT_THAT(runAs({"daemon", file()}).err, Not(HasSubstr("liblog:")));
    EXPECT_EQ(logged(), "parent\r\ndaemon\r\n");
}

TEST_F(LogService, TakesForksWhileThreadsLog) {
    if (kThreadSanitizer)
        GTEST_SKIP() << kNoThreadsAfterFork;
    EXPECT_EQ(runAs({"fork-busy", file()}).exitCode, 0);
    size_t lines = 0;
    for (const auto &name : namesIn(dir_.path()))
        if (name.starts_with("slot-3-") && !name.ends_with(".lock")) {
            EXPECT_EQ(readFile(dir_ / name), "child\r\n");
            ++lines;
        }
    EXPECT_EQ(lines, 20u);
    EXPECT_EQ(logged().find("child"), std::string::npos);
}

} // namespace
