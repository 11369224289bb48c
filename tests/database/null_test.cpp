// NULL through objects, batches and results: written in columns of every type, told from empty, and no condition.
#include "support/database.h"

namespace {

using namespace database;
using testing::ElementsAre;

// A column of every type, and the setter of a value that is empty, or zero.
struct Column {
    const char *name;
    const char *declared;
    const char *empty; // as SQL writes it
    uint32_t length;   // of that in a result
    uint32_t (*setEmpty)(ORMEL_OBJECT *object, const char *name);
};

uint32_t setZero(ORMEL_OBJECT *object, const char *name) {
    return ORMEL_ObjectInt32Set(object, name, 0);
}

uint32_t setLongZero(ORMEL_OBJECT *object, const char *name) {
    return ORMEL_ObjectInt64Set(object, name, 0);
}

uint32_t setRealZero(ORMEL_OBJECT *object, const char *name) {
    const double zero = 0;
    return ORMEL_ObjectBinarySet(object, name, &zero, sizeof zero);
}

uint32_t setNoText(ORMEL_OBJECT *object, const char *name) {
    return ORMEL_ObjectStrSet(object, name, "");
}

uint32_t setTextZero(ORMEL_OBJECT *object, const char *name) {
    return ORMEL_ObjectStrSet(object, name, "0");
}

uint32_t setFirstDay(ORMEL_OBJECT *object, const char *name) {
    return ORMEL_ObjectStrSet(object, name, "0001-01-01");
}

const std::vector<Column> &columns() {
    static const std::vector<Column> all = [] {
        std::vector<Column> columns = {
            {"i", "INTEGER", "0", 4, setZero},           {"s", "SMALLINT", "0", 4, setZero},
            {"l", "BIGINT", "0", 8, setLongZero},        {"o", "BOOLEAN", "0", 4, setZero},
            {"d", "DOUBLE", "0.0", 8, setRealZero},      {"c", "CHAR(5)", "''", 1, setNoText},
            {"v", "VARCHAR(5)", "''", 1, setNoText},     {"b", "BINARY(5)", "X''", 0, setNoText},
            {"vb", "VARBINARY(5)", "X''", 0, setNoText}, {"t", "TEXT", "''", 0, setNoText},
            {"bl", "BLOB", "X''", 0, setNoText},
        };
        if (engine().lacks(Feature::emptyNumbers) == nullptr) {
            columns.push_back({"n", "NUMERIC(9,2)", "''", 1, setNoText});
            columns.push_back({"da", "DATE", "''", 1, setNoText});
        } else {
            columns.push_back({"n", "NUMERIC(9,2)", "0.00", 5, setTextZero});
            columns.push_back({"da", "DATE", "'0001-01-01'", 11, setFirstDay});
        }
        return columns;
    }();
    return all;
}

class NullTest : public DatabaseTest {
protected:
    NullTest() {
        std::string declared = "k INTEGER";
        for (const Column &column : columns())
            declared += std::string(", ") + column.name + " " + column.declared;
        make("every", declared);
    }

    // An object with every column, all NULL or all empty.
    static void fill(ORMEL_OBJECT *object, bool null) {
        for (const Column &column : columns())
            ASSERT_EQ((null ? ORMEL_ObjectNullSet : column.setEmpty)(object, column.name), ORMEL_OK) << column.declared;
    }

    static void insert(int32_t key, bool null) {
        Object object("every");
        fill(object, null);
        ORMEL_ObjectInt32Set(object, "k", key);
        ASSERT_EQ(ORMEL_InsertRecFormObj(object), ORMEL_OK);
    }

    // Rows with keys from 1 on, in one batch.
    static void insertBatch(const std::vector<bool> &nulls) {
        const Batch batch("every", nulls.size());
        for (size_t row = 0; row < nulls.size(); ++row) {
            fill(batch[row], nulls[row]);
            ORMEL_ObjectInt32Set(batch[row], "k", static_cast<int32_t>(row) + 1);
        }
        ASSERT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_OK);
    }

    static void update(int32_t key, bool null) {
        Object object("every");
        Object condition("every");
        fill(object, null);
        ORMEL_ObjectInt32Set(condition, "k", key);
        uint32_t count = 0;
        ASSERT_EQ(ORMEL_UpdateRecByObj(object, condition, &count), ORMEL_OK);
        EXPECT_EQ(count, 1U);
    }

