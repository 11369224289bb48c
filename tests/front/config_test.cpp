#include "front/config.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "front/errors.h"

namespace {

using namespace ormel::client;
using testing::AllOf;
using testing::HasSubstr;
using Config = std::map<std::string, std::string, std::less<>>;
namespace fs = std::filesystem;

class ConfigTest : public testing::Test {
protected:
    ConfigTest() {
        std::string name = fs::temp_directory_path() / "ormel_config_XXXXXX";
        if (mkdtemp(name.data()) != nullptr)
            folder_ = name;
    }
    ~ConfigTest() override { fs::remove_all(folder_); }

    std::string file() const { return folder_ / "db.conf"; }
    Config read(const std::string &text) const {
        std::ofstream(file(), std::ios::binary) << text;
        return readConfig(file().c_str());
    }
    // What is said about the file as it is.
    std::string refusal() const {
        try {
            readConfig(file().c_str());
        } catch (const Error &error) {
            EXPECT_EQ(error.code, kConfiguration);
            return error.message;
        }
        ADD_FAILURE() << "was read";
        return "";
    }

private:
    fs::path folder_;
};

TEST_F(ConfigTest, Lines) {
    struct Case {
        const char *text;
        Config config;
    };
    const Case cases[] = {
        {"", {}},
        {"\n\n", {}},
        {"db.host=h", {{"db.host", "h"}}},
        {"db.host=h\ndb.port=1\n", {{"db.host", "h"}, {"db.port", "1"}}},
        {"db.host=  h \t\r\n", {{"db.host", "h"}}},
        {"db.host=a b\n", {{"db.host", "a b"}}},
        {"db.user=a=b\n", {{"db.user", "a"}}},
        {"db.user= a =b\n", {{"db.user", "a"}}},
        {"db.user==b\n", {}},
        {"db.host =h\n", {{"db.host ", "h"}}},
        {" db.host=h\n", {{" db.host", "h"}}},
        {"DB.HOST=h\n", {{"DB.HOST", "h"}}},
        {"no equals sign\n", {}},
        {"=value\n", {{"", "value"}}},
        {"# db.host=h\n", {{"# db.host", "h"}}},
        {"db.host=\n", {}},
        {"db.host=  \n", {}},
        {"db.host=a\ndb.host=b\n", {{"db.host", "b"}}},
        {"db.host=a\ndb.host=\n", {{"db.host", "a"}}},
    };
    for (const Case &c : cases)
        EXPECT_EQ(read(c.text), c.config) << c.text;
}

TEST_F(ConfigTest, LongValuesComeWhole) {
    const std::string value(1500, 'x');
    EXPECT_EQ(read("auth.sslrootcert=" + value + "\n"), (Config{{"auth.sslrootcert", value}}));
}

// What the library has of a file, the client has too.
TEST_F(ConfigTest, AnOverlongLineIsReadInPieces) {
    const Config second = {{"db.host", "second piece"}};
    EXPECT_EQ(read("#" + std::string(2012, 'x') + "db.host=second piece\n"), second);
    EXPECT_EQ(read("#" + std::string(2011, 'x') + "db.host=cut within the key\n"),
              (Config{{"b.host", "cut within the key"}}));
    EXPECT_EQ(read(std::string(100000, 'x') + "\ndb.host=after it\n"), (Config{{"db.host", "after it"}}));
}

TEST_F(ConfigTest, ALineEndsAtItsFirstNul) {
    EXPECT_EQ(read(std::string("db.host=a\0b\ndb.us\0er=c\ndb.port=1\n", 32)),
              (Config{{"db.host", "a"}, {"db.port", "1"}}));
}

TEST_F(ConfigTest, AMissingFileIsNamedWithTheReason) {
    EXPECT_THAT(refusal(), AllOf(HasSubstr(file()), HasSubstr("No such file")));
}

TEST_F(ConfigTest, AFolderInItsPlaceIsNamedWithTheReason) {
    fs::create_directory(file());
    EXPECT_THAT(refusal(), AllOf(HasSubstr(file()), HasSubstr("Is a directory")));
}

TEST_F(ConfigTest, SettingsFallBackWhereNothingIsGiven) {
    Settings settings;
    settings.config = {{"given", "value"}, {"empty", ""}};
    EXPECT_EQ(settings.get("given", "other"), "value");
    EXPECT_EQ(settings.get("empty", "other"), "other");
    EXPECT_EQ(settings.get("absent", "other"), "other");
}

} // namespace
