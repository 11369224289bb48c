// Batches: all rows or none, whichever row is refused and why, and what is written when none is.
#include <limits>
#include <optional>
#include <thread>

#include <ormeldb/platform/liblog.h>

#include "support/batches.h"

namespace {

using namespace database;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int32_t kThere = 99; // the id of a row that is in the table before every test

class BatchTest : public DatabaseTest {
protected:
    BatchTest() {
        make("parts", partColumns());
        execute("INSERT INTO parts (id, note) VALUES (" + std::to_string(kThere) + ", 'old')");
    }

    static std::vector<std::string> ids() { return query("SELECT id FROM parts ORDER BY id"); }
    static std::vector<std::string> count() { return query("SELECT count(*) FROM parts"); }
};

// Characters of four bytes.
std::string wide(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "\xF0\x9F\x94\xA9";
    return text;
}

std::string lastError() {
    ORMEL_ERROR error = {};
    ORMEL_LastError(&error);
    return error.acText;
}

std::string ofRow(size_t row) {
    return "row " + std::to_string(row) + ": ";
}

// How the last error begins where a row has the key of another.
std::string keyIsThere(size_t row, const std::string &table = "parts") {
    return engine().refusal(ofRow(row), Rule::key, table, "id");
}

// What makes a row one that is refused, by the table's rule or else by the client's word about a column.
struct Fault {
    const char *name;
    void (*spoil)(Part &part);
    std::optional<Rule> rule;
    const char *column; // or CHECK
    const char *words;

    std::string error(size_t row) const {
        return rule ? engine().refusal(ofRow(row), *rule, "parts", column)
                    : "row " + std::to_string(row) + ", column " + column + ": " + words;
    }
    // Whether the transaction can go on.
    bool leavesTransaction() const { return !rule || engine().lacks(Feature::workAfterError) == nullptr; }
};

const std::vector<Fault> &faults() {
    static const std::vector<Fault> all = [] {
        std::vector<Fault> faults = {
            {"duplicate key", [](Part &part) { part.id = kThere; }, Rule::key, "id", ""},
            {"no value", [](Part &part) { part.note.reset(); }, Rule::presence, "note", ""},
            {"negative price", [](Part &part) { part.price = -0.5; }, Rule::check, "not_negative", ""},
            {"text one byte too long",
             [](Part &part) { part.name = std::string(41, 'x'); },
             {},
             "name (:2)",
             "a value of 41 bytes does not fit into 41"},
            {"text far too long",
             [](Part &part) { part.name = std::string(65534, 'x'); },
             {},
             "name (:2)",
             "a value of 65534 bytes does not fit into 41"},
            {"eleven characters of four bytes",
             [](Part &part) { part.name = wide(11); },
             {},
             "name (:2)",
             "a value of 44 bytes does not fit into 41"},
            {"large text with more behind its end",
             [](Part &part) { part.remark = std::string("a\0b", 3); },
             {},
             "remark (:6)",
             "a text ends at its first NUL, and more follows behind this one's"},
        };
        if (engine().lacks(Feature::notANumber) != nullptr)
            faults.push_back({"no number",
                              [](Part &part) { part.price = std::numeric_limits<double>::quiet_NaN(); },
                              {},
                              "price (:3)",
                              "parameter 3 is not a number, and SQLite would keep NULL in its place"});
        if (engine().lacks(Feature::fixedBytes) == nullptr)
            faults.push_back({"bytes one too long",
                              [](Part &part) { part.code = "ABCDE"; },
                              {},
                              "code (:4)",
                              "a value of 5 bytes does not fit into 4"});
        return faults;
    }();
    return all;
}

// --- All rows or none ---

TEST_F(BatchTest, ARefusedRowLeavesNoneOfThem) {
    constexpr size_t rows = 9;
    for (const Fault &fault : faults())
        for (const Variant &variant : variants())
            for (const size_t row : {size_t{0}, rows / 2, rows - 1}) {
                SCOPED_TRACE(std::string(fault.name) + ", " + variant.name + ", row " + std::to_string(row));
                std::vector<Part> parts = partsFrom(1, rows);
                fault.spoil(parts[row]);
                const Batch batch("parts", rows);
                fill(batch, parts);
                EXPECT_EQ(variant.insert(batch), ORMEL_ERR_NO_RESULT);
                EXPECT_THAT(lastError(), StartsWith(fault.error(row)));
                EXPECT_THAT(ids(), ElementsAre("99"));
            }
}

TEST_F(BatchTest, TheLogSaysWhichRow) {
    for (const Fault &fault : faults()) {
        SCOPED_TRACE(fault.name);
        log();
        std::vector<Part> parts = partsFrom(1, 3);
        fault.spoil(parts[1]);
        {
            const Batch batch("parts", parts.size());
            fill(batch, parts);
            EXPECT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_ERR_NO_RESULT);
        }
        EXPECT_THAT(log(), AllOf(HasSubstr(" " + fault.error(1)), HasSubstr("dbPatchInsertRec return: 0xd3\r\n")));
    }
}

