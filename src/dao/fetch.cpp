#include <cstdlib>
#include <cstring>

#include "dao/lob.h"
#include "dao/owners.h"
#include "dao/qdc.h"
#include "log/log.h"
#include "ormeldb/platform/opbbase.h"

using ormel::Result;

namespace {

constexpr char kLogFile[] = "ormel_dao";
constexpr uint32_t kLocatorSize = 44;       // the client's size of a large object whose length it does not know
constexpr uint32_t kUnknownLobSize = 65535; // the block that such a one is read into

bool isText(uint16_t type) {
    return type == QDC_TYPE_CHAR || type == QDC_TYPE_VARCHAR || type == QDC_TYPE_TEXT;
}

bool isLob(uint16_t type) {
    return type == QDC_TYPE_CLOB || type == QDC_TYPE_BLOB;
}

// Gives the cell a zeroed block for a value of size bytes; text counts its terminator, a CLOB has it past its length.
bool allocate(DB_FIELD &field, uint32_t size) {
    const size_t length = size_t{size} + (isText(field.usType) ? 1 : 0);
    const size_t block = length + (field.usType == QDC_TYPE_CLOB ? 1 : 0);
    if (length > UINT32_MAX)
        return false;
    field.pValue = std::calloc(block > 0 ? block : 1, 1);
    field.uiLength = static_cast<uint32_t>(length);
    return field.pValue != nullptr;
}

// Copies one column of the current row into a cell that holds nothing.
bool readCell(const char *func, void *stmt, uint32_t column, bool debug, DB_FIELD &field) {
    void *data = nullptr;
    uint32_t size = 0;
    uint32_t isNull = 0;
    qdc_get_column_by_id(stmt, column, &data, &size, &isNull);
    if (debug)
        ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "get data  datasize:%d isnull:%d", static_cast<int>(size),
                     static_cast<int>(isNull));
    if (dbGetFieldAttr(stmt, column, &field) != 0)
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "dbGetFieldAttr :%d failed", static_cast<int>(column));
    if (isNull != 0) {
        if (debug)
            ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "get data  field:%s is NULL ", field.acName);
        field.uiLength = 0;
        return true;
    }
    if (isLob(field.usType) && size == kLocatorSize)
        size = kUnknownLobSize;
    if (!allocate(field, size))
        return false;
    if (isLob(field.usType))
        return ormel::readLob(func, stmt, data, size, field);
    if (size > 0 && memcpy_s(field.pValue, field.uiLength, data, size) != 0)
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "copy data failed");
    dbValueShow(field.usType, field.pValue, size);
    return true;
}

// A result whose rows are counted from the start on, so that clearing it frees all of them whatever happens half way.
Result rowsOf(const char *func, void *stmt, const char *table, uint32_t rows) {
    uint32_t columns = 0;
    if (qdc_get_column_count(stmt, &columns) != 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_get_column_count :%s failed", table);
        return nullptr;
    }
    if (columns == 0) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "qdc_get_column_count :%s failed, count = 0", table);
        return nullptr;
    }
    Result res(dbMallocResult(rows, columns));
    if (res == nullptr) {
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "dbMallocResult :%s failed", table);
        return nullptr;
    }
    res->uiRowCount = rows;
    res->uiFieldCount = columns;
    return res;
}

// A result without rows.
DB_RESULT *noRows() {
    return static_cast<DB_RESULT *>(std::calloc(1, sizeof(DB_RESULT)));
}

// Goes to the next row, which will be row `current` of the result; false at the end.
bool next(const char *func, void *stmt, uint32_t current) {
    const uint32_t fetched = dbMoveNext(stmt);
    if (fetched != 0)
        ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "dbMoveNext fetch  row:%d curRow:%d ", static_cast<int>(fetched),
                     static_cast<int>(current));
    return fetched != 0;
}

// Copies the row that the statement stands on into row `current` of the result.
bool copyRow(const char *func, void *stmt, const char *table, DB_RESULT &res, uint32_t current) {
    if (dbGetFields(stmt, res.ppRows[current], res.uiFieldCount) == ORMEL_OK)
        return true;
    ORMEL_LOG_AS(func, KPL_LOG_ERROR, "dbGetFields :%s failed", table);
    return false;
}

// Leaves the first count rows in a result and frees the others.
void shorten(DB_RESULT &res, uint32_t count) {
    for (uint32_t row = count; row < res.uiRowCount; ++row)
        std::free(res.ppRows[row]);
    res.uiRowCount = count;
}

} // namespace

