// Statements that the server gives up, and connections that it ends.
#include <thread>

#include "postgres/postgres_engine.h"
#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

class FaultTest : public ContractTest {
protected:
    static std::string process(Connection &db) { return db.rows("select pg_backend_pid()").at(0).at(0).value(); }

    // Ends a connection from another one, and waits until it is gone.
    static void end(Connection &other, const std::string &process) {
        other.rows("select pg_terminate_backend(" + process + ")");
        while (!other.rows("select 1 from pg_stat_activity where pid = " + process).empty())
            other.rollback();
        other.rollback();
    }
    void end(const std::string &process) const {
        Connection other = connect();
        end(other, process);
    }

    // The table of makeTable, which ends the connection that inserts this row: at once, or by its commit.
    static void makeTrap(Connection &db, int row, bool byCommit) {
        makeTable(db);
        db.run("create function cut() returns trigger language plpgsql as $$ begin "
               "perform pg_terminate_backend(pg_backend_pid()); return new; end $$");
        db.run(std::string("create ") + (byCommit ? "constraint trigger" : "trigger") + " trap after insert on t " +
               (byCommit ? "deferrable initially deferred " : "") +
               "for each row when (new.id = " + std::to_string(row) + ") execute function cut()");
        db.commit();
    }

    // Inserts rows with these keys as one set.
    static uint32_t insertMany(Connection &db, const std::vector<int32_t> &ids) {
        Statement insert(db, "insert into t (id) values (:1)");
        insert.rows(static_cast<uint32_t>(ids.size()));
        insert.bind(0, kInteger, ids.data(), sizeof ids[0]);
        return qdc_execute(insert);
    }
    static std::vector<int32_t> numbersTo(int32_t last) {
        std::vector<int32_t> numbers;
        for (int32_t i = 1; i <= last; ++i)
            numbers.push_back(i);
        return numbers;
    }
};
ENGINE_SUITE(FaultTest);

TEST_P(FaultTest, AStatementThatTakesTooLongIsGivenUp) {
    Connection db = connect();
    db.run("set statement_timeout = 50");
    db.commit();
    EXPECT_THAT(db.refusal("select pg_sleep(30)"), AllOf(StartsWith("57014: "), HasSubstr("statement timeout")));
    EXPECT_EQ(db.errorCode(), 57014U);
    EXPECT_THAT(db.refusal("select 1"), StartsWith("25P02: "));
    db.rollback();
    EXPECT_EQ(db.rows("select 1"), Rows{rowOf("1")});
}

TEST_P(FaultTest, AStatementThatAnotherCancelsIsGivenUp) {
    Connection db = connect();
    const std::string of = process(db);
    std::thread canceller([&] {
        Connection other = connect();
        while (other
                   .rows("select pg_cancel_backend(pid) from pg_stat_activity where wait_event = 'PgSleep' and pid = " +
                         of)
                   .empty())
            other.rollback();
    });
    EXPECT_THAT(db.refusal("select pg_sleep(30)"), StartsWith("57014: "));
    canceller.join();
    db.rollback();
    EXPECT_EQ(process(db), of) << "the connection stays";
}

TEST_P(FaultTest, AnEndedTransactionIsToldOfAndLeavesNothing) {
    Connection keeper = connect();
    makeTable(keeper, 1);
    {
        Connection db = connect();
        const std::string of = process(db);
        fill(db, 2, 2);
        Statement open(db, "select id from t");
        open.execute();
        end(keeper, of);
        EXPECT_THAT(db.refusal("select 1"), AllOf(StartsWith("57P01: "), HasSubstr("terminating connection")));
        EXPECT_THAT(db.refusal("select 1"), StartsWith("08"));
        EXPECT_FAILS(qdc_commit(db));
        EXPECT_THAT(db.refusal("insert into t (id) values (3)"), StartsWith("08"));
        EXPECT_OK(db, qdc_disconnect(db));
    }
    Connection db = connect();
    EXPECT_EQ(count(db), 1);
    fill(db, 2, 2);
    EXPECT_OK(db, qdc_commit(db));
}

