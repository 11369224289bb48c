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
    ORMEL_OBJECT *object;
    ORMEL_OBJECT *where;
    ORMEL_SELECT_RESULT *result;
};

// The arguments that an operation cannot do without.
enum Need : unsigned { kTable = 1, kBuffer = 2, kCount = 4, kObject = 8, kResult = 16 };

struct Operation {
    std::string plainName, forConnName, forTransName;
    std::vector<std::string> statements; // how they begin
    uint32_t (*plain)(const Arguments &);
    uint32_t (*forConn)(void *, const Arguments &);
    uint32_t (*forTrans)(ORMEL_TRANS *, const Arguments &); // none: there is no such variant
    bool write;
    unsigned needs;
    std::vector<std::string> lines = {}; // of the body when all goes well, after the first one
    std::string codeLine = {};           // the line that tells a failure, before its code; empty: there is none
    // Codes where operations differ.
    uint32_t undescribed = 255;  // the table cannot be described
    uint32_t noResult = 211;     // its first statement gives none
    uint32_t noConnection = 211; // of the plain variant
    uint32_t emptySlot = 211;    // a slot without a connection
    bool compares = true;        // an object's items are conditions
};

using A = const Arguments &;

inline const std::vector<Operation> kOperations = {
    {.plainName = "ORMEL_InsertRec",
     .forConnName = "ORMEL_InsertRecForConn",
     .forTransName = "ORMEL_InsertRecForTrans",
     .statements = {"INSERT INTO PERSON"},
     .plain = [](A a) { return ORMEL_InsertRec(a.table, a.buffer); },
     .forConn = [](void *c, A a) { return ORMEL_InsertRecForConn(c, a.table, a.buffer); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_InsertRecForTrans(t, a.table, a.buffer); },
     .write = true,
     .needs = kTable | kBuffer,
     .lines = {"DEBUG Insert Rec return: 0x0"},
     .codeLine = "DEBUG Insert Rec return: 0x"},
    {.plainName = "ORMEL_InsertRecFormObj",
     .forConnName = "ORMEL_InsertRecForConn2",
     .forTransName = "ORMEL_InsertRecByObjForTrans",
     .statements = {"INSERT INTO PERSON (ID) values (:1)"},
     .plain = [](A a) { return ORMEL_InsertRecFormObj(a.object); },
     .forConn = [](void *c, A a) { return ORMEL_InsertRecForConn2(c, a.object); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_InsertRecByObjForTrans(t, a.object); },
     .write = true,
     .needs = kObject,
     .lines = {"DEBUG Insert Rec return: 0x0"},
     .codeLine = "DEBUG Insert Rec return: 0x",
     .undescribed = 125,
     .compares = false},
    {.plainName = "ORMEL_DeleteRec",
     .forConnName = "ORMEL_DeleteRecForConn",
     .forTransName = "ORMEL_DeleteRecForTrans",
     .statements = {"DELETE from PERSON"},
     .plain = [](A a) { return ORMEL_DeleteRec(a.table, a.conditions, a.count); },
     .forConn = [](void *c, A a) { return ORMEL_DeleteRecForConn(c, a.table, a.conditions, a.count); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_DeleteRecForTrans(t, a.table, a.conditions, a.count); },
     .write = true,
     .needs = kTable | kCount,
     .lines = {"DEBUG Delete Rec return: 0x0"},
     .codeLine = "DEBUG Delete Rec return: 0x"},
    {.plainName = "ORMEL_DeleteRecByObj",
     .forConnName = "ORMEL_DeleteRecForConn2",
     .forTransName = "ORMEL_DeleteRecByObjForTrans",
     .statements = {"DELETE from PERSON WHERE ID = :1"},
     .plain = [](A a) { return ORMEL_DeleteRecByObj(a.object, a.count); },
     .forConn = [](void *c, A a) { return ORMEL_DeleteRecForConn2(c, a.object, a.count); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_DeleteRecByObjForTrans(t, a.object, a.count); },
     .write = true,
     .needs = kObject | kCount,
     .lines = {"DEBUG Delete Rec return: 0x0"},
     .codeLine = "DEBUG Delete Rec return: 0x",
     .undescribed = 125},
    {.plainName = "ORMEL_UpdateRec",
     .forConnName = "ORMEL_UpdateRecForConn",
     .forTransName = "ORMEL_UpdateRecForTrans",
     .statements = {"UPDATE PERSON"},
     .plain = [](A a) { return ORMEL_UpdateRec(a.table, a.fields, a.buffer, a.conditions, a.count); },
     .forConn = [](void *c,
                   A a) { return ORMEL_UpdateRecForConn(c, a.table, a.fields, a.buffer, a.conditions, a.count); },
     .forTrans = [](ORMEL_TRANS *t,
                    A a) { return ORMEL_UpdateRecForTrans(t, a.table, a.fields, a.buffer, a.conditions, a.count); },
     .write = true,
     .needs = kTable | kBuffer | kCount,
     .lines = {"DEBUG Update Rec return: 0x0"},
     .codeLine = "DEBUG Update Rec return: 0x"},
    {.plainName = "ORMEL_UpdateRecByObj",
     .forConnName = "ORMEL_UpdateRecForConn2",
     .forTransName = "ORMEL_UpdateRecByObjForTrans",
     .statements = {"UPDATE PERSON SET ID = :1 WHERE BALANCE = :2"},
     .plain = [](A a) { return ORMEL_UpdateRecByObj(a.object, a.where, a.count); },
     .forConn = [](void *c, A a) { return ORMEL_UpdateRecForConn2(c, a.object, a.where, a.count); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_UpdateRecByObjForTrans(t, a.object, a.where, a.count); },
     .write = true,
     .needs = kObject | kCount,
     .lines = {"DEBUG Update Rec return: 0x0"},
     .codeLine = "DEBUG Update Rec return: 0x",
     .undescribed = 125,
     .compares = false},
    {.plainName = "ORMEL_SelectRec",
     .forConnName = "ORMEL_SelectRecForConn",
     .forTransName = "ORMEL_SelectRecForTrans",
     .statements = {"SELECT * FROM PERSON"},
     .plain = [](A a) { return ORMEL_SelectRec(a.table, a.conditions, 0, a.buffer); },
     .forConn = [](void *c, A a) { return ORMEL_SelectRecForConn(c, a.table, a.conditions, 0, a.buffer); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_SelectRecForTrans(t, a.table, a.conditions, 0, a.buffer); },
     .write = false,
     .needs = kTable | kBuffer},
    {.plainName = "ORMEL_SelectRec2",
     .forConnName = "ORMEL_SelectRecForConn2",
     .forTransName = "ORMEL_SelectRecForTrans2",
     .statements = {"SELECT * FROM PERSON WHERE ID = :1"},
     .plain = [](A a) { return ORMEL_SelectRec2(a.table, a.conditions, 0, a.result); },
     .forConn = [](void *c, A a) { return ORMEL_SelectRecForConn2(c, a.table, a.conditions, 0, a.result); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_SelectRecForTrans2(t, a.table, a.conditions, 0, a.result); },
     .write = false,
     .needs = kTable | kResult,
     .noResult = 255},
    {.plainName = "ORMEL_SelectRecByObj",
     .forConnName = "ORMEL_SelectRecForConn3",
     .forTransName = "ORMEL_SelectRecByObjForTrans",
     .statements = {"SELECT * FROM PERSON WHERE ID = :1"},
     .plain = [](A a) { return ORMEL_SelectRecByObj(a.object, a.result); },
     .forConn = [](void *c, A a) { return ORMEL_SelectRecForConn3(c, a.object, a.result); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_SelectRecByObjForTrans(t, a.object, a.result); },
     .write = false,
     .needs = kObject | kResult,
     .lines = {"DEBUG Select recNum: 1"},
     .codeLine = "DEBUG Select Rec return: 0x",
     .noResult = 255,
     .noConnection = 255,
     .emptySlot = 0xFFFFFFFF},
    {.plainName = "ORMEL_SelectBatchRecByObj",
     .forConnName = "ORMEL_SelectBatchRecForConn",
     .forTransName = "",
     .statements = {"SELECT count(*) FROM PERSON WHERE ID = :1", "SELECT * FROM PERSON WHERE ID = :1"},
     .plain = [](A a) { return ORMEL_SelectBatchRecByObj(a.object, a.result); },
     .forConn = [](void *c, A a) { return ORMEL_SelectBatchRecForConn(c, a.object, a.result); },
     .forTrans = nullptr,
     .write = false,
     .needs = kObject | kResult,
     .lines = {"INFO SelectBatchRec recCount: 1", "DEBUG Select recNum: 1"},
     .codeLine = "DEBUG Select Rec return: 0x",
     .noConnection = 255},
    {.plainName = "ORMEL_LocalExistRecord",
     .forConnName = "ORMEL_LocalExistRecordForConn",
     .forTransName = "ORMEL_LocalExistRecordForTrans",
     .statements = {"SELECT count(*) FROM PERSON"},
     .plain = [](A a) { return ORMEL_LocalExistRecord(a.table, a.conditions, a.count); },
     .forConn = [](void *c, A a) { return ORMEL_LocalExistRecordForConn(c, a.table, a.conditions, a.count); },
     .forTrans = [](ORMEL_TRANS *t, A a) { return ORMEL_LocalExistRecordForTrans(t, a.table, a.conditions, a.count); },
     .write = false,
     .needs = kTable | kCount,
     .lines = {"DEBUG Count uiRet: 0x0, recNum: 1"},
     .codeLine = "DEBUG Count uiRet: 0x",
     .undescribed = 211},
};

