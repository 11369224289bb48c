#include "ormeldb/para.h"

#include <cstring>

#include "log/log.h"
#include "para/record_length.h"

namespace {

constexpr char kLogFile[] = "ormel_para";
constexpr uint32_t kCellSize = sizeof(ORMEL_PARA::cell[0]);

bool isText(int32_t type) {
    return type == QDC_TYPE_CHAR || type == QDC_TYPE_VARCHAR || type == QDC_TYPE_TEXT || type == QDC_TYPE_CLOB;
}

// Logs why a list is not filled, before anything of it was written.
uint32_t refuse(const char *func, const char *what, int64_t number, int64_t limit) {
    ORMEL_LOG_AS(func, KPL_LOG_ERROR, "%s: %lld, limit %lld", what, static_cast<long long>(number),
                 static_cast<long long>(limit));
    return ORMEL_ERR_FAILED;
}

uint32_t refuseNull(const char *func) {
    ORMEL_LOG_AS(func, KPL_LOG_ERROR, "an argument is NULL");
    return ORMEL_ERR_FAILED;
}

// Names slot i after a column and points it at a value. A short value from the caller's memory is copied into the
// slot's cell, so that the list can be bound after that memory changed; a long one must stay where it is.
void setSlot(ORMEL_PARA &para, int32_t i, const ORMEL_RES_ATT_FIELD &entry, const void *value, uint32_t length,
             uint32_t op) {
    para.name[i] = entry.attname;
    if (length <= kCellSize) {
        std::memcpy(para.cell[i], value, length);
        value = para.cell[i];
    }
    para.value[i] = const_cast<void *>(value); // the binder takes writable addresses and only reads
    para.length[i] = length;
    para.format[i] = static_cast<uint32_t>(entry.format);
    para.op[i] = op;
    para.type[i] = static_cast<uint32_t>(entry.atttypid);
}

// Whether the record that the caller describes has as many bytes; lengths of 0 are not stated.
uint32_t checkRecord(const char *func, const ORMEL_RECORD_BUFFER &dsbuf, uint64_t need) {
    if (dsbuf.pucData == nullptr)
        return refuseNull(func);
    if (dsbuf.usRecLen != 0 && dsbuf.usRecLen < need)
        return refuse(func, "the record is shorter than the table's", dsbuf.usRecLen, static_cast<int64_t>(need));
    if (dsbuf.uiBufSize != 0 && dsbuf.uiBufSize < need)
        return refuse(func, "the buffer is shorter than the table's record", dsbuf.uiBufSize,
                      static_cast<int64_t>(need));
    return ORMEL_OK;
}

// Whether a slot for a column at a position of the descriptor can be filled.
uint32_t checkPosition(const char *func, uint32_t position, const ORMEL_RES_ATT &att) {
    if (static_cast<int64_t>(position) < att.iAttNum)
        return ORMEL_OK;
    return refuse(func, "no column at the position", position, att.iAttNum);
}

// Bytes that are compared of a condition's value: 0 and a refusal for a column of bytes that is wider than it.
uint32_t checkCondition(const char *func, const ORMEL_COND_ITEM &cond, const ORMEL_RES_ATT &att) {
    if (checkPosition(func, cond.ucFieldId, att) != ORMEL_OK)
        return ORMEL_ERR_FAILED;
    const ORMEL_RES_ATT_FIELD &entry = att.astField[cond.ucFieldId];
    if (entry.len <= ORMEL_COND_VALUE_SIZE || isText(entry.atttypid))
        return ORMEL_OK;
    return refuse(func, "a condition's value is narrower than its column", ORMEL_COND_VALUE_SIZE, entry.len);
}

// Whether count more slots fit behind the first ones.
uint32_t checkCount(const char *func, int64_t first, int64_t count) {
    if (first >= 0 && count >= 0 && first + count <= ORMEL_MAX_ITEMS)
        return ORMEL_OK;
    return refuse(func, "too many fields and conditions", first + count, ORMEL_MAX_ITEMS);
}

uint32_t checkObject(const char *func, const ORMEL_OBJECT &obj, int32_t first) {
    if (checkCount(func, first, obj.iItemNum) != ORMEL_OK)
        return ORMEL_ERR_FAILED;
    if (obj.iSelectFieldNum < 0 || obj.iSelectFieldNum > ORMEL_MAX_SELECT_FIELDS)
        return refuse(func, "too many select fields", obj.iSelectFieldNum, ORMEL_MAX_SELECT_FIELDS);
    for (int32_t i = 0; i < obj.iItemNum; ++i)
        if (obj.astItem[i].pstInfo == nullptr)
            return refuse(func, "an item was never checked", i, obj.iItemNum);
    return ORMEL_OK;
}

// Conditions need values: nothing equals NULL.
uint32_t checkValues(const char *func, const ORMEL_OBJECT &obj) {
    for (int32_t i = 0; i < obj.iItemNum; ++i)
        if (obj.astItem[i].pValue == nullptr) {
            ORMEL_LOG_AS(func, KPL_LOG_ERROR, "a condition has no value: column %s", obj.astItem[i].pstInfo->attname);
            return ORMEL_ERR_CHECK;
        }
    return ORMEL_OK;
}

// Points slots at an object's items, from slot first on.
void setItems(ORMEL_PARA &para, int32_t first, const ORMEL_OBJECT &obj, bool fields) {
    for (int32_t i = 0; i < obj.iItemNum; ++i) {
        const ORMEL_OBJECT_ITEM &item = obj.astItem[i];
        const int32_t slot = first + i;
        para.name[slot] = item.acName;
        para.value[slot] = item.pValue;
        para.length[slot] = item.uiLength;
        para.format[slot] = static_cast<uint32_t>(item.pstInfo->format);
        para.op[slot] = fields ? ORMEL_PARA_OP_FIELD : item.uiOp;
        para.type[slot] = static_cast<uint32_t>(item.pstInfo->atttypid);
    }
}

} // namespace

