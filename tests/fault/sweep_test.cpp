// Every operation of the table under every fault: the n-th call of a kind fails, once and from then on, for n from 1
// until the operation no longer reaches it.
#include <algorithm>
#include <cctype>
#include <map>

#include "dao/qdc.h"
#include "fault.h"
#include "operation.h"
#include "support/process.h"
#include "support/started.h"

using fault::Exception;
using fault::Fault;
using fault::Held;
using fault::Kind;
using fault::Operation;
using fault::Scene;
using unit::Client;

namespace {

constexpr int kBound = 2000; // more calls than any operation makes

std::map<Kind, int> g_tried;

class Total : public testing::Environment {
public:
    void TearDown() override {
        int all = 0;
        for (const Kind kind : {Kind::client, Kind::memory, Kind::log}) {
            all += g_tried[kind];
            EXPECT_TRUE(g_tried[kind] > 0 || GTEST_FLAG_GET(filter) != "*") << "no " << Name(kind) << " ever failed";
        }
        std::printf("faults tried: %d\n", all);
    }
};
[[maybe_unused]] testing::Environment *const kTotal = testing::AddGlobalTestEnvironment(new Total);

// "prepare" of "prepare(s1, SELECT 1)".
std::string NameOf(const std::string &call) {
    return call.substr(0, call.find('('));
}

// What an operation's faults led to.
struct Seen {
    fault::Codes codes;
    fault::Names tolerated;
    int forgiven = 0;
    int exceptions = 0;
};

// A call as the log must not change it; what is bound is told by its place alone, since blocks lie where they lie.
std::string Told(const std::string &call) {
    return NameOf(call) == "bind_by_pos" ? call.substr(0, call.find(", ")) : call;
}

std::vector<std::string> Told(std::vector<std::string> calls) {
    for (std::string &call : calls) {
        call = Told(call);
    }
    return calls;
}

struct Case {
    const Operation *op;
    Kind kind;
};

// What a failure names.
std::string TitleOf(const Case &c) {
    return c.op->name + (c.op->form.empty() ? "" : " (" + c.op->form + ")");
}

void PrintTo(const Case &c, std::ostream *out) {
    *out << TitleOf(c) << ", " << Name(c.kind);
}

class SweepTest : public unit::StartedTest, public testing::WithParamInterface<Case> {
protected:
    SweepTest() : op_(*GetParam().op), kind_(GetParam().kind) {}

    void SetUp() override {
        StartedTest::SetUp();
        unit::Log().reads = false;
        unit::Log().threshold = KPL_LOG_FATAL; // but for the runs that faults hit, which log and dump all there is
        unit::Log().debugValue = "0";
    }

    // Fails the 1st, 2nd, 3rd ... call until the operation does not reach it, or it is wrong once.
    void Sweep(bool lasting, bool cached) {
        Try({kind_, 0, lasting, cached});
        for (int n = 1; n <= kBound; ++n) {
            const Fault fault{kind_, n, lasting, cached};
            SCOPED_TRACE(TitleOf(GetParam()) + ", " + Title(fault));
            const bool happened = Try(fault);
            if (!happened || HasFailure()) {
                return;
            }
            ++g_tried[kind_];
        }
        ADD_FAILURE() << op_.name << " never succeeds untouched: " << kBound << " faults of a kind reached it";
    }

