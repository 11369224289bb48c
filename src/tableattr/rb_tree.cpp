// The red-black tree below the ordered set: order and balance, without keys.
//
// A red node has no red child, and every way from the root down to a missing child passes the same number of black
// nodes. What is true of left and right alike is written once, for a side.
#include <utility>

#include "tableattr/rb_node.h"

namespace ormel::tree {
namespace {

constexpr int kRed = 0;
constexpr int kBlack = 1;

enum class Side { left, right };

constexpr Side other(Side side) {
    return side == Side::left ? Side::right : Side::left;
}

Node *childOf(const Node *node, Side side) {
    return side == Side::left ? node->pstLeft : node->pstRight;
}

Node *&childLink(Node *node, Side side) {
    return side == Side::left ? node->pstLeft : node->pstRight;
}

Side sideOf(const Node *parent, const Node *child) {
    return parent->pstLeft == child ? Side::left : Side::right;
}

// Missing children count as black.
bool isRed(const Node *node) {
    return node != nullptr && (node->ulParentColor & kColorBit) == kRed;
}

// The link of a parent, or of the root where there is none, that leads to a node.
Node *&linkTo(const Node *node, Node **root) {
    Node *parent = parentOf(node);
    return parent == nullptr ? *root : childLink(parent, sideOf(parent, node));
}

void hang(Node *child, Node *parent, Side side) {
    childLink(parent, side) = child;
    if (child != nullptr)
        rb_set_parent(child, parent);
}

// Lets a node sink to one side, below the child that rises from the other side.
void rotate(Node *node, Side side, Node **root) {
    Node *rising = childOf(node, other(side));
    linkTo(node, root) = rising;
    rb_set_parent(rising, parentOf(node));
    hang(childOf(rising, side), node, other(side));
    hang(node, rising, side);
}

Node *outermost(Node *node, Side side) {
    while (node != nullptr && childOf(node, side) != nullptr)
        node = childOf(node, side);
    return node;
}

// The neighbour in order: the nearest node of the subtree on that side, else the nearest ancestor beyond it.
Node *neighbour(const Node *node, Side side) {
    Node *parent = parentOf(node);
    if (parent == node)
        return nullptr;
    if (Node *child = childOf(node, side))
        return outermost(child, other(side));
    while (parent != nullptr && childOf(parent, side) == node) {
        node = parent;
        parent = parentOf(node);
    }
    return parent;
}

// Brings a red nephew to the far side and lets the parent sink into the gap, as the black node that is missing there.
void rotateIntoGap(Node *parent, Side side, Node *sibling, Node **root) {
    if (!isRed(childOf(sibling, other(side)))) {
        Node *near = childOf(sibling, side);
        rotate(sibling, other(side), root);
        sibling = near;
    }
    rb_set_color(sibling, isRed(parent) ? kRed : kBlack);
    rb_set_color(parent, kBlack);
    rb_set_color(childOf(sibling, other(side)), kBlack);
    rotate(parent, side, root);
}

// Every way through one side of the parent is one black node short: mends it there, or moves the gap up.
void mendGap(Node *parent, Side side, Node **root) {
    while (parent != nullptr) {
        Node *sibling = childOf(parent, other(side));
        if (isRed(sibling)) {
            rb_set_color(sibling, kBlack);
            rb_set_color(parent, kRed);
            rotate(parent, side, root);
            sibling = childOf(parent, other(side));
        }
        if (isRed(sibling->pstLeft) || isRed(sibling->pstRight)) {
            rotateIntoGap(parent, side, sibling, root);
            return;
        }
        rb_set_color(sibling, kRed);
        if (isRed(parent)) {
            rb_set_color(parent, kBlack);
            return;
        }
        const Node *child = parent;
        parent = parentOf(child);
        if (parent != nullptr)
            side = sideOf(parent, child);
    }
}

// Takes out a node that has one child at most.
void spliceOut(const Node *node, Node **root) {
    Node *parent = parentOf(node);
    Node *child = node->pstLeft != nullptr ? node->pstLeft : node->pstRight;
    const Side side = parent != nullptr ? sideOf(parent, node) : Side::left;
    linkTo(node, root) = child;
    if (child != nullptr) {
        // An only child is red and its parent black, so that its colour makes up for the node.
        rb_set_parent(child, parent);
        rb_set_color(child, kBlack);
    } else if (!isRed(node)) {
        mendGap(parent, side, root);
    }
}

} // namespace
} // namespace ormel::tree

using namespace ormel::tree;

void rb_insert_color(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE **ppstRoot) {
    Node *node = pstNode;
    Node *parent = parentOf(node);
    while (isRed(parent)) {
        // A red node is not the root, so it has a parent of its own.
        Node *grand = parentOf(parent);
        const Side side = sideOf(grand, parent);
        Node *uncle = childOf(grand, other(side));
        rb_set_color(grand, kRed);
        if (isRed(uncle)) {
            rb_set_color(parent, kBlack);
            rb_set_color(uncle, kBlack);
            node = grand;
        } else {
            if (sideOf(parent, node) != side) {
                rotate(parent, side, ppstRoot);
                std::swap(node, parent);
            }
            rb_set_color(parent, kBlack);
            rotate(grand, other(side), ppstRoot);
        }
        parent = parentOf(node);
    }
    rb_set_color(*ppstRoot, kBlack);
}

void rb_erase(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE **ppstRoot) {
    if (pstNode->pstLeft == nullptr || pstNode->pstRight == nullptr) {
        spliceOut(pstNode, ppstRoot);
        return;
    }
    Node *successor = rb_next(pstNode);
    spliceOut(successor, ppstRoot);
    rb_replace_node(pstNode, successor, ppstRoot);
}

void rb_replace_node(ORMEL_AVL_NODE *pstOld, ORMEL_AVL_NODE *pstNew, ORMEL_AVL_NODE **ppstRoot) {
    linkTo(pstOld, ppstRoot) = pstNew;
    pstNew->ulParentColor = pstOld->ulParentColor;
    hang(pstOld->pstLeft, pstNew, Side::left);
    hang(pstOld->pstRight, pstNew, Side::right);
}

ORMEL_AVL_NODE *rb_next(const ORMEL_AVL_NODE *pstNode) {
    return neighbour(pstNode, Side::right);
}

ORMEL_AVL_NODE *rb_prev(const ORMEL_AVL_NODE *pstNode) {
    return neighbour(pstNode, Side::left);
}

ORMEL_AVL_NODE *rb_first(ORMEL_AVL_NODE *const *ppstRoot) {
    return outermost(*ppstRoot, Side::left);
}

ORMEL_AVL_NODE *rb_last(ORMEL_AVL_NODE *const *ppstRoot) {
    return outermost(*ppstRoot, Side::right);
}

void rb_link_node(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE *pstParent, ORMEL_AVL_NODE **ppstLink) {
    *pstNode = {reinterpret_cast<uintptr_t>(pstParent), nullptr, nullptr};
    *ppstLink = pstNode;
}

void rb_set_parent(ORMEL_AVL_NODE *pstNode, const ORMEL_AVL_NODE *pstParent) {
    pstNode->ulParentColor = (pstNode->ulParentColor & ~kAddressMask) | reinterpret_cast<uintptr_t>(pstParent);
}

void rb_set_color(ORMEL_AVL_NODE *pstNode, int iColor) {
    pstNode->ulParentColor = (pstNode->ulParentColor & ~kColorBit) | (static_cast<unsigned>(iColor) & kColorBit);
}