void ORMEL_ParaItemInit(ORMEL_PARA *pstPara, int32_t i, const ORMEL_RECORD_BUFFER *pstDsbuf,
                        const ORMEL_RES_ATT_FIELD *pstEntry) {
    if (pstPara == nullptr || pstDsbuf == nullptr || pstEntry == nullptr || pstDsbuf->pucData == nullptr || i < 0 ||
        i >= ORMEL_MAX_ITEMS)
        return;
    if (checkRecord(__func__, *pstDsbuf, ormel::fieldEnd(*pstEntry)) != ORMEL_OK)
        return;
    setSlot(*pstPara, i, *pstEntry, pstDsbuf->pucData + pstEntry->offset, static_cast<uint32_t>(pstEntry->len),
            ORMEL_PARA_OP_FIELD);
}

uint32_t ORMEL_ParaFieldUpdateByDsbuf(ORMEL_PARA *pstPara, const ORMEL_FIELD_SELECT *pstFields,
                                      const ORMEL_RECORD_BUFFER *pstDsbuf, ORMEL_RES_ATT *pstResAtt) {
    if (pstPara == nullptr || pstDsbuf == nullptr || pstResAtt == nullptr)
        return refuseNull(__func__);
    const int32_t count = pstFields != nullptr ? pstFields->ucFieldNum : pstResAtt->iAttNum;
    if (checkCount(__func__, 0, count) != ORMEL_OK ||
        (count > 0 && checkRecord(__func__, *pstDsbuf, ormel::recordLength(*pstResAtt)) != ORMEL_OK))
        return ORMEL_ERR_FAILED;
    for (int32_t k = 0; pstFields != nullptr && k < count; ++k)
        if (checkPosition(__func__, pstFields->aucFieldId[k], *pstResAtt) != ORMEL_OK)
            return ORMEL_ERR_FAILED;
    pstPara->iFieldNum = count;
    for (int32_t k = 0; k < count; ++k)
        ORMEL_ParaItemInit(pstPara, k, pstDsbuf,
                           &pstResAtt->astField[pstFields != nullptr ? pstFields->aucFieldId[k] : k]);
    return ORMEL_ParaShow(pstPara);
}

uint32_t ORMEL_ParaCondUpdateByCond(ORMEL_PARA *pstPara, const ORMEL_COND *pstCond, ORMEL_RES_ATT *pstResAtt) {
    if (pstPara == nullptr || pstCond == nullptr || pstResAtt == nullptr)
        return refuseNull(__func__);
    const int32_t first = pstPara->iFieldNum;
    if (checkCount(__func__, first, pstCond->usCondNum) != ORMEL_OK)
        return ORMEL_ERR_FAILED;
    for (int32_t j = 0; j < pstCond->usCondNum; ++j)
        if (checkCondition(__func__, pstCond->astCond[j], *pstResAtt) != ORMEL_OK)
            return ORMEL_ERR_FAILED;
    pstPara->iCondNum = pstCond->usCondNum;
    for (int32_t j = 0; j < pstCond->usCondNum; ++j) {
        const ORMEL_COND_ITEM &cond = pstCond->astCond[j];
        const ORMEL_RES_ATT_FIELD &entry = pstResAtt->astField[cond.ucFieldId];
        const int32_t length = entry.len < ORMEL_COND_VALUE_SIZE ? entry.len : ORMEL_COND_VALUE_SIZE;
        setSlot(*pstPara, first + j, entry, cond.aucValue, static_cast<uint32_t>(length), cond.uiOp);
    }
    return ORMEL_ParaShow(pstPara);
}

uint32_t ORMEL_ParaFieldUpdateByObject(ORMEL_PARA *pstPara, ORMEL_OBJECT *pstObj) {
    if (pstPara == nullptr || pstObj == nullptr)
        return refuseNull(__func__);
    if (checkObject(__func__, *pstObj, 0) != ORMEL_OK)
        return ORMEL_ERR_FAILED;
    pstPara->iFieldNum = pstObj->iItemNum;
    setItems(*pstPara, 0, *pstObj, true);
    return ORMEL_ParaShow(pstPara);
}

uint32_t ORMEL_ParaCondUpdateByObject(ORMEL_PARA *pstPara, ORMEL_OBJECT *pstObj) {
    if (pstPara == nullptr || pstObj == nullptr)
        return refuseNull(__func__);
    if (checkObject(__func__, *pstObj, pstPara->iFieldNum) != ORMEL_OK)
        return ORMEL_ERR_FAILED;
    if (checkValues(__func__, *pstObj) != ORMEL_OK)
        return ORMEL_ERR_CHECK;
    pstPara->iCondNum = pstObj->iItemNum;
    setItems(*pstPara, pstPara->iFieldNum, *pstObj, false);
    pstPara->iSelectFieldNum = pstObj->iSelectFieldNum;
    for (int32_t i = 0; i < pstObj->iSelectFieldNum; ++i)
        pstPara->selectField[i] = pstObj->apcSelectField[i];
    pstPara->isLimit = pstObj->isLimit;
    pstPara->iRowCounts = pstObj->iRowCounts;
    pstPara->iOffset = pstObj->iOffset;
    return ORMEL_ParaShow(pstPara);
}
