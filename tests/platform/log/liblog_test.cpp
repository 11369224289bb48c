#include "log/instance.h"
#include "support/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <thread>
#include <vector>

namespace {

using namespace ormel::test;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(Liblog, AppendsLinesAsTheyStand) {
    const TempDir dir;
    writeFile(dir / "slot-0", "older\r\n");
    void *log = createInstance(dir / "slot-0");
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(print(log, "one {} %s\r\n"), 0);
    EXPECT_EQ(print(log, ""), 0);
    EXPECT_EQ(print(log, std::string("no end, a \0 byte", 16)), 0);
    EXPECT_EQ(LIB_LOG_DeleteInstance(log), 0);
    EXPECT_EQ(readFile(dir / "slot-0"), std::string("older\r\none {} %s\r\nno end, a \0 byte", 34));
}

TEST(Liblog, TakesLinesOfEveryLevelAndLength) {
    const TempDir dir;
    void *log = createInstance(dir / "slot-0");
    std::string expected;
    for (int32_t level = -1; level < 8; ++level) {
        const std::string line = std::string(static_cast<size_t>(level + 1) * 1000, 'x') + "\r\n";
        EXPECT_EQ(LIB_LOG_Print(log, line.data(), static_cast<uint32_t>(line.size()), level), 0);
        expected += line;
    }
    LIB_LOG_DeleteInstance(log);
    EXPECT_EQ(readFile(dir / "slot-0"), expected);
}

TEST(Liblog, TakesNoHandleAndNoLine) {
    const TempDir dir;
    EXPECT_NE(print(nullptr, "lost\r\n"), 0);
    EXPECT_NE(LIB_LOG_DeleteInstance(nullptr), 0);
    void *log = createInstance(dir / "slot-0");
    EXPECT_NE(LIB_LOG_Print(log, nullptr, 4, 5), 0);
    EXPECT_EQ(LIB_LOG_DeleteInstance(log), 0);
    EXPECT_EQ(readFile(dir / "slot-0"), "");
}

TEST(Liblog, RefusesARecordThatNamesNoFile) {
    const TempDir dir;
    testing::internal::CaptureStderr();
    EXPECT_EQ(LIB_LOG_CreateInstance(nullptr), nullptr);
    const LIB_LOG_INSTANCE_CFG noName{nullptr, "LOG_VEMLO", nullptr, 50, 20, 60, 0};
    EXPECT_EQ(LIB_LOG_CreateInstance(&noName), nullptr);
    EXPECT_EQ(createInstance(""), nullptr);
    EXPECT_EQ(createInstance(dir / "slot-0", 0, 20), nullptr);
    EXPECT_EQ(createInstance(dir / "slot-0", 50, 0), nullptr);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("liblog: a log instance needs a file name"));
    EXPECT_THAT(namesIn(dir.path()), ElementsAre());
}

TEST(Liblog, ReadsTheNameOnlyDuringTheCall) {
    const TempDir dir;
    std::string name = dir / "slot-0";
    void *log = createInstance(name);
    name.assign(name.size(), 'x');
    print(log, "a\r\n");
    LIB_LOG_DeleteInstance(log);
    print(log, "b\r\n");
    LIB_LOG_DeleteInstance(log);
    EXPECT_EQ(readFile(dir / "slot-0"), "a\r\nb\r\n");
}

TEST(Liblog, OpensTheFileOfADeletedInstanceAgain) {
    const TempDir dir;
    void *log = createInstance(dir / "slot-0");
    print(log, "before\r\n");
    EXPECT_EQ(LIB_LOG_DeleteInstance(log), 0);
    EXPECT_NE(LIB_LOG_DeleteInstance(log), 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(print(log, "after\r\n"), 0);
        EXPECT_EQ(LIB_LOG_DeleteInstance(log), 0);
        EXPECT_NE(LIB_LOG_DeleteInstance(log), 0);
    }
    EXPECT_EQ(readFile(dir / "slot-0"), "before\r\nafter\r\nafter\r\nafter\r\n");
}

TEST(Liblog, SharesAFileBetweenInstances) {
    const TempDir dir;
    std::filesystem::create_directory_symlink(dir.path(), dir / "link");
    void *first = createInstance(dir / "slot-0");
    void *second = createInstance(dir / "link" / ".." / dir.path().filename() / "slot-0");
    print(first, "first\r\n");
    print(second, "second\r\n");
    EXPECT_EQ(LIB_LOG_DeleteInstance(first), 0);
    print(second, "still second\r\n");
    EXPECT_EQ(LIB_LOG_DeleteInstance(second), 0);
    EXPECT_EQ(readFile(dir / "slot-0"), "first\r\nsecond\r\nstill second\r\n");
    EXPECT_THAT(namesIn(dir.path()), ElementsAre("link", "slot-0", "slot-0.lock"));
}

TEST(Liblog, KeepsItsFileWhenTheWorkingDirectoryChanges) {
    const TempDir dir;
    const auto before = std::filesystem::current_path();
    std::filesystem::create_directory(dir / "bin");
    std::filesystem::current_path(dir / "bin");
    void *logs[] = {createInstance("../var/log/slot-0"), createInstance("slot-0")};
    std::filesystem::current_path(before);
    for (void *log : logs) {
        print(log, "one\r\n");
        LIB_LOG_DeleteInstance(log);
        print(log, "two\r\n");
        LIB_LOG_DeleteInstance(log);
    }
    EXPECT_EQ(readFile(dir / "var" / "log" / "slot-0"), "one\r\ntwo\r\n");
    EXPECT_EQ(readFile(dir / "bin" / "slot-0"), "one\r\ntwo\r\n");
}

// Each thread's lines come whole, all of them and in their order, while another one closes the file again and again.
TEST(Liblog, TakesLinesOfManyThreads) {
    constexpr size_t kThreads = 8;
    constexpr int kLines = 2000;
    const TempDir dir;
    void *log = createInstance(dir / "slot-0");
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] {
            for (int n = 0; n < kLines; ++n)
                print(log, std::to_string(i) + ":" + std::to_string(n) + "\r\n");
        });
    for (int n = 0; n < 20; ++n)
        LIB_LOG_DeleteInstance(log);
    for (auto &thread : threads)
        thread.join();
    LIB_LOG_DeleteInstance(log);

    const std::string text = readFile(dir / "slot-0");
    std::vector<int> next(kThreads, 0);
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = text.find("\r\n", begin);
        ASSERT_NE(end, std::string::npos);
        const auto thread = static_cast<size_t>(text[begin] - '0');
        ASSERT_LT(thread, kThreads);
        ASSERT_EQ(text.substr(begin + 2, end - begin - 2), std::to_string(next[thread]++));
        begin = end + 2;
    }
    EXPECT_THAT(next, testing::Each(kLines));
}

} // namespace
