#include <cmath>
#include <gmock/gmock.h>
#include <sqlite3.h>

#include "support.h"

namespace ormel::client::sqlite {

using testing::HasSubstr;

namespace {

class TransactionTest : public DatabaseTest {
protected:
    TransactionTest() {
        create("CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT)");
        one_ = connect("0");
        other_ = connect("0");
    }

    std::string count(Connection &connection) { return *query(connection, "SELECT count(*) FROM t").at(0).at(0); }

    // Whether another connection can take the write lock, that is, nobody holds it.
    bool lockIsFree() {
        try {
            run(*connect("0"), "INSERT INTO t VALUES (1000, 'probe')");
            return true;
        } catch (const Error &error) {
            EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_BUSY));
            return false;
        }
    }

    std::unique_ptr<Connection> one_;
    std::unique_ptr<Connection> other_;
};

} // namespace

TEST_F(TransactionTest, changesAreSeenAfterTheCommit) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    EXPECT_EQ(count(*one_), "1");
    EXPECT_EQ(count(*other_), "0");
    other_->rollback();
    one_->commit();
    EXPECT_EQ(count(*other_), "1");
}

TEST_F(TransactionTest, aRollbackDiscards) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    run(*one_, "CREATE TABLE u (id INTEGER)");
    one_->rollback();
    EXPECT_EQ(count(*one_), "0");
    EXPECT_EQ(errorOf([&] { run(*one_, "SELECT * FROM u"); }).message, "no such table: u");
    one_->rollback();
    one_->commit();
}

TEST_F(TransactionTest, theEndOfAConnectionDiscards) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    one_.reset();
    EXPECT_EQ(count(*other_), "0");
    EXPECT_TRUE(lockIsFree());
}

TEST_F(TransactionTest, schemaChangesBelongToIt) {
    run(*one_, "CREATE TABLE u (id INTEGER)");
    EXPECT_EQ(errorOf([&] { run(*other_, "SELECT * FROM u"); }).message, "no such table: u");
    one_->commit();
    run(*other_, "SELECT * FROM u");
}

TEST_F(TransactionTest, beginningHoldsNothing) {
    one_->begin();
    run(*other_, "INSERT INTO t VALUES (1, 'a')");
    other_->commit();
    EXPECT_EQ(count(*one_), "1");
    one_->begin();
    EXPECT_EQ(count(*one_), "1");
}

TEST_F(TransactionTest, aProbeHoldsNothing) {
    one_->begin();
    run(*one_, "SELECT * FROM t WHERE 1<>1");
    run(*one_, "SELECT id FROM t");
    run(*other_, "INSERT INTO t VALUES (1, 'a')");
    other_->commit();
    EXPECT_EQ(run(*one_, "UPDATE t SET name = 'b'"), 1U);
    one_->commit();
}

TEST_F(TransactionTest, aRowThatWasSeenHoldsItsSnapshot) {
    run(*one_, "INSERT INTO t VALUES (1, 'a'), (2, 'b')");
    one_->commit();
    const auto select = one_->prepare("SELECT id FROM t ORDER BY id");
    select->execute({}, 1);
    run(*other_, "INSERT INTO t VALUES (3, 'c')");
    other_->commit();
    EXPECT_EQ(nextRow(*select), TextRow{"1"});
    EXPECT_EQ(nextRow(*select), TextRow{"2"});
    EXPECT_TRUE(nextRow(*select).empty());
    EXPECT_EQ(count(*one_), "2");
    one_->commit();
    EXPECT_EQ(count(*one_), "3");
}

TEST_F(TransactionTest, readingTakesNoWriteLock) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    one_->commit();
    EXPECT_EQ(count(*one_), "1");
    EXPECT_TRUE(lockIsFree());
}

TEST_F(TransactionTest, aWriterBlocksWritersAndNoReaders) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    EXPECT_EQ(count(*other_), "0");
    other_->rollback();
    const Error error = errorOf([&] { run(*other_, "INSERT INTO t VALUES (2, 'b')"); });
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_BUSY));
    EXPECT_THAT(error.message, HasSubstr("database is locked"));
    one_->commit();
    run(*other_, "INSERT INTO t VALUES (2, 'b')");
}

