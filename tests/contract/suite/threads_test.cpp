// Different connections in different threads at once.
#include <atomic>
#include <thread>

#include "support/contract_test.h"

namespace {

using namespace contract;

constexpr int kThreads = 4;

class ThreadsTest : public ContractTest {
protected:
    ThreadsTest() { configure("client.busy_timeout_ms=600000\n"); }

    // Runs the work in threads at once and hands on the first failure.
    template <class Work> static void inThreads(Work work) {
        std::atomic<int> ready = 0;
        std::vector<std::string> failures(kThreads);
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i)
            threads.emplace_back([&, i] {
                ++ready;
                while (ready < kThreads)
                    std::this_thread::yield();
                try {
                    work(i);
                } catch (const std::exception &failure) {
                    failures[static_cast<size_t>(i)] = failure.what();
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        for (const std::string &failure : failures)
            EXPECT_EQ(failure, "");
    }
};
CONTRACT_SUITE(ThreadsTest);

TEST_P(ThreadsTest, ConnectingAtOnce) {
    inThreads([&](int) {
        for (int i = 0; i < 10; ++i) {
            Connection db = connect();
            Statement query(db, "select 1");
            query.execute();
        }
    });
}

TEST_P(ThreadsTest, WritersAndReadersAtOnce) {
    constexpr int32_t kRows = 25;
    {
        Connection db = connect();
        makeTable(db);
    }
    inThreads([&](int thread) {
        Connection db = connect();
        for (int32_t i = 0; i < kRows; ++i) {
            fill(db, thread * 1000 + i, thread * 1000 + i);
            db.commit();
            // What one has committed is there, whatever the others do.
            if (db.rows("select id from t where id between :1 and :2", thread * 1000, thread * 1000 + 999).size() !=
                static_cast<size_t>(i) + 1)
                throw ClientError("a committed row is missing");
            db.commit();
        }
    });
    Connection db = connect();
    EXPECT_EQ(count(db), kThreads * kRows);
}

// As the library's plain operations do: a connection for every one of them, the last of which may just have gone.
TEST_P(ThreadsTest, AConnectionForEveryWork) {
    constexpr int32_t kRows = 20;
    {
        Connection db = connect();
        makeTable(db);
    }
    inThreads([&](int thread) {
        for (int32_t i = 0; i < kRows; ++i) {
            Connection writer = connect();
            Statement probe(writer, "select * from t where 1<>1");
            probe.execute();
            fill(writer, thread * 1000 + i, thread * 1000 + i);
            writer.commit();
            Connection reader = connect();
            if (reader.rows("select v from t where id = :1", thread * 1000 + i).size() != 1)
                throw ClientError("a committed row is missing");
        }
    });
    Connection db = connect();
    EXPECT_EQ(count(db), kThreads * kRows);
}

TEST_P(ThreadsTest, ReadersAtOnce) {
    {
        Connection db = connect();
        makeTable(db, 500);
    }
    inThreads([&](int) {
        Connection db = connect();
        for (int i = 0; i < 5; ++i)
            if (db.rows("select id, v from t order by id").size() != 500)
                throw ClientError("rows are missing");
    });
}

TEST_P(ThreadsTest, ErrorsStayWithTheirConnection) {
    inThreads([&](int thread) {
        Connection db = connect();
        const std::string table = "nosuch" + std::to_string(thread);
        for (int i = 0; i < 50; ++i) {
            if (db.refusal("select * from " + table).find(table) == std::string::npos)
                throw ClientError("another's error: " + db.error());
            db.rollback();
        }
    });
}

// A connection may be handed from one thread to the next.
TEST_P(ThreadsTest, AConnectionMovesBetweenThreads) {
    Connection db = connect();
    makeTable(db, 100);
    Statement query(db, "select id from t order by id");
    query.readAhead(1);
    query.execute();
    size_t rows = 0;
    std::thread([&] {
        query.fetch();
        ++rows;
    }).join();
    std::thread([&] { rows += query.rest().size(); }).join();
    EXPECT_EQ(rows, 100U);
}

} // namespace
