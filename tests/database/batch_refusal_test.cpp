// Batches that are refused before anything is sent, and what becomes of a large object that nobody supplied.
#include <algorithm>
#include <memory>

#include "support/batches.h"

namespace {

using namespace database;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class BatchRefusalTest : public DatabaseTest {
protected:
    BatchRefusalTest() { make("parts", partColumns()); }

    static std::vector<std::string> ids() { return query("SELECT id FROM parts ORDER BY id"); }
};

// --- Objects that are not alike ---

// What the third object has besides an id, where the others have a name and a note; and what the log says.
struct Other {
    const char *name;
    void (*fill)(ORMEL_OBJECT *object);
    const char *words;
};

void setText(ORMEL_OBJECT *object, const char *column) {
    ORMEL_ObjectStrSet(object, column, "x");
}

const Other kOthers[] = {
    {"another order",
     [](ORMEL_OBJECT *object) {
         setText(object, "note");
         setText(object, "name");
     },
     "row 2, column NOTE: the first object has another column at this place"},
    {"another column",
     [](ORMEL_OBJECT *object) {
         setText(object, "code");
         setText(object, "note");
     },
     "row 2, column CODE: the first object has another column at this place"},
    {"a column twice",
     [](ORMEL_OBJECT *object) {
         setText(object, "name");
         setText(object, "name");
     },
     "row 2, column NAME: the first object has another column at this place"},
    {"a column less", [](ORMEL_OBJECT *object) { setText(object, "name"); },
     "row 2, column ?: the first object has another number of columns"},
    {"a column more",
     [](ORMEL_OBJECT *object) {
         setText(object, "name");
         setText(object, "note");
         setText(object, "code");
     },
     "row 2, column ?: the first object has another number of columns"},
    {"an unknown column",
     [](ORMEL_OBJECT *object) {
         setText(object, "name");
         setText(object, "height");
     },
     "PatchInsert ObjectCheck return: 0x62"},
    {"a column without a name",
     [](ORMEL_OBJECT *object) {
         setText(object, "name");
         setText(object, "");
     },
     "PatchInsert ObjectCheck return: 0x62"},
};

// Four objects, the third of which is another one.
void fillWith(const Batch &batch, const Other &other) {
    for (size_t row = 0; row < 4; ++row) {
        ORMEL_ObjectInt32Set(batch[row], "id", static_cast<int32_t>(row));
        if (row == 2) {
            other.fill(batch[row]);
            continue;
        }
        setText(batch[row], "name");
        setText(batch[row], "note");
    }
}

TEST_F(BatchRefusalTest, ObjectsThatListOtherColumnsThanTheFirst) {
    for (const Other &other : kOthers)
        for (const Variant &variant : variants()) {
            SCOPED_TRACE(std::string(other.name) + ", " + variant.name);
            log();
            {
                const Batch batch("parts", 4);
                fillWith(batch, other);
                EXPECT_EQ(variant.insert(batch), ORMEL_ERR_CHECK);
            }
            EXPECT_THAT(log(), AllOf(HasSubstr(std::string(other.words) + "\r\n"), Not(HasSubstr("dbPatchInsertRec"))));
            EXPECT_THAT(ids(), IsEmpty());
        }
}

TEST_F(BatchRefusalTest, TheOthersOfASlotsTransactionStay) {
    Transaction transaction;
    Object before("parts");
    fill(before, {1});
    EXPECT_EQ(ORMEL_InsertRecByObjForTrans(transaction, before), ORMEL_OK);
    const Batch batch("parts", 4);
    fillWith(batch, kOthers[0]);
    EXPECT_EQ(ORMEL_PatchInsertRecFormObjForTrans(transaction, batch), ORMEL_ERR_CHECK);
    EXPECT_EQ(transaction.commit(), ORMEL_OK);
    EXPECT_THAT(ids(), ElementsAre("1"));
}

// --- Counts and lengths ---

TEST_F(BatchRefusalTest, WithoutObjectsOrColumns) {
    for (const Variant &variant : variants()) {
        SCOPED_TRACE(variant.name);
        for (const int32_t objects : {0, -1, -1000000}) {
            const std::unique_ptr<ORMEL_MULTI_OBJECT, decltype(&ORMEL_Multi_object_UnInit)> multi(
                ORMEL_Multi_object_Init("parts", objects), ORMEL_Multi_object_UnInit);
            ASSERT_NE(multi, nullptr);
            EXPECT_EQ(multi->uiRecNum, 0U);
            EXPECT_EQ(variant.insert(multi.get()), ORMEL_ERR_TABLE);
        }
        const Batch empty("parts", 3);
        EXPECT_EQ(variant.insert(empty), ORMEL_ERR_NO_RESULT);
        const Batch absent("nowhere", 1);
        ORMEL_ObjectInt32Set(absent[0], "id", 1);
        EXPECT_EQ(variant.insert(absent), ORMEL_ERR_OBJ_TABLE);
    }
    EXPECT_THAT(ids(), IsEmpty());
}

// Values of the most bytes that a batch counts, and of one more.
TEST_F(BatchRefusalTest, BytesOfMoreThan65534) {
    NEEDS(fixedBytes);
    make("wide", "id INTEGER, v VARBINARY(65534)");
    const std::string longest(65534, '\x7F');
    for (const size_t size : {longest.size(), longest.size() + 1}) {
        const Batch batch("wide", 2);
        for (const int32_t row : {0, 1}) {
            ORMEL_ObjectInt32Set(batch[static_cast<size_t>(row)], "id", row);
            const std::string bytes = row == 0 ? "short" : std::string(size, '\x7F');
            ORMEL_ObjectBinarySet(batch[static_cast<size_t>(row)], "v", bytes.data(),
                                  static_cast<int32_t>(bytes.size()));
        }
        EXPECT_EQ(ORMEL_PatchInsertRecFormObj(batch), size == longest.size() ? ORMEL_OK : ORMEL_ERR_CHECK);
        EXPECT_THAT(query("SELECT length(v) FROM wide ORDER BY id"), ElementsAre("5", "65534"));
    }
}

// The most characters of the widest column, each of four bytes, and what is longer.
TEST_F(BatchRefusalTest, TextsOfMoreThan65532Bytes) {
    make("wide", "id INTEGER, t VARCHAR(16383)");
    std::string longest;
    while (longest.size() < size_t{4} * 16383)
        longest += "\xF0\x9F\x94\xA9";
    const std::pair<std::string, uint32_t> cases[] = {
        {longest, ORMEL_OK}, {longest + "x", ORMEL_ERR_NO_RESULT}, {longest + "xxx", ORMEL_ERR_CHECK}};
    for (const auto &[text, code] : cases) {
        const Batch batch("wide", 2);
        ORMEL_ObjectStrSet(batch[0], "t", "short");
        ORMEL_ObjectStrSet(batch[1], "t", text.c_str());
        EXPECT_EQ(ORMEL_PatchInsertRecFormObj(batch), code) << text.size();
    }
    EXPECT_THAT(query("SELECT length(CAST(t AS BLOB)) FROM wide"), ElementsAre("5", "65532"));
}

// --- Large objects that are not supplied ---

struct FreeBatch {
    void operator()(ORMEL_PARA_BATCH *batch) const { ORMEL_BatchInsert_Para_Free(batch); }
};
using Columns = std::unique_ptr<ORMEL_PARA_BATCH, FreeBatch>;

// What the insertion makes of objects before it runs the statement.
Columns columnsOf(void *connection, const Batch &batch, const char *table) {
    ORMEL_RES_ATT *att = ORMEL_CreatResAtt(connection, table, nullptr);
    ORMEL_MULTI_OBJECT *multi = batch;
    for (uint32_t row = 0; row < multi->uiRecNum; ++row)
        EXPECT_EQ(ORMEL_ObjectCheck(batch[row], att), ORMEL_OK);
    Columns columns(ORMEL_BatchInsert_Para_Malloc(batch[0]->iItemNum, multi));
    EXPECT_EQ(ORMEL_SetBatchParaByObject(columns.get(), multi, att), ORMEL_OK);
    ORMEL_DestoryResAtt(att);
    return columns;
}

class MissingLobTest : public DatabaseTest {
protected:
    static constexpr size_t kRows = 5;

