// The engine of the embedded database: SQLite, in a file.
#include "engine.h"

#include <charconv>
#include <climits>
#include <filesystem>

#include "connection.h"
#include "error.h"
#include "fork.h"

namespace ormel::client::sqlite {

namespace {

constexpr char kPatienceKey[] = "client.busy_timeout_ms";

std::chrono::milliseconds patience(const Settings &settings) {
    const std::string text = settings.get(kPatienceKey, "5000");
    int value = -1;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
    if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size() || value < 0)
        refuse(SQLITE_MISUSE, std::string(kPatienceKey) + " in ../conf/db.conf is no number of milliseconds: " + text);
    return std::chrono::milliseconds(value);
}

// An absolute path is a file's name whatever is in it, where SQLite takes some other texts for more than that.
std::string databaseFile(const Settings &settings) {
    return std::filesystem::absolute(settings.get("db.dbname", "../data/ormel.db")).string();
}

class SqliteEngine final : public Engine {
public:
    SqliteEngine() { separateChildren(); }

    Dialect dialect() const override { return {'?', true, true, false, false, false}; }

    std::unique_ptr<Connection> connect(const Settings &settings) override {
        return std::make_unique<SqliteConnection>(databaseFile(settings), patience(settings));
    }
};

} // namespace

} // namespace ormel::client::sqlite

extern "C" __attribute__((visibility("default"))) ormel::client::Engine *ormel_engine() {
    static ormel::client::sqlite::SqliteEngine engine;
    return &engine;
}