    const Operation &op_;
    const Kind kind_;
    Seen seen_;
    std::vector<std::string> untouched_; // the client's calls without a fault

private:
    bool Try(const Fault &fault);
    bool TryInChild(const Fault &fault);
    void CheckSuccess(const Fault &fault, bool happened);
    void CheckFailure(const Fault &fault, uint32_t code, const Held &before, Scene &scene);
    void CheckCommits();
    int Untouched(const std::string &name) const;
    void TakeBackWhatIsKept(const Held &before, const unit::Blocks &blocks, Scene &scene);
    void GiveBack(Scene &scene) const;
    bool SceneIsSpent() const;
    void RunUntouched(Scene &scene) const;
};

// Runs the operation under a fault; whether it was reached.
bool SweepTest::Try(const Fault &fault) {
    if (op_.exception == Exception::exit && fault.kind == Kind::client && fault.lasting) {
        return TryInChild(fault);
    }
    const Held nothing = Held::Now();
    bool happened = false;
    bool spent = false;
    {
        Scene scene(op_.needs, fault.cached);
        const Held before = Held::Now();
        const unit::Blocks blocks = unit::Live();
        const std::string outputs = unit::BytesOf(scene.out);
        Client().ForgetCalls();
        uint32_t code = 0;
        {
            const unit::Threshold all(KPL_LOG_TRACE);
            const fault::Armed armed(fault);
            code = op_.run(scene);
            happened = armed.Happened();
        }
        spent = SceneIsSpent();
        if (code == op_.success) {
            CheckSuccess(fault, happened);
        } else {
            EXPECT_TRUE(happened) << "it fails without a fault";
            TakeBackWhatIsKept(before, blocks, scene);
            CheckFailure(fault, code, before, scene);
            EXPECT_TRUE(unit::BytesOf(scene.out) == outputs) << "a failing call wrote to its caller";
        }
        GiveBack(scene);
        if (!op_.consumes) {
            EXPECT_EQ(Difference(Held::Now(), before), "");
        }
        if (happened && !spent) {
            RunUntouched(scene);
        }
    }
    EXPECT_EQ(Difference(Held::Now(), nothing), "") << "when all is given back";
    if (happened && spent) {
        Scene scene(op_.needs, fault.cached);
        RunUntouched(scene);
    }
    return happened;
}

// A fault that the process does not survive, or that the operation never reaches.
bool SweepTest::TryInChild(const Fault &fault) {
    enum Ending : uint8_t { kEnded = 1, kUntouched = 40, kTolerated, kFailed };
    const unit::Ending ending = unit::RunInChild([&] {
        Scene scene(op_.needs, fault.cached);
        const fault::Armed armed(fault);
        const bool succeeds = op_.run(scene) == op_.success;
        _exit(!succeeds ? kFailed : armed.Happened() ? kTolerated : kUntouched);
    });
    if (ending.status == kEnded) {
        ++seen_.exceptions;
        EXPECT_THAT(ending.output, testing::StartsWith("Process exit because ORMEL connect timout("));
    } else {
        EXPECT_THAT(ending.status, testing::AnyOf(kUntouched, kTolerated));
    }
    return ending.status != kUntouched;
}

// It went well: nothing happened that it does not tolerate.
void SweepTest::CheckSuccess(const Fault &fault, bool happened) {
    if (fault.n == 0) {
        untouched_ = Told(Client().Calls());
    }
    if (fault.kind == Kind::log) {
        EXPECT_EQ(Told(Client().Calls()), untouched_) << "the log changes what is asked of the client";
    }
    for (const char *end : {"commit", "rollback"}) {
        EXPECT_EQ(Client().Count(end), Untouched(end)) << "it says that it is done, and a " << end << " differs";
    }
    for (const std::string &call : Client().Failed()) {
        EXPECT_THAT(op_.tolerates, testing::Contains(NameOf(call))) << "goes unnoticed";
        seen_.tolerated.insert(NameOf(call));
    }
    if (fault.kind == Kind::memory && !fault.lasting && !fault.cached && happened) {
        ++seen_.forgiven;
    }
    const bool nothingSent = Client().Count("set_paramset_size") == 0;
    seen_.exceptions += op_.exception == Exception::silence && nothingSent ? 1 : 0;
}

// It failed: with a code of the table, and with nothing left.
void SweepTest::CheckFailure(const Fault &fault, uint32_t code, const Held &before, Scene &scene) {
    const fault::Codes &codes = fault.kind == Kind::client ? op_.client : op_.memory;
    EXPECT_NE(fault.kind, Kind::log) << "a log that fails is no failure";
    EXPECT_THAT(codes, testing::Contains(code));
    seen_.codes.insert(code);
    if (op_.failed) {
        op_.failed(scene);
    }
    CheckCommits();
    const Held now = Held::Now();
    if (op_.consumes) {
        EXPECT_LE(now.connections, before.connections);
        EXPECT_LE(now.statements, before.statements);
        EXPECT_LE(now.blocks, before.blocks);
    } else {
        EXPECT_EQ(Difference(now, before), "");
    }
}

// So many calls of a name there are without a fault.
int SweepTest::Untouched(const std::string &name) const {
    return static_cast<int>(std::count_if(untouched_.begin(), untouched_.end(),
                                          [&](const std::string &call) { return NameOf(call) == name; }));
}

// A failing operation sends no commit but the one that fails it, and takes nothing back that is its caller's.
void SweepTest::CheckCommits() {
    EXPECT_LE(Client().Count("rollback"), Untouched("rollback"));
    const std::vector<std::string> failed = Client().Failed();
    const auto cause = std::find_if(failed.begin(), failed.end(),
                                    [&](const auto &call) { return op_.tolerates.count(NameOf(call)) == 0; });
    const bool failing = cause != failed.end() && NameOf(*cause) == "commit";
    const int sent = Client().Count("commit") - (failing ? 1 : 0);
    if (op_.exception == Exception::commit) {
        EXPECT_LE(sent, 1);
        seen_.exceptions += sent;
    } else {
        EXPECT_EQ(sent, 0) << "a commit after a failure";
    }
}

// Gives back what some operations keep on purpose when they fail.
void SweepTest::TakeBackWhatIsKept(const Held &before, const unit::Blocks &blocks, Scene &scene) {
    if (op_.exception == Exception::lobs && scene.out.lobs != nullptr) {
        ++seen_.exceptions;
        scene.ReleaseLobs();
    }
    if (op_.exception == Exception::statement && Client().LiveStatements() > before.statements) {
        ++seen_.exceptions;
        qdc_free_stmt(Client().Handle("s" + std::to_string(Client().LiveStatements())));
    }
    if (op_.exception == Exception::rows && Held::Now().blocks > before.blocks) {
        ++seen_.exceptions;
        EXPECT_EQ(Client().Count("get_affected_rows"), 1) << "something is kept, and the select was not yet run";
        ORMEL_ResAttMgrUnInit(); // or the cached descriptors would be taken for rows
        ORMEL_ResAttMgrInit();
        EXPECT_LE(unit::FreeNew(blocks), 5u) << "the header, the array of rows, one row and its two values";
    }
}

void SweepTest::GiveBack(Scene &scene) const {
    if (op_.undo) {
        op_.undo(scene);
    }
    scene.Release();
}

// Whether the operation cannot run in its scene again: it ended something, or a table is cached as it is not.
bool SweepTest::SceneIsSpent() const {
    const std::vector<std::string> failed = Client().Failed();
    return op_.consumes || std::any_of(failed.begin(), failed.end(),
                                       [](const std::string &call) { return NameOf(call) == "desc_column_by_id"; });
}

void SweepTest::RunUntouched(Scene &scene) const {
    EXPECT_EQ(op_.run(scene), op_.success) << "the next call";
    GiveBack(scene);
}

TEST_P(SweepTest, NothingIsLostAndNothingKept) {
    for (const bool cached : {false, true}) {
        if (cached && !op_.describes) {
            continue;
        }
        Sweep(false, cached);
        Sweep(true, cached);
    }
    if (HasFailure()) {
        return;
    }
    // What the table allows and no fault led to is no longer true.
    if (kind_ == Kind::client) {
        EXPECT_EQ(seen_.codes, op_.client);
        EXPECT_EQ(seen_.tolerated, op_.tolerates);
    } else if (kind_ == Kind::memory) {
        EXPECT_EQ(seen_.codes, op_.memory);
        EXPECT_EQ(seen_.forgiven, op_.forgives);
    }
    const Kind shows = op_.exception == Exception::silence ? Kind::memory : Kind::client;
    if (op_.exception != Exception::none && kind_ == shows) {
        EXPECT_GT(seen_.exceptions, 0);
    }
}

std::vector<Case> Cases() {
    std::vector<Case> cases;
    for (const Operation &op : fault::AllOperations()) {
        for (const Kind kind : {Kind::client, Kind::memory, Kind::log}) {
            cases.push_back({&op, kind});
        }
    }
    return cases;
}

std::string TestName(const testing::TestParamInfo<Case> &info) {
    std::string name = TitleOf(info.param) + "_" + Name(info.param.kind);
    name.erase(std::remove(name.begin(), name.end(), ')'), name.end());
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Faults, SweepTest, testing::ValuesIn(Cases()), TestName);

} // namespace