TEST_F(BatchTest, ABatchOfOneRowIsRefusedLikeAnyOther) {
    for (const Fault &fault : faults())
        for (const Variant &variant : variants()) {
            SCOPED_TRACE(std::string(fault.name) + ", " + variant.name);
            std::vector<Part> parts = partsFrom(1, 1);
            fault.spoil(parts[0]);
            const Batch batch("parts", 1);
            fill(batch, parts);
            EXPECT_EQ(variant.insert(batch), ORMEL_ERR_NO_RESULT);
            EXPECT_THAT(lastError(), StartsWith(fault.error(0)));
            EXPECT_THAT(ids(), ElementsAre("99"));
        }
}

TEST_F(BatchTest, TwoRowsOfOneKeyExcludeEachOther) {
    std::vector<Part> parts = partsFrom(1, 5);
    parts[4].id = parts[2].id;
    const Batch batch("parts", parts.size());
    fill(batch, parts);
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_ERR_NO_RESULT);
    EXPECT_THAT(lastError(), StartsWith(keyIsThere(4)));
    EXPECT_THAT(ids(), ElementsAre("99"));
}

// What is only wrong at the end: every row goes in, and none stays.
TEST_F(BatchTest, ARefusedCommitLeavesNoneOfThem) {
    make("orders", "id INTEGER, part INTEGER REFERENCES parts (id) DEFERRABLE INITIALLY DEFERRED");
    const Batch batch("orders", 3);
    for (size_t row = 0; row < 3; ++row) {
        ORMEL_ObjectInt32Set(batch[row], "id", static_cast<int32_t>(row));
        ORMEL_ObjectInt32Set(batch[row], "part", row == 1 ? 7 : kThere);
    }
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_ERR_FAILED);
    EXPECT_THAT(lastError(), HasSubstr(engine().refusal("", Rule::reference, "orders", "part")));
    Transaction transaction;
    EXPECT_EQ(ORMEL_PatchInsertRecFormObjForTrans(transaction, batch), ORMEL_OK);
    EXPECT_EQ(transaction.commit(), ORMEL_ERR_FAILED);
    EXPECT_THAT(query("SELECT count(*) FROM orders"), ElementsAre("0"));
    execute("DROP TABLE orders");
}

// --- On a slot, beside other work ---

// Inserts parts on the slot.
uint32_t insert(ORMEL_TRANS *slot, const std::vector<Part> &parts) {
    const Batch batch("parts", parts.size());
    fill(batch, parts);
    return ORMEL_PatchInsertRecFormObjForTrans(slot, batch);
}

TEST_F(BatchTest, TheWorkBesideARefusedBatchStays) {
    for (const Fault &fault : faults()) {
        if (!fault.leavesTransaction())
            continue;
        SCOPED_TRACE(fault.name);
        std::vector<Part> parts = partsFrom(10, 3);
        fault.spoil(parts[2]);
        Transaction transaction;
        Object before("parts");
        fill(before, {1});
        EXPECT_EQ(ORMEL_InsertRecByObjForTrans(transaction, before), ORMEL_OK);
        EXPECT_EQ(insert(transaction, partsFrom(2, 2)), ORMEL_OK);
        EXPECT_EQ(insert(transaction, parts), ORMEL_ERR_NO_RESULT);
        EXPECT_EQ(insert(transaction, partsFrom(20, 2)), ORMEL_OK);
        EXPECT_THAT(ids(), ElementsAre("99")) << "nothing is committed before the end";
        EXPECT_EQ(transaction.commit(), ORMEL_OK);
        EXPECT_THAT(ids(), ElementsAre("1", "2", "3", "20", "21", "99"));
        execute("DELETE FROM parts WHERE id <> 99");
    }
}

