#include "error.h"

#include <algorithm>
#include <array>

namespace ormel::client::sqlite {

namespace {

struct Remedy {
    int code;
    std::string_view text;
};

constexpr std::string_view kWritable = "this process must be allowed to write the database file and its folder";

constexpr std::array<Remedy, 5> kRemedies = {{
    {SQLITE_BUSY, "another connection holds the lock; it was waited for as long as client.busy_timeout_ms allows"},
    {SQLITE_BUSY_SNAPSHOT, "another connection has changed the database since this transaction first read from it; "
                           "roll back and repeat the transaction"},
    {SQLITE_READONLY, kWritable},
    {SQLITE_READONLY_DIRECTORY, kWritable},
    {SQLITE_NOTADB, "db.dbname must name an SQLite database or a file that does not exist yet"},
}};

} // namespace

Error lastError(sqlite3 *database, std::string_view place) {
    const int code = sqlite3_extended_errcode(database);
    std::string message(place);
    if (!place.empty())
        message += ": ";
    message += sqlite3_errmsg(database);
    const auto *remedy =
        std::find_if(kRemedies.begin(), kRemedies.end(), [&](const Remedy &r) { return r.code == code; });
    if (remedy != kRemedies.end())
        message.append(": ").append(remedy->text);
    return {static_cast<uint32_t>(code), std::move(message)};
}

void fail(sqlite3 *database, std::string_view place) {
    throw lastError(database, place);
}

void refuse(int code, std::string message) {
    throw Error{static_cast<uint32_t>(code), std::move(message)};
}

void run(sqlite3 *database, const char *sql) {
    if (sqlite3_exec(database, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(database);
}

} // namespace ormel::client::sqlite
