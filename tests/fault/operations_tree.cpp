// The ordered tree.
#include "operation.h"
#include "ormeldb/tree.h"

namespace fault {

namespace {

struct Element {
    ORMEL_AVL_NODE node;
    int key;
};

int Compare(const void *a, const void *b) {
    return *static_cast<const int *>(a) - *static_cast<const int *>(b);
}

// A tree of three elements, and one more that is not in it.
struct Grown {
    Grown() {
        for (int i = 0; i < 3; ++i) {
            elements[i].key = i;
            ormel_avl_insert(&tree, &elements[i].node);
        }
    }
    Element elements[4] = {{{}, 0}, {{}, 1}, {{}, 2}, {{}, 3}};
    ORMEL_AVL_TREE tree = {nullptr, Compare, [](void *) {}, offsetof(Element, key), 0};
    ORMEL_AVL_NODE *first = &elements[0].node;
    ORMEL_AVL_NODE *second = &elements[1].node;
    ORMEL_AVL_NODE *other = &elements[3].node;
};

const struct {
    const char *name;
    bool (*works)(Grown &);
} kFunctions[] = {
    {"ormel_avl_node_init",
     [](Grown &g) {
         ormel_avl_node_init(g.other);
         return rb_next(g.other) == nullptr;
     }},
    {"ormel_avl_insert", [](Grown &g) { return ormel_avl_insert(&g.tree, g.other) == 0; }},
    {"ormel_avl_insert_or_find", [](Grown &g) { return ormel_avl_insert_or_find(&g.tree, g.other) == nullptr; }},
    {"ormel_avl_delete",
     [](Grown &g) {
         ormel_avl_delete(&g.tree, g.first);
         return ormel_avl_get_first(&g.tree) == g.second;
     }},
    {"ormel_avl_serach", [](Grown &g) { return ormel_avl_serach(&g.tree, &g.elements[1].key) == g.second; }},
    {"ormel_avl_get_first", [](Grown &g) { return ormel_avl_get_first(&g.tree) == g.first; }},
    {"ormel_avl_get_last", [](Grown &g) { return ormel_avl_get_last(&g.tree) == &g.elements[2]; }},
    {"ormel_avl_get_next", [](Grown &g) { return ormel_avl_get_next(&g.tree, g.first) == g.second; }},
    {"ormel_avl_get_prev", [](Grown &g) { return ormel_avl_get_prev(&g.tree, g.second) == g.first; }},
    {"ormel_avl_tree_destroy",
     [](Grown &g) {
         ormel_avl_tree_destroy(&g.tree);
         return true;
     }},
    {"rb_first", [](Grown &g) { return rb_first(&g.tree.pstRoot) == g.first; }},
    {"rb_last", [](Grown &g) { return rb_last(&g.tree.pstRoot) == &g.elements[2].node; }},
    {"rb_next", [](Grown &g) { return rb_next(g.first) == g.second; }},
    {"rb_prev", [](Grown &g) { return rb_prev(g.second) == g.first; }},
    {"rb_erase",
     [](Grown &g) {
         rb_erase(g.first, &g.tree.pstRoot);
         return rb_first(&g.tree.pstRoot) == g.second;
     }},
    {"rb_replace_node",
     [](Grown &g) {
         rb_replace_node(g.first, g.other, &g.tree.pstRoot);
         return rb_first(&g.tree.pstRoot) == g.other;
     }},
    {"rb_link_node",
     [](Grown &g) {
         rb_link_node(g.other, &g.elements[2].node, &g.elements[2].node.pstRight);
         return rb_last(&g.tree.pstRoot) == g.other;
     }},
    {"rb_insert_color",
     [](Grown &g) {
         rb_link_node(g.other, &g.elements[2].node, &g.elements[2].node.pstRight);
         rb_insert_color(g.other, &g.tree.pstRoot);
         return rb_last(&g.tree.pstRoot) == g.other;
     }},
    {"rb_set_parent",
     [](Grown &g) {
         rb_set_parent(g.other, g.first);
         return (g.other->ulParentColor & ~uintptr_t{3}) == reinterpret_cast<uintptr_t>(g.first);
     }},
    {"rb_set_color",
     [](Grown &g) {
         rb_set_color(g.other, 1);
         return (g.other->ulParentColor & 1) == 1;
     }},
};

} // namespace

void AddTree(Operations &all) {
    for (const auto &function : kFunctions) {
        all.push_back({.name = function.name,
                       .safe = "links elements that are their owner's and calls nobody",
                       .run = [works = function.works](Scene &) {
                           Grown grown;
                           return works(grown) ? ORMEL_OK : kNull;
                       }});
    }
}

} // namespace fault