// Its commit says that nothing was committed, and a rollback ends it as well.
TEST_F(BatchTest, AfterABatchThatTheDatabaseRefusedNothingStays) {
    NEEDS(refusalAfterError);
    for (const Fault &fault : faults()) {
        if (fault.leavesTransaction())
            continue;
        SCOPED_TRACE(fault.name);
        std::vector<Part> parts = partsFrom(10, 3);
        fault.spoil(parts[2]);
        for (const bool commits : {true, false}) {
            Transaction transaction;
            EXPECT_EQ(insert(transaction, partsFrom(2, 2)), ORMEL_OK);
            EXPECT_EQ(insert(transaction, parts), ORMEL_ERR_NO_RESULT);
            EXPECT_NE(insert(transaction, partsFrom(20, 2)), ORMEL_OK);
            EXPECT_THAT(lastError(), HasSubstr("25P02: "));
            EXPECT_EQ(commits ? transaction.commit() : transaction.rollback(), commits ? ORMEL_ERR_FAILED : ORMEL_OK);
            EXPECT_THAT(ids(), ElementsAre("99"));
        }
    }
}

TEST_F(BatchTest, ARefusedOneLeavesTheDatabaseToOthers) {
    Transaction transaction;
    EXPECT_EQ(insert(transaction, partsFrom(kThere, 2)), ORMEL_ERR_NO_RESULT);
    const Batch other("parts", 2);
    fill(other, partsFrom(1, 2));
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(other), ORMEL_OK);
    EXPECT_THAT(ids(), ElementsAre("1", "2", "99"));
    NEEDS(workAfterError);
    EXPECT_EQ(insert(transaction, partsFrom(3, 2)), ORMEL_OK);
    EXPECT_EQ(transaction.commit(), ORMEL_OK);
    EXPECT_THAT(ids(), ElementsAre("1", "2", "3", "4", "99"));
}

TEST_F(BatchTest, TwoOnASlotAreCommittedTogether) {
    Transaction transaction;
    EXPECT_EQ(insert(transaction, partsFrom(1, 2)), ORMEL_OK);
    EXPECT_EQ(insert(transaction, partsFrom(3, 1)), ORMEL_OK);
    EXPECT_THAT(ids(), ElementsAre("99"));
    EXPECT_EQ(transaction.commit(), ORMEL_OK);
    EXPECT_THAT(ids(), ElementsAre("1", "2", "3", "99"));
}

TEST_F(BatchTest, TheRollbackOfOneLeavesTheOneThatWasCommitted) {
    Transaction first;
    EXPECT_EQ(insert(first, partsFrom(1, 2)), ORMEL_OK);
    EXPECT_EQ(first.commit(), ORMEL_OK);
    Transaction second;
    EXPECT_EQ(insert(second, partsFrom(3, 2)), ORMEL_OK);
    EXPECT_EQ(insert(second, partsFrom(5, 2)), ORMEL_OK);
    EXPECT_EQ(second.rollback(), ORMEL_OK);
    EXPECT_THAT(ids(), ElementsAre("1", "2", "99"));
}

// --- What is written ---

TEST_F(BatchTest, EveryVariantWritesEveryValueOfEveryRow) {
    for (const Variant &variant : variants())
        for (const size_t rows : {1, 2, 7}) {
            SCOPED_TRACE(std::string(variant.name) + ", rows " + std::to_string(rows));
            std::vector<Part> parts = partsFrom(1, rows);
            parts.back() = {7, "\xC3\xA4'\xC3\xB6", 0, std::string("\0\1\0\0", 4), "", "long", std::string("\0", 1)};
            const Batch batch("parts", rows);
            fill(batch, parts);
            ASSERT_EQ(variant.insert(batch), ORMEL_OK);
            std::vector<std::string> written(rows - 1, "cog, 2.5, X'41424344', new, none, 1500, X'00'");
            written.emplace_back("\xC3\xA4'\xC3\xB6, 0.0, X'00010000', , long, 1, X'00'");
            EXPECT_EQ(
                query("SELECT name || ', ' || quote(price) || ', ' || quote(code) || ', ' || note || ', ' || remark"
                      " || ', ' || length(drawing) || ', ' || quote(substr(drawing, length(drawing)))"
                      " FROM parts WHERE id <> 99 ORDER BY id"),
                written);
            execute("DELETE FROM parts WHERE id <> 99");
        }
}

