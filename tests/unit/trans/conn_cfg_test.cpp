#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "ormeldb/config.h"
#include "ormeldb/platform/opbbase.h"
#include "ormeldb/trans.h"
#include "support/home.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Log;

namespace {

std::string Times(size_t count, char c) {
    return std::string(count, c);
}

bool ParsingIsLocked() {
    int status = pthread_mutex_trylock(&g_cfgParseMutex);
    if (status == 0) {
        pthread_mutex_unlock(&g_cfgParseMutex);
    }
    return status == EBUSY;
}

class ConnCfgTest : public unit::UnitTest {
protected:
    ConnCfgTest() { std::memset(&cfg_, 'x', sizeof(cfg_)); }

    void TearDown() override { EXPECT_FALSE(ParsingIsLocked()); }

    uint32_t Read(const std::string &text) {
        home_.Write(text);
        return ORMEL_ConnCfgRead(&cfg_);
    }

    std::string HostOf(const std::string &text) {
        EXPECT_EQ(Read(text), 0u);
        return cfg_.acHost;
    }

    unit::Home home_;
    ORMEL_CONN_CFG cfg_;
};

// --- The file ---

TEST_F(ConnCfgTest, ReadsEveryKey) {
    EXPECT_EQ(Read("db.host=h\ndb.port=5432\ndb.dbname=d\ndb.user=u\nauth.sslcert=c\nauth.sslkey=k\n"
                   "auth.sslrootcert=r\nauth.sslmode=VERIFY_CA\n"),
              0u);
    EXPECT_STREQ(cfg_.acHost, "h");
    EXPECT_STREQ(cfg_.acPort, "5432");
    EXPECT_STREQ(cfg_.acDbName, "d");
    EXPECT_STREQ(cfg_.acUser, "u");
    EXPECT_STREQ(cfg_.acPassword, "secret");
    EXPECT_STREQ(cfg_.acSslCert, "c");
    EXPECT_STREQ(cfg_.acSslKey, "k");
    EXPECT_STREQ(cfg_.acSslRootCert, "r");
    EXPECT_STREQ(cfg_.acSslMode, "VERIFY_CA");
    EXPECT_THAT(Log().Lines(), ElementsAre("INFO ORMEL_ConnCfgRead: db.conf host:h port:5432 dbname:d db.user:u",
                                           "DEBUG ORMEL_ConnCfgRead: get db decrypt password ok."));
    EXPECT_FALSE(Log().Says("secret"));
}

TEST_F(ConnCfgTest, CutsValuesTwoBeforeTheirFieldsEnd) {
    struct {
        const char *key;
        const char *field;
        size_t width;
    } cases[] = {{"db.host", cfg_.acHost, sizeof(cfg_.acHost)},
                 {"db.port", cfg_.acPort, sizeof(cfg_.acPort)},
                 {"db.dbname", cfg_.acDbName, sizeof(cfg_.acDbName)},
                 {"db.user", cfg_.acUser, sizeof(cfg_.acUser)},
                 {"auth.sslcert", cfg_.acSslCert, sizeof(cfg_.acSslCert)},
                 {"auth.sslkey", cfg_.acSslKey, sizeof(cfg_.acSslKey)},
                 {"auth.sslrootcert", cfg_.acSslRootCert, sizeof(cfg_.acSslRootCert)},
                 {"auth.sslmode", cfg_.acSslMode, sizeof(cfg_.acSslMode)}};
    for (const auto &c : cases) {
        for (size_t length : {c.width - 2, c.width - 1, c.width, c.width + 100}) {
            SCOPED_TRACE(std::string(c.key) + " of " + std::to_string(length));
            EXPECT_EQ(Read(std::string(c.key) + "=" + Times(length, 'v') + "\n"), 0u);
            EXPECT_EQ(c.field, Times(c.width - 2, 'v'));
        }
    }
}

TEST_F(ConnCfgTest, TrimsValuesAndTakesKeysAsTheyStand) {
    EXPECT_EQ(HostOf("db.host=dbserver\n"), "dbserver");
    EXPECT_EQ(HostOf("db.host=  dbserver  \n"), "dbserver");
    EXPECT_EQ(HostOf("db.host=\t db server\t\r\n"), "db server");
    EXPECT_EQ(HostOf("db.host=dbserver"), "dbserver") << "no newline at the end";
    EXPECT_EQ(HostOf("db.host =dbserver\n"), "");
    EXPECT_EQ(HostOf(" db.host=dbserver\n"), "");
    EXPECT_EQ(HostOf("DB.HOST=dbserver\n"), "");
}

TEST_F(ConnCfgTest, AValueEndsAtTheNextEqualsSign) {
    EXPECT_EQ(HostOf("db.host=a=b\n"), "a");
    EXPECT_EQ(HostOf("db.host= a =b\n"), "a");
    EXPECT_EQ(HostOf("db.host==b\n"), "");
}

TEST_F(ConnCfgTest, TheLastValueCountsUnlessItIsEmpty) {
    EXPECT_EQ(HostOf("db.host=a\ndb.host=b\n"), "b");
    EXPECT_EQ(HostOf("db.host=a\ndb.host=\n"), "a");
    EXPECT_EQ(HostOf("db.host=a\ndb.host= \t\n"), "a");
}

TEST_F(ConnCfgTest, IgnoresWhatItDoesNotKnow) {
    EXPECT_EQ(HostOf("# db.host=a\n#db.host=a\n\ndb.host\n=\n=a\nclient.pool=8\nrubbish\n"), "");
    EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), unit::Lines{});
    EXPECT_EQ(HostOf(""), "");
    ORMEL_CONN_CFG expected{};
    std::strcpy(expected.acPassword, "secret");
    EXPECT_EQ(unit::BytesOf(cfg_), unit::BytesOf(expected)) << "the whole record is zeroed first";
}