    MissingLobTest() {
        make("lobs", "id INTEGER, c TEXT, b BLOB");
        for (size_t row = 0; row < kRows; ++row) {
            ORMEL_ObjectInt32Set(batch_[row], "id", static_cast<int32_t>(row));
            ORMEL_ObjectTextSet(batch_[row], "c", "");
            ORMEL_ObjectBinarySet(batch_[row], "b", "\0", 1);
        }
    }

    static std::vector<std::string> column(const std::string &name) {
        return query("SELECT quote(" + name + ") FROM lobs ORDER BY id");
    }

    Batch batch_{"lobs", kRows};
};

TEST_F(MissingLobTest, FromThereOnItsColumnIsNull) {
    const std::vector<std::string> empty(kRows, "''");
    const std::vector<std::string> zero(kRows, "X'00'");
    for (const int32_t column : {1, 2})
        for (const size_t missing : {size_t{0}, size_t{2}, kRows - 1}) {
            SCOPED_TRACE("column " + std::to_string(column) + ", row " + std::to_string(missing));
            const Connection connection;
            const Columns columns = columnsOf(connection, batch_, "lobs");
            columns->astItem[column].lobArray[missing] = nullptr;
            const std::unique_ptr<DB_RESULT, decltype(&dbResClear)> result(
                dbPatchInsertRec(connection, "lobs", columns.get()), dbResClear);
            ASSERT_NE(result, nullptr);
            EXPECT_EQ(result->uiRowCount, kRows);
            EXPECT_EQ(dbCommitTrans(connection), ORMEL_OK);
            std::vector<std::string> cut = column == 1 ? empty : zero;
            std::fill(cut.begin() + static_cast<std::ptrdiff_t>(missing), cut.end(), "NULL");
            EXPECT_EQ(this->column("c"), column == 1 ? cut : empty);
            EXPECT_EQ(this->column("b"), column == 2 ? cut : zero);
            execute("DELETE FROM lobs");
        }
}

TEST_F(MissingLobTest, TheLogSaysFromWhichRow) {
    log();
    {
        const Connection connection;
        const Columns columns = columnsOf(connection, batch_, "lobs");
        columns->astItem[2].lobArray[2] = nullptr;
        columns->astItem[2].lobArray[4] = nullptr;
        const std::unique_ptr<DB_RESULT, decltype(&dbResClear)> result(
            dbPatchInsertRec(connection, "lobs", columns.get()), dbResClear);
        EXPECT_NE(result, nullptr);
    }
    EXPECT_THAT(log(), AllOf(HasSubstr("LOB pstItem->lobArray[i]:2 is NULL \r\n"), Not(HasSubstr("[i]:4 is NULL"))));
}

// An item that is set to NULL is no missing one: what follows it is written.
TEST_F(MissingLobTest, AnItemWithoutAValueEndsNothing) {
    const Batch batch("lobs", 3);
    for (size_t row = 0; row < 3; ++row) {
        ORMEL_ObjectInt32Set(batch[row], "id", static_cast<int32_t>(row));
        EXPECT_EQ((row == 1 ? ORMEL_ObjectNullSet(batch[row], "c") : ORMEL_ObjectTextSet(batch[row], "c", "")), 0U);
        EXPECT_EQ((row != 2 ? ORMEL_ObjectNullSet(batch[row], "b") : ORMEL_ObjectBinarySet(batch[row], "b", "x", 1)),
                  0U);
    }
    log();
    ASSERT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_OK);
    EXPECT_THAT(column("c"), ElementsAre("''", "NULL", "''"));
    EXPECT_THAT(column("b"), ElementsAre("NULL", "NULL", "X'78'"));
    EXPECT_THAT(log(), Not(HasSubstr("is NULL")));
}

} // namespace
