#include <cstdlib>

#include "log/log.h"
#include "ormeldb/cache.h"
#include "ormeldb/platform/opbbase.h"
#include "ormeldb/res_att.h"

namespace {

constexpr char kLogFile[] = "ormel_tableattr";

ORMEL_CACHE_MGR g_stCacheMgr;

} // namespace

int ORMEL_ResAttNeedCache() {
    return 1;
}

ORMEL_CACHE_MGR *ORMEL_ResAttrCacheMgrGet() {
    return &g_stCacheMgr;
}

uint32_t ORMEL_ResAttPush(ORMEL_RES_ATT *pstResAtt) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    if (pstResAtt == nullptr)
        return ORMEL_OK;
    uint32_t code = ORMEL_OK;
    if (ORMEL_CacheFind(&g_stCacheMgr, pstResAtt) != pstResAtt) {
        const size_t size = sizeof *pstResAtt + static_cast<size_t>(pstResAtt->iAttNum) * sizeof(ORMEL_RES_ATT_FIELD);
        const bool named = pstResAtt->acTableName[0] != '\0'; // one without a name was never to be found again
        code = named && size <= UINT32_MAX ? ORMEL_CacheAdd(&g_stCacheMgr, pstResAtt, static_cast<uint32_t>(size))
                                           : ORMEL_ERR_FAILED;
        std::free(pstResAtt);
    }
    ORMEL_CacheShow(&g_stCacheMgr);
    return code;
}

ORMEL_RES_ATT *ORMEL_ResAttGet(const char *pcTableName) {
    if (pcTableName == nullptr)
        return nullptr;
    ORMEL_RES_ATT key = {};
    strncpy_s(key.acTableName, sizeof key.acTableName, pcTableName, sizeof key.acTableName - 1);
    return static_cast<ORMEL_RES_ATT *>(ORMEL_CacheFind(&g_stCacheMgr, &key));
}

uint32_t ORMEL_ResAttMgrInit() {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    ORMEL_CacheInit(&g_stCacheMgr, ORMEL_ResAttCmp, ORMEL_ResAttShow);
    ORMEL_CacheShow(&g_stCacheMgr);
    return ORMEL_OK;
}

int ORMEL_ResAttMgrUnInit() {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    ORMEL_CacheUnInit(&g_stCacheMgr);
    return ORMEL_CacheShow(&g_stCacheMgr);
}

ORMEL_RES_ATT *ORMEL_CreatResAtt(void *pConn, const char *pcTableName, const ORMEL_OBJECT *pstObj) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    ORMEL_RES_ATT *cached = ORMEL_ResAttGet(pcTableName);
    return cached != nullptr ? cached : ORMEL_ResAttCreate(pConn, pcTableName, pstObj);
}

void ORMEL_DestoryResAtt(ORMEL_RES_ATT *pstResAtt) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    if (ORMEL_ResAttNeedCache() != 0)
        ORMEL_ResAttPush(pstResAtt);
    else
        std::free(pstResAtt);
}
