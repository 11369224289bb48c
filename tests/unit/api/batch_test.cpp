#include "ormeldb/batch.h"

#include "support/started.h"

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using unit::Client;
using unit::kClientStatus;
using unit::Log;
using unit::operator+;

namespace {

using Calls = std::vector<std::string>;

struct MultiDeleter {
    void operator()(ORMEL_MULTI_OBJECT *multi) const { ORMEL_Multi_object_UnInit(multi); }
};
using Multi = std::unique_ptr<ORMEL_MULTI_OBJECT, MultiDeleter>;

const std::string kInsert = "INSERT INTO PART (ID, NAME, DRAWING) values (:1, :2, :3)";

// A started library and the table PART.
class BatchApiTest : public unit::StartedTest {
protected:
    void SetUp() override {
        StartedTest::SetUp();
        Script();
    }

    // A client that was asked nothing yet and knows the table.
    static void Script() {
        Client().Reset();
        Have("PART", {{"ID", 1, 4, 1}, {"NAME", 9, 21, 0}, {"DRAWING", 14, 44, 0}});
        Client().On("INSERT", {.affected = 3});
        Log().Forget();
    }

    // Everything as on the first call: no table is cached.
    static void Fresh() {
        ORMEL_ResAttMgrUnInit();
        ORMEL_ResAttMgrInit();
        Script();
    }

    // Rows "0", "1x", "2xx" ... with their numbers as ID and those texts as NAME and DRAWING.
    static Multi Parts(int32_t rows) {
        Multi multi(ORMEL_Multi_object_Init("PART", rows));
        for (int32_t r = 0; r < rows; ++r) {
            std::string text = std::to_string(r) + std::string(static_cast<size_t>(r), 'x');
            ORMEL_OBJECT *part = &multi->astObject[r];
            EXPECT_EQ(ORMEL_ObjectInt32Set(part, "ID", r), 0u);
            EXPECT_EQ(ORMEL_ObjectStrSet(part, "NAME", text.c_str()), 0u);
            EXPECT_EQ(ORMEL_ObjectStrSet(part, "DRAWING", text.c_str()), 0u);
        }
        return multi;
    }

