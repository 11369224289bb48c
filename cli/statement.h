// One statement of the client interface: the access layer has none for SQL of one's own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cli {

struct Column {
    std::string name;
    uint32_t type;
};

// What it does throws Failure with the database's words.
class Statement {
public:
    explicit Statement(void *connection);
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    void execute(const std::string &text);

    // Empty where the statement gives no rows.
    std::vector<Column> columns();

    // The next row; false when there is none.
    bool fetch();

    // A value of the row, as people read it.
    std::string value(uint32_t position, uint32_t type);

    uint32_t affectedRows();

private:
    std::vector<uint8_t> readLargeObject(uint32_t type, void *locator);
    void check(uint32_t status, const char *what);
    [[noreturn]] void fail(const char *what);

    void *connection_;
    void *handle_;
};

} // namespace cli
