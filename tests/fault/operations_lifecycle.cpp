// Start and stop, configuration, log, slots and transactions.
#include "operation.h"
#include "ormeldb/platform/tick.h"
#include "support/log_double.h"

namespace fault {

namespace {

const char *const kLooks = "looks into what is there";
const char *const kInPlace = "works on its caller's memory";
const char *const kClientsWord = "has no answer: what the client says to it is not looked at";

uint32_t Given(const void *given) {
    return given != nullptr ? ORMEL_OK : kNull;
}

// The library is started when a scene begins and when it ends.
void Restart(Scene &) {
    ORMEL_UnInit();
    EXPECT_EQ(ORMEL_Init(), ORMEL_OK);
}

const Names kConnecting = {"alloc_conn", "set_conn_attr", "connect", "disconnect", "free_conn"};

const Operations kLifecycle = {
    {.name = "ORMEL_Init",
     .needs = kStopped,
     .run = [](Scene &) { return ORMEL_Init(); },
     .tolerates = kConnecting,
     .consumes = true,
     .exception = Exception::exit,
     .undo = Restart},
    {.name = "ORMEL_CheckDbStatus",
     .run = [](Scene &) { return ORMEL_CheckDbStatus(2, 6, 30000); },
     .tolerates = kConnecting,
     .exception = Exception::exit},
    {.name = "ORMEL_UnInit",
     .safe = kClientsWord,
     .needs = kCursor | kCached,
     .run =
         [](Scene &s) {
             s.slot = nullptr;
             ORMEL_UnInit();
             return ORMEL_OK;
         },
     .tolerates = kFreeing + kClosing,
     .consumes = true,
     .undo = Restart},
    {.name = "ORMEL_DBConnect", .run = [](Scene &s) { return s.MadeConnection(ORMEL_DBConnect()); }, .client = {kNull}},
    {.name = "ORMEL_DBDisConnect",
     .safe = kClientsWord,
     .needs = kConn,
     .run =
         [](Scene &s) {
             ORMEL_DBDisConnect(std::exchange(s.conn, nullptr));
             return ORMEL_OK;
         },
     .tolerates = kClosing,
     .consumes = true},
    {.name = "ORMEL_GetDeltaCpuTick",
     .safe = kInPlace,
     .run =
         [](Scene &) {
             XOS_CPU_TICK start = {}, end = {}, delta = {};
             end.uiLow = 5;
             ORMEL_GetDeltaCpuTick(&start, &end, &delta);
             return delta.uiLow;
         },
     .success = 5},
    {.name = "ORMEL_LastError",
     .safe = kLooks,
     .needs = kConn,
     .run =
         [](Scene &s) {
             dbPrintError(s.conn);
             return ORMEL_LastError(&s.out.error);
         },
     .tolerates = {"get_error"}},
    {.name = "ORMEL_Version",
     .safe = kLooks,
     .run = [](Scene &) { return uint32_t(std::strcmp(ORMEL_Version(), ORMELDB_VERSION)); }},
    {.name = "ORMEL_ConnCfgRead",
     .safe = "reads a file, not the database, into its caller's memory",
     .run =
         [](Scene &) {
             ORMEL_CONN_CFG config;
             return ORMEL_ConnCfgRead(&config);
         }},
    {.name = "ORMEL_TransBuildConnStr",
     .safe = kInPlace,
     .run = [](Scene &s) { return ORMEL_TransBuildConnStr(s.out.text); }},
    {.name = "ORMEL_TransConnStr", .safe = kLooks, .run = [](Scene &) { return Given(ORMEL_TransConnStr()); }},
    {.name = "ORMEL_StrNCpy", .safe = kInPlace, .run = [](Scene &s) { return ORMEL_StrNCpy(s.out.text, "text", 5); }},
};

const Operations kSlots = {
    {.name = "ORMEL_TransMgrGet", .safe = kLooks, .run = [](Scene &) { return Given(ORMEL_TransMgrGet()); }},
    {.name = "ORMEL_TransMgrInit",
     .safe = "lays out the table and reads a file",
     .run = [](Scene &) { return ORMEL_TransMgrInit(); },
     .undo = Restart},
    {.name = "ORMEL_TransMgrClean",
     .safe = kClientsWord,
     .needs = kCursor | kCached,
     .run =
         [](Scene &s) {
             s.slot = nullptr;
             ORMEL_TransMgrClean();
             return ORMEL_OK;
         },
     .tolerates = kFreeing + kClosing,
     .consumes = true,
     .undo = Restart},
    {.name = "ORMEL_TransGetPos",
     .safe = kLooks,
     .run = [](Scene &) { return ORMEL_TransGetPos(&g_stTransMgr) < ORMEL_MAX_SLOTS ? ORMEL_OK : kNull; }},
    {.name = "OrmelFindUsableTrans",
     .run = [](Scene &s) { return s.Made(OrmelFindUsableTrans(&g_stTransMgr, "f", 1)); },
     .client = {kNull}},
    {.name = "ORMEL_NormalTransCreate",
     .run = [](Scene &s) { return s.Made(ORMEL_NormalTransCreate("f", 1)); },
     .client = {kNull}},
    {.name = "ORMEL_SelectTransCreate",
     .run = [](Scene &s) { return s.Made(ORMEL_SelectTransCreate("PARTS", "f", 1)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = kDescribing + kFreeing,
     .describes = true},
    {.name = "ORMEL_TransDestory",
     .safe = kClientsWord,
     .needs = kCursor,
     .run =
         [](Scene &s) {
             ORMEL_TransDestory(std::exchange(s.slot, nullptr));
             return ORMEL_OK;
         },
     .tolerates = kFreeing + kClosing,
     .forgives = 1,
     .consumes = true},
    {.name = "ORMEL_TransShow",
     .safe = kLooks,
     .needs = kSlot,
     .run =
         [](Scene &) {
             ORMEL_TransShow(&g_stTransMgr);
             return ORMEL_OK;
         }},
    {.name = "ORMEL_TransGetConn",
     .safe = kLooks,
     .needs = kSlot,
     .run = [](Scene &s) { return Given(ORMEL_TransGetConn(s.slot)); }},
    {.name = "ORMEL_TransGetStmt",
     .safe = kLooks,
     .needs = kCursor,
     .run = [](Scene &s) { return Given(ORMEL_TransGetStmt(s.slot)); }},
    {.name = "ORMEL_TransGetResAtt",
     .safe = kLooks,
     .needs = kCursor,
     .run = [](Scene &s) { return Given(ORMEL_TransGetResAtt(s.slot)); }},
    {.name = "ORMEL_TransSetStmt",
     .safe = kLooks,
     .needs = kCursor,
     .run =
         [](Scene &s) {
             ORMEL_TransSetStmt(s.slot, ORMEL_TransGetStmt(s.slot));
             return ORMEL_OK;
         }},
    {.name = "ORMEL_TransSetResAtt",
     .safe = kLooks,
     .needs = kCursor,
     .run =
         [](Scene &s) {
             ORMEL_TransSetResAtt(s.slot, ORMEL_TransGetResAtt(s.slot));
             return ORMEL_OK;
         }},
    {.name = "ORMEL_StartTrans",
     .run = [](Scene &s) { return s.Made(ORMEL_StartTrans("f", 1)); },
     .client = {kNull},
     .exception = Exception::commit},
    {.name = "ORMEL_CommitTrans",
     .needs = kSlot,
     .run = [](Scene &s) { return ORMEL_CommitTrans(std::exchange(s.slot, nullptr)); },
     .client = {ORMEL_ERR_FAILED},
     .tolerates = kClosing,
     .consumes = true},
    {.name = "ORMEL_RollbackTrans",
     .needs = kSlot,
     .run = [](Scene &s) { return ORMEL_RollbackTrans(std::exchange(s.slot, nullptr)); },
     .client = {ORMEL_ERR_FAILED},
     .tolerates = kClosing,
     .consumes = true},
};

const std::pair<const char *, void (*)()> kLogFunctions[] = {
    {"KPL_LogInit", KPL_LogInit},
    {"KPL_ZlogInit", KPL_ZlogInit},
    {"KPL_LogUnInit", KPL_LogUnInit},
    {"KPL_ZlogUnInit", KPL_ZlogUnInit},
    {"KPL_VemloLogToFile", [] { KPL_VemloLogToFile("m", "f", 1, "f", 1, __LINE__, KPL_LOG_ERROR, "%s", "a line"); }},
};

} // namespace

void AddLifecycle(Operations &all) {
    all.insert(all.end(), kLifecycle.begin(), kLifecycle.end());
}

void AddLog(Operations &all) {
    for (const auto &[name, run] : kLogFunctions) {
        all.push_back({.name = name,
                       .safe = "what the log service refuses is lost",
                       .run =
                           [run = run](Scene &) {
                               const bool makes = run == KPL_LogInit || run == KPL_ZlogInit;
                               g_pstVemloLogHandle = makes ? nullptr : &unit::Log();
                               run();
                               return ORMEL_OK;
                           },
                       .undo = [](Scene &) { g_pstVemloLogHandle = &unit::Log(); }});
    }
}

void AddSlots(Operations &all) {
    all.insert(all.end(), kSlots.begin(), kSlots.end());
}

} // namespace fault