TEST_P(FaultTest, AQueryThatIsCutOffIsNoPlainEnd) {
    Connection db = connect();
    const std::string of = process(db);
    Statement query(db, "select n, repeat('x', 1000) from generate_series(1, 100000) as n");
    query.readAhead(10);
    query.execute();
    EXPECT_TRUE(query.fetch());
    end(of);
    uint32_t status = 0;
    uint32_t rows = 1;
    int fetched = 1;
    for (; status == 0 && rows == 1; ++fetched)
        status = qdc_fetch(query, &rows);
    EXPECT_NE(status, 0U);
    EXPECT_LT(fetched, 100000);
    EXPECT_THAT(db.error(), AnyOf(StartsWith("57P01: "), StartsWith("08")));
}

TEST_P(FaultTest, ConnectionsThatAreEndedWhileNobodyUsesThemAreNotMissed) {
    Connection keeper = connect();
    std::vector<std::string> ended;
    {
        std::vector<std::unique_ptr<Connection>> many;
        for (int i = 0; i < 3; ++i) {
            many.push_back(std::make_unique<Connection>(target()));
            ended.push_back(process(*many.back()));
        }
    }
    for (const std::string &of : ended)
        end(keeper, of);
    for (int i = 0; i < 5; ++i) {
        Connection db = connect();
        EXPECT_THAT(ended, testing::Not(testing::Contains(process(db))));
    }
}

TEST_P(FaultTest, ACommitThatFindsItsConnectionEndedDoesNotSucceed) {
    Connection keeper = connect();
    makeTable(keeper);
    for (const bool noticed : {false, true}) {
        SCOPED_TRACE(noticed);
        Connection db = connect();
        const std::string of = process(db);
        fill(db, 1, 1);
        end(keeper, of);
        if (noticed) {
            EXPECT_FALSE(db.refusal("select 1").empty());
        }
        EXPECT_FAILS(qdc_commit(db));
        EXPECT_THAT(db.error(), AnyOf(AllOf(StartsWith("08007: "), HasSubstr("outcome is unknown")),
                                      AllOf(StartsWith("08006: "), HasSubstr("lost"))));
        EXPECT_EQ(count(keeper), 0);
        keeper.rollback();
    }
}

TEST_P(FaultTest, ACommitWhoseAnswerNeverCameSaysThatItsOutcomeIsUnknown) {
    Connection keeper = connect();
    makeTrap(keeper, 1, true);
    Connection db = connect();
    fill(db, 1, 1);
    EXPECT_FAILS(qdc_commit(db));
    EXPECT_EQ(db.errorCode(), 8007U);
    EXPECT_THAT(db.error(), AllOf(StartsWith("08007: "), HasSubstr("outcome is unknown"), HasSubstr("terminating")));
    EXPECT_OK(db, qdc_disconnect(db));
    EXPECT_EQ(count(keeper), 0);
}

TEST_P(FaultTest, ACommitThatIsRefusedSaysThatNothingWasCommitted) {
    Connection db = connect();
    db.run("create table d (id integer unique deferrable initially deferred)");
    db.commit();
    for (int again = 0; again < 2; ++again) {
        db.run("insert into d (id) values (1)");
        db.run("insert into d (id) values (1)");
        EXPECT_FAILS(qdc_commit(db));
        EXPECT_THAT(db.error(), StartsWith("23505: nothing was committed: duplicate key"));
        EXPECT_EQ(count(db, "d"), 0);
    }
}

TEST_P(FaultTest, ASetThatIsCutOffInTheMiddleLeavesNothing) {
    Connection keeper = connect();
    makeTrap(keeper, 1500, false);
    {
        Connection db = connect();
        fill(db, 5000, 5000);
        EXPECT_FAILS(insertMany(db, numbersTo(3000)));
        EXPECT_THAT(db.error(), AnyOf(StartsWith("57P01: terminating connection"), StartsWith("08006: the ")));
        EXPECT_FAILS(qdc_commit(db));
    }
    Connection db = connect();
    EXPECT_EQ(count(db), 0);
}

TEST_P(FaultTest, ASetThatIsRefusedNamesItsRowAndColumn) {
    Connection db = connect();
    makeTable(db);
    std::vector<int32_t> ids = numbersTo(2500);
    ids[2100] = 7;
    EXPECT_FAILS(insertMany(db, ids));
    EXPECT_EQ(db.errorCode(), 23505U);
    EXPECT_THAT(db.error(), AllOf(StartsWith("23505: row 2100: duplicate key"), HasSubstr("(id)=(7)")));
    db.rollback();
    EXPECT_EQ(count(db), 0);
    db.run("alter table t add column small integer not null default 1 check (small < 10)");
    db.run("alter table t alter column v set not null");
    db.commit();
    EXPECT_FAILS(insertMany(db, numbersTo(3)));
    EXPECT_THAT(db.error(), AllOf(StartsWith("23502: row 0: "), HasSubstr("\"v\"")));
}

