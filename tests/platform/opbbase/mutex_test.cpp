#include "ormeldb/platform/opbbase.h"

#include "support/sanitizer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>
#include <vector>

namespace {

TEST(Mutex, GuardsACountOfManyThreads) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 5000;
    int count = 0;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                EXPECT_EQ(XOS_MutexLock(&g_cfgParseMutex), 0u);
                ++count;
                EXPECT_EQ(XOS_MutexUnlock(&g_cfgParseMutex), 0u);
            }
        });
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(count, kThreads * kRounds);
}

TEST(Mutex, GivesTheErrorNumberOfTheCall) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_t mutex;
    pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);

    EXPECT_EQ(XOS_MutexLock(&mutex), 0u);
    EXPECT_EQ(XOS_MutexLock(&mutex), static_cast<uint32_t>(EDEADLK));
    EXPECT_EQ(XOS_MutexUnlock(&mutex), 0u);
    if (!ormel::test::kThreadSanitizer) { // which reports the attempt
        EXPECT_EQ(XOS_MutexUnlock(&mutex), static_cast<uint32_t>(EPERM));
    }
    pthread_mutex_destroy(&mutex);
}

TEST(Mutex, RefusesNoMutex) {
    EXPECT_EQ(XOS_MutexLock(nullptr), static_cast<uint32_t>(EINVAL));
    EXPECT_EQ(XOS_MutexUnlock(nullptr), static_cast<uint32_t>(EINVAL));
}

} // namespace
