// The cache: copies, duplicates, capacity, display, the time before its start and after its end, many threads.
#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ormeldb/cache.h"
#include "ormeldb/log.h"
#include "ormeldb/platform/liblog.h"

namespace {

struct Block {
    int key;
    char text[20];
};

int compareBlocks(const void *a, const void *b) {
    const int left = static_cast<const Block *>(a)->key;
    const int right = static_cast<const Block *>(b)->key;
    return (left > right) - (left < right);
}

std::vector<int> g_shown;

void noteShown(const void *data) {
    g_shown.push_back(static_cast<const Block *>(data)->key);
}

std::mutex g_linesMutex;
std::vector<std::string> g_lines;
std::atomic<int32_t> g_threshold;

std::atomic<bool> g_callocFails;
std::atomic<size_t> g_callocSize;

} // namespace

// The log service and the allocator of this program; the first stands before the platform's own.
int32_t FrameDebugLevelGet() {
    return g_threshold;
}

int32_t LIB_LOG_Print(void *, const char *line, uint32_t length, int32_t) {
    const std::lock_guard<std::mutex> lock(g_linesMutex);
    const std::string text(line, length);
    // What follows the time: level, module, line, function, message.
    g_lines.push_back(text.substr(text.find(' ', text.find(' ') + 1) + 1));
    return 0;
}

extern "C" void *__real_calloc(size_t count, size_t size);
extern "C" void *__wrap_calloc(size_t count, size_t size) {
    g_callocSize = count * size;
    return g_callocFails ? nullptr : __real_calloc(count, size);
}

namespace {

// The function and the message of a line, without the number of the source line.
std::string withoutLineNumber(const std::string &line) {
    const size_t from = line.find(':');
    return line.substr(0, from) + line.substr(line.find(':', from + 1));
}

std::vector<std::string> takeLines() {
    std::vector<std::string> taken;
    for (const std::string &line : g_lines) {
        taken.push_back(withoutLineNumber(line));
    }
    g_lines.clear();
    return taken;
}

class Cache : public testing::Test {
protected:
    Cache() {
        g_shown.clear();
        g_lines.clear();
        g_threshold = KPL_LOG_ERROR;
        g_callocFails = false;
        EXPECT_EQ(ORMEL_CacheInit(&cache, compareBlocks, noteShown), 0);
    }

    ~Cache() override { ORMEL_CacheUnInit(&cache); }

    Cache(const Cache &) = delete;
    Cache &operator=(const Cache &) = delete;

    uint32_t add(int key, const char *text = "") {
        Block block{};
        block.key = key;
        strncpy(block.text, text, sizeof block.text - 1);
        return ORMEL_CacheAdd(&cache, &block, sizeof block);
    }

    const Block *find(int key) {
        const Block block{key, ""};
        return static_cast<const Block *>(ORMEL_CacheFind(&cache, &block));
    }

    uint32_t del(int key) {
        const Block block{key, ""};
        return ORMEL_CacheDel(&cache, &block);
    }

