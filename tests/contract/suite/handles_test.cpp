// Handles and pointers that are NULL: an answer, never a crash.
#include <array>
#include <functional>

#include "support/contract_test.h"

namespace {

using namespace contract;

class HandlesTest : public ContractTest {
protected:
    static inline uint32_t number_ = 0;
    static inline uint16_t short_ = 0;
    static inline void *pointer_ = nullptr;
    static inline const char *text_ = nullptr;
    static inline std::array<char, 16> buffer_ = {};
    static inline QDC_COLUMN_DESC column_ = {};
};
CONTRACT_SUITE(HandlesTest);

struct Call {
    const char *name;
    std::function<uint32_t()> run;
};

TEST_P(HandlesTest, NullHandlesAreRefused) {
    uint32_t *n = &number_;
    char *b = buffer_.data();
    const Call calls[] = {
        {"set_conn_attr", [=] { return qdc_set_conn_attr(nullptr, QDC_ATTR_SSL_MODE, n, 4); }},
        {"connect", [=] { return qdc_connect(nullptr, ":", "u", "p"); }},
        {"disconnect", [=] { return qdc_disconnect(nullptr); }},
        {"free_conn", [=] { return qdc_free_conn(nullptr); }},
        {"alloc_stmt", [=] { return qdc_alloc_stmt(nullptr, &pointer_); }},
        {"free_stmt", [=] { return qdc_free_stmt(nullptr); }},
        {"set_stmt_attr", [=] { return qdc_set_stmt_attr(nullptr, QDC_ATTR_PREFETCH, n, 4); }},
        {"prepare", [=] { return qdc_prepare(nullptr, "select 1"); }},
        {"bind_by_pos", [=] { return qdc_bind_by_pos(nullptr, 0, 1, n, 4, &short_); }},
        {"set_paramset_size", [=] { return qdc_set_paramset_size(nullptr, 1); }},
        {"execute", [=] { return qdc_execute(nullptr); }},
        {"fetch", [=] { return qdc_fetch(nullptr, n); }},
        {"get_column_count", [=] { return qdc_get_column_count(nullptr, n); }},
        {"desc_column_by_id", [=] { return qdc_desc_column_by_id(nullptr, 0, &column_); }},
        {"desc_column_by_name", [=] { return qdc_desc_column_by_name(nullptr, "x", &column_); }},
        {"get_column_by_id", [=] { return qdc_get_column_by_id(nullptr, 0, &pointer_, n, n); }},
        {"read_clob", [=] { return qdc_read_clob(nullptr, b, 0, b, 1, n, n, n); }},
        {"read_blob", [=] { return qdc_read_blob(nullptr, b, 0, b, 1, n, n); }},
        {"write_clob", [=] { return qdc_write_clob(nullptr, 0, b, 1, n); }},
        {"write_blob", [=] { return qdc_write_blob(nullptr, 0, b, 1); }},
        {"write_batch_clob", [=] { return qdc_write_batch_clob(nullptr, 0, 0, b, 1, n); }},
        {"write_batch_blob", [=] { return qdc_write_batch_blob(nullptr, 0, 0, b, 1); }},
        {"commit", [=] { return qdc_commit(nullptr); }},
        {"rollback", [=] { return qdc_rollback(nullptr); }},
        {"get_error", [=] { return qdc_get_error(nullptr, n, &text_); }},
        {"alloc_conn", [=] { return qdc_alloc_conn(nullptr); }},
    };
    for (const Call &call : calls)
        EXPECT_NE(call.run(), 0U) << call.name;
    EXPECT_EQ(qdc_get_affected_rows(nullptr), 0U);
}

TEST_P(HandlesTest, NullPointersAreRefusedAndHarmless) {
    Connection db = connect();
    db.run(std::string("create table h (c text, b ") + engine().blobType() + ")");
    Statement insert(db, "insert into h (c, b) values (:1, :2)");
    insert.setLob(0, kClob, "text");
    insert.setLob(1, kBlob, "bytes");
    insert.execute();
    Statement query(db, "select c, b from h");
    query.execute();
    ASSERT_TRUE(query.fetch());
    void *clob = nullptr;
    void *blob = nullptr;
    uint32_t size = 0;
    ASSERT_EQ(qdc_get_column_by_id(query, 0, &clob, &size, &number_), 0U);
    ASSERT_EQ(qdc_get_column_by_id(query, 1, &blob, &size, &number_), 0U);
    uint32_t *n = &number_;
    char *b = buffer_.data();
    const Call calls[] = {
        {"set_conn_attr value", [&] { return qdc_set_conn_attr(db, QDC_ATTR_TRANS, nullptr, 4); }},
        {"alloc_stmt", [&] { return qdc_alloc_stmt(db, nullptr); }},
        {"set_stmt_attr value", [&] { return qdc_set_stmt_attr(query, QDC_ATTR_PREFETCH, nullptr, 4); }},
        {"fetch", [&] { return qdc_fetch(query, nullptr); }},
        {"get_column_count", [&] { return qdc_get_column_count(query, nullptr); }},
        {"desc_column_by_id", [&] { return qdc_desc_column_by_id(query, 0, nullptr); }},
        {"desc_column_by_name", [&] { return qdc_desc_column_by_name(query, "C", nullptr); }},
        {"desc_column_by_name name", [&] { return qdc_desc_column_by_name(query, nullptr, &column_); }},
        {"get_column data", [&] { return qdc_get_column_by_id(query, 0, nullptr, n, n); }},
        {"get_column size", [&] { return qdc_get_column_by_id(query, 0, &pointer_, nullptr, n); }},
        {"get_column null", [&] { return qdc_get_column_by_id(query, 0, &pointer_, n, nullptr); }},
        {"read_clob locator", [&] { return qdc_read_clob(query, nullptr, 0, b, 4, n, n, n); }},
        {"read_clob buffer", [&] { return qdc_read_clob(query, clob, 0, nullptr, 4, n, n, n); }},
        {"read_clob characters", [&] { return qdc_read_clob(query, clob, 0, b, 4, nullptr, n, n); }},
        {"read_clob bytes", [&] { return qdc_read_clob(query, clob, 0, b, 4, n, nullptr, n); }},
        {"read_clob end", [&] { return qdc_read_clob(query, clob, 0, b, 4, n, n, nullptr); }},
        {"read_blob locator", [&] { return qdc_read_blob(query, nullptr, 0, b, 4, n, n); }},
        {"read_blob buffer", [&] { return qdc_read_blob(query, blob, 0, nullptr, 4, n, n); }},
        {"read_blob bytes", [&] { return qdc_read_blob(query, blob, 0, b, 4, nullptr, n); }},
        {"read_blob end", [&] { return qdc_read_blob(query, blob, 0, b, 4, n, nullptr); }},
        {"write_clob written", [&] { return qdc_write_clob(insert, 0, "x", 1, nullptr); }},
        {"write_batch_clob written", [&] { return qdc_write_batch_clob(insert, 0, 0, "x", 1, nullptr); }},
        {"get_error code", [&] { return qdc_get_error(db, nullptr, &text_); }},
        {"get_error text", [&] { return qdc_get_error(db, n, nullptr); }},
    };
    for (const Call &call : calls)
        EXPECT_NE(call.run(), 0U) << call.name;
    // The row is still there.
    EXPECT_EQ(query.row(), rowOf("text", "bytes"));
    Statement unprepared(db);
    EXPECT_FAILS(qdc_prepare(unprepared, nullptr));
}

TEST_P(HandlesTest, AConnectionNeedsAnAddressButNoPassword) {
    Connection db;
    EXPECT_FAILS(qdc_connect(db, nullptr, "u", "p"));
    // Whether NULL is a user is the database's affair; it is no crash.
    if (qdc_connect(db, target().address.c_str(), nullptr, nullptr) != 0) {
        EXPECT_NE(db.error(), "");
    }
}

TEST_P(HandlesTest, NullLargeObjectsAreNull) {
    Connection db = connect();
    db.run(std::string("create table h (c text, b ") + engine().blobType() + ")");
    Statement insert(db, "insert into h (c, b) values (:1, :2)");
    insert.setLob(0, kClob, std::nullopt);
    insert.setLob(1, kBlob, std::nullopt);
    uint32_t written = 77;
    EXPECT_OK(db, qdc_write_clob(insert, 0, nullptr, 0, &written));
    EXPECT_OK(db, qdc_write_blob(insert, 1, nullptr, 0));
    insert.execute();
    EXPECT_EQ(db.rows("select c, b from h"), Rows{rowOf(std::nullopt, std::nullopt)});
}

TEST_P(HandlesTest, ManyHandlesAreFreedInAnyOrder) {
    Connection db = connect();
    makeTable(db, 3);
    std::vector<std::unique_ptr<Statement>> statements;
    for (int i = 0; i < 50; ++i) {
        statements.push_back(std::make_unique<Statement>(db, "select id from t"));
        statements.back()->execute();
    }
    for (size_t i = 0; i < statements.size(); i += 2)
        statements[i].reset();
    for (size_t i = 1; i < statements.size(); i += 2)
        EXPECT_EQ(statements[i]->rest().size(), 3U);
    statements.clear();
    EXPECT_EQ(count(db), 3);
}

// A process may connect and disconnect as often as it likes.
TEST_P(HandlesTest, ManyConnectionsOneAfterTheOther) {
    Connection keeper = connect();
    makeTable(keeper, 1);
    for (int i = 0; i < 100; ++i) {
        Connection db = connect();
        ASSERT_EQ(count(db), 1);
    }
}

} // namespace
