// The library as programs use it, started for each test, and owners for what it hands out.
//
// The tests run in the bin/ of a home, which tests/support/run_in_home.py makes. What they check in the database, and
// the tables that they need there, go past the library: over the database's own interface (engine.h). Statements are
// written in SQLite's words; types and quote(x) are put into those of the engine.
#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ormeldb.h>

#include "support/engine.h"

namespace database {

// Runs statements, each committed.
void execute(const std::string &sql);

// The first column of a query's rows, as text. NULL is empty; quote(x) tells the two apart.
std::vector<std::string> query(const std::string &sql);

// The library runs from the start of a test to its end, which must find every slot free.
class DatabaseTest : public testing::Test {
protected:
    DatabaseTest();
    ~DatabaseTest() override;

    // A new table, instead of any of that name. The columns stand as in CREATE TABLE.
    static void make(const std::string &table, const std::string &columns);

    // Stops the library, and starts it without what it knew of the tables.
    static void restart();
    // What was logged since the last call or the start of the process. Stops the library and starts it again.
    static std::string log();
};

// A request.
class Object {
public:
    explicit Object(const std::string &table) { ORMEL_ObjectNameSet(&object_, table.c_str()); }
    ~Object() { ORMEL_ObjectParaClear(&object_); }
    Object(const Object &) = delete;
    Object &operator=(const Object &) = delete;
    operator ORMEL_OBJECT *() { return &object_; }
    ORMEL_OBJECT *operator->() { return &object_; }
    // The item that was set last.
    ORMEL_OBJECT_ITEM &last() { return object_.astItem[object_.iItemNum - 1]; }

private:
    ORMEL_OBJECT object_ = {};
};

// Requests that are inserted together.
class Batch {
public:
    Batch(const std::string &table, size_t objects)
        : multi_(ORMEL_Multi_object_Init(table.c_str(), static_cast<int32_t>(objects))) {}
    ~Batch() { ORMEL_Multi_object_UnInit(multi_); }
    Batch(const Batch &) = delete;
    Batch &operator=(const Batch &) = delete;
    operator ORMEL_MULTI_OBJECT *() const { return multi_; }
    ORMEL_OBJECT *operator[](size_t row) const { return &multi_->astObject[row]; }

private:
    ORMEL_MULTI_OBJECT *multi_;
};

// The result of a select, or a row of a cursor.
template <void (*clear)(ORMEL_SELECT_RESULT *)> class ResultOwner {
public:
    ResultOwner() = default;
    ~ResultOwner() { clear(&result_); }
    ResultOwner(const ResultOwner &) = delete;
    ResultOwner &operator=(const ResultOwner &) = delete;
    operator ORMEL_SELECT_RESULT *() { return &result_; }
    ORMEL_SELECT_RESULT *operator->() { return &result_; }

private:
    ORMEL_SELECT_RESULT result_ = {};
};
using Result = ResultOwner<ORMEL_SelectResultClear>;
using CursorRow = ResultOwner<ORMEL_SelectResultClearForFetch>;

// A cursor, ended with its owner where it was not before.
class Cursor {
public:
    explicit Cursor(const std::string &table) : slot_(ORMEL_BeginSelect(table.c_str(), __func__, __LINE__)) {}
    explicit Cursor(ORMEL_OBJECT *object) : slot_(ORMEL_BeginSelectSpecifyField(object, __func__, __LINE__)) {}
    ~Cursor() {
        if (slot_ != nullptr)
            ORMEL_EndSelect(slot_);
    }
    Cursor(const Cursor &) = delete;
    Cursor &operator=(const Cursor &) = delete;
    operator ORMEL_TRANS *() const { return slot_; }
    uint32_t end() {
        const uint32_t code = ORMEL_EndSelect(slot_);
        slot_ = nullptr;
        return code;
    }

private:
    ORMEL_TRANS *slot_;
};

// A connection of the test's own.
class Connection {
public:
    Connection() : handle_(ORMEL_DBConnect()) {}
    ~Connection() { ORMEL_DBDisConnect(handle_); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    operator void *() const { return handle_; }

private:
    void *handle_;
};

// A transaction, rolled back with its owner where it was not committed.
class Transaction {
public:
    Transaction() : slot_(ORMEL_StartTrans(__func__, __LINE__)) {}
    ~Transaction() {
        if (slot_ != nullptr)
            ORMEL_RollbackTrans(slot_);
    }
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    operator ORMEL_TRANS *() const { return slot_; }
    uint32_t commit() { return end(ORMEL_CommitTrans); }
    uint32_t rollback() { return end(ORMEL_RollbackTrans); }

private:
    uint32_t end(uint32_t (*how)(ORMEL_TRANS *)) {
        const uint32_t code = how(slot_);
        slot_ = nullptr;
        return code;
    }

    ORMEL_TRANS *slot_;
};

// A caller's block for equally long records.
class Records {
public:
    explicit Records(size_t length, size_t count = 1) : Records(std::string(length * count, '\xEE'), count) {}
    // Filled with these.
    explicit Records(const std::string &bytes, size_t count = 1) : bytes_(bytes) {
        buffer_.usRecLen = static_cast<uint16_t>(count > 0 ? bytes.size() / count : 0);
        buffer_.usRecNum = static_cast<uint16_t>(count);
        buffer_.uiBufSize = static_cast<uint32_t>(bytes_.size());
        buffer_.pucData = reinterpret_cast<uint8_t *>(bytes_.data());
    }
    Records(const Records &) = delete;
    Records &operator=(const Records &) = delete;
    operator ORMEL_RECORD_BUFFER *() { return &buffer_; }
    ORMEL_RECORD_BUFFER *operator->() { return &buffer_; }
    std::string record(size_t index) const { return bytes_.substr(index * buffer_.usRecLen, buffer_.usRecLen); }

private:
    std::string bytes_;
    ORMEL_RECORD_BUFFER buffer_ = {};
};

} // namespace database
