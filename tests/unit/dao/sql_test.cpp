#include <algorithm>

#include "ormeldb/dao.h"
#include "support/sample.h"
#include "support/unit_test.h"

using testing::ElementsAre;
using unit::Log;

namespace {

using Builder = char *(*)(const char *, const ORMEL_PARA *);

const std::pair<const char *, Builder> kBuilders[] = {{"dbCountMallocSql", dbCountMallocSql},
                                                      {"dbSelectMallocSql", dbSelectMallocSql},
                                                      {"dbInsertMallocSql", dbInsertMallocSql},
                                                      {"dbDeleteMallocSql", dbDeleteMallocSql},
                                                      {"dbUpdateMallocSql", dbUpdateMallocSql}};

struct Condition {
    const char *name;
    uint32_t op;
};

// A parameter list of names only; values never reach the text.
ORMEL_PARA List(const std::vector<const char *> &fields, const std::vector<Condition> &conditions,
                const std::vector<const char *> &selected = {}) {
    ORMEL_PARA para{};
    size_t slot = 0;
    for (const char *field : fields) {
        para.name[slot] = field;
        para.op[slot++] = 1; // not looked at
    }
    for (const Condition &condition : conditions) {
        para.name[slot] = condition.name;
        para.op[slot++] = condition.op;
    }
    para.iFieldNum = static_cast<int32_t>(fields.size());
    para.iCondNum = static_cast<int32_t>(conditions.size());
    para.iSelectFieldNum = static_cast<int32_t>(selected.size());
    for (size_t i = 0; i < selected.size(); ++i) {
        para.selectField[i] = const_cast<char *>(selected[i]);
    }
    return para;
}

ORMEL_PARA Paged(ORMEL_PARA para, uint32_t isLimit, uint32_t rows, uint32_t offset) {
    para.isLimit = isLimit;
    para.iRowCounts = rows;
    para.iOffset = offset;
    return para;
}

std::string Text(Builder build, const char *table, const ORMEL_PARA &para) {
    std::unique_ptr<char, unit::FreeDeleter> sql(build(table, &para));
    return sql == nullptr ? "none" : sql.get();
}

class SqlTest : public unit::UnitTest {};

TEST_F(SqlTest, Texts) {
    struct {
        Builder build;
        ORMEL_PARA para;
        const char *text;
    } cases[] = {
        {dbCountMallocSql, List({}, {}), "SELECT count(*) FROM t"},
        {dbCountMallocSql, List({}, {{"a", 0}, {"b", 8}}), "SELECT count(*) FROM t WHERE a = :1 AND b like :2"},
        {dbSelectMallocSql, List({}, {}), "SELECT * FROM t"},
        {dbSelectMallocSql, List({}, {{"a", 2}, {"b", 3}}), "SELECT * FROM t WHERE a < :1 AND b <= :2"},
        {dbSelectMallocSql, List({}, {}, {"a"}), "SELECT a FROM t"},
        {dbSelectMallocSql, Paged(List({}, {{"c", 1}}, {"a", "b"}), 1, 10, 20),
         "SELECT a, b FROM t WHERE c <> :1 limit 10 offset 20"},
        {dbSelectMallocSql, Paged(List({}, {}), 0, 10, 20), "SELECT * FROM t"},
        {dbSelectMallocSql, Paged(List({}, {}), 1, 0, 0), "SELECT * FROM t limit 0 offset 0"},
        {dbSelectMallocSql, Paged(List({}, {}), 0xFFFFFFFF, 0x7FFFFFFF, 1),
         "SELECT * FROM t limit 2147483647 offset 1"},
        {dbInsertMallocSql, List({"a"}, {}), "INSERT INTO t (a) values (:1)"},
        {dbInsertMallocSql, List({"a", "b"}, {}), "INSERT INTO t (a, b) values (:1, :2)"},
        {dbInsertMallocSql, List({}, {}), "INSERT INTO t ( values ("},
        {dbDeleteMallocSql, List({}, {}), "DELETE from t"},
        {dbDeleteMallocSql, List({}, {{"a", 0}, {"b", 1}}), "DELETE from t WHERE a = :1 AND b <> :2"},
        {dbUpdateMallocSql, List({"a"}, {}), "UPDATE t SET a = :1"},
        {dbUpdateMallocSql, List({"a", "b"}, {{"c", 0}}), "UPDATE t SET a = :1, b = :2 WHERE c = :3"},
        {dbUpdateMallocSql, List({"a"}, {{"b", 8}, {"c", 2}}), "UPDATE t SET a = :1 WHERE b like :2 AND c < :3"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(Text(c.build, "t", c.para), c.text);
    }
    EXPECT_THAT(Log().Lines(), testing::IsEmpty());
}

TEST_F(SqlTest, UnknownOperatorsMeanEquality) {
    for (uint32_t op : {0u, 4u, 5u, 6u, 7u, 9u, 23u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Text(dbDeleteMallocSql, "t", List({}, {{"a", op}})), "DELETE from t WHERE a = :1") << op;
    }
}

// One allocation, 64 bytes for each slot and 8 more of them.
TEST_F(SqlTest, OneAllocationOfTheBudget) {
    ORMEL_PARA para = List({"a", "b", "c"}, {{"d", 0}});
    for (const auto &[name, build] : kBuilders) {
        SCOPED_TRACE(name);
        unit::FailingAllocation count(0);
        std::free(build("t", &para));
        EXPECT_THAT(count.Sizes(), ElementsAre(size_t{(4 + 8) * 64}));
    }
}

TEST_F(SqlTest, ALongerTextGetsWhatItNeeds) {
    const std::string field(27, 'f');
    const std::string table(2000, 't');
    std::vector<const char *> fields(16, field.c_str());
    std::vector<Condition> conditions(16, {field.c_str(), 8});
    ORMEL_PARA para = List(fields, conditions, std::vector<const char *>(32, field.c_str()));
    for (const auto &[name, build] : kBuilders) {
        SCOPED_TRACE(name);
        unit::FailingAllocation count(0);
        std::string text = Text(build, table.c_str(), para);
        EXPECT_NE(text.find(table), std::string::npos);
        EXPECT_THAT(count.Sizes(), ElementsAre(std::max(size_t{40 * 64}, text.size() + 1)));
    }
    std::string selected = "SELECT " + field;
    for (int i = 1; i < 32; ++i) {
        selected += ", " + field;
    }
    std::string expected = selected + " FROM t";
    EXPECT_EQ(Text(dbSelectMallocSql, "t", List({}, {}, std::vector<const char *>(32, field.c_str()))), expected);
}

TEST_F(SqlTest, WithoutMemoryThereIsNoText) {
    ORMEL_PARA para = List({"a"}, {});
    for (const auto &[name, build] : kBuilders) {
        SCOPED_TRACE(name);
        Log().Forget();
        unit::FailingAllocation fail(1);
        EXPECT_EQ(build("t", &para), nullptr);
        bool says = build == dbInsertMallocSql;
        EXPECT_EQ(Log().Lines(), says ? unit::Lines{"ERROR dbInsertMallocSql: malloc sql failed"} : unit::Lines{});
    }
}

TEST_F(SqlTest, WrongCountsAreNoText) {
    struct {
        int32_t fields, conditions, selected;
    } cases[] = {{-1, 0, 0}, {0, -1, 0},  {0, 0, -1},        {33, 0, 0},        {0, 33, 0},
                 {0, 0, 33}, {16, 17, 0}, {INT32_MAX, 1, 0}, {1, INT32_MAX, 0}, {INT32_MIN, INT32_MIN, 0}};
    for (const auto &c : cases) {
        ORMEL_PARA para{};
        std::fill(std::begin(para.name), std::end(para.name), "a");
        std::fill(std::begin(para.selectField), std::end(para.selectField), const_cast<char *>("a"));
        para.iFieldNum = c.fields;
        para.iCondNum = c.conditions;
        para.iSelectFieldNum = c.selected;
        for (const auto &[name, build] : kBuilders) {
            EXPECT_EQ(build("t", &para), nullptr)
                << name << ' ' << c.fields << ' ' << c.conditions << ' ' << c.selected;
        }
    }
}

TEST_F(SqlTest, WhatIsMissingIsNoText) {
    ORMEL_PARA para = List({"a"}, {});
    for (const auto &[name, build] : kBuilders) {
        EXPECT_EQ(build(nullptr, &para), nullptr) << name;
        EXPECT_EQ(build("t", nullptr), nullptr) << name;
    }
}

TEST_F(SqlTest, ANameThatIsMissingIsEmpty) {
    ORMEL_PARA para = List({nullptr, "b"}, {});
    std::unique_ptr<char, unit::FreeDeleter> text(dbInsertMallocSql("t", &para));
    EXPECT_STREQ(text.get(), "INSERT INTO t (, b) values (:1, :2)");
}

} // namespace
