#include "fault.h"

#include "ormeldb/cache.h"
#include "ormeldb/trans.h"
#include "support/client_double.h"
#include "support/log_double.h"

namespace fault {

const char *Name(Kind kind) {
    switch (kind) {
    case Kind::client:
        return "client call";
    case Kind::memory:
        return "allocation";
    default:
        return "call of the log service";
    }
}

std::string Title(const Fault &fault) {
    return std::string(Name(fault.kind)) + " " + std::to_string(fault.n) + (fault.lasting ? " from then on" : "") +
           (fault.cached ? ", the tables cached" : "");
}

Armed::Armed(const Fault &fault) : fault_(fault) {
    if (fault.n == 0) {
        return;
    }
    if (fault.kind == Kind::log) {
        unit::Log().Fail(fault.n, fault.lasting);
    } else if (fault.kind == Kind::memory) {
        allocation_.emplace(fault.n, fault.lasting);
    } else if (fault.lasting) {
        unit::Client().FailFrom("", fault.n);
    } else {
        unit::Client().Fail("", fault.n);
    }
}

Armed::~Armed() {
    unit::Client().FailNothing();
    unit::Log().FailNothing();
}

bool Armed::Happened() const {
    if (fault_.n == 0) {
        return false;
    }
    switch (fault_.kind) {
    case Kind::client:
        return !unit::Client().Failed().empty();
    case Kind::memory:
        return allocation_->Happened();
    default:
        return unit::Log().Failed();
    }
}

Held Held::Now() {
    Held held = {unit::Client().LiveConnections(),
                 unit::Client().LiveStatements(),
                 static_cast<long>(unit::LiveBlocks()) - ORMEL_ResAttrCacheMgrGet()->iCount,
                 {},
                 g_stTransMgr.uiCount,
                 g_pstVemloLogHandle};
    for (const ORMEL_TRANS &slot : g_stTransMgr.astTrans) {
        held.slots.insert(held.slots.end(), {slot.pConn, slot.pStmt, slot.pstResAtt});
    }
    return held;
}

std::string Difference(const Held &now, const Held &before) {
    auto shown = [](const char *what, long a, long b) {
        return a == b ? "" : std::string(what) + ": " + std::to_string(a) + ", before " + std::to_string(b) + "; ";
    };
    return shown("connections", now.connections, before.connections) +
           shown("statements", now.statements, before.statements) + shown("blocks", now.blocks, before.blocks) +
           shown("slots taken", now.taken, before.taken) + (now.slots == before.slots ? "" : "the slots differ; ") +
           (now.log == before.log ? "" : "the log's instance differs");
}

} // namespace fault
