// Commands that travel together.
#pragma once

#include <string>
#include <vector>

#include "session.h"
#include "values.h"

namespace ormel::client::postgres {

// Commands that are sent as one and answered as one; when one fails, those behind it are not run.
class Pipeline {
public:
    // A transaction, where none has begun; never: nor does what waits travel along, because the command must be alone.
    enum class Begin { no, yes, never };

    Pipeline(Session &session, Begin begin);
    ~Pipeline();
    Pipeline(const Pipeline &) = delete;
    Pipeline &operator=(const Pipeline &) = delete;

    void run(const std::string &sql);
    void run(const std::string &sql, const Arguments &arguments);
    // Rows come in binary form, or as text.
    void runForRows(const std::string &sql, bool binary);
    void prepare(const std::string &name, const std::string &sql);
    void describe(const std::string &name);
    void execute(const std::string &name, const Arguments &arguments, bool binary);

    // Waits for the answers, one for each command, and throws the Error of the first that failed. failed, if given,
    // receives its position.
    std::vector<OwnedResult> finish(size_t *failed = nullptr);

private:
    // Has a place for an answer before its command is sent: once it is, nothing must fail but the command itself.
    void expect() { results_.emplace_back(); }
    void sent(int accepted);
    void send(const char *sql);
    void begin(PGTransactionStatusType status, Begin begin);
    OwnedResult next();
    void drain() noexcept;

    Session &session_;
    std::vector<OwnedResult> results_;
    size_t before_ = 0;   // commands of the session's own
    size_t commands_ = 0; // all of them
    bool synced_ = false; // the end was sent
    bool done_ = false;
};

} // namespace ormel::client::postgres
