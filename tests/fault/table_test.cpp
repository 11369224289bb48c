// The table of operations against the list of exported names, and against itself.
#include <fstream>

#include <gmock/gmock.h>

#include "operation.h"

namespace {

fault::Names Listed() {
    std::ifstream file(FAULT_NAMES);
    fault::Names names;
    for (std::string line; std::getline(file, line);) {
        names.insert(line);
    }
    return names;
}

fault::Names Missing(const fault::Names &from, const fault::Names &names) {
    fault::Names missing;
    for (const std::string &name : names) {
        if (from.count(name) == 0) {
            missing.insert(name);
        }
    }
    return missing;
}

TEST(TableTest, HasWhatIsExportedAndNothingElse) {
    fault::Names known = fault::ExportedData();
    for (const fault::Operation &op : fault::AllOperations()) {
        known.insert(op.name);
    }
    const fault::Names exported = Listed();
    EXPECT_THAT(exported, testing::Contains("ORMEL_InsertRec")) << FAULT_NAMES;
    EXPECT_THAT(Missing(known, exported), testing::IsEmpty()) << "exported, but not in the table";
    EXPECT_THAT(Missing(exported, known), testing::IsEmpty()) << "in the table, but not exported";
}

TEST(TableTest, HasEachFormOnce) {
    fault::Names forms;
    for (const fault::Operation &op : fault::AllOperations()) {
        EXPECT_TRUE(forms.insert(op.name + " " + op.form).second) << op.name << " " << op.form;
    }
}

// What cannot fail says why, and only that.
TEST(TableTest, SaysWhyAnOperationCannotFail) {
    for (const fault::Operation &op : fault::AllOperations()) {
        const bool fails = !op.client.empty() || !op.memory.empty() || op.exception == fault::Exception::exit;
        EXPECT_NE(fails, std::string(op.safe) != "") << op.name;
        EXPECT_TRUE(op.run) << op.name;
    }
}

} // namespace
