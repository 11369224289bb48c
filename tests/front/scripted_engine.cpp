// An engine whose statements say what it is to do, and which writes down what it was asked.
//
//   rows N          a query of N rows: a number from 0 and a large text
//   rows N broken K ... whose row K fails after its text was appended
//   change N        a write that matches N rows
//   log             a query of what was asked since the last such query, in one text
//   throw WHAT      fails to prepare; "later throw WHAT" fails to run. WHAT: error, memory, standard or number
//   refuse END      prepares, and makes the next commit or rollback (END) fail
#include <new>
#include <sstream>
#include <stdexcept>

#include "engine.h"

namespace {

using namespace ormel::client;

std::string &diary() {
    static std::string text;
    return text;
}

void note(const std::string &what) {
    diary() += what + ";";
}

void raise(const std::string &what) {
    if (what == "error")
        throw Error{77, "words of the engine"};
    if (what == "memory")
        throw std::bad_alloc();
    if (what == "standard")
        throw std::runtime_error("not for the border");
    if (what == "number")
        throw 7;
}

class ScriptedStatement : public Statement {
public:
    explicit ScriptedStatement(const std::string &sql) : words_(sql) {
        words_ >> verb_ >> count_;
        if (verb_ == "rows")
            columns_ = {{"N", 1, 4, 0, 0, false}, {"BIG", 13, 44, 0, 0, true}};
        else if (verb_ == "log")
            columns_ = {{"LOG", 13, 44, 0, 0, false}};
        std::string broken;
        if (!(words_ >> broken >> brokenRow_))
            brokenRow_ = UINT64_MAX;
    }
    ~ScriptedStatement() override {
        if (verb_ != "log")
            note("~statement");
    }

    uint64_t execute(const std::vector<Value> &values, uint32_t readAhead) override {
        if (verb_ == "log") {
            text_ = std::move(diary());
            diary().clear();
            next_ = 0;
            count_ = 1;
            return 0;
        }
        note("execute " + std::to_string(values.size()) + " " + std::to_string(readAhead));
        raise(verb_ == "later" ? sqlTail() : "");
        next_ = 0;
        return verb_ == "change" ? count_ : 0;
    }

    uint64_t executeBatch(const Batch &batch) override {
        note("batch " + std::to_string(batch.rows()) + "x" + std::to_string(batch.columns()));
        raise(verb_ == "later" ? sqlTail() : "");
        return batch.rows();
    }

    const std::vector<Column> &columns() const override { return columns_; }

    bool fetch(RowBuffer &rows) override {
        if (verb_ == "rows")
            note("fetch");
        if (next_ == count_)
            return false;
        if (verb_ == "log") {
            rows.appendBytes(text_.data(), text_.size());
        } else {
            rows.appendInt32(static_cast<int32_t>(next_));
            rows.appendBytes(std::string(20000, static_cast<char>('a' + next_ % 26)).data(), 20000);
            if (next_ == brokenRow_) {
                ++next_;
                throw Error{78, "a broken row"};
            }
        }
        ++next_;
        rows.endRow();
        return true;
    }

    void close() noexcept override {
        if (verb_ != "log")
            note("close");
    }

private:
    // What follows "later throw".
    std::string sqlTail() const { return words_.str().substr(std::string("later throw ").size()); }

    std::istringstream words_;
    std::string verb_;
    uint64_t count_ = 0;
    uint64_t brokenRow_ = UINT64_MAX;
    uint64_t next_ = 0;
    std::string text_;
    std::vector<Column> columns_;
};

class ScriptedConnection : public Connection {
public:
    explicit ScriptedConnection(const Settings &settings) {
        note("connect " + settings.host + "|" + settings.port + "|" + settings.user + "|" + settings.password + "|" +
             std::to_string(settings.sslMode) + "|" + settings.get("extra", "none"));
    }
    ~ScriptedConnection() override { note("~connection"); }

    std::unique_ptr<Statement> prepare(const std::string &sql) override {
        if (sql.rfind("throw ", 0) == 0)
            raise(sql.substr(6));
        if (sql.rfind("refuse ", 0) == 0)
            refused_ = sql.substr(7);
        if (sql != "log")
            note("prepare " + sql);
        return std::make_unique<ScriptedStatement>(sql);
    }
    void begin() override { note("begin"); }
    void commit() override { end("commit"); }
    void rollback() override { end("rollback"); }

private:
    void end(const std::string &how) const {
        note(how);
        if (how == refused_)
            throw Error{79, how + " refused"};
    }

    std::string refused_;
};

class ScriptedEngine : public Engine {
public:
    Dialect dialect() const override { return {'?', false, false, false, false, false}; }
    std::unique_ptr<Connection> connect(const Settings &settings) override {
        raise(settings.get("throw", ""));
        return std::make_unique<ScriptedConnection>(settings);
    }
};

} // namespace

extern "C" __attribute__((visibility("default"))) Engine *ormel_engine() {
    static ScriptedEngine engine;
    return &engine;
}