TEST_F(ConnCfgTest, ReadsAnOverlongLineInPieces) {
    EXPECT_EQ(HostOf("#" + Times(2012, 'x') + "db.host=second piece\n"), "second piece");
    EXPECT_EQ(HostOf("#" + Times(2011, 'x') + "db.host=cut within the key\n"), "");
    EXPECT_EQ(HostOf(Times(100000, 'x') + "\ndb.host=after it\n"), "after it");
}

TEST_F(ConnCfgTest, StopsAtNulBytesOfALine) {
    EXPECT_EQ(HostOf(std::string("db.host=a\0b\ndb.user=u\n", 22)), "a");
    EXPECT_STREQ(cfg_.acUser, "u");
}

// --- The password ---

TEST_F(ConnCfgTest, WithoutAPasswordItFailsAndKeepsTheRest) {
    unit::SetPassword("");
    EXPECT_EQ(Read("db.host=h\n"), 0xFFFFFFFFu);
    EXPECT_STREQ(cfg_.acHost, "h");
    EXPECT_STREQ(cfg_.acPassword, "");
    EXPECT_THAT(Log().Lines(), ElementsAre("INFO ORMEL_ConnCfgRead: db.conf host:h port: dbname: db.user:",
                                           "ERROR ORMEL_ConnCfgRead: get db decrypt password fail."));
}

TEST_F(ConnCfgTest, CutsALongPassword) {
    for (size_t length : {254u, 255u, 3000u}) {
        unit::SetPassword(Times(length, 'p'));
        EXPECT_EQ(Read(""), 0u);
        EXPECT_EQ(cfg_.acPassword, Times(254, 'p'));
    }
}

// --- Files that cannot be read ---

TEST_F(ConnCfgTest, AMissingFile) {
    EXPECT_EQ(ORMEL_ConnCfgRead(&cfg_), 0xFFFFFFFFu);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR ORMEL_ConnCfgRead: File [../conf/db.conf] realpath failed."));
    EXPECT_EQ(unit::BytesOf(cfg_), std::string(sizeof(cfg_), '\0'));
}

TEST_F(ConnCfgTest, AFileThatCannotBeOpened) {
    int server = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "../conf/db.conf");
    ASSERT_EQ(bind(server, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    EXPECT_EQ(ORMEL_ConnCfgRead(&cfg_), 0xFFFFFFFFu);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR ORMEL_ConnCfgRead: Open File [../conf/db.conf] failed."));
    close(server);
}

TEST_F(ConnCfgTest, ADirectoryInsteadOfAFile) {
    std::filesystem::create_directory(home_.Conf());
    EXPECT_EQ(ORMEL_ConnCfgRead(&cfg_), 0xFFFFFFFFu);
    EXPECT_THAT(Log().Lines(KPL_LOG_ERROR),
                ElementsAre("ERROR ORMEL_ConnCfgRead: Open File [../conf/db.conf] failed."));
}

TEST_F(ConnCfgTest, ANullRecord) {
    home_.Write("db.host=h\n");
    EXPECT_EQ(ORMEL_ConnCfgRead(nullptr), 0xFFFFFFFFu);
}

// --- The lock that all readers of configuration share ---

TEST_F(ConnCfgTest, HoldsTheLockFromTheFileToThePassword) {
    std::vector<bool> locked;
    Log().hook = [&](const unit::Line &) { locked.push_back(ParsingIsLocked()); };
    Read("db.host=h\n");
    unit::SetPassword("");
    Read("db.host=h\n");
    EXPECT_THAT(locked, ElementsAre(true, true, true, true));
}

TEST_F(ConnCfgTest, ReportsUnreadableFilesWithoutTheLock) {
    std::vector<bool> locked;
    Log().hook = [&](const unit::Line &) { locked.push_back(ParsingIsLocked()); };
    ORMEL_ConnCfgRead(&cfg_);
    std::filesystem::create_directory(home_.Conf());
    ORMEL_ConnCfgRead(&cfg_);
    EXPECT_THAT(locked, ElementsAre(false, false));
}

// --- Bounded copy ---

TEST_F(ConnCfgTest, StrNCpyKeepsAllButTheLastCharacterOfItsBound) {
    struct {
        std::string source;
        size_t n;
        std::string kept;
    } cases[] = {{"abc", 8, "abc"}, {"abc", 4, "abc"}, {"abc", 3, "ab"}, {"abc", 2, "a"}, {"abc", 1, ""}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.n);
        std::vector<char> target(c.n, 'x');
        EXPECT_EQ(ORMEL_StrNCpy(target.data(), c.source.c_str(), c.n), 0u);
        EXPECT_EQ(std::string(target.data()), c.kept);
    }
}

