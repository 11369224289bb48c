#include "process.h"

#include <atomic>
#include <new>
#include <pthread.h>

namespace ormel::client {

namespace {

std::atomic<uint64_t> g_number;

[[maybe_unused]] const int g_counting = pthread_atfork(nullptr, nullptr, [] { ++g_number; });

struct Left {
    void *object;
    Left *next;
};
std::atomic<Left *> g_left;

} // namespace

uint64_t processNumber() noexcept {
    return g_number.load(std::memory_order_relaxed);
}

void leaveInherited(void *object) noexcept {
    if (object == nullptr)
        return;
    auto *left = new (std::nothrow) Left{object, g_left.load()};
    while (left != nullptr && !g_left.compare_exchange_weak(left->next, left))
        ;
}

} // namespace ormel::client
