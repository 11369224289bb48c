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
#include "table.h"

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

    // The position of a column, whatever the case of its name, and the positions of several, each of which is named
    // once. Throw UsageError.
    size_t find(const std::string &column) const;
    std::vector<size_t> positions(const std::vector<std::string> &columns) const;

    // The position of a column as the one byte that names it in conditions and assignments of records. Throws
    // UsageError.
    uint8_t position(const std::string &column) const;
    size_t recordLength() const;

    uint32_t type(size_t position) const { return static_cast<uint32_t>(columns()[position].atttypid); }

    // The type of a column as the table declares it, where the catalogue knows it, else as the client reports it.
    std::string typeName(size_t position) const;
    bool isNumber(size_t position) const;

    // Whether the catalogue knows the column without a type: an expression of a view, for one.
    bool isUndeclared(size_t position) const;

    // The column at the head of a table.
    Heading heading(size_t position) const;

    // Writes a value into a field of a record or into the value of a condition, or gives its bytes as a request object
    // takes them. Throw ValueError.
    void parse(size_t position, std::string_view text, std::span<uint8_t> field) const;
    std::string encode(size_t position, std::string_view text) const;

    // The names of the large-object columns with commas between them; empty where there are none.
    std::string largeObjects() const;

    // Throws ValueError where bytes as they stand are no value of the column.
    void checkBytes(size_t position, std::string_view bytes) const;

    // Throws Failure where a record of the table does not fit into a record buffer.
    void checkRecordFits() const;

private:
    struct GiveBack {
        void operator()(ORMEL_RES_ATT *descriptor) const { ORMEL_DestoryResAtt(descriptor); }
    };

    bool isDecimal(size_t position) const;
    std::string_view sent(size_t position, std::string_view text) const;

    std::string table_;
    std::string engine_;
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
