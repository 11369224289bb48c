#include "memory.h"

#include <cerrno>
#include <mutex>

extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);
void *__wrap_malloc(size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_realloc(void *block, size_t size);
void __wrap_free(void *block);
}

namespace unit {

namespace {

struct Heap {
    std::mutex mutex;
    std::unordered_set<void *> live;
    bool armed = false;
    int failing = 0;
    bool lasting = false;
    int seen = 0;
    std::vector<size_t> sizes;
};

// Never destroyed: blocks are freed until the very end of the process.
Heap &TheHeap() {
    static Heap *heap = new Heap;
    return *heap;
}

bool Refused(size_t count, size_t size) {
    Heap &heap = TheHeap();
    std::lock_guard guard(heap.mutex);
    bool overflow = size != 0 && count > static_cast<size_t>(-1) / size;
    size_t bytes = overflow ? static_cast<size_t>(-1) : count * size;
    if (heap.armed) {
        heap.sizes.push_back(bytes);
        ++heap.seen;
        if (heap.seen == heap.failing || (heap.lasting && heap.failing > 0 && heap.seen > heap.failing)) {
            return true;
        }
    }
    return bytes > kLargestBlock;
}

void *Kept(void *block) {
    Heap &heap = TheHeap();
    std::lock_guard guard(heap.mutex);
    if (block != nullptr) {
        heap.live.insert(block);
    }
    return block;
}

void Gone(void *block) {
    Heap &heap = TheHeap();
    std::lock_guard guard(heap.mutex);
    heap.live.erase(block);
}

} // namespace

FailingAllocation::FailingAllocation(int n, bool lasting) {
    Heap &heap = TheHeap();
    std::lock_guard guard(heap.mutex);
    heap.armed = true;
    heap.failing = n;
    heap.lasting = lasting;
    heap.seen = 0;
    heap.sizes.clear();
}

FailingAllocation::~FailingAllocation() {
    std::lock_guard guard(TheHeap().mutex);
    TheHeap().armed = false;
}

bool FailingAllocation::Happened() const {
    std::lock_guard guard(TheHeap().mutex);
    return TheHeap().failing > 0 && TheHeap().seen >= TheHeap().failing;
}

std::vector<size_t> FailingAllocation::Sizes() const {
    std::lock_guard guard(TheHeap().mutex);
    return TheHeap().sizes;
}

size_t LiveBlocks() {
    std::lock_guard guard(TheHeap().mutex);
    return TheHeap().live.size();
}

Blocks Live() {
    std::lock_guard guard(TheHeap().mutex);
    return TheHeap().live;
}

size_t FreeNew(const Blocks &before) {
    size_t count = 0;
    for (void *block : Live()) {
        if (before.count(block) == 0) {
            __wrap_free(block);
            ++count;
        }
    }
    return count;
}

} // namespace unit

extern "C" {

void *__wrap_malloc(size_t size) {
    if (unit::Refused(1, size)) {
        errno = ENOMEM;
        return nullptr;
    }
    return unit::Kept(__real_malloc(size));
}

void *__wrap_calloc(size_t count, size_t size) {
    if (unit::Refused(count, size)) {
        errno = ENOMEM;
        return nullptr;
    }
    return unit::Kept(__real_calloc(count, size));
}

void *__wrap_realloc(void *block, size_t size) {
    if (unit::Refused(1, size)) {
        errno = ENOMEM;
        return nullptr;
    }
    unit::Gone(block);
    return unit::Kept(__real_realloc(block, size));
}

void __wrap_free(void *block) {
    unit::Gone(block);
    __real_free(block);
}
}
