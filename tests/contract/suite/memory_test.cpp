// Every request for memory of a connection's life fails once: an error, nothing kept of it, and the next call works.
#include <cstring>
#include <iostream>

#include "support/contract_test.h"
#include "support/memory.h"

namespace {

using namespace contract;

constexpr int32_t kKeys[] = {1, 2, 3, 4};
constexpr char kClobText[] = "a large object";

// What a program does with a connection until a call fails. It asks for no memory of its own.
class Work {
public:
    explicit Work(const Target &target) : target_(target) {}
    ~Work() {
        if (db_ == nullptr)
            return;
        qdc_rollback(db_);
        qdc_disconnect(db_);
        qdc_free_conn(db_);
    }
    Work(const Work &) = delete;
    Work &operator=(const Work &) = delete;

    bool run() {
        return qdc_alloc_conn(&db_) == 0 &&
               toldOf(qdc_connect(db_, target_.address.c_str(), target_.user.c_str(), target_.password.c_str()) == 0 &&
                      insertOne() && insertMany() && selectAll() && qdc_commit(db_) == 0);
    }
    // What a failure said; "" if it said nothing, or nothing failed.
    const char *words() const { return words_; }

private:
    bool toldOf(bool works) {
        uint32_t code = 0;
        const char *message = nullptr;
        *words_ = '\0';
        if (!works && qdc_get_error(db_, &code, &message) == 0 && code != 0)
            std::strncpy(words_, message, sizeof words_ - 1);
        return works;
    }
    bool insertOne() {
        void *insert = nullptr;
        uint32_t written = 0;
        return qdc_alloc_stmt(db_, &insert) == 0 && qdc_prepare(insert, "insert into m (id, c) values (:1, :2)") == 0 &&
               qdc_bind_by_pos(insert, 0, kInteger, const_cast<int32_t *>(kKeys), sizeof kKeys[0], nullptr) == 0 &&
               qdc_bind_by_pos(insert, 1, kClob, slot_, sizeof slot_, nullptr) == 0 &&
               qdc_write_clob(insert, 1, kClobText, sizeof kClobText - 1, &written) == 0 && qdc_execute(insert) == 0 &&
               qdc_free_stmt(insert) == 0;
    }
    bool insertMany() {
        void *insert = nullptr;
        return qdc_alloc_stmt(db_, &insert) == 0 && qdc_prepare(insert, "insert into m (id) values (:1)") == 0 &&
               qdc_set_paramset_size(insert, 3) == 0 &&
               qdc_bind_by_pos(insert, 0, kInteger, const_cast<int32_t *>(kKeys + 1), sizeof kKeys[0], lengths_) == 0 &&
               qdc_execute(insert) == 0;
    }
    // Leaves its rows half-read.
    bool selectAll() {
        const uint32_t ahead = 2;
        void *query = nullptr;
        void *data = nullptr;
        uint32_t rows = 0;
        uint32_t size = 0;
        uint32_t isNull = 0;
        return qdc_alloc_stmt(db_, &query) == 0 && qdc_set_stmt_attr(query, QDC_ATTR_PREFETCH, &ahead, 0) == 0 &&
               qdc_prepare(query, "select id, c from m order by id") == 0 && qdc_execute(query) == 0 &&
               qdc_fetch(query, &rows) == 0 && rows == 1 &&
               qdc_get_column_by_id(query, 1, &data, &size, &isNull) == 0 && readClob(query, data) &&
               qdc_fetch(query, &rows) == 0 && rows == 1 && qdc_fetch(query, &rows) == 0 && rows == 1;
    }
    bool readClob(void *query, void *locator) {
        uint32_t characters = 0;
        uint32_t bytes = 0;
        uint32_t end = 0;
        return qdc_read_clob(query, locator, 0, slot_, sizeof slot_, &characters, &bytes, &end) == 0 &&
               bytes == sizeof kClobText - 1;
    }

    const Target &target_;
    void *db_ = nullptr;
    char slot_[16] = {}; // of a large object, which its text fits into as well
    uint16_t lengths_[3] = {4, 4, 4};
    char words_[200] = "no handle"; // which has no error of its own
};

class MemoryTest : public ContractTest {
protected:
    // Fails each request in turn. Returns how many there were.
    static uint64_t sweep(Connection &keeper, const Target &where, FailingMemory::Mode mode) {
        for (uint64_t n = 1;; ++n) {
            SCOPED_TRACE(n);
            bool works = false;
            bool happened = false;
            char words[200] = {};
            {
                const FailingMemory failing(n, mode);
                {
                    Work work(where);
                    works = work.run();
                    std::strncpy(words, work.words(), sizeof words);
                }
                happened = failing.happened();
            }
            EXPECT_NE(works, *words != '\0') << words;
            EXPECT_EQ(count(keeper, "m"), works ? std::ssize(kKeys) : 0);
            keeper.run("delete from m");
            keeper.commit();
            if (!happened) {
                EXPECT_TRUE(works) << words;
                return n - 1;
            }
            if (HasFailure())
                return 0;
        }
    }
};
CONTRACT_SUITE(MemoryTest);

TEST_P(MemoryTest, ARequestThatFailsIsAnErrorAndNothingElse) {
    Connection keeper = connect();
    keeper.run("create table m (id integer primary key, c text)");
    keeper.commit();
    const std::pair<const char *, FailingMemory::Mode> ways[] = {{"", FailingMemory::Mode::once},
                                                                 {"", FailingMemory::Mode::fromThenOn},
                                                                 {"client.pool=0\n", FailingMemory::Mode::once}};
    for (const auto &[pool, mode] : ways) {
        configure(pool);
        const uint64_t requests = sweep(keeper, target(), mode);
        std::cout << engine().name() << ": " << requests << " requests for memory failed" << std::endl;
        EXPECT_GT(requests, 50U);
    }
}

} // namespace
