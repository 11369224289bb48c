#ifndef ORMELDB_TREE_H
#define ORMELDB_TREE_H
#include "base.h"
ORMEL_BEGIN_DECLS
typedef struct ORMEL_AVL_NODE {
    uintptr_t ulParentColor;
    struct ORMEL_AVL_NODE *pstRight;
    struct ORMEL_AVL_NODE *pstLeft;
} ORMEL_AVL_NODE;
typedef int (*ORMEL_AVL_CMP)(const void *pKey, const void *pElementKey);
typedef void (*ORMEL_AVL_FREE)(void *pElement);
typedef struct ORMEL_AVL_TREE {
    ORMEL_AVL_NODE *pstRoot;
    ORMEL_AVL_CMP pfnCmp;
    ORMEL_AVL_FREE pfnFree;
    uint16_t usKeyOffset;
    uint16_t usNodeOffset;
} ORMEL_AVL_TREE;
ORMEL_API void ormel_avl_node_init(ORMEL_AVL_NODE *pstNode);
ORMEL_API uint32_t ormel_avl_insert(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode);
ORMEL_API void *ormel_avl_insert_or_find(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode);
ORMEL_API void ormel_avl_delete(ORMEL_AVL_TREE *pstTree, ORMEL_AVL_NODE *pstNode);
ORMEL_API void *ormel_avl_serach(const ORMEL_AVL_TREE *pstTree, const void *pKey);
ORMEL_API void *ormel_avl_get_first(const ORMEL_AVL_TREE *pstTree);
ORMEL_API void *ormel_avl_get_last(const ORMEL_AVL_TREE *pstTree);
ORMEL_API void *ormel_avl_get_next(const ORMEL_AVL_TREE *pstTree, const ORMEL_AVL_NODE *pstNode);
ORMEL_API void *ormel_avl_get_prev(const ORMEL_AVL_TREE *pstTree, const ORMEL_AVL_NODE *pstNode);
ORMEL_API void ormel_avl_tree_destroy(ORMEL_AVL_TREE *pstTree);
ORMEL_API void rb_insert_color(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE **ppstRoot);
ORMEL_API void rb_erase(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE **ppstRoot);
ORMEL_API void rb_replace_node(ORMEL_AVL_NODE *pstOld, ORMEL_AVL_NODE *pstNew, ORMEL_AVL_NODE **ppstRoot);
ORMEL_API ORMEL_AVL_NODE *rb_next(const ORMEL_AVL_NODE *pstNode);
ORMEL_API ORMEL_AVL_NODE *rb_prev(const ORMEL_AVL_NODE *pstNode);
ORMEL_API ORMEL_AVL_NODE *rb_first(ORMEL_AVL_NODE *const *ppstRoot);
ORMEL_API ORMEL_AVL_NODE *rb_last(ORMEL_AVL_NODE *const *ppstRoot);
ORMEL_API void rb_link_node(ORMEL_AVL_NODE *pstNode, ORMEL_AVL_NODE *pstParent, ORMEL_AVL_NODE **ppstLink);
ORMEL_API void rb_set_parent(ORMEL_AVL_NODE *pstNode, const ORMEL_AVL_NODE *pstParent);
ORMEL_API void rb_set_color(ORMEL_AVL_NODE *pstNode, int iColor);
ORMEL_END_DECLS
#endif
