// Connections, statements and SQL texts.
#include "dao/qdc.h"
#include "operation.h"

namespace fault {

namespace {

const char *const kLooksOnly = "compares or computes, and calls nobody";
const char *const kClientsWord = "has no answer: what the client says to it is not looked at";

uint32_t Bound(Scene &s, int32_t fields, int32_t conditions, int32_t start) {
    return dbBindPara(s.stmt, &s.para, fields, conditions, start, &s.out.lobs) == 1 ? ORMEL_OK : kNull;
}

uint32_t Connected(Scene &s) {
    return s.MadeConnection(dbConnect("h:1", "u", "p", "REQUIRED"));
}

const Operations kConnections = {
    {.name = "dbConnect", .run = Connected, .client = {kNull}},
    {.name = "dbDisconnect",
     .safe = kClientsWord,
     .needs = kConn,
     .run =
         [](Scene &s) {
             dbDisconnect(std::exchange(s.conn, nullptr));
             return ORMEL_OK;
         },
     .tolerates = kClosing,
     .consumes = true},
    {.name = "dbSslModeType",
     .safe = kLooksOnly,
     .run = [](Scene &) { return dbSslModeType("verify_full"); },
     .success = 4},
    {.name = "dbSslModeType",
     .form = "unknown",
     .safe = kLooksOnly,
     .run = [](Scene &) { return dbSslModeType("what"); }},
    {.name = "dbSetSSLMode",
     .needs = kConn,
     .run = [](Scene &s) { return dbSetSSLMode(s.conn, "REQUIRED"); },
     .client = {kStatus}},
    {.name = "dbCreateStmt",
     .needs = kConn,
     .run = [](Scene &s) { return s.MadeStatement(dbCreateStmt(s.conn)); },
     .client = {kNull}},
    {.name = "dbFreeStmt",
     .safe = kClientsWord,
     .needs = kQuery,
     .run =
         [](Scene &s) {
             dbFreeStmt(std::exchange(s.stmt, nullptr));
             return ORMEL_OK;
         },
     .tolerates = kFreeing,
     .consumes = true},
    {.name = "dbStartTrans", .needs = kConn, .run = [](Scene &s) { return dbStartTrans(s.conn); }, .client = {kStatus}},
    {.name = "dbCommitTrans",
     .needs = kConn,
     .run = [](Scene &s) { return dbCommitTrans(s.conn); },
     .client = {kStatus}},
    {.name = "dbRollbackTrans",
     .needs = kConn,
     .run = [](Scene &s) { return dbRollbackTrans(s.conn); },
     .client = {kStatus}},
    {.name = "dbPrintError",
     .safe = kClientsWord,
     .needs = kConn,
     .run =
         [](Scene &s) {
             dbPrintError(s.conn);
             return ORMEL_OK;
         },
     .tolerates = {"get_error"}},
    {.name = "dbGetOpStr",
     .safe = kLooksOnly,
     .run = [](Scene &) { return uint32_t(std::strcmp(dbGetOpStr(ORMEL_OP_LIKE), "like")); }},
    {.name = "dbGetIntValue",
     .safe = kLooksOnly,
     .run = [](Scene &s) { return uint32_t(dbGetIntValue(&s.person.id, 4)); },
     .success = 7},
    {.name = "dbSelectAtt",
     .needs = kConn,
     .run = [](Scene &s) { return s.MadeStatement(dbSelectAtt(s.conn, "PARTS", nullptr)); },
     .client = {kNull}},
    {.name = "dbSelectAtt",
     .form = "fields",
     .needs = kConn,
     .run = [](Scene &s) { return s.MadeStatement(dbSelectAtt(s.conn, "PARTS", &s.some)); },
     .client = {kNull},
     .memory = {kNull}},
    {.name = "dbSelectAtt1",
     .needs = kConn,
     .run = [](Scene &s) { return s.MadeStatement(dbSelectAtt1(s.conn, "PARTS")); },
     .client = {kNull},
     .exception = Exception::statement},
    {.name = "dbGetFieldTypebyName",
     .needs = kQuery,
     .run =
         [](Scene &s) {
             char name[] = "note";
             return dbGetFieldTypebyName(s.stmt, name);
         },
     .success = 13,
     .client = {0}},
};

const Operations kStatements = {
    {.name = "dbSelectRecWithCount",
     .needs = kConn,
     .run = [](Scene &s) { return s.Made(dbSelectRecWithCount(s.conn, "PARTS", &s.para, 2)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = {"fetch", "get_column_by_id", "desc_column_by_id", "free_stmt"}},
    {.name = "dbSelectRecWithCount",
     .form = "no rows",
     .needs = kConn,
     .run = [](Scene &s) { return s.Made(dbSelectRecWithCount(s.conn, "PARTS", &s.para, 0)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = kFreeing},
    {.name = "dbSelectRec",
     .form = "no rows",
     .needs = kConn,
     .run = [](Scene &s) { return s.Made(dbSelectRec(s.conn, "EMPTY", &s.para)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = kAffected + kFreeing},
    // Hands its statement out whatever became of it, but for one that could not be made.
    {.name = "dbSelectRec1",
     .needs = kConn | kSetAndWhere,
     .run = [](Scene &s) { return s.MadeStatement(dbSelectRec1(s.conn, "PARTS", &s.para)); },
     .client = {kNull},
     .memory = {kNull},
     .tolerates = {"prepare", "bind_by_pos", "write_clob", "write_blob", "execute"},
     .forgives = 1},
    {.name = "dbBeginFetch",
     .needs = kConn,
     .run = [](Scene &s) { return s.MadeStatement(dbBeginFetch(s.conn, "PARTS")); },
     .client = {kNull}},
    {.name = "dbLobCount",
     .safe = kLooksOnly,
     .needs = kRequest,
     .run = [](Scene &s) { return dbLobCount(&s.para, 1, 0); },
     .success = 2},
    {.name = "dbMallocLob", .run = [](Scene &s) { return s.MadeBlock(dbMallocLob(2)); }, .memory = {kNull}},
    {.name = "dbBindPara",
     .needs = kPrepared | kRequest,
     .run = [](Scene &s) { return Bound(s, 1, 0, 0); },
     .client = {kNull},
     .memory = {kNull},
     .exception = Exception::lobs},
    {.name = "dbBindPara",
     .form = "conditions",
     .needs = kPrepared | kSetAndWhere,
     .run = [](Scene &s) { return Bound(s, 0, 1, s.para.iFieldNum); },
     .client = {kNull},
     .memory = {kNull},
     .exception = Exception::lobs},
};

using Run = DB_RESULT *(*)(void *, const char *, const ORMEL_PARA *);

using Text = char *(*)(const char *, const ORMEL_PARA *);

const std::pair<const char *, Text> kTexts[] = {{"dbCountMallocSql", dbCountMallocSql},
                                                {"dbSelectMallocSql", dbSelectMallocSql},
                                                {"dbInsertMallocSql", dbInsertMallocSql},
                                                {"dbDeleteMallocSql", dbDeleteMallocSql},
                                                {"dbUpdateMallocSql", dbUpdateMallocSql}};

const struct {
    const char *name;
    unsigned list;
    Run run;
    Names tolerates;
} kRoundTrips[] = {
    {"dbCount", kRequest, dbCount, kReading},
    {"dbSelectRec", kRequest, dbSelectRec, kReading},
    {"dbInsertRec", kRequest, dbInsertRec, kParameterRows + kAffected},
    {"dbDeleteRec", kRequest, dbDeleteRec, kAffected},
    {"dbUpdateRec", kSetAndWhere, dbUpdateRec, kAffected},
};

} // namespace

void AddConnections(Operations &all) {
    all.insert(all.end(), kConnections.begin(), kConnections.end());
}

void AddStatements(Operations &all) {
    for (const auto &[name, make] : kTexts) {
        all.push_back({.name = name,
                       .needs = kSetAndWhere,
                       .run = [make = make](Scene &s) { return s.MadeBlock(make("PARTS", &s.para)); },
                       .memory = {kNull}});
    }
    for (const auto &statement : kRoundTrips) {
        all.push_back({.name = statement.name,
                       .needs = kConn | statement.list,
                       .run = [run = statement.run](Scene &s) { return s.Made(run(s.conn, "PARTS", &s.para)); },
                       .client = {kNull},
                       .memory = {kNull},
                       .tolerates = statement.tolerates + kFreeing});
    }
    all.insert(all.end(), kStatements.begin(), kStatements.end());
}

} // namespace fault
