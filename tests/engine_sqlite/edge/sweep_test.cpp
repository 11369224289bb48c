// Every failure at the edge, on purpose: for each operation of the library the 1st, 2nd, 3rd ... call to the file
// system, for a lock and for memory fails, once and from then on, until the operation succeeds untouched. Whatever
// fails, the operation says so by one of its codes or succeeds whole; what it wrote is there whole or not at all, the
// database is sound, nothing stays open, and the next call works. Where an operation cannot do without what fails, it
// must have failed.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iostream>
#include <memory>
#include <optional>
#include <ormeldb.h>
#include <sqlite3.h>
#include <tuple>

#include "contract/support/memory.h"
#include "edge/faults.h"
#include "operations/operations.h"

namespace edge {

namespace {

using operations::kOperations;
using operations::kSqlite;
using operations::Operation;
using operations::Outcome;

constexpr char kDatabase[] = "../data/ormel.db";

// A connection that goes past the library and its faults.
class Witness {
public:
    Witness() {
        sqlite3 *raw = nullptr;
        EXPECT_EQ(sqlite3_open_v2(kDatabase, &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, "unix"), SQLITE_OK);
        database_.reset(raw);
        run("PRAGMA synchronous = OFF");
    }

    void restore() const { run(kSqlite.rows); }

    // Everything that the tables hold.
    std::string contents() const { return run(kSqlite.contents); }

    // The first value that the statements give.
    std::string run(const char *sql) const {
        std::string value;
        const auto take = [](void *to, int, char **values, char **) {
            *static_cast<std::string *>(to) = values[0] != nullptr ? values[0] : "NULL";
            return 0;
        };
        EXPECT_EQ(sqlite3_exec(database_.get(), sql, take, &value, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database_.get());
        return value;
    }

private:
    struct Close {
        void operator()(sqlite3 *database) const { EXPECT_EQ(sqlite3_close(database), SQLITE_OK); }
    };
    std::unique_ptr<sqlite3, Close> database_;
};

// What the operation meets.
enum class Scene { newConnection, keptConnection, crash };
struct NamedScene {
    const char *name;
    Scene scene;
    uint64_t steps; // as many times wider than elsewhere
};
constexpr NamedScene kScenes[] = {
    {"OnANewConnection", Scene::newConnection, 1},
    {"AfterACrash", Scene::crash, 5},
    {"OnAKeptConnection", Scene::keptConnection, 1}, // last: it stays in the pool for a while
};

constexpr char kCrashed[] = "../data/crashed.db";

// A file that is cut to be written anew is synced by some file systems; a new one is not.
void copyDatabase(const std::string &from, const std::string &to) {
    for (const char *end : {"", "-wal"}) {
        std::filesystem::remove(to + end);
        std::filesystem::copy_file(from + end, to + end);
    }
}

// What fails: a call at SQLite's edge, or a request for memory by the C++ of the client and its engine.
struct Failing {
    const char *name;
    std::optional<Place> place;
    uint64_t step; // from one fault to the next, where not every one is tried
};
constexpr Failing kFailing[] = {
    {"WithoutFiles", Place::files, 1},
    {"WithoutRoom", Place::disk, 1},
    {"WithoutLocks", Place::locks, 1},
    {"WithoutMemoryOfSqlite", Place::memory, 31},
    {"WithoutMemoryOfTheClient", std::nullopt, 5},
};

struct Attempt {
    Outcome outcome;
    bool failed = false; // a call, whatever came of it
};

Attempt attemptFailing(const Operation &operation, const Failing &failing, uint64_t first, bool lasting) {
    Attempt tried;
    tried.outcome = operations::attempt([&] {
        if (failing.place) {
            const Fault fault = {*failing.place, first, lasting};
            arm(fault);
            const uint32_t code = operation.run();
            tried.failed = disarm();
            return code;
        }
        using Memory = contract::FailingMemory;
        const Memory memory(first, lasting ? Memory::Mode::fromThenOn : Memory::Mode::once);
        const uint32_t code = operation.run();
        tried.failed = memory.happened();
        return code;
    });
    return tried;
}

struct Figures {
    uint64_t faults = 0;
    uint64_t answered = 0; // by an error
    uint64_t kept = 0;     // of these, whose work is there nevertheless
};
Figures g_figures;

class EdgeTest : public testing::TestWithParam<std::tuple<NamedScene, Operation, Failing>> {
protected:
    static void SetUpTestSuite() {
        installMemory();
        installFiles();
        const Witness witness;
        witness.run(kSqlite.tables);
        // As a process that was killed leaves it: all rows are in the log alone.
        witness.run("PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0");
        witness.restore();
        copyDatabase(kDatabase, kCrashed);
    }
    static void TearDownTestSuite() {
        std::cout << "faults tried: " << g_figures.faults << ", answered by an error: " << g_figures.answered
                  << ", and the work done all the same: " << g_figures.kept << "\n";
    }

