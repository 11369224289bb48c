#include "dao_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::kCreated;
using unit::kFreed;
using unit::kPrinted;
using unit::Log;

namespace {

class SchemaTest : public unit::DaoTest {
protected:
    // A request with select fields.
    ORMEL_OBJECT *Request(const std::vector<std::string> &fields) {
        fields_ = fields;
        object_ = {};
        object_.iSelectFieldNum = static_cast<int32_t>(fields.size());
        for (size_t i = 0; i < fields_.size(); ++i) {
            object_.apcSelectField[i] = fields_[i].data();
        }
        return &object_;
    }

    // The text that the probe of a table prepares.
    std::string Probe(const std::string &table, const ORMEL_OBJECT *request) {
        Client().ForgetCalls();
        dbFreeStmt(dbSelectAtt(conn_, table.c_str(), request));
        for (const std::string &call : Client().Calls()) {
            if (call.rfind("prepare(", 0) == 0) {
                return call.substr(call.find(", ") + 2, call.size() - call.find(", ") - 3);
            }
        }
        return "nothing";
    }

private:
    std::vector<std::string> fields_;
    ORMEL_OBJECT object_{};
};

// --- The column probe ---

TEST_F(SchemaTest, TheProbeExecutesAQueryWithoutRows) {
    void *stmt = dbSelectAtt(conn_, "T", nullptr);
    EXPECT_EQ(stmt, Client().Handle("s1"));
    EXPECT_THAT(Client().Calls(),
                ElementsAre("alloc_stmt(c1)", "prepare(s1, select * from T where 1<>1)", "execute(s1)"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbSelectAtt: sql: select * from T where 1<>1", kCreated));
    dbFreeStmt(stmt);
}

TEST_F(SchemaTest, TheProbeNamesTheRequestsFields) {
    EXPECT_EQ(Probe("T", Request({})), "select * from T where 1<>1");
    ORMEL_OBJECT *request = Request({"A"});
    request->iSelectFieldNum = -1;
    EXPECT_EQ(Probe("T", request), "select * from T where 1<>1");
    EXPECT_EQ(Probe("T", Request({"A"})), "SELECT A from T where 1<>1");
    EXPECT_EQ(Probe("T", Request({"A", "B"})), "SELECT A, B from T where 1<>1");
}

TEST_F(SchemaTest, TheProbeHoldsAsManyFieldsAsThereAre) {
    std::vector<std::string> fields(32, std::string(27, 'F'));
    std::string text = "SELECT " + fields[0];
    for (size_t i = 1; i < fields.size(); ++i) {
        text += ", " + fields[i];
    }
    EXPECT_EQ(Probe("T", Request(fields)), text + " from T where 1<>1");
}

TEST_F(SchemaTest, ATableNameThatDoesNotFitIsReportedAndTheCallGoesOn) {
    std::string table(600, 't');
    Client().Fail("execute");
    EXPECT_EQ(dbSelectAtt(conn_, table.c_str(), nullptr), nullptr);
    EXPECT_THAT(Log().LinesOf("dbSelectAtt", KPL_LOG_ERROR),
                ElementsAre("ERROR dbSelectAtt: dbSelectAtt:" + table + " sprintf_s error",
                            "ERROR dbSelectAtt: exec sql: failed"));
    EXPECT_EQ(Client().Count("prepare"), 1);
}

TEST_F(SchemaTest, ALongTableNameDoesNotFitBesideFieldsEither) {
    std::string table(600, 't');
    Client().FailFrom("prepare");
    EXPECT_EQ(dbSelectAtt(conn_, table.c_str(), Request({"A", "B"})), nullptr);
    EXPECT_EQ(Log().LinesOf("dbSelectAtt", KPL_LOG_ERROR).at(0),
              "ERROR dbSelectAtt: dbSelectAtt:" + table + " sprintf_s error");
}

TEST_F(SchemaTest, WithoutMemoryForItsFieldsNothingIsAsked) {
    unit::FailingAllocation fail(1);
    EXPECT_EQ(dbSelectAtt(conn_, "T", Request({"A", "B"})), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbSelectAtt: malloc sql failed"));
}

TEST_F(SchemaTest, ACountAboveItsCapacityIsNoStatement) {
    for (int32_t count : {33, INT32_MAX}) {
        ORMEL_OBJECT *request = Request({});
        request->iSelectFieldNum = count;
        EXPECT_EQ(dbSelectAtt(conn_, "T", request), nullptr) << count;
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(SchemaTest, WhatIsMissingIsNoStatement) {
    EXPECT_EQ(dbSelectAtt(nullptr, "T", nullptr), nullptr);
    EXPECT_EQ(dbSelectAtt(conn_, nullptr, nullptr), nullptr);
    EXPECT_EQ(dbSelectAtt1(nullptr, "T"), nullptr);
    EXPECT_EQ(dbSelectAtt1(conn_, nullptr), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

TEST_F(SchemaTest, AFailedProbePrintsTheErrorAndFreesItsStatement) {
    const std::string sql = "select * from T where 1<>1";
    struct {
        const char *operation;
        unit::Lines lines;
    } cases[] = {
        {"alloc_stmt", {unit::kNotCreated, "ERROR dbSelectAtt: qdc_alloc_stmt failed", kPrinted}},
        {"prepare", {kCreated, "ERROR dbSelectAtt: prepare sql:" + sql + " failed", kPrinted, kFreed}},
        {"execute", {kCreated, "ERROR dbSelectAtt: exec sql:" + sql + " failed", kPrinted, kFreed}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.operation);
        Log().Forget();
        Client().Fail(c.operation);
        EXPECT_EQ(dbSelectAtt(conn_, "T", nullptr), nullptr);
        unit::Lines lines = Log().Lines();
        ASSERT_FALSE(lines.empty());
        lines.erase(lines.begin());
        EXPECT_EQ(lines, c.lines);
        EXPECT_EQ(Client().LiveStatements(), 0);
    }
}

// --- The catalogue ---

const std::string kCatalogue = "SELECT COLUMN_NAME,DATA_TYPE,DATA_LENGTH,COLUMN_ID  FROM USER_TAB_COLUMNS "
                               "WHERE TABLE_NAME = upper('t')";

TEST_F(SchemaTest, TheCatalogueIsAskedForATable) {
    void *stmt = dbSelectAtt1(conn_, "t");
    EXPECT_EQ(stmt, Client().Handle("s1"));
    EXPECT_THAT(Client().Calls(), ElementsAre("alloc_stmt(c1)", "prepare(s1, " + kCatalogue + ")", "execute(s1)"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbSelectAtt1: sql: " + kCatalogue, kCreated));
    dbFreeStmt(stmt);
}

TEST_F(SchemaTest, TheTablesNameIsTakenAsItStands) {
    void *stmt = dbSelectAtt1(conn_, "it's");
    EXPECT_THAT(Client().Calls()[1], testing::EndsWith("upper('it's'))"));
    dbFreeStmt(stmt);
}

TEST_F(SchemaTest, ANameThatDoesNotFitIsNotAskedFor) {
    size_t longest = 511 - (kCatalogue.size() - 1);
    dbFreeStmt(dbSelectAtt1(conn_, std::string(longest, 't').c_str()));
    EXPECT_EQ(Client().Count("execute"), 1);
    Client().ForgetCalls();
    Log().Forget();
    EXPECT_EQ(dbSelectAtt1(conn_, std::string(longest + 1, 't').c_str()), nullptr);
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbSelectAtt1: dbSelectAtt1 sprintf_s failed."));
}

TEST_F(SchemaTest, AFailedCatalogueQueryKeepsItsStatementAndPrintsNoError) {
    struct {
        const char *operation;
        const char *line;
        int kept;
    } cases[] = {
        {"alloc_stmt", "qdc_alloc_stmt failed", 0}, {"prepare", "prepare sql:", 1}, {"execute", "exec sql:", 1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.operation);
        Log().Forget();
        Client().Fail(c.operation);
        EXPECT_EQ(dbSelectAtt1(conn_, "t"), nullptr);
        std::string line = std::string("ERROR dbSelectAtt1: ") + c.line + (c.kept == 1 ? kCatalogue + " failed" : "");
        EXPECT_EQ(Log().Lines().back(), line);
        EXPECT_EQ(Client().LiveStatements(), c.kept);
        if (c.kept == 1) {
            dbFreeStmt(Client().Handle(c.operation == std::string("prepare") ? "s1" : "s2"));
        }
    }
    EXPECT_EQ(Client().Count("get_error"), 0);
}

// --- A column's type by name ---

TEST_F(SchemaTest, FindsTypesByNameInUpperCase) {
    Client().On("select", {.columns = unit::PersonColumns()});
    void *stmt = dbSelectAtt(conn_, "T", nullptr);
    Client().ForgetCalls();
    char name[] = "name";
    EXPECT_EQ(dbGetFieldTypebyName(stmt, name), 9u);
    EXPECT_STREQ(name, "NAME");
    EXPECT_THAT(Client().Calls(), ElementsAre("desc_column_by_name(s1, NAME)"));
    Log().Forget();
    char unknown[] = "nobody";
    EXPECT_EQ(dbGetFieldTypebyName(stmt, unknown), 0u);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbGetFieldTypebyName: qdc_desc_column_by_name :NOBODY failed"));
    EXPECT_EQ(dbGetFieldTypebyName(stmt, nullptr), 0u);
    EXPECT_EQ(dbGetFieldTypebyName(nullptr, name), 0u);
    dbFreeStmt(stmt);
}

} // namespace
