#include "pipeline.h"

#include <optional>
#include <utility>

#include "error.h"

namespace ormel::client::postgres {

namespace {

bool isSuccess(ExecStatusType status) {
    return status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK || status == PGRES_SINGLE_TUPLE;
}

} // namespace

Pipeline::Pipeline(Session &session, Begin begin) : session_(session) {
    const PGTransactionStatusType status = PQtransactionStatus(session.raw());
    if (PQenterPipelineMode(session.raw()) != 1) {
        done_ = true;
        session.failLost("the connection cannot be used");
    }
    try {
        this->begin(status, begin);
    } catch (...) {
        drain();
        throw;
    }
}

void Pipeline::begin(PGTransactionStatusType status, Begin begin) {
    if (begin == Begin::yes && status == PQTRANS_IDLE)
        send("BEGIN");
    // What waits would be refused, and says nothing to the caller.
    if (status == PQTRANS_INERROR || begin == Begin::never)
        return;
    for (const std::string &command : std::exchange(session_.later_, {}))
        send(command.c_str());
    before_ = commands_;
}

Pipeline::~Pipeline() {
    if (!done_)
        drain();
}

void Pipeline::sent(int accepted) {
    if (accepted != 1)
        session_.failLost("the command cannot be sent");
    ++commands_;
}

void Pipeline::send(const char *sql) {
    sent(PQsendQueryParams(session_.raw(), sql, 0, nullptr, nullptr, nullptr, nullptr, 0));
}

void Pipeline::run(const std::string &sql) {
    expect();
    send(sql.c_str());
}

void Pipeline::run(const std::string &sql, const Arguments &arguments) {
    expect();
    session_.noteMessage(arguments.size());
    sent(PQsendQueryParams(session_.raw(), sql.c_str(), arguments.count(), arguments.types(), arguments.values(),
                           arguments.lengths(), arguments.formats(), 0));
}

void Pipeline::runForRows(const std::string &sql, bool binary) {
    expect();
    sent(PQsendQueryParams(session_.raw(), sql.c_str(), 0, nullptr, nullptr, nullptr, nullptr, binary ? 1 : 0));
}

void Pipeline::prepare(const std::string &name, const std::string &sql) {
    expect();
    sent(PQsendPrepare(session_.raw(), name.c_str(), sql.c_str(), 0, nullptr));
}

void Pipeline::describe(const std::string &name) {
    expect();
    sent(PQsendDescribePrepared(session_.raw(), name.c_str()));
}

void Pipeline::execute(const std::string &name, const Arguments &arguments, bool binary) {
    expect();
    session_.noteMessage(arguments.size());
    sent(PQsendQueryPrepared(session_.raw(), name.c_str(), arguments.count(), arguments.values(), arguments.lengths(),
                             arguments.formats(), binary ? 1 : 0));
}

// The answer to one command.
OwnedResult Pipeline::next() {
    OwnedResult result(PQgetResult(session_.raw()));
    if (result == nullptr)
        session_.failLost("the connection broke");
    while (const OwnedResult rest{PQgetResult(session_.raw())})
        ;
    return result;
}

std::vector<OwnedResult> Pipeline::finish(size_t *failed) {
    if (PQpipelineSync(session_.raw()) != 1)
        session_.failLost("the commands cannot be sent");
    synced_ = true;
    std::optional<Error> error;
    size_t first = 0; // that failed
    for (size_t i = 0; i < commands_; ++i) {
        OwnedResult result = next();
        const ExecStatusType status = PQresultStatus(result.get());
        if (!error && !isSuccess(status)) {
            error =
                status == PGRES_EMPTY_QUERY ? makeError("42601", "the text holds no statement") : errorOf(result.get());
            first = i;
        }
        if (i >= before_)
            results_[i - before_] = std::move(result);
    }
    const OwnedResult end(PQgetResult(session_.raw())); // of the pipeline
    PQexitPipelineMode(session_.raw());
    done_ = true;
    const bool lost = PQstatus(session_.raw()) == CONNECTION_BAD;
    if (lost && (!error || error->message.starts_with(kNoState)))
        session_.failLost("the connection broke");
    if (error && !lost && first >= before_ && failed != nullptr)
        *failed = first - before_;
    if (error)
        throw *std::move(error);
    return std::move(results_);
}

// Takes what was sent and never asked for off the wire.
void Pipeline::drain() noexcept {
    PGconn *raw = session_.raw();
    if (!synced_ && PQpipelineSync(raw) != 1)
        session_.abandon(); // an answer would never come
    for (int empty = 0; empty < 2 && PQstatus(raw) == CONNECTION_OK;) {
        const OwnedResult result(PQgetResult(raw));
        empty = result == nullptr ? empty + 1 : 0;
        if (result != nullptr && PQresultStatus(result.get()) == PGRES_PIPELINE_SYNC)
            break;
    }
    PQexitPipelineMode(raw);
}

} // namespace ormel::client::postgres
