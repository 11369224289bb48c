#include "log/log.h"
#include "ormeldb/para.h"

namespace {

constexpr char kLogFile[] = "ormel_para";

// The slots that a count stands for in the dump: none where it cannot be right.
int32_t shown(int64_t count, int64_t capacity) {
    return count >= 0 && count <= capacity ? static_cast<int32_t>(count) : 0;
}

const char *nameOf(const ORMEL_PARA &para, int32_t slot) {
    return para.name[slot] != nullptr ? para.name[slot] : "";
}

void showFields(const char *func, const ORMEL_PARA &para, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        ORMEL_LOG_AS(func, KPL_LOG_TRACE, " F%-3d %-16s %18p %6d %6d %2s", i + 1, nameOf(para, i), para.value[i],
                     static_cast<int>(para.length[i]), static_cast<int>(para.format[i]), "--");
        ORMEL_ParaValueShow(para.type[i], para.value[i], para.length[i]);
    }
}

void showConditions(const char *func, const ORMEL_PARA &para, int32_t first, int32_t count) {
    for (int32_t i = first; i < first + count; ++i) {
        ORMEL_LOG_AS(func, KPL_LOG_TRACE, " C%-3d %-16s %18p %6d %6d %2d", i + 1, nameOf(para, i), para.value[i],
                     static_cast<int>(para.length[i]), static_cast<int>(para.format[i]), static_cast<int>(para.op[i]));
        ORMEL_ParaValueShow(para.type[i], para.value[i], para.length[i]);
    }
}

void showSlots(const char *func, const ORMEL_PARA &para) {
    ORMEL_LOG_AS(func, KPL_LOG_TRACE, "====================================================================");
    ORMEL_LOG_AS(func, KPL_LOG_TRACE, " para fieldname\t\t\t\t  value_addr length format op value");
    const int32_t fields = shown(para.iFieldNum, ORMEL_MAX_ITEMS);
    showFields(func, para, fields);
    showConditions(func, para, fields, shown(para.iCondNum, ORMEL_MAX_ITEMS - fields));
    ORMEL_LOG_AS(func, KPL_LOG_TRACE, " ");
}

} // namespace

uint32_t ORMEL_ParaShow(const ORMEL_PARA *pstPara) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    if (pstPara == nullptr)
        return ORMEL_OK;
    if (ormel::logs(KPL_LOG_TRACE))
        showSlots(__func__, *pstPara);
    ORMEL_LOG(KPL_LOG_DEBUG, "isLimit:%d,iRowCounts:%d,iOffset:%d", static_cast<int>(pstPara->isLimit),
              static_cast<int>(pstPara->iRowCounts), static_cast<int>(pstPara->iOffset));
    return ORMEL_OK;
}

void ORMEL_ParaValueShow(uint32_t uiType, const void *pValue, uint32_t uiLen) {
    ormel::logValue(__func__, uiType, pValue, uiLen);
}
