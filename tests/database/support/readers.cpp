#include "support/readers.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>

#include "support/database.h"

namespace database {

namespace {

size_t recordLength(const std::vector<Column> &columns) {
    size_t length = 0;
    for (const Column &column : columns)
        length += column.kind.width;
    return length;
}

// A record's fields.
Row fieldsOf(const std::string &record, const std::vector<Column> &columns) {
    Row row;
    size_t offset = 0;
    for (const Column &column : columns) {
        row.emplace_back(record.substr(offset, column.kind.width));
        offset += column.kind.width;
    }
    return row;
}

// The value of a cell; of a text without its terminator, which must be there.
Cell cellOf(const ORMEL_SELECT_RESULT *result, uint32_t row, int32_t position, const Column &column) {
    const auto *value = static_cast<const char *>(ORMEL_ResultGetFieldValue(result, row, position));
    const uint32_t length = ORMEL_ResultGetFieldLengthByPos(result, row, position);
    if (value == nullptr) {
        EXPECT_EQ(length, 0U);
        return std::nullopt;
    }
    if (!column.kind.text())
        return std::string(value, length);
    EXPECT_GT(length, 0U);
    EXPECT_EQ(value[length - 1], '\0');
    return std::string(value, length - 1);
}

// The name in the other case.
std::string swapped(std::string name) {
    for (char &c : name)
        c = static_cast<char>(std::isupper(static_cast<unsigned char>(c)) != 0 ? std::tolower(c) : std::toupper(c));
    return name;
}

bool isNumber(const Column &column) {
    const uint32_t type = column.kind.type;
    return type == QDC_TYPE_INT32 || type == QDC_TYPE_BOOL || type == QDC_TYPE_INT64 || type == QDC_TYPE_DOUBLE;
}

// The same cell by name.
void expectByName(const ORMEL_SELECT_RESULT *result, uint32_t row, int32_t position, const Column &column,
                  const Cell &cell) {
    const std::string name = swapped(column.name);
    EXPECT_EQ(ORMEL_ResultBinaryGet(result, row, name.c_str()), ORMEL_ResultGetFieldValue(result, row, position));
    EXPECT_EQ(ORMEL_ResultGetFieldLength(result, row, name.c_str()),
              ORMEL_ResultGetFieldLengthByPos(result, row, position));
    EXPECT_EQ(ORMEL_ResultGetFieldOffset(result, position), column.kind.width);
    if (!cell || !isNumber(column))
        return;
    std::string number(column.kind.width, '\xEE');
    EXPECT_EQ(ORMEL_ResultNumberGet(result, row, name.c_str(), number.data(), column.kind.type), ORMEL_OK);
    EXPECT_EQ(number, cell);
}

// A row of a result, whose descriptor describes its columns where it is reduced to them.
Row rowOf(const ORMEL_SELECT_RESULT *result, uint32_t row, const std::vector<Column> &columns, bool described) {
    Row cells;
    EXPECT_EQ(ORMEL_ResultGetFieldNum(result), columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
        SCOPED_TRACE(columns[i].name);
        const auto position = static_cast<int32_t>(i);
        EXPECT_EQ(ORMEL_ResultGetFieldType(result, position), columns[i].kind.type);
        cells.push_back(cellOf(result, row, position, columns[i]));
        if (described)
            expectByName(result, row, position, columns[i], cells.back());
    }
    return cells;
}

// The first field, which is the key, as the only condition.
struct KeyCondition {
    explicit KeyCondition(const std::string &key)
        : bytes(sizeof(ORMEL_COND) + sizeof(ORMEL_COND_ITEM)), get(reinterpret_cast<ORMEL_COND *>(bytes.data())) {
        get->usCondNum = 1;
        std::memcpy(get->astCond[0].aucValue, key.data(), key.size());
    }
    std::vector<uint8_t> bytes;
    ORMEL_COND *get;
};

Rows readOneByOne(const Table &table, const Request &) {
    Rows rows;
    for (const Row &row : table.rows) {
        Records record(recordLength(table.columns));
        const KeyCondition key(*row[0]);
        EXPECT_EQ(ORMEL_SelectRec(table.name.c_str(), key.get, 0, record), ORMEL_OK);
        EXPECT_EQ(record->usRecNum, 1U);
        rows.push_back(fieldsOf(record.record(0), table.columns));
    }
    return rows;
}

void append(Rows &rows, ORMEL_SELECT_RESULT *result, const std::vector<Column> &columns, bool described = true) {
    for (uint32_t row = 0; row < ORMEL_SelectResultRecNumGet(result); ++row)
        rows.push_back(rowOf(result, row, columns, described));
}

Rows readResult(const Table &table, const Request &) {
    Rows rows;
    Result result;
    EXPECT_EQ(ORMEL_SelectRec2(table.name.c_str(), nullptr, 0, result), ORMEL_OK);
    append(rows, result, table.columns);
    return rows;
}

// Reads page after page until one is not full; read(object) returns the rows of one.
template <class Read> Rows readPages(const Table &table, const Request &request, Read read) {
    Object object(table.name);
    for (size_t i = 0; !request.whole && i < request.fields.size(); ++i) {
        const std::string &name = table.columns[request.fields[i]].name;
        EXPECT_EQ(ORMEL_ObjectSelectFieldSet(object, swapped(name).c_str()), ORMEL_OK);
    }
    Rows rows;
    for (uint32_t offset = 0;; offset += request.page) {
        ORMEL_ObjectSelectRowCountSet(object, request.page, request.page, offset);
        const Rows page = read(object);
        rows.insert(rows.end(), page.begin(), page.end());
        if (request.page == 0 || page.size() < request.page)
            return rows;
    }
}

Rows readObject(const Table &table, const Request &request) {
    return readPages(table, request, [&](ORMEL_OBJECT *object) {
        Rows rows;
        Result result;
        EXPECT_EQ(ORMEL_SelectRecByObj(object, result), ORMEL_OK);
        append(rows, result, request.columns(table));
        return rows;
    });
}

Rows readCounted(const Table &table, const Request &request) {
    return readPages(table, request, [&](ORMEL_OBJECT *object) {
        Rows rows;
        Result result;
        EXPECT_EQ(ORMEL_SelectBatchRecByObj(object, result), ORMEL_OK);
        append(rows, result, request.columns(table), request.whole);
        return rows;
    });
}

// One half of a result after the other, as records.
Rows readConverted(const Table &table, const Request &request) {
    const std::vector<Column> columns = request.columns(table);
    return readPages(table, request, [&](ORMEL_OBJECT *object) {
        Rows rows;
        Result result;
        EXPECT_EQ(ORMEL_SelectRecByObj(object, result), ORMEL_OK);
        const uint32_t half = result->uiRecNum / 2;
        for (const auto &[start, end] : {std::pair(0U, half), std::pair(half, result->uiRecNum)}) {
            if (start == end)
                continue;
            Records records(recordLength(columns), end - start);
            EXPECT_EQ(ORMEL_ResultConvertDsBuf(result, records, start), ORMEL_OK);
            for (uint32_t i = 0; i < end - start; ++i)
                rows.push_back(fieldsOf(records.record(i), columns));
        }
        return rows;
    });
}

// Rows of a cursor, one at a time, as records or as results.
Rows fetchRecords(const Cursor &cursor, const std::vector<Column> &columns) {
    Rows rows;
    for (;;) {
        Records record(recordLength(columns));
        const uint32_t code = ORMEL_FetchSelectRec(cursor, record);
        EXPECT_EQ(record->usRecNum, code == ORMEL_OK ? 1U : 0U);
        if (code != ORMEL_OK) {
            EXPECT_EQ(code, ORMEL_END_OF_DATA);
            return rows;
        }
        rows.push_back(fieldsOf(record.record(0), columns));
    }
}

Rows fetchResults(const Cursor &cursor, const std::vector<Column> &columns) {
    Rows rows;
    for (;;) {
        CursorRow row;
        const uint32_t code = ORMEL_FetchSelectRecEx(cursor, row);
        EXPECT_EQ(row->uiRecNum, code == ORMEL_OK ? 1U : 0U);
        if (code != ORMEL_OK) {
            EXPECT_EQ(code, ORMEL_END_OF_DATA);
            return rows;
        }
        append(rows, row, columns);
    }
}

using Fetch = Rows (*)(const Cursor &cursor, const std::vector<Column> &columns);

template <Fetch fetch> Rows readCursor(const Table &table, const Request &) {
    Cursor cursor(table.name);
    const Rows rows = fetch(cursor, table.columns);
    EXPECT_EQ(cursor.end(), ORMEL_OK);
    return rows;
}

template <Fetch fetch> Rows readObjectCursor(const Table &table, const Request &request) {
    return readPages(table, request, [&](ORMEL_OBJECT *object) {
        Cursor cursor(object);
        const Rows rows = fetch(cursor, request.columns(table));
        EXPECT_EQ(cursor.end(), ORMEL_OK);
        return rows;
    });
}

} // namespace

std::vector<Column> Request::columns(const Table &table) const {
    if (whole)
        return table.columns;
    std::vector<Column> columns;
    for (const size_t field : fields)
        columns.push_back(table.columns[field]);
    return columns;
}

const std::vector<Reader> &readers() {
    static const std::vector<Reader> all = {
        {"ORMEL_SelectRec", Form::prefix, false, readOneByOne},
        {"ORMEL_SelectRec2", Form::value, false, readResult},
        {"ORMEL_SelectRecByObj", Form::value, true, readObject},
        {"ORMEL_SelectBatchRecByObj", Form::value, true, readCounted},
        {"ORMEL_ResultConvertDsBuf", Form::field, true, readConverted},
        {"ORMEL_BeginSelect, ORMEL_FetchSelectRec", Form::prefix, false, readCursor<fetchRecords>},
        {"ORMEL_BeginSelect, ORMEL_FetchSelectRecEx", Form::value, false, readCursor<fetchResults>},
        {"ORMEL_BeginSelectSpecifyField, ORMEL_FetchSelectRec", Form::prefix, true, readObjectCursor<fetchRecords>},
        {"ORMEL_BeginSelectSpecifyField, ORMEL_FetchSelectRecEx", Form::value, true, readObjectCursor<fetchResults>},
    };
    return all;
}

bool carries(Form form, const std::vector<Column> &columns, size_t i) {
    if (form == Form::value)
        return true;
    const auto large = [](const Column &column) { return column.kind.large(); };
    const auto here = columns.begin() + static_cast<std::ptrdiff_t>(i);
    return !large(*here) && (form == Form::field || std::none_of(columns.begin(), here, large));
}

Cell expected(Form form, const Column &column, const Cell &cell) {
    return form == Form::value ? cell : fieldOf(column, cell);
}

} // namespace database
