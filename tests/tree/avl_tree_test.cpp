// The ordered set: comparison, offsets, duplicates, walks, release, and what missing arguments do.
#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "ormeldb/base.h"
#include "ormeldb/platform/opbbase.h"
#include "ormeldb/tree.h"

namespace {

struct Element {
    int padding;
    int key;
    ORMEL_AVL_NODE node;
};

std::vector<int> g_released;
int g_comparisons;
int g_assertions;

int compareKeys(const void *key, const void *elementKey) {
    g_comparisons++;
    const int a = *static_cast<const int *>(key);
    const int b = *static_cast<const int *>(elementKey);
    return (a > b) - (a < b);
}

void noteRelease(void *element) {
    g_released.push_back(static_cast<Element *>(element)->key);
}

} // namespace

// Stands before the platform's own assertion.
void DQA_Assert(const char *file, int32_t line, int32_t value) {
    EXPECT_STREQ(file, "avl_tree_api");
    EXPECT_GT(line, 0);
    EXPECT_EQ(value, 0);
    g_assertions++;
}

namespace {

class AvlTree : public testing::Test {
protected:
    AvlTree() {
        g_released.clear();
        g_comparisons = 0;
        g_assertions = 0;
    }

    // The tests' elements stay where they are, because their nodes are linked.
    Element *element(int key) {
        elements.push_back(std::make_unique<Element>(Element{0, key, {0, nullptr, nullptr}}));
        return elements.back().get();
    }

    void insertAll(std::initializer_list<int> keys) {
        for (const int key : keys) {
            ASSERT_EQ(ormel_avl_insert(&tree, &element(key)->node), ORMEL_OK);
        }
    }

    const Element *search(int key) { return static_cast<const Element *>(ormel_avl_serach(&tree, &key)); }

    std::vector<int> keysForwards() {
        std::vector<int> keys;
        for (auto *e = static_cast<Element *>(ormel_avl_get_first(&tree)); e != nullptr;
             e = static_cast<Element *>(ormel_avl_get_next(&tree, &e->node))) {
            keys.push_back(e->key);
        }
        return keys;
    }

    std::vector<int> keysBackwards() {
        std::vector<int> keys;
        for (auto *e = static_cast<Element *>(ormel_avl_get_last(&tree)); e != nullptr;
             e = static_cast<Element *>(ormel_avl_get_prev(&tree, &e->node))) {
            keys.push_back(e->key);
        }
        return keys;
    }

