#include <map>

#include "Memory/BuddyPool.h"
#include "Memory/PoolFixture.h"

using namespace Tests;
using namespace Tovra::Memory;

namespace {

constexpr size_t kChunk = 1024;

BuddyPool makePool(size_t chunks) { return BuddyPool({chunks * kChunk, kChunk, 4}, {}); }

unsigned char* take(BuddyPool& pool, size_t size) { return static_cast<unsigned char*>(pool.malloc(&size)); }

// The block sizes of the free lists, in chunks, ascending; as the dump tells them.
std::vector<size_t> freeBlocks(BuddyPool& pool) {
    LogCapture log(4);
    pool.printNodeInfo();
    std::vector<size_t> blocks;
    for (const std::string& line : log.lines()) {
        int order = 0;
        const size_t at = line.find("bufflist(");
        if (at == std::string::npos) continue;
        std::sscanf(line.c_str() + at, "bufflist(%d)id: 0, realIdx(", &order);
        blocks.push_back(size_t{1} << order);
    }
    return blocks;
}

std::vector<size_t> binaryDigits(size_t number) {
    std::vector<size_t> digits;
    for (size_t digit = 1; digit <= number; digit *= 2)
        if ((number & digit) != 0) digits.push_back(digit);
    return digits;
}

// A pool and its live blocks. Each is filled with a byte of its own, so that an overlap shows.
struct Model {
    BuddyPool pool;
    std::map<unsigned char*, std::string> live = {};
    size_t used = 0;
    char mark = 0;

    bool allocate(size_t size) {
        size_t granted = size;
        auto* block = static_cast<unsigned char*>(pool.malloc(&granted));
        if (block == nullptr) return false;
        EXPECT_EQ(granted, blockFor(size));
        EXPECT_TRUE(pool.holds(block) && pool.holds(block + granted - 1));
        live[block] = std::string(granted, ++mark);
        std::memcpy(block, live[block].data(), granted);
        used += granted;
        return true;
    }

    void free(size_t which) {
        const auto block = std::next(live.begin(), static_cast<std::ptrdiff_t>(which % live.size()));
        const std::string& content = block->second;
        EXPECT_EQ(std::memcmp(block->first, content.data(), content.size()), 0) << "overlap";
        pool.free(block->first);
        used -= content.size();
        live.erase(block);
    }
};

TEST(Pool, FreedInAnyOrderThePoolIsWhole) {
    std::mt19937 random(20240);
    for (size_t chunks = 0; chunks <= 67; ++chunks) {
        SCOPED_TRACE(chunks);
        Model model{makePool(chunks)};
        ASSERT_EQ(freeBlocks(model.pool), binaryDigits(chunks));
        for (int step = 0; step < 400; ++step) {
            if (random() % 5 < 3) {
                model.allocate(1 + random() % (kChunk * 9));
            } else if (!model.live.empty()) {
                model.free(random());
            }
            ASSERT_EQ(model.pool.freeSize() + model.used, chunks * kChunk);
        }
        while (model.allocate(1)) {
        }
        ASSERT_EQ(model.pool.freeSize(), 0U);
        while (!model.live.empty())
            model.free(random());
        ASSERT_EQ(freeBlocks(model.pool), binaryDigits(chunks));
    }
}

TEST(Pool, GrantsPowersOfTwoOfChunksAndNothingForZeroOrTooMuch) {
    BuddyPool pool = makePool(2048);
    LogCapture log(4);
    const std::vector<std::pair<size_t, size_t>> cases = {
        {1, 1024},    {1024, 1024},  {1025, 2048}, {1024 * 1024 + 1, 2097152}, {2097152, 2097152},
        {2097153, 0}, {SIZE_MAX, 0}, {0, 0},       {(size_t{1} << 41) + 1, 0}};
    for (const auto& [size, granted] : cases) {
        size_t got = size;
        void* block = pool.malloc(&got);
        EXPECT_EQ(block == nullptr ? 0 : got, granted) << size;
        pool.free(block);
    }
    EXPECT_EQ(log.count("CPacket No Free Space\n"), 4U);
}

TEST(Pool, ServesFromTheTopEndAndReusesTheBlockFreedLast) {
    BuddyPool pool = makePool(8);
    unsigned char* const top = take(pool, 1);
    EXPECT_EQ(take(pool, 2048), top - 3 * kChunk);
    EXPECT_EQ(freeBlocks(pool), (std::vector<size_t>{1, 4}));
    pool.free(top);
    EXPECT_EQ(take(pool, 1), top);
}

TEST(Pool, AlignsItsFirstChunkAndOnceClosedHasNothing) {
    CountingOperator counting;
    BuddyPool pool({65536, 4096, 4}, counting.memop);
    EXPECT_EQ(counting.lastSize, 65536U + 4096);
    unsigned char* const first = take(pool, 65536);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 4096, 0U);
    EXPECT_LT(first - static_cast<unsigned char*>(pool.origin()), 4096);
    pool.close();
    EXPECT_EQ(counting.frees, 1);
    pool.free(first);
    EXPECT_EQ(pool.freeSize(), 0U);
    EXPECT_EQ(take(pool, 1), nullptr);
}

