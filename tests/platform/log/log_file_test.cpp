#include "log/instance.h"
#include "support/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

namespace {

using namespace ormel::test;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr size_t kMiB = size_t{1024} * 1024;

// A line of one KiB that begins with its number.
std::string lineOfKiB(size_t number) {
    std::string line = std::to_string(number) + " ";
    line.resize(1022, '.');
    return line + "\r\n";
}

size_t firstNumberIn(const std::filesystem::path &file) {
    return std::stoul(readFile(file));
}

size_t linesIn(const std::string &text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(LogFile, MakesTheDirectoriesItLiesIn) {
    const TempDir dir;
    void *log = createInstance(dir / "var/log/deep/slot-0");
    ASSERT_NE(log, nullptr);
    print(log, "line\r\n");
    LIB_LOG_DeleteInstance(log);
    EXPECT_EQ(readFile(dir / "var/log/deep/slot-0"), "line\r\n");
}

TEST(LogFile, BeginsTheNextOneWhenItIsFull) {
    const TempDir dir;
    void *log = createInstance(dir / "slot-3", 1, 20);
    for (size_t i = 0; i < 2500; ++i)
        ASSERT_EQ(print(log, lineOfKiB(i)), 0);
    LIB_LOG_DeleteInstance(log);

    EXPECT_THAT(namesIn(dir.path()), ElementsAre("slot-3", "slot-3.1", "slot-3.2", "slot-3.lock"));
    EXPECT_EQ(std::filesystem::file_size(dir / "slot-3.2"), kMiB);
    EXPECT_EQ(std::filesystem::file_size(dir / "slot-3.1"), kMiB);
    EXPECT_EQ(firstNumberIn(dir / "slot-3.2"), 0u);
    EXPECT_EQ(firstNumberIn(dir / "slot-3.1"), 1024u);
    EXPECT_EQ(firstNumberIn(dir / "slot-3"), 2048u);
}

TEST(LogFile, GoesOnWithWhatItFinds) {
    const TempDir dir;
    writeFile(dir / "slot-3", std::string(kMiB - 1024, 'x'));
    void *log = createInstance(dir / "slot-3", 1, 20);
    print(log, lineOfKiB(0));
    print(log, lineOfKiB(1));
    LIB_LOG_DeleteInstance(log);
    EXPECT_EQ(std::filesystem::file_size(dir / "slot-3.1"), kMiB);
    EXPECT_EQ(firstNumberIn(dir / "slot-3"), 1u);
}

TEST(LogFile, KeepsAsManyAsTheRecordSays) {
    const TempDir dir;
    void *log = createInstance(dir / "slot-3", 1, 2);
    for (size_t i = 0; i < 4000; ++i)
        print(log, lineOfKiB(i));
    LIB_LOG_DeleteInstance(log);
    EXPECT_THAT(namesIn(dir.path()), ElementsAre("slot-3", "slot-3.1", "slot-3.lock"));
    EXPECT_EQ(firstNumberIn(dir / "slot-3.1"), 2048u);

    void *single = createInstance(dir / "slot-4", 1, 1);
    for (size_t i = 0; i < 1500; ++i)
        print(single, lineOfKiB(i));
    LIB_LOG_DeleteInstance(single);
    EXPECT_EQ(firstNumberIn(dir / "slot-4"), 1024u);
    EXPECT_FALSE(std::filesystem::exists(dir / "slot-4.1"));
}

// A dot in a directory's name is no file name extension.
TEST(LogFile, NumbersTheFileAndNotItsDirectory) {
    const TempDir dir;
    void *log = createInstance(dir / "server.d/slot-3", 1, 2);
    for (size_t i = 0; i < 1025; ++i)
        print(log, lineOfKiB(i));
    LIB_LOG_DeleteInstance(log);
    EXPECT_THAT(namesIn(dir / "server.d"), ElementsAre("slot-3", "slot-3.1", "slot-3.lock"));
}

TEST(LogFile, IsNotHandedToOtherPrograms) {
    const TempDir dir;
    void *log = createInstance(dir / "slot-0", 1, 2);
    for (size_t i = 0; i < 1025; ++i) // the second file, too
        print(log, lineOfKiB(i));
    size_t own = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry, gone).parent_path() != dir.path())
            continue;
        ++own;
        EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0) << entry.path();
    }
    EXPECT_EQ(own, 2u); // the file and its lock
    LIB_LOG_DeleteInstance(log);
}

