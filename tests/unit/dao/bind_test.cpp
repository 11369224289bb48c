#include "dao_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using unit::Client;
using unit::Log;

namespace {

struct Slot {
    uint32_t type;
    std::string bytes;
};

const Slot kInt = {1, std::string("\x07\0\0\0", 4)};
const Slot kText = {9, "abc"};
const Slot kClob = {13, "long text"};
const Slot kBlob = {14, std::string("\0\1", 2)};

class BindTest : public unit::DaoTest {
protected:
    void SetUp() override {
        DaoTest::SetUp();
        Execute({});
    }

    // Makes the list; slot i is named "n<i>".
    void List(const std::vector<Slot> &fields, const std::vector<Slot> &conditions) {
        slots_ = fields;
        slots_.insert(slots_.end(), conditions.begin(), conditions.end());
        para_ = {};
        para_.iFieldNum = static_cast<int32_t>(fields.size());
        para_.iCondNum = static_cast<int32_t>(conditions.size());
        for (size_t i = 0; i < slots_.size(); ++i) {
            names_[i] = "n" + std::to_string(i);
            para_.name[i] = names_[i].c_str();
            para_.value[i] = slots_[i].bytes.data();
            para_.length[i] = static_cast<uint32_t>(slots_[i].bytes.size());
            para_.type[i] = slots_[i].type;
        }
    }

    // Binds and frees the large objects' slots; whether there were any.
    uint32_t Bind(int32_t withFields, int32_t withConds, int32_t start, bool *lobs = nullptr) {
        void *block = &para_;
        uint32_t bound = dbBindPara(stmt_, &para_, withFields, withConds, start, &block);
        if (lobs != nullptr) {
            *lobs = block != nullptr;
        }
        EXPECT_NE(block, &para_) << "the out pointer is not written";
        std::free(block == &para_ ? nullptr : block);
        return bound;
    }

    ORMEL_PARA para_{};

private:
    std::vector<Slot> slots_;
    std::string names_[ORMEL_MAX_ITEMS];
};

// --- Slots of large objects ---

TEST_F(BindTest, CountsLargeObjectsAmongFieldsAndConditions) {
    List({kClob, kInt, kBlob}, {kClob, kText});
    EXPECT_EQ(dbLobCount(&para_, 0, 0), 0u);
    EXPECT_EQ(dbLobCount(&para_, 1, 0), 2u);
    EXPECT_EQ(dbLobCount(&para_, 0, 1), 1u);
    EXPECT_EQ(dbLobCount(&para_, 1, 1), 3u);
    EXPECT_EQ(dbLobCount(nullptr, 1, 1), 0u);
}

TEST_F(BindTest, SlotsAreZeroed) {
    unit::FailingAllocation count(0);
    std::unique_ptr<char, unit::FreeDeleter> block(static_cast<char *>(dbMallocLob(3)));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string(block.get(), 48), std::string(48, '\0'));
    EXPECT_THAT(count.Sizes(), ElementsAre(48u));
}

TEST_F(BindTest, WithoutMemoryThereAreNoSlots) {
    unit::FailingAllocation fail(1);
    EXPECT_EQ(dbMallocLob(1), nullptr);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbMallocLob: malloc lobData failed"));
}

TEST_F(BindTest, ACountOfSlotsIsNotCutTo32Bits) {
    unit::FailingAllocation count(0);
    EXPECT_EQ(dbMallocLob(0x10000001), nullptr);
    EXPECT_THAT(count.Sizes(), ElementsAre(size_t{0x10000001} * 16));
}

// --- Binding ---

TEST_F(BindTest, BindsValuesByPosition) {
    List({kInt, kText}, {});
    bool lobs = true;
    EXPECT_EQ(Bind(1, 0, 0, &lobs), 1u);
    EXPECT_FALSE(lobs);
    EXPECT_THAT(Client().Calls(), ElementsAre("bind_by_pos(s1, 0, 1, '\\07\\00\\00\\00', 4, null)",
                                              "bind_by_pos(s1, 1, 9, 'abc', 3, null)"));
    EXPECT_EQ(Client().Bounds()[1].address, para_.value[1]) << "values are bound where they lie";
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbBindPara: qdc_bind_by_pos :0, type:1, len:4 ",
                                           "DEBUG dbBindPara: qdc_bind_by_pos :1, type:9, len:3 "));
}

