#include "Memory/Packet.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "Memory/OldPacketInternal.h"
#include "Memory/PoolFixture.h"
#include "Memory/SharePacketHelper.h"
#include "Support/LogCapture.h"

using namespace Tovra::Memory;
using Support::LogCapture;
using Tests::configure;
using Tests::CountingOperator;

namespace {

// What a deleter was told.
struct Deletions {
    int calls = 0;
    void* pointer = nullptr;
    unsigned long size = 0;

    void take(void* what, unsigned long bytes) {
        ++calls;
        pointer = what;
        size = bytes;
    }
    CPacket::Deleter deleter() { return {&Deletions::take, this}; }
};

char* bytesOf(const CPacket& packet) { return static_cast<char*>(packet.getBuffer()); }

char* extraOf(const CPacket& packet) { return static_cast<char*>(packet.getExtraData()); }

// The bytes that a packet's block has behind its data.
size_t tailOf(size_t ext) { return (ext + kRecordSize + 3) / 4 * 4; }

TEST(Packet, OwnBytesExtraAreaAndRecordShareABlockOfThePool) {
    CPacketManager* manager = configure(CPacketManager::PolicyPool);
    for (size_t ext : {0U, 1U, 5U, 128U, 255U}) {
        for (size_t size : {0U, 1U, 900U, 1000U, 5000U, 65536U}) {
            const CPacket packet(size, ext);
            size_t block = 1024;
            while (block < (size + 3) / 4 * 4 + tailOf(ext))
                block *= 2;
            EXPECT_EQ(manager->getFreeSize(), 0x200000 - block);
            EXPECT_EQ(packet.size(), size);
            EXPECT_EQ(packet.capacity(), block - tailOf(ext));
            EXPECT_EQ(packet.getExtraSize(), ext);
            EXPECT_EQ(extraOf(packet), ext == 0 ? nullptr : bytesOf(packet) + packet.capacity());
            std::memset(packet.getBuffer(), 1, packet.capacity());
            if (ext != 0) std::memset(packet.getExtraData(), 2, ext);
        }
    }
    EXPECT_EQ(manager->getFreeSize(), 0x200000U);
}

// An operator whose blocks start anywhere; the sanitizers tell what is misaligned or out of bounds.
TEST(Packet, RecordIsAlignedWhereverTheBlockStarts) {
    struct Shifting {
        size_t shift = 0;
        size_t last = 0;
        void* malloc(size_t size) { return static_cast<char*>(std::malloc((last = size) + shift)) + shift; }
        void free(void* block) { std::free(static_cast<char*>(block) - shift); }
    } shifting;
    CPacketManager::MemoryOperator memop;
    memop.malloc = {&Shifting::malloc, &shifting};
    memop.free = {&Shifting::free, &shifting};
    CPacketManager::config(CPacketManager::PolicySystem, &memop, nullptr);
    for (; shifting.shift < 8; ++shifting.shift) {
        for (size_t ext = 0; ext < 9; ++ext) {
            const CPacket packet(ext * 3, ext);
            EXPECT_EQ(shifting.last, (ext * 3 + 3) / 4 * 4 + tailOf(ext));
            std::memset(packet.getBuffer(), 1, packet.capacity());
            if (ext != 0) std::memset(packet.getExtraData(), 2, ext);
            EXPECT_EQ(packet.size(), ext * 3);
        }
    }
}

TEST(Packet, LayoutFollowsTheLargestPowerOfTwoInTheAlignment) {
    CountingOperator counting;
    CPacketManager::MemoryOperator memop = counting.get();
    CPacketManager::PoolParameter param;
    param.alignSize = 100;
    CPacketManager::config(CPacketManager::PolicySystem, &memop, &param);
    const CPacket packet(65, 1);
    EXPECT_EQ(packet.capacity(), 128U);
    EXPECT_EQ(counting.lastSize, 128 + (1 + kRecordSize + 63) / 64 * 64);
}

TEST(Packet, AppendsWhatFitsAndResizesWithinItsCapacity) {
    configure(CPacketManager::PolicyPool);
    CPacket packet(10, 0);
    EXPECT_TRUE(packet.resize(0));
    std::vector<char> data(2048, 'x');
    EXPECT_EQ(packet.putBuffer(data.data(), 100), 100U);
    data.assign(2048, 'y');
    EXPECT_EQ(packet.putBuffer(data.data(), 2048), packet.capacity() - 100);
    EXPECT_EQ(packet.putBuffer(data.data(), 1), 0U);
    EXPECT_EQ(bytesOf(packet)[99], 'x');
    EXPECT_EQ(bytesOf(packet)[100], 'y');
    EXPECT_EQ(bytesOf(packet)[packet.capacity() - 1], 'y');
    EXPECT_FALSE(packet.resize(packet.capacity() + 1));
    EXPECT_EQ(packet.size(), packet.capacity());
    EXPECT_TRUE(packet.resize(7));
    EXPECT_TRUE(packet.resize(packet.capacity()));
}

TEST(Packet, DataInThePoolHasTheWholeBlock) {
    CPacketManager* manager = configure(CPacketManager::PolicyPoolData, 4096);
    {
        const CPacket packet(1025, 20);
        EXPECT_EQ(packet.capacity(), 2048U);
        EXPECT_EQ(manager->getFreeSize(), 2048U);
        std::memset(packet.getExtraData(), 3, 20);
        const CPacket none(0, 0);
        EXPECT_TRUE(none.valid());
        EXPECT_EQ(none.getBuffer(), nullptr);
        EXPECT_EQ(manager->getFreeSize(), 2048U);

        LogCapture log(4);
        EXPECT_FALSE(CPacket(2049, 1).valid());
        EXPECT_EQ(log.count("PacketInternal::create(): 2 NO enough, need size(2049) ext(1)\n"), 1U);
        EXPECT_FALSE(CPacket(1, SIZE_MAX).valid());
        EXPECT_EQ(log.count("PacketInternal::create(): malloc failured! size("), 1U);
    }
    EXPECT_EQ(manager->getFreeSize(), 4096U);
}

TEST(Packet, ExhaustedPoolGivesAnInvalidPacketUntilOneIsDropped) {
    configure(CPacketManager::PolicyPool, 2048);
    LogCapture log(4);
    CPacket first(1000, 0);
    CPacket second(100, 0);
    EXPECT_TRUE(first.valid());
    EXPECT_FALSE(second.valid());
    EXPECT_EQ(log.count("PacketInternal::create(): NO enough, need size(100) ext(0)\n"), 1U);
    EXPECT_EQ(second.size() + second.capacity() + second.putBuffer(&first, 1) + second.getExtraSize(), 0U);
    EXPECT_EQ(second.getBuffer(), nullptr);
    EXPECT_EQ(second.getExtraData(), nullptr);
    EXPECT_FALSE(second.resize(0));
    first = second;
    EXPECT_TRUE(CPacket(100, 0).valid());
}

TEST(Packet, SizesNearTheTopOfTheirTypeAreRefused) {
    CountingOperator counting;
    CPacketManager::MemoryOperator memop = counting.get();
    CPacketManager::config(CPacketManager::PolicySystem, &memop, nullptr);
    LogCapture log(4);
    for (const size_t size : {SIZE_MAX, SIZE_MAX - 200, size_t{UINT32_MAX} + 1})
        EXPECT_FALSE(CPacket(size, 0).valid());
    EXPECT_FALSE(CPacket(1, SIZE_MAX - 100).valid());
    EXPECT_EQ(log.count("NO enough"), 4U);
    EXPECT_EQ(counting.mallocs, 0);

    const CPacket parent(100, 0);
    EXPECT_FALSE(CPacket(parent, 50, SIZE_MAX - 10, 0).valid());
    EXPECT_FALSE(CPacket(parent, 0, 1, SIZE_MAX).valid());
    EXPECT_EQ(log.count("malloc failured!"), 1U);
}

TEST(Packet, SubPacketsShareTheBytesAndKeepThemAlive) {
    CPacketManager* manager = configure(CPacketManager::PolicyPool);
    CPacket grandchild;
    {
        const CPacket parent(1000, 0);
        std::memset(parent.getBuffer(), 'a', 1000);
        CPacket child(parent, 100, 200, 9);
        EXPECT_EQ(bytesOf(child), bytesOf(parent) + 100);
        EXPECT_EQ(child.capacity(), 200U);
        std::memset(child.getExtraData(), 1, child.getExtraSize());
        grandchild = CPacket(child, 150, 50, 0);
        EXPECT_TRUE(child.resize(10));
        EXPECT_EQ(grandchild.size(), 50U);
        char tail[300] = "tail";
        EXPECT_EQ(child.putBuffer(tail, 300), 190U);
        EXPECT_STREQ(bytesOf(parent) + 110, "tail");
        bytesOf(grandchild)[49] = 'z';
        EXPECT_EQ(bytesOf(parent)[299], 'z');
    }
    EXPECT_EQ(bytesOf(grandchild)[0], '\0');
    EXPECT_EQ(bytesOf(grandchild)[49], 'z');
    EXPECT_EQ(manager->getFreeSize(), 0x200000U - 2048);
    grandchild.reset();
    EXPECT_FALSE(grandchild.valid());
    EXPECT_EQ(manager->getFreeSize(), 0x200000U);
}

TEST(Packet, SubPacketsMustLieWithinTheParentsSize) {
    char buffer[100] = {};
    const CPacket parent(buffer, 100, CPacket::Deleter());
    LogCapture log(3);
    EXPECT_FALSE(CPacket(parent, 100, 0, 0).valid());
    EXPECT_FALSE(CPacket(parent, 99, 2, 0).valid());
    EXPECT_FALSE(CPacket(CPacket(), 0, 0, 0).valid());
    EXPECT_EQ(log.count("create() offset or size is invalid!! huge_size(100), offset(99), size(2)\n"), 1U);
    EXPECT_EQ(log.count("invalid!! huge_size(0), offset(0), size(0)\n"), 1U);
    EXPECT_TRUE(CPacket(parent, 99, 0, 0).valid());
    CPacket whole(parent, 0, 100, 0);
    EXPECT_EQ(whole.putBuffer(buffer, 1), 0U);
}

TEST(Packet, DeleterOfTheCallersBufferHearsTheSizeInUse) {
    Deletions deletions;
    char buffer[100];
    {
        CPacket sub;
        {
            CPacket packet(buffer, 100, 5, deletions.deleter());
            EXPECT_EQ(packet.getBuffer(), buffer);
            EXPECT_EQ(packet.getExtraSize(), 5U);
            std::memset(packet.getExtraData(), 1, 5);
            packet.resize(60);
            sub = CPacket(packet, 10, 10, 0);
        }
        EXPECT_EQ(deletions.calls, 0);
    }
    EXPECT_EQ(deletions.calls, 1);
    EXPECT_EQ(deletions.pointer, buffer);
    EXPECT_EQ(deletions.size, 60U);
    CPacket(buffer, 100, deletions.deleter()).reset();
    EXPECT_EQ(deletions.size, 100U);
}

TEST(Packet, LateBufferIsTakenOverAndItsDeleterHearsTheCapacity) {
    Deletions deletions;
    char buffers[2][50];
    int argument = 0;
    {
        CPacket packet(40U, deletions.deleter(), &argument, 3);
        EXPECT_EQ(packet.getBuffer(), nullptr);
        EXPECT_EQ(packet.size(), 40U);
        EXPECT_EQ(packet.capacity(), 40U);
        std::memset(packet.getExtraData(), 1, 3);
        EXPECT_TRUE(CPacket(packet, 10, 10, 0).valid());
        EXPECT_EQ(packet.putBuffer(buffers[0], 50), 50U);
        EXPECT_EQ(packet.putBuffer(buffers[1], 20), 20U);
        EXPECT_EQ(packet.getBuffer(), buffers[1]);
        EXPECT_EQ(packet.size(), 20U);
        EXPECT_EQ(packet.capacity(), 40U);
        EXPECT_EQ(deletions.calls, 0);
    }
    EXPECT_EQ(deletions.calls, 1);
    EXPECT_EQ(deletions.pointer, &argument);
    EXPECT_EQ(deletions.size, 40U);
    CPacket(40U, deletions.deleter(), &argument, 0).reset();
    EXPECT_EQ(deletions.calls, 1) << "no buffer, nothing to give back";
}

TEST(Packet, ExtraSizeIsKeptInOneByte) {
    const CPacket large(1, 300);
    EXPECT_EQ(large.getExtraSize(), 44U);
    std::memset(large.getExtraData(), 1, 300);
    const CPacket none(1, 256);
    EXPECT_EQ(none.getExtraSize(), 0U);
    EXPECT_EQ(none.getExtraData(), nullptr);
}

TEST(Packet, WithoutAPoolOnlyForeignBytesMakePackets) {
    configure(CPacketManager::PolicyNoPool);
    LogCapture log(6);
    EXPECT_FALSE(CPacket(100, 0).valid());
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.count("tracepoint:\n"), 1U);
    char buffer[100];
    const CPacket wrapped(buffer, 100, CPacket::Deleter());
    EXPECT_TRUE(CPacket(wrapped, 1, 2, 0).valid());
    EXPECT_TRUE(CPacket(10U, CPacket::Deleter(), nullptr, 0).valid());
}