    ORMEL_AVL_TREE tree{nullptr, compareKeys, noteRelease, offsetof(Element, key), offsetof(Element, node)};
    std::vector<std::unique_ptr<Element>> elements;
};

TEST_F(AvlTree, WalksInKeyOrderBothWays) {
    insertAll({5, 1, 4, 2, 3});
    EXPECT_EQ(keysForwards(), (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(keysBackwards(), (std::vector<int>{5, 4, 3, 2, 1}));
    EXPECT_EQ(g_assertions, 0);
}

TEST_F(AvlTree, WalksAThousandAscendingKeysInOrder) {
    std::vector<int> keys;
    for (int key = 1; key <= 1000; key++) {
        insertAll({key});
        keys.push_back(key);
    }
    EXPECT_EQ(keysForwards(), keys);
}

TEST_F(AvlTree, AnEmptyTreeHasNoElements) {
    EXPECT_EQ(ormel_avl_get_first(&tree), nullptr);
    EXPECT_EQ(ormel_avl_get_last(&tree), nullptr);
    EXPECT_EQ(search(1), nullptr);
    EXPECT_EQ(g_assertions, 0);
}

TEST_F(AvlTree, FindsTheElementOfAKey) {
    insertAll({10, 20, 30});
    ASSERT_NE(search(20), nullptr);
    EXPECT_EQ(search(20), elements[1].get());
    EXPECT_EQ(search(25), nullptr);
}

TEST_F(AvlTree, ComparesOncePerVisitedNode) {
    for (int key = 0; key < 1023; key++) {
        insertAll({key});
    }
    for (int key = 0; key < 1023; key++) {
        g_comparisons = 0;
        ASSERT_NE(search(key), nullptr);
        ASSERT_LE(g_comparisons, 20); // twice the logarithm of the size
    }
}

TEST_F(AvlTree, RefusesAnEqualKey) {
    insertAll({1, 2, 3});
    Element *twin = element(2);
    EXPECT_EQ(ormel_avl_insert(&tree, &twin->node), ORMEL_INVALID);
    EXPECT_EQ(search(2), elements[1].get());
    EXPECT_EQ(keysForwards().size(), 3U);
}

TEST_F(AvlTree, InsertOrFindAnswersTheResidentElement) {
    insertAll({1, 2, 3});
    Element *twin = element(2);
    EXPECT_EQ(ormel_avl_insert_or_find(&tree, &twin->node), elements[1].get());
    EXPECT_EQ(keysForwards(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(ormel_avl_insert_or_find(&tree, &element(4)->node), nullptr);
    EXPECT_EQ(keysForwards(), (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(AvlTree, DeletesANode) {
    insertAll({1, 2, 3});
    ormel_avl_delete(&tree, &elements[1]->node);
    EXPECT_EQ(search(2), nullptr);
    EXPECT_EQ(keysForwards(), (std::vector<int>{1, 3}));
    ormel_avl_delete(&tree, &elements[0]->node);
    ormel_avl_delete(&tree, &elements[2]->node);
    EXPECT_EQ(tree.pstRoot, nullptr);
    EXPECT_TRUE(g_released.empty());
}

TEST_F(AvlTree, AnInitialisedNodeIsItsOwnParentAndKeepsItsColor) {
    ORMEL_AVL_NODE node{1, nullptr, nullptr};
    ormel_avl_node_init(&node);
    EXPECT_EQ(node.ulParentColor, reinterpret_cast<uintptr_t>(&node) | 1);
    EXPECT_EQ(ormel_avl_get_next(&tree, &node), nullptr);
    EXPECT_EQ(ormel_avl_get_prev(&tree, &node), nullptr);
}

TEST_F(AvlTree, ReleasesChildrenBeforeTheirParent) {
    insertAll({4, 2, 6, 1, 3, 5, 7});
    const ORMEL_AVL_NODE *root = tree.pstRoot;
    ormel_avl_tree_destroy(&tree);
    EXPECT_EQ(g_released, (std::vector<int>{1, 3, 2, 5, 7, 6, 4}));
    EXPECT_EQ(tree.pstRoot, root);
    EXPECT_EQ(g_assertions, 0);
}

TEST_F(AvlTree, ReleasesNothingOfAnEmptyTree) {
    ormel_avl_tree_destroy(&tree);
    EXPECT_TRUE(g_released.empty());
    EXPECT_EQ(g_assertions, 0);
}

TEST_F(AvlTree, ReportsANodeWhoseParentDoesNotKnowIt) {
    insertAll({2, 1, 3});
    rb_set_parent(&elements[1]->node, &elements[2]->node); // 1 takes 3 for its parent
    ormel_avl_tree_destroy(&tree);
    EXPECT_EQ(g_assertions, 2); // neither link of the parent matches, and the true parent's link stays
    EXPECT_EQ(g_released, (std::vector<int>{1, 3, 2}));
}

TEST_F(AvlTree, WithoutAReleaseOnlyTakesElementsApart) {
    insertAll({2, 1, 3});
    tree.pfnFree = nullptr;
    ormel_avl_tree_destroy(&tree);
    EXPECT_EQ(elements[0]->node.pstLeft, nullptr);
    EXPECT_EQ(elements[0]->node.pstRight, nullptr);
}

TEST_F(AvlTree, WithoutAComparisonTakesAndFindsNothing) {
    tree.pfnCmp = nullptr;
    EXPECT_EQ(ormel_avl_insert(&tree, &element(1)->node), ORMEL_INVALID);
    EXPECT_EQ(ormel_avl_insert_or_find(&tree, &element(1)->node), nullptr);
    EXPECT_EQ(search(1), nullptr);
    EXPECT_EQ(tree.pstRoot, nullptr);
}

TEST_F(AvlTree, ReportsEachMissingArgument) {
    Element *one = element(1);
    const auto assertionsOf = [](auto call) {
        g_assertions = 0;
        call();
        return g_assertions;
    };
    EXPECT_EQ(assertionsOf([] { ormel_avl_node_init(nullptr); }), 1);
    EXPECT_EQ(assertionsOf([] { EXPECT_EQ(ormel_avl_insert(nullptr, nullptr), ORMEL_INVALID); }), 2);
    EXPECT_EQ(assertionsOf([&] { EXPECT_EQ(ormel_avl_insert(&tree, nullptr), ORMEL_INVALID); }), 1);
    EXPECT_EQ(assertionsOf([&] { EXPECT_EQ(ormel_avl_insert(nullptr, &one->node), ORMEL_INVALID); }), 1);
    EXPECT_EQ(assertionsOf([] { EXPECT_EQ(ormel_avl_insert_or_find(nullptr, nullptr), nullptr); }), 2);
    EXPECT_EQ(assertionsOf([&] { EXPECT_EQ(ormel_avl_insert_or_find(&tree, nullptr), nullptr); }), 1);
    EXPECT_EQ(assertionsOf([] { ormel_avl_delete(nullptr, nullptr); }), 2);
    EXPECT_EQ(assertionsOf([&] { ormel_avl_delete(&tree, nullptr); }), 1);
    EXPECT_EQ(assertionsOf([] { EXPECT_EQ(ormel_avl_serach(nullptr, nullptr), nullptr); }), 2);
    EXPECT_EQ(assertionsOf([&] { EXPECT_EQ(ormel_avl_serach(&tree, nullptr), nullptr); }), 1);
    EXPECT_EQ(assertionsOf([] { EXPECT_EQ(ormel_avl_get_first(nullptr), nullptr); }), 1);
    EXPECT_EQ(assertionsOf([] { EXPECT_EQ(ormel_avl_get_last(nullptr), nullptr); }), 1);
    EXPECT_EQ(assertionsOf([] { EXPECT_EQ(ormel_avl_get_next(nullptr, nullptr), nullptr); }), 2);
    EXPECT_EQ(assertionsOf([&] { EXPECT_EQ(ormel_avl_get_next(&tree, nullptr), nullptr); }), 1);
    EXPECT_EQ(assertionsOf([&] { EXPECT_EQ(ormel_avl_get_prev(nullptr, &one->node), nullptr); }), 1);
    EXPECT_EQ(assertionsOf([] { ormel_avl_tree_destroy(nullptr); }), 1);
}

} // namespace
