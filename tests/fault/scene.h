// What an operation finds when it runs: a started library, tables, arguments that fit, and places for what it hands
// out.
#ifndef FAULT_SCENE_H
#define FAULT_SCENE_H

#include <gtest/gtest.h>

#include "ormeldb.h"
#include "ormeldb/cache.h"
#include "support/sample.h"

namespace fault {

// What a scene holds besides its arguments.
enum Needs : unsigned {
    kNothing = 0,
    kConn = 1,           // a connection
    kSlot = 2,           // a slot with a transaction
    kSelectSlot = 4,     // a slot with the descriptor of PARTS
    kCursor = 8,         // an open cursor over PARTS
    kPrepared = 16,      // a prepared insert into PARTS, on the connection
    kQuery = 32,         // an executed select from PARTS, on the connection
    kRow = 64,           // the same, on its first row
    kMulti = 128,        // a container of two parts
    kBatch = 256,        // the same, and a batch filled from it
    kResult = 512,       // a result of two parts
    kCached = 1024,      // the library's cache knows both tables
    kRequest = 2048,     // a parameter list that inserts a part
    kSetAndWhere = 4096, // one that sets a part where all its columns have such values
    kStopped = 8192,     // the library is stopped
    kEmptyCursor = 16384 // an open cursor over EMPTY
};

// Places that an operation writes to; what it leaves alone stays as it was laid out.
struct Outputs {
    Outputs() { LayOut(); }
    Outputs(const Outputs &) = delete;
    Outputs &operator=(const Outputs &) = delete;
    void LayOut();

    uint32_t count;
    int32_t integer;
    int64_t number;
    uint8_t fields;
    char names[8][ORMEL_NAME_SIZE];
    char text[ORMEL_CONN_STR_SIZE];
    uint8_t bytes[4096];
    void *lobs;
    DB_FIELD cells[4];
    ORMEL_RECORD_BUFFER buffer; // over the bytes
    ORMEL_SELECT_RESULT result;
    ORMEL_ERROR error;
};

class Scene {
public:
    // Everything is made anew; with cached, the library's cache knows both tables.
    Scene(unsigned needs, bool cached);
    ~Scene();
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;

    // Gives back what the operation handed out and lays the places out anew.
    void Release();

    // Notes what an operation made; 0, or kNull.
    uint32_t Made(DB_RESULT *result);
    uint32_t MadeStatement(void *statement);
    uint32_t MadeConnection(void *connection);
    uint32_t MadeBlock(void *block);
    uint32_t Made(ORMEL_TRANS *taken);
    uint32_t Made(ORMEL_RES_ATT *descriptor);
    uint32_t Made(ORMEL_MULTI_OBJECT *container);
    uint32_t Made(ORMEL_PARA_BATCH *filled);
    // What is handed out by a failing call as well.
    void ReleaseLobs();

    void *conn = nullptr;
    void *stmt = nullptr;
    ORMEL_TRANS *slot = nullptr;
    unit::Person person = unit::MakePerson(7, "Ann", -1);
    ORMEL_RECORD_BUFFER record = unit::BufferOf(person);
    unit::Conditions conditions; // PERSON: ID = 7
    unit::Selection selection{{2}};
    ORMEL_OBJECT part{};  // a part with its large objects
    ORMEL_OBJECT where{}; // PARTS: ID = 7
    ORMEL_OBJECT some{};  // the same, and two select fields
    ORMEL_OBJECT fresh{}; // for the setters
    ORMEL_PARA para{};
    ORMEL_PARA empty{};
    unit::Descriptor persons, parts;
    ORMEL_MULTI_OBJECT *multi = nullptr;
    ORMEL_PARA_BATCH *batch = nullptr;
    unit::Result rows;
    ORMEL_SELECT_RESULT selected{}; // of the rows
    ORMEL_CACHE_MGR cache{};        // of the scene's own, with one entry
    Outputs out;

private:
    void OpenConnection(unsigned needs);
    void FillObjects();
    void MakeBatch(unsigned needs);
    void MakeLists(unsigned needs);
    void MakeCache();

    DB_RESULT *madeResult_ = nullptr;
    void *madeStatement_ = nullptr;
    void *madeConnection_ = nullptr;
    void *madeBlock_ = nullptr;
    ORMEL_TRANS *taken_ = nullptr;
    ORMEL_RES_ATT *madeDescriptor_ = nullptr;
    ORMEL_MULTI_OBJECT *madeMulti_ = nullptr;
    ORMEL_PARA_BATCH *madeBatch_ = nullptr;
};

// Stands for NULL where an operation gives a pointer, and for the 0 of those that answer 1 when all went well.
inline constexpr uint32_t kNull = 0xAAAA0000;

// The table of large objects.
std::vector<unit::Column> PartColumns();

} // namespace fault

#endif