TEST_P(FaultTest, AValueThatIsNotSentNamesItsRow) {
    Connection db = connect();
    makeTable(db);
    db.run("alter table t add column n numeric");
    db.commit();
    Statement insert(db, "insert into t (n, id) values (:1, :2)");
    const int32_t ids[] = {1, 2, 3, 4};
    const uint16_t none = 65535;
    const uint16_t lengths[] = {none, none, 2, 2};
    insert.rows(4);
    insert.bind(0, kVarbinary, "a b c d ", 2, lengths);
    insert.bind(1, kInteger, ids, sizeof ids[0]);
    EXPECT_FAILS(qdc_execute(insert));
    EXPECT_THAT(db.error(), AllOf(StartsWith("42804: row 2: "), HasSubstr("bytes")));
    EXPECT_EQ(count(db), 0);
}

// Also where the connection knows the text, and asks what has become of it.
TEST_P(FaultTest, AStatementThatFailsByItsValuesIsRunOnce) {
    Connection keeper = connect();
    makeTable(keeper);
    keeper.run("create sequence runs");
    keeper.run("create function refuse() returns trigger language plpgsql as $$ begin "
               "perform nextval('runs'); "
               "if new.v = 'wrong' then raise exception 'refused' using errcode = '22023'; end if; "
               "return new; end $$");
    keeper.run("create trigger refusal before insert on t for each row execute function refuse()");
    const std::string sql = "insert into t (id, v) values (:1, :2)";
    keeper.run(sql, 1, "right");
    for (int again = 0; again < 3; ++again) {
        keeper.commit();
        EXPECT_THROW(keeper.run(sql, 2, "wrong"), ClientError);
        EXPECT_THAT(keeper.error(), StartsWith("22023: refused"));
        EXPECT_THAT(keeper.refusal("select 1"), StartsWith("25P02: "));
        keeper.rollback();
    }
    EXPECT_EQ(keeper.rows("select last_value from runs"), Rows{rowOf("4")});
}

// Even one that the connection knew.
TEST_P(FaultTest, AFailedFirstStatementFailsItsTransaction) {
    Connection db = connect();
    makeTable(db);
    const std::string sql = "insert into t (id, v) values (:1, :2)";
    db.run(sql, 1, "a");
    db.commit();
    const std::pair<std::string, const char *> refused[] = {{std::string(41, 'x'), "22001: "}, {"\xFF", "22021: "}};
    for (const auto &[value, state] : refused) {
        EXPECT_THROW(db.run(sql, 2, value), ClientError);
        EXPECT_THAT(db.error(), StartsWith(state));
        EXPECT_THAT(db.refusal("select 1"), StartsWith("25P02: "));
        EXPECT_FAILS(qdc_commit(db));
    }
    EXPECT_EQ(count(db), 1);
}

TEST_P(FaultTest, ErrorsBeginWithTheServersState) {
    Connection db = connect();
    makeTable(db, 1);
    const std::pair<const char *, const char *> refused[] = {
        {"select * from nowhere", "42P01"},
        {"select nothing from t", "42703"},
        {"selec 1", "42601"},
        {"insert into t (id) values (1)", "23505"},
        {"insert into t (v) values ('x')", "23502"},
        {"insert into t (id) values ('x')", "22P02"},
        {"insert into t (id, v) values (2, repeat('x', 41))", "22001"},
        {"insert into t (id) values (3000000000)", "22003"},
        {"select 1 / (id - 1) from t", "22012"},
        {"select * from t; select 1", "42601"},
        {"create table t (id integer)", "42P07"},
        {"create index concurrently i on t (v)", "25001"},
        {"create database other", "25001"},
        {"  -- nothing", "42601"},
        {"commit", "0A000"},
    };
    for (const auto &[sql, state] : refused) {
        const std::string words = db.refusal(sql);
        EXPECT_THAT(words, StartsWith(std::string(state) + ": ")) << sql;
        const bool digits = std::string(state).find_first_not_of("0123456789") == std::string::npos;
        EXPECT_EQ(db.errorCode(), digits ? std::stoul(state) : 99999U) << sql;
        db.rollback();
    }
}

} // namespace
