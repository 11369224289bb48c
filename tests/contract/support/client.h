// The client's handles with owners, for tests.
//
// What a test is about it calls as qdc_..., with an owner as the handle; what only leads there it leaves to the
// members, which throw the client's own words where a call fails.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <ormeldb/qdc.h>

namespace contract {

// What the library calls the types.
enum Type : uint32_t {
    kInteger = 1,
    kBigint = 2,
    kReal = 3,
    kChar = 8,
    kVarchar = 9,
    kText = 10,
    kBinary = 11,
    kVarbinary = 12,
    kClob = 13,
    kBlob = 14,
    kBoolean = 25,
};

// Where and as whom to connect.
struct Target {
    std::string address;
    std::string user;
    std::string password;
};

// A value: NULL, or a number in decimal, or text and bytes as they came.
using Value = std::optional<std::string>;
using Row = std::vector<Value>;
using Rows = std::vector<Row>;

class ClientError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Connection {
public:
    Connection();                              // not open
    explicit Connection(const Target &target); // open
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    operator void *() const { return handle_; }

    uint32_t connect(const Target &target) {
        return qdc_connect(handle_, target.address.c_str(), target.user.c_str(), target.password.c_str());
    }
    void begin();
    void commit();
    void rollback();
    std::string error() const;
    uint32_t errorCode() const;

    // Runs a statement with these values and returns its affected rows.
    template <class... Values> uint32_t run(const std::string &sql, const Values &...values);
    // Runs a query and returns its rows.
    template <class... Values> Rows rows(const std::string &sql, const Values &...values);
    // The error of a statement that must not run.
    std::string refusal(const std::string &sql);

private:
    void *handle_ = nullptr;
};

class Statement {
public:
    explicit Statement(Connection &connection);                // not prepared
    Statement(Connection &connection, const std::string &sql); // prepared
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    operator void *() const { return handle_; }

    void prepare(const std::string &sql) { must(qdc_prepare(handle_, sql.c_str()), sql); }
    void readAhead(uint32_t rows);
    void rows(uint32_t count) { must(qdc_set_paramset_size(handle_, count), "set of rows"); }

    // Binds the caller's memory.
    void bind(uint32_t position, uint32_t type, const void *data, size_t length, const uint16_t *lengths = nullptr);
    // Binds a copy that lives as long as the statement.
    void set(uint32_t position, int32_t value) { bindCopy(position, kInteger, &value, sizeof value); }
    void set(uint32_t position, int64_t value) { bindCopy(position, kBigint, &value, sizeof value); }
    void set(uint32_t position, double value) { bindCopy(position, kReal, &value, sizeof value); }
    void set(uint32_t position, std::string_view text) { setBytes(position, kVarchar, text); }
    void set(uint32_t position, const std::string &text) { setBytes(position, kVarchar, text); }
    void set(uint32_t position, const char *text) { setBytes(position, kVarchar, text); }
    void set(uint32_t position, std::nullopt_t) { bind(position, kVarchar, nullptr, 0); }
    void setBytes(uint32_t position, uint32_t type, std::string_view bytes) {
        bindCopy(position, type, bytes.data(), bytes.size());
    }
    // A large object: its slot, and its value unless there is none.
    void setLob(uint32_t position, uint32_t type, std::optional<std::string_view> bytes);

    uint32_t execute();
    bool fetch();
    // Of the current row.
    Value value(uint32_t column);
    Row row();
    // The rows that are left.
    Rows rest();

    uint32_t columns();
    QDC_COLUMN_DESC describe(uint32_t column);
    QDC_COLUMN_DESC describe(const std::string &name);
    // A large object in the chunks that the library reads.
    std::string readLob(uint32_t type, void *locator, uint32_t chunkSize = 1000);

private:
    void must(uint32_t status, const std::string &what) const;
    void bindCopy(uint32_t position, uint32_t type, const void *data, size_t length);

    Connection &connection_;
    void *handle_ = nullptr;
    std::deque<std::string> kept_;
};

template <class... Values> uint32_t Connection::run(const std::string &sql, const Values &...values) {
    Statement statement(*this, sql);
    uint32_t position = 0;
    (statement.set(position++, values), ...);
    return statement.execute();
}

template <class... Values> Rows Connection::rows(const std::string &sql, const Values &...values) {
    Statement statement(*this, sql);
    uint32_t position = 0;
    (statement.set(position++, values), ...);
    statement.execute();
    return statement.rest();
}

} // namespace contract