// The widest that a column takes: four bytes for each of its characters, and no byte more.
TEST_F(BatchTest, TextsMayFillTheirColumn) {
    const Batch batch("parts", 2);
    std::vector<Part> parts = partsFrom(1, 2);
    parts[0].name = std::string(engine().lacks(Feature::misfits) == nullptr ? 40 : 10, 'x');
    parts[1].name = wide(10);
    fill(batch, parts);
    ASSERT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_OK);
    EXPECT_THAT(query("SELECT name FROM parts WHERE id <> 99 ORDER BY id"), ElementsAre(parts[0].name, parts[1].name));
}

TEST_F(BatchTest, ColumnsThatItDoesNotNameGetTheirDefaults) {
    make("d", "id INTEGER PRIMARY KEY, name VARCHAR(20) DEFAULT 'nameless', note TEXT, drawing BLOB");
    const Batch batch("d", 3);
    for (size_t row = 0; row < 3; ++row)
        ORMEL_ObjectStrSet(batch[row], row == 1 ? "NOTE" : "note", "");
    ASSERT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_OK);
    EXPECT_THAT(query("SELECT id || name || quote(note) || quote(drawing) FROM d"),
                ElementsAre("1nameless''NULL", "2nameless''NULL", "3nameless''NULL"));
}

// Its lines at INFO, one for each value, would be longer than the table.
TEST_F(BatchTest, MayHaveAHundredThousandRows) {
    constexpr size_t rows = 100000;
    const int32_t level = FrameDebugLevelGet();
    FrameDebugLevelSet(KPL_LOG_ERROR);
    make("many", "id INTEGER PRIMARY KEY, name VARCHAR(20)");
    const Batch batch("many", rows);
    for (size_t row = 0; row < rows; ++row) {
        ORMEL_ObjectInt32Set(batch[row], "id", static_cast<int32_t>(row));
        ORMEL_ObjectStrSet(batch[row], "name", ("part " + std::to_string(row)).c_str());
    }
    ASSERT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_OK);
    EXPECT_THAT(query("SELECT count(*) FROM many WHERE id BETWEEN 0 AND 99999 AND name = 'part ' || id"),
                ElementsAre("100000"));
    execute("DELETE FROM many WHERE id < 99999");
    EXPECT_EQ(ORMEL_PatchInsertRecFormObj(batch), ORMEL_ERR_NO_RESULT);
    EXPECT_THAT(lastError(), StartsWith(keyIsThere(99999, "many")));
    EXPECT_THAT(query("SELECT id FROM many"), ElementsAre("99999"));
    FrameDebugLevelSet(level);
}

// --- Several at once ---

// Batches of a thread, whose keys are its own; of every second one, the last row is refused.
void insertMany(int32_t thread, const Variant &variant) {
    constexpr int32_t batches = 6;
    constexpr size_t rows = 20;
    for (int32_t i = 0; i < batches; ++i) {
        const bool refused = i % 2 != 0;
        std::vector<Part> parts = partsFrom(1000 * (thread + 1) + 100 * i, rows);
        if (refused)
            parts[static_cast<size_t>(thread)].id = kThere;
        const Batch batch("parts", rows);
        fill(batch, parts);
        EXPECT_EQ(variant.insert(batch), refused ? ORMEL_ERR_NO_RESULT : ORMEL_OK) << variant.name;
        if (refused) {
            EXPECT_THAT(lastError(), StartsWith(keyIsThere(static_cast<size_t>(thread))));
        }
    }
}

TEST_F(BatchTest, ThreadsInsertTheirsBesideEachOther) {
    std::vector<std::thread> threads;
    for (int32_t thread = 0; thread < 9; ++thread)
        threads.emplace_back(insertMany, thread, variants()[static_cast<size_t>(thread) % variants().size()]);
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_THAT(count(), ElementsAre(std::to_string(1 + 9 * 3 * 20)));
}

} // namespace
