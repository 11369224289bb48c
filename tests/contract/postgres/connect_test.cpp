// Ways to connect to a server, and not to.
#include <chrono>
#include <cstdlib>
#include <fstream>

#include "postgres/loopback.h"
#include "postgres/postgres_engine.h"
#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

enum SslMode : uint32_t { kDisabled, kPreferred, kRequired, kVerifyCa, kVerifyFull };

// A port where nobody answers: closed, open with nobody behind it, or with a queue that is full already.
class DeadPort {
public:
    enum State { closed, silent, full };
    explicit DeadPort(State state) {
        if (state == closed)
            return;
        port_.listen(state == full ? 0 : 5);
        for (int i = 0; state == full && i < 4; ++i)
            queue_.push_back(knockAt(port_.number()));
    }

    std::string port() const { return port_.text(); }

private:
    const Port port_;
    std::vector<Socket> queue_;
};

class Variable {
public:
    Variable(const char *name, const std::string &value) : name_(name) { setenv(name, value.c_str(), 1); }
    ~Variable() { unsetenv(name_); }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *name_;
};

class ConnectTest : public ContractTest {
protected:
    ConnectTest() { configure(""); }

    // Without kept connections, so that every connect is one.
    void configure(const std::string &lines) const { ContractTest::configure("client.pool=0\n" + lines); }
    void trust(const std::string &root) const { configure("auth.sslrootcert=" + root + "\n"); }
    static std::string certificate(const std::string &file) {
        return std::string(std::getenv("ORMEL_POSTGRES_CERTIFICATES")) + "/" + file;
    }

    std::string port() const { return target().address.substr(target().address.rfind(':') + 1); }
    Target at(const std::string &hosts, const std::string &ports) const {
        return {hosts + ":" + ports, target().user, target().password};
    }
    Target at(const std::string &host) const { return at(host, port()); }

    // What the client says when it is refused; it never tells a password.
    static std::string refusal(const Target &target, SslMode mode = kDisabled) {
        Connection db;
        EXPECT_OK(db, qdc_set_conn_attr(db, QDC_ATTR_SSL_MODE, &mode, sizeof mode));
        EXPECT_FAILS(db.connect(target));
        EXPECT_THAT(db.error(), Not(HasSubstr(target.password)));
        EXPECT_NE(db.errorCode(), 0U);
        return db.error();
    }

    // "plain" or "encrypted", or what the client says when it is refused.
    static std::string outcome(const Target &target, SslMode mode) {
        Connection db;
        EXPECT_OK(db, qdc_set_conn_attr(db, QDC_ATTR_SSL_MODE, &mode, sizeof mode));
        if (db.connect(target) != 0)
            return db.error();
        const Rows rows = db.rows("select ssl from pg_stat_ssl where pid = pg_backend_pid()");
        return rows == Rows{rowOf("1")} ? "encrypted" : "plain";
    }
};
ENGINE_SUITE(ConnectTest);

TEST_P(ConnectTest, AnUnknownHostIsNamed) {
    EXPECT_THAT(refusal(at("no-such-host.invalid")), AllOf(StartsWith("08001: "), HasSubstr("no-such-host.invalid")));
}

TEST_P(ConnectTest, AClosedPortIsNamed) {
    const DeadPort port(DeadPort::closed);
    EXPECT_THAT(refusal(at("127.0.0.1", port.port())), AllOf(StartsWith("08001: "), HasSubstr(port.port())));
}

TEST_P(ConnectTest, APortThatIsNoneIsRefused) {
    for (const char *port : {"0", "65536", "x"})
        EXPECT_THAT(refusal(at("127.0.0.1", port)), StartsWith("08001: ")) << port;
}

TEST_P(ConnectTest, AWrongPasswordHasTheServersState) {
    for (const char *password : {"not-the-password", ""}) {
        Connection db;
        EXPECT_FAILS(db.connect({target().address, target().user, password}));
        EXPECT_EQ(db.errorCode(), 99999U);
        EXPECT_THAT(db.error(), AllOf(StartsWith("28P01: "), HasSubstr("postgres"), Not(HasSubstr("not-the"))));
    }
    EXPECT_THAT(refusal({target().address, "nobody", "not-the-password"}), StartsWith("28P01: "));
}

TEST_P(ConnectTest, AWrongDatabaseHasTheServersState) {
    configure("db.dbname=no_such_database\n");
    EXPECT_THAT(refusal(target()), AllOf(StartsWith("3D000: "), HasSubstr("no_such_database")));
}