uint32_t dbGetFieldAttr(void *pStmt, uint32_t uiPos, DB_FIELD *pstField) {
    if (pStmt == nullptr || pstField == nullptr)
        return ORMEL_ERR_NULL_ARG;
    QDC_COLUMN_DESC desc = {};
    const uint32_t status = qdc_desc_column_by_id(pStmt, uiPos, &desc);
    if (status != 0)
        return status;
    const char *name = desc.pcName != nullptr ? desc.pcName : "";
    std::memset(pstField->acName, 0, sizeof pstField->acName);
    if (strcpy_s(pstField->acName, sizeof pstField->acName, name) != 0)
        ORMEL_LOG(KPL_LOG_ERROR, "dbGetFieldAttr strcpy_s eok");
    pstField->uiColumnId = uiPos;
    pstField->usType = desc.usType;
    pstField->usReserved = 0;
    pstField->uiIsType4 = desc.usType == 4 ? 1 : 0;
    pstField->uiLength = desc.usSize;
    ORMEL_LOG(KPL_LOG_DEBUG, "dbGetFieldAttr desc fieldname :%s  type:%d size:%d desc.name:%s ", pstField->acName,
              desc.usType, desc.usSize, name);
    return 0;
}

uint32_t dbMoveNext(void *pStmt) {
    uint32_t rows = 0;
    if (pStmt == nullptr || qdc_fetch(pStmt, &rows) != 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_fetch failed");
        return 0;
    }
    if (rows != 0)
        ORMEL_LOG(KPL_LOG_DEBUG, "qdc_fetch row:%d", static_cast<int>(rows));
    return rows;
}

uint32_t dbGetFields(void *pStmt, DB_FIELD *pstFields, uint32_t uiFieldCount) {
    if (pstFields == nullptr || pStmt == nullptr)
        return ORMEL_ERR_NULL_ARG;
    // What the cells pointed at is not ours: they may come from a block that was never cleared.
    for (uint32_t i = 0; i < uiFieldCount; ++i)
        pstFields[i].pValue = nullptr;
    const bool debug = ormel::logs(KPL_LOG_DEBUG);
    for (uint32_t i = 0; i < uiFieldCount; ++i)
        if (!readCell(__func__, pStmt, i, debug, pstFields[i])) {
            dbFieldClear(pstFields, uiFieldCount);
            return ORMEL_INVALID;
        }
    return ORMEL_OK;
}

DB_RESULT *dbGetResult(void *pStmt, const char *pcTableName) {
    if (pStmt == nullptr)
        return nullptr;
    const char *table = pcTableName != nullptr ? pcTableName : "";
    const uint32_t rows = qdc_get_affected_rows(pStmt);
    if (rows == 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_get_affected_rows :%s , rowCount = 0", table);
        return noRows();
    }
    Result res = rowsOf(__func__, pStmt, table, rows);
    if (res == nullptr)
        return nullptr;
    uint32_t current = 0;
    while (next(__func__, pStmt, current)) {
        if (current >= PREFETCH_ROWS || current >= rows) {
            ORMEL_LOG(KPL_LOG_INFO, "dbGetFields :%s get curRow(%d) > PREFETCH_ROWS or rowCount:%d", table,
                      static_cast<int>(current), static_cast<int>(rows));
            break;
        }
        if (!copyRow(__func__, pStmt, table, *res, current))
            return nullptr;
        ++current;
    }
    // The count stays what the client announced; rows that never came are empty.
    if (current != rows)
        ORMEL_LOG(KPL_LOG_INFO, "dbGetResult  rowCount:%d  curRow:%d", static_cast<int>(rows),
                  static_cast<int>(current));
    return res.release();
}

DB_RESULT *dbGetResultWithCount(void *pStmt, const char *pcTableName, uint32_t uiCount) {
    if (pStmt == nullptr)
        return nullptr;
    const char *table = pcTableName != nullptr ? pcTableName : "";
    if (uiCount == 0) {
        ORMEL_LOG(KPL_LOG_ERROR, "qdc_get_affected_rows :%s , rowCount = 0", table);
        return noRows();
    }
    Result res = rowsOf(__func__, pStmt, table, uiCount);
    if (res == nullptr)
        return nullptr;
    uint32_t current = 0;
    while (next(__func__, pStmt, current)) {
        if (!copyRow(__func__, pStmt, table, *res, current))
            return nullptr;
        if (++current == uiCount) {
            ORMEL_LOG(KPL_LOG_INFO, "dbGetFields :%s get curRow > rowCount", table);
            return res.release();
        }
    }
    ORMEL_LOG(KPL_LOG_INFO, "dbGetResult  rowCount:%d  curRow:%d", static_cast<int>(uiCount),
              static_cast<int>(current));
    shorten(*res, current);
    return res.release();
}
