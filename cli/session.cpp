#include "session.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <ormeldb/platform/liblog.h>
#include <sys/stat.h>
#include <unistd.h>

#include "home.h"
#include "password.h"

namespace cli {
namespace {

// Away from the numbers that servers take, so that the tool never writes into a server's log file.
constexpr int32_t kLogSlot = 900;

// The embedded engine's last words on a commit that it may still find on the disk.
constexpr const char *kLook = "look before repeating it";

constexpr const char *kWait = "another process is at work in it: try again when it is done";

// What the engines say where another one is in the way. Without a class, the low byte of the number tells.
struct Busy {
    const char *state;
    uint32_t code;
};
constexpr Busy kBusy[] = {{"", 5}, {"", 6}, {"55P03", 0}, {"40P01", 0}, {"40001", 0}};

// The library tells the reason of an unreadable file to the log alone.
void checkConfiguration() {
    const std::string file = homeFile("conf/db.conf");
    struct stat status {};
    if (stat(file.c_str(), &status) != 0 || access(file.c_str(), R_OK) != 0)
        throw Failure("cannot read the configuration " + file + ": " + std::strerror(errno) +
                      "; put the file in order, or make a new home with: ormel new DIR");
    if (!S_ISREG(status.st_mode))
        throw Failure("the configuration " + file +
                      " is not a regular file; put the file in order, or make a new home with: ormel new DIR");
}

Failure startFailure() {
    if (!isPasswordKnown())
        return passwordFailure();
    return Failure("the library refuses the configuration " + homeFile("conf/db.conf") + "; the reason stands in " +
                   logFile());
}

// What to do when there is no connection, by the class of SQLSTATE; an embedded database has none.
std::string connectRemedy() {
    const ORMEL_ERROR error = lastError();
    if (error.acClass[0] == '\0')
        return "correct that file, or make what it names; its paths begin in " + homeFile("bin");
    const std::string state = error.acClass;
    if (state.rfind("28", 0) == 0)
        return "correct db.user in that file, or the password in " + homeFile("conf/db.password");
    if (state == "3D000")
        return "correct db.dbname in that file, or make the database on the server";
    if (state == "53300")
        return "try again when others have gone, or let the server take more: max_connections in its configuration, or "
               "the CONNECTION LIMIT of the user or the database";
    if (std::strstr(error.acText, "certificate") != nullptr)
        return "see that auth.sslrootcert in that file is the authority of the server's certificate, which has to be "
               "made out to db.host";
    return "see that the server runs, and correct that file where its settings are not the server's";
}

} // namespace

Session::Started::Started() {
    checkConfiguration();
    g_frame_slot_id = kLogSlot;
    KPL_LogInit();
    ORMEL_ResAttMgrInit();
}

Session::Started::~Started() {
    ORMEL_UnInit();
}

Session::Session() : connection_(nullptr) {
    if (ORMEL_TransMgrInit() != ORMEL_OK)
        throw startFailure();
    connection_ = ORMEL_DBConnect();
    if (connection_ == nullptr)
        throw databaseFailure("cannot open the database that " + homeFile("conf/db.conf") + " names", connectRemedy());
}

Session::~Session() {
    ORMEL_DBDisConnect(connection_);
}

void Session::commit() {
    if (dbCommitTrans(connection_) == ORMEL_OK)
        return;
    dbPrintError(connection_);
    if (!isOutcomeUnknown())
        throw databaseFailure("the database refused the commit, nothing was changed");
    const bool saysWhatToDo = std::strstr(lastError().acText, kLook) != nullptr;
    throw databaseFailure("the commit failed, and whether anything was changed is not known",
                          saysWhatToDo ? "" : kLook);
}

bool isOutcomeUnknown() {
    const ORMEL_ERROR error = lastError();
    return std::strcmp(error.acClass, "08007") == 0 || std::strstr(error.acText, kLook) != nullptr;
}

ORMEL_ERROR lastError() {
    ORMEL_ERROR error{};
    ORMEL_LastError(&error);
    return error;
}

bool isBusy() {
    const ORMEL_ERROR error = lastError();
    const uint32_t code = error.acClass[0] == '\0' ? error.uiCode & 0xFF : 0;
    return std::any_of(std::begin(kBusy), std::end(kBusy), [&](const Busy &busy) {
        return busy.code == code && std::strcmp(busy.state, error.acClass) == 0;
    });
}

Failure failureInWords(const std::string &what, const std::string &words, const std::string &remedy) {
    if (words.empty())
        return Failure(what + "; the reason stands in " + logFile());
    const std::string advice = isBusy() ? kWait : remedy;
    return Failure(what + ": " + words + (advice.empty() ? "" : "; ") + advice);
}

Failure databaseFailure(const std::string &what, const std::string &remedy) {
    return failureInWords(what, lastError().acText, remedy);
}

Failure connectionFailure(void *connection, const std::string &what) {
    dbPrintError(connection);
    return databaseFailure(what);
}

Transaction::Transaction() : slot_(ORMEL_StartTrans(__func__, __LINE__)) {
    if (slot_ == nullptr)
        throw databaseFailure("cannot begin a transaction");
}

Transaction::~Transaction() {
    if (slot_ != nullptr)
        ORMEL_RollbackTrans(slot_);
}

void Transaction::commit() {
    ORMEL_TRANS *slot = slot_;
    slot_ = nullptr;
    if (ORMEL_CommitTrans(slot) != ORMEL_OK)
        throw databaseFailure("the database refused the commit");
}

} // namespace cli
