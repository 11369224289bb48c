// Request objects: setters in any order, counts and names that no setter makes, uses, clearing, and use again.
#include <memory>

#include "ormeldb.h"
#include "support/client.h"
#include "support/heap.h"
#include "support/input.h"
#include "support/platform.h"

namespace {

using namespace fuzz;

// Numbers and names that a program's mistake leaves in an object for the length of one use.
class Mistake {
public:
    Mistake(ORMEL_OBJECT &obj, Input &input) : obj_(obj), right_(obj) {
        if (!input.rarely())
            return;
        switch (input.upTo(6)) {
        case 0:
            obj.iItemNum = input.take<int32_t>();
            break;
        case 1:
            obj.iSelectFieldNum = input.take<int32_t>();
            break;
        case 2:
            std::memset(obj.acTableName, 'x', sizeof obj.acTableName);
            break;
        case 3:
            std::memset(obj.astItem[input.upTo(31)].acName, 'x', ORMEL_NAME_SIZE);
            break;
        case 4:
            obj.astItem[input.upTo(31)].acName[0] = '\0';
            break;
        case 5:
            obj.apcSelectField[input.upTo(31)] = nullptr;
            break;
        default:
            obj.astItem[input.upTo(31)].uiOp = input.take<uint32_t>();
        }
    }
    // A check has noted the columns meanwhile, and a clearing must find what there is to free.
    ~Mistake() { obj_ = right_; }
    Mistake(const Mistake &) = delete;
    Mistake &operator=(const Mistake &) = delete;

private:
    ORMEL_OBJECT &obj_;
    ORMEL_OBJECT right_;
};

// The value that a column of the table takes, mostly.
uint32_t setFitting(ORMEL_OBJECT &obj, Input &input, const Column &column) {
    if (column.format == 0)
        return ORMEL_ObjectStrSet(&obj, column.name.c_str(), input.text(20).c_str());
    const std::string bytes = input.bytes(column.size);
    return ORMEL_ObjectBinarySet(&obj, column.name.c_str(), bytes.data(), static_cast<int32_t>(bytes.size()));
}

uint32_t setAny(ORMEL_OBJECT &obj, Input &input, const char *name) {
    const std::string text = input.text(input.rarely() ? 70000 : 40);
    switch (input.upTo(9)) {
    case 0:
        return ORMEL_ObjectInt8Set(&obj, name, input.take<int8_t>());
    case 1:
        return ORMEL_ObjectInt16Set(&obj, name, input.take<int16_t>());
    case 2:
        return ORMEL_ObjectInt32Set(&obj, name, input.take<int32_t>());
    case 3:
        return ORMEL_ObjectInt64Set(&obj, name, input.take<int64_t>());
    case 4:
        return ORMEL_ObjectBinarySet(&obj, name, text.data(), input.rarely() ? -1 : static_cast<int32_t>(text.size()));
    case 5:
        return ORMEL_ObjectJsonSet(&obj, name, text.c_str());
    case 6:
        return ORMEL_ObjectStrOptionLikeSet(&obj, name, text.c_str());
    case 7:
        return ORMEL_ObjectNullSet(&obj, name);
    case 8:
        return ORMEL_ObjectSelectFieldSet(&obj, name);
    default:
        return ORMEL_ObjectStrSet(&obj, name, input.rarely() ? nullptr : text.c_str());
    }
}

void set(ORMEL_OBJECT &obj, Input &input, const std::vector<Column> &table) {
    const int32_t items = obj.iItemNum;
    const Column &column = table[input.byte() % table.size()];
    const std::string other = input.rarely() ? input.text(60) : column.name;
    const uint32_t code = input.upTo(2) > 0 ? setFitting(obj, input, column)
                                            : setAny(obj, input, input.rarely() ? nullptr : other.c_str());
    require(code == ORMEL_OK || obj.iItemNum == items, "a setter that fails leaves the count as it was");
    require(obj.iItemNum >= items && obj.iItemNum <= items + 1, "a setter appends one item at most");
}

// A cursor on a slot that the caller made, as the library makes it.
uint32_t cursor(void *conn, ORMEL_OBJECT &obj) {
    ORMEL_TRANS slot = {};
    slot.pConn = conn;
    slot.pstResAtt = ORMEL_CreatResAtt(conn, "t", nullptr);
    const uint32_t code = dbBeginFetchSpecifyField(&slot, &obj);
    ORMEL_SELECT_RESULT row = {};
    for (int i = 0; i < 3 && slot.pStmt != nullptr; ++i) {
        ORMEL_FetchSelectRecEx(&slot, &row);
        ORMEL_SelectResultClearForFetch(&row);
    }
    dbFreeStmt(slot.pStmt);
    ORMEL_DestoryResAtt(slot.pstResAtt);
    return code;
}

uint32_t select(Client &client, void *conn, ORMEL_OBJECT &obj, bool counted) {
    // With select fields, rows are kept where the second description fails: it does not here.
    client.mayFail = client.mayFail && (counted || obj.iSelectFieldNum == 0);
    ORMEL_SELECT_RESULT result = {};
    const uint32_t code =
        counted ? ORMEL_SelectBatchRecForConn(conn, &obj, &result) : ORMEL_SelectRecForConn3(conn, &obj, &result);
    ORMEL_SelectResultClear(&result);
    return code;
}

uint32_t use(Client &client, void *conn, ORMEL_OBJECT &obj, ORMEL_OBJECT &other) {
    Input &input = client.input;
    const Mistake mistake(obj, input);
    const Mistake otherMistake(other, input);
    const uint32_t isLimit = input.upTo(1);
    const uint32_t rows = input.byte();
    ORMEL_ObjectSelectRowCountSet(&obj, isLimit, rows, 1);
    uint32_t count = 0;
    switch (input.upTo(6)) {
    case 0:
        return ORMEL_InsertRecForConn2(conn, &obj);
    case 1:
        return ORMEL_DeleteRecForConn2(conn, &obj, &count);
    case 2:
        return ORMEL_UpdateRecForConn2(conn, &obj, input.rarely() ? nullptr : &other, &count);
    case 3:
        return select(client, conn, obj, false);
    case 4:
        return select(client, conn, obj, true);
    default:
        return cursor(conn, obj);
    }
}

void batch(Client &client, void *conn) {
    Input &input = client.input;
    ORMEL_MULTI_OBJECT *multi = ORMEL_Multi_object_Init("t", static_cast<int32_t>(input.upTo(5)) - 1);
    if (multi == nullptr)
        return;
    const bool same = !input.rarely();
    const uint32_t columns = input.upTo(4);
    for (uint32_t row = 0; row < multi->uiRecNum; ++row)
        for (uint32_t k = 0; k < columns; ++k)
            if (same)
                setFitting(multi->astObject[row], input, client.table[k % client.table.size()]);
            else
                set(multi->astObject[row], input, client.table);
    const uint64_t before = client.rowsBound;
    {
        std::unique_ptr<Mistake> mistake;
        if (multi->uiRecNum > 0)
            mistake = std::make_unique<Mistake>(multi->astObject[input.byte() % multi->uiRecNum], input);
        const uint32_t code = ORMEL_PatchInsertRecForConn2(conn, multi);
        require(client.rowsBound == before || client.rowsBound == before + multi->uiRecNum,
                "all rows are sent or none");
        require(code == ORMEL_OK || client.rowsBound == before || code == ORMEL_ERR_NO_RESULT,
                "what is refused is not sent");
    }
    ORMEL_Multi_object_UnInit(multi);
}

// A column of a batch by itself, its arrays as long as they are said to be: values of any length, in any order.
void column(Input &input) {
    static constexpr struct Kind {
        uint32_t type;
        uint32_t width = 0; // else the column's size
    } kKinds[] = {{1, 4}, {25, 4}, {2, 8}, {3, 8}, {8}, {9}, {10}, {11}, {12}, {23}, {13}, {14}, {0}, {99}};
    const auto &kind = input.oneOf(kKinds);
    ORMEL_PARA_BATCH_ITEM item = {};
    item.type = kind.type;
    item.maxlen = input.upTo(40);
    item.arrlen = 1 + input.upTo(3);
    const uint32_t width = kind.width != 0 ? kind.width : item.maxlen;
    const auto data = std::make_unique<uint8_t[]>(size_t{item.arrlen} * width);
    const auto lengths = std::make_unique<uint16_t[]>(item.arrlen);
    const auto objects = std::make_unique<void *[]>(item.arrlen);
    const auto sizes = std::make_unique<uint32_t[]>(item.arrlen);
    item.data = data.get();
    item.ind = lengths.get();
    item.lobArray = objects.get();
    item.lobLen = sizes.get();
    for (int i = 0; i < 4; ++i) {
        const uint32_t row = input.rarely() ? input.take<uint32_t>() : input.upTo(item.arrlen);
        const uint32_t size = input.upTo(input.rarely() ? 70000 : 50);
        const auto value = std::make_unique<uint8_t[]>(size);
        input.copy(value.get(), size);
        void *given = input.rarely() ? nullptr : value.get();
        ORMEL_SetBatchParaData(&item, given, size, item.type, row);
        ORMEL_SetBatchParaLobData(&item, given, size, item.type, row);
    }
}

void step(Client &client, void *conn, ORMEL_OBJECT &obj, ORMEL_OBJECT &other) {
    Input &input = client.input;
    switch (input.upTo(7)) {
    case 0:
        ORMEL_ObjectParaClear(&obj);
        break;
    case 1:
        batch(client, conn);
        break;
    case 2:
        set(other, input, client.table);
        break;
    case 3:
    case 4:
        use(client, conn, obj, other);
        break;
    case 5:
        column(input);
        break;
    default:
        set(obj, input, client.table);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input(data, size);
    logEverything(input.upTo(15) == 1);
    const Heap heap;
    Client client(input, tableOf(input, 40));
    ORMEL_ResAttMgrInit();
    ORMEL_OBJECT obj = {};
    ORMEL_OBJECT other = {};
    for (ORMEL_OBJECT *each : {&obj, &other})
        ORMEL_ObjectNameSet(each, "t");
    {
        const Connection conn;
        for (int i = 0; i < 64 && conn.get() != nullptr && !input.empty(); ++i)
            step(client, conn.get(), obj, other);
    }
    ORMEL_ObjectParaClear(&obj);
    ORMEL_ObjectParaClear(&other);
    ORMEL_ResAttMgrUnInit();
    return 0;
}
