// The operations on records in all their variants, and a table to run them on.
#ifndef UNIT_OPERATION_H
#define UNIT_OPERATION_H

#include "support/started.h"

namespace unit {

struct Arguments {
    const char *table;
    ORMEL_COND *conditions;
    ORMEL_FIELD_SELECT *fields;
    ORMEL_RECORD_BUFFER *buffer;
    uint32_t *count;
};

struct Operation {
    std::string name; // of the plain variant
    std::string sql;  // how its statement begins
    uint32_t (*plain)(const Arguments &);
    uint32_t (*forConn)(void *, const Arguments &);
    uint32_t (*forTrans)(ORMEL_TRANS *, const Arguments &);
    bool write;
    bool needsBuffer, needsCount;
    uint32_t undescribed; // code when the table cannot be described
    std::string lastLine; // of the body, before its code; empty where it has none
};

using A = const Arguments &;

inline const std::vector<Operation> kOperations = {
    {"ORMEL_InsertRec", "INSERT INTO PERSON", [](A a) { return ORMEL_InsertRec(a.table, a.buffer); },
     [](void *c, A a) { return ORMEL_InsertRecForConn(c, a.table, a.buffer); },
     [](ORMEL_TRANS *t, A a) { return ORMEL_InsertRecForTrans(t, a.table, a.buffer); }, true, true, false, 255,
     "Insert Rec return: 0x"},
    {"ORMEL_DeleteRec", "DELETE from PERSON", [](A a) { return ORMEL_DeleteRec(a.table, a.conditions, a.count); },
     [](void *c, A a) { return ORMEL_DeleteRecForConn(c, a.table, a.conditions, a.count); },
     [](ORMEL_TRANS *t, A a) { return ORMEL_DeleteRecForTrans(t, a.table, a.conditions, a.count); }, true, false, true,
     255, "Delete Rec return: 0x"},
    {"ORMEL_UpdateRec", "UPDATE PERSON",
     [](A a) { return ORMEL_UpdateRec(a.table, a.fields, a.buffer, a.conditions, a.count); },
     [](void *c, A a) { return ORMEL_UpdateRecForConn(c, a.table, a.fields, a.buffer, a.conditions, a.count); },
     [](ORMEL_TRANS *t, A a) { return ORMEL_UpdateRecForTrans(t, a.table, a.fields, a.buffer, a.conditions, a.count); },
     true, true, true, 255, "Update Rec return: 0x"},
    {"ORMEL_SelectRec", "SELECT * FROM PERSON", [](A a) { return ORMEL_SelectRec(a.table, a.conditions, 0, a.buffer); },
     [](void *c, A a) { return ORMEL_SelectRecForConn(c, a.table, a.conditions, 0, a.buffer); },
     [](ORMEL_TRANS *t, A a) { return ORMEL_SelectRecForTrans(t, a.table, a.conditions, 0, a.buffer); }, false, true,
     false, 255, ""},
    {"ORMEL_LocalExistRecord", "SELECT count(*) FROM PERSON",
     [](A a) { return ORMEL_LocalExistRecord(a.table, a.conditions, a.count); },
     [](void *c, A a) { return ORMEL_LocalExistRecordForConn(c, a.table, a.conditions, a.count); },
     [](ORMEL_TRANS *t, A a) { return ORMEL_LocalExistRecordForTrans(t, a.table, a.conditions, a.count); }, false,
     false, true, 211, "Count uiRet: 0x"},
};

// A started library, the table PERSON with one row, and arguments that fit every operation.
class OperationTest : public StartedTest {
protected:
    void SetUp() override {
        StartedTest::SetUp();
        Script();
        conditions_.Add(0, ORMEL_OP_EQUAL, Bytes(int32_t{7}));
    }

    // A client that was asked nothing yet and knows the table.
    static void Script() {
        Client().Reset();
        Have("PERSON", PersonColumns());
        Client().On("SELECT * FROM PERSON", {.columns = PersonColumns(), .rows = {PersonRow(7, "Ann", -1)}});
        Client().On("SELECT count(*) FROM PERSON", {.columns = {{"COUNT", 2, 8}}, .rows = {{Int64(1)}}});
        for (const char *write : {"INSERT", "DELETE", "UPDATE"}) {
            Client().On(write, {.affected = 1});
        }
        Log().Forget();
    }

    // Everything as on the first call: no table is cached.
    static void Fresh() {
        ORMEL_ResAttMgrUnInit();
        ORMEL_ResAttMgrInit();
        Script();
    }

    Arguments Fitting() {
        count_ = kUnwritten;
        return {"PERSON", conditions_.Get(), nullptr, &buffer_, &count_};
    }

    // The names of the statements that were executed, without the probe of the table.
    static std::vector<std::string> Statements() {
        std::vector<std::string> texts;
        for (const std::string &call : Client().Calls()) {
            if (call.rfind("prepare(", 0) == 0 && call.find("where 1<>1") == std::string::npos) {
                size_t begin = call.find(", ") + 2;
                texts.push_back(call.substr(begin, call.size() - 1 - begin));
            }
        }
        return texts;
    }

    static constexpr uint32_t kUnwritten = 0xDEAD;

    Person person_ = MakePerson(7, "Ann", -1);
    ORMEL_RECORD_BUFFER buffer_ = BufferOf(person_);
    Conditions conditions_;
    uint32_t count_ = kUnwritten;
};

} // namespace unit

#endif