    static int Statements() { return Client().Count("prepare"); }
    static int Commits() { return Client().Count("commit"); }
};

// The three variants, each on whatever connection it works on.
struct Variant {
    const char *name;
    uint32_t (*run)(ORMEL_MULTI_OBJECT *);
    bool plain;
};
const Variant kVariants[] = {
    {"ORMEL_PatchInsertRecForConn2",
     [](ORMEL_MULTI_OBJECT *multi) {
         void *conn = ORMEL_DBConnect();
         uint32_t code = ORMEL_PatchInsertRecForConn2(conn, multi);
         ORMEL_DBDisConnect(conn);
         return code;
     },
     false},
    {"ORMEL_PatchInsertRecFormObj", ORMEL_PatchInsertRecFormObj, true},
    {"ORMEL_PatchInsertRecFormObjForTrans",
     [](ORMEL_MULTI_OBJECT *multi) {
         ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
         uint32_t code = ORMEL_PatchInsertRecFormObjForTrans(slot, multi);
         EXPECT_NE(ORMEL_TransGetConn(slot), nullptr) << "the slot is its owner's";
         ORMEL_RollbackTrans(slot);
         return code;
     },
     false},
};

class BatchVariantTest : public BatchApiTest, public testing::WithParamInterface<Variant> {
protected:
    // Runs the variant as on a first call; nothing was committed but what succeeded, and nothing is left.
    uint32_t Run(const Multi &multi) {
        uint32_t code = GetParam().run(multi.get());
        EXPECT_EQ(Commits(), GetParam().plain && code == 0 ? 1 : 0);
        EXPECT_EQ(Client().LiveConnections() + Client().LiveStatements(), 0);
        return code;
    }
};

// --- The road of one call ---

TEST_F(BatchApiTest, TheRoadOfABatch) {
    std::vector<std::string> names;
    Client().Hook("execute", [&] {
        for (const unit::Bound &bound : Client().Bounds()) {
            if (bound.type == 9) {
                for (size_t r = 0; r < 2; ++r) {
                    names.emplace_back(static_cast<const char *>(bound.address) + r * 21, bound.rowLengths[r]);
                }
            }
        }
    });
    Multi multi = Parts(2);
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(multi.get()), 0u);
    std::string name = "'0";
    for (int i = 1; i < 21; ++i) {
        name += "\\00";
    }
    EXPECT_THAT(Client().Calls(), ElementsAreArray(unit::Opened("c1") +
                                                   Calls{"alloc_stmt(c1)",
                                                         "prepare(s1, select * from PART where 1<>1)",
                                                         "execute(s1)",
                                                         "get_column_count(s1)",
                                                         "desc_column_by_id(s1, 0)",
                                                         "desc_column_by_id(s1, 1)",
                                                         "desc_column_by_id(s1, 2)",
                                                         "free_stmt(s1)",
                                                         "alloc_stmt(c1)",
                                                         "prepare(s2, " + kInsert + ")",
                                                         "set_paramset_size(s2, 2)",
                                                         "bind_by_pos(s2, 0, 1, '\\00\\00\\00\\00', 4, lengths)",
                                                         "bind_by_pos(s2, 1, 9, " + name + "', 21, lengths)",
                                                         "bind_by_pos(s2, 2, 14, slot 0, 16, lengths)",
                                                         "write_batch_blob(s2, 2, 0, 1)",
                                                         "write_batch_blob(s2, 2, 1, 2)",
                                                         "execute(s2)",
                                                         "get_affected_rows(s2)",
                                                         "free_stmt(s2)",
                                                         "commit(c1)"} +
                                                   unit::Closed("c1")));
    EXPECT_THAT(names, ElementsAre("0", "1x"));
    EXPECT_THAT(Log().LinesOf("ORMEL_Patch"), ElementsAre("DEBUG ORMEL_PatchInsertRecFormObj: Trace in."));
    EXPECT_THAT(Log().LinesOf("dbPatch"), ElementsAre("DEBUG dbPatchInsertRec: BatchInsert rec rowCount = 3"));
    EXPECT_NE(multi->astObject[1].astItem[0].pValue, nullptr) << "the container stays its caller's";
}

TEST_F(BatchApiTest, NullReachesTheDatabaseInEveryRow) {
    Multi multi = Parts(3);
    for (int32_t r : {0, 1}) {
        ORMEL_OBJECT *part = &multi->astObject[r];
        ORMEL_ObjectParaClear(part);
        for (const char *name : {"ID", "NAME", "DRAWING"}) {
            EXPECT_EQ(ORMEL_ObjectNullSet(part, name), 0u);
        }
    }
    std::vector<std::vector<uint16_t>> lengths;
    Client().Hook("execute", [&] {
        for (const unit::Bound &bound : Client().Bounds()) {
            lengths.emplace_back(bound.rowLengths, bound.rowLengths + 3);
        }
    });
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(multi.get()), 0u);
    EXPECT_THAT(lengths, ElementsAre(ElementsAre(65535, 65535, 4), ElementsAre(65535, 65535, 3), Each(16)));
    EXPECT_EQ(Client().Count("write_batch_blob"), 1);
    EXPECT_THAT(Client().Calls(), testing::Contains("write_batch_blob(s2, 2, 2, 3)")) << "the row after them";
}

// What is refused is refused by the database, which tells the row.
TEST_F(BatchApiTest, ATextThatDoesNotFitKeepsItsLength) {
    Multi multi = Parts(1);
    ORMEL_ObjectParaClear(&multi->astObject[0]);
    ORMEL_ObjectStrSet(&multi->astObject[0], "NAME", std::string(22, 'x').c_str());
    uint16_t length = 0;
    Client().Hook("bind_by_pos", [&] { length = Client().Bounds()[0].rowLengths[0]; });
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(multi.get()), 0u);
    EXPECT_EQ(length, 22);
}

