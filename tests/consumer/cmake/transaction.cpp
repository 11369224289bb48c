// Built with find_package: writes one record of PERSON in an explicit transaction and takes another one back.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <vector>

#include <ormeldb.h>

namespace {

void require(bool holds, const char *what) {
    if (!holds) {
        std::cerr << "transaction: " << what << '\n';
        std::exit(1);
    }
}

uint32_t persons() {
    uint32_t count = 0;
    require(ORMEL_LocalExistRecord("PERSON", nullptr, &count) == ORMEL_OK, "the records cannot be counted");
    return count;
}

// A record of PERSON by the offsets that the library reports.
std::vector<uint8_t> makeRecord(ORMEL_TRANS *slot, int32_t id, const char *name) {
    ORMEL_RES_ATT *columns = ORMEL_CreatResAtt(ORMEL_TransGetConn(slot), "PERSON", nullptr);
    require(columns != nullptr && columns->iAttNum == 2, "the table cannot be described");
    const ORMEL_RES_ATT_FIELD &last = columns->astField[1];
    std::vector<uint8_t> record(static_cast<size_t>(last.offset + last.len));
    std::memcpy(record.data(), &id, sizeof id);
    std::memcpy(record.data() + last.offset, name, std::strlen(name));
    ORMEL_DestoryResAtt(columns);
    return record;
}

void insert(ORMEL_TRANS *slot, int32_t id, const char *name) {
    std::vector<uint8_t> record = makeRecord(slot, id, name);
    const auto size = static_cast<uint16_t>(record.size());
    const ORMEL_RECORD_BUFFER buffer{size, 1, size, 0, record.data()};
    require(ORMEL_InsertRecForTrans(slot, "PERSON", &buffer) == ORMEL_OK, "the record cannot be inserted");
}

} // namespace

int main() {
    require(ORMEL_Init() == ORMEL_OK, "the library does not start");
    ORMEL_TRANS *slot = ORMEL_StartTrans(__func__, __LINE__);
    require(slot != nullptr, "no transaction");
    insert(slot, 1, "kept");
    require(ORMEL_CommitTrans(slot) == ORMEL_OK, "the commit failed");
    slot = ORMEL_StartTrans(__func__, __LINE__);
    require(slot != nullptr, "no second transaction");
    insert(slot, 2, "taken back");
    require(ORMEL_RollbackTrans(slot) == ORMEL_OK, "the rollback failed");
    require(persons() == 1, "the transactions left other records than one");
    uint32_t deleted = 0;
    require(ORMEL_DeleteRec("PERSON", nullptr, &deleted) == ORMEL_OK && deleted == 1, "the record cannot be deleted");
    ORMEL_UnInit();
}
