// What the two layers of the tree know about a node.
#pragma once

#include "ormeldb/tree.h"

namespace ormel::tree {

using Node = ORMEL_AVL_NODE;

// The low bits of the parent's address are free, because nodes are aligned to four bytes at least.
constexpr uintptr_t kColorBit = 1;
constexpr uintptr_t kAddressMask = ~uintptr_t{3};

inline Node *parentOf(const Node *node) {
    return reinterpret_cast<Node *>(node->ulParentColor & kAddressMask); // NOLINT(performance-no-int-to-ptr)
}

} // namespace ormel::tree
