#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support.h"

namespace ormel::client::sqlite {

using testing::HasSubstr;

namespace {

class ConnectionTest : public DatabaseTest {
protected:
    Error connectError() {
        return errorOf([&] { connect(); });
    }

    // Does the work in a process of a user who can change nothing here, where there is such a user.
    template <class Work> void asStranger(Work work) {
        std::filesystem::permissions(path(""), std::filesystem::perms(0555));
        const pid_t child = fork();
        if (child == 0) {
            if (geteuid() == 0 && setuid(65534) != 0)
                _exit(2);
            try {
                work();
            } catch (const Error &error) {
                ADD_FAILURE() << error.message;
            }
            _exit(HasFailure() ? 1 : 0);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        std::filesystem::permissions(path(""), std::filesystem::perms(0755));
    }

    void writeFile(const std::string &name, const std::string &content) {
        std::ofstream(path(name), std::ios::binary) << content;
    }
};

// What the engine sets up can be read back through it.
std::string pragma(Connection &connection, const std::string &name) {
    return *query(connection, "PRAGMA " + name).at(0).at(0);
}

} // namespace

TEST_F(ConnectionTest, setsTheDatabaseUp) {
    const auto connection = connect();
    EXPECT_EQ(pragma(*connection, "journal_mode"), "wal");
    EXPECT_EQ(pragma(*connection, "synchronous"), "2");
    EXPECT_EQ(pragma(*connection, "foreign_keys"), "1");
    EXPECT_EQ(pragma(*connection, "busy_timeout"), "5000");
    EXPECT_TRUE(query(*connection, "SELECT * FROM main.sqlite_schema").empty());
}

TEST_F(ConnectionTest, takesTheBusyTimeout) {
    EXPECT_EQ(pragma(*connect("250"), "busy_timeout"), "250");
    EXPECT_EQ(pragma(*connect("0"), "busy_timeout"), "0");
}

TEST_F(ConnectionTest, refusesABusyTimeoutThatIsNoNumber) {
    for (const char *text : {"soon", "5s", "-1", "1.5", "99999999999"}) {
        const Error error = errorOf([&] { connect(text); });
        EXPECT_THAT(error.message, HasSubstr("client.busy_timeout_ms in ../conf/db.conf")) << text;
        EXPECT_THAT(error.message, HasSubstr(text));
    }
}

TEST_F(ConnectionTest, findsTheFileFromTheWorkingDirectory) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directories(path("home/bin"));
    std::filesystem::create_directories(path("home/data"));
    std::filesystem::current_path(path("home/bin"));
    settings_.config.clear();
    connect();
    settings_.config["db.dbname"] = "file:odd?mode=memory";
    connect();
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::exists(path("home/data/ormel.db")));
    EXPECT_TRUE(std::filesystem::exists(path("home/bin/file:odd?mode=memory")));
}

TEST_F(ConnectionTest, ignoresWhatOnlyServersNeed) {
    settings_.host = "nowhere.invalid";
    settings_.port = "1";
    settings_.user = "nobody";
    settings_.password = "secret";
    settings_.sslMode = 4;
    EXPECT_EQ(query(*connect(), "SELECT 1").size(), 1U);
}

TEST_F(ConnectionTest, aMissingFolderIsNamedAndNotMade) {
    settings_.config["db.dbname"] = path("gone/test.db");
    const Error error = connectError();
    EXPECT_EQ(error.code & 0xFF, static_cast<uint32_t>(SQLITE_CANTOPEN));
    EXPECT_THAT(error.message, HasSubstr(path("gone/test.db")));
    EXPECT_THAT(error.message, HasSubstr("unable to open database file"));
    EXPECT_THAT(error.message, HasSubstr("No such file or directory; its folder must exist"));
    EXPECT_FALSE(std::filesystem::exists(path("gone")));
}

TEST_F(ConnectionTest, aFolderIsNoDatabase) {
    std::filesystem::create_directory(path("test.db"));
    const Error error = connectError();
    EXPECT_EQ(error.code & 0xFF, static_cast<uint32_t>(SQLITE_CANTOPEN));
    EXPECT_THAT(error.message, HasSubstr(path("test.db")));
}

TEST_F(ConnectionTest, anotherFileIsNoDatabase) {
    writeFile("test.db", std::string(5000, 'x'));
    const Error error = connectError();
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_NOTADB));
    EXPECT_THAT(error.message, HasSubstr(path("test.db")));
    EXPECT_THAT(error.message, HasSubstr("file is not a database"));
    EXPECT_EQ(std::filesystem::file_size(path("test.db")), 5000U);
}

