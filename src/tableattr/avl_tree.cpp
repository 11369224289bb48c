// The ordered set over the red-black tree: comparison, and the way between nodes, elements and keys.
#include <initializer_list>

#include "ormeldb/platform/opbbase.h"
#include "tableattr/rb_node.h"

namespace ormel::tree {
namespace {

void reportAssertion(int line = __builtin_LINE()) {
    DQA_Assert("avl_tree_api", line, 0);
}

// Reports each NULL of a call in the call's line; whether there is none.
bool allGiven(std::initializer_list<const void *> arguments, int line = __builtin_LINE()) {
    bool all = true;
    for (const void *argument : arguments) {
        if (argument == nullptr) {
            reportAssertion(line);
            all = false;
        }
    }
    return all;
}

char *elementOf(const ORMEL_AVL_TREE &tree, Node *node) {
    return node == nullptr ? nullptr : reinterpret_cast<char *>(node) - tree.usNodeOffset;
}

const void *keyOf(const ORMEL_AVL_TREE &tree, Node *node) {
    return elementOf(tree, node) + tree.usKeyOffset;
}

// Where the node with a key hangs; where there is none, *link is NULL and the place is the one it would have.
struct Place {
    Node *parent;
    Node **link;
};

Place find(const ORMEL_AVL_TREE &tree, Node **root, const void *key) {
    Place place{nullptr, root};
    while (Node *node = *place.link) {
        const int order = tree.pfnCmp(key, keyOf(tree, node));
        if (order == 0)
            break;
        place = {node, order < 0 ? &node->pstLeft : &node->pstRight};
    }
    return place;
}

// Links a node and returns NULL, or leaves it out and returns the node with an equal key.
Node *insertOrFind(ORMEL_AVL_TREE *tree, Node *node) {
    const Place place = find(*tree, &tree->pstRoot, keyOf(*tree, node));
    if (*place.link != nullptr)
        return *place.link;
    rb_link_node(node, place.parent, place.link);
    rb_insert_color(node, &tree->pstRoot);
    return nullptr;
}

// Clears the parent's link to a node; the root has none.
void detach(const Node *node) {
    Node *parent = parentOf(node);
    if (parent == nullptr)
        return;
    if (parent->pstLeft == node)
        parent->pstLeft = nullptr;
    else if (parent->pstRight == node)
        parent->pstRight = nullptr;
    else
        reportAssertion();
}

// The recursion is as deep as the tree is high: about twice the logarithm of its size.
void release(const ORMEL_AVL_TREE &tree, Node *node) {
    for (Node *const *link : {&node->pstLeft, &node->pstRight}) {
        if (*link != nullptr) {
            release(tree, *link);
            if (*link != nullptr)
                reportAssertion();
        }
    }
    detach(node);
    if (tree.pfnFree != nullptr)
        tree.pfnFree(elementOf(tree, node));
}

} // namespace
} // namespace ormel::tree

using namespace ormel::tree;

void ormel_avl_node_init(ORMEL_AVL_NODE *pstNode) {
    if (allGiven({pstNode}))
        rb_set_parent(pstNode, pstNode);
}

uint32_t ormel_avl_insert(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode) {
    if (!allGiven({pstTree, pstNode}) || pstTree->pfnCmp == nullptr)
        return ORMEL_INVALID;
    return insertOrFind(pstTree, pstNode) == nullptr ? ORMEL_OK : ORMEL_INVALID;
}

void *ormel_avl_insert_or_find(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode) {
    if (!allGiven({pstTree, pstNode}) || pstTree->pfnCmp == nullptr)
        return nullptr;
    return elementOf(*pstTree, insertOrFind(pstTree, pstNode));
}

void ormel_avl_delete(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode) {
    if (allGiven({pstTree, pstNode}))
        rb_erase(pstNode, &pstTree->pstRoot);
}

void *ormel_avl_serach(const ORMEL_AVL_TREE *pstTree, const void *pKey) {
    if (!allGiven({pstTree, pKey}) || pstTree->pfnCmp == nullptr)
        return nullptr;
    Node *root = pstTree->pstRoot;
    return elementOf(*pstTree, *find(*pstTree, &root, pKey).link);
}

void *ormel_avl_get_first(const ORMEL_AVL_TREE *pstTree) {
    return allGiven({pstTree}) ? elementOf(*pstTree, rb_first(&pstTree->pstRoot)) : nullptr;
}

void *ormel_avl_get_last(const ORMEL_AVL_TREE *pstTree) {
    return allGiven({pstTree}) ? elementOf(*pstTree, rb_last(&pstTree->pstRoot)) : nullptr;
}

void *ormel_avl_get_next(const ORMEL_AVL_TREE *pstTree, const ORMEL_AVL_NODE *pstNode) {
    return allGiven({pstTree, pstNode}) ? elementOf(*pstTree, rb_next(pstNode)) : nullptr;
}

void *ormel_avl_get_prev(const ORMEL_AVL_TREE *pstTree, const ORMEL_AVL_NODE *pstNode) {
    return allGiven({pstTree, pstNode}) ? elementOf(*pstTree, rb_prev(pstNode)) : nullptr;
}

void ormel_avl_tree_destroy(ORMEL_AVL_TREE *pstTree) {
    if (allGiven({pstTree}) && pstTree->pstRoot != nullptr)
        release(*pstTree, pstTree->pstRoot);
}
