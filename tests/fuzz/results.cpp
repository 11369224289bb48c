// A database that answers anything: columns, types, sizes, NULLs, large objects and counts that do not go together.
#include <memory>

#include "ormeldb.h"
#include "support/client.h"
#include "support/heap.h"
#include "support/input.h"
#include "support/platform.h"

namespace {

using namespace fuzz;

constexpr size_t kRoom = 4096;
constexpr char kTable[] = "t";

// A getter's value is read to the length that the result tells.
void readAll(const void *value, uint32_t length) {
    for (uint32_t i = 0; value != nullptr && i < length; ++i)
        static_cast<void>(static_cast<const volatile uint8_t *>(value)[i]);
}

// Room for a number or a text, where the value is known to fit.
void readNumbers(Input &input, const ORMEL_SELECT_RESULT &result, uint32_t row, const char *name) {
    alignas(8) uint8_t room[kRoom];
    const uint32_t length = ORMEL_ResultGetFieldLength(&result, row, name);
    if (length <= kRoom) {
        ORMEL_ResultNumberGet(&result, row, name, room, input.byte());
        ORMEL_ResultInt64Get(&result, row, name, reinterpret_cast<int64_t *>(room));
        const auto position = static_cast<int32_t>(ORMEL_GetFieldIdByNameFromResAttr(result.pstResAtt, name));
        ORMEL_ResultSetFieldValue(&result, row, position, room);
    }
    int32_t number = 0;
    ORMEL_ResultInt8Get(&result, row, name, &number);
    ORMEL_ResultInt32Get(&result, row, name, &number);
}

void readCells(Input &input, const ORMEL_SELECT_RESULT &result) {
    for (int i = 0; i < 4; ++i) {
        const uint32_t row = input.rarely() ? input.take<uint32_t>() : input.upTo(5);
        const auto column = input.rarely() ? input.take<int32_t>() : static_cast<int32_t>(input.upTo(12));
        readAll(ORMEL_ResultBinaryGetByPos(&result, row, column),
                ORMEL_ResultGetFieldLengthByPos(&result, row, column));
        ORMEL_ResultGetFieldType(&result, column);
        ORMEL_ResultGetFieldOffset(&result, column);
        const ORMEL_RES_ATT *att = result.pstResAtt;
        const bool known = att != nullptr && column >= 0 && column < att->iAttNum;
        const std::string name = known ? att->astField[column].attname : input.text(30);
        if (const void *value = ORMEL_ResultStrGet(&result, row, name.c_str()))
            readAll(value, ORMEL_ResultGetFieldLength(&result, row, name.c_str()));
        readNumbers(input, result, row, name.c_str());
    }
}

// Every cell, from the rows themselves.
void readRows(const DB_RESULT *res) {
    for (uint32_t row = 0; row < dbGetNtuples(res) && res->ppRows != nullptr; ++row)
        for (int32_t column = 0; column < static_cast<int32_t>(dbGetNfields(res)); ++column) {
            readAll(dbGetValueFromRes(res, row, column), dbGetLengthFromRes(res, row, column));
            if (const char *name = dbGetNameFromRes(res, row, column))
                require(std::memchr(name, '\0', ORMEL_NAME_SIZE) != nullptr, "a cell's name ends inside its field");
        }
}

// Records from the rows, in each way, into a block that is as long as it says.
void convert(Input &input, const ORMEL_SELECT_RESULT &result) {
    ORMEL_RECORD_BUFFER buffer = {};
    buffer.usRecNum = static_cast<uint16_t>(input.upTo(3));
    buffer.usRecLen = input.rarely() ? input.take<uint16_t>() : 0;
    if (const ORMEL_RES_ATT *att = result.pstResAtt; att != nullptr && att->iAttNum > 0 && buffer.usRecLen == 0) {
        const ORMEL_RES_ATT_FIELD &last = att->astField[att->iAttNum - 1];
        buffer.usRecLen = static_cast<uint16_t>(last.offset + last.len);
    }
    buffer.uiBufSize = uint32_t{buffer.usRecNum} * buffer.usRecLen;
    const auto block = std::make_unique<uint8_t[]>(buffer.uiBufSize);
    buffer.pucData = block.get();
    const uint32_t start = input.rarely() ? input.take<uint32_t>() : input.upTo(3);
    ORMEL_ResultConvertDsBuf(&result, &buffer, start);
    ORMEL_CreatDsbufRangeByRes(&buffer, start, result.pstRes, result.pstResAtt);
    ORMEL_CreatDsbufByRes(&buffer, result.pstRes, result.pstResAtt);
}

void look(Input &input, const ORMEL_SELECT_RESULT &result) {
    readRows(result.pstRes);
    readCells(input, result);
    convert(input, result);
}

// Two results beside each other.
void compare(Input &input, void *conn) {
    ORMEL_SELECT_RESULT a = {};
    ORMEL_SELECT_RESULT b = {};
    ORMEL_SelectRecForConn2(conn, kTable, nullptr, 0, &a);
    ORMEL_SelectRecForConn2(conn, kTable, nullptr, 0, &b);
    const uint32_t most = input.upTo(40);
    const auto names = std::make_unique<char[][ORMEL_NAME_SIZE]>(most);
    uint8_t count = 0;
    ORMEL_ResultDiffFieldsGet(&a, &b, names.get(), static_cast<int32_t>(most), &count);
    ORMEL_SelectResultClear(&a);
    ORMEL_SelectResultClear(&b);
}

void select(Client &client, void *conn) {
    Input &input = client.input;
    ORMEL_OBJECT obj = {};
    ORMEL_ObjectNameSet(&obj, kTable);
    ORMEL_ObjectSelectRowCountSet(&obj, input.upTo(1), 5, 0);
    ORMEL_SELECT_RESULT result = {};
    switch (input.upTo(2)) {
    case 0:
        ORMEL_SelectRecForConn2(conn, kTable, nullptr, 0, &result);
        break;
    case 1:
        ORMEL_SelectRecForConn3(conn, &obj, &result);
        break;
    default:
        ORMEL_SelectBatchRecForConn(conn, &obj, &result);
    }
    look(input, result);
    ORMEL_SelectResultClear(&result);
}

// Select fields name columns that the table has at one time and not at the next.
void selectFields(Client &client, void *conn) {
    ORMEL_OBJECT obj = {};
    ORMEL_ObjectNameSet(&obj, kTable);
    if (const ORMEL_RES_ATT *att = ORMEL_ResAttGet(kTable); att != nullptr)
        ORMEL_ObjectSelectFieldSet(&obj, att->astField[0].attname);
    ORMEL_SELECT_RESULT result = {};
    ORMEL_SelectBatchRecForConn(conn, &obj, &result);
    look(client.input, result);
    ORMEL_SelectResultClear(&result);
    ORMEL_ObjectParaClear(&obj);
}

void selectRecord(Client &client, void *conn) {
    ORMEL_RECORD_BUFFER buffer = {};
    buffer.usRecLen = static_cast<uint16_t>(client.input.upTo(300));
    buffer.uiBufSize = client.input.upTo(1000);
    const auto block = std::make_unique<uint8_t[]>(buffer.uiBufSize);
    buffer.pucData = block.get();
    ORMEL_SelectRecForConn(conn, kTable, nullptr, 0, &buffer);
}

void fetch(Client &client, void *conn) {
    ORMEL_TRANS slot = {};
    slot.pConn = conn;
    slot.pstResAtt = ORMEL_CreatResAtt(conn, kTable, nullptr);
    slot.pStmt = dbBeginFetch(conn, kTable);
    for (int i = 0; i < 4; ++i) {
        ORMEL_SELECT_RESULT row = {};
        ORMEL_FetchSelectRecEx(&slot, &row);
        look(client.input, row);
        ORMEL_SelectResultClearForFetch(&row);
    }
    dbFreeStmt(slot.pStmt);
    ORMEL_DestoryResAtt(slot.pstResAtt);
}

void describe(Client &client, void *conn) {
    const uint32_t most = client.input.upTo(40);
    const auto names = std::make_unique<char[][ORMEL_NAME_SIZE]>(most);
    uint8_t count = 0;
    ORMEL_GetAllFieldForConn(conn, kTable, names.get(), static_cast<int32_t>(most), &count);
    uint32_t records = 0;
    ORMEL_LocalExistRecordForConn(conn, kTable, nullptr, &records);
    dbFreeStmt(dbSelectAtt1(conn, kTable));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input(data, size);
    logEverything(input.upTo(15) == 1);
    const int failing = input.rarely() ? 1 + static_cast<int>(input.upTo(60)) : 0;
    const Heap heap(failing);
    Client client(input);
    ORMEL_ResAttMgrInit();
    {
        const Connection conn;
        using Step = void (*)(Client &, void *);
        const Step steps[] = {select, selectFields, selectRecord,
                              fetch,  describe,     [](Client &host, void *handle) { compare(host.input, handle); }};
        for (int i = 0; i < 8 && conn.get() != nullptr && !input.empty(); ++i)
            input.oneOf(steps)(client, conn.get());
    }
    ORMEL_ResAttMgrUnInit();
    return 0;
}