TEST_P(ConnectTest, APortThatNeverAnswersIsLeftInTime) {
    const DeadPort port(DeadPort::silent);
    configure("client.connect_timeout_ms=300\n");
    for (const SslMode mode : {kDisabled, kRequired}) {
        const auto before = std::chrono::steady_clock::now();
        const std::string words = refusal(at("127.0.0.1,127.0.0.1", port.port()), mode);
        const auto taken = std::chrono::steady_clock::now() - before;
        EXPECT_THAT(words, AllOf(StartsWith("08001: "), HasSubstr("client.connect_timeout_ms")));
        EXPECT_GE(taken, std::chrono::milliseconds(290));
        EXPECT_LT(taken, std::chrono::milliseconds(1500)) << "for all addresses together";
    }
}

// One that never answers takes no more than its share of the time.
TEST_P(ConnectTest, TheNextHostIsTakenWhereOneNeverAnswers) {
    configure("client.connect_timeout_ms=5000\n");
    const DeadPort silent(DeadPort::silent);
    const DeadPort full(DeadPort::full);
    for (const Target &each : {at("127.0.0.1,127.0.0.1", full.port() + "," + port()),
                               at("127.0.0.1,localhost,127.0.0.1", silent.port() + "," + full.port() + "," + port())}) {
        Connection db;
        EXPECT_OK(db, db.connect(each)) << each.address;
    }
}

TEST_P(ConnectTest, EveryHostThatFailedIsNamed) {
    const DeadPort closed(DeadPort::closed);
    const DeadPort silent(DeadPort::silent);
    configure("client.connect_timeout_ms=300\n");
    EXPECT_THAT(refusal(at("127.0.0.1,no-such-host.invalid,127.0.0.1", closed.port() + ",1," + silent.port())),
                AllOf(StartsWith("08001: cannot connect to 127.0.0.1,no-such-host.invalid,127.0.0.1:"),
                      HasSubstr("port " + closed.port() + " failed"), HasSubstr("no-such-host.invalid"),
                      HasSubstr("no answer from 127.0.0.1, port " + silent.port()), Not(HasSubstr("; ;"))));
}

// A password that one refuses is not tried with the next.
TEST_P(ConnectTest, ARefusalIsFinal) {
    const DeadPort dead(DeadPort::closed);
    const std::string words =
        refusal({"127.0.0.1,127.0.0.1:" + port() + "," + dead.port(), "nobody", "not-the-password"});
    EXPECT_THAT(words, AllOf(StartsWith("28P01: "), Not(HasSubstr(dead.port() + " failed"))));
}

TEST_P(ConnectTest, TheNextHostIsTakenWhereOneTakesNoWrites) {
    Connection keeper = connect();
    keeper.run("drop role if exists reader");
    keeper.run("create role reader login password 'of-a-reader'");
    keeper.run("alter role reader set default_transaction_read_only = on");
    keeper.commit();
    const DeadPort dead(DeadPort::closed);
    const Target both = {"127.0.0.1,127.0.0.1:" + port() + "," + dead.port(), "reader", "of-a-reader"};
    EXPECT_THAT(refusal(both), AllOf(HasSubstr("read-only"), HasSubstr("port " + dead.port() + " failed")));
}

TEST_P(ConnectTest, ATimeThatIsNoneIsNamed) {
    for (const char *time : {"soon", "-1", "99999999999"}) {
        configure(std::string("client.connect_timeout_ms=") + time + "\n");
        EXPECT_THAT(refusal(target()), AllOf(HasSubstr("client.connect_timeout_ms"), HasSubstr(time)));
    }
}

TEST_P(ConnectTest, TheNextHostIsTakenWhereOneIsDead) {
    const DeadPort dead(DeadPort::closed);
    for (const Target &target :
         {at("127.0.0.1,127.0.0.1", dead.port() + "," + port()), at("127.0.0.2,127.0.0.1"),
          at("no-such-host.invalid,127.0.0.1"), at("/nonexistent,127.0.0.1", dead.port() + "," + port())}) {
        Connection db;
        EXPECT_OK(db, db.connect(target)) << target.address;
    }
    EXPECT_THAT(refusal(at("127.0.0.1,127.0.0.1", port() + ",1,2")), HasSubstr("db.port"));
}

// Whatever address the environment has for it.
TEST_P(ConnectTest, TheFolderOfASocketIsAHost) {
    const Variable address("PGHOSTADDR", "127.0.0.2");
    for (const SslMode mode : {kDisabled, kPreferred})
        EXPECT_EQ(outcome(at(certificate("")), mode), "plain");
}

// Where libpq would leave it out.
TEST_P(ConnectTest, EncryptionIsNotLeftOutAtASocket) {
    for (const char *root : {"", "root.crt"}) {
        trust(*root != '\0' ? certificate(root) : "");
        for (const SslMode mode : {kRequired, kVerifyCa, kVerifyFull}) {
            SCOPED_TRACE(std::string(root) + " " + std::to_string(mode));
            EXPECT_THAT(refusal(at(certificate("")), mode), AllOf(StartsWith("08001: "), HasSubstr("auth.sslmode"),
                                                                  HasSubstr(certificate("")), HasSubstr("db.host")));
            EXPECT_THAT(refusal(at(""), mode), AllOf(StartsWith("08001: "), HasSubstr("auth.sslmode")));
        }
    }
    EXPECT_EQ(outcome(at(certificate("") + ",127.0.0.1"), kRequired), "encrypted");
}

