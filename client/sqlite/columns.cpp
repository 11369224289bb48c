#include "columns.h"

#include <new>

#include "sql_text.h"
#include "types.h"

namespace ormel::client::sqlite {

namespace {

// Whether every value of the result is a value of a table's row: what stands in parentheses (an aggregate, a selection
// within the selection), an outer join or a union can give NULL where no row has it.
bool readsPlainRows(std::string_view sql) {
    return sql.find('(') == std::string_view::npos && !hasWord(sql, "JOIN") && !hasWord(sql, "UNION");
}

// A table that the text does not name stands behind a view, which may join or unite.
bool takesNull(sqlite3_stmt *statement, int index, std::string_view sql) {
    const char *table = sqlite3_column_table_name(statement, index);
    if (table == nullptr || !hasWord(sql, table))
        return true;
    int notNull = 0;
    const int found = sqlite3_table_column_metadata(
        sqlite3_db_handle(statement), sqlite3_column_database_name(statement, index), table,
        sqlite3_column_origin_name(statement, index), nullptr, nullptr, &notNull, nullptr, nullptr);
    return found != SQLITE_OK || notNull == 0;
}

// By its declaration, of which a table's column may have none; an expression by its value.
ColumnType typeOf(sqlite3_stmt *statement, int index) {
    const char *declared = sqlite3_column_decltype(statement, index);
    if (declared != nullptr)
        return typeOf(parseDeclaration(declared));
    const bool known = sqlite3_column_origin_name(statement, index) == nullptr && sqlite3_data_count(statement) > 0;
    return typeOfValue(known ? sqlite3_column_type(statement, index) : SQLITE_NULL);
}

Column describe(sqlite3_stmt *statement, int index, std::string_view sql, bool plainRows) {
    const char *name = sqlite3_column_name(statement, index);
    if (name == nullptr)
        throw std::bad_alloc();
    const ColumnType type = typeOf(statement, index);
    return {upperCase(name), type.type,  type.size,
            type.precision,  type.scale, !plainRows || takesNull(statement, index, sql)};
}

} // namespace

std::vector<Column> describeColumns(sqlite3_stmt *statement, std::string_view sql) {
    std::vector<Column> columns;
    const int count = sqlite3_column_count(statement);
    columns.reserve(static_cast<size_t>(count));
    const bool plainRows = readsPlainRows(sql);
    for (int i = 0; i < count; ++i)
        columns.push_back(describe(statement, i, sql, plainRows));
    return columns;
}

} // namespace ormel::client::sqlite
