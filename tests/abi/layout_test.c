/* The layouts of layout.def as a C compiler sees them. Every difference is printed, not only the first. */
#include <stddef.h>
#include <stdio.h>

#include "ormeldb.h"
#include "ormeldb/cache.h"
#include "ormeldb/platform/liblog.h"
#include "ormeldb/platform/tick.h"
#include "ormeldb/qdc.h"
#include "ormeldb/tree.h"

static int failures;

static void expect(const char *what, size_t is, size_t should) {
    if (is != should) {
        failures++;
        printf("%s is %zu and should be %zu\n", what, is, should);
    }
}

int main(void) {
#define RECORD(type, bytes) expect("the size of " #type, sizeof(type), bytes);
#define FIELD(type, member, at) expect("the offset of " #member " in " #type, offsetof(type, member), at);
#include "layout.def"
    return failures == 0 ? 0 : 1;
}
