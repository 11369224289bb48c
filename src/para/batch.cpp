#include "ormeldb/batch.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <strings.h>

#include "log/log.h"
#include "ormeldb/platform/opbbase.h"

namespace {

constexpr char kLogFile[] = "ormel_para";
constexpr uint16_t kLob = 65535;     // the length of a row of a large-object column
constexpr uint16_t kNull = 65535;    // of any other column, a row without a value
constexpr uint16_t kLongest = 65534; // so of these no value is longer

// How a column's values lie in its block.
enum class Shape { other, four, eight, text, bytes, lob };

struct TypeShape {
    uint32_t type;
    Shape shape;
};
constexpr TypeShape kShapes[] = {
    {QDC_TYPE_INT32, Shape::four},   {QDC_TYPE_BOOL, Shape::four},    {QDC_TYPE_INT64, Shape::eight},
    {QDC_TYPE_DOUBLE, Shape::eight}, {QDC_TYPE_CHAR, Shape::text},    {QDC_TYPE_VARCHAR, Shape::text},
    {QDC_TYPE_TEXT, Shape::text},    {QDC_TYPE_BINARY, Shape::bytes}, {QDC_TYPE_VARBINARY, Shape::bytes},
    {QDC_TYPE_RAW, Shape::bytes},    {QDC_TYPE_CLOB, Shape::lob},     {QDC_TYPE_BLOB, Shape::lob},
};

Shape shapeOf(uint32_t type) {
    for (const TypeShape &known : kShapes)
        if (known.type == type)
            return known.shape;
    return Shape::other;
}

uint32_t widthOf(Shape shape, uint32_t maxlen) {
    switch (shape) {
    case Shape::four:
        return 4;
    case Shape::eight:
        return 8;
    case Shape::text:
    case Shape::bytes:
        return maxlen;
    default:
        return 0;
    }
}

// Sizes of a batch are counted in 32 bits, and one that does not fit ends the process.
int32_t sizeOf(int64_t count, int64_t width, int64_t header = 0) {
    int64_t size = 0;
    if (__builtin_mul_overflow(count, width, &size) || __builtin_add_overflow(size, header, &size) ||
        size > INT32_MAX || size < INT32_MIN)
        std::abort();
    return static_cast<int32_t>(size);
}

// A zeroed block for the rows of a column, there also when it holds nothing; false, with a line, when it cannot be had.
template <class T> bool allocate(T *&block, uint32_t rows, uint32_t width, const char *failure) {
    const auto size = static_cast<size_t>(sizeOf(rows, width));
    block = static_cast<T *>(std::calloc(size > 0 ? size : 1, 1));
    if (block == nullptr)
        ORMEL_LOG_AS("ORMEL_BatchInsert_Para_Malloc", KPL_LOG_ERROR, "%s", failure);
    return block != nullptr;
}

bool makeColumn(ORMEL_PARA_BATCH_ITEM &column, const ORMEL_RES_ATT_FIELD &entry, uint32_t rows) {
    const Shape shape = shapeOf(static_cast<uint32_t>(entry.atttypid));
    const uint32_t width = widthOf(shape, static_cast<uint32_t>(entry.attlen));
    if (!allocate(column.ind, rows, sizeof *column.ind, "Malloc pItem->ind failed."))
        return false;
    if (shape != Shape::lob) {
        if (!allocate(column.data, rows, width, "Malloc pItem->data failed."))
            return false;
    } else if (!allocate(column.lobArray, rows, sizeof *column.lobArray, "Malloc pItem->lobArray failed.") ||
               !allocate(column.lobLen, rows, sizeof *column.lobLen, "Malloc pItem->lobLen failed.")) {
        return false;
    }
    ORMEL_LOG_AS("ORMEL_BatchInsert_Para_Malloc", KPL_LOG_INFO,
                 "BatchInsert_Para_Malloc type:%d maxlen:%d datasize:%d.", entry.atttypid, entry.attlen,
                 sizeOf(rows, width));
    return true;
}

void freeColumn(ORMEL_PARA_BATCH_ITEM &column) {
    std::free(column.data);
    std::free(column.ind);
    std::free(static_cast<void *>(column.lobArray));
    std::free(column.lobLen);
    column = {};
}

struct FreeBatch {
    void operator()(ORMEL_PARA_BATCH *batch) const { ORMEL_BatchInsert_Para_Free(batch); }
};

// Whether the first object's items say what the columns are.
bool describesColumns(const ORMEL_MULTI_OBJECT &multi, int32_t columns) {
    if (columns > 0 && (multi.uiRecNum == 0 || columns > ORMEL_MAX_ITEMS || columns > multi.astObject[0].iItemNum))
        return false;
    for (int32_t k = 0; k < columns; ++k)
        if (multi.astObject[0].astItem[k].pstInfo == nullptr)
            return false;
    return true;
}

// --- filling -----------------------------------------------------------------------------------------------------

uint32_t refuse(uint32_t code, uint32_t row, const char *column, const char *why) {
    ORMEL_LOG_AS("ORMEL_SetBatchParaByObject", KPL_LOG_ERROR, "row %d, column %s: %s", static_cast<int>(row), column,
                 why);
    return code;
}

bool isSameColumn(const ORMEL_RES_ATT_FIELD &a, const ORMEL_RES_ATT_FIELD &b) {
    return a.atttypid == b.atttypid && a.attlen == b.attlen && strcasecmp(a.attname, b.attname) == 0;
}

// Whether item k of a row is one that the column which the first row's item makes can take.
uint32_t checkItem(const ORMEL_OBJECT_ITEM &item, const ORMEL_OBJECT_ITEM &first, uint32_t row) {
    if (item.pstInfo == nullptr) // the first row's item is checked before the others are compared with it
        return refuse(ORMEL_ERR_CHECK, row, "?", "the object was not checked");
    const ORMEL_RES_ATT_FIELD &entry = *item.pstInfo;
    if (item.pstInfo != first.pstInfo && !isSameColumn(entry, *first.pstInfo))
        return refuse(ORMEL_ERR_CHECK, row, entry.attname, "the first object has another column at this place");
    const Shape shape = shapeOf(static_cast<uint32_t>(entry.atttypid));
    const auto size = static_cast<uint32_t>(entry.attlen);
    if ((shape == Shape::four || shape == Shape::eight) && size != widthOf(shape, size))
        return refuse(ORMEL_ERR_CHECK, row, entry.attname, "the database describes another size than the type has");
    if (item.uiLength > kLongest && shape != Shape::lob)
        return refuse(ORMEL_ERR_CHECK, row, entry.attname, "the value has more than 65534 bytes");
    return ORMEL_OK;
}

uint32_t checkObjects(const ORMEL_PARA_BATCH &batch, const ORMEL_MULTI_OBJECT &multi) {
    const ORMEL_OBJECT &first = multi.astObject[0];
    if (first.iItemNum < 0 || first.iItemNum > ORMEL_MAX_ITEMS || first.iItemNum > batch.itemNum)
        return refuse(ORMEL_ERR_FAILED, 0, "?", "the batch was not made for as many columns");
    if (multi.uiRecNum > batch.uiRecNum)
        return refuse(ORMEL_ERR_FAILED, batch.uiRecNum, "?", "the batch was not made for as many rows");
    for (uint32_t row = 0; row < multi.uiRecNum; ++row) {
        const ORMEL_OBJECT &obj = multi.astObject[row];
        if (obj.iItemNum != first.iItemNum)
            return refuse(ORMEL_ERR_CHECK, row, "?", "the first object has another number of columns");
        for (int32_t k = 0; k < obj.iItemNum; ++k)
            if (const uint32_t code = checkItem(obj.astItem[k], first.astItem[k], row); code != ORMEL_OK)
                return code;
    }
    return ORMEL_OK;
}

void setItem(ORMEL_PARA_BATCH_ITEM &column, const ORMEL_OBJECT_ITEM &item, uint32_t row, uint32_t rows) {
    const auto type = static_cast<uint32_t>(item.pstInfo->atttypid);
    column.type = type;
    column.maxlen = static_cast<uint32_t>(item.pstInfo->attlen);
    column.recIndex = row;
    column.arrlen = rows;
    // A large object without a value is told by the column's own address from one that nobody supplied: the rows behind
    // it are written.
    const bool noValue = item.pValue == nullptr && item.uiLength == 0;
    void *lob = noValue ? &column : item.pValue;
    ORMEL_SetBatchParaData(&column, item.pValue, item.uiLength, type, row);
    ORMEL_SetBatchParaLobData(&column, lob, item.uiLength, type, row);
    ORMEL_LOG_AS("ORMEL_SetBatchParaByObject", KPL_LOG_INFO, "SetPara type:%d maxlen:%d recIndex:%d.",
                 static_cast<int>(type), static_cast<int>(column.maxlen), static_cast<int>(row));
}

// Copies a value into its element; what does not fit leaves the element empty and keeps its length, which the database
// then refuses.
void setElement(ORMEL_PARA_BATCH_ITEM &column, Shape shape, const void *value, uint32_t length, uint32_t row) {
    auto *element = static_cast<uint8_t *>(column.data) + size_t{row} * widthOf(shape, column.maxlen);
    const auto shown = static_cast<uint16_t>(std::min<uint32_t>(length, kLongest));
    constexpr char func[] = "ORMEL_SetBatchParaData";
    if (shape == Shape::four || shape == Shape::eight) {
        const auto width = static_cast<uint16_t>(widthOf(shape, 0));
        memcpy_s(element, width, value, length);
        column.ind[row] = width;
    } else if (shape == Shape::text) {
        if (strncpy_s(reinterpret_cast<char *>(element), column.maxlen, static_cast<const char *>(value), length) != 0)
            ORMEL_LOG_AS(func, KPL_LOG_INFO, "ORMEL_SetBatchParaData strncpy_s error.");
        column.ind[row] = shown;
    } else {
        if (memcpy_s(element, column.maxlen, value, length) != 0)
            ORMEL_LOG_AS(func, KPL_LOG_INFO, "ORMEL_SetBatchParaData memcpy_s error.");
        column.ind[row] = shown;
    }
}

bool hasRow(const ORMEL_PARA_BATCH_ITEM *column, uint32_t row) {
    return column != nullptr && (column->arrlen == 0 || row < column->arrlen);
}

} // namespace

