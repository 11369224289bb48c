#include "scene.h"

#include <utility>

#include "dao/qdc.h"

using unit::Client;

namespace fault {

namespace {

const std::string kLong(250, 'x'); // a large object, which the client gives in pieces

unit::Cell Large(uint32_t size) {
    unit::Cell cell = unit::Lob(kLong, size);
    cell.chunk = 100;
    return cell;
}

// Lays out what the client answers. The second part's picture is longer than the client says.
void Script() {
    Client().Reset();
    std::vector<unit::Column> persons = unit::PersonColumns();
    Client().On("select * from PERSON where 1<>1", {.columns = persons});
    Client().On("SELECT * FROM PERSON",
                {.columns = persons, .rows = {unit::PersonRow(7, "Ann", -1), unit::PersonRow(8, "Bob", 1)}});
    std::vector<std::vector<unit::Cell>> parts = {{unit::Int32(7), unit::Text("cog"), Large(44), Large(44)},
                                                  {unit::Int32(8), unit::Null(), unit::Null(), Large(100)}};
    Client().On("select * from PARTS where 1<>1", {.columns = PartColumns()});
    Client().On("SELECT * FROM PARTS", {.columns = PartColumns(), .rows = parts});
    Client().On("select * from EMPTY where 1<>1", {.columns = persons});
    Client().On("SELECT * FROM EMPTY", {.columns = persons});
    Client().On("SELECT NAME, ID",
                {.columns = {{"NAME", 9, 21}, {"ID", 1, 4, 1}}, .rows = {{unit::Text("cog"), unit::Int32(7)}}});
    Client().On("SELECT count(*)", {.columns = {{"COUNT", 2, 8, 1}}, .rows = {{unit::Int64(2)}}});
    Client().On("SELECT COLUMN_NAME", {.columns = {{"COLUMN_NAME", 9, 28}}, .rows = {{unit::Text("ID")}}});
    for (const char *write : {"INSERT", "DELETE", "UPDATE"}) {
        Client().On(write, {.affected = 1});
    }
}

void *Prepared(void *conn, const char *sql) {
    void *stmt = dbCreateStmt(conn);
    EXPECT_EQ(qdc_prepare(stmt, sql), 0u);
    return stmt;
}

void FillPart(ORMEL_OBJECT &part, int32_t id) {
    ORMEL_ObjectNameSet(&part, "PARTS");
    ORMEL_ObjectInt32Set(&part, "ID", id);
    ORMEL_ObjectStrSet(&part, "NAME", "cog");
    ORMEL_ObjectTextSet(&part, "NOTE", kLong.c_str());
    ORMEL_ObjectBinarySet(&part, "PHOTO", "abc", 3);
}

uint32_t Given(const void *made) {
    return made != nullptr ? ORMEL_OK : kNull;
}

} // namespace

std::vector<unit::Column> PartColumns() {
    return {{"ID", 1, 4, 1}, {"NAME", 9, 21, 0}, {"NOTE", 13, 44, 0}, {"PHOTO", 14, 44, 0}};
}

// The padding is laid out as well, so that the places can be compared byte by byte.
void Outputs::LayOut() {
    std::memset(static_cast<void *>(this), 0x5A, sizeof(*this));
    lobs = nullptr;
    std::memset(cells, 0, sizeof(cells));
    std::memset(&result, 0, sizeof(result));
    buffer = {sizeof(unit::Person), 0, sizeof(bytes), 0, bytes};
}

Scene::Scene(unsigned needs, bool cached) {
    Script();
    conditions.Add(0, ORMEL_OP_EQUAL, unit::Bytes(int32_t{7}));
    persons = unit::Describe("PERSON", unit::PersonColumns());
    parts = unit::Describe("PARTS", PartColumns());
    if (cached || (needs & kCached) != 0) {
        ORMEL_ResAttPush(unit::Describe("PERSON", unit::PersonColumns()).release());
        ORMEL_ResAttPush(unit::Describe("PARTS", PartColumns()).release());
    }
    FillObjects();
    MakeLists(needs);
    MakeBatch(needs);
    MakeCache();
    OpenConnection(needs);
    if ((needs & kResult) != 0) {
        unit::Value name{9, std::string("cog\0", 4)};
        rows = unit::MakeResult({{{1, unit::Bytes(int32_t{7})}, name, {13, "note"}, {14, "photo"}},
                                 {{1, unit::Bytes(int32_t{8})}, {9, std::nullopt}, {13, ""}, {14, "photo"}}});
        selected = {parts.get(), rows.get(), 2};
    }
}

Scene::~Scene() {
    Release();
    ORMEL_CacheUnInit(&cache);
    ORMEL_BatchInsert_Para_Free(batch);
    ORMEL_Multi_object_UnInit(multi);
    for (ORMEL_OBJECT *object : {&part, &where, &some, &fresh}) {
        ORMEL_ObjectParaClear(object);
    }
    dbFreeStmt(stmt);
    if (slot != nullptr) {
        ORMEL_TransDestory(slot);
    }
    dbDisconnect(conn);
    ORMEL_ResAttMgrUnInit();
    ORMEL_ResAttMgrInit();
}

void Scene::FillObjects() {
    FillPart(part, 7);
    for (ORMEL_OBJECT *object : {&where, &some}) {
        ORMEL_ObjectNameSet(object, "PARTS");
        ORMEL_ObjectInt32Set(object, "ID", 7);
    }
    ORMEL_ObjectSelectFieldSet(&some, "NAME");
    ORMEL_ObjectSelectFieldSet(&some, "ID");
    ORMEL_ObjectNameSet(&fresh, "PARTS");
    for (ORMEL_OBJECT *object : {&part, &where, &some}) {
        EXPECT_EQ(ORMEL_ObjectCheck(object, parts.get()), ORMEL_OK);
    }
}

void Scene::MakeLists(unsigned needs) {
    if ((needs & (kRequest | kSetAndWhere)) != 0) {
        EXPECT_EQ(ORMEL_ParaFieldUpdateByObject(&para, &part), ORMEL_OK);
    }
    if ((needs & kSetAndWhere) != 0) {
        EXPECT_EQ(ORMEL_ParaCondUpdateByObject(&para, &part), ORMEL_OK);
    }
}

void Scene::MakeBatch(unsigned needs) {
    if ((needs & (kMulti | kBatch)) == 0) {
        return;
    }
    multi = ORMEL_Multi_object_Init("PARTS", 2);
    for (int32_t i = 0; i < 2; ++i) {
        FillPart(multi->astObject[i], i);
        EXPECT_EQ(ORMEL_ObjectCheck(&multi->astObject[i], parts.get()), ORMEL_OK);
    }
    if ((needs & kBatch) != 0) {
        batch = ORMEL_BatchInsert_Para_Malloc(4, multi);
        EXPECT_EQ(ORMEL_SetBatchParaByObject(batch, multi, parts.get()), ORMEL_OK);
    }
}

void Scene::MakeCache() {
    ORMEL_CacheInit(&cache, ORMEL_ResAttCmp, ORMEL_ResAttShow);
    EXPECT_EQ(ORMEL_CacheAdd(&cache, persons.get(), sizeof(ORMEL_RES_ATT) + 3 * sizeof(ORMEL_RES_ATT_FIELD)), ORMEL_OK);
}

void Scene::OpenConnection(unsigned needs) {
    if ((needs & (kConn | kPrepared | kQuery | kRow)) != 0) {
        conn = ORMEL_DBConnect();
    }
    if ((needs & kPrepared) != 0) {
        stmt = Prepared(conn, "INSERT INTO PARTS");
    }
    if ((needs & (kQuery | kRow)) != 0) {
        stmt = Prepared(conn, "SELECT * FROM PARTS");
        EXPECT_EQ(qdc_execute(stmt), 0u);
    }
    if ((needs & kRow) != 0) {
        EXPECT_EQ(dbMoveNext(stmt), 1u);
    }
    if ((needs & kSlot) != 0) {
        slot = ORMEL_StartTrans("scene", 1);
    }
    if ((needs & kSelectSlot) != 0) {
        slot = ORMEL_SelectTransCreate("PARTS", "scene", 1);
    }
    if ((needs & kCursor) != 0) {
        slot = ORMEL_BeginSelect("PARTS", "scene", 1);
    }
    if ((needs & kEmptyCursor) != 0) {
        slot = ORMEL_BeginSelect("EMPTY", "scene", 1);
    }
    if ((needs & kStopped) != 0) {
        ORMEL_UnInit();
        g_pstVemloLogHandle = nullptr;
    }
}

uint32_t Scene::Made(DB_RESULT *result) {
    madeResult_ = result;
    return Given(result);
}
uint32_t Scene::MadeStatement(void *statement) {
    madeStatement_ = statement;
    return Given(statement);
}
uint32_t Scene::MadeConnection(void *connection) {
    madeConnection_ = connection;
    return Given(connection);
}
uint32_t Scene::MadeBlock(void *block) {
    madeBlock_ = block;
    return Given(block);
}
uint32_t Scene::Made(ORMEL_TRANS *taken) {
    taken_ = taken;
    return Given(taken);
}
uint32_t Scene::Made(ORMEL_RES_ATT *descriptor) {
    madeDescriptor_ = descriptor;
    return Given(descriptor);
}
uint32_t Scene::Made(ORMEL_MULTI_OBJECT *container) {
    madeMulti_ = container;
    return Given(container);
}
uint32_t Scene::Made(ORMEL_PARA_BATCH *filled) {
    madeBatch_ = filled;
    return Given(filled);
}

void Scene::ReleaseLobs() {
    std::free(std::exchange(out.lobs, nullptr));
}

void Scene::Release() {
    ReleaseLobs();
    dbResClear(std::exchange(madeResult_, nullptr));
    dbFreeStmt(std::exchange(madeStatement_, nullptr));
    dbDisconnect(std::exchange(madeConnection_, nullptr));
    std::free(std::exchange(madeBlock_, nullptr));
    ORMEL_TransDestory(std::exchange(taken_, nullptr));
    ORMEL_DestoryResAtt(std::exchange(madeDescriptor_, nullptr));
    ORMEL_Multi_object_UnInit(std::exchange(madeMulti_, nullptr));
    ORMEL_BatchInsert_Para_Free(std::exchange(madeBatch_, nullptr));
    ORMEL_ObjectParaClear(&fresh);
    dbFieldClear(out.cells, sizeof(out.cells) / sizeof(out.cells[0]));
    if (slot != nullptr && out.result.pstResAtt == slot->pstResAtt) {
        ORMEL_SelectResultClearForFetch(&out.result);
    } else {
        ORMEL_SelectResultClear(&out.result);
    }
    out.LayOut();
}

} // namespace fault
