// The red-black tree against std::map, and its invariants after every change.
#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "ormeldb/tree.h"

#include "seed.h"

namespace {

constexpr int kRed = 0;
constexpr int kBlack = 1;

struct Item {
    ORMEL_AVL_NODE node; // first, so that a node is its item
    int key;
};

int keyOf(const ORMEL_AVL_NODE *node) {
    return reinterpret_cast<const Item *>(node)->key;
}

const ORMEL_AVL_NODE *parentOf(const ORMEL_AVL_NODE *node) {
    return reinterpret_cast<const ORMEL_AVL_NODE *>(node->ulParentColor & ~uintptr_t{3});
}

int colorOf(const ORMEL_AVL_NODE *node) {
    return node == nullptr ? kBlack : static_cast<int>(node->ulParentColor & 1);
}

// Black nodes on every way down from a node; -1 where the ways differ or a rule is broken.
int blackHeight(const ORMEL_AVL_NODE *node, const ORMEL_AVL_NODE *parent) {
    if (node == nullptr) {
        return 0;
    }
    const bool redBelowRed = colorOf(node) == kRed && colorOf(parent) == kRed && parent != nullptr;
    const int left = blackHeight(node->pstLeft, node);
    const int right = blackHeight(node->pstRight, node);
    if (parentOf(node) != parent || (node->ulParentColor & 2) != 0 || redBelowRed || left != right || left < 0) {
        return -1;
    }
    return left + colorOf(node);
}

// Items by key, once in a tree and once in a map that owns them.
class Twins {
public:
    void insert(int key) {
        if (items.count(key) != 0) {
            return;
        }
        ORMEL_AVL_NODE *parent = nullptr;
        ORMEL_AVL_NODE **link = &root;
        while (*link != nullptr) {
            parent = *link;
            link = key < keyOf(parent) ? &parent->pstLeft : &parent->pstRight;
        }
        Item *item = own(key);
        rb_link_node(&item->node, parent, link);
        rb_insert_color(&item->node, &root);
    }

    void erase(int key) {
        if (const auto found = items.find(key); found != items.end()) {
            rb_erase(&found->second->node, &root);
            items.erase(found);
        }
    }

    void replace(int key) {
        if (const auto found = items.find(key); found != items.end()) {
            const std::unique_ptr<Item> old = std::move(found->second);
            rb_replace_node(&old->node, &own(key)->node, &root);
        }
    }

    void expectSound() const {
        ASSERT_EQ(colorOf(root), kBlack);
        ASSERT_GE(blackHeight(root, nullptr), 0);
        const ORMEL_AVL_NODE *node = rb_first(&root);
        for (const auto &[key, item] : items) {
            ASSERT_EQ(node, &item->node) << "key " << key;
            node = rb_next(node);
        }
        ASSERT_EQ(node, nullptr);
        node = rb_last(&root);
        for (auto item = items.rbegin(); item != items.rend(); ++item) {
            ASSERT_EQ(node, &item->second->node) << "key " << item->first;
            node = rb_prev(node);
        }
        ASSERT_EQ(node, nullptr);
    }

