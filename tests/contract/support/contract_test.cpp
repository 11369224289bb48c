#include "support/contract_test.h"

#include <iostream>

namespace contract {

std::vector<Engine *> &engines() {
    static std::vector<Engine *> all;
    return all;
}

void ContractTest::makeTable(Connection &db, int32_t rows) {
    db.run("create table t (id integer not null primary key, v varchar(40))");
    fill(db, 1, rows);
    db.commit();
}

void ContractTest::fill(Connection &db, int32_t first, int32_t last) {
    Statement insert(db, "insert into t (id, v) values (:1, :2)");
    for (int32_t id = first; id <= last; ++id) {
        insert.set(0, id);
        insert.set(1, "row " + std::to_string(id));
        insert.execute();
    }
}

int64_t ContractTest::count(Connection &db, const std::string &table) {
    return std::stoll(db.rows("select count(*) from " + table).at(0).at(0).value());
}

namespace {

// Says at the end how many cases each engine went through, so that engines can be compared.
class Tally : public testing::Environment {
public:
    void TearDown() override {
        for (const Engine *engine : engines()) {
            int cases = 0;
            int skipped = 0;
            forEachCase(*engine, [&](const testing::TestInfo &info) {
                ++cases;
                skipped += info.result()->Skipped() ? 1 : 0;
            });
            std::cout << "contract: " << engine->name() << ": " << cases << " cases, " << skipped
                      << " of them skipped with a reason" << std::endl;
        }
    }

private:
    template <class Visit> static void forEachCase(const Engine &engine, Visit visit) {
        const testing::UnitTest &all = *testing::UnitTest::GetInstance();
        const std::string ending = std::string("/") + engine.name();
        for (int i = 0; i < all.total_test_suite_count(); ++i) {
            const testing::TestSuite &suite = *all.GetTestSuite(i);
            if (std::string_view(suite.name()).substr(0, 9) != "Contract/")
                continue;
            for (int j = 0; j < suite.total_test_count(); ++j) {
                const testing::TestInfo &info = *suite.GetTestInfo(j);
                if (info.should_run() && std::string(info.name()).ends_with(ending))
                    visit(info);
            }
        }
    }
};

[[maybe_unused]] const testing::Environment *const tally = testing::AddGlobalTestEnvironment(new Tally);

} // namespace

} // namespace contract