TEST_F(BatchApiTest, OneHundredThousandRowsAreOneStatementAndNoLine) {
    unit::Threshold quiet(KPL_LOG_ERROR);
    constexpr int32_t kRows = 100000;
    Have("PART", {{"ID", 1, 4, 1}, {"NAME", 9, 21, 0}});
    Client().On("INSERT", {.affected = kRows});
    Multi multi(ORMEL_Multi_object_Init("PART", kRows));
    for (int32_t r = 0; r < kRows; ++r) {
        ORMEL_ObjectInt32Set(&multi->astObject[r], "ID", r);
        ORMEL_ObjectStrSet(&multi->astObject[r], "NAME", "cog");
    }
    int32_t last = 0;
    Client().Hook("execute", [&] {
        if (!Client().Bounds().empty()) {
            std::memcpy(&last, static_cast<const char *>(Client().Bounds()[0].address) + (kRows - 1) * 4, 4);
        }
    });
    void *conn = ORMEL_DBConnect();
    Client().ForgetCalls();
    EXPECT_EQ(ORMEL_PatchInsertRecForConn2(conn, multi.get()), 0u);
    Calls calls = Client().CallsButReads();
    EXPECT_EQ(Calls(calls.end() - 7, calls.end() - 4),
              (Calls{"alloc_stmt(c1)", "prepare(s2, INSERT INTO PART (ID, NAME) values (:1, :2))",
                     "set_paramset_size(s2, 100000)"}));
    EXPECT_EQ(Calls(calls.end() - 2, calls.end()), (Calls{"execute(s2)", "free_stmt(s2)"}));
    EXPECT_EQ(last, kRows - 1);
    EXPECT_THAT(Log().Raw(), IsEmpty());
    ORMEL_DBDisConnect(conn);
}

// --- Variants ---

TEST_P(BatchVariantTest, InsertsAndCommitsOnItsOwnConnectionOnly) {
    Multi multi = Parts(3);
    EXPECT_EQ(Run(multi), 0u);
    EXPECT_THAT(Client().Calls(), testing::Contains("prepare(s2, " + kInsert + ")"));
    EXPECT_THAT(Client().Calls(), testing::Contains("set_paramset_size(s2, 3)"));
    EXPECT_EQ(Client().Count("rollback"), GetParam().name == std::string("ORMEL_PatchInsertRecFormObjForTrans"));
    EXPECT_EQ(Log().Lines(KPL_LOG_ERROR), unit::Lines{});
}

TEST_P(BatchVariantTest, NothingInsertedIsNoFailure) {
    Client().On("INSERT", {.affected = 0});
    EXPECT_EQ(Run(Parts(1)), 0u);
}

TEST_P(BatchVariantTest, ATableThatCannotBeDescribed) {
    for (int32_t rows : {0, 1}) {
        for (const char *operation : {"alloc_stmt", "prepare", "execute", "get_column_count"}) {
            Fresh();
            Client().Fail(operation);
            EXPECT_EQ(Run(Parts(rows)), 125u);
            EXPECT_LE(Statements(), 1);
        }
    }
    EXPECT_EQ(Run(Multi(ORMEL_Multi_object_Init("a_table_name_of_28_characters", 1))), 125u) << "it has no name";
}

TEST_P(BatchVariantTest, NoRows) {
    for (int32_t rows : {0, -1, INT32_MIN}) {
        Fresh();
        EXPECT_EQ(Run(Multi(ORMEL_Multi_object_Init("PART", rows))), 255u);
        EXPECT_EQ(Statements(), 1) << "the probe";
        EXPECT_NE(ORMEL_ResAttGet("PART"), nullptr) << "the descriptor was given back";
    }
}

