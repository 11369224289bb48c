// Which engine a configuration leads to, and what is said where it leads nowhere.
#include <filesystem>

#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::AllOf;
using testing::HasSubstr;
namespace fs = std::filesystem;

class ConfigTest : public ContractTest {
protected:
    // What is said about a connection that cannot be made.
    std::string refusal(const Target &where) const {
        Connection db;
        EXPECT_NE(db.connect(where), 0U);
        EXPECT_NE(db.errorCode(), 0U);
        std::string said = db.error();
        void *statement = nullptr;
        EXPECT_NE(qdc_alloc_stmt(db, &statement), 0U) << "a connection that failed is not open";
        return said;
    }
    std::string refusalWith(const std::string &lines) const {
        configure(lines);
        Connection db;
        EXPECT_NE(db.connect(target()), 0U);
        return db.error();
    }
};
CONTRACT_SUITE(ConfigTest);

TEST_P(ConfigTest, TheFileIsReadAtEveryConnection) {
    Connection db = connect();
    EXPECT_THAT(refusalWith("db.driver=nosuchengine\n"), HasSubstr("nosuchengine"));
    configure("");
    Connection again = connect();
}

TEST_P(ConfigTest, AnUnknownEngineIsNamedWithTheRemedy) {
    EXPECT_THAT(refusalWith("db.driver=nosuchengine\n"),
                AllOf(HasSubstr("nosuchengine"), HasSubstr("db.driver"), HasSubstr("../conf/db.conf")));
}

// The name becomes part of a path and must not lead out of the engines' folder.
TEST_P(ConfigTest, OnlyAPlainWordNamesAnEngine) {
    for (const char *name : {"../../libqdclient", "/etc/passwd", "./sqlite", "sqlite.so", "sub/sqlite", "..", "SQLite",
                             "sql ite", "sqlite;", "%s%n"}) {
        SCOPED_TRACE(name);
        EXPECT_THAT(refusalWith(std::string("db.driver=") + name + "\n"),
                    AllOf(HasSubstr("db.driver"), HasSubstr(name), HasSubstr("../conf/db.conf")));
    }
}

TEST_P(ConfigTest, AMissingFileIsNamed) {
    fs::remove(home().config());
    EXPECT_THAT(refusal(target()), HasSubstr("../conf/db.conf"));
}

TEST_P(ConfigTest, AFileThatCannotBeReadIsNamed) {
    fs::remove(home().config());
    fs::create_directory(home().config());
    EXPECT_THAT(refusal(target()), HasSubstr("../conf/db.conf"));
}

TEST_P(ConfigTest, AFailedConnectionCanBeTriedAgain) {
    configure("db.driver=nosuchengine\n");
    Connection db;
    EXPECT_FAILS(db.connect(target()));
    configure("");
    EXPECT_OK(db, db.connect(target()));
    makeTable(db, 1);
    EXPECT_EQ(count(db), 1);
}

TEST_P(ConfigTest, LinesThatMeanNothingAreIgnored) {
    configure("# a comment\n\nno equals sign\n=\n=value\nunknown.key=value\n db.driver=nosuchengine\n"
              "db.driver =nosuchengine\nDB.DRIVER=nosuchengine\n#db.driver=nosuchengine\ndb.driver=\ndb.driver=  \n");
    Connection db = connect();
    makeTable(db, 1);
    EXPECT_EQ(count(db), 1);
}

TEST_P(ConfigTest, ValuesAreTrimmedAndEndAtTheNextEqualsSign) {
    const std::string name = engine().name();
    for (const std::string &line :
         {"db.driver=  " + name + " \t\r\n", "db.driver=" + name + "=nosuchengine\n",
          "db.driver=nosuchengine\ndb.driver=" + name, "db.driver=" + name + "\ndb.driver=\n"}) {
        SCOPED_TRACE(line);
        configure(line);
        Connection db = connect();
        makeTable(db, 0);
        db.run("drop table t");
        db.commit();
    }
}

// Two connections with different settings live side by side.
TEST_P(ConfigTest, AFailureOfOneConnectionLeavesTheOthers) {
    Connection db = connect();
    makeTable(db, 1);
    refusalWith("db.driver=nosuchengine\n");
    EXPECT_EQ(count(db), 1);
}

} // namespace
