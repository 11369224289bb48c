#include "common/file.h"

#include "support/files.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace {

using ormel::platform::Descriptor;
using ormel::platform::openRegularFile;
using ormel::platform::readUpTo;
using ormel::test::TempDir;
using ormel::test::writeFile;

bool isOpen(int fd) {
    return fcntl(fd, F_GETFD) >= 0;
}

TEST(Descriptor, ClosesWhatItOwnsOnce) {
    const int fd = open("/dev/null", O_RDONLY);
    {
        Descriptor first(fd);
        Descriptor second(std::move(first));
        EXPECT_EQ(second.get(), fd);
        Descriptor third;
        third = std::move(second);
        EXPECT_TRUE(third);
        EXPECT_TRUE(isOpen(fd));
    }
    EXPECT_FALSE(isOpen(fd));
}

TEST(OpenRegularFile, TakesAFileAndTellsItsMode) {
    const TempDir dir;
    writeFile(dir / "f", "text");
    chmod((dir / "f").c_str(), 0640);
    const auto file = openRegularFile((dir / "f").c_str());
    EXPECT_TRUE(file.fd);
    EXPECT_EQ(file.problem, nullptr);
    EXPECT_EQ(file.mode & 07777, 0640u);
}

TEST(OpenRegularFile, TakesAMissingFileForNoProblem) {
    const TempDir dir;
    const auto file = openRegularFile((dir / "f").c_str());
    EXPECT_FALSE(file.fd);
    EXPECT_EQ(file.problem, nullptr);
}

TEST(OpenRegularFile, RefusesWhatIsNoFileWithoutWaiting) {
    const TempDir dir;
    ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
    for (const auto &path : {dir / "fifo", dir.path()}) {
        const auto file = openRegularFile(path.c_str());
        EXPECT_FALSE(file.fd);
        EXPECT_STREQ(file.problem, "it is not a regular file");
    }
}

TEST(OpenRegularFile, GivesTheSystemsReason) {
    const TempDir dir;
    writeFile(dir / "f", "");
    EXPECT_STREQ(openRegularFile((dir / "f" / "below").c_str()).problem, "Not a directory");
}

TEST(ReadUpTo, StopsAtTheSizeAndAtTheEnd) {
    const TempDir dir;
    writeFile(dir / "f", "abcdef");
    const auto file = openRegularFile((dir / "f").c_str());
    char buffer[8] = "";
    EXPECT_EQ(readUpTo(file.fd.get(), buffer, 4), 4);
    EXPECT_STREQ(buffer, "abcd");
    EXPECT_EQ(readUpTo(file.fd.get(), buffer, 4), 2);
    EXPECT_EQ(readUpTo(file.fd.get(), buffer, 4), 0);
}

TEST(ReadUpTo, ReportsAFailure) {
    const TempDir dir;
    const Descriptor directory(open(dir.path().c_str(), O_RDONLY));
    char buffer[8];
    EXPECT_EQ(readUpTo(directory.get(), buffer, sizeof buffer), -1);
    EXPECT_EQ(errno, EISDIR);
}

} // namespace
