// The layouts of layout.def hold, or nothing is built.
#include <cstddef>

#include "dao/qdc.h"
#include "ormeldb.h"
#include "ormeldb/cache.h"
#include "ormeldb/platform/liblog.h"
#include "ormeldb/tree.h"

#define RECORD(type, bytes) static_assert(sizeof(type) == (bytes));
#define FIELD(type, member, at) static_assert(offsetof(type, member) == (at));
#include "layout.def"