    static void expectRow(int32_t key, bool null) {
        Object object("every");
        ORMEL_ObjectInt32Set(object, "k", key);
        Result result;
        ASSERT_EQ(ORMEL_SelectRecByObj(object, result), ORMEL_OK);
        ASSERT_EQ(result->uiRecNum, 1U);
        for (const Column &column : columns()) {
            SCOPED_TRACE(column.declared);
            const std::string where = " FROM every WHERE k = " + std::to_string(key);
            EXPECT_THAT(query(std::string("SELECT quote(") + column.name + ")" + where),
                        ElementsAre(null ? "NULL" : column.empty));
            EXPECT_EQ(ORMEL_ResultBinaryGet(result, 0, column.name) == nullptr, null);
            EXPECT_EQ(ORMEL_ResultGetFieldLength(result, 0, column.name), null ? 0 : column.length);
        }
    }
};

TEST_F(NullTest, IsInsertedAndToldFromEmpty) {
    insert(1, true);
    insert(2, false);
    expectRow(1, true);
    expectRow(2, false);
}

TEST_F(NullTest, IsInsertedByBatchesWithTheRowsBehindIt) {
    const std::vector<bool> batches[] = {
        {true}, {false}, {true, true}, {true, false}, {false, true, false, true, false}};
    for (const std::vector<bool> &nulls : batches) {
        SCOPED_TRACE(testing::PrintToString(nulls));
        insertBatch(nulls);
        for (size_t row = 0; row < nulls.size(); ++row)
            expectRow(static_cast<int32_t>(row) + 1, nulls[row]);
        execute("DELETE FROM every");
    }
}

TEST_F(NullTest, IsSetByUpdates) {
    insert(1, true);
    insert(2, false);
    update(1, false);
    update(2, true);
    expectRow(1, false);
    expectRow(2, true);
}

TEST_F(NullTest, IsFetchedByCursors) {
    insert(1, true);
    Cursor cursor("every");
    CursorRow row;
    ASSERT_EQ(ORMEL_FetchSelectRecEx(cursor, row), ORMEL_OK);
    for (const Column &column : columns()) {
        EXPECT_EQ(ORMEL_ResultBinaryGet(row, 0, column.name), nullptr) << column.declared;
        EXPECT_EQ(ORMEL_ResultGetFieldLength(row, 0, column.name), 0U) << column.declared;
        int64_t number = 7;
        EXPECT_EQ(ORMEL_ResultNumberGet(row, 0, column.name, &number, QDC_TYPE_INT64), ORMEL_ERR_ABSENT);
        EXPECT_EQ(number, 7);
    }
}

TEST_F(NullTest, IsNoConditionAndChangesNothing) {
    insert(1, true);
    insert(2, false);
    for (const Column &column : columns()) {
        SCOPED_TRACE(column.declared);
        Object null("every");
        Object values("every");
        Result result;
        uint32_t count = 7;
        ORMEL_ObjectNullSet(null, column.name);
        ORMEL_ObjectInt32Set(values, "k", 3);
        EXPECT_EQ(ORMEL_SelectRecByObj(null, result), ORMEL_ERR_CHECK);
        EXPECT_EQ(ORMEL_SelectBatchRecByObj(null, result), ORMEL_ERR_CHECK);
        EXPECT_EQ(ORMEL_DeleteRecByObj(null, &count), ORMEL_ERR_CHECK);
        EXPECT_EQ(ORMEL_UpdateRecByObj(values, null, &count), ORMEL_ERR_CHECK);
        EXPECT_EQ(ORMEL_BeginSelectSpecifyField(null, __func__, __LINE__), nullptr);
        EXPECT_EQ(count, 7U);
    }
    EXPECT_THAT(query("SELECT k FROM every ORDER BY k"), ElementsAre("1", "2"));
}

TEST_F(NullTest, IsRefusedByAColumnThatMustHaveAValue) {
    make("strict", "id INTEGER NOT NULL, name VARCHAR(20)");
    Object object("strict");
    ORMEL_ObjectNullSet(object, "id");
    EXPECT_EQ(ORMEL_InsertRecFormObj(object), ORMEL_ERR_NO_RESULT);
    ORMEL_ERROR error = {};
    ORMEL_LastError(&error);
    EXPECT_THAT(error.acText, testing::StartsWith(engine().refusal("", Rule::presence, "strict", "id")));
    EXPECT_THAT(query("SELECT count(*) FROM strict"), ElementsAre("0"));
}

} // namespace