TEST_F(ConnectionTest, aDamagedDatabaseIsAnErrorWithItsFile) {
    create("CREATE TABLE t (a INTEGER)");
    std::fstream file(path("test.db"), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(100);
    file << std::string(900, '\x7F');
    file.close();
    const Error error = errorOf([&] { query(*connect(), "SELECT * FROM t"); });
    EXPECT_EQ(error.code & 0xFF, static_cast<uint32_t>(SQLITE_CORRUPT));
    EXPECT_THAT(error.message, HasSubstr(path("test.db")));
    EXPECT_THAT(error.message, HasSubstr("malformed"));
}

TEST_F(ConnectionTest, anEmptyFileIsANewDatabase) {
    writeFile("test.db", "");
    EXPECT_EQ(pragma(*connect(), "journal_mode"), "wal");
}

// Others who keep the file for themselves are waited for, and told of.
TEST_F(ConnectionTest, aLockedFileIsBusy) {
    create("CREATE TABLE t (a INTEGER)");
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path("test.db").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE", nullptr, nullptr, nullptr),
              SQLITE_OK);
    const Error error = errorOf([&] { query(*connect("20"), "SELECT * FROM t"); });
    sqlite3_close(other);
    EXPECT_EQ(error.code & 0xFF, static_cast<uint32_t>(SQLITE_BUSY));
    EXPECT_THAT(error.message, HasSubstr("database is locked"));
    EXPECT_THAT(error.message, HasSubstr("client.busy_timeout_ms"));
}

TEST_F(ConnectionTest, aFileThatCannotBeWrittenCanBeRead) {
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path("test.db").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (1)", nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(other);
    std::filesystem::permissions(path("test.db"), std::filesystem::perms(0444));
    asStranger([&] {
        const auto connection = connect();
        EXPECT_EQ(query(*connection, "SELECT * FROM t").size(), 1U);
        const Error error = errorOf([&] { run(*connection, "DELETE FROM t"); });
        EXPECT_EQ(error.code & 0xFF, static_cast<uint32_t>(SQLITE_READONLY));
        EXPECT_THAT(error.message, HasSubstr("attempt to write a readonly database: this process must be allowed"));
    });
}

TEST_F(ConnectionTest, aFileThatCannotBeReadIsNamedWithItsReason) {
    writeFile("test.db", "");
    std::filesystem::permissions(path("test.db"), std::filesystem::perms::none);
    asStranger([&] {
        const Error error = connectError();
        EXPECT_EQ(error.code & 0xFF, static_cast<uint32_t>(SQLITE_CANTOPEN));
        EXPECT_THAT(error.message, HasSubstr(path("test.db")));
        EXPECT_THAT(error.message, HasSubstr("Permission denied"));
    });
}

TEST_F(ConnectionTest, aFolderThatCannotBeWrittenIsNamedWithItsReason) {
    asStranger([&] {
        const Error error = connectError();
        EXPECT_THAT(error.message, HasSubstr(path("test.db")));
        EXPECT_THAT(error.message, HasSubstr("its folder cannot be written"));
    });
}

TEST_F(ConnectionTest, aTextHoldsOneStatement) {
    const auto connection = connect();
    const auto refused = [&](const std::string &sql) { return errorOf([&] { connection->prepare(sql); }).message; };
    EXPECT_THAT(refused("SELECT 1; DELETE FROM t"), HasSubstr("DELETE FROM t"));
    EXPECT_THAT(refused("SELECT 1; nonsense"), HasSubstr("nonsense"));
    for (const char *sql : {"", " ", ";", "-- nothing", "/* nothing"})
        EXPECT_THAT(refused(sql), HasSubstr("no statement")) << sql;
    for (const char *sql : {"SELECT 1;", "SELECT 1 ; ; ", "-- first\nSELECT 1; -- last", ";SELECT 1/* */"})
        EXPECT_EQ(query(*connection, sql).size(), 1U) << sql;
}

TEST_F(ConnectionTest, wrongTextsFailInTheDatabasesWords) {
    const auto connection = connect();
    const Error missing = errorOf([&] { connection->prepare("SELECT * FROM nowhere"); });
    EXPECT_EQ(missing.code, static_cast<uint32_t>(SQLITE_ERROR));
    EXPECT_EQ(missing.message, "no such table: nowhere");
    const Error wrong = errorOf([&] { connection->prepare("SELEKT 1"); });
    EXPECT_EQ(wrong.message, "near \"SELEKT\": syntax error");
}

TEST_F(ConnectionTest, transactionsAreNotEndedByStatements) {
    const auto connection = connect();
    for (const char *sql : {"BEGIN", "begin immediate", "COMMIT;", "/* */ END", "ROLLBACK", "SAVEPOINT a", "RELEASE a",
                            "\xEF\xBB\xBF"
                            "COMMIT",
                            "COMMIT; SELECT 1"}) {
        const Error error = errorOf([&] { connection->prepare(sql); });
        EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_MISUSE)) << sql;
        EXPECT_THAT(error.message, HasSubstr("commit and rollback")) << sql;
        EXPECT_THAT(error.message, testing::MatchesRegex("[A-Z]+ cannot be run .*")) << sql;
    }
    EXPECT_FALSE(query(*connection, "EXPLAIN COMMIT").empty());
}

TEST_F(ConnectionTest, describesItsDialect) {
    const Dialect dialect = ormel_engine()->dialect();
    EXPECT_EQ(dialect.placeholder, '?');
    EXPECT_TRUE(dialect.bracketIdentifiers);
    EXPECT_TRUE(dialect.backtickIdentifiers);
    EXPECT_FALSE(dialect.dollarQuotes || dialect.escapeStrings || dialect.nestedComments);
}

} // namespace ormel::client::sqlite