TEST_F(TransactionTest, whatChangesNothingGivesTheLockBack) {
    EXPECT_EQ(run(*one_, "UPDATE t SET name = 'x' WHERE id = 99"), 0U);
    EXPECT_TRUE(lockIsFree());
    errorOf([&] { run(*one_, "INSERT INTO t VALUES ('no number', 'x')"); });
    EXPECT_TRUE(lockIsFree());
    const auto insert = one_->prepare("INSERT INTO t VALUES (?1, 'x')");
    errorOf([&] { insert->executeBatch(Rows({{integer(1)}, {integer(1)}})); });
    EXPECT_TRUE(lockIsFree());
    errorOf([&] { run(*one_, "INSERT INTO t VALUES (?1, 'x')", {real(std::nan(""))}); });
    EXPECT_TRUE(lockIsFree());
    EXPECT_EQ(insert->executeBatch(Rows({{integer(1)}})), 1U);
    EXPECT_FALSE(lockIsFree());
}

TEST_F(TransactionTest, whatChangesNothingKeepsTheSnapshotThatWasSeen) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    one_->commit();
    const auto select = one_->prepare("SELECT id FROM t");
    select->execute({}, 1);
    EXPECT_EQ(run(*one_, "UPDATE t SET name = 'x' WHERE id = 99"), 0U);
    run(*other_, "INSERT INTO t VALUES (2, 'b')");
    other_->commit();
    EXPECT_EQ(nextRow(*select), TextRow{"1"});
    EXPECT_TRUE(nextRow(*select).empty());
    EXPECT_EQ(count(*one_), "1");
    errorOf([&] { run(*one_, "INSERT INTO t VALUES (3, 'c')"); });
    EXPECT_EQ(count(*one_), "1");
    one_->rollback();
    EXPECT_EQ(count(*one_), "2");
}

TEST_F(TransactionTest, aLaterFailureLeavesEarlierChanges) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    errorOf([&] { run(*one_, "INSERT INTO t VALUES (1, 'b')"); });
    EXPECT_FALSE(lockIsFree());
    one_->commit();
    EXPECT_EQ(count(*other_), "1");
}

TEST_F(TransactionTest, partOfAFailedStatementCanStay) {
    errorOf([&] { run(*one_, "INSERT OR FAIL INTO t VALUES (1, 'a'), (1, 'b')"); });
    one_->commit();
    EXPECT_EQ(count(*other_), "1");
}

TEST_F(TransactionTest, aStaleSnapshotCannotBeWrittenFrom) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    one_->commit();
    EXPECT_EQ(count(*one_), "1");
    run(*other_, "UPDATE t SET name = 'b'");
    other_->commit();
    const Error error = errorOf([&] { run(*one_, "UPDATE t SET name = 'c'"); });
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_BUSY_SNAPSHOT));
    EXPECT_THAT(error.message, HasSubstr("database is locked"));
    EXPECT_THAT(error.message, HasSubstr("repeat the transaction"));
    EXPECT_TRUE(lockIsFree());
    one_->rollback();
    EXPECT_EQ(run(*one_, "UPDATE t SET name = 'c'"), 1U);
}

TEST_F(TransactionTest, aRefusedCommitRollsBack) {
    run(*one_, "CREATE TABLE child (parent INTEGER REFERENCES t (id) DEFERRABLE INITIALLY DEFERRED)");
    one_->commit();
    run(*one_, "INSERT INTO child VALUES (5)");
    const Error error = errorOf([&] { one_->commit(); });
    EXPECT_EQ(error.code, static_cast<uint32_t>(SQLITE_CONSTRAINT_FOREIGNKEY));
    EXPECT_THAT(error.message, HasSubstr("FOREIGN KEY constraint failed"));
    EXPECT_THAT(error.message, HasSubstr("rolled back"));
    EXPECT_TRUE(query(*one_, "SELECT * FROM child").empty());
    EXPECT_TRUE(lockIsFree());
}