    ORMEL_CACHE_MGR cache;
};

TEST_F(Cache, BeginsEmptyAndWithoutBound) {
    EXPECT_EQ(cache.iCount, 0);
    EXPECT_EQ(cache.iMax, -1);
    EXPECT_EQ(cache.stTree.pstRoot, nullptr);
    EXPECT_EQ(cache.stTree.usKeyOffset, 28);
    EXPECT_EQ(cache.stTree.usNodeOffset, 0);
    EXPECT_EQ(find(1), nullptr);
}

TEST_F(Cache, KeepsACopyOfWhatItIsGiven) {
    Block block{7, "seven"};
    ASSERT_EQ(ORMEL_CacheAdd(&cache, &block, sizeof block), ORMEL_OK);
    memset(&block, 0xFF, sizeof block);
    const Block *found = find(7);
    ASSERT_NE(found, nullptr);
    EXPECT_STREQ(found->text, "seven");
    const auto *node = reinterpret_cast<const ORMEL_CACHE_NODE *>(reinterpret_cast<const char *>(found) - 28);
    EXPECT_EQ(node->uiLen, sizeof block);
}

TEST_F(Cache, KeepsTheFirstOfEqualEntries) {
    EXPECT_EQ(add(1, "first"), ORMEL_OK);
    EXPECT_EQ(add(1, "second"), ORMEL_OK);
    EXPECT_EQ(cache.iCount, 1);
    EXPECT_STREQ(find(1)->text, "first");
}

TEST_F(Cache, RefusesNewEntriesWhenFull) {
    cache.iMax = 2;
    EXPECT_EQ(add(1), ORMEL_OK);
    EXPECT_EQ(add(2), ORMEL_OK);
    EXPECT_EQ(add(3), ORMEL_ERR_FAILED);
    EXPECT_EQ(add(2), ORMEL_OK);
    EXPECT_EQ(cache.iCount, 2);
    EXPECT_EQ(find(3), nullptr);
}

TEST_F(Cache, TakesNothingWithACapacityOfZero) {
    cache.iMax = 0;
    EXPECT_EQ(add(1), ORMEL_ERR_FAILED);
}

TEST_F(Cache, FreesACopyThatTheTreeRefuses) {
    add(1);
    // Different when searched, equal when inserted: a comparison that contradicts itself must not cost the copy.
    cache.stTree.pfnCmp = [](const void *, const void *) {
        static int calls = 0;
        return calls++ == 0 ? 1 : 0;
    };
    EXPECT_EQ(add(2), ORMEL_ERR_FAILED);
    EXPECT_EQ(cache.iCount, 1);
}

TEST_F(Cache, FailsToAddWhenNothingCanBeAllocated) {
    g_callocFails = true;
    EXPECT_EQ(add(1), ORMEL_ERR_FAILED);
    g_callocFails = false;
    EXPECT_EQ(cache.iCount, 0);
    EXPECT_EQ(add(1), ORMEL_OK);
}

TEST_F(Cache, ComputesTheSizeOfTheLargestBlockWhole) {
    const Block block{1, ""};
    g_callocFails = true;
    EXPECT_EQ(ORMEL_CacheAdd(&cache, &block, UINT32_MAX), ORMEL_ERR_FAILED);
    EXPECT_EQ(g_callocSize, size_t{UINT32_MAX} + 28);
}

TEST_F(Cache, DeletesOneEntry) {
    add(1);
    add(2);
    EXPECT_EQ(del(1), ORMEL_OK);
    EXPECT_EQ(del(1), ORMEL_OK);
    EXPECT_EQ(cache.iCount, 1);
    EXPECT_EQ(find(1), nullptr);
    EXPECT_NE(find(2), nullptr);
}

TEST_F(Cache, ClearsEveryEntry) {
    for (int key = 0; key < 100; key++) {
        add(key);
    }
    EXPECT_EQ(cache.iCount, 100);
    EXPECT_EQ(ORMEL_CacheClear(&cache), 0);
    EXPECT_EQ(cache.iCount, 0);
    for (int key = 0; key < 100; key++) {
        EXPECT_EQ(find(key), nullptr);
    }
}

TEST_F(Cache, CanBeUsedAfterItsEnd) {
    add(1);
    EXPECT_EQ(ORMEL_CacheUnInit(&cache), 0);
    EXPECT_EQ(cache.iCount, 0);
    EXPECT_EQ(find(1), nullptr);
    EXPECT_EQ(ORMEL_CacheShow(&cache), 0);
    EXPECT_EQ(ORMEL_CacheClear(&cache), 0);
    EXPECT_EQ(ORMEL_CacheUnInit(&cache), 0);
    EXPECT_EQ(ORMEL_CacheInit(&cache, compareBlocks, nullptr), 0);
    EXPECT_EQ(add(2), ORMEL_OK);
    EXPECT_NE(find(2), nullptr);
}

TEST_F(Cache, LogsItsEntryOnAdding) {
    g_threshold = KPL_LOG_DEBUG;
    add(1);
    EXPECT_EQ(takeLines(), (std::vector<std::string>{"DEBUG LOG_ORMEL:ORMEL_CacheAdd: Trace in.\r\n"}));
}

TEST_F(Cache, ShowsItsCountersAndItsEntriesInOrder) {
    for (const int key : {3, 1, 2}) {
        add(key);
    }
    g_threshold = KPL_LOG_TRACE;
    EXPECT_EQ(ORMEL_CacheShow(&cache), 0);
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{"TRACE LOG_ORMEL:ORMEL_CacheShow:              ORMEL_CACHE_MGR\r\n",
                                        "TRACE LOG_ORMEL:ORMEL_CacheShow:                       iCount : 3\r\n",
                                        "TRACE LOG_ORMEL:ORMEL_CacheShow:                         iMax : -1\r\n"}));
    EXPECT_EQ(g_shown, (std::vector<int>{1, 2, 3}));
}

