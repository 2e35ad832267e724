#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Memory/BuddyPool.h"
#include "Memory/PoolFixture.h"
#include "Support/LogCapture.h"

using namespace Tovra::Memory;
using Support::LogCapture;
using Tests::configure;
using Tests::CountingOperator;

namespace {

constexpr size_t kChunk = 1024;

BuddyPool makePool(size_t chunks, size_t chunkSize = kChunk) {
    return BuddyPool({chunks * chunkSize, chunkSize, 4}, CPacketManager::MemoryOperator());
}

// The block sizes of the free lists, in chunks, ascending; as the dump tells them.
std::vector<int> freeBlocks(BuddyPool& pool) {
    LogCapture log(4);
    pool.printNodeInfo();
    std::vector<int> blocks;
    for (const std::string& line : log.lines()) {
        int order = 0;
        const size_t at = line.find("bufflist(");
        if (at == std::string::npos) continue;
        EXPECT_EQ(std::sscanf(line.c_str() + at, "bufflist(%d)id: 0, realIdx(", &order), 1) << line;
        blocks.push_back(1 << order);
    }
    return blocks;
}

std::vector<int> binaryDigits(size_t number) {
    std::vector<int> digits;
    for (int digit = 1; number != 0; digit *= 2, number /= 2)
        if (number % 2 != 0) digits.push_back(digit);
    return digits;
}

// Live blocks by address. A block is filled with a byte of its own, so that an overlap shows.
class Model {
public:
    explicit Model(BuddyPool& pool) : m_pool(pool) {}

    bool allocate(size_t size) {
        size_t granted = size;
        auto* block = static_cast<unsigned char*>(m_pool.malloc(&granted));
        if (block == nullptr) return false;
        size_t expected = kChunk;
        while (expected < size)
            expected *= 2;
        EXPECT_EQ(granted, expected);
        EXPECT_TRUE(m_pool.holds(block) && m_pool.holds(block + granted - 1));
        std::memset(block, ++m_mark, granted);
        m_live[block] = {granted, m_mark};
        m_used += granted;
        return true;
    }

    void free(size_t which) {
        const auto block = std::next(m_live.begin(), static_cast<std::ptrdiff_t>(which));
        const auto [size, mark] = block->second;
        const auto intact = [mark = mark](unsigned char byte) { return byte == mark; };
        EXPECT_TRUE(std::all_of(block->first, block->first + size, intact)) << "overlap";
        m_pool.free(block->first);
        m_used -= size;
        m_live.erase(block);
    }

