#include <atomic>
#include <sqlite3.h>
#include <thread>

#include "support.h"

namespace ormel::client::sqlite {

namespace {

class ThreadsTest : public DatabaseTest {
protected:
    // Runs the work in several threads, each with a connection of its own and its number.
    template <class Work> void together(Work work) {
        std::vector<std::thread> threads;
        for (int number = 0; number < 4; ++number)
            threads.emplace_back([this, number, work] {
                try {
                    work(*connect("60000"), number);
                } catch (const Error &error) {
                    ADD_FAILURE() << error.code << " " << error.message;
                }
            });
        for (std::thread &thread : threads)
            thread.join();
    }
};

} // namespace

TEST_F(ThreadsTest, aNewDatabaseCanBeOpenedByAllAtOnce) {
    together([](Connection &connection, int number) {
        run(connection, "CREATE TABLE IF NOT EXISTS t (id INTEGER)");
        run(connection, "INSERT INTO t VALUES (?1)", {integer(number)});
        connection.commit();
    });
    EXPECT_EQ(query(*connect(), "SELECT id FROM t").size(), 4U);
}

TEST_F(ThreadsTest, writersWaitForEachOther) {
    create("CREATE TABLE t (id INTEGER, n INTEGER)");
    constexpr int each = 25;
    together([](Connection &connection, int number) {
        for (int i = 0; i < each; ++i) {
            run(connection, "INSERT INTO t VALUES (?1, ?2)", {integer(number), integer(i)});
            run(connection, "SELECT * FROM t WHERE 1<>1");
            connection.commit();
        }
    });
    EXPECT_EQ(query(*connect(), "SELECT * FROM t").size(), 4U * each);
}

// The lock is asked for with a snapshot in hand: it is waited for, and comes when the other has changed nothing.
TEST_F(ThreadsTest, aReaderThatBecomesAWriterWaits) {
    create("CREATE TABLE t (id INTEGER)");
    create("INSERT INTO t VALUES (1)");
    const auto writer = connect();
    const auto reader = connect("60000");
    EXPECT_EQ(query(*reader, "SELECT id FROM t").size(), 1U);
    run(*writer, "INSERT INTO t VALUES (2)");
    std::atomic<bool> done = false;
    std::thread waiting([&] {
        EXPECT_EQ(run(*reader, "UPDATE t SET id = 3"), 1U);
        EXPECT_TRUE(done);
        reader->commit();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    done = true;
    writer->rollback();
    waiting.join();
    EXPECT_EQ(query(*writer, "SELECT id FROM t"), (std::vector<TextRow>{{"3"}}));
}

TEST_F(ThreadsTest, readersSeeWholeTransactions) {
    create("CREATE TABLE t (id INTEGER, n BIGINT)");
    create("INSERT INTO t VALUES (1, 0), (2, 0)");
    together([](Connection &connection, int number) {
        for (int i = 0; i < 25; ++i) {
            if (number == 0) {
                run(connection, "UPDATE t SET n = n + 1 WHERE id = 1");
                run(connection, "UPDATE t SET n = n - 1 WHERE id = 2");
                connection.commit();
                continue;
            }
            EXPECT_EQ(query(connection, "SELECT sum(n) FROM t").at(0).at(0), "0");
            connection.rollback();
        }
    });
}

} // namespace ormel::client::sqlite
