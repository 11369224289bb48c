#include <cmath>
#include <gmock/gmock.h>
#include <sqlite3.h>

#include "support.h"

namespace ormel::client::sqlite {

using testing::HasSubstr;
using testing::StartsWith;

namespace {

class StatementTest : public DatabaseTest {
protected:
    StatementTest() {
        create("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(20) UNIQUE)");
        connection_ = connect();
    }

    std::string count() { return *query(*connection_, "SELECT count(*) FROM t").at(0).at(0); }

    std::unique_ptr<Connection> connection_;
};

} // namespace

TEST_F(StatementTest, countsTheRowsThatMatched) {
    EXPECT_EQ(run(*connection_, "INSERT INTO t VALUES (1, 'a'), (2, 'b'), (3, 'c')"), 3U);
    EXPECT_EQ(run(*connection_, "UPDATE t SET name = name WHERE id < 3"), 2U);
    EXPECT_EQ(run(*connection_, "UPDATE t SET name = 'x' WHERE id = 99"), 0U);
    EXPECT_EQ(run(*connection_, "REPLACE INTO t VALUES (1, 'a')"), 1U);
    EXPECT_EQ(run(*connection_, "WITH x AS (SELECT 3 AS id) DELETE FROM t WHERE id IN (SELECT id FROM x)"), 1U);
    EXPECT_EQ(run(*connection_, "INSERT OR IGNORE INTO t VALUES (1, 'a')"), 0U);
    EXPECT_EQ(run(*connection_, "DELETE FROM t"), 2U);
    EXPECT_EQ(run(*connection_, "DELETE FROM t"), 0U);
}

TEST_F(StatementTest, countsNothingForWhatChangesNoRows) {
    run(*connection_, "INSERT INTO t VALUES (1, 'a'), (2, 'b')");
    EXPECT_EQ(run(*connection_, "CREATE TABLE u AS SELECT * FROM t"), 0U);
    EXPECT_EQ(run(*connection_, "CREATE INDEX i ON u (id)"), 0U);
    EXPECT_EQ(run(*connection_, "DROP TABLE u"), 0U);
    EXPECT_EQ(run(*connection_, "SELECT * FROM t"), 0U);
    EXPECT_EQ(run(*connection_, "WITH x AS (SELECT 1) SELECT * FROM x"), 0U);
    EXPECT_EQ(run(*connection_, "PRAGMA user_version"), 0U);
}

TEST_F(StatementTest, leavesOutWhatTriggersAndForeignKeysChange) {
    run(*connection_, "CREATE TABLE child (parent INTEGER REFERENCES t (id) ON DELETE CASCADE)");
    run(*connection_, "CREATE TABLE log (id INTEGER)");
    run(*connection_, "CREATE TRIGGER tr AFTER INSERT ON t BEGIN INSERT INTO log VALUES (new.id), (new.id); END");
    EXPECT_EQ(run(*connection_, "INSERT INTO t VALUES (1, 'a')"), 1U);
    run(*connection_, "INSERT INTO child VALUES (1), (1), (1)");
    EXPECT_EQ(run(*connection_, "DELETE FROM t"), 1U);
    EXPECT_TRUE(query(*connection_, "SELECT * FROM child").empty());
}

TEST_F(StatementTest, foreignKeysHold) {
    run(*connection_, "CREATE TABLE child (parent INTEGER REFERENCES t (id))");
    const Error error = errorOf([&] { run(*connection_, "INSERT INTO child VALUES (7)"); });
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_CONSTRAINT_FOREIGNKEY));
    EXPECT_EQ(error.message, "FOREIGN KEY constraint failed");
}

TEST_F(StatementTest, runsAgainWithOtherValues) {
    const auto insert = connection_->prepare("INSERT INTO t VALUES (?1, ?2)");
    for (int id = 1; id <= 3; ++id)
        EXPECT_EQ(insert->execute({integer(id), text("name" + std::to_string(id))}, 1), 1U);
    const auto select = connection_->prepare("SELECT name FROM t WHERE id = ?1");
    for (int id = 3; id >= 1; --id) {
        select->execute({integer(id)}, 1);
        EXPECT_EQ(nextRow(*select), TextRow{"name" + std::to_string(id)});
    }
}

