/*
 * An ordered set of structures that embed a node: a red-black tree that never allocates. Not included by ormeldb.h,
 * because its names are generic.
 *
 * The caller owns the elements and serialises access: searches and walks may run at once, changes exclude all else.
 */
#ifndef ORMELDB_TREE_H
#define ORMELDB_TREE_H

#include "base.h"

ORMEL_BEGIN_DECLS

/* Links of one element; 24 bytes, aligned to 4 at least. */
typedef struct ORMEL_AVL_NODE {
    uintptr_t
        ulParentColor; /* address of the parent; bit 0: 0 red, 1 black; a node that is its own parent is unlinked */
    struct ORMEL_AVL_NODE *pstRight;
    struct ORMEL_AVL_NODE *pstLeft;
} ORMEL_AVL_NODE;

/* Negative: the key sorts before the element's key; 0: equal; positive: after. */
typedef int (*ORMEL_AVL_CMP)(const void *pKey, const void *pElementKey);
/* Releases an element. */
typedef void (*ORMEL_AVL_FREE)(void *pElement);

/* A tree. 32 bytes. An element begins usNodeOffset before its node, its key lies usKeyOffset after that. */
typedef struct ORMEL_AVL_TREE {
    ORMEL_AVL_NODE *pstRoot; /* NULL when empty; its address is what the rb_ functions call the root */
    ORMEL_AVL_CMP pfnCmp;
    ORMEL_AVL_FREE pfnFree; /* used by ormel_avl_tree_destroy only */
    uint16_t usKeyOffset;
    uint16_t usNodeOffset;
} ORMEL_AVL_TREE;

/*
 * Every function reports each NULL argument with DQA_Assert("avl_tree_api", line, 0) and then answers NULL or
 * 0xFFFFFFFF, or does nothing.
 */

/* Marks a node as unlinked, keeping its colour. */
ORMEL_API void ormel_avl_node_init(ORMEL_AVL_NODE *pstNode);
/* Inserts a node; 0, or 0xFFFFFFFF when an element with an equal key is there. */
ORMEL_API uint32_t ormel_avl_insert(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode);
/* Inserts a node and returns NULL, or leaves it out and returns the element with an equal key. */
ORMEL_API void *ormel_avl_insert_or_find(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode);
/* Takes a node out; it must be in this tree. */
ORMEL_API void ormel_avl_delete(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode);
/* The element with an equal key, or NULL. */
ORMEL_API void *ormel_avl_serach(const ORMEL_AVL_TREE *pstTree, const void *pKey);
/* The first and the last element in order, or NULL. */
ORMEL_API void *ormel_avl_get_first(const ORMEL_AVL_TREE *pstTree);
ORMEL_API void *ormel_avl_get_last(const ORMEL_AVL_TREE *pstTree);
/* The element after and before the given node (not element), or NULL. */
ORMEL_API void *ormel_avl_get_next(const ORMEL_AVL_TREE *pstTree, const ORMEL_AVL_NODE *pstNode);
ORMEL_API void *ormel_avl_get_prev(const ORMEL_AVL_TREE *pstTree, const ORMEL_AVL_NODE *pstNode);
/* Releases every element with pfnFree, children before their parent; the root word is left as it was. */
ORMEL_API void ormel_avl_tree_destroy(ORMEL_AVL_TREE *pstTree);

/* The layer below: balancing and order, without keys. No argument may be NULL unless said. */

/* Restores the balance after rb_link_node. */
ORMEL_API void rb_insert_color(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE **ppstRoot);
/* Takes a node out and restores the balance. */
ORMEL_API void rb_erase(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE **ppstRoot);
/* Puts a new node at the place and in the colour of an old one, without comparing. */
ORMEL_API void rb_replace_node(ORMEL_AVL_NODE *pstOld, ORMEL_AVL_NODE *pstNew, ORMEL_AVL_NODE **ppstRoot);
/* Successor and predecessor; NULL at the ends and for an unlinked node. */
ORMEL_API ORMEL_AVL_NODE *rb_next(const ORMEL_AVL_NODE *pstNode);
ORMEL_API ORMEL_AVL_NODE *rb_prev(const ORMEL_AVL_NODE *pstNode);
/* The first and the last node; NULL in an empty tree. */
ORMEL_API ORMEL_AVL_NODE *rb_first(ORMEL_AVL_NODE *const *ppstRoot);
ORMEL_API ORMEL_AVL_NODE *rb_last(ORMEL_AVL_NODE *const *ppstRoot);
/* Hangs a red node without children under a parent (NULL: as root), at the link that the parent or root has for it. */
ORMEL_API void rb_link_node(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE *pstParent, ORMEL_AVL_NODE **ppstLink);
/* Sets the parent and keeps the colour; sets the colour (0 red, 1 black) and keeps the parent. */
ORMEL_API void rb_set_parent(ORMEL_AVL_NODE *pstNode, const ORMEL_AVL_NODE *pstParent);
ORMEL_API void rb_set_color(ORMEL_AVL_NODE *pstNode, int iColor);

ORMEL_END_DECLS

#endif