TEST(PoolDeathTest, StopsWithoutARegionAndAtPointersBelowIt) {
    CPacketManager::MemoryOperator empty;
    empty.malloc = +[](size_t) -> void* { return nullptr; };
    EXPECT_DEATH(BuddyPool({4096, 1024, 4}, empty), "NULL != m_pOriginBuffer");
    // More chunks than numbers for them: refused before a small region could be asked for.
    EXPECT_DEATH(makePool(size_t{1} << 53), "NULL != m_pOriginBuffer");
    BuddyPool pool = makePool(4);
    EXPECT_DEATH(pool.free(static_cast<unsigned char*>(pool.origin()) - 4096),
                 "assertion \\(id >= 0\\) failed in .*Pool_Free.*Src/Memory/PacketManager\\(");
}

#ifdef FUNDO_DEBUG_CHECKS
TEST(PoolDeathTest, DebugBuildNamesTheMisuse) {
    BuddyPool pool = makePool(4);
    unsigned char* const block = take(pool, 2048);
    EXPECT_DEATH(pool.free(block + 1024), "pointer inside a block");
    EXPECT_DEATH(pool.free(block + 16), "pointer inside a block");
    EXPECT_DEATH(pool.free(block + 4096), "pointer above the pool");
    unsigned char* const low = take(pool, 2048);
    pool.free(block);
    EXPECT_DEATH(pool.free(block), "block freed twice");
    pool.free(low);
    EXPECT_DEATH(pool.free(block), "block freed twice");
}
#endif

TEST(PacketManager, SystemPolicyCallsTheOperatorEveryTime) {
    LogCapture log(4);
    CountingOperator counting;
    CPacketManager* manager = configure(CPacketManager::PolicySystem, {}, &counting);
    EXPECT_EQ(log.count("CPacketManager: System Policy\n"), 1U);
    void* block = manager->malloc(100);
    EXPECT_EQ(counting.lastSize, 100U);
    manager->memcpy(block, "packets", 8);
    manager->free(block);
    manager->free(nullptr);
    EXPECT_EQ(counting.frees, 2);
    EXPECT_EQ(counting.copies, 1);
    EXPECT_EQ(CPacketManager::getPoolBuffer(), nullptr);
    EXPECT_EQ(manager->getBufferSize() + manager->getFreeSize(), 0U);
    manager->dumpNodes();
    EXPECT_EQ(log.count("CPacketManager dump: SYS Policy\n"), 1U);
}

TEST(PacketManager, PoolTellsItsListsAndItsConfigurationIsFrozen) {
    LogCapture log(4);
    CPacketManager* manager = configure(CPacketManager::PolicyPool, {3072});
    CPacketManager::config(CPacketManager::PolicySystem, nullptr, nullptr);
    EXPECT_EQ(manager->getBufferSize(), 3072U);
    EXPECT_NE(CPacketManager::getPoolBuffer(), nullptr);
    manager->dumpNodes();
    for (const char* line :
         {"PacketManagerInternal::config() failured: Packet Manager has been configured!\n",
          "malloc total(3072) pagesize(1024)blockCount (3) ManagermentSize(160)\n",
          "                AddrRange(0x", "CPacketManager: dump FreeList\n",
          "BufferList id:1, order(2) head(0x", "bufflist(0)id: 0, realIdx(2)self(0x",
          "bufflist(1)id: 0, realIdx(0)self(0x"})
        EXPECT_EQ(log.count(line), 1U) << line;
}

TEST(PacketManager, UnknownPolicyBuildsAPoolThatServesNobody) {
    CPacketManager* manager = configure(static_cast<CPacketManager::Policy>(9));
    EXPECT_EQ(manager->getBufferSize() + manager->getFreeSize(), 0U);
    manager->free(manager->malloc(100));
    LogCapture log(4);
    manager->dumpNodes();
    EXPECT_EQ(log.count("bufflist(11)id: 0, realIdx(0)"), 1U);
}

TEST(PacketManagerDeathTest, RefusesBadParametersAndEmptyOperations) {
    const auto with = [](CPacketManager::PoolParameter param) {
        CPacketManager::config(CPacketManager::PolicyPool, nullptr, &param);
    };
    const char* const measures =
        "param->chunkSize >= 1024 && param->chunkSize > 0 && param->totalSize % param->chunkSize == 0";
    EXPECT_DEATH(with({4096, 512, 4}), measures);
    EXPECT_DEATH(with({4097, 1024, 4}), measures);
    EXPECT_DEATH(with({4096, 1024, 3}), "param->alignSize >= 4");
    CPacketManager::MemoryOperator memop;
    memop.memcpy = {};
    EXPECT_DEATH(CPacketManager::config(CPacketManager::PolicySystem, &memop, nullptr),
                 "!memop->malloc.empty\\(\\) && !memop->free.empty\\(\\) && !memop->memcpy.empty\\(\\)");
}

TEST(PacketManagerDeathTest, GivesTheRegionBackAtExit) {
    static CountingOperator s_counting;
    const auto tell = [] { std::fprintf(stderr, "frees: %d\n", s_counting.frees); };
    const auto run = [&] {
        std::atexit(tell);
        configure(CPacketManager::PolicyPool, {}, &s_counting);
        // Registered last, so it runs first.
        std::atexit(tell);
        std::exit(0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "frees: 0\nfrees: 1");
}

}  // namespace
