// What the library's log says of a server's failures.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <ormeldb.h>
#include <ormeldb/platform/decrypt.h>
#include <ormeldb/platform/liblog.h>
#include <utility>

#include "postgres/postgres_engine.h"
#include "postgres/proxy.h"
#include "support/contract_test.h"

namespace {

std::string g_lines;
std::mutex g_linesMutex;

} // namespace

// In place of the log service's, which writes where the process first started the library.
extern "C" __attribute__((visibility("default"))) int32_t LIB_LOG_Print(void * /*handle*/, const char *line,
                                                                        uint32_t length, int32_t /*level*/) {
    const std::lock_guard lock(g_linesMutex);
    g_lines.append(line, length);
    return 0;
}

namespace {

using namespace contract;
using testing::HasSubstr;
using testing::Not;

#pragma pack(push, 1)
struct Piece {
    int32_t id;
    char v[161];
};
#pragma pack(pop)

// The library starts only where it finds a server; what fails comes behind that.
class LogTest : public ContractTest {
protected:
    LogTest() {
        Connection keeper = connect();
        keeper.run("drop role if exists writer");
        keeper.run("create role writer superuser login password 'of-a-writer'");
        keeper.commit();
    }

    static std::string takeLines() {
        const std::lock_guard lock(g_linesMutex);
        return std::exchange(g_lines, "");
    }

    // Leads to the server, by TLS with a certificate of this file or without.
    void lead(uint16_t port, const std::string &root, const std::string &lines = "") const {
        configure("client.pool=0\ndb.host=127.0.0.1\ndb.user=writer\ndb.port=" + std::to_string(port) +
                  (root.empty() ? "\nauth.sslmode=DISABLED\n"
                                : "\nauth.sslmode=VERIFY_CA\nauth.sslrootcert=" +
                                      std::string(std::getenv("ORMEL_POSTGRES_CERTIFICATES")) + "/" + root + "\n") +
                  lines);
    }

    // The log of a run whose one insert fails, because of its row or of what happens before.
    template <class Event> std::string logBehind(Event happens, int32_t id = 1) const {
        std::strcpy(reinterpret_cast<char *>(g_decrypt_info_s) + ORMEL_DECRYPT_PASSWORD_OFFSET, "of-a-writer");
        EXPECT_EQ(ORMEL_Init(), ORMEL_OK);
        happens();
        takeLines();
        Piece piece = {id, "piece"};
        const ORMEL_RECORD_BUFFER record = {sizeof piece, 1, sizeof piece, 0, reinterpret_cast<uint8_t *>(&piece)};
        EXPECT_NE(ORMEL_InsertRec("t", &record), ORMEL_OK);
        ORMEL_UnInit();
        return takeLines();
    }
    std::string logOf(int32_t id) const {
        lead(serverPort(), "");
        return logBehind([] {}, id);
    }
};
ENGINE_SUITE(LogTest);

TEST_P(LogTest, ARefusedConnectHasItsStateAndWords) {
    lead(serverPort(), "");
    EXPECT_THAT(logBehind([&] { lead(serverPort(), "", "db.dbname=no_such_database\n"); }),
                AllOf(HasSubstr("3D000: "), HasSubstr("no_such_database")));
    lead(serverPort(), "root.crt");
    EXPECT_THAT(logBehind([&] { lead(serverPort(), "foreign.crt"); }),
                AllOf(HasSubstr("08001: "), HasSubstr("certificate verify failed")));
    auto proxy = std::make_unique<Proxy>(serverPort());
    lead(proxy->port(), "");
    EXPECT_THAT(logBehind([&] { proxy.reset(); }), AllOf(HasSubstr("08001: "), HasSubstr("failed: ")));
    lead(serverPort(), "");
    EXPECT_THAT(logBehind([] { runOnServer("alter role writer password 'of-another'"); }),
                AllOf(HasSubstr("28P01: "), HasSubstr("writer"), Not(HasSubstr("of-a-writer"))));
}

TEST_P(LogTest, ARefusedStatementHasItsStateAndWords) {
    Connection db = connect();
    EXPECT_THAT(logOf(1), AllOf(HasSubstr("42P01: "), HasSubstr("does not exist")));
    makeTable(db, 1);
    db.run("create function refuse() returns trigger language plpgsql as $$ begin "
           "if new.id = 2 then perform pg_terminate_backend(pg_backend_pid()); end if; "
           "if new.id = 3 then raise disk_full; end if; "
           "if new.id = 4 then raise query_canceled; end if; return new; end $$");
    db.run("create trigger refusal before insert on t for each row execute function refuse()");
    db.commit();
    const std::pair<int32_t, const char *> refused[] = {
        {1, "23505: "}, {2, "57P01: terminating connection"}, {3, "53100: "}, {4, "57014: "}};
    for (const auto &[id, words] : refused)
        EXPECT_THAT(logOf(id), HasSubstr(words)) << id;
}

TEST_P(LogTest, ARefusedCommitHasItsStateAndWords) {
    Connection db = connect();
    db.run("create table t (id integer unique deferrable initially deferred, v varchar(40))");
    fill(db, 1, 1);
    db.commit();
    EXPECT_THAT(logOf(1), HasSubstr("23505: nothing was committed: duplicate key"));
}

} // namespace
