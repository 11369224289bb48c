#include "catalogue.h"

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "error.h"
#include "handles.h"
#include "sql_text.h"
#include "types.h"

namespace ormel::client::sqlite {

namespace {

struct CatalogueRow {
    std::string table;
    std::string column;
    std::string type;
    int length;
    int id;
};

struct Catalogue : sqlite3_vtab {
    explicit Catalogue(sqlite3 *of) : sqlite3_vtab{}, database(of) {}
    sqlite3 *database;
};

struct Cursor : sqlite3_vtab_cursor {
    Cursor() : sqlite3_vtab_cursor{} {}
    std::vector<CatalogueRow> rows;
    size_t at = 0;
};

// Runs a query and hands over each row; SQLite's answer where it cannot be read to its end.
template <class TakeRow> int forEachRow(sqlite3 *database, const char *sql, const std::string &value, TakeRow takeRow) {
    sqlite3_stmt *raw = nullptr;
    int result = sqlite3_prepare_v2(database, sql, -1, &raw, nullptr);
    const OwnedStatement statement(raw);
    if (result == SQLITE_OK)
        result = sqlite3_bind_text64(raw, 1, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8);
    if (result != SQLITE_OK)
        return result;
    while ((result = sqlite3_step(raw)) == SQLITE_ROW)
        takeRow(raw);
    return result == SQLITE_DONE ? SQLITE_OK : result;
}

// A column that holds a text always.
std::string textAt(sqlite3_stmt *statement, int column) {
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
    if (text == nullptr)
        throw std::bad_alloc();
    return text;
}

int addColumns(sqlite3 *database, const std::string &table, std::vector<CatalogueRow> &rows) {
    // Hidden columns (1) are not what "select *" gives; generated ones (2 and 3) are.
    const int result =
        forEachRow(database, "SELECT cid, name, type FROM pragma_table_xinfo(?1, 'main') WHERE hidden <> 1", table,
                   [&](sqlite3_stmt *column) {
                       const Declaration declaration = parseDeclaration(textAt(column, 2));
                       rows.push_back({upperCase(table), upperCase(textAt(column, 1)), declaration.name,
                                       typeOf(declaration).size, sqlite3_column_int(column, 0) + 1});
                   });
    // A view over something that is no more has no columns.
    return result == SQLITE_ERROR ? SQLITE_OK : result;
}

int load(sqlite3 *database, std::vector<CatalogueRow> &rows) {
    std::vector<std::string> tables;
    int result = forEachRow(
        database, "SELECT name FROM main.sqlite_schema WHERE type IN ('table', 'view') AND name NOT LIKE ?1 ESCAPE '!'",
        "sqlite!_%", [&](sqlite3_stmt *table) { tables.push_back(textAt(table, 0)); });
    for (size_t i = 0; i < tables.size() && result == SQLITE_OK; ++i)
        result = addColumns(database, tables[i], rows);
    return result;
}

// SQLite is C: no exception may pass it.
template <class Work> int guarded(Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return SQLITE_NOMEM;
    }
}

int connect(sqlite3 *database, void * /*context*/, int /*arguments*/, const char *const * /*texts*/,
            sqlite3_vtab **table, char ** /*error*/) {
    constexpr const char *shape = "CREATE TABLE user_tab_columns(TABLE_NAME VARCHAR(128), COLUMN_NAME VARCHAR(128), "
                                  "DATA_TYPE VARCHAR(128), DATA_LENGTH INTEGER, COLUMN_ID INTEGER)";
    return guarded([&] {
        const int result = sqlite3_declare_vtab(database, shape);
        if (result == SQLITE_OK)
            *table = new Catalogue(database);
        return result;
    });
}

int disconnect(sqlite3_vtab *table) {
    delete static_cast<Catalogue *>(table);
    return SQLITE_OK;
}

int plan(sqlite3_vtab * /*table*/, sqlite3_index_info *info) {
    info->estimatedCost = 1e6;
    return SQLITE_OK;
}

int open(sqlite3_vtab * /*table*/, sqlite3_vtab_cursor **cursor) {
    return guarded([&] {
        *cursor = new Cursor;
        return SQLITE_OK;
    });
}

int close(sqlite3_vtab_cursor *cursor) {
    delete static_cast<Cursor *>(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor *base, int /*index*/, const char * /*name*/, int /*arguments*/,
           sqlite3_value ** /*values*/) {
    return guarded([&] {
        auto *cursor = static_cast<Cursor *>(base);
        cursor->rows.clear();
        cursor->at = 0;
        return load(static_cast<Catalogue *>(base->pVtab)->database, cursor->rows);
    });
}

int next(sqlite3_vtab_cursor *cursor) {
    ++static_cast<Cursor *>(cursor)->at;
    return SQLITE_OK;
}

int atEnd(sqlite3_vtab_cursor *base) {
    const auto *cursor = static_cast<Cursor *>(base);
    return cursor->at >= cursor->rows.size() ? 1 : 0;
}

int column(sqlite3_vtab_cursor *base, sqlite3_context *context, int index) {
    const auto *cursor = static_cast<Cursor *>(base);
    const CatalogueRow &row = cursor->rows[cursor->at];
    const auto text = [&](const std::string &value) {
        sqlite3_result_text64(context, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8);
    };
    switch (index) {
    case 0:
        text(row.table);
        break;
    case 1:
        text(row.column);
        break;
    case 2:
        text(row.type);
        break;
    case 3:
        sqlite3_result_int(context, row.length);
        break;
    default:
        sqlite3_result_int(context, row.id);
        break;
    }
    return SQLITE_OK;
}

int rowId(sqlite3_vtab_cursor *cursor, sqlite3_int64 *id) {
    *id = static_cast<sqlite3_int64>(static_cast<Cursor *>(cursor)->at);
    return SQLITE_OK;
}

// Without xCreate there is one such table, which nobody can create or drop.
sqlite3_module catalogueModule() {
    sqlite3_module module = {};
    module.xConnect = connect;
    module.xDisconnect = disconnect;
    module.xBestIndex = plan;
    module.xOpen = open;
    module.xClose = close;
    module.xFilter = filter;
    module.xNext = next;
    module.xEof = atEnd;
    module.xColumn = column;
    module.xRowid = rowId;
    return module;
}

} // namespace

void addCatalogue(sqlite3 *database) {
    static const sqlite3_module module = catalogueModule();
    if (sqlite3_create_module(database, "user_tab_columns", &module, nullptr) != SQLITE_OK)
        fail(database);
}

} // namespace ormel::client::sqlite
