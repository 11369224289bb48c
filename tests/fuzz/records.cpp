// Records, condition lists and field selections with any bytes and counts, given to every operation that takes them.
#include <memory>

#include "ormeldb.h"
#include "para/record_length.h"
#include "support/client.h"
#include "support/heap.h"
#include "support/input.h"
#include "support/platform.h"

namespace {

using namespace fuzz;

constexpr char kTable[] = "t";
constexpr uint32_t kRoom = 70000; // more than a record's length can say

// A block that is as long as its count says, as far as a count within its capacity says it.
template <class List> struct Block {
    Block(size_t items, size_t itemSize) : bytes(std::make_unique<uint8_t[]>(sizeof(List) + items * itemSize)) {}
    List *get() const { return reinterpret_cast<List *>(bytes.get()); }
    std::unique_ptr<uint8_t[]> bytes;
};

uint32_t countOf(Input &input) {
    return input.rarely() ? input.take<uint16_t>() : input.upTo(6);
}

Block<ORMEL_COND> conditionsOf(Input &input) {
    const uint32_t count = countOf(input);
    const uint32_t there = count <= ORMEL_MAX_ITEMS ? count : 0;
    Block<ORMEL_COND> list(there, sizeof(ORMEL_COND_ITEM));
    list.get()->usCondNum = static_cast<uint16_t>(count);
    for (uint32_t i = 0; i < there; ++i) {
        ORMEL_COND_ITEM &item = list.get()->astCond[i];
        item.ucFieldId = static_cast<uint8_t>(input.rarely() ? input.byte() : input.upTo(7));
        item.uiOp = input.rarely() ? input.take<uint32_t>() : input.upTo(9);
        input.copy(item.aucValue, input.upTo(8));
        std::memset(item.aucValue + 8, input.byte(), sizeof item.aucValue - 8);
    }
    return list;
}

Block<ORMEL_FIELD_SELECT> selectionOf(Input &input) {
    const auto count = static_cast<uint8_t>(countOf(input));
    const uint32_t there = count <= ORMEL_MAX_ITEMS ? count : 0;
    Block<ORMEL_FIELD_SELECT> list(there, 1);
    list.get()->ucFieldNum = count;
    for (uint32_t i = 0; i < there; ++i)
        list.get()->aucFieldId[i] = static_cast<uint8_t>(input.rarely() ? input.byte() : input.upTo(7));
    return list;
}

// A record buffer whose block is no longer than what its numbers say; where they say nothing, as long as the table's
// records, which is what it then has to be.
struct Record {
    Record(Input &input, uint64_t layout, bool filled) {
        const auto near = [&] { return static_cast<uint32_t>(layout) + input.upTo(2) - 1; };
        buffer.usRecLen = static_cast<uint16_t>(input.rarely() ? input.take<uint16_t>() : near());
        buffer.usRecNum = input.byte();
        buffer.uiBufSize = input.rarely() ? input.take<uint32_t>() : near();
        if (input.rarely())
            (filled ? buffer.usRecLen : buffer.usRecNum) = 0;
        if (input.rarely() || !filled)
            buffer.uiBufSize = filled ? 0 : buffer.uiBufSize % kRoom;
        uint64_t size = filled ? std::max<uint64_t>(layout, kRoom) : buffer.uiBufSize;
        if (filled && buffer.usRecLen != 0)
            size = buffer.usRecLen;
        if (filled && buffer.uiBufSize != 0)
            size = std::min<uint64_t>(size, buffer.uiBufSize);
        if (filled && buffer.usRecLen == 0 && buffer.uiBufSize == 0)
            size = layout;
        block = std::make_unique<uint8_t[]>(size);
        input.copy(block.get(), std::min<uint64_t>(size, 24));
        buffer.pucData = input.rarely() ? nullptr : block.get();
    }
    ORMEL_RECORD_BUFFER buffer = {};
    std::unique_ptr<uint8_t[]> block;
};

uint64_t layoutOf(const std::vector<Column> &table) {
    uint64_t length = 0;
    for (const Column &column : table)
        length += column.size;
    return length;
}

// Whether a record goes as far as a field's end; lengths of 0 are not stated.
bool holds(const ORMEL_RECORD_BUFFER &buffer, uint64_t end) {
    return buffer.pucData != nullptr && (buffer.usRecLen == 0 || buffer.usRecLen >= end) &&
           (buffer.uiBufSize == 0 || buffer.uiBufSize >= end);
}

// The slots of a list one by one.
void initSlots(const ORMEL_RECORD_BUFFER &buffer, const ORMEL_RES_ATT *att) {
    ORMEL_PARA empty;
    std::memset(&empty, 0, sizeof empty);
    for (int32_t k = 0; att != nullptr && k < att->iAttNum; ++k) {
        const ORMEL_RES_ATT_FIELD &entry = att->astField[k];
        ORMEL_PARA para = empty;
        for (const int32_t slot : {-1, ORMEL_MAX_ITEMS})
            ORMEL_ParaItemInit(&para, slot, &buffer, &entry);
        require(std::memcmp(&para, &empty, sizeof para) == 0, "a slot that there is not leaves the list as it is");
        const int32_t slot = k % ORMEL_MAX_ITEMS;
        ORMEL_ParaItemInit(&para, slot, &buffer, &entry);
        const bool held = holds(buffer, ormel::fieldEnd(entry));
        require(para.length[slot] == (held ? static_cast<uint32_t>(entry.len) : 0), "a slot has its field's length");
        require(!held || std::memcmp(para.value[slot], buffer.pucData + entry.offset, para.length[slot]) == 0,
                "a slot has its field's value");
    }
}

uint32_t insert(Input &input, void *conn, uint64_t layout) {
    const Record record(input, layout, true);
    const uint32_t code = ORMEL_InsertRecForConn(conn, kTable, &record.buffer);
    initSlots(record.buffer, ORMEL_ResAttGet(kTable));
    return code;
}

uint32_t select2(void *conn, const ORMEL_COND *cond) {
    ORMEL_SELECT_RESULT result = {};
    const uint32_t code = ORMEL_SelectRecForConn2(conn, kTable, cond, 0, &result);
    ORMEL_SelectResultClear(&result);
    return code;
}

uint32_t operate(Input &input, void *conn, uint64_t layout) {
    const auto conditions = conditionsOf(input);
    const ORMEL_COND *cond = input.rarely() ? nullptr : conditions.get();
    uint32_t count = 0;
    switch (input.upTo(5)) {
    case 0:
        return insert(input, conn, layout);
    case 1: {
        const Record record(input, layout, true);
        const auto fields = selectionOf(input);
        const ORMEL_FIELD_SELECT *selected = input.rarely() ? nullptr : fields.get();
        return ORMEL_UpdateRecForConn(conn, kTable, selected, &record.buffer, cond, &count);
    }
    case 2:
        return ORMEL_DeleteRecForConn(conn, kTable, cond, &count);
    case 3:
        return ORMEL_LocalExistRecordForConn(conn, kTable, cond, &count);
    case 4: {
        Record record(input, layout, false);
        return ORMEL_SelectRecForConn(conn, kTable, cond, 0, &record.buffer);
    }
    default:
        return select2(conn, cond);
    }
}

void check(uint32_t code, uint32_t statements) {
    require(code == ORMEL_OK || code == ORMEL_ERR_FAILED || code == ORMEL_ERR_NO_RESULT || code == ORMEL_ERR_TABLE,
            "the code is one that is told");
    require(code != ORMEL_ERR_FAILED || statements == 0, "what is refused is not sent");
    require(code != ORMEL_OK || statements == 1, "what is done is sent once");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input(data, size);
    logEverything(input.upTo(15) == 1);
    const int failing = input.rarely() ? 1 + static_cast<int>(input.upTo(40)) : 0;
    const Heap heap(failing);
    Client client(input, tableOf(input, 40));
    ORMEL_ResAttMgrInit();
    const uint64_t layout = layoutOf(client.table);
    for (int i = 0; i < 8 && !input.empty(); ++i) {
        const Connection conn;
        const uint32_t before = client.executed;
        if (conn.get() == nullptr)
            continue;
        const uint32_t code = operate(input, conn.get(), layout);
        check(code, client.executed - before);
    }
    ORMEL_ResAttMgrUnInit();
    return 0;
}
