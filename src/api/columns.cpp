#include "api/variant.h"
#include "ormeldb/select.h"

using ormel::Commit;
using ormel::present;
using ormel::TableAttributes;

namespace {

constexpr char kLogFile[] = "ormel_api";

} // namespace

uint32_t ORMEL_GetAllFieldForCache(const char *pcTableName, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                   uint8_t *pucNum) {
    if (!present(pcTableName, pucNum))
        return ORMEL_ERR_NULL_ARG;
    const ORMEL_RES_ATT *att = ORMEL_ResAttGet(pcTableName);
    return att == nullptr ? ORMEL_ERR_TABLE : ORMEL_GetAllFieldByRes(att, acNames, iMax, pucNum);
}

uint32_t ORMEL_GetAllFieldForConn(void *pConn, const char *pcTableName, char acNames[][ORMEL_NAME_SIZE], int32_t iMax,
                                  uint8_t *pucNum) {
    if (pConn == nullptr || !present(pcTableName, pucNum))
        return ORMEL_ERR_NULL_ARG;
    const TableAttributes att(pConn, pcTableName);
    if (att.get() == nullptr) {
        ORMEL_LOG(KPL_LOG_ERROR, "Get sql table's Attributes Failed.");
        return ORMEL_ERR_TABLE;
    }
    return ORMEL_GetAllFieldByRes(att.get(), acNames, iMax, pucNum);
}

uint32_t ORMEL_AllFieldsGet(const char *pcTableName, char acNames[][ORMEL_NAME_SIZE], int32_t iMax, uint8_t *pucNum) {
    if (!present(pcTableName, pucNum))
        return ORMEL_ERR_NULL_ARG;
    if (ORMEL_GetAllFieldForCache(pcTableName, acNames, iMax, pucNum) == ORMEL_OK)
        return ORMEL_OK;
    return onOwnConnection(__func__, true, Commit::no, [&](void *conn) {
        return ORMEL_GetAllFieldForConn(conn, pcTableName, acNames, iMax, pucNum);
    });
}
