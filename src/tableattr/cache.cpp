// The cache: copies of byte blocks in key order behind a read-write lock.
#include "ormeldb/cache.h"

#include <cerrno>
#include <cstdlib>

#include "log/log.h"
#include "ormeldb/platform/opbbase.h"

namespace {

constexpr char kLogFile[] = "ormel_cache";

constexpr size_t kDataOffset = offsetof(ORMEL_CACHE_NODE, aucData);

// Runs a step under the cache's lock; 0, or the lock's code. The step is left out where the lock is refused.
template <typename Step> int locked(ORMEL_CACHE_MGR *cache, int (*acquire)(pthread_rwlock_t *), Step step) {
    if (cache == nullptr)
        return EINVAL;
    if (const int refused = acquire(&cache->rwlock))
        return refused;
    step();
    return pthread_rwlock_unlock(&cache->rwlock);
}

ORMEL_CACHE_NODE *search(const ORMEL_CACHE_MGR *cache, const void *key) {
    return static_cast<ORMEL_CACHE_NODE *>(ormel_avl_serach(&cache->stTree, key));
}

ORMEL_CACHE_NODE *first(const ORMEL_CACHE_MGR *cache) {
    return static_cast<ORMEL_CACHE_NODE *>(ormel_avl_get_first(&cache->stTree));
}

ORMEL_CACHE_NODE *next(const ORMEL_CACHE_MGR *cache, const ORMEL_CACHE_NODE *node) {
    return static_cast<ORMEL_CACHE_NODE *>(ormel_avl_get_next(&cache->stTree, &node->stNode));
}

void removeAndFree(ORMEL_CACHE_MGR *cache, ORMEL_CACHE_NODE *node) {
    ORMEL_CacheNodeRemove(cache, node);
    ORMEL_CacheNodeDestory(node);
}

// The body of adding, under the write lock.
uint32_t addCopy(ORMEL_CACHE_MGR *cache, const void *data, uint32_t length) {
    if (search(cache, data) != nullptr)
        return ORMEL_OK;
    if (cache->iMax >= 0 && cache->iMax <= cache->iCount)
        return ORMEL_ERR_FAILED;
    ORMEL_CACHE_NODE *node = ORMEL_CacheNodeCreat(cache, data, length);
    if (node == nullptr)
        return ORMEL_ERR_FAILED;
    const uint32_t refused = ORMEL_CacheNodeInsert(cache, node);
    if (refused != ORMEL_OK)
        ORMEL_CacheNodeDestory(node);
    return refused;
}

// The lines can be filtered out; what a display callback does is its owner's, so that it is always called.
void show(const ORMEL_CACHE_MGR *cache, const char *func) {
    if (ormel::logs(KPL_LOG_TRACE)) {
        ORMEL_LOG_AS(func, KPL_LOG_TRACE, "%28s", "ORMEL_CACHE_MGR");
        ORMEL_LOG_AS(func, KPL_LOG_TRACE, "%28s : %d", "iCount", cache->iCount);
        ORMEL_LOG_AS(func, KPL_LOG_TRACE, "%28s : %d", "iMax", cache->iMax);
    }
    if (cache->pfnShow == nullptr)
        return;
    for (const ORMEL_CACHE_NODE *node = first(cache); node != nullptr; node = next(cache, node))
        cache->pfnShow(node->aucData);
}

} // namespace

int ORMEL_CacheInit(ORMEL_CACHE_MGR *pstCache, ORMEL_AVL_CMP pfnCmp, ORMEL_CACHE_SHOW pfnShow) {
    if (pstCache == nullptr || pfnCmp == nullptr)
        return ORMEL_ERR_FAILED;
    *pstCache = {};
    pstCache->iMax = -1;
    pthread_rwlock_init(&pstCache->rwlock, nullptr);
    pstCache->stTree = {nullptr, pfnCmp, std::free, kDataOffset, offsetof(ORMEL_CACHE_NODE, stNode)};
    pstCache->pfnShow = pfnShow;
    return ORMEL_OK;
}

int ORMEL_CacheUnInit(ORMEL_CACHE_MGR *pstCache) {
    if (pstCache != nullptr) {
        // A stopped cache is still shown and searched, so that the lock is made anew at once.
        pthread_rwlock_destroy(&pstCache->rwlock);
        pthread_rwlock_init(&pstCache->rwlock, nullptr);
    }
    return ORMEL_CacheClear(pstCache);
}

int ORMEL_CacheClear(ORMEL_CACHE_MGR *pstCache) {
    return locked(pstCache, pthread_rwlock_wrlock, [=] {
        while (ORMEL_CACHE_NODE *node = first(pstCache))
            removeAndFree(pstCache, node);
    });
}

void *ORMEL_CacheFind(ORMEL_CACHE_MGR *pstCache, const void *pKey) {
    ORMEL_CACHE_NODE *node = nullptr;
    locked(pstCache, pthread_rwlock_rdlock, [&] { node = search(pstCache, pKey); });
    return node == nullptr ? nullptr : node->aucData;
}

uint32_t ORMEL_CacheAdd(ORMEL_CACHE_MGR *pstCache, const void *pData, uint32_t uiLength) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    uint32_t result = ORMEL_ERR_FAILED;
    if (pData != nullptr)
        locked(pstCache, pthread_rwlock_wrlock, [&] { result = addCopy(pstCache, pData, uiLength); });
    return result;
}

uint32_t ORMEL_CacheDel(ORMEL_CACHE_MGR *pstCache, const void *pKey) {
    locked(pstCache, pthread_rwlock_wrlock, [=] {
        if (ORMEL_CACHE_NODE *node = search(pstCache, pKey))
            removeAndFree(pstCache, node);
    });
    return ORMEL_OK;
}

int ORMEL_CacheShow(ORMEL_CACHE_MGR *pstCache) {
    const char *func = __func__;
    return locked(pstCache, pthread_rwlock_rdlock, [=] { show(pstCache, func); });
}

ORMEL_CACHE_NODE *ORMEL_CacheNodeCreat(ORMEL_CACHE_MGR * /*pstCache*/, const void *pData, uint32_t uiLength) {
    // Zeroed, so that what a refused copy leaves can be compared and shown.
    auto *node = static_cast<ORMEL_CACHE_NODE *>(calloc(1, kDataOffset + uiLength));
    if (node == nullptr)
        return nullptr;
    node->uiLen = uiLength;
    if (memcpy_s(node->aucData, uiLength, pData, uiLength) != 0)
        ORMEL_LOG(KPL_LOG_TRACE, "%28s", "copy data failed");
    return node;
}

void ORMEL_CacheNodeDestory(ORMEL_CACHE_NODE *pstNode) {
    std::free(pstNode);
}

uint32_t ORMEL_CacheNodeInsert(ORMEL_CACHE_MGR *pstCache, ORMEL_CACHE_NODE *pstNode) {
    if (pstCache == nullptr || pstNode == nullptr)
        return ORMEL_ERR_FAILED;
    ormel_avl_node_init(&pstNode->stNode);
    if (ormel_avl_insert(&pstCache->stTree, &pstNode->stNode) != ORMEL_OK)
        return ORMEL_ERR_FAILED;
    pstCache->iCount++;
    return ORMEL_OK;
}

int32_t ORMEL_CacheNodeRemove(ORMEL_CACHE_MGR *pstCache, ORMEL_CACHE_NODE *pstNode) {
    if (pstCache == nullptr)
        return 0;
    if (pstNode != nullptr) {
        ormel_avl_delete(&pstCache->stTree, &pstNode->stNode);
        pstCache->iCount--;
    }
    return pstCache->iCount;
}
