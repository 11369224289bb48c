// What every call answers while the library cannot open connections.
#ifndef UNIT_REFUSED_CALLS_H
#define UNIT_REFUSED_CALLS_H

#include "ormeldb.h"
#include "support/sample.h"
#include "support/unit_test.h"

namespace unit {

// Calls everything that needs a started library; nothing of it reaches the client.
inline void ExpectCallsRefused() {
    Client().ForgetCalls();
    Person person = MakePerson(1, "a", 1);
    ORMEL_RECORD_BUFFER buffer = BufferOf(person);
    char names[4][ORMEL_NAME_SIZE];
    uint8_t fields = 99;
    uint32_t records = 99;
    ORMEL_OBJECT object = {};
    ORMEL_ObjectNameSet(&object, "PERSON");
    ORMEL_SELECT_RESULT result = {};
    EXPECT_EQ(ORMEL_DBConnect(), nullptr);
    EXPECT_EQ(ORMEL_StartTrans("f", 1), nullptr);
    EXPECT_EQ(ORMEL_NormalTransCreate("f", 1), nullptr);
    EXPECT_EQ(ORMEL_SelectTransCreate("PERSON", "f", 1), nullptr);
    EXPECT_EQ(ORMEL_LocalExistRecord("PERSON", nullptr, &records), 211u);
    EXPECT_EQ(ORMEL_SelectRec("PERSON", nullptr, 0, &buffer), 211u);
    EXPECT_EQ(ORMEL_SelectRec2("PERSON", nullptr, 0, &result), 211u);
    EXPECT_EQ(ORMEL_SelectRecByObj(&object, &result), 255u);
    EXPECT_EQ(ORMEL_SelectBatchRecByObj(&object, &result), 255u);
    EXPECT_EQ(ORMEL_BeginSelect("PERSON", "f", 1), nullptr);
    EXPECT_EQ(ORMEL_BeginSelectSpecifyField(&object, "f", 1), nullptr);
    EXPECT_EQ(ORMEL_InsertRec("PERSON", &buffer), 211u);
    EXPECT_EQ(ORMEL_DeleteRec("PERSON", nullptr, &records), 211u);
    EXPECT_EQ(ORMEL_UpdateRec("PERSON", nullptr, &buffer, nullptr, &records), 211u);
    EXPECT_EQ(ORMEL_InsertRecFormObj(&object), 211u);
    EXPECT_EQ(ORMEL_DeleteRecByObj(&object, &records), 211u);
    EXPECT_EQ(ORMEL_UpdateRecByObj(&object, nullptr, &records), 211u);
    EXPECT_EQ(ORMEL_AllFieldsGet("PERSON", names, 4, &fields), 211u);
    EXPECT_EQ(ORMEL_GetAllFieldForCache("PERSON", names, 4, &fields), 255u);
    EXPECT_EQ(ORMEL_ResAttGet("PERSON"), nullptr);
    ORMEL_TransShow(ORMEL_TransMgrGet());
    for (ORMEL_TRANS &slot : g_stTransMgr.astTrans) {
        ORMEL_TransDestory(&slot);
    }
    EXPECT_EQ(g_stTransMgr.uiCount, 0u);
    EXPECT_EQ(records, 99u);
    EXPECT_EQ(fields, 99u);
    EXPECT_EQ(result.pstRes, nullptr);
    EXPECT_THAT(Client().Calls(), testing::IsEmpty());
}

} // namespace unit

#endif