TEST_F(Cache, ShowsOnlyItsCountersWhenEmpty) {
    g_threshold = KPL_LOG_TRACE;
    EXPECT_EQ(ORMEL_CacheShow(&cache), 0);
    EXPECT_EQ(takeLines().size(), 3U);
    EXPECT_TRUE(g_shown.empty());
}

TEST_F(Cache, CallsTheDisplayAlsoWhereItsOwnLinesAreFilteredOut) {
    add(1);
    EXPECT_EQ(ORMEL_CacheShow(&cache), 0);
    EXPECT_TRUE(takeLines().empty());
    EXPECT_EQ(g_shown, (std::vector<int>{1}));
}

TEST_F(Cache, NeedsNoDisplay) {
    add(1);
    cache.pfnShow = nullptr;
    EXPECT_EQ(ORMEL_CacheShow(&cache), 0);
    EXPECT_TRUE(g_shown.empty());
}

TEST_F(Cache, InsertsAndRemovesNodesForCallersThatHoldTheLock) {
    const Block block{5, "five"};
    ORMEL_CACHE_NODE *node = ORMEL_CacheNodeCreat(&cache, &block, sizeof block);
    ORMEL_CACHE_NODE *twin = ORMEL_CacheNodeCreat(&cache, &block, sizeof block);
    ASSERT_NE(node, nullptr);
    ASSERT_NE(twin, nullptr);
    EXPECT_EQ(memcmp(node->aucData, &block, sizeof block), 0);
    EXPECT_EQ(ORMEL_CacheNodeInsert(&cache, node), ORMEL_OK);
    EXPECT_EQ(ORMEL_CacheNodeInsert(&cache, twin), ORMEL_ERR_FAILED);
    EXPECT_EQ(cache.iCount, 1);
    EXPECT_EQ(static_cast<const void *>(find(5)), node->aucData);
    EXPECT_EQ(ORMEL_CacheNodeRemove(&cache, node), 0);
    EXPECT_EQ(find(5), nullptr);
    ORMEL_CacheNodeDestory(node);
    ORMEL_CacheNodeDestory(twin);
    ORMEL_CacheNodeDestory(nullptr);
}

TEST_F(Cache, KeepsANodeWhoseCopyWasRefused) {
    g_threshold = KPL_LOG_TRACE;
    ORMEL_CACHE_NODE *node = ORMEL_CacheNodeCreat(&cache, nullptr, sizeof(Block));
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->uiLen, sizeof(Block));
    EXPECT_EQ(reinterpret_cast<const Block *>(node->aucData)->key, 0);
    EXPECT_EQ(takeLines(),
              (std::vector<std::string>{"TRACE LOG_ORMEL:ORMEL_CacheNodeCreat:             copy data failed\r\n"}));
    ORMEL_CacheNodeDestory(node);
}

TEST(CacheWithoutInit, FindsNothingAndTakesNothing) {
    ORMEL_CACHE_MGR cache{};
    const Block block{1, ""};
    EXPECT_EQ(ORMEL_CacheFind(&cache, &block), nullptr);
    EXPECT_EQ(ORMEL_CacheAdd(&cache, &block, sizeof block), ORMEL_ERR_FAILED);
    EXPECT_EQ(ORMEL_CacheDel(&cache, &block), ORMEL_OK);
    EXPECT_EQ(ORMEL_CacheShow(&cache), 0);
    EXPECT_EQ(ORMEL_CacheClear(&cache), 0);
    EXPECT_EQ(ORMEL_CacheUnInit(&cache), 0);
    EXPECT_EQ(cache.iCount, 0);
}

