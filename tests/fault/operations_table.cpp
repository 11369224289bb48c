// Descriptors and caches.
#include "operation.h"

namespace fault {

namespace {

const char *const kLooksUp = "looks into what is there";
const char *const kFrees = "gives blocks back";
const char *const kLinks = "the elements are their owner's: nothing is allocated";

constexpr uint32_t kPartSize = sizeof(ORMEL_RES_ATT) + 4 * sizeof(ORMEL_RES_ATT_FIELD);

uint32_t Given(const void *given) {
    return given != nullptr ? ORMEL_OK : kNull;
}

// The node around the data of the cache's one entry.
ORMEL_CACHE_NODE *EntryOf(Scene &s) {
    return static_cast<ORMEL_CACHE_NODE *>(ormel_avl_get_first(&s.cache.stTree));
}

const Operations kDescriptors = {
    {.name = "ORMEL_CreatResAtt",
     .needs = kConn,
     .run = [](Scene &s) { return s.Made(ORMEL_CreatResAtt(s.conn, "PARTS", nullptr)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = kDescribing + kFreeing,
     .describes = true},
    {.name = "ORMEL_ResAttCreate",
     .needs = kConn,
     .run = [](Scene &s) { return s.Made(ORMEL_ResAttCreate(s.conn, "PARTS", nullptr)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = kDescribing + kFreeing},
    {.name = "ORMEL_ResAttCreate",
     .form = "fields",
     .needs = kConn | kCached,
     .run = [](Scene &s) { return s.Made(ORMEL_ResAttCreate(s.conn, "PARTS", &s.some)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = kDescribing + kFreeing},
    {.name = "ORMEL_DestoryResAtt",
     .safe = "a descriptor that cannot be kept is freed",
     .run =
         [](Scene &s) {
             ORMEL_DestoryResAtt(s.parts.release());
             return ORMEL_OK;
         },
     .forgives = 1,
     .consumes = true},
    {.name = "ORMEL_ResAttPush",
     .run = [](Scene &s) { return ORMEL_ResAttPush(s.parts.release()); },
     .memory = {ORMEL_ERR_FAILED},
     .consumes = true},
    {.name = "ORMEL_ResAttFree",
     .safe = kFrees,
     .run =
         [](Scene &s) {
             ORMEL_ResAttFree(s.parts.release());
             return ORMEL_OK;
         },
     .consumes = true},
    {.name = "ORMEL_ResAttShow",
     .safe = kLooksUp,
     .run =
         [](Scene &s) {
             ORMEL_ResAttShow(s.parts.get());
             return ORMEL_OK;
         }},
    {.name = "ORMEL_ResAttCmp",
     .safe = kLooksUp,
     .run = [](Scene &s) { return uint32_t(ORMEL_ResAttCmp(s.parts.get(), s.parts.get())); }},
    {.name = "ORMEL_GetFieldIdByNameFromResAttr",
     .safe = kLooksUp,
     .run = [](Scene &s) { return ORMEL_GetFieldIdByNameFromResAttr(s.parts.get(), "photo"); },
     .success = 3},
    {.name = "ORMEL_GetResAttInfoByName",
     .safe = kLooksUp,
     .run = [](Scene &s) { return Given(ORMEL_GetResAttInfoByName(s.parts.get(), "photo")); }},
    {.name = "ORMEL_GetAllFieldByRes",
     .safe = kLooksUp,
     .run = [](Scene &s) { return ORMEL_GetAllFieldByRes(s.parts.get(), s.out.names, 8, &s.out.fields); }},
    {.name = "ORMEL_ResAttNeedCache",
     .safe = kLooksUp,
     .run = [](Scene &) { return uint32_t(ORMEL_ResAttNeedCache()); },
     .success = 1},
    {.name = "ORMEL_ResAttrCacheMgrGet",
     .safe = kLooksUp,
     .run = [](Scene &) { return Given(ORMEL_ResAttrCacheMgrGet()); }},
    {.name = "ORMEL_ResAttGet",
     .safe = kLooksUp,
     .needs = kCached,
     .run = [](Scene &) { return Given(ORMEL_ResAttGet("parts")); }},
    {.name = "ORMEL_ResAttMgrInit",
     .safe = "lays out what is there",
     .run = [](Scene &) { return ORMEL_ResAttMgrInit(); }},
    {.name = "ORMEL_ResAttMgrUnInit",
     .safe = kFrees,
     .needs = kCached,
     .run = [](Scene &) { return uint32_t(ORMEL_ResAttMgrUnInit()); },
     .consumes = true},
};

const Operations kCache = {
    {.name = "ORMEL_CacheInit",
     .safe = "lays out what is its caller's",
     .run =
         [](Scene &) {
             ORMEL_CACHE_MGR cache;
             return uint32_t(ORMEL_CacheInit(&cache, ORMEL_ResAttCmp, ORMEL_ResAttShow));
         }},
    {.name = "ORMEL_CacheUnInit",
     .safe = kFrees,
     .run = [](Scene &s) { return uint32_t(ORMEL_CacheUnInit(&s.cache)); },
     .consumes = true},
    {.name = "ORMEL_CacheClear",
     .safe = kFrees,
     .run = [](Scene &s) { return uint32_t(ORMEL_CacheClear(&s.cache)); },
     .consumes = true},
    {.name = "ORMEL_CacheFind",
     .safe = kLooksUp,
     .run = [](Scene &s) { return Given(ORMEL_CacheFind(&s.cache, s.persons.get())); }},
    {.name = "ORMEL_CacheAdd",
     .run = [](Scene &s) { return ORMEL_CacheAdd(&s.cache, s.parts.get(), kPartSize); },
     .memory = {ORMEL_ERR_FAILED},
     .undo = [](Scene &s) { ORMEL_CacheDel(&s.cache, s.parts.get()); }},
    {.name = "ORMEL_CacheDel",
     .safe = kFrees,
     .run = [](Scene &s) { return ORMEL_CacheDel(&s.cache, s.persons.get()); },
     .consumes = true},
    {.name = "ORMEL_CacheShow", .safe = kLooksUp, .run = [](Scene &s) { return uint32_t(ORMEL_CacheShow(&s.cache)); }},
    {.name = "ORMEL_CacheNodeCreat",
     .run = [](Scene &s) { return s.MadeBlock(ORMEL_CacheNodeCreat(&s.cache, s.parts.get(), kPartSize)); },
     .memory = {kNull}},
    {.name = "ORMEL_CacheNodeDestory",
     .safe = kFrees,
     .run =
         [](Scene &s) {
             ORMEL_CACHE_NODE *node = EntryOf(s);
             ORMEL_CacheNodeRemove(&s.cache, node);
             ORMEL_CacheNodeDestory(node);
             return ORMEL_OK;
         },
     .consumes = true},
    {.name = "ORMEL_CacheNodeRemove",
     .safe = kLinks,
     .run =
         [](Scene &s) {
             ORMEL_CACHE_NODE *node = EntryOf(s);
             const int32_t left = ORMEL_CacheNodeRemove(&s.cache, node);
             s.MadeBlock(node);
             return uint32_t(left);
         },
     .consumes = true},
    {.name = "ORMEL_CacheNodeInsert",
     .safe = kLinks,
     .run =
         [](Scene &s) {
             ORMEL_CACHE_NODE *node = EntryOf(s);
             ORMEL_CacheNodeRemove(&s.cache, node);
             return ORMEL_CacheNodeInsert(&s.cache, node);
         }},
};

} // namespace

void AddDescriptors(Operations &all) {
    all.insert(all.end(), kDescriptors.begin(), kDescriptors.end());
}

void AddCache(Operations &all) {
    all.insert(all.end(), kCache.begin(), kCache.end());
}

} // namespace fault
