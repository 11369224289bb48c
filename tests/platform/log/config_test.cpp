#include "support/child.h"
#include "support/files.h"

#include "ormeldb/platform/liblog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ormel::test::Outcome;
using ormel::test::run;
using ormel::test::ServerDir;
using ormel::test::writeFile;
using testing::HasSubstr;

class Config : public testing::Test {
protected:
    Outcome load(std::vector<std::string> keys = {}) const {
        keys.insert(keys.begin(), {ORMEL_LOG_CHILD, "config"});
        return run(server_.bin(), keys);
    }
    // The configuration has no faults, and gives this path and this slot.
    void expectUsed(const std::string &text, const std::string &path, const std::string &slot) const {
        writeFile(file(), text);
        const Outcome outcome = load();
        EXPECT_EQ(outcome.out, "path=" + path + "\nslot=" + slot + "\n");
        EXPECT_EQ(outcome.err, "");
    }
    // One line says what is wrong, and the path and the slot stay as they were.
    void expectRefused(const std::string &reason) const {
        const Outcome outcome = load();
        EXPECT_EQ(outcome.out, "path=\nslot=0\n");
        EXPECT_THAT(outcome.err, HasSubstr("liblog: \"../conf/log.conf\": " + reason));
        EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    }
    std::filesystem::path file() const { return server_.conf("log.conf"); }

    ServerDir server_;
};

TEST_F(Config, SaysNothingWhereThereIsNoFile) {
    const Outcome outcome = load({"log.path"});
    EXPECT_EQ(outcome.out, "path=\nslot=0\nlog.path is not set\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Config, GivesTheValueOfAKey) {
    writeFile(
        file(),
        "OPB_VEMLO_DEBUG=5\nother = a value = with blanks \r\n\tempty\t=\n#off=1\n # off=1\nno value\n\nx=1\nx=2");
    const Outcome outcome = load(
        {"OPB_VEMLO_DEBUG", "other", "empty", "off", "#off", "no value", "x", "OPB_VEMLO_DEBU", "opb_vemlo_debug"});
    EXPECT_EQ(outcome.out, "path=\nslot=0\n"
                           "OPB_VEMLO_DEBUG is <5>\n"
                           "other is <a value = with blanks>\n"
                           "empty is <>\n"
                           "off is not set\n"
                           "#off is not set\n"
                           "no value is not set\n"
                           "x is <2>\n"
                           "OPB_VEMLO_DEBU is not set\n"
                           "opb_vemlo_debug is not set\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Config, HasNoValueOfNoKey) {
    EXPECT_EQ(OPB_GetLogConfig(nullptr), nullptr);
}

TEST_F(Config, SetsDirectoryAndSlot) {
    expectUsed("log.path=/var/log/server\nlog.slot=3\n", "/var/log/server", "3");
    expectUsed("log.slot = 2147483647\n", "", "2147483647");
    expectUsed("log.path=" + std::string(255, 'p'), std::string(255, 'p'), "0");
    expectUsed("", "", "0");
}

TEST_F(Config, RefusesAPathThatDoesNotFit) {
    writeFile(file(), "log.path=" + std::string(256, 'p'));
    expectRefused("log.path has more than 255 bytes");
}

TEST_F(Config, RefusesASlotThatIsNoNumber) {
    for (const std::string slot : {"three", "3x", "-1", "2147483648", ""}) {
        writeFile(file(), "log.slot=" + slot);
        expectRefused("log.slot=" + slot + " is not a number from 0 to 2147483647");
    }
}

TEST_F(Config, RefusesWhatIsNoFile) {
    std::filesystem::create_directory(file());
    expectRefused("it is not a regular file");
}

TEST_F(Config, ReadsALargeFileWhole) {
    std::string text;
    for (int i = 0; i < 20000; ++i)
        text += "key" + std::to_string(i) + "=value\n";
    expectUsed(text + "log.slot=9", "", "9");
}

} // namespace
