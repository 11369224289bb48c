// The variants of an operation. Each has a body that works on a connection (ForConn); the plain variant runs it on a
// connection of its own, the ForTrans variant on the connection of a slot. What makes a variant an exception is handed
// to its wrapper.
#pragma once

#include <cstring>
#include <utility>

#include "log/log.h"
#include "ormeldb/base.h"
#include "ormeldb/dao.h"
#include "ormeldb/lifecycle.h"

namespace ormel {

template <class... Pointers> bool present(const Pointers *...pointers) {
    return (... && (pointers != nullptr));
}

enum class Commit { no, yes };

// A table's descriptor for the length of a call, given back with it unless it is handed over.
class TableAttributes {
public:
    TableAttributes(void *conn, const char *table) : att_(ORMEL_CreatResAtt(conn, table, nullptr)) {}
    ~TableAttributes() { reset(nullptr); }
    TableAttributes(const TableAttributes &) = delete;
    TableAttributes &operator=(const TableAttributes &) = delete;
    ORMEL_RES_ATT *get() const { return att_; }
    ORMEL_RES_ATT *release() { return std::exchange(att_, nullptr); }
    void reset(ORMEL_RES_ATT *att) {
        if (att_ != nullptr)
            ORMEL_DestoryResAtt(att_);
        att_ = att;
    }

private:
    ORMEL_RES_ATT *att_;
};

// The name of the table of an object or a batch of them; empty, as no table's is, where it has no end.
template <class Request> const char *tableOf(const Request &obj) {
    return std::memchr(obj.acTableName, '\0', sizeof obj.acTableName) != nullptr ? obj.acTableName : "";
}

// Called with a descriptor of select fields, once the whole table's has been given back: where the cache did not take
// that, this one loses its name, so that it is never cached in its stead.
void keepFromCache(ORMEL_RES_ATT &reduced);

// Logs that an operation of the API begins.
void traceIn(const char *func);

// Commits what a body did; the client's status. A refusal is printed while there is a connection to ask.
uint32_t commit(void *conn);

// The plain variant: func is its name, arguments whether all required pointers were given.
template <class Body>
uint32_t onOwnConnection(const char *func, bool arguments, Commit mode, Body body,
                         uint32_t noConnection = ORMEL_ERR_NO_RESULT) {
    if (!arguments)
        return ORMEL_ERR_NULL_ARG;
    traceIn(func);
    void *conn = ORMEL_DBConnect();
    if (conn == nullptr)
        return noConnection;
    uint32_t code = body(conn);
    if (code == ORMEL_OK && mode == Commit::yes)
        code = commit(conn);
    ORMEL_DBDisConnect(conn);
    return code;
}

// The ForTrans variant.
template <class Body>
uint32_t onSlot(const char *func, ORMEL_TRANS *slot, bool arguments, Body body,
                uint32_t noConnection = ORMEL_ERR_NO_RESULT) {
    if (slot == nullptr || !arguments)
        return ORMEL_ERR_NULL_ARG;
    traceIn(func);
    void *conn = ORMEL_TransGetConn(slot);
    return conn != nullptr ? body(conn) : noConnection;
}

} // namespace ormel
