#include "ormeldb/trans.h"

#include <atomic>
#include <type_traits>

#include "log/log.h"
#include "ormeldb/dao.h"
#include "ormeldb/lifecycle.h"
#include "ormeldb/platform/opbbase.h"
#include "trans/stage.h"

ORMEL_TRANS_MGR g_stTransMgr;

namespace {

constexpr char kLogFile[] = "ormel_trans";

enum class Stage { never, running, ended };
std::atomic<Stage> g_stage{Stage::never};

// The getters, the dump and some log lines read fields without the table's mutex, so these are never read or written
// as plain memory.
template <class T> T peek(const T &field) {
    return std::atomic_ref<T>(const_cast<T &>(field)).load(std::memory_order_relaxed);
}

template <class T> void put(T &field, std::type_identity_t<T> value) {
    std::atomic_ref<T>(field).store(value, std::memory_order_relaxed);
}

class SlotLock {
public:
    explicit SlotLock(pthread_mutex_t &mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_); }
    ~SlotLock() { pthread_mutex_unlock(&mutex_); }
    SlotLock(const SlotLock &) = delete;
    SlotLock &operator=(const SlotLock &) = delete;

private:
    pthread_mutex_t &mutex_;
};

void freeStatement(ORMEL_TRANS &slot) {
    if (slot.pStmt != nullptr)
        dbFreeStmt(slot.pStmt);
    put(slot.pStmt, nullptr);
}

void closeConnection(ORMEL_TRANS_MGR &mgr, ORMEL_TRANS &slot) {
    dbDisconnect(slot.pConn);
    put(slot.pConn, nullptr);
    put(mgr.uiCount, mgr.uiCount - 1);
}

void occupy(ORMEL_TRANS_MGR &mgr, ORMEL_TRANS &slot, const char *func, uint32_t line, void *conn) {
    put(slot.pcFunc, func);
    put(slot.uiLine, line);
    put(slot.pstResAtt, nullptr); // a stop may have left the last owner's
    put(slot.pStmt, nullptr);
    put(slot.pConn, conn);
    put(mgr.uiCount, mgr.uiCount + 1);
}

// A text that the host may have filled to its field's last byte.
void showText(const char *func, const char *name, const char *text, size_t size) {
    ORMEL_LOG_AS(func, KPL_LOG_TRACE, "%28s : %.*s", name, ormel::textLength(text, size), text);
}

void showSlot(const char *func, int index, const ORMEL_TRANS &slot) {
    char cursor[sizeof slot.acCursor] = {};
    for (size_t i = 0; i + 1 < sizeof cursor; ++i)
        cursor[i] = peek(slot.acCursor[i]);
    const char *owner = peek(slot.pcFunc);
    ORMEL_LOG_AS(func, KPL_LOG_TRACE, "%28s[%d]: Func: %s, Line: %d, Conn: %p, ResAtt: %p, Cursor: %s", "Trans", index,
                 owner != nullptr ? owner : "-", static_cast<int>(peek(slot.uiLine)), peek(slot.pConn),
                 static_cast<void *>(peek(slot.pstResAtt)), cursor);
}

} // namespace

bool ormel::canConnect() {
    const Stage stage = g_stage.load();
    const ORMEL_CONN_CFG &cfg = g_stTransMgr.stConnCfg;
    return stage == Stage::running || (stage == Stage::never && (cfg.acPassword[0] != '\0' || cfg.acHost[0] != '\0'));
}

ORMEL_TRANS_MGR *ORMEL_TransMgrGet() {
    return &g_stTransMgr;
}

uint32_t ORMEL_TransMgrInit() {
    ORMEL_LOG(KPL_LOG_INFO, "Trace in.");
    ORMEL_TRANS_MGR &mgr = g_stTransMgr;
    memset_s(&mgr, sizeof mgr, 0, sizeof mgr);
    pthread_mutex_init(&mgr.mutex, nullptr);
    const uint32_t code = ORMEL_ConnCfgRead(&mgr.stConnCfg);
    g_stage = code == ORMEL_OK ? Stage::running : Stage::ended;
    if (code == ORMEL_OK)
        return code;
    pthread_mutex_destroy(&mgr.mutex);
    mgr.mutex = PTHREAD_MUTEX_INITIALIZER; // so that a release after the failed start has something to lock
    ORMEL_LOG(KPL_LOG_ERROR, "ORMEL_TransMgrInit: Read ConnCfg Failed.\n");
    ORMEL_TransShow(&mgr);
    return code;
}

void ORMEL_TransMgrClean() {
    ORMEL_LOG(KPL_LOG_INFO, "Trace in.");
    ORMEL_TRANS_MGR &mgr = g_stTransMgr;
    for (ORMEL_TRANS &slot : mgr.astTrans) {
        freeStatement(slot);
        if (slot.pConn != nullptr)
            closeConnection(mgr, slot);
    }
    g_stage = Stage::ended;
    ORMEL_LOG(KPL_LOG_INFO, "After Uninit, Conn count: %d", static_cast<int>(mgr.uiCount));
}

uint32_t ORMEL_TransGetPos(ORMEL_TRANS_MGR *pstMgr) {
    if (pstMgr == nullptr || pstMgr->uiCount > ORMEL_MAX_SLOTS - 1)
        return ORMEL_INVALID;
    for (uint32_t probe = 0; probe < ORMEL_MAX_SLOTS; ++probe) {
        const uint32_t pos = (pstMgr->uiLast + probe) % ORMEL_MAX_SLOTS;
        if (pstMgr->astTrans[pos].pConn == nullptr) {
            put(pstMgr->uiLast, pstMgr->uiLast + 1); // by one whatever was found: the start drifts through the table
            return pos;
        }
    }
    return ORMEL_INVALID;
}