    size_t count() const { return m_live.size(); }
    size_t used() const { return m_used; }

private:
    struct Live {
        size_t size;
        unsigned char mark;
    };
    BuddyPool& m_pool;
    std::map<unsigned char*, Live> m_live;
    size_t m_used = 0;
    unsigned char m_mark = 0;
};

TEST(Pool, FreedInAnyOrderThePoolIsWhole) {
    std::mt19937 random(20240);
    for (size_t chunks = 1; chunks <= 67; ++chunks) {
        SCOPED_TRACE(chunks);
        BuddyPool pool = makePool(chunks);
        ASSERT_EQ(freeBlocks(pool), binaryDigits(chunks));
        Model model(pool);
        for (int step = 0; step < 400; ++step) {
            if (random() % 5 < 3) {
                model.allocate(1 + random() % (kChunk * 9));
            } else if (model.count() != 0) {
                model.free(random() % model.count());
            }
            ASSERT_EQ(pool.freeSize() + model.used(), chunks * kChunk);
        }
        while (model.count() != 0)
            model.free(random() % model.count());
        ASSERT_EQ(freeBlocks(pool), binaryDigits(chunks));
    }
}

TEST(Pool, GrantsPowersOfTwoOfChunksAndNothingForZeroOrTooMuch) {
    BuddyPool pool = makePool(2048);
    const auto granted = [&pool](size_t size) -> size_t {
        void* block = pool.malloc(&size);
        pool.free(block);
        return block == nullptr ? 0 : size;
    };
    EXPECT_EQ(granted(1), 1024U);
    EXPECT_EQ(granted(1024), 1024U);
    EXPECT_EQ(granted(1025), 2048U);
    EXPECT_EQ(granted(1024 * 1024 + 1), 2097152U);
    EXPECT_EQ(granted(2097152), 2097152U);

    LogCapture log(4);
    for (const size_t size : {size_t{2097153}, (size_t{1} << 41) + 1, SIZE_MAX, size_t{0}})
        EXPECT_EQ(granted(size), 0U);
    EXPECT_EQ(log.count("CPacket No Free Space\n"), 4U);
}

TEST(Pool, ServesFromTheTopEndAndReusesTheBlockFreedLast) {
    BuddyPool pool = makePool(8);
    const auto take = [&pool](size_t size) { return static_cast<unsigned char*>(pool.malloc(&size)); };
    unsigned char* top = take(1);
    unsigned char* pair = take(2048);
    EXPECT_EQ(freeBlocks(pool), (std::vector<int>{1, 4}));
    EXPECT_EQ(pair, top - 3 * kChunk);
    unsigned char* low = take(4096);
    EXPECT_EQ(low, top - 7 * kChunk);
    unsigned char* last = take(1);
    EXPECT_EQ(last, top - kChunk);
    pool.free(top);
    EXPECT_EQ(take(1), top);
}

TEST(Pool, ExhaustedItRecoversBlockByBlock) {
    BuddyPool pool = makePool(3);
    std::vector<void*> blocks;
    size_t size = 1;
    while (void* block = pool.malloc(&size))
        blocks.push_back(block);
    EXPECT_EQ(blocks.size(), 3U);
    EXPECT_EQ(pool.freeSize(), 0U);
    for (void* block : blocks)
        pool.free(block);
    // The last chunk has no buddy and stays apart.
    EXPECT_EQ(freeBlocks(pool), (std::vector<int>{1, 2}));
}

TEST(Pool, StaysWholeUnderEightThreads) {
    BuddyPool pool = makePool(61);
    const auto work = [&pool](unsigned seed) {
        std::mt19937 random(seed);
        Model model(pool);
        for (int step = 0; step < 4000; ++step) {
            if (random() % 2 == 0) {
                model.allocate(1 + random() % (kChunk * 3));
            } else if (model.count() != 0) {
                model.free(random() % model.count());
            }
        }
        while (model.count() != 0)
            model.free(0);
    };
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 8; ++seed)
        threads.emplace_back(work, seed);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(freeBlocks(pool), binaryDigits(61));
}

TEST(Pool, AlignsItsFirstChunkWithinOneChunkMoreThanAsked) {
    CountingOperator counting;
    {
        BuddyPool pool({65536, 4096, 4}, counting.get());
        EXPECT_EQ(counting.lastSize, 65536U + 4096);
        size_t size = 65536;
        auto* first = static_cast<unsigned char*>(pool.malloc(&size));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 4096, 0U);
        EXPECT_LT(first - static_cast<unsigned char*>(pool.origin()), 4096);
    }
    EXPECT_EQ(counting.frees, 1);
}

TEST(Pool, OnceClosedItHasNothingAndIgnoresWhatComesBack) {
    CountingOperator counting;
    BuddyPool pool({4096, 1024, 4}, counting.get());
    size_t size = 1024;
    void* block = pool.malloc(&size);
    pool.close();
    EXPECT_EQ(counting.frees, 1);
    pool.free(block);
    EXPECT_EQ(pool.freeSize(), 0U);
    EXPECT_EQ(pool.malloc(&size), nullptr);
}

