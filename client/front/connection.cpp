#include "connection.h"

#include <algorithm>

#include "config.h"
#include "engine_loader.h"
#include "errors.h"
#include "pool.h"

namespace ormel::client {

namespace {

constexpr uint32_t kStrictestSslMode = 4;

} // namespace

void ConnectionHandle::setSslMode(uint32_t mode) {
    if (mode > kStrictestSslMode)
        fail(kMisuse, "no SSL mode has the number " + std::to_string(mode));
    settings_.sslMode = mode;
}

void ConnectionHandle::connect(const char *address, const char *user, const char *password) {
    if (connection_ != nullptr)
        fail(kMisuse, "the connection is open already");
    settings_.config = readConfig();
    const std::string target = address;
    const size_t colon = target.rfind(':');
    settings_.host = target.substr(0, colon);
    settings_.port = colon == std::string::npos ? std::string() : target.substr(colon + 1);
    settings_.user = user != nullptr ? user : "";
    settings_.password = password != nullptr ? password : "";
    Engine &engine = loadEngine(settings_);
    dialect_ = engine.dialect();
    process_ = processNumber();
    connection_ = takeIdle(settings_);
    if (connection_ == nullptr)
        connection_ = engine.connect(settings_);
}

void ConnectionHandle::disconnect() noexcept {
    for (StatementHandle &statement : statements_)
        statement.drop();
    if (isInherited())
        leaveInherited(std::move(connection_));
    else if (connection_ != nullptr)
        keepIdle(settings_, std::move(connection_));
}

void ConnectionHandle::requireOwn() const {
    if (isInherited())
        fail(kMisuse,
             "the connection belongs to another process, whose child this one is: disconnect, and connect anew");
}

Connection &ConnectionHandle::open() const {
    if (connection_ == nullptr)
        fail(kMisuse, "the connection is not open");
    return *connection_;
}

StatementHandle &ConnectionHandle::addStatement() {
    open();
    return statements_.emplace_front(*this);
}

void ConnectionHandle::freeStatement(StatementHandle &statement) noexcept {
    statements_.remove_if([&](const StatementHandle &known) { return &known == &statement; });
}

void ConnectionHandle::cutStatements() noexcept {
    for (StatementHandle &statement : statements_)
        statement.cut();
}

void ConnectionHandle::commit() {
    Connection &connection = open();
    cutStatements();
    connection.commit();
}

void ConnectionHandle::rollback() {
    Connection &connection = open();
    cutStatements();
    connection.rollback();
}

void ConnectionHandle::setError(uint32_t code, std::string message) noexcept {
    errorCode_ = code;
    errorMessage_ = std::move(message);
    errorText_ = errorMessage_.c_str();
}

void ConnectionHandle::setError(uint32_t code, const char *constantText) noexcept {
    errorCode_ = code;
    errorText_ = constantText;
}

} // namespace ormel::client