// A started library, the table PERSON with one row, and arguments that fit every operation.
class OperationTest : public StartedTest {
protected:
    void SetUp() override {
        StartedTest::SetUp();
        Script();
        conditions_.Add(0, ORMEL_OP_EQUAL, Bytes(int32_t{7}));
        ORMEL_ObjectNameSet(&object_, "PERSON");
        ORMEL_ObjectInt32Set(&object_, "ID", 7);
        ORMEL_ObjectNameSet(&where_, "PERSON");
        ORMEL_ObjectInt64Set(&where_, "BALANCE", -1);
        Log().Forget();
    }
    void TearDown() override {
        ClearResult();
        ORMEL_ObjectParaClear(&object_);
        ORMEL_ObjectParaClear(&where_);
        StartedTest::TearDown();
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
    void Fresh() {
        ClearResult();
        ORMEL_ResAttMgrUnInit();
        ORMEL_ResAttMgrInit();
        Script();
    }

    // Releases what the last select handed out, if there is anything.
    void ClearResult() {
        if (result_.pstRes != nullptr || result_.pstResAtt != nullptr) {
            ORMEL_SelectResultClear(&result_);
        }
    }

    Arguments Fitting() {
        count_ = kUnwritten;
        ClearResult();
        return {"PERSON", conditions_.Get(), nullptr, &buffer_, &count_, &object_, &where_, &result_};
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

    // What was bound, as "position: bytes".
    using Values = std::vector<std::pair<uint32_t, std::string>>;
    static Values Bound() {
        Values values;
        for (const unit::Bound &bound : Client().Bounds()) {
            values.emplace_back(bound.position, bound.bytes);
        }
        return values;
    }

    static constexpr uint32_t kUnwritten = 0xDEAD;

    Person person_ = MakePerson(7, "Ann", -1);
    ORMEL_RECORD_BUFFER buffer_ = BufferOf(person_);
    Conditions conditions_;
    uint32_t count_ = kUnwritten;
    ORMEL_OBJECT object_{};
    ORMEL_OBJECT where_{};
    ORMEL_SELECT_RESULT result_{};
};

} // namespace unit

#endif
