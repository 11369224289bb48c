// The database as a file: where it is, what is in the way of it.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include "sqlite/sqlite_engine.h"

namespace {

using namespace contract;
using testing::AllOf;
using testing::HasSubstr;
namespace fs = std::filesystem;

class FileTest : public ContractTest {
protected:
    fs::path file() const { return home().data("contract.db"); }

    // What is said about the file, at the connection or at the first statement.
    std::string refusal(const std::string &sql = "create table t (id integer)") const {
        Connection db;
        if (db.connect(target()) == 0)
            return db.refusal(sql);
        EXPECT_NE(db.errorCode(), 0U);
        return db.error();
    }
    std::string refusalOf(const std::string &name) const {
        home().writeConfig("db.dbname=" + name + "\n");
        return refusal();
    }
};
ENGINE_SUITE(FileTest);

TEST_P(FileTest, TheConfigurationNamesTheFile) {
    struct Case {
        std::string config;
        fs::path file;
    };
    const fs::path absolute = home().data("absolute.db");
    for (const Case &c : {Case{"", "../data/ormel.db"}, Case{"db.dbname=\n", "../data/ormel.db"},
                          Case{"db.dbname=../data/a.db\n", "../data/a.db"}, Case{"db.dbname=here.db\n", "here.db"},
                          Case{"db.dbname=../data/b.db=c.db\n", "../data/b.db"},
                          Case{"db.dbname= \t../data/d.db  \r\n", "../data/d.db"},
                          Case{"db.dbname =../data/x.db\n", "../data/ormel.db"},
                          Case{"db.driver=sqlite\ndb.dbname=../data/e.db\n", "../data/e.db"},
                          Case{"db.dbname=../data/with blank.db\n", "../data/with blank.db"},
                          Case{"db.dbname=../data/f.db\ndb.dbname=\n", "../data/f.db"},
                          Case{"db.dbname=../data/x.db\ndb.dbname=../data/g.db\n", "../data/g.db"},
                          Case{"db.dbname=file:x?mode\n", "file:x?mode"}, Case{"db.dbname=:memory:\n", ":memory:"},
                          Case{"db.dbname=" + absolute.string() + "\n", absolute}}) {
        SCOPED_TRACE(c.config);
        fs::remove(c.file);
        home().writeConfig(c.config);
        {
            Connection db = connect();
            makeTable(db, 1);
        }
        EXPECT_TRUE(fs::is_regular_file(c.file));
        EXPECT_EQ(RawDatabase(c.file).value("select count(*) from t"), "1");
        fs::remove(c.file);
    }
    EXPECT_FALSE(fs::exists("../data/x.db"));
}

TEST_P(FileTest, AHostIsNotSilentlyIgnored) {
    for (const char *config : {"db.host=127.0.0.1\ndb.port=1\n", "db.host=nosuchhost.invalid\n"}) {
        home().writeConfig(config);
        Connection db;
        EXPECT_NE(db.connect({"127.0.0.1:1", "u", "p"}), 0U) << config;
        EXPECT_FALSE(fs::exists("../data/ormel.db"));
    }
    home().writeConfig("db.driver=sqlite\ndb.host=127.0.0.1\n");
    Connection db;
    EXPECT_OK(db, db.connect({"127.0.0.1:1", "u", "p"}));
}

TEST_P(FileTest, TheModesOfAConnection) {
    Connection db = connect();
    makeTable(db);
    EXPECT_EQ(RawDatabase(file()).value("pragma journal_mode"), "wal");
    EXPECT_EQ(db.rows("pragma synchronous"), Rows{rowOf("2")});
    EXPECT_EQ(db.rows("pragma foreign_keys"), Rows{rowOf("1")});
}

TEST_P(FileTest, ForeignKeysAreKept) {
    Connection db = connect();
    makeTable(db, 1);
    db.run("create table child (parent integer references t (id))");
    EXPECT_EQ(db.run("insert into child values (1)"), 1U);
    EXPECT_THAT(db.refusal("insert into child values (2)"), HasSubstr("FOREIGN KEY"));
}

TEST_P(FileTest, CodesAreTheExtendedOnes) {
    Connection db = connect();
    makeTable(db, 1);
    db.run("create table u (x integer unique, y integer not null)");
    db.run("insert into u values (1, 1)");
    db.refusal("insert into t (id) values (1)");
    EXPECT_EQ(db.errorCode(), static_cast<uint32_t>(SQLITE_CONSTRAINT_PRIMARYKEY));
    db.refusal("insert into u values (1, 1)");
    EXPECT_EQ(db.errorCode(), static_cast<uint32_t>(SQLITE_CONSTRAINT_UNIQUE));
    db.refusal("insert into u values (2, null)");
    EXPECT_EQ(db.errorCode(), static_cast<uint32_t>(SQLITE_CONSTRAINT_NOTNULL));
    db.refusal("select * from nosuch");
    EXPECT_EQ(db.errorCode(), static_cast<uint32_t>(SQLITE_ERROR));
}

TEST_P(FileTest, ANameFromTheUserIsNoFormat) {
    EXPECT_THAT(refusalOf("../no%s%n/x.db"), HasSubstr("no%s%n/x.db"));
}

TEST_P(FileTest, AFileInAMissingFolderIsNamed) {
    EXPECT_THAT(refusalOf("../nosuchfolder/x.db"), AllOf(HasSubstr("nosuchfolder/x.db"), HasSubstr("No such file")));
    EXPECT_FALSE(fs::exists("../nosuchfolder"));
}

TEST_P(FileTest, AFolderIsNoDatabase) {
    EXPECT_THAT(refusalOf("../data"), HasSubstr("data"));
}

TEST_P(FileTest, AFileOfSomethingElseIsNamedAndLeftAlone) {
    const std::string text(5000, 'x');
    Home::write(file(), text);
    EXPECT_THAT(refusal(), AllOf(HasSubstr("contract.db"), HasSubstr("db.dbname")));
    EXPECT_EQ(Home::read(file()), text);
}

TEST_P(FileTest, ACorruptFileIsReported) {
    configure("client.pool=0\n"); // a connection that is kept has its own copy of the pages
    {
        Connection db = connect();
        makeTable(db, 2000);
    }
    std::string bytes = Home::read(file());
    ASSERT_GT(bytes.size(), 8192U);
    std::fill(bytes.begin() + 4096, bytes.end(), '\x55');
    Home::write(file(), bytes);
    EXPECT_THAT(refusal("select count(*) from t"), HasSubstr("malformed"));
    EXPECT_EQ(Home::read(file()), bytes);
}

TEST_P(FileTest, AnEmptyFileIsAnEmptyDatabase) {
    Home::write(file(), "");
    Connection db = connect();
    makeTable(db, 1);
    EXPECT_EQ(count(db), 1);
}

// The first of them sets the file's mode, for which the others have to wait.
TEST_P(FileTest, ManyConnectionsMakeTheFileAtOnce) {
    constexpr int kThreads = 4;
    for (int round = 0; round < 50; ++round) {
        home().writeConfig("db.dbname=../data/new" + std::to_string(round) + ".db\nclient.busy_timeout_ms=600000\n");
        std::atomic<int> ready = 0;
        std::array<std::string, kThreads> failures;
        std::vector<std::thread> threads;
        for (std::string &failure : failures)
            threads.emplace_back([&] {
                Connection db;
                ++ready;
                while (ready < kThreads)
                    std::this_thread::yield();
                if (db.connect(target()) != 0)
                    failure = db.error();
            });
        for (std::thread &thread : threads)
            thread.join();
        for (const std::string &failure : failures)
            ASSERT_EQ(failure, "") << "round " << round;
    }
}

// Root may write anything, so that the work is done by a child that is somebody else. It has five answers: 0 as it
// should be, and what went wrong.
int asSomebodyElse(const std::function<int()> &work) {
    const pid_t child = fork();
    if (child == 0)
        _exit(geteuid() != 0 || setuid(65534) == 0 ? work() : 99);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_P(FileTest, AFileThatCannotBeWrittenIsReadOrRefusedButNotHungUpon) {
    {
        Connection db = connect();
        makeTable(db, 1);
    }
    chmod(home().root().c_str(), 0755);
    chmod(file().c_str(), 0444);
    chmod(file().parent_path().c_str(), 0555);
    const int answer = asSomebodyElse([&] {
        Connection db;
        if (db.connect(target()) != 0)
            return db.error().find("contract.db") != std::string::npos ? 0 : 2;
        Statement write(db);
        if (qdc_prepare(write, "insert into t (id) values (2)") == 0 && qdc_execute(write) == 0)
            return 3;
        return db.errorCode() != 0 ? 0 : 4;
    });
    chmod(file().parent_path().c_str(), 0755);
    if (answer == 99)
        GTEST_SKIP() << "this process may not become somebody else";
    EXPECT_EQ(answer, 0);
    EXPECT_EQ(RawDatabase(file()).value("select count(*) from t"), "1");
}

TEST_P(FileTest, AFileThatCannotBeReadIsNamed) {
    {
        Connection db = connect();
        makeTable(db, 1);
    }
    chmod(home().root().c_str(), 0755);
    chmod(file().c_str(), 0);
    const int answer = asSomebodyElse([&] {
        Connection db;
        if (db.connect(target()) == 0)
            return 2;
        return db.error().find("contract.db") != std::string::npos ? 0 : 3;
    });
    if (answer == 99)
        GTEST_SKIP() << "this process may not become somebody else";
    EXPECT_EQ(answer, 0);
}

// The 16-bit encodings of a database are its own affair.
TEST_P(FileTest, ADatabaseInUtf16SpeaksUtf8) {
    const std::string text = "Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x98\x80";
    {
        const RawDatabase raw(file());
        raw.run("pragma encoding = 'UTF-16'");
        raw.run("create table u (c char(20), v varchar(20), t text)");
        raw.run("insert into u values ('" + text + "', '" + text + "', '" + text + "')");
    }
    Connection db = connect();
    EXPECT_EQ(db.rows("select * from u"), Rows{rowOf(text, text, text)});
    EXPECT_EQ(db.run("insert into u values (:1, :1, :1)", text + "2"), 1U);
    EXPECT_EQ(db.rows("select v from u where v = :1", text + "2"), Rows{rowOf(text + "2")});
    Statement query(db, "select v, t from u");
    query.execute();
    EXPECT_EQ(query.describe(0).usSize, 81);
    EXPECT_TRUE(query.fetch());
    void *data = nullptr;
    uint32_t size = 0;
    uint32_t isNull = 0;
    EXPECT_OK(db, qdc_get_column_by_id(query, 1, &data, &size, &isNull));
    EXPECT_EQ(size, text.size());
}

TEST_P(FileTest, AnInvalidPatienceIsNamed) {
    for (const char *value : {"soon", "-1", "5s"}) {
        configure(std::string("client.busy_timeout_ms=") + value + "\n");
        EXPECT_THAT(refusal(), AllOf(HasSubstr("client.busy_timeout_ms"), HasSubstr(value)));
    }
}

} // namespace