// Work after such an error would otherwise be committed without what came before it.
TEST_F(TransactionTest, whatTheDatabaseRolledBackIsNotContinued) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    errorOf([&] { run(*one_, "INSERT OR ROLLBACK INTO t VALUES (1, 'b')"); });
    EXPECT_TRUE(lockIsFree());
    const Error refused = errorOf([&] { run(*one_, "INSERT INTO t VALUES (2, 'c')"); });
    EXPECT_EQ(refused.code, static_cast<uint32_t>(SQLITE_ABORT_ROLLBACK));
    EXPECT_THAT(refused.message, HasSubstr("roll back and repeat"));
    EXPECT_THAT(errorOf([&] { run(*one_, "SELECT * FROM t"); }).message, HasSubstr("roll back and repeat"));
    EXPECT_THAT(errorOf([&] { one_->commit(); }).message, HasSubstr("nothing was committed"));
    EXPECT_EQ(run(*one_, "INSERT INTO t VALUES (2, 'c')"), 1U);
    one_->commit();
    EXPECT_EQ(count(*other_), "1");
}

TEST_F(TransactionTest, aRollbackByTheDatabaseIsPutRightByRollback) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    errorOf([&] { run(*one_, "INSERT OR ROLLBACK INTO t VALUES (1, 'b')"); });
    one_->rollback();
    run(*one_, "INSERT INTO t VALUES (2, 'c')");
    one_->commit();
    EXPECT_EQ(count(*other_), "1");
}

TEST_F(TransactionTest, aRollbackThatLosesNothingGoesUnnoticed) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    one_->commit();
    errorOf([&] { run(*one_, "INSERT OR ROLLBACK INTO t VALUES (1, 'b')"); });
    run(*one_, "INSERT INTO t VALUES (2, 'c')");
    one_->commit();
    EXPECT_EQ(count(*other_), "2");
}

TEST_F(TransactionTest, aFullDiskLosesTheTransactionAndSaysSo) {
    const int pages = std::stoi(*query(*one_, "PRAGMA page_count").at(0).at(0));
    run(*one_, "PRAGMA max_page_count = " + std::to_string(pages + 2));
    one_->rollback();
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    const auto insert = one_->prepare("INSERT INTO t VALUES (?1, hex(zeroblob(?2)))");
    const Error full = errorOf([&] {
        insert->executeBatch(Rows({{integer(2), integer(1)}, {integer(3), integer(100000)}}));
    });
    EXPECT_EQ(full.code, static_cast<uint32_t>(SQLITE_FULL));
    EXPECT_EQ(full.message, "row 1: database or disk is full");
    EXPECT_THAT(errorOf([&] { run(*one_, "INSERT INTO t VALUES (4, 'd')"); }).message, HasSubstr("repeat it"));
    EXPECT_THAT(errorOf([&] { one_->commit(); }).message, HasSubstr("nothing was committed"));
    EXPECT_EQ(count(*other_), "0");
    run(*one_, "INSERT INTO t VALUES (5, 'e')");
    one_->commit();
}

TEST_F(TransactionTest, rowsThatWereNotReadEndWithIt) {
    run(*one_, "INSERT INTO t VALUES (1, 'a'), (2, 'b'), (3, 'c')");
    const auto select = one_->prepare("SELECT id FROM t ORDER BY id");
    select->execute({}, 1);
    EXPECT_EQ(nextRow(*select), TextRow{"1"});
    one_->commit();
    for (int i = 0; i < 2; ++i)
        EXPECT_THAT(errorOf([&] { nextRow(*select); }).message, HasSubstr("the transaction has ended"));
    select->execute({}, 1);
    EXPECT_EQ(nextRow(*select), TextRow{"1"});
}

TEST_F(TransactionTest, whatStandsApartNeedsNone) {
    run(*one_, "INSERT INTO t VALUES (1, 'a')");
    EXPECT_EQ(errorOf([&] { run(*one_, "VACUUM"); }).message, "cannot VACUUM from within a transaction");
    one_->commit();
    run(*one_, "VACUUM");
    EXPECT_EQ(query(*one_, "PRAGMA journal_mode"), (std::vector<TextRow>{{"wal"}}));
    EXPECT_EQ(query(*one_, "PRAGMA wal_checkpoint").size(), 1U);
    EXPECT_EQ(query(*one_, "PRAGMA table_info(t)").size(), 2U);
    EXPECT_TRUE(lockIsFree());
}

} // namespace ormel::client::sqlite