ORMEL_PARA_BATCH *ORMEL_BatchInsert_Para_Malloc(int32_t iItemNum, const ORMEL_MULTI_OBJECT *pstMulti) {
    const int32_t size = sizeOf(iItemNum, sizeof(ORMEL_PARA_BATCH_ITEM), sizeof(ORMEL_PARA_BATCH));
    if (iItemNum < 0 || pstMulti == nullptr || !describesColumns(*pstMulti, iItemNum))
        return nullptr;
    std::unique_ptr<ORMEL_PARA_BATCH, FreeBatch> batch(
        static_cast<ORMEL_PARA_BATCH *>(std::calloc(1, static_cast<size_t>(size))));
    if (batch == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "Malloc pBatchParas failed.");
        return nullptr;
    }
    batch->itemNum = iItemNum;
    batch->uiRecNum = pstMulti->uiRecNum;
    ORMEL_LOG(KPL_LOG_INFO, "BatchInsert_Para_Malloc arrlen:%d itemNum:%d.", static_cast<int>(pstMulti->uiRecNum),
              iItemNum);
    for (int32_t k = 0; k < iItemNum; ++k)
        if (!makeColumn(batch->astItem[k], *pstMulti->astObject[0].astItem[k].pstInfo, pstMulti->uiRecNum))
            return nullptr;
    return batch.release();
}