ORMEL_TRANS *OrmelFindUsableTrans(ORMEL_TRANS_MGR *pstMgr, const char *pcFunc, uint32_t uiLine) {
    if (pstMgr == nullptr)
        return nullptr;
    ORMEL_TRANS *slot = nullptr;
    {
        const SlotLock lock(pstMgr->mutex);
        const auto pos = static_cast<int32_t>(ORMEL_TransGetPos(pstMgr));
        ORMEL_LOG(KPL_LOG_DEBUG, "Transaction Get Position: %d count:%d lastpos:%d", pos,
                  static_cast<int>(pstMgr->uiCount), static_cast<int>(pstMgr->uiLast));
        if (pos < 0) {
            ORMEL_LOG(KPL_LOG_ERROR, "Error: Transaction Get Position: %d", pos);
        } else if (void *conn = ORMEL_DBConnect()) {
            slot = &pstMgr->astTrans[pos];
            occupy(*pstMgr, *slot, pcFunc, uiLine, conn);
        }
    }
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace out.");
    return slot;
}

ORMEL_TRANS *ORMEL_NormalTransCreate(const char *pcFunc, uint32_t uiLine) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    ORMEL_TRANS *slot = OrmelFindUsableTrans(&g_stTransMgr, pcFunc, uiLine);
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace out.");
    ORMEL_TransShow(&g_stTransMgr);
    return slot;
}

ORMEL_TRANS *ORMEL_SelectTransCreate(const char *pcTableName, const char *pcFunc, uint32_t uiLine) {
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    ORMEL_TRANS_MGR &mgr = g_stTransMgr;
    ORMEL_TRANS *slot = OrmelFindUsableTrans(&mgr, pcFunc, uiLine);
    if (slot != nullptr) {
        put(slot->pStmt, mgr.pStmt);
        put(slot->pstResAtt, ORMEL_CreatResAtt(slot->pConn, pcTableName, nullptr));
        if (slot->pstResAtt == nullptr) {
            ORMEL_TransDestory(slot);
            slot = nullptr;
        }
    }
    ORMEL_LOG(KPL_LOG_DEBUG, "Transaction func: %s count:%d lastpos:%d", pcFunc != nullptr ? pcFunc : "-",
              static_cast<int>(peek(mgr.uiCount)), static_cast<int>(peek(mgr.uiLast)));
    ORMEL_TransShow(&mgr);
    return slot;
}

void ORMEL_TransDestory(ORMEL_TRANS *pstTrans) {
    if (pstTrans == nullptr)
        return;
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace in.");
    ORMEL_TRANS_MGR &mgr = g_stTransMgr;
    {
        const SlotLock lock(mgr.mutex);
        if (pstTrans->pConn != nullptr) {
            freeStatement(*pstTrans);
            if (pstTrans->pstResAtt != nullptr)
                ORMEL_DestoryResAtt(pstTrans->pstResAtt);
            put(pstTrans->pstResAtt, nullptr);
            put(pstTrans->acCursor[0], '\0');
            closeConnection(mgr, *pstTrans);
        }
    }
    ORMEL_LOG(KPL_LOG_DEBUG, "Trace out.");
    ORMEL_TransShow(&mgr);
}

void ORMEL_TransShow(ORMEL_TRANS_MGR *pstMgr) {
    if (pstMgr == nullptr || !ormel::logs(KPL_LOG_TRACE))
        return;
    ORMEL_LOG(KPL_LOG_TRACE, "%28s", "ORMEL_CONNECT_INFO");
    showText(__func__, "pcFullfile", pstMgr->pcFullfile, sizeof pstMgr->pcFullfile);
    showText(__func__, "pcConnstr", pstMgr->pcConnstr, sizeof pstMgr->pcConnstr);
    ORMEL_LOG(KPL_LOG_TRACE, "%28s : %d", "uiCount", static_cast<int>(peek(pstMgr->uiCount)));
    ORMEL_LOG(KPL_LOG_TRACE, "%28s : %d", "uiLast", static_cast<int>(peek(pstMgr->uiLast)));
    ORMEL_LOG(KPL_LOG_TRACE, "%28s : %p", "stmt", pstMgr->pStmt);
    for (int i = 0; i < ORMEL_MAX_SLOTS; ++i)
        showSlot(__func__, i, pstMgr->astTrans[i]);
}

void *ORMEL_TransGetConn(ORMEL_TRANS *pstTrans) {
    return pstTrans == nullptr ? nullptr : peek(pstTrans->pConn);
}

void *ORMEL_TransGetStmt(ORMEL_TRANS *pstTrans) {
    return pstTrans == nullptr ? nullptr : peek(pstTrans->pStmt);
}

ORMEL_RES_ATT *ORMEL_TransGetResAtt(ORMEL_TRANS *pstTrans) {
    return pstTrans == nullptr ? nullptr : peek(pstTrans->pstResAtt);
}

void ORMEL_TransSetStmt(ORMEL_TRANS *pstTrans, void *pStmt) {
    if (pstTrans != nullptr)
        put(pstTrans->pStmt, pStmt);
}

void ORMEL_TransSetResAtt(ORMEL_TRANS *pstTrans, ORMEL_RES_ATT *pstResAtt) {
    if (pstTrans != nullptr)
        put(pstTrans->pstResAtt, pstResAtt);
}
