// Whether the database can be worked with, and what it is.
#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <iomanip>
#include <iostream>
#include <vector>

#include "commands.h"
#include "home.h"
#include "session.h"
#include "statement.h"
#include "text.h"

namespace cli {
namespace {

constexpr size_t kRoundTrips = 15;

struct Question {
    const char *label;
    std::function<std::string(void *)> answer; // of a connection; throws Failure
    const char *remedy;
};

// The first value that a statement gives.
std::string ask(void *connection, const std::string &text) {
    Statement statement(connection);
    statement.execute(text);
    const std::vector<Column> columns = statement.columns();
    if (columns.empty() || !statement.fetch())
        throw Failure("the database gives no answer");
    return statement.value(0, columns[0].type);
}

std::function<std::string(void *)> asked(const char *text) {
    return [text](void *connection) { return ask(connection, text); };
}

// A table under a name that the library has no room for. The caller rolls back, and nobody ever sees it.
std::string makeTable(void *connection) {
    Statement(connection).execute("CREATE TABLE \"ormel check, never committed\" (a)");
    return "possible";
}

// The median: the first one prepares the statement, and any may be disturbed.
std::string roundTrip(void *connection) {
    using Clock = std::chrono::steady_clock;
    std::array<Clock::duration, kRoundTrips> times{};
    for (Clock::duration &time : times) {
        const auto begin = Clock::now();
        ask(connection, "SELECT 1");
        time = Clock::now() - begin;
    }
    std::nth_element(times.begin(), times.begin() + kRoundTrips / 2, times.end());
    const auto median = std::chrono::duration_cast<std::chrono::microseconds>(times[kRoundTrips / 2]);
    return std::to_string(median.count()) + " us";
}

// The library takes any other word for the weakest, and tells the log alone.
std::string sslMode(void * /*connection*/) {
    std::string mode = configured("auth.sslmode");
    if (mode.empty())
        return "DISABLED, because auth.sslmode is not set";
    if (dbSslModeType(mode.c_str()) == 0 && lowerCase(mode) != "disabled")
        throw Failure("auth.sslmode is '" + mode + "', which is no mode and is taken for DISABLED");
    return mode;
}

constexpr const char *kSqliteFile = "see that db.dbname in conf/db.conf names a database of SQLite";
constexpr const char *kServerLog = "the log of the server tells more";

std::vector<Question> questionsOf(const std::string &engine) {
    std::vector<Question> questions;
    if (engine == "sqlite")
        questions = {
            {"file", asked("SELECT file FROM pragma_database_list WHERE name = 'main'"), kSqliteFile},
            {"version", asked("SELECT sqlite_version()"), kSqliteFile},
            {"journal mode", asked("PRAGMA journal_mode"), kSqliteFile},
            {"writing", makeTable, "let the user of this process write the file and its directory"},
        };
    if (engine == "postgres")
        questions = {
            {"version", asked("SELECT current_setting('server_version')"), kServerLog},
            {"database", asked("SELECT current_database() || ', as ' || current_user"), kServerLog},
            {"ssl mode", sslMode, "set it to DISABLED, PREFERRED, REQUIRED, VERIFY_CA or VERIFY_FULL in conf/db.conf"},
            {"encryption",
             asked("SELECT CASE WHEN ssl THEN version || ', ' || cipher ELSE 'none' END"
                   " FROM pg_stat_ssl WHERE pid = pg_backend_pid()"),
             "let this user read pg_stat_ssl"},
        };
    questions.push_back({"round trip", roundTrip, "see that the database is not overloaded"});
    return questions;
}

void tell(const std::string &label, const std::string &what) {
    std::cout << std::left << std::setw(14) << label << printable(what) << '\n';
}

// Whether there was an answer.
bool tellAnswer(void *connection, const Question &question) {
    bool answered = true;
    try {
        tell(question.label, question.answer(connection));
    } catch (const Failure &failure) {
        const std::string remedy = isBusy() ? "" : std::string("; ") + question.remedy; // that failure says what to do
        tell(question.label, "not known: " + std::string(failure.what()) + remedy);
        answered = false;
    }
    dbRollbackTrans(connection); // some databases refuse all that follows a failure
    return answered;
}

} // namespace

void checkDatabase() {
    const Session session;
    const std::string engine = configuredEngine();
    tell("engine", engine);
    const std::vector<Question> questions = questionsOf(engine);
    const auto failed = std::count_if(questions.begin(), questions.end(), [&](const Question &question) {
        return !tellAnswer(session.connection(), question);
    });
    if (failed > 0)
        throw Failure("the database does not do all that it should: " + counted(static_cast<size_t>(failed), "step") +
                      " failed");
}

} // namespace cli
