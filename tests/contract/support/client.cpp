#include "support/client.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace contract {

namespace {

template <class T> T load(const void *data, uint32_t size) {
    if (size != sizeof(T))
        throw ClientError("a number came with " + std::to_string(size) + " bytes");
    T value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

std::string decimal(double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

} // namespace

Connection::Connection() {
    if (qdc_alloc_conn(&handle_) != 0)
        throw ClientError("no connection handle");
}

Connection::Connection(const Target &target) : Connection() {
    if (connect(target) != 0)
        throw ClientError("connect: " + error());
}

Connection::~Connection() {
    qdc_disconnect(handle_);
    qdc_free_conn(handle_);
}

void Connection::begin() {
    const uint32_t zero = 0;
    if (qdc_set_conn_attr(handle_, QDC_ATTR_TRANS, &zero, sizeof zero) != 0)
        throw ClientError("begin: " + error());
}

void Connection::commit() {
    if (qdc_commit(handle_) != 0)
        throw ClientError("commit: " + error());
}

void Connection::rollback() {
    if (qdc_rollback(handle_) != 0)
        throw ClientError("rollback: " + error());
}

std::string Connection::error() const {
    uint32_t code = 0;
    const char *message = nullptr;
    if (qdc_get_error(handle_, &code, &message) != 0 || message == nullptr)
        throw ClientError("no error text");
    return message;
}

uint32_t Connection::errorCode() const {
    uint32_t code = 0;
    const char *message = nullptr;
    if (qdc_get_error(handle_, &code, &message) != 0)
        throw ClientError("no error code");
    return code;
}

std::string Connection::refusal(const std::string &sql) {
    Statement statement(*this);
    if (qdc_prepare(statement, sql.c_str()) == 0 && qdc_execute(statement) == 0)
        throw ClientError("ran, and should not have: " + sql);
    return error();
}

Statement::Statement(Connection &connection) : connection_(connection) {
    must(qdc_alloc_stmt(connection_, &handle_), "statement handle");
}

Statement::Statement(Connection &connection, const std::string &sql) : Statement(connection) {
    prepare(sql);
}

Statement::~Statement() {
    qdc_free_stmt(handle_);
}

void Statement::must(uint32_t status, const std::string &what) const {
    if (status != 0)
        throw ClientError(what + ": " + connection_.error());
}

void Statement::readAhead(uint32_t rows) {
    // The library hands the number over with the length 0.
    must(qdc_set_stmt_attr(handle_, QDC_ATTR_PREFETCH, &rows, 0), "read-ahead");
}

void Statement::bind(uint32_t position, uint32_t type, const void *data, size_t length, const uint16_t *lengths) {
    must(qdc_bind_by_pos(handle_, position, type, const_cast<void *>(data), static_cast<uint32_t>(length),
                         const_cast<uint16_t *>(lengths)),
         "bind");
}

void Statement::bindCopy(uint32_t position, uint32_t type, const void *data, size_t length) {
    const std::string &copy =
        length == 0 ? kept_.emplace_back() : kept_.emplace_back(static_cast<const char *>(data), length);
    bind(position, type, copy.data(), length);
}

void Statement::setLob(uint32_t position, uint32_t type, std::optional<std::string_view> bytes) {
    const std::string &slot = kept_.emplace_back(16, '\0');
    bind(position, type, slot.data(), slot.size());
    if (!bytes)
        return;
    const std::string &copy = kept_.emplace_back(*bytes);
    const auto length = static_cast<uint32_t>(copy.size());
    uint32_t written = 0;
    if (type == kClob)
        must(qdc_write_clob(handle_, position, copy.data(), length, &written), "write text");
    else
        must(qdc_write_blob(handle_, position, copy.data(), length), "write bytes");
}

uint32_t Statement::execute() {
    must(qdc_execute(handle_), "execute");
    return qdc_get_affected_rows(handle_);
}

bool Statement::fetch() {
    uint32_t rows = 77;
    must(qdc_fetch(handle_, &rows), "fetch");
    if (rows > 1)
        throw ClientError("a fetch gave " + std::to_string(rows) + " rows");
    return rows == 1;
}

Value Statement::value(uint32_t column) {
    const QDC_COLUMN_DESC description = describe(column);
    void *data = nullptr;
    uint32_t size = 77;
    uint32_t isNull = 77;
    must(qdc_get_column_by_id(handle_, column, &data, &size, &isNull), "column");
    if (isNull == 1)
        return std::nullopt;
    switch (description.usType) {
    case kInteger:
    case kBoolean:
        return std::to_string(load<int32_t>(data, size));
    case kBigint:
        return std::to_string(load<int64_t>(data, size));
    case kReal:
        return decimal(load<double>(data, size));
    case kClob:
    case kBlob:
        return readLob(description.usType, data);
    default:
        return std::string(static_cast<const char *>(data), size);
    }
}

Row Statement::row() {
    Row values;
    for (uint32_t column = 0; column < columns(); ++column)
        values.push_back(value(column));
    return values;
}

Rows Statement::rest() {
    Rows rows;
    while (fetch())
        rows.push_back(row());
    return rows;
}

uint32_t Statement::columns() {
    uint32_t count = 0;
    must(qdc_get_column_count(handle_, &count), "column count");
    return count;
}

QDC_COLUMN_DESC Statement::describe(uint32_t column) {
    QDC_COLUMN_DESC description = {};
    must(qdc_desc_column_by_id(handle_, column, &description), "description");
    return description;
}

QDC_COLUMN_DESC Statement::describe(const std::string &name) {
    QDC_COLUMN_DESC description = {};
    must(qdc_desc_column_by_name(handle_, name.c_str(), &description), "description of " + name);
    return description;
}

std::string Statement::readLob(uint32_t type, void *locator, uint32_t chunkSize) {
    std::string whole;
    std::string chunk(chunkSize, '\0');
    for (uint32_t ended = 0; ended == 0;) {
        uint32_t characters = 0;
        uint32_t bytes = 0;
        const auto offset = static_cast<uint32_t>(whole.size());
        must(type == kClob
                 ? qdc_read_clob(handle_, locator, offset, chunk.data(), chunkSize, &characters, &bytes, &ended)
                 : qdc_read_blob(handle_, locator, offset, chunk.data(), chunkSize, &bytes, &ended),
             "read of a large object");
        if (bytes == 0 && ended == 0)
            throw ClientError("a read gave neither bytes nor the end");
        whole.append(chunk, 0, bytes);
    }
    return whole;
}

} // namespace contract
