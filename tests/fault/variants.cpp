#include "variants.h"

namespace fault {

namespace {

// What the statement counted has reached its caller when the commit is refused.
void ForgetCount(Scene &s) {
    if (unit::Client().Count("commit") > 0) {
        EXPECT_LE(s.out.count, 1u);
        s.out.LayOut();
    }
}

} // namespace

void Add(Operations &all, const Variants &v) {
    Operation op = {.form = v.form,
                    .needs = v.needs,
                    .client = v.client,
                    .memory = v.memory,
                    .tolerates = v.tolerates + kFreeing,
                    .forgives = v.forgives,
                    .describes = v.describes,
                    .exception = v.exception};
    op.name = v.forConn;
    op.needs = v.needs | kConn;
    op.run = [run = v.onConn](Scene &s) { return run(s, s.conn); };
    all.push_back(op);
    if (!v.forTrans.empty()) {
        op.name = v.forTrans;
        op.needs = v.needs | kSlot;
        op.run = v.onSlot;
        all.push_back(op);
    }
    op.name = v.plain;
    op.needs = v.needs;
    op.run = v.onOwn;
    op.client.insert(v.noConnection);
    if (v.writes) {
        op.client.insert(kStatus); // of the commit
        op.failed = v.counts ? ForgetCount : nullptr;
    }
    op.tolerates = op.tolerates + kClosing;
    all.push_back(op);
}

} // namespace fault