TEST_F(BindTest, BindsTheSlotsThatAreAskedFor) {
    struct {
        int32_t withFields, withConds, start;
        std::vector<uint32_t> positions;
    } cases[] = {{1, 0, 0, {0, 1}}, {0, 1, 2, {2, 3, 4}}, {0, 1, 0, {0, 1, 2, 3, 4}},
                 {1, 1, 0, {0, 1}}, {1, 0, 1, {1}},       {1, 0, 2, {}},
                 {0, 1, 5, {}},     {0, 1, 9, {}},        {0, 0, 0, {}},
                 {7, 0, 0, {0, 1}}};
    List({kInt, kInt}, {kInt, kInt, kInt});
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.withFields << c.withConds << c.start);
        Client().ForgetCalls();
        EXPECT_EQ(Bind(c.withFields, c.withConds, c.start), 1u);
        std::vector<uint32_t> positions;
        for (const unit::Bound &bound : Client().Bounds()) {
            positions.push_back(bound.position);
        }
        EXPECT_EQ(positions, c.positions);
    }
}

TEST_F(BindTest, LargeObjectsAreWrittenIntoSlotsOfTheirOwn) {
    List({kClob, kInt, kBlob}, {});
    bool lobs = false;
    EXPECT_EQ(Bind(1, 0, 0, &lobs), 1u);
    EXPECT_TRUE(lobs);
    EXPECT_THAT(Client().Calls(),
                ElementsAre("bind_by_pos(s1, 0, 13, slot 0, 16, null)", "write_clob(s1, 0, 'long text')",
                            "bind_by_pos(s1, 1, 1, '\\07\\00\\00\\00', 4, null)",
                            "bind_by_pos(s1, 2, 14, slot 1, 16, null)", "write_blob(s1, 2, '\\00\\01')"));
    EXPECT_THAT(Log().Lines(), ElementsAre("DEBUG dbBindPara: qdc_bind_by_pos :1, type:1, len:4 "));
}

TEST_F(BindTest, LargeConditionsFollowTheFields) {
    List({kInt}, {kInt, kClob, kBlob});
    EXPECT_EQ(Bind(0, 1, 1), 1u);
    EXPECT_THAT(Client().Calls(),
                ElementsAre("bind_by_pos(s1, 1, 1, '\\07\\00\\00\\00', 4, null)",
                            "bind_by_pos(s1, 2, 13, slot 0, 16, null)", "write_clob(s1, 2, 'long text')",
                            "bind_by_pos(s1, 3, 14, slot 1, 16, null)", "write_blob(s1, 3, '\\00\\01')"));
}

TEST_F(BindTest, AnEmptyLargeObjectIsWritten) {
    List({{13, ""}, {14, ""}}, {});
    EXPECT_EQ(Bind(1, 0, 0), 1u);
    EXPECT_EQ(Client().Calls()[1], "write_clob(s1, 0, '')");
    EXPECT_EQ(Client().Calls()[3], "write_blob(s1, 1, '')");
}

TEST_F(BindTest, ALargeObjectWithoutAValueIsBoundAndNotWritten) {
    List({{13, ""}, {14, ""}}, {});
    para_.value[0] = para_.value[1] = nullptr;
    EXPECT_EQ(Bind(1, 0, 0), 1u);
    EXPECT_THAT(Client().Calls(),
                ElementsAre("bind_by_pos(s1, 0, 13, slot 0, 16, null)", "bind_by_pos(s1, 1, 14, slot 1, 16, null)"));
}