TEST_P(ConnectTest, OnlyAServerThatTakesWritesIsTaken) {
    Connection keeper = connect();
    keeper.run("drop role if exists reader");
    keeper.run("create role reader login password 'of-a-reader'");
    keeper.run("alter role reader set default_transaction_read_only = on");
    keeper.commit();
    EXPECT_THAT(refusal({target().address, "reader", "of-a-reader"}),
                AllOf(StartsWith("08001: "), HasSubstr("read-only")));
}

TEST_P(ConnectTest, ModesAskForWhatTheirNamesSay) {
    struct Case {
        SslMode mode;
        const char *root; // a file of the certificates; empty: none is configured
        const char *host;
        const char *outcome; // or a part of the refusal
    };
    const Case cases[] = {
        {kDisabled, "", "127.0.0.1", "plain"},
        {kPreferred, "", "127.0.0.1", "encrypted"},
        {kRequired, "", "127.0.0.1", "encrypted"},
        {kDisabled, "foreign.crt", "127.0.0.1", "plain"},
        {kPreferred, "foreign.crt", "127.0.0.1", "encrypted"},
        {kRequired, "root.crt", "127.0.0.1", "encrypted"},
        {kRequired, "foreign.crt", "127.0.0.1", "encrypted"},
        {kVerifyCa, "root.crt", "localhost", "encrypted"},
        {kVerifyCa, "root.crt", "127.0.0.1", "encrypted"},
        {kVerifyCa, "foreign.crt", "localhost", "certificate verify failed"},
        {kVerifyCa, "missing.crt", "localhost", "missing.crt"},
        {kVerifyCa, "server.key", "localhost", "server.key"},
        {kVerifyCa, "", "localhost", "auth.sslrootcert"},
        {kVerifyFull, "root.crt", "localhost", "encrypted"},
        {kVerifyFull, "root.crt", "127.0.0.1", "does not match host name"},
        {kVerifyFull, "foreign.crt", "localhost", "certificate verify failed"},
        {kVerifyFull, "missing.crt", "localhost", "missing.crt"},
        {kVerifyFull, "", "localhost", "auth.sslrootcert"},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(std::to_string(each.mode) + " " + each.root + " " + each.host);
        if (*each.root == '\0')
            configure("");
        else
            trust(certificate(each.root));
        EXPECT_THAT(outcome(at(each.host), each.mode), HasSubstr(each.outcome));
    }
}

TEST_P(ConnectTest, ARefusedCertificateHasTheClientsState) {
    trust(certificate("foreign.crt"));
    EXPECT_THAT(refusal(at("localhost"), kVerifyFull), StartsWith("08001: "));
    trust(certificate("root.crt"));
    EXPECT_THAT(refusal(at("127.0.0.1"), kVerifyFull), StartsWith("08001: "));
}

TEST_P(ConnectTest, TheEnvironmentDoesNotChangeTheMode) {
    const std::pair<const char *, SslMode> asked[] = {{"disable", kRequired}, {"require", kDisabled}};
    for (const auto &[mode, wanted] : asked) {
        const Variable variable("PGSSLMODE", mode);
        EXPECT_EQ(outcome(target(), wanted), wanted == kRequired ? "encrypted" : "plain");
    }
    const Variable variable("PGSSLROOTCERT", certificate("root.crt"));
    EXPECT_THAT(refusal(at("localhost"), kVerifyFull), HasSubstr("auth.sslrootcert"));
    trust(certificate("foreign.crt"));
    EXPECT_THAT(refusal(at("localhost"), kVerifyFull), HasSubstr("certificate verify failed"));
    const Variable other("PGSSLROOTCERT", certificate("foreign.crt"));
    trust(certificate("root.crt"));
    EXPECT_EQ(outcome(at("localhost"), kVerifyFull), "encrypted");
}

TEST_P(ConnectTest, TheEnvironmentLeadsNowhereElse) {
    const Variable address("PGHOSTADDR", "127.0.0.1");
    const Variable host("PGHOST", "127.0.0.1");
    const Variable number("PGPORT", port());
    EXPECT_THAT(refusal(at("no-such-host.invalid")), StartsWith("08001: "));
    EXPECT_THAT(refusal(at("/nonexistent")), AllOf(StartsWith("08001: "), HasSubstr("/nonexistent")));
    const Variable elsewhere("PGHOSTADDR", "127.0.0.2");
    const Variable database("PGDATABASE", "no_such_database");
    const Variable user("PGUSER", "nobody");
    const Variable password("PGPASSWORD", "not-the-password");
    Connection db;
    EXPECT_OK(db, db.connect(target()));
}

