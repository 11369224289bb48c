#include "statement.h"

#include <algorithm>
#include <utility>

#include "error.h"
#include "pipeline.h"

namespace ormel::client::postgres {

namespace {

constexpr uint32_t kRowsOnTheWay = 1000;   // of a batch, before the server is asked how they fared
constexpr size_t kStepBytes = 1024 * 1024; // about as much is fetched at a time
constexpr uint32_t kMostRowsOfStep = 1000;
constexpr uint32_t kMostRowsOfFetch = INT32_MAX; // that the server can be asked for

constexpr char kNotPrepared[] = "26000";

uint64_t affectedBy(const PGresult *result) {
    return std::strtoull(PQcmdTuples(const_cast<PGresult *>(result)), nullptr, 10);
}

// Whether an error may come from a description that the table has outgrown.
bool tellsOfOtherColumns(const Error &error) {
    return error.message.rfind("22", 0) == 0 || error.message.rfind("42", 0) == 0 ||
           error.message.rfind("0A000", 0) == 0;
}

// Whether a result has the columns that were described; values are read by their types.
bool hasColumns(const PGresult *result, const std::vector<std::pair<Oid, int>> &types) {
    if (static_cast<size_t>(PQnfields(result)) != types.size())
        return false;
    for (size_t i = 0; i < types.size(); ++i) {
        const auto column = static_cast<int>(i);
        if (types[i] != std::pair(PQftype(result, column), PQfmod(result, column)))
            return false;
    }
    return true;
}

Error inRow(size_t row, const Error &error) {
    return makeError(stateOf(error), "row " + std::to_string(row) + ": " + std::string(wordsIn(error)));
}

Arguments argumentsOf(const Batch &batch, uint32_t row, const std::vector<Oid> &types) {
    std::vector<Value> values;
    for (uint32_t column = 0; column < batch.columns(); ++column)
        values.push_back(batch.at(row, column));
    try {
        return Arguments(types, values);
    } catch (const Error &error) {
        throw inRow(row, error);
    }
}

// Rather no connection than one with a part of a batch.
void undoBatch(Session &session) noexcept {
    try {
        Pipeline pipeline(session, Pipeline::Begin::no);
        pipeline.run("ROLLBACK TO SAVEPOINT ormel_batch");
        pipeline.run("RELEASE SAVEPOINT ormel_batch");
        pipeline.finish();
    } catch (...) {
        session.abandon();
    }
}

} // namespace

PostgresStatement::~PostgresStatement() {
    close();
    if (isGone())
        return;
    if (stale_)
        connection_.drop(description_.name);
    else
        connection_.giveBack(std::move(sql_), std::move(description_));
}

void PostgresStatement::close() noexcept {
    rows_.reset();
    row_ = 0;
    more_ = false;
    if (!cursor_.empty() && transactionNumber_ == connection_.session().number())
        connection_.closeCursor(cursor_);
    cursor_.clear();
}

// Runs once more where the first run failed because of what has changed since the text was described, and where nothing
// but that run is lost by it.
uint64_t PostgresStatement::execute(const std::vector<Value> &values, uint32_t readAhead) {
    close();
    executed_ = false;
    if (stale_ || isGone())
        describeAnew();
    const bool first = !connection_.session().inTransaction();
    uint64_t affected = 0;
    try {
        affected = run(values, readAhead);
    } catch (const Error &error) {
        noteFailure(error);
        const bool outdated = stale_ || isGone();
        if (!outdated || !first || PQstatus(connection_.session().raw()) != CONNECTION_OK || !hasChanged())
            throw;
        affected = run(values, readAhead);
    }
    executed_ = true;
    fresh_ = false;
    return affected;
}

void PostgresStatement::noteFailure(const Error &error) {
    stale_ = !fresh_ && tellsOfOtherColumns(error);
    if (stateOf(error) == kNotPrepared && wordsIn(error).find(description_.name) != std::string_view::npos &&
        !isQuery())
        connection_.forgetPrepared();
}

// Returns whether anything has changed since the text was described.
bool PostgresStatement::describeAnew() {
    const bool gone = isGone();
    const Description before = std::exchange(description_, connection_.describe(sql_, isQuery()));
    if (!gone)
        connection_.drop(before.name);
    generation_ = connection_.generation();
    stale_ = false;
    return gone || !description_.isLike(before);
}

// For the question the transaction that failed has to end; a failed one takes its place where nothing has changed.
bool PostgresStatement::hasChanged() {
    Session &session = connection_.session();
    const bool failed = session.inTransaction();
    session.rollback();
    const bool changed = describeAnew();
    if (failed && !changed)
        session.failTransaction();
    return changed;
}

uint64_t PostgresStatement::run(const std::vector<Value> &values, uint32_t readAhead) {
    const Arguments arguments(description_.parameters, values);
    transactionNumber_ = connection_.session().number();
    if (!isQuery())
        return change(arguments);
    open(arguments, readAhead);
    return 0;
}

// A cursor, so that rows can be fetched in steps while other statements run.
void PostgresStatement::open(const Arguments &arguments, uint32_t readAhead) {
    std::string name = connection_.session().newName('c');
    const uint32_t rows = std::min(readAhead, kMostRowsOfFetch);
    Pipeline pipeline(connection_.session(), Pipeline::Begin::yes);
    pipeline.run("DECLARE " + name + " NO SCROLL CURSOR FOR " + sql_, arguments);
    pipeline.runForRows("FETCH FORWARD " + std::to_string(rows) + " FROM " + name, description_.binary);
    auto results = pipeline.finish();
    cursor_ = std::move(name);
    rows_ = std::move(results[1]);
    more_ = static_cast<uint32_t>(PQntuples(rows_.get())) == rows;
    if (hasColumns(rows_.get(), description_.types))
        return;
    // The table has changed since.
    if (description_.binary && !allInBinary(rows_.get())) {
        close();
        refuse("0A000", "the columns of the table have changed since the statement was prepared; prepare it again");
    }
    connection_.learnColumns(rows_.get(), description_);
}

uint64_t PostgresStatement::change(const Arguments &arguments) {
    const auto begin = role_ == Role::apart ? Pipeline::Begin::never : Pipeline::Begin::yes;
    Pipeline pipeline(connection_.session(), begin);
    pipeline.execute(description_.name, arguments, description_.binary && !description_.columns.empty());
    auto results = pipeline.finish();
    if (dropsPrepared(sql_))
        connection_.forgetPrepared();
    if (!description_.columns.empty())
        rows_ = std::move(results[0]);
    return description_.columns.empty() ? affectedBy(results[0].get()) : 0;
}

uint64_t PostgresStatement::executeBatch(const Batch &batch) {
    close();
    executed_ = false;
    if (!description_.columns.empty() || isQuery())
        refuse("0A000", "a statement that gives rows cannot run for a set of parameter rows");
    if (stale_ || isGone())
        describeAnew();
    transactionNumber_ = connection_.session().number();
    connection_.session().later("SAVEPOINT ormel_batch"); // travels with the first rows
    uint64_t affected = 0;
    try {
        for (uint32_t first = 0; first < batch.rows(); first += kRowsOnTheWay)
            affected += sendRows(batch, first, std::min(kRowsOnTheWay, batch.rows() - first));
        connection_.session().later("RELEASE SAVEPOINT ormel_batch");
    } catch (const Error &error) {
        noteFailure(error);
        leaveBatch();
        throw;
    } catch (...) {
        leaveBatch();
        throw;
    }
    executed_ = true;
    fresh_ = false;
    return affected;
}

// A row that the server refused has failed the transaction; one that was never sent has not.
void PostgresStatement::leaveBatch() noexcept {
    if (PQtransactionStatus(connection_.session().raw()) == PQTRANS_INTRANS)
        undoBatch(connection_.session());
}

// Sends some rows of a batch on one way.
uint64_t PostgresStatement::sendRows(const Batch &batch, uint32_t first, uint32_t count) {
    Pipeline pipeline(connection_.session(), Pipeline::Begin::yes);
    for (uint32_t row = first; row < first + count; ++row)
        pipeline.execute(description_.name, argumentsOf(batch, row, description_.parameters), false);
    size_t failed = count; // none: the connection broke
    try {
        uint64_t affected = 0;
        for (const OwnedResult &result : pipeline.finish(&failed))
            affected += affectedBy(result.get());
        return affected;
    } catch (const Error &error) {
        if (failed == count)
            throw;
        throw inRow(first + failed, error);
    }
}

// As many rows as come to about the size of a step, by the size of those before.
uint32_t PostgresStatement::nextStep() const {
    const int rows = PQntuples(rows_.get());
    if (rows == 0)
        return 1;
    const size_t average = PQresultMemorySize(rows_.get()) / static_cast<size_t>(rows) + 1;
    return static_cast<uint32_t>(std::clamp<size_t>(kStepBytes / average, 1, kMostRowsOfStep));
}

void PostgresStatement::read(uint32_t rows) {
    Pipeline pipeline(connection_.session(), Pipeline::Begin::no);
    pipeline.runForRows("FETCH FORWARD " + std::to_string(rows) + " FROM " + cursor_, description_.binary);
    auto results = pipeline.finish();
    rows_ = std::move(results[0]);
    row_ = 0;
    more_ = static_cast<uint32_t>(PQntuples(rows_.get())) == rows;
}

bool PostgresStatement::fetch(RowBuffer &rows) {
    if (rows_ == nullptr)
        return false;
    if (row_ == PQntuples(rows_.get()) && more_)
        read(nextStep());
    if (row_ == PQntuples(rows_.get())) {
        close();
        return false;
    }
    connection_.session().noteMessage(appendRow(rows_.get(), row_, description_.columns, rows));
    ++row_;
    return true;
}

} // namespace ormel::client::postgres