TEST(CacheWithoutInit, IsNotMadeWithoutAComparison) {
    ORMEL_CACHE_MGR cache{};
    EXPECT_EQ(ORMEL_CacheInit(&cache, nullptr, nullptr), 1);
    EXPECT_EQ(ORMEL_CacheInit(nullptr, compareBlocks, nullptr), 1);
}

TEST_F(Cache, MissingArgumentsDoNothing) {
    const Block block{1, ""};
    EXPECT_EQ(ORMEL_CacheFind(nullptr, &block), nullptr);
    EXPECT_EQ(ORMEL_CacheFind(&cache, nullptr), nullptr);
    EXPECT_EQ(ORMEL_CacheAdd(nullptr, &block, sizeof block), ORMEL_ERR_FAILED);
    EXPECT_EQ(ORMEL_CacheAdd(&cache, nullptr, sizeof block), ORMEL_ERR_FAILED);
    EXPECT_EQ(ORMEL_CacheDel(nullptr, &block), ORMEL_OK);
    EXPECT_EQ(ORMEL_CacheDel(&cache, nullptr), ORMEL_OK);
    EXPECT_EQ(ORMEL_CacheShow(nullptr), EINVAL);
    EXPECT_EQ(ORMEL_CacheClear(nullptr), EINVAL);
    EXPECT_EQ(ORMEL_CacheUnInit(nullptr), EINVAL);
    EXPECT_EQ(ORMEL_CacheNodeInsert(nullptr, nullptr), ORMEL_ERR_FAILED);
    EXPECT_EQ(ORMEL_CacheNodeInsert(&cache, nullptr), ORMEL_ERR_FAILED);
    EXPECT_EQ(ORMEL_CacheNodeRemove(nullptr, nullptr), 0);
    EXPECT_EQ(ORMEL_CacheNodeRemove(&cache, nullptr), 0);
    EXPECT_EQ(cache.iCount, 0);
}

void runThreads(int count, const std::function<void(int)> &body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; i++) {
        threads.emplace_back(body, i);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

TEST_F(Cache, ManyThreadsAddTheSameKeysAndGetOneEntryEach) {
    std::atomic<int> wrong{0};
    runThreads(8, [&](int thread) {
        for (int key = 0; key < 500; key++) {
            const std::string text = "thread " + std::to_string(thread);
            wrong += add(key, text.c_str()) != ORMEL_OK;
            const Block *first = find(key);
            wrong += first == nullptr || first->key != key || strncmp(first->text, "thread ", 7) != 0;
            wrong += find(key) != first;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(cache.iCount, 500);
}

TEST_F(Cache, ManyThreadsAddFindShowAndDeleteAtOnce) {
    // Entries of negative keys come and go, those of positive keys stay, so that what is found may be read.
    cache.pfnShow = [](const void *data) { ASSERT_NE(static_cast<const Block *>(data)->key, 0); };
    std::atomic<int> wrong{0};
    runThreads(8, [&](int thread) {
        std::mt19937 random(static_cast<unsigned>(thread));
        for (int step = 0; step < 2000; step++) {
            const int key = 1 + static_cast<int>(random() % 50);
            wrong += add(key) != ORMEL_OK;
            const Block *found = find(key);
            wrong += found == nullptr || found->key != key;
            wrong += add(-key) != ORMEL_OK;
            wrong += del(-key) != ORMEL_OK;
            if (step % 100 == 0) {
                wrong += ORMEL_CacheShow(&cache) != 0;
            }
        }
    });
    EXPECT_EQ(wrong, 0);
    for (int key = 1; key <= 50; key++) {
        del(-key);
    }
    EXPECT_EQ(cache.iCount, 50);
}

} // namespace
