#include "support/memory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace contract {

namespace {

struct Plan {
    uint64_t failing = 0; // 0: none
    uint64_t seen = 0;
    FailingMemory::Mode mode = FailingMemory::Mode::once;
};

thread_local Plan t_plan;

bool isRefused() {
    if (t_plan.failing == 0)
        return false;
    ++t_plan.seen;
    return t_plan.mode == FailingMemory::Mode::once ? t_plan.seen == t_plan.failing : t_plan.seen >= t_plan.failing;
}

void *allocate(std::size_t size, std::size_t alignment) noexcept {
    if (isRefused())
        return nullptr;
    if (alignment <= alignof(std::max_align_t))
        return std::malloc(size > 0 ? size : 1);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void *allocateOrThrow(std::size_t size, std::size_t alignment) {
    void *block = allocate(size, alignment);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

} // namespace

FailingMemory::FailingMemory(uint64_t n, Mode mode) {
    t_plan = {n, 0, mode};
}

FailingMemory::~FailingMemory() {
    t_plan = {};
}

bool FailingMemory::happened() const {
    return t_plan.seen >= t_plan.failing;
}

} // namespace contract

// Each of them: what a sanitizer brings along would otherwise take part of the requests.
void *operator new(std::size_t size) {
    return contract::allocateOrThrow(size, 1);
}
void *operator new[](std::size_t size) {
    return contract::allocateOrThrow(size, 1);
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    return contract::allocate(size, 1);
}
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
    return contract::allocate(size, 1);
}
void *operator new(std::size_t size, std::align_val_t alignment) {
    return contract::allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void *operator new[](std::size_t size, std::align_val_t alignment) {
    return contract::allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void operator delete(void *block) noexcept {
    std::free(block);
}
void operator delete[](void *block) noexcept {
    std::free(block);
}
void operator delete(void *block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void *block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void *block, const std::nothrow_t &) noexcept {
    std::free(block);
}
void operator delete[](void *block, const std::nothrow_t &) noexcept {
    std::free(block);
}
void operator delete(void *block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete[](void *block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void *block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete[](void *block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}
