#include "statement.h"

#include <array>

#include <ormeldb/qdc.h>

#include "session.h"
#include "value.h"

namespace cli {

Statement::Statement(void *connection) : connection_(connection), handle_(dbCreateStmt(connection)) {
    if (handle_ == nullptr)
        fail("cannot make a statement");
}

Statement::~Statement() {
    dbFreeStmt(handle_);
}

void Statement::execute(const std::string &text) {
    check(qdc_prepare(handle_, text.c_str()), "the database refuses the statement");
    check(qdc_execute(handle_), "the statement failed");
}

std::vector<Column> Statement::columns() {
    uint32_t count = 0;
    check(qdc_get_column_count(handle_, &count), "cannot count the columns");
    std::vector<Column> result;
    for (uint32_t i = 0; i < count; ++i) {
        QDC_COLUMN_DESC description{};
        check(qdc_desc_column_by_id(handle_, i, &description), "cannot describe the columns");
        result.push_back({description.pcName, description.usType});
    }
    return result;
}

bool Statement::fetch() {
    uint32_t fetched = 0;
    check(qdc_fetch(handle_, &fetched), "cannot read the next row");
    return fetched != 0;
}

std::string Statement::value(uint32_t position, uint32_t type) {
    void *data = nullptr;
    uint32_t size = 0;
    uint32_t isNull = 0;
    check(qdc_get_column_by_id(handle_, position, &data, &size, &isNull), "cannot read a value");
    if (isNull != 0)
        return "NULL";
    if (isLargeObject(type))
        return formatValue(type, readLargeObject(type, data));
    return formatValue(type, {static_cast<const uint8_t *>(data), size});
}

uint32_t Statement::affectedRows() {
    return qdc_get_affected_rows(handle_);
}

std::vector<uint8_t> Statement::readLargeObject(uint32_t type, void *locator) {
    std::vector<uint8_t> bytes;
    std::array<uint8_t, 8192> chunk{};
    for (uint32_t end = 0; end == 0;) {
        uint32_t characters = 0;
        uint32_t size = 0;
        const auto offset = static_cast<uint32_t>(bytes.size());
        check(type == QDC_TYPE_CLOB
                  ? qdc_read_clob(handle_, locator, offset, chunk.data(), chunk.size(), &characters, &size, &end)
                  : qdc_read_blob(handle_, locator, offset, chunk.data(), chunk.size(), &size, &end),
              "cannot read a large object");
        bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + size);
        if (size == 0)
            break;
    }
    return bytes;
}

void Statement::check(uint32_t status, const char *what) {
    if (status != ORMEL_OK)
        fail(what);
}

void Statement::fail(const char *what) {
    throw connectionFailure(connection_, what);
}

} // namespace cli