TEST_P(BatchVariantTest, AnObjectThatIsRefused) {
    for (int32_t refused : {0, 2}) {
        Fresh();
        Multi multi = Parts(3);
        ORMEL_ObjectInt32Set(&multi->astObject[refused], "NOBODY", 1);
        EXPECT_EQ(Run(multi), 98u);
        EXPECT_EQ(Statements(), 1) << "the probe";
        EXPECT_EQ(Client().Count("bind_by_pos"), 0);
        EXPECT_THAT(Log().Lines(KPL_LOG_ERROR),
                    ElementsAre("ERROR ORMEL_PatchInsertRecForConn2: PatchInsert ObjectCheck return: 0x62"));
        EXPECT_NE(ORMEL_ResAttGet("PART"), nullptr) << "the descriptor was given back";
    }
}

TEST_P(BatchVariantTest, CountsOfItemsThatCannotBe) {
    Multi multi = Parts(3);
    for (int32_t row : {0, 2}) {
        for (int32_t items : {-1, 33, INT32_MAX}) {
            Fresh();
            multi->astObject[row].iItemNum = items;
            EXPECT_EQ(Run(multi), 98u);
            EXPECT_EQ(Statements(), 1);
        }
        multi->astObject[row].iItemNum = 3;
    }
}

TEST_P(BatchVariantTest, AnObjectWithOtherColumnsThanTheFirst) {
    const std::vector<std::vector<std::string>> lists = {
        {"ID", "DRAWING", "NAME"}, {"ID", "NAME"}, {"ID", "NAME", "DRAWING", "NAME"}, {"ID", "NAME", "NAME"}, {}};
    for (const auto &list : lists) {
        SCOPED_TRACE(list.size());
        Fresh();
        Multi multi = Parts(3);
        ORMEL_ObjectParaClear(&multi->astObject[2]);
        for (const std::string &name : list) {
            EXPECT_EQ(ORMEL_ObjectBinarySet(&multi->astObject[2], name.c_str(), "abcd", 4), 0u);
        }
        EXPECT_EQ(Run(multi), 98u);
        EXPECT_EQ(Statements(), 1);
        EXPECT_EQ(Client().Count("bind_by_pos"), 0);
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR).size(), 1u);
    }
}

TEST_P(BatchVariantTest, AValueThatCannotBeCounted) {
    Multi multi = Parts(2);
    ORMEL_ObjectParaClear(&multi->astObject[1]);
    const std::string large(65535, 'x');
    ORMEL_ObjectInt32Set(&multi->astObject[1], "ID", 1);
    ORMEL_ObjectStrSet(&multi->astObject[1], "NAME", large.c_str());
    ORMEL_ObjectStrSet(&multi->astObject[1], "DRAWING", large.c_str());
    EXPECT_EQ(Run(multi), 98u);
    EXPECT_EQ(Statements(), 1);
    EXPECT_EQ(Log().Lines(KPL_LOG_ERROR).size(), 1u);
}

TEST_P(BatchVariantTest, NoItems) {
    EXPECT_EQ(Run(Multi(ORMEL_Multi_object_Init("PART", 2))), 211u);
    EXPECT_EQ(Statements(), 1);
    EXPECT_THAT(Log().Lines(KPL_LOG_ERROR),
                ElementsAre("ERROR ORMEL_PatchInsertRecForConn2: dbPatchInsertRec return: 0xd3"));
}

TEST_P(BatchVariantTest, AStatementWithoutResult) {
    const std::pair<const char *, int> failures[] = {{"alloc_stmt", 2},  {"prepare", 2},          {"bind_by_pos", 1},
                                                     {"bind_by_pos", 3}, {"write_batch_blob", 2}, {"execute", 2}};
    for (const auto &[operation, n] : failures) {
        SCOPED_TRACE(operation);
        Fresh();
        Client().Fail(operation, n);
        EXPECT_EQ(Run(Parts(3)), 211u);
        EXPECT_EQ(Client().Count("get_error"), 1);
        EXPECT_EQ(Log().Lines(KPL_LOG_ERROR).back(),
                  "ERROR ORMEL_PatchInsertRecForConn2: dbPatchInsertRec return: 0xd3");
        EXPECT_NE(ORMEL_ResAttGet("PART"), nullptr) << "the descriptor was given back";
    }
}