void ORMEL_BatchInsert_Para_Free(ORMEL_PARA_BATCH *pstBatch) {
    if (pstBatch == nullptr)
        return;
    const int32_t columns = pstBatch->itemNum <= ORMEL_MAX_ITEMS ? pstBatch->itemNum : 0;
    for (int32_t k = 0; k < columns; ++k)
        freeColumn(pstBatch->astItem[k]);
    std::free(pstBatch);
}

uint32_t ORMEL_SetBatchParaByObject(ORMEL_PARA_BATCH *pstBatch, const ORMEL_MULTI_OBJECT *pstMulti,
                                    const ORMEL_RES_ATT *) {
    if (pstBatch == nullptr || pstMulti == nullptr)
        return ORMEL_ERR_FAILED;
    const uint32_t rows = pstMulti->uiRecNum;
    if (rows > 0)
        if (const uint32_t code = checkObjects(*pstBatch, *pstMulti); code != ORMEL_OK)
            return code;
    pstBatch->uiRecNum = rows;
    if (rows == 0)
        return ORMEL_OK;
    const ORMEL_OBJECT &first = pstMulti->astObject[0];
    for (int32_t k = first.iItemNum; k < pstBatch->itemNum; ++k)
        freeColumn(pstBatch->astItem[k]); // beyond what the freeing of the batch will count
    pstBatch->itemNum = first.iItemNum;
    for (int32_t k = 0; k < first.iItemNum; ++k)
        pstBatch->name[k] = first.astItem[k].acName;
    for (uint32_t row = 0; row < rows; ++row)
        for (int32_t k = 0; k < first.iItemNum; ++k)
            setItem(pstBatch->astItem[k], pstMulti->astObject[row].astItem[k], row, rows);
    return ORMEL_OK;
}

void ORMEL_SetBatchParaData(ORMEL_PARA_BATCH_ITEM *pstItem, const void *pValue, uint32_t uiLen, uint32_t uiType,
                            uint32_t uiRecIndex) {
    if (!hasRow(pstItem, uiRecIndex) || pstItem->ind == nullptr)
        return;
    const Shape shape = shapeOf(uiType);
    if (shape == Shape::other) {
        ORMEL_LOG(KPL_LOG_INFO, "ORMEL_SetBatchParaData type :%d.", static_cast<int>(uiType));
    } else if (shape == Shape::lob) {
        ORMEL_LOG(KPL_LOG_DEBUG, "ORMEL_SetBatchParaData type lob.");
        pstItem->ind[uiRecIndex] = kLob;
    } else if (pValue == nullptr) {
        pstItem->ind[uiRecIndex] = kNull;
    } else if (pstItem->data != nullptr) {
        setElement(*pstItem, shape, pValue, uiLen, uiRecIndex);
    }
}

void ORMEL_SetBatchParaLobData(ORMEL_PARA_BATCH_ITEM *pstItem, void *pValue, uint32_t uiLen, uint32_t uiType,
                               uint32_t uiRecIndex) {
    if (!hasRow(pstItem, uiRecIndex))
        return;
    if (shapeOf(uiType) != Shape::lob) {
        ORMEL_LOG(KPL_LOG_DEBUG, "ORMEL_SetBatchParaLobData type is not lob.");
    } else if (pstItem->lobArray != nullptr && pstItem->lobLen != nullptr) {
        pstItem->lobArray[uiRecIndex] = pValue;
        pstItem->lobLen[uiRecIndex] = uiLen;
    }
}