// The conditions are counted, but binding from slot 0 on meets the fields' large objects as well.
TEST_F(BindTest, EverySlotThatIsBoundHasRoom) {
    List({kClob, kBlob, kClob}, {kClob});
    EXPECT_EQ(Bind(0, 1, 0), 1u);
    EXPECT_EQ(Client().Calls().back(), "write_clob(s1, 3, 'long text')");
    EXPECT_EQ(Client().Calls()[6], "bind_by_pos(s1, 3, 13, slot 3, 16, null)");
    List({kClob}, {kInt});
    EXPECT_EQ(Bind(0, 1, 0), 1u);
}

// --- Failures ---

TEST_F(BindTest, TheFirstFailureEndsTheBinding) {
    struct {
        Slot slot;
        const char *operation;
        const char *line;
    } cases[] = {{kInt, "bind_by_pos", "qdc_bind_by_pos :0 n0 failed "},
                 {kClob, "bind_by_pos", "qdc_bind QDC_TYPE_CLOB failed "},
                 {kClob, "write_clob", "qdc_write_clob clob :n0 failed "},
                 {kBlob, "bind_by_pos", "qdc_bind QDC_TYPE_BLOB failed "},
                 {kBlob, "write_blob", "qdc_write_clob clob :n0 failed "}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.line);
        Log().Forget();
        Client().ForgetCalls();
        List({c.slot, kText}, {});
        Client().Fail(c.operation);
        EXPECT_EQ(Bind(1, 0, 0), 0u);
        EXPECT_THAT(Log().Lines(), ElementsAre(std::string("ERROR dbBindPara: ") + c.line));
        EXPECT_EQ(Client().Calls().back().rfind(c.operation, 0), 0u) << "the text was bound after the failure";
    }
}

TEST_F(BindTest, AShortWriteIsOnlyLogged) {
    List({kClob, kInt}, {});
    Client().shortWrite = 2;
    EXPECT_EQ(Bind(1, 0, 0), 1u);
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbBindPara: qdc_write_clob failed writeSize=7, lengths=9 ",
                                           "DEBUG dbBindPara: qdc_bind_by_pos :1, type:1, len:4 "));
}

TEST_F(BindTest, WithoutMemoryForSlotsNothingIsBound) {
    List({kInt, kClob}, {});
    void *block = &para_;
    unit::FailingAllocation fail(1);
    EXPECT_EQ(dbBindPara(stmt_, &para_, 1, 0, 0, &block), 0u);
    EXPECT_EQ(block, &para_) << "the out pointer is not touched";
    EXPECT_THAT(Client().Calls(), IsEmpty());
    EXPECT_THAT(Log().Lines(), ElementsAre("ERROR dbMallocLob: malloc lobData failed"));
}

TEST_F(BindTest, WhatDoesNotFitIsNotBound) {
    void *block = nullptr;
    List({kInt}, {kInt});
    EXPECT_EQ(dbBindPara(nullptr, &para_, 1, 0, 0, &block), 0u);
    EXPECT_EQ(dbBindPara(stmt_, nullptr, 1, 0, 0, &block), 0u);
    EXPECT_EQ(dbBindPara(stmt_, &para_, 1, 0, 0, nullptr), 0u);
    EXPECT_EQ(dbBindPara(stmt_, &para_, 1, 0, -1, &block), 0u);
    for (auto [fields, conditions] : {std::pair{-1, 0}, {0, -1}, {33, 0}, {0, 33}, {20, 13}, {INT32_MAX, 1}}) {
        para_.iFieldNum = fields;
        para_.iCondNum = conditions;
        EXPECT_EQ(dbBindPara(stmt_, &para_, 0, 1, 0, &block), 0u) << fields << ' ' << conditions;
        EXPECT_EQ(dbBindPara(stmt_, &para_, 1, 0, 0, &block), 0u) << fields << ' ' << conditions;
        EXPECT_EQ(dbLobCount(&para_, 1, 1), 0u);
    }
    EXPECT_THAT(Client().Calls(), IsEmpty());
}

} // namespace