TEST_P(BatchVariantTest, EveryCallOfTheClientMayFail) {
    unit::Threshold silent(KPL_LOG_FATAL);
    for (const char *operation : {"alloc_stmt", "prepare", "bind_by_pos", "set_paramset_size", "write_batch_blob",
                                  "execute", "get_column_count", "desc_column_by_id", "free_stmt"}) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE(std::string(operation) + " " + std::to_string(n));
            Fresh();
            Client().Fail(operation, n);
            uint32_t code = Run(Parts(2));
            if (Client().Count(operation) < n) {
                EXPECT_EQ(code, 0u);
                break;
            }
        }
    }
}

// A batch whose arrays cannot be had answers 0 and sends nothing: the plain variant commits what is not there.
TEST_P(BatchVariantTest, EveryAllocationMayFail) {
    Multi multi = Parts(2);
    uint32_t code = 0;
    int silent = 0;
    int allocations = unit::ForEachAllocation(
        [&] {
            Fresh();
            code = Run(multi);
        },
        [&](int n) {
            SCOPED_TRACE(n);
            bool arrays = !Log().LinesOf("ORMEL_BatchInsert_Para_Malloc", KPL_LOG_ERROR).empty();
            silent += arrays ? 1 : 0;
            EXPECT_TRUE(code == 0u || code == 125u || code == 211u) << code;
            if (arrays) {
                EXPECT_EQ(code, 0u);
                EXPECT_EQ(Statements(), 1) << "the probe";
            }
        });
    EXPECT_EQ(code, 0u);
    EXPECT_EQ(silent, 8) << "the block, two arrays for each column and three for large objects";
    EXPECT_GE(allocations, 8 + 4);
}

INSTANTIATE_TEST_SUITE_P(Batch, BatchVariantTest, testing::ValuesIn(kVariants),
                         [](const auto &info) { return std::string(info.param.name + 6); });

// --- What differs between the variants ---

TEST_F(BatchApiTest, NeedsItsArguments) {
    Multi multi = Parts(1);
    void *conn = ORMEL_DBConnect();
    ORMEL_TRANS *slot = ORMEL_StartTrans("f", 1);
    Client().ForgetCalls();
    Log().Forget();
    EXPECT_EQ(ORMEL_PatchInsertRecForConn2(nullptr, multi.get()), 97u);
    EXPECT_EQ(ORMEL_PatchInsertRecForConn2(conn, nullptr), 97u);
    EXPECT_EQ(ORMEL_PatchInsertRecForConn2(nullptr, nullptr), 97u);
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(nullptr), 97u);
    EXPECT_EQ(ORMEL_PatchInsertRecFormObjForTrans(nullptr, multi.get()), 97u);
    EXPECT_EQ(ORMEL_PatchInsertRecFormObjForTrans(slot, nullptr), 97u);
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), IsEmpty());
    ORMEL_RollbackTrans(slot);
    ORMEL_DBDisConnect(conn);
}

TEST_F(BatchApiTest, WithoutAConnection) {
    Multi multi = Parts(1);
    for (const char *operation : {"alloc_conn", "set_conn_attr", "connect"}) {
        Client().Fail(operation);
        EXPECT_EQ(ORMEL_PatchInsertRecFormObj(multi.get()), 211u);
    }
    EXPECT_EQ(Statements(), 0);
    Client().ForgetCalls();
    Log().Forget();
    EXPECT_EQ(ORMEL_PatchInsertRecFormObjForTrans(&g_stTransMgr.astTrans[0], multi.get()), 211u);
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG ORMEL_PatchInsertRecFormObjForTrans: Trace in."));
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(BatchApiTest, ARefusedCommitIsReturned) {
    Client().Fail("commit");
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(Parts(1).get()), kClientStatus);
    Calls calls = Client().Calls();
    EXPECT_EQ(Calls(calls.end() - 4, calls.end()), (Calls{"commit(c1)", "get_error(c1)"} + unit::Closed("c1")));
}

} // namespace