TEST(Packet, HandlesShareOnePacket) {
    Deletions deletions;
    char buffer[10];
    CPacket a(buffer, 10, deletions.deleter());
    CPacket b(a);
    CPacket& alias = a;
    a = alias;
    b = a;
    const CPacket c = CSharePacketHelper::instance()->toDescribePacket(a);
    CPacket d = CSharePacketHelper::instance()->toOriginalPacket(c);
    a.reset();
    b = CPacket();
    b = a;
    d.resize(4);
    EXPECT_EQ(c.size(), 4U);
    EXPECT_EQ(deletions.calls, 0);
    d = CPacket(buffer, 10, CPacket::Deleter());
    const_cast<CPacket&>(c).reset();
    EXPECT_EQ(deletions.calls, 1);
    EXPECT_EQ(CSharePacketHelper::instance()->initSharePacket(nullptr), 0);
}

TEST(Packet, CountsAndPoolHoldUnderEightThreads) {
    CPacketManager* manager = configure(CPacketManager::PolicyPool);
    const CPacket shared(4000, 0);
    std::memset(shared.getBuffer(), 's', 4000);
    const auto work = [&shared](unsigned seed) {
        std::mt19937 random(seed);
        std::vector<CPacket> packets(16);
        for (int step = 0; step < 5000; ++step) {
            CPacket& packet = packets[random() % packets.size()];
            const CPacket& other = packets[random() % packets.size()];
            switch (random() % 4) {
                case 0:
                    packet = CPacket(random() % 9000, random() % 256);
                    break;
                case 1:
                    packet = other;
                    break;
                case 2:
                    packet = CPacket(shared, random() % 4000, 1, 4);
                    break;
                default:
                    packet = CPacket(other, 0, other.size(), 0);
                    break;
            }
            if (packet.size() == 1 && packet.getExtraSize() == 4) {
                EXPECT_EQ(bytesOf(packet)[0], 's');
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 8; ++seed)
        threads.emplace_back(work, seed);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(manager->getFreeSize(), 0x200000U - 8192);
}

TEST(PacketDeathTest, StopsAtARecordOfNoKind) {
    auto* packet =
        new OldPacketInternal(static_cast<OldPacketInternal::Kind>(7), {nullptr, 0, 0}, {nullptr, 0});
    EXPECT_DEATH(packet->release(),
                 "assertion \\(0\\) failed in .*: PacketInternal::destroy\\(\\): unreachable!");
    delete packet;
}

#ifdef __SANITIZE_ADDRESS__
TEST(PacketDeathTest, UseAfterReleaseIsCaughtInThePoolToo) {
    configure(CPacketManager::PolicyPool);
    CPacket packet(100, 0);
    volatile char* bytes = bytesOf(packet);
    packet.reset();
    EXPECT_DEATH(bytes[0] = 1, "use-after-poison");
}
#endif

}  // namespace