    EdgeTest() {
        std::ofstream("../conf/db.conf", std::ios::app)
            << "client.busy_timeout_ms=5\nclient.pool=" << (scene_.scene == Scene::keptConnection ? 1 : 0) << "\n";
        EXPECT_EQ(ORMEL_Init(), ORMEL_OK);
        Witness().restore();
        before_ = Witness().contents();
        EXPECT_EQ(attemptUntouched().code, ORMEL_OK);
        after_ = Witness().contents();
        EXPECT_EQ(after_ != before_, operation_.writes);
        Witness().restore();
        memory_ = sqlite3_memory_used();
        files_ = openFiles();
    }
    ~EdgeTest() override { ORMEL_UnInit(); }

    void sweep(bool lasting) {
        const uint64_t step = std::getenv("ORMEL_NIGHTLY") != nullptr ? 1 : failing_.step * scene_.steps;
        for (uint64_t first = 1;; first += step) {
            SCOPED_TRACE("call " + std::to_string(first) + (lasting ? " and all behind it" : ""));
            prepare();
            const Attempt tried = attemptFailing(operation_, failing_, first, lasting);
            check(tried);
            if (!tried.failed || HasFailure()) {
                EXPECT_TRUE(first > 1 || !mustReach()) << "this never fails";
                return;
            }
            ++g_figures.faults;
        }
    }

private:
    // The database as the operation is to meet it, with the same rows always. Of a new one the library knows no table.
    void prepare() const {
        if (scene_.scene == Scene::crash)
            copyDatabase(kCrashed, kDatabase);
        if (scene_.scene == Scene::newConnection) {
            ORMEL_ResAttMgrUnInit();
            ORMEL_ResAttMgrInit();
        }
    }

    Outcome attemptUntouched() const {
        prepare();
        return operations::attempt(operation_.run);
    }

    // Whether the operation cannot do without what fails. A kept connection is there, and knows the tables.
    bool mustReach() const {
        if (failing_.place == Place::disk)
            return operation_.writes || scene_.scene == Scene::crash;
        const std::string_view name = operation_.name;
        return scene_.scene != Scene::keptConnection || !failing_.place || (name != "connect" && name != "describe");
    }

    // The client's memory may be what its handle would have been made of, which is where the words stand.
    bool saysWhy() const { return operation_.saysWhy && failing_.place.has_value(); }

    void check(const Attempt &tried) {
        SCOPED_TRACE(tried.outcome.error);
        EXPECT_EQ(g_stTransMgr.uiCount, 0U) << "slots are left";
        EXPECT_LE(openFiles(), files_);
        if (scene_.scene != Scene::keptConnection) {
            EXPECT_EQ(sqlite3_memory_used(), memory_);
        }
        checkDatabase(tried);
        const Outcome next = attemptUntouched();
        EXPECT_EQ(next.code, ORMEL_OK) << "the next call: " << next.error;
        const Witness witness;
        EXPECT_EQ(witness.contents(), after_);
        if (operation_.writes)
            witness.restore();
    }

    void checkDatabase(const Attempt &tried) const {
        const Witness witness;
        const std::string now = witness.contents();
        EXPECT_EQ(witness.run("PRAGMA integrity_check"), "ok");
        if (tried.outcome.code == ORMEL_OK)
            EXPECT_EQ(now, after_);
        else
            checkRefusal(tried, now);
        if (now != before_)
            witness.restore();
    }

    void checkRefusal(const Attempt &tried, const std::string &now) const {
        EXPECT_THAT(operation_.codes, testing::Contains(tried.outcome.code));
        EXPECT_TRUE(now == before_ || now == after_) << now;
        EXPECT_TRUE(tried.failed) << "nothing failed, but the operation did";
        EXPECT_TRUE(!saysWhy() || !tried.outcome.error.empty()) << "no word of why";
        ++g_figures.answered;
        if (now == before_)
            return;
        EXPECT_THAT(tried.outcome.error, testing::HasSubstr("look before repeating it"));
        ++g_figures.kept;
    }

    const NamedScene scene_ = std::get<0>(GetParam());
    const Operation operation_ = std::get<1>(GetParam());
    const Failing failing_ = std::get<2>(GetParam());
    std::string before_;
    std::string after_;
    sqlite3_int64 memory_ = 0;
    int files_ = 0;
};

TEST_P(EdgeTest, EveryFailureIsAnswered) {
    sweep(false);
    sweep(true);
}

INSTANTIATE_TEST_SUITE_P(Sweep, EdgeTest,
                         testing::Combine(testing::ValuesIn(kScenes), testing::ValuesIn(kOperations),
                                          testing::ValuesIn(kFailing)),
                         [](const auto &info) {
                             return std::string(std::get<1>(info.param).name) + std::get<2>(info.param).name +
                                    std::get<0>(info.param).name;
                         });

} // namespace

} // namespace edge