    ORMEL_AVL_NODE *root = nullptr;
    std::map<int, std::unique_ptr<Item>> items;

private:
    Item *own(int key) {
        // Links of a node that is not in a tree may hold anything.
        return (items[key] = std::make_unique<Item>(Item{{~uintptr_t{0}, nullptr, nullptr}, key})).get();
    }
};

void runRandomly(int keys, int steps, int stepsBetweenChecks) {
    std::mt19937_64 random(seedOfRun());
    std::uniform_int_distribution<int> anyKey(0, keys - 1);
    std::uniform_int_distribution<int> anyAction(0, 9);
    Twins twins;
    // The tree grows and shrinks in turn, so that it is also seen nearly full and nearly empty.
    for (int step = 0; step < steps; step++) {
        const bool growing = step / (2 * keys) % 2 == 0;
        const int action = anyAction(random);
        if (action == 0) {
            twins.replace(anyKey(random));
        } else if ((action < 8) == growing) {
            twins.insert(anyKey(random));
        } else {
            twins.erase(anyKey(random));
        }
        if (step % stepsBetweenChecks == 0) {
            ASSERT_NO_FATAL_FAILURE(twins.expectSound()) << "step " << step;
        }
    }
    twins.expectSound();
}

TEST(RbTree, AgreesWithAMapOverFewKeysAfterEveryStep) {
    runRandomly(3, 2000, 1);
    runRandomly(48, 20000, 1);
}

TEST(RbTree, AgreesWithAMapOverManyKeys) {
    runRandomly(20000, 200000, 5000);
}

TEST(RbTree, StaysSoundWhenKeysComeInOrder) {
    Twins ascending;
    Twins descending;
    for (int key = 1; key <= 1000; key++) {
        ascending.insert(key);
        descending.insert(-key);
        ASSERT_NO_FATAL_FAILURE(ascending.expectSound());
        ASSERT_NO_FATAL_FAILURE(descending.expectSound());
    }
    // 1000 nodes have at least 5 black ones on each way, since a way has at most twice as many nodes as another.
    EXPECT_GE(blackHeight(ascending.root, nullptr), 5);
    for (int key = 1; key <= 1000; key++) {
        ascending.erase(key);
        descending.erase(-1001 + key);
        ASSERT_NO_FATAL_FAILURE(ascending.expectSound());
        ASSERT_NO_FATAL_FAILURE(descending.expectSound());
    }
    EXPECT_EQ(ascending.root, nullptr);
    EXPECT_EQ(descending.root, nullptr);
}

TEST(RbTree, ErasingTheRootOfTwoLeavesABlackRoot) {
    for (const int other : {1, 3}) {
        Twins twins;
        twins.insert(2);
        twins.insert(other);
        ASSERT_EQ(keyOf(twins.root), 2);
        twins.erase(2);
        ASSERT_NE(twins.root, nullptr);
        EXPECT_EQ(keyOf(twins.root), other);
        twins.expectSound();
    }
}

// Every shape of up to 9 nodes that insertion leads to, and every single erasure from it.
TEST(RbTree, ErasesAnyNodeOfAnySmallTree) {
    for (int count = 1; count <= 9; count++) {
        for (unsigned first = 0; first < 200; first++) {
            std::mt19937 random(first);
            std::vector<int> keys;
            for (int key = 0; key < count; key++) {
                keys.push_back(key);
            }
            std::shuffle(keys.begin(), keys.end(), random);
            for (int victim = 0; victim < count; victim++) {
                Twins twins;
                for (const int key : keys) {
                    twins.insert(key);
                }
                twins.erase(victim);
                ASSERT_NO_FATAL_FAILURE(twins.expectSound());
            }
        }
    }
}

TEST(RbTree, AnEmptyTreeHasNoEnds) {
    ORMEL_AVL_NODE *root = nullptr;
    EXPECT_EQ(rb_first(&root), nullptr);
    EXPECT_EQ(rb_last(&root), nullptr);
}

TEST(RbTree, AnUnlinkedNodeHasNoNeighbours) {
    ORMEL_AVL_NODE left{};
    ORMEL_AVL_NODE right{};
    ORMEL_AVL_NODE node{kBlack, &right, &left};
    rb_set_parent(&node, &node);
    EXPECT_EQ(rb_next(&node), nullptr);
    EXPECT_EQ(rb_prev(&node), nullptr);
}

TEST(RbTree, LinksARedNodeWithoutChildren) {
    ORMEL_AVL_NODE parent{};
    ORMEL_AVL_NODE node{kBlack, &parent, &parent};
    rb_link_node(&node, &parent, &parent.pstRight);
    EXPECT_EQ(parent.pstRight, &node);
    EXPECT_EQ(parentOf(&node), &parent);
    EXPECT_EQ(colorOf(&node), kRed);
    EXPECT_EQ(node.pstLeft, nullptr);
    EXPECT_EQ(node.pstRight, nullptr);
}

TEST(RbTree, ParentAndColorDoNotDisturbEachOther) {
    ORMEL_AVL_NODE first{};
    ORMEL_AVL_NODE second{};
    ORMEL_AVL_NODE node{};
    rb_set_parent(&node, &first);
    EXPECT_EQ(colorOf(&node), kRed);
    rb_set_color(&node, kBlack);
    EXPECT_EQ(parentOf(&node), &first);
    rb_set_parent(&node, &second);
    EXPECT_EQ(parentOf(&node), &second);
    EXPECT_EQ(colorOf(&node), kBlack);
    rb_set_parent(&node, nullptr);
    EXPECT_EQ(node.ulParentColor, static_cast<uintptr_t>(kBlack));
    rb_set_color(&node, kRed);
    EXPECT_EQ(node.ulParentColor, 0U);
    node.ulParentColor = 3;
    rb_set_parent(&node, &first);
    EXPECT_EQ(node.ulParentColor, reinterpret_cast<uintptr_t>(&first) | 3);
}

} // namespace