// /dev/full lets itself be opened and refuses every byte.
class LogFileOnAFullDisk : public testing::Test {
protected:
    void SetUp() override {
        fill();
        testing::internal::CaptureStderr();
        log_ = createInstance(file_);
        ASSERT_NE(log_, nullptr);
    }
    void fill() { std::filesystem::create_symlink("/dev/full", file_); }
    void empty() { std::filesystem::remove(file_); }
    void printUntilRefused() {
        while (print(log_, lineOfKiB(0)) == 0) {
        }
    }
    // The pause after a trouble is over, and a line was taken again.
    bool takesALineAgain() {
        return eventually([&] { return print(log_, "again\r\n") == 0; });
    }
    // What was said until the log was closed.
    std::string errors() {
        LIB_LOG_DeleteInstance(log_);
        return testing::internal::GetCapturedStderr();
    }

    const TempDir dir_;
    const std::filesystem::path file_ = dir_ / "slot-0";
    void *log_ = nullptr;
};

TEST_F(LogFileOnAFullDisk, SaysSoOnceHoweverOftenItTries) {
    printUntilRefused();
    ASSERT_TRUE(takesALineAgain());
    printUntilRefused();
    const std::string said = errors();
    EXPECT_EQ(linesIn(said), 1u) << said;
    EXPECT_THAT(said, HasSubstr(file_.string() + ": No space left on device"));
    EXPECT_THAT(said, HasSubstr("log.path"));
}

TEST_F(LogFileOnAFullDisk, GoesOnWhenThereIsRoomAgain) {
    printUntilRefused();
    empty();
    ASSERT_TRUE(takesALineAgain());
    errors();
    EXPECT_EQ(readFile(file_), "again\r\n");
}

TEST_F(LogFileOnAFullDisk, SaysSoAgainWhenItIsFullAgain) {
    printUntilRefused();
    empty();
    ASSERT_TRUE(takesALineAgain());
    LIB_LOG_DeleteInstance(log_);
    empty();
    fill();
    printUntilRefused();
    EXPECT_EQ(linesIn(errors()), 2u);
}

struct BadPlace {
    const char *name;
    void (*make)(const std::filesystem::path &dir);
    const char *reason;
};

class LogFileIn : public testing::TestWithParam<BadPlace> {};

// Refused with its reason in one line, without waiting and without a trace.
TEST_P(LogFileIn, IsRefused) {
    const TempDir dir;
    GetParam().make(dir.path());
    testing::internal::CaptureStderr();
    EXPECT_EQ(createInstance(dir / "log/slot-0"), nullptr);
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(linesIn(errors), 1u) << errors;
    EXPECT_THAT(errors, HasSubstr(GetParam().reason));
    EXPECT_THAT(errors, HasSubstr(dir.path()));
}

INSTANTIATE_TEST_SUITE_P(
    BadPlaces, LogFileIn,
    testing::Values(
        BadPlace{"AFileForADirectory", [](const auto &dir) { writeFile(dir / "log", ""); }, "Not a directory"},
        BadPlace{"ADirectoryForTheFile",
                 [](const auto &dir) { std::filesystem::create_directories(dir / "log/slot-0"); }, "is not a file"},
        BadPlace{"APipe",
                 [](const auto &dir) {
                     std::filesystem::create_directory(dir / "log");
                     mkfifo((dir / "log/slot-0").c_str(), 0600);
                 },
                 "is not a file"},
        BadPlace{"ADirectoryForTheLock",
                 [](const auto &dir) { std::filesystem::create_directories(dir / "log/slot-0.lock"); }, "cannot lock"}),
    [](const auto &info) { return info.param.name; });

} // namespace
