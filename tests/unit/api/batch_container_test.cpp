#include <csignal>

#include "ormeldb/batch.h"
#include "support/process.h"
#include "support/unit_test.h"

using testing::ElementsAre;

namespace {

struct MultiDeleter {
    void operator()(ORMEL_MULTI_OBJECT *multi) const { ORMEL_Multi_object_UnInit(multi); }
};
using Multi = std::unique_ptr<ORMEL_MULTI_OBJECT, MultiDeleter>;

using ContainerTest = unit::UnitTest;

TEST_F(ContainerTest, AContainerHasNamedAndEmptyObjects) {
    unit::FailingAllocation count(0);
    Multi multi(ORMEL_Multi_object_Init("PART", 3));
    ASSERT_NE(multi, nullptr);
    EXPECT_THAT(count.Sizes(), ElementsAre(32u + 3 * 1972));
    EXPECT_STREQ(multi->acTableName, "PART");
    EXPECT_EQ(multi->uiRecNum, 3u);
    ORMEL_OBJECT empty = {};
    ORMEL_ObjectNameSet(&empty, "PART");
    for (int r = 0; r < 3; ++r) {
        EXPECT_EQ(unit::BytesOf(multi->astObject[r]), unit::BytesOf(empty));
    }
}

TEST_F(ContainerTest, AContainerMayHaveNoObjects) {
    for (int32_t rows : {0, -1, -1000000, INT32_MIN}) {
        unit::FailingAllocation count(0);
        Multi multi(ORMEL_Multi_object_Init("PART", rows));
        ASSERT_NE(multi, nullptr) << rows;
        EXPECT_THAT(count.Sizes(), ElementsAre(32u));
        EXPECT_STREQ(multi->acTableName, "PART");
        EXPECT_EQ(multi->uiRecNum, 0u);
    }
}

TEST_F(ContainerTest, AContainerThatCannotBeHad) {
    EXPECT_EQ(ORMEL_Multi_object_Init(nullptr, 3), nullptr);
    unit::FailingAllocation fail(1);
    EXPECT_EQ(ORMEL_Multi_object_Init("PART", 3), nullptr);
}

// One object more than 32 bits can count.
TEST_F(ContainerTest, AContainerBeyond32BitsEndsTheProcess) {
    EXPECT_EQ(ORMEL_Multi_object_Init("PART", 1088987), nullptr) << "can be counted and not be had";
    for (int32_t rows : {1088988, 1089000, INT32_MAX}) {
        EXPECT_EQ(unit::RunInChild([&] { ORMEL_Multi_object_Init("PART", rows); }).status, -SIGABRT) << rows;
    }
}

TEST_F(ContainerTest, AContainerIsFreedWithItsValues) {
    size_t before = unit::LiveBlocks();
    ORMEL_MULTI_OBJECT *multi = ORMEL_Multi_object_Init("PART", 5);
    for (uint32_t r = 0; r < multi->uiRecNum; ++r) {
        ORMEL_ObjectInt32Set(&multi->astObject[r], "ID", 1);
        ORMEL_ObjectStrSet(&multi->astObject[r], "NAME", "cog");
        ORMEL_ObjectNullSet(&multi->astObject[r], "DRAWING");
    }
    ORMEL_ObjectSelectFieldSet(&multi->astObject[4], "ID");
    EXPECT_EQ(unit::LiveBlocks(), before + 1 + 5 * 2 + 1);
    ORMEL_Multi_object_UnInit(multi);
    EXPECT_EQ(unit::LiveBlocks(), before);
    ORMEL_Multi_object_UnInit(nullptr);
}

} // namespace
