// What the database says of a table's columns.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <ormeldb.h>

#include "session.h"

namespace cli {

// Throws UsageError for a name that the library would not carry whole into a statement.
void checkTableName(const std::string &table);

// A table's descriptor, given back at the end.
class Layout {
public:
    // Throws Failure, with the database's words, where the table cannot be described.
    Layout(const Session &session, const std::string &table);

    const std::string &table() const { return table_; }
    ORMEL_RES_ATT *descriptor() const { return descriptor_.get(); }
    std::span<const ORMEL_RES_ATT_FIELD> columns() const;

    // The position of a column, whatever the case of its name. Throws UsageError.
    uint8_t position(const std::string &column) const;
    size_t recordLength() const;

    // The type of a column as the table declares it, where the catalogue knows it, else as the client reports it.
    std::string typeName(size_t position) const;
    bool isNumber(size_t position) const;

    // Writes a value into a field of a record or into the value of a condition. Throws ValueError.
    void parse(size_t position, std::string_view text, std::span<uint8_t> field) const;

    // The names of the large-object columns with commas between them; empty where there are none.
    std::string largeObjects() const;

    // Throws Failure where a record of the table does not fit into a record buffer.
    void checkRecordFits() const;

private:
    struct GiveBack {
        void operator()(ORMEL_RES_ATT *descriptor) const { ORMEL_DestoryResAtt(descriptor); }
    };

    uint32_t type(size_t position) const { return static_cast<uint32_t>(columns()[position].atttypid); }
    bool isDecimal(size_t position) const;

    std::string table_;
    std::unique_ptr<ORMEL_RES_ATT, GiveBack> descriptor_;
    std::map<std::string, std::string> declared_; // types by column
};

// A block of records of one table.
class Records {
public:
    // Room for some records, all zeros. The layout's records fit into a record buffer.
    Records(const Layout &layout, size_t count);
    Records(const Records &) = delete;
    Records &operator=(const Records &) = delete;

    ORMEL_RECORD_BUFFER *buffer() { return &buffer_; }
    std::span<uint8_t> field(size_t record, const ORMEL_RES_ATT_FIELD &column);

private:
    size_t length_;
    std::vector<uint8_t> bytes_;
    ORMEL_RECORD_BUFFER buffer_{};
};

} // namespace cli