TEST(Pool, OfNoBytesHasOneEmptyList) {
    LogCapture log(4);
    BuddyPool pool = makePool(0);
    EXPECT_EQ(log.count("malloc total(0) pagesize(1024)blockCount (0) ManagermentSize(32)\n"), 1U);
    size_t size = 1;
    EXPECT_EQ(pool.malloc(&size), nullptr);
    pool.printNodeInfo();
    EXPECT_EQ(log.count("BufferList id:0, order(1) head("), 1U);
}

TEST(PoolDeathTest, StopsWithoutARegionAndAtPointersBelowIt) {
    CountingOperator counting;
    counting.failing = true;
    EXPECT_DEATH(BuddyPool({4096, 1024, 4}, counting.get()), "NULL != m_pOriginBuffer");
    // More chunks than numbers for them: refused before a small region could be asked for.
    EXPECT_DEATH(makePool(size_t{1} << 53), "NULL != m_pOriginBuffer");
    BuddyPool pool = makePool(4);
    EXPECT_DEATH(pool.free(static_cast<unsigned char*>(pool.origin()) - 4096),
                 "assertion \\(id >= 0\\) failed in .*Pool_Free.*Src/Memory/PacketManager\\(");
}

#ifdef FUNDO_DEBUG_CHECKS
TEST(PoolDeathTest, DebugBuildNamesTheMisuse) {
    BuddyPool pool = makePool(4);
    size_t size = 2048;
    auto* block = static_cast<unsigned char*>(pool.malloc(&size));
    EXPECT_DEATH(pool.free(block + 1024), "pointer inside a block");
    EXPECT_DEATH(pool.free(block + 16), "pointer inside a block");
    EXPECT_DEATH(pool.free(block + 2 * size), "pointer above the pool");
    auto* low = static_cast<unsigned char*>(pool.malloc(&size));
    pool.free(block);
    EXPECT_DEATH(pool.free(block), "block freed twice");
    pool.free(low);
    EXPECT_DEATH(pool.free(block), "block freed twice");
}
#endif

TEST(PacketManager, SystemPolicyCallsTheOperatorEveryTime) {
    CountingOperator counting;
    CPacketManager::MemoryOperator memop = counting.get();
    CPacketManager::config(CPacketManager::PolicySystem, &memop, nullptr);
    LogCapture log(4);
    CPacketManager* manager = CPacketManager::instance();
    EXPECT_EQ(log.count("CPacketManager: System Policy\n"), 1U);
    void* block = manager->malloc(100);
    EXPECT_EQ(counting.lastSize, 100U);
    char text[8];
    manager->memcpy(text, "packets", 8);
    manager->free(block);
    manager->free(nullptr);
    EXPECT_EQ(counting.frees, 2);
    EXPECT_EQ(counting.copies, 1);
    EXPECT_EQ(CPacketManager::getPoolBuffer(), nullptr);
    EXPECT_EQ(manager->getBufferSize() + manager->getFreeSize(), 0U);
    manager->dumpNodes();
    EXPECT_EQ(log.count("CPacketManager dump: SYS Policy\n"), 1U);
}

TEST(PacketManager, FreezesItsConfigurationAtTheFirstUse) {
    CPacketManager::config(static_cast<CPacketManager::Policy>(0), nullptr, nullptr);
    CPacketManager* manager = configure(CPacketManager::PolicyPool, 4096);
    LogCapture log(3);
    CPacketManager::PoolParameter param;
    CPacketManager::config(CPacketManager::PolicySystem, nullptr, &param);
    EXPECT_EQ(log.count("PacketManagerInternal::config() failured: Packet Manager has been configured!\n"),
              1U);
    EXPECT_EQ(manager->getBufferSize(), 4096U);
    EXPECT_NE(CPacketManager::getPoolBuffer(), nullptr);
    EXPECT_EQ(manager->malloc(0), nullptr);
    manager->free(nullptr);
}

