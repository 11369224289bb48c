#include "dao/sql_text.h"
#include "log/log.h"

using ormel::SqlText;
using ormel::SqlWriter;

namespace {

constexpr char kLogFile[] = "ormel_dao";
constexpr size_t kSlotBudget = 64; // bytes of text that a slot is given
constexpr int32_t kFrameSlots = 8; // slots' worth of bytes for what stands around them

// The text over a table and a list; empty when an argument is NULL, a count is wrong or nothing can be allocated.
template <class Write> SqlText makeStatement(const char *table, const ORMEL_PARA *para, Write write) {
    if (table == nullptr || para == nullptr || !ormel::countsFit(*para))
        return nullptr;
    return ormel::makeSql(ormel::sqlBudget(*para), write);
}

uint32_t placeholder(int32_t slot) {
    return static_cast<uint32_t>(slot) + 1;
}

} // namespace

void ormel::writeConditions(SqlWriter &sql, const ORMEL_PARA &para, int32_t first, int32_t count) {
    for (int32_t i = first; i < first + count; ++i)
        sql << (i == first ? " WHERE " : " AND ") << para.name[i] << " " << dbGetOpStr(para.op[i]) << " :"
            << placeholder(i);
}

void ormel::writeInsert(SqlWriter &sql, const char *table, const char *const *names, int32_t count) {
    sql << "INSERT INTO " << table << " (";
    for (int32_t i = 0; i < count; ++i)
        sql << names[i] << (i < count - 1 ? ", " : ")");
    sql << " values (";
    for (int32_t i = 0; i < count; ++i)
        sql << ":" << placeholder(i) << (i < count - 1 ? ", " : ")");
}

bool ormel::countsFit(const ORMEL_PARA &para) {
    const auto within = [](int32_t count, int32_t capacity) { return count >= 0 && count <= capacity; };
    return within(para.iFieldNum, ORMEL_MAX_ITEMS) && within(para.iCondNum, ORMEL_MAX_ITEMS - para.iFieldNum) &&
           within(para.iSelectFieldNum, ORMEL_MAX_SELECT_FIELDS);
}

size_t ormel::sqlBudget(int32_t slots) {
    return static_cast<size_t>(slots + kFrameSlots) * kSlotBudget;
}

size_t ormel::sqlBudget(const ORMEL_PARA &para) {
    return sqlBudget(para.iFieldNum + para.iCondNum);
}

char *dbCountMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara) {
    return makeStatement(pcTableName, pstPara,
                         [&](SqlWriter &sql) {
                             sql << "SELECT count(*) FROM " << pcTableName;
                             ormel::writeConditions(sql, *pstPara, 0, pstPara->iCondNum);
                         })
        .release();
}

char *dbSelectMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara) {
    return makeStatement(pcTableName, pstPara,
                         [&](SqlWriter &sql) {
                             if (pstPara->iSelectFieldNum < 1)
                                 sql << "SELECT *";
                             for (int32_t i = 0; i < pstPara->iSelectFieldNum; ++i)
                                 sql << (i == 0 ? "SELECT " : ", ") << pstPara->selectField[i];
                             sql << " FROM " << pcTableName;
                             ormel::writeConditions(sql, *pstPara, 0, pstPara->iCondNum);
                             if (pstPara->isLimit !=
                                 0) // as signed numbers, in which the paging has always been written
                                 sql << " limit " << static_cast<int32_t>(pstPara->iRowCounts) << " offset "
                                     << static_cast<int32_t>(pstPara->iOffset);
                         })
        .release();
}

char *dbInsertMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara) {
    SqlText text = makeStatement(pcTableName, pstPara, [&](SqlWriter &sql) {
        ormel::writeInsert(sql, pcTableName, pstPara->name, pstPara->iFieldNum);
    });
    if (text == nullptr)
        ORMEL_LOG(KPL_LOG_ERROR, "malloc sql failed");
    return text.release();
}

char *dbDeleteMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara) {
    return makeStatement(pcTableName, pstPara,
                         [&](SqlWriter &sql) {
                             sql << "DELETE from " << pcTableName;
                             ormel::writeConditions(sql, *pstPara, 0, pstPara->iCondNum);
                         })
        .release();
}

char *dbUpdateMallocSql(const char *pcTableName, const ORMEL_PARA *pstPara) {
    return makeStatement(pcTableName, pstPara,
                         [&](SqlWriter &sql) {
                             const int32_t n = pstPara->iFieldNum;
                             sql << "UPDATE " << pcTableName;
                             for (int32_t i = 0; i < n; ++i)
                                 sql << (i == 0 ? " SET " : ", ") << pstPara->name[i] << " = :" << placeholder(i);
                             ormel::writeConditions(sql, *pstPara, n, pstPara->iCondNum);
                         })
        .release();
}