TEST_P(ConnectTest, DatesAreInIsoFormWhateverTheEnvironmentSays) {
    const Variable style("PGDATESTYLE", "German");
    for (int user = 0; user < 2; ++user) {
        Connection db = connect();
        EXPECT_EQ(db.rows("select date '2024-02-29'"), Rows{rowOf("2024-02-29")});
        db.rows("select set_config('work_mem', '77MB', false)"); // so that the session's settings are reset
        db.commit();
    }
}

// Where a text ends, and so what is a placeholder, must be the same for the client and for the server.
TEST_P(ConnectTest, BackslashesEscapeNothingWhateverTheRoleSays) {
    Connection keeper = connect();
    keeper.run("alter role current_user set standard_conforming_strings = off");
    keeper.commit();
    {
        Connection db = connect();
        EXPECT_EQ(db.rows(R"(select 'a\' || :1)", "b"), Rows{rowOf(R"(a\b)")});
        EXPECT_EQ(db.rows(R"(select E'a''\':1' || :1)", "b"), Rows{rowOf("a'':1b")});
    }
    keeper.run("alter role current_user reset standard_conforming_strings");
    keeper.commit();
}

TEST_P(ConnectTest, TheEnvironmentSetsNothing) {
    const std::string file = home().root() / "services";
    std::ofstream(file) << "[other]\nhost=127.0.0.2\nhostaddr=127.0.0.2\nport=1\nsslmode=disable\nuser=nobody\n"
                           "options=-c work_mem=77MB\n";
    const Variable services("PGSERVICEFILE", file);
    const Variable service("PGSERVICE", "other");
    const Variable options("PGOPTIONS", "-c default_transaction_read_only=on -c work_mem=77MB");
    const Variable encoding("PGCLIENTENCODING", "LATIN1");
    const Variable binding("PGCHANNELBINDING", "require");
    const Variable attributes("PGTARGETSESSIONATTRS", "read-only");
    Connection db;
    const SslMode mode = kRequired;
    EXPECT_OK(db, qdc_set_conn_attr(db, QDC_ATTR_SSL_MODE, &mode, sizeof mode));
    ASSERT_EQ(db.connect(target()), 0U) << db.error();
    EXPECT_EQ(db.rows("select ssl from pg_stat_ssl where pid = pg_backend_pid()"), Rows{rowOf("1")});
    const std::pair<const char *, const char *> settings[] = {
        {"default_transaction_read_only", "off"}, {"work_mem", "4MB"}, {"client_encoding", "UTF8"}};
    for (const auto &[name, value] : settings)
        EXPECT_EQ(db.rows(std::string("show ") + name), Rows{rowOf(value)}) << name;
}

TEST_P(ConnectTest, TheEnvironmentDoesNotLowerTheProtocol) {
    const Variable protocol("PGSSLMAXPROTOCOLVERSION", "TLSv1.2");
    const Variable least("PGSSLMINPROTOCOLVERSION", "TLSv1");
    Connection db;
    const SslMode mode = kRequired;
    EXPECT_OK(db, qdc_set_conn_attr(db, QDC_ATTR_SSL_MODE, &mode, sizeof mode));
    ASSERT_EQ(db.connect(target()), 0U) << db.error();
    EXPECT_EQ(db.rows("select version from pg_stat_ssl where pid = pg_backend_pid()"), Rows{rowOf("TLSv1.3")});
}

// What libpq hands to the server without being asked.
TEST_P(ConnectTest, TheEnvironmentNamesTheTimeZoneAndNothingElse) {
    const Variable zone("PGTZ", "Asia/Tokyo");
    const Variable name("PGAPPNAME", "other");
    const Variable seconds("PGCONNECT_TIMEOUT", "1");
    const Variable planner("PGGEQO", "off");
    Connection db = connect();
    EXPECT_EQ(db.rows("show timezone"), Rows{rowOf("Asia/Tokyo")});
    EXPECT_EQ(db.rows("show geqo"), Rows{rowOf("off")});
    EXPECT_EQ(db.rows("show application_name"), Rows{rowOf("ormeldb")});
}

// Both can refuse, and neither lets anything in.
TEST_P(ConnectTest, TheEnvironmentCanRefuse) {
    {
        const Variable service("PGSERVICE", "no-such-service");
        EXPECT_THAT(refusal(target()), AllOf(StartsWith("08001: "), HasSubstr("no-such-service")));
    }
    const Variable peer("PGREQUIREPEER", "somebody else");
    EXPECT_THAT(refusal(at(certificate(""))), AllOf(StartsWith("08001: "), HasSubstr("somebody else")));
    EXPECT_EQ(outcome(target(), kRequired), "encrypted");
}

} // namespace