TEST_F(StatementTest, runsAgainAfterAFailure) {
    const auto insert = connection_->prepare("INSERT INTO t VALUES (?1, ?2)");
    insert->execute({integer(1), text("a")}, 1);
    const Error error = errorOf([&] { insert->execute({integer(1), text("b")}, 1); });
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_CONSTRAINT_PRIMARYKEY));
    EXPECT_EQ(error.message, "UNIQUE constraint failed: t.id");
    EXPECT_EQ(insert->execute({integer(2), text("b")}, 1), 1U);
    EXPECT_EQ(count(), "2");
}

TEST_F(StatementTest, wantsEveryParameter) {
    const auto insert = connection_->prepare("INSERT INTO t VALUES (?1, ?2)");
    const Error few = errorOf([&] { insert->execute({integer(1)}, 1); });
    EXPECT_EQ(few.code, static_cast<uint32_t>(SQLITE_RANGE));
    EXPECT_THAT(few.message, HasSubstr("2 parameters"));
    EXPECT_THAT(errorOf([&] { insert->execute({integer(1), {}, {}}, 1); }).message, HasSubstr("3"));
    EXPECT_EQ(count(), "0");
}

TEST_F(StatementTest, aQueryKeepsTheValuesThatItStillNeeds) {
    run(*connection_, "INSERT INTO t VALUES (1, 'keep'), (2, 'other'), (3, 'keep too')");
    const auto select = connection_->prepare("SELECT id FROM t WHERE name LIKE ?1 ORDER BY id");
    {
        const std::string pattern = "keep%";
        select->execute({text(pattern)}, 1);
    }
    EXPECT_EQ(nextRow(*select), TextRow{"1"});
    EXPECT_EQ(nextRow(*select), TextRow{"3"});
    EXPECT_TRUE(nextRow(*select).empty());
}

TEST_F(StatementTest, theEndStaysTheEnd) {
    const auto select = connection_->prepare("SELECT * FROM t");
    select->execute({}, 1);
    RowBuffer rows;
    EXPECT_FALSE(select->fetch(rows));
    EXPECT_FALSE(select->fetch(rows));
    EXPECT_EQ(rows.rows(), 0U);
}

TEST_F(StatementTest, aFailureAmongTheRowsStaysAFailure) {
    const auto select =
        connection_->prepare("SELECT abs(column1) FROM (VALUES (1), (2), (-9223372036854775807 - 1), (4))");
    select->execute({}, 1);
    EXPECT_EQ(nextRow(*select), TextRow{"1"});
    EXPECT_EQ(nextRow(*select), TextRow{"2"});
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(errorOf([&] { nextRow(*select); }).message, "integer overflow");
}

TEST_F(StatementTest, aFailureBeforeTheFirstRowIsExecutes) {
    const auto select = connection_->prepare("SELECT abs(-9223372036854775807 - 1)");
    EXPECT_EQ(errorOf([&] { select->execute({}, 1); }).message, "integer overflow");
}

TEST_F(StatementTest, rowsOfSeveralStatementsAreReadSideBySide) {
    run(*connection_, "INSERT INTO t VALUES (1, 'a'), (2, 'b'), (3, 'c')");
    const auto first = connection_->prepare("SELECT id FROM t ORDER BY id");
    const auto second = connection_->prepare("SELECT id FROM t ORDER BY id");
    first->execute({}, 1);
    EXPECT_EQ(nextRow(*first), TextRow{"1"});
    second->execute({}, 1);
    EXPECT_EQ(nextRow(*second), TextRow{"1"});
    run(*connection_, "CREATE TABLE copy (id INTEGER)");
    run(*connection_, "INSERT INTO copy VALUES (1)");
    EXPECT_EQ(nextRow(*first), TextRow{"2"});
    EXPECT_EQ(nextRow(*second), TextRow{"2"});
}

TEST_F(StatementTest, aChangeCanGiveRows) {
    const auto insert = connection_->prepare("INSERT INTO t VALUES (1, 'a'), (2, ?1) RETURNING id, name");
    EXPECT_EQ(insert->execute({text("b")}, 1), 0U);
    EXPECT_EQ(nextRow(*insert), (TextRow{"1", "a"}));
    insert->close();
    connection_->commit();
    EXPECT_EQ(query(*connect(), "SELECT * FROM t").size(), 2U);
}

