#include <cstring>

#include "log/log.h"
#include "ormeldb/dao.h"
#include "ormeldb/record.h"
#include "para/cell_integer.h"

namespace {

constexpr char kLogFile[] = "ormel_para";

// A cell of a result together with the place that it has in a record.
struct Value {
    const void *bytes;
    uint32_t length;
    uint32_t type;
    const ORMEL_RES_ATT_FIELD *field;
};

Value valueOf(const DB_RESULT *res, uint32_t row, int32_t column, const ORMEL_RES_ATT *att) {
    return {dbGetValueFromRes(res, row, column), dbGetLengthFromRes(res, row, column),
            dbGetTypeFromRes(res, row, column), &att->astField[column]};
}

// Columns of the result that the descriptor knows a place for.
int32_t columnsOf(const DB_RESULT *res, const ORMEL_RES_ATT *att) {
    const uint32_t columns = dbGetNfields(res);
    return static_cast<int64_t>(columns) < att->iAttNum ? static_cast<int32_t>(columns) : att->iAttNum;
}

// Stores a 4-byte integer, or leaves it out where the record ends before it.
void storeInteger(uint8_t *dest, uint32_t room, const Value &value) {
    if (room >= sizeof(int32_t))
        dbSetFieldValue(dest, ormel::CellInteger(value.bytes, value.length).bytes(), value.length, value.type);
}

bool isText(uint32_t type) {
    return type == QDC_TYPE_CHAR || type == QDC_TYPE_VARCHAR || type == QDC_TYPE_TEXT;
}

// Stores any other value, cut to its field and to the record's end.
void storeBytes(const char *func, uint8_t *dest, uint32_t room, const Value &value) {
    const auto width = static_cast<uint32_t>(value.field->len);
    const uint32_t length = value.length < width ? value.length : width;
    // A text that fills its field loses its terminator there, as records have it, and nothing else.
    const bool onlyTerminator = isText(value.type) && value.length == width + 1;
    const uint32_t stored = length < room ? length : room;
    if (stored < value.length && !(onlyTerminator && stored == width))
        ORMEL_LOG_AS(func, KPL_LOG_ERROR, "a value of %d bytes is cut to %d: column %s", static_cast<int>(value.length),
                     static_cast<int>(stored), value.field->attname);
    if (stored > 0)
        dbSetFieldValue(dest, value.bytes, stored, value.type);
}

// Stores a value at pos of a record; nothing is ever written past the record.
void store(const char *func, uint8_t *record, uint32_t recLen, uint64_t pos, const Value &value) {
    const uint32_t room = pos < recLen ? static_cast<uint32_t>(recLen - pos) : 0;
    uint8_t *dest = record + (room > 0 ? pos : 0);
    if (value.type == QDC_TYPE_INT32 || value.type == QDC_TYPE_BOOL)
        storeInteger(dest, room, value);
    else
        storeBytes(func, dest, room, value);
}

// Row `row` of the result as record `index`. With `guarded`, a value that would end past the record length counted
// from the block's start ends the row: the position counts over the whole block on purpose, so that only the first
// record is ever filled whole.
void writeRecord(const char *func, const ORMEL_RECORD_BUFFER &dsbuf, uint32_t index, const DB_RESULT *res, uint32_t row,
                 const ORMEL_RES_ATT *att, bool guarded) {
    const uint64_t start = uint64_t{index} * dsbuf.usRecLen;
    uint8_t *record = dsbuf.pucData + start;
    std::memset(record, 0, dsbuf.usRecLen);
    uint64_t pos = 0;
    for (int32_t column = 0; column < columnsOf(res, att); ++column) {
        const Value value = valueOf(res, row, column, att);
        if (guarded && dsbuf.usRecLen < start + pos + value.length) {
            ORMEL_LOG_AS(func, KPL_LOG_INFO, "WARN:ORMEL_CreatDsbufByRes usRecLen will overflow.");
            return;
        }
        store(func, record, dsbuf.usRecLen, pos, value);
        pos += static_cast<uint64_t>(value.field->len);
    }
}

} // namespace

uint32_t ORMEL_CreatDsbufByRes(ORMEL_RECORD_BUFFER *pstDsbuf, const DB_RESULT *pstRes, const ORMEL_RES_ATT *pstResAtt) {
    if (pstDsbuf == nullptr || pstRes == nullptr || pstResAtt == nullptr || pstDsbuf->pucData == nullptr)
        return ORMEL_OK;
    pstDsbuf->usRecNum = static_cast<uint16_t>(dbGetNtuples(pstRes));
    for (uint32_t row = 0; row < pstDsbuf->usRecNum; ++row) {
        if (pstDsbuf->uiBufSize < (uint64_t{row} + 1) * pstDsbuf->usRecLen) {
            ORMEL_LOG(KPL_LOG_INFO, "WARN:ORMEL_CreatDsbufByRes StdBuf will overflow.");
            return ORMEL_OK;
        }
        writeRecord(__func__, *pstDsbuf, row, pstRes, row, pstResAtt, true);
    }
    return ORMEL_OK;
}

uint32_t ORMEL_CreatDsbufRangeByRes(ORMEL_RECORD_BUFFER *pstDsbuf, uint32_t uiStartRow, const DB_RESULT *pstRes,
                                    const ORMEL_RES_ATT *pstResAtt) {
    if (pstDsbuf == nullptr || pstRes == nullptr || pstResAtt == nullptr ||
        uint64_t{pstDsbuf->usRecNum} + uiStartRow > dbGetNtuples(pstRes))
        return ORMEL_ERR_FAILED;
    if (pstDsbuf->usRecNum > 0 && pstDsbuf->pucData == nullptr)
        return ORMEL_ERR_FAILED;
    for (uint32_t k = 0; k < pstDsbuf->usRecNum; ++k)
        writeRecord(__func__, *pstDsbuf, k, pstRes, uiStartRow + k, pstResAtt, false);
    return ORMEL_OK;
}
