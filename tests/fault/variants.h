// An operation on a connection, with the variants on a connection of its own and on a slot.
#ifndef FAULT_VARIANTS_H
#define FAULT_VARIANTS_H

#include "operation.h"

namespace fault {

struct Variants {
    std::string plain, forConn, forTrans; // names; none: there is no such variant
    std::string form = {};
    uint32_t (*onOwn)(Scene &);
    uint32_t (*onConn)(Scene &, void *conn);
    uint32_t (*onSlot)(Scene &);
    bool writes;
    Codes client, memory;  // of the body
    Names tolerates;       // of the body
    uint32_t noConnection; // the plain variant's code
    int forgives = 1;      // the cache's copy of the descriptor
    unsigned needs = kNothing;
    bool describes = true;
    Exception exception = Exception::none;
    bool counts = false; // tells how many rows it wrote
};

void Add(Operations &all, const Variants &v);

} // namespace fault

#endif