TEST_F(StatementTest, aBatchRunsEveryRow) {
    const auto insert = connection_->prepare("INSERT INTO t VALUES (?1, ?2)");
    EXPECT_EQ(insert->executeBatch(Rows({{integer(1), text("a")}, {integer(2), {}}, {integer(3), text("")}})), 3U);
    EXPECT_EQ(query(*connection_, "SELECT * FROM t"), (std::vector<TextRow>{{"1", "a"}, {"2", {}}, {"3", ""}}));
    const auto update = connection_->prepare("UPDATE t SET name = ?1 WHERE id > ?2");
    EXPECT_EQ(update->executeBatch(Rows({{{}, integer(1)}, {{}, integer(2)}, {{}, integer(9)}})), 3U);
}

TEST_F(StatementTest, aBatchIsAllRowsOrNone) {
    run(*connection_, "INSERT INTO t VALUES (7, 'before')");
    const auto insert = connection_->prepare("INSERT INTO t VALUES (?1, ?2)");
    const Error error = errorOf([&] {
        insert->executeBatch(Rows({{integer(1), text("a")}, {integer(2), {}}, {integer(7), {}}}));
    });
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_CONSTRAINT_PRIMARYKEY));
    EXPECT_EQ(error.message, "row 2: UNIQUE constraint failed: t.id");
    EXPECT_EQ(count(), "1");
    connection_->commit();
    EXPECT_EQ(query(*connect(), "SELECT name FROM t"), (std::vector<TextRow>{{"before"}}));
}

TEST_F(StatementTest, aBatchNamesTheRowOfAValueThatCannotBeBound) {
    const auto insert = connection_->prepare("INSERT INTO t VALUES (?1, ?2)");
    const Error error = errorOf([&] {
        insert->executeBatch(Rows({{integer(1), {}}, {integer(2), real(std::nan(""))}}));
    });
    EXPECT_THAT(error.message, StartsWith("row 1, column 1: parameter 2"));
    EXPECT_EQ(count(), "0");
}

TEST_F(StatementTest, aBatchLeavesRowsThatAreBeingRead) {
    run(*connection_, "INSERT INTO t VALUES (1, 'a'), (2, 'b')");
    run(*connection_, "CREATE TABLE u (id INTEGER PRIMARY KEY)");
    connection_->commit();
    const auto select = connection_->prepare("SELECT id FROM t ORDER BY id");
    select->execute({}, 1);
    const auto insert = connection_->prepare("INSERT INTO u VALUES (?1)");
    errorOf([&] { insert->executeBatch(Rows({{integer(1)}, {integer(1)}})); });
    EXPECT_EQ(nextRow(*select), TextRow{"1"});
    EXPECT_EQ(nextRow(*select), TextRow{"2"});
    EXPECT_TRUE(nextRow(*select).empty());
}

TEST_F(StatementTest, aBatchOfAQueryIsRefused) {
    for (const char *sql : {"SELECT ?1", "INSERT INTO t (id) VALUES (?1) RETURNING id"}) {
        const auto statement = connection_->prepare(sql);
        const Error error = errorOf([&] { statement->executeBatch(Rows({{integer(1)}, {integer(2)}})); });
        EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_MISUSE));
    }
    EXPECT_EQ(count(), "0");
}

TEST_F(StatementTest, aStatementIsPreparedAgainWhenTheSchemaMoves) {
    const auto insert = connection_->prepare("INSERT INTO t VALUES (?1, ?2)");
    create("CREATE TABLE other (id INTEGER)");
    EXPECT_EQ(insert->execute({integer(1), {}}, 1), 1U);
    connection_->commit();
    create("DROP TABLE t");
    EXPECT_EQ(errorOf([&] { insert->execute({integer(2), {}}, 1); }).message, "no such table: t");
}

TEST_F(StatementTest, theSameTextCanBeUsedAgain) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(run(*connection_, "INSERT INTO t VALUES (?1, ?2)", {integer(i), {}}), 1U);
        EXPECT_EQ(errorOf([&] {
                      run(*connection_, "INSERT INTO t VALUES (?1, ?2)", {integer(i), {}});
                  }).message,
                  "UNIQUE constraint failed: t.id");
    }
    EXPECT_EQ(count(), "3");
}

TEST_F(StatementTest, aPragmaWorksEachTime) {
    for (const char *value : {"0", "1", "0", "1"}) {
        run(*connection_, std::string("PRAGMA foreign_keys = ") + value);
        EXPECT_EQ(query(*connection_, "PRAGMA foreign_keys"), (std::vector<TextRow>{{value}}));
        connection_->rollback();
    }
}

} // namespace ormel::client::sqlite
