// A file belongs to one process.
#include "support/child.h"
#include "support/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace {

using namespace ormel::test;
using testing::ElementsAre;
using testing::HasSubstr;

class Claim : public testing::Test {
protected:
    Child start(const std::string &command) const { return {dir_.path(), {ORMEL_LOG_CHILD, command, file()}}; }
    Outcome runAs(const std::vector<std::string> &words) const {
        std::vector<std::string> argv = {ORMEL_LOG_CHILD};
        argv.insert(argv.end(), words.begin(), words.end());
        return run(dir_.path(), argv);
    }
    std::string file() const { return dir_ / "slot-3"; }

    TempDir dir_;
};

TEST_F(Claim, SendsASecondProcessToAFileOfItsOwn) {
    Child first = start("hold");
    ASSERT_EQ(first.readLine(), "ready");
    Child second = start("hold");
    ASSERT_EQ(second.readLine(), "ready");
    const std::string own = file() + "-" + std::to_string(second.pid());
    const std::string pid = std::to_string(second.pid());

    const Outcome outcome = second.finish();
    EXPECT_EQ(outcome.err,
              "liblog: \"" + file() + "\" belongs to another process; process " + pid + " logs to \"" + own + "\"\n");
    EXPECT_EQ(readFile(own), "held\r\n");
    EXPECT_EQ(first.finish().err, "");
    EXPECT_EQ(readFile(file()), "held\r\n");
}

TEST_F(Claim, EndsWithTheProcess) {
    EXPECT_EQ(runAs({"lines", file(), "1", "return"}).err, "");
    EXPECT_EQ(runAs({"lines", file(), "1", "return"}).err, "");
    EXPECT_EQ(readFile(file()), "line 0\r\nline 0\r\n");
}

TEST_F(Claim, EndsWithAProcessThatIsKilled) {
    Child first = start("hold");
    ASSERT_EQ(first.readLine(), "ready");
    first.kill(SIGKILL);
    EXPECT_EQ(first.finish().signal, SIGKILL);
    EXPECT_EQ(runAs({"lines", file(), "1", "return"}).err, "");
}

TEST_F(Claim, OutlivesTheFileThatIsFull) {
    Child first = start("hold");
    ASSERT_EQ(first.readLine(), "ready");
    std::filesystem::rename(file(), file() + ".1");
    EXPECT_THAT(runAs({"lines", file(), "1", "return"}).err, HasSubstr("belongs to another process"));
}

TEST_F(Claim, TakesAnotherUsersFileForTaken) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can start a process as another user";
    ASSERT_EQ(chmod(dir_.path().c_str(), 0777), 0);
    EXPECT_EQ(runAs({"lines", file(), "1", "return"}).err, "");
    const Outcome outcome = runAs({"user", "65534", file()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.err, HasSubstr("belongs to another process"));
    EXPECT_EQ(readFile(file()), "line 0\r\n");
}

TEST_F(Claim, SaysWhenAnotherUserMayNotWriteAtAll) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can start a process as another user";
    ASSERT_EQ(chmod(dir_.path().c_str(), 0755), 0);
    const Outcome outcome = runAs({"user", "65534", file()});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("cannot lock \"" + file() + ".lock\": Permission denied"));
    EXPECT_THAT(namesIn(dir_.path()), ElementsAre());
}

} // namespace
