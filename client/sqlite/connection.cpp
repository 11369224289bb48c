#include "connection.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <thread>

#include "catalogue.h"
#include "error.h"
#include "sql_text.h"
#include "statement.h"

namespace ormel::client::sqlite {

namespace {

std::string openingOf(const std::string &file) {
    return "database file " + file;
}

// Why a file could not be opened. One that cannot be made is tried once more for reading, and so seems to be missing.
std::string reasonOf(int systemError, const std::string &file) {
    std::error_code ignored;
    const bool hasFolder = std::filesystem::is_directory(std::filesystem::path(file).parent_path(), ignored);
    if (systemError == ENOENT && hasFolder)
        return "it does not exist, and its folder cannot be written";
    return std::strerror(systemError) + std::string(hasFolder ? "" : "; its folder must exist");
}

// SQLite's words, and the system's reason where there is one.
[[noreturn]] void failOpening(sqlite3 *database, const std::string &file) {
    Error error = lastError(database, openingOf(file));
    const int systemError = sqlite3_system_errno(database);
    if ((error.code & 0xFF) == SQLITE_CANTOPEN && systemError != 0)
        error.message += ": " + reasonOf(systemError, file);
    throw error;
}

OwnedDatabase openDatabase(const std::string &file) {
    constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    sqlite3 *raw = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &raw, flags, nullptr);
    OwnedDatabase database(raw);
    if (result != SQLITE_OK)
        failOpening(raw, file);
    return database;
}

std::string journalMode(sqlite3 *database, const char *pragma, const std::string &file) {
    sqlite3_stmt *raw = nullptr;
    sqlite3_prepare_v2(database, pragma, -1, &raw, nullptr);
    const OwnedStatement statement(raw);
    if (raw == nullptr || sqlite3_step(raw) != SQLITE_ROW)
        failOpening(database, file);
    const auto *mode = reinterpret_cast<const char *>(sqlite3_column_text(raw, 0));
    return mode != nullptr ? mode : "";
}

// The mode is the file's own and is set once. A file that cannot be written stays as it is, for reading.
void useWriteAheadLog(sqlite3 *database, const std::string &file) {
    if (journalMode(database, "PRAGMA main.journal_mode", file) == "wal" || sqlite3_db_readonly(database, "main") == 1)
        return;
    const std::string mode = journalMode(database, "PRAGMA main.journal_mode = WAL", file);
    if (mode != "wal")
        refuse(SQLITE_CANTOPEN, openingOf(file) +
                                    ": the file system does not allow write-ahead logging (the mode stays " + mode +
                                    "); keep the database on a local file system");
}

// SQLite does not wait by itself for another connection that is setting the mode of the same new file.
void awaitWriteAheadLog(sqlite3 *database, const std::string &file, std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds pause(2);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        try {
            return useWriteAheadLog(database, file);
        } catch (const Error &error) {
            if ((error.code & 0xFF) != SQLITE_BUSY || std::chrono::steady_clock::now() >= deadline)
                throw;
        }
        std::this_thread::sleep_for(pause);
    }
}

FileIdentity identityOf(const std::string &file) noexcept {
    struct stat found = {};
    return stat(file.c_str(), &found) == 0 ? FileIdentity{found.st_dev, found.st_ino} : FileIdentity();
}

// Settings, attached files and temporary tables and triggers are the connection's own, whatever becomes of the
// transaction. It does not matter how a text says it: some settings change while it is prepared, even an EXPLAIN.
int note(void *actions, int action, const char * /*object*/, const char * /*detail*/, const char *database,
         const char * /*within*/) {
    auto &noted = *static_cast<Actions *>(actions);
    const bool ofTemporary = database != nullptr && std::string_view(database) == "temp";
    if (action == SQLITE_TRANSACTION || action == SQLITE_SAVEPOINT)
        noted.endTransactions = true;
    if (action == SQLITE_PRAGMA || action == SQLITE_ATTACH || (ofTemporary && action != SQLITE_READ))
        noted.alterConnection = true;
    return SQLITE_OK;
}

OwnedDatabase openConnection(const std::string &file, std::chrono::milliseconds patience) {
    OwnedDatabase database = openDatabase(file);
    sqlite3_busy_timeout(database.get(), static_cast<int>(patience.count()));
    awaitWriteAheadLog(database.get(), file, patience);
    run(database.get(), "PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON");
    addCatalogue(database.get());
    return database;
}

} // namespace

SqliteConnection::SqliteConnection(const std::string &file, std::chrono::milliseconds patience)
    : file_(file), database_(openConnection(file, patience)), identity_(identityOf(file)),
      transaction_(database_.get(), patience) {
    sqlite3_set_authorizer(database_.get(), note, &actions_);
}

bool SqliteConnection::recycle() noexcept {
    try {
        transaction_.rollback();
        sqlite3_set_last_insert_rowid(database_.get(), 0);
        return !altered_;
    } catch (...) {
        return false;
    }
}

bool SqliteConnection::alive() noexcept {
    return identityOf(file_) == identity_;
}

// Prepares the one statement that the text may hold. The text's terminator is handed over too, which saves a copy.
OwnedStatement SqliteConnection::compile(std::string_view sql) {
    sqlite3_stmt *raw = nullptr;
    const char *rest = nullptr;
    actions_ = {};
    const int result = sqlite3_prepare_v3(database_.get(), sql.data(), static_cast<int>(sql.size()) + 1,
                                          SQLITE_PREPARE_PERSISTENT, &raw, &rest);
    altered_ = altered_ || actions_.alterConnection;
    if (result != SQLITE_OK)
        fail(database_.get());
    OwnedStatement statement(raw);
    if (actions_.endTransactions && sqlite3_stmt_isexplain(raw) == 0)
        refuse(SQLITE_MISUSE, firstWord(sql) +
                                  " cannot be run as a statement: transactions begin by themselves and end by the "
                                  "connection's commit and rollback");
    const std::string_view tail = statementIn({rest, static_cast<size_t>(sql.data() + sql.size() - rest)});
    if (statement == nullptr || !tail.empty())
        refuse(SQLITE_ERROR, "a text must hold one statement; here a second one, or none, begins with: " +
                                 std::string(tail.substr(0, 40)));
    return statement;
}

std::unique_ptr<Statement> SqliteConnection::prepare(const std::string &sql) {
    const std::string_view text = statementIn(sql);
    if (text.empty())
        refuse(SQLITE_ERROR, "the text holds no statement");
    OwnedStatement statement = statements_.take(sql);
    if (statement == nullptr)
        statement = compile(text);
    return std::make_unique<SqliteStatement>(transaction_, statements_, sql, roleOf(firstWord(text)),
                                             std::move(statement));
}

} // namespace ormel::client::sqlite