TEST_F(ConnCfgTest, StrNCpyRefusesWhatIsMissing) {
    char target[4] = "old";
    EXPECT_EQ(ORMEL_StrNCpy(nullptr, "new", 4), 0xFFFFFFFFu);
    EXPECT_EQ(ORMEL_StrNCpy(target, nullptr, 4), 0xFFFFFFFFu);
    EXPECT_EQ(ORMEL_StrNCpy(target, "", 4), 0xFFFFFFFFu);
    EXPECT_EQ(ORMEL_StrNCpy(target, "new", 0), 0xFFFFFFFFu);
    EXPECT_STREQ(target, "old");
}

// --- Connection strings ---

class ConnStrTest : public unit::UnitTest {
protected:
    ConnStrTest() {
        std::memset(&g_stTransMgr.stConnCfg, 0, sizeof(g_stTransMgr.stConnCfg));
        std::memset(ORMEL_TransConnStr(), 0, ORMEL_CONN_STR_SIZE);
        Log().Forget();
    }
    ~ConnStrTest() override { std::memset(ORMEL_TransConnStr(), 0, ORMEL_CONN_STR_SIZE); }

    char text_[ORMEL_CONN_STR_SIZE];
};

TEST_F(ConnStrTest, IsMadeOfTheConfiguration) {
    ORMEL_CONN_CFG &cfg = g_stTransMgr.stConnCfg;
    std::strcpy(cfg.acHost, "h");
    std::strcpy(cfg.acPort, "5432");
    std::strcpy(cfg.acUser, "u");
    std::strcpy(cfg.acPassword, "secret");
    std::strcpy(cfg.acDbName, "d");
    EXPECT_EQ(ORMEL_TransBuildConnStr(text_), 0u);
    EXPECT_STREQ(text_, "host=h port=5432 user=u password=secret dbname=d");
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_TransBuildConnStr: OrmelConnStr is: host=h, port=5432, "
                                           "user=u, dbname=d"));
}

TEST_F(ConnStrTest, OrIsThePresetOne) {
    EXPECT_EQ(ORMEL_TransConnStr(), g_stTransMgr.pcConnstr);
    std::strcpy(ORMEL_TransConnStr(), "abc");
    EXPECT_EQ(ORMEL_TransBuildConnStr(text_), 0u);
    EXPECT_STREQ(text_, "abc");
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_TransBuildConnStr: OrmelConnStr is:abc"));
}

TEST_F(ConnStrTest, APresetOneMayFillItsField) {
    std::memset(ORMEL_TransConnStr(), 'c', ORMEL_CONN_STR_SIZE - 1);
    EXPECT_EQ(ORMEL_TransBuildConnStr(text_), 0u);
    EXPECT_EQ(text_, Times(ORMEL_CONN_STR_SIZE - 1, 'c'));
}

TEST_F(ConnStrTest, APresetOneWithoutEndIsReadNoFurtherThanItsField) {
    std::memset(ORMEL_TransConnStr(), 'c', ORMEL_CONN_STR_SIZE);
    EXPECT_EQ(ORMEL_TransBuildConnStr(text_), 0u);
    EXPECT_EQ(text_, Times(ORMEL_CONN_STR_SIZE - 1, 'c'));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_TransBuildConnStr: OrmelConnStr is:" + Times(511, 'c')));
}

TEST_F(ConnStrTest, NeedsATarget) {
    EXPECT_EQ(ORMEL_TransBuildConnStr(nullptr), 1u);
}

} // namespace