TEST(PacketManager, CopiesByTheOperatorFromPoolToPoolOnly) {
    CountingOperator counting;
    CPacketManager::MemoryOperator memop = counting.get();
    CPacketManager::config(CPacketManager::PolicyPoolData, &memop, nullptr);
    CPacketManager* manager = CPacketManager::instance();
    char outside[16] = "outside";
    auto* a = static_cast<char*>(manager->malloc(100));
    auto* b = static_cast<char*>(manager->malloc(100));
    EXPECT_EQ(manager->memcpy(a, outside, sizeof outside), a);
    manager->memcpy(outside, a, sizeof outside);
    EXPECT_EQ(counting.copies, 0);
    manager->memcpy(b, a, sizeof outside);
    EXPECT_EQ(counting.copies, 1);
    EXPECT_STREQ(b, "outside");
    EXPECT_EQ(manager->getFreeSize(), 0x200000U - 2048);

    LogCapture log(4);
    manager->dumpNodes();
    EXPECT_EQ(log.count("SYS Policy"), 1U);
}

TEST(PacketManager, DumpsTheFreeListsOfAPool) {
    LogCapture log(4);
    CPacketManager* manager = configure(CPacketManager::PolicyPool, 3072);
    EXPECT_EQ(log.count("malloc total(3072) pagesize(1024)blockCount (3) ManagermentSize(160)\n"), 1U);
    EXPECT_EQ(log.count("                AddrRange(0x"), 1U);
    manager->dumpNodes();
    EXPECT_EQ(log.count("CPacketManager: dump FreeList\n"), 1U);
    EXPECT_EQ(log.count("BufferList id:1, order(2) head(0x"), 1U);
    EXPECT_EQ(log.count("bufflist(0)id: 0, realIdx(2)self(0x"), 1U);
    EXPECT_EQ(log.count("bufflist(1)id: 0, realIdx(0)self(0x"), 1U);
}

TEST(PacketManager, UnknownPolicyBuildsAPoolThatServesNobody) {
    CPacketManager* manager = configure(static_cast<CPacketManager::Policy>(9));
    EXPECT_NE(CPacketManager::getPoolBuffer(), nullptr);
    EXPECT_EQ(manager->getBufferSize() + manager->getFreeSize(), 0U);
    manager->free(manager->malloc(100));
    LogCapture log(4);
    manager->dumpNodes();
    EXPECT_EQ(log.count("bufflist(11)id: 0, realIdx(0)"), 1U);
}

TEST(PacketManagerDeathTest, RefusesBadParametersAndEmptyOperations) {
    const auto with = [](size_t totalSize, size_t chunkSize, size_t alignSize) {
        CPacketManager::PoolParameter param{totalSize, chunkSize, alignSize};
        CPacketManager::config(CPacketManager::PolicyPool, nullptr, &param);
    };
    EXPECT_DEATH(
        with(4096, 512, 4),
        "param->chunkSize >= 1024 && param->chunkSize > 0 && param->totalSize % param->chunkSize == 0");
    EXPECT_DEATH(with(4097, 1024, 4), "param->totalSize % param->chunkSize == 0");
    EXPECT_DEATH(with(4096, 1024, 3), "param->alignSize >= 4");
    CPacketManager::MemoryOperator memop;
    memop.memcpy = {};
    EXPECT_DEATH(CPacketManager::config(CPacketManager::PolicySystem, &memop, nullptr),
                 "!memop->malloc.empty\\(\\) && !memop->free.empty\\(\\) && !memop->memcpy.empty\\(\\)");
}

TEST(PacketManagerDeathTest, GivesTheRegionBackAtExit) {
    static CountingOperator s_counting;
    const auto run = [] {
        CPacketManager::MemoryOperator memop = s_counting.get();
        CPacketManager::config(CPacketManager::PolicyPool, &memop, nullptr);
        std::atexit([] { std::fprintf(stderr, "frees: %d\n", s_counting.frees.load()); });
        CPacketManager::instance();
        // Registered last, so it runs first.
        std::atexit([] { std::fprintf(stderr, "before: %d\n", s_counting.frees.load()); });
        std::exit(0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "before: 0\nfrees: 1");
}

}  // namespace
