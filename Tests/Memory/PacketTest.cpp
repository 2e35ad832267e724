#include "Memory/Packet.h"

#include "Memory/OldPacketInternal.h"
#include "Memory/PoolFixture.h"
#include "Memory/SharePacketHelper.h"

using namespace Tests;
using namespace Tovra::Memory;

namespace {

// What a deleter was told.
struct Deletions {
    std::vector<std::pair<void*, unsigned long>> told;

    void take(void* what, unsigned long bytes) { told.emplace_back(what, bytes); }
    CPacket::Deleter deleter() { return {&Deletions::take, this}; }
};

char* bytesOf(const CPacket& packet) { return static_cast<char*>(packet.getBuffer()); }

// Fills everything that is a packet's own; the sanitizers tell what is out of bounds.
void fill(const CPacket& packet, size_t ext) {
    std::memset(packet.getBuffer(), 1, packet.capacity());
    if (packet.getExtraData() != nullptr) std::memset(packet.getExtraData(), 2, ext);
}

// The bytes that a packet's block has behind its data.
size_t tailOf(size_t ext, size_t align = 4) { return (ext + kRecordSize + align - 1) / align * align; }

TEST(Packet, OwnBytesExtraAreaAndRecordShareABlockOfThePool) {
    CPacketManager* manager = configure(CPacketManager::PolicyPool);
    for (const size_t ext : {0U, 1U, 5U, 255U, 256U, 300U}) {
        for (const size_t size : {0U, 1U, 900U, 1000U, 5000U, 65536U}) {
            const CPacket packet(size, ext);
            const size_t block = blockFor((size + 3) / 4 * 4 + tailOf(ext));
            EXPECT_EQ(manager->getFreeSize(), 0x200000 - block);
            EXPECT_EQ(packet.size(), size);
            EXPECT_EQ(packet.capacity(), block - tailOf(ext));
            // One byte holds the size of the extra area.
            EXPECT_EQ(packet.getExtraSize(), ext % 256);
            EXPECT_EQ(packet.getExtraData(), ext % 256 == 0 ? nullptr : bytesOf(packet) + packet.capacity());
            fill(packet, ext);
        }
    }
}

// An alignment of 100 counts as the power of two below.
TEST(Packet, RecordIsAlignedWhereverTheBlockStarts) {
    CountingOperator counting;
    configure(CPacketManager::PolicySystem, {4096, 1024, 100}, &counting);
    for (; counting.shift < 8; ++counting.shift) {
        for (const size_t size : {0U, 60U, 64U, 65U}) {
            const CPacket packet(size, size);
            EXPECT_EQ(packet.capacity(), (size + 63) / 64 * 64);
            EXPECT_EQ(counting.lastSize, packet.capacity() + tailOf(size, 64));
            fill(packet, size);
            EXPECT_EQ(packet.size(), size);
        }
    }
}

TEST(Packet, AppendsWhatFitsAndIsInvalidWithoutSpace) {
    configure(CPacketManager::PolicyPool, {2048});
    CPacket packet(10, 0);
    EXPECT_TRUE(packet.resize(0));
    std::string first(100, 'x');
    std::string more(2048, 'y');
    const size_t room = packet.capacity() - 100;
    EXPECT_EQ(packet.putBuffer(first.data(), 100), 100U);
    EXPECT_EQ(packet.putBuffer(more.data(), 2048), room);
    EXPECT_EQ(packet.putBuffer(more.data(), 1), 0U);
    EXPECT_EQ(std::string(bytesOf(packet), packet.size()), first + more.substr(0, room));
    EXPECT_FALSE(packet.resize(packet.capacity() + 1));
    EXPECT_EQ(packet.size(), packet.capacity());
    EXPECT_TRUE(packet.resize(packet.capacity()));

    // There is no block left for another of that size until this one is dropped.
    LogCapture log(4);
    const CPacket none(1000, 0);
    EXPECT_FALSE(none.valid());
    EXPECT_EQ(log.count("PacketInternal::create(): NO enough, need size(1000) ext(0)\n"), 1U);
    packet = none;
    EXPECT_EQ(packet.size() + packet.capacity() + packet.putBuffer(&packet, 1) + packet.getExtraSize(), 0U);
    EXPECT_TRUE(packet.getBuffer() == nullptr && packet.getExtraData() == nullptr && !packet.resize(0));
    EXPECT_TRUE(CPacket(1000, 0).valid());
}

TEST(Packet, DataInThePoolHasTheWholeBlockAndTheOperatorsCopy) {
    static CountingOperator counting;  // takes the region back at exit
    CPacketManager* manager = configure(CPacketManager::PolicyPoolData, {4096}, &counting);
    {
        LogCapture log(4);
        CPacket packet(1025, 20);
        EXPECT_EQ(packet.capacity(), 2048U);
        fill(packet, 20);
        const CPacket none(0, 0);
        EXPECT_TRUE(none.valid() && none.getBuffer() == nullptr);
        EXPECT_EQ(manager->getFreeSize(), 2048U);
        EXPECT_FALSE(CPacket(2049, 1).valid());
        EXPECT_EQ(log.count("PacketInternal::create(): 2 NO enough, need size(2049) ext(1)\n"), 1U);
        EXPECT_FALSE(CPacket(1, SIZE_MAX).valid());
        EXPECT_EQ(log.count("PacketInternal::create(): malloc failured! size("), 1U);

        char outside[] = "outside";
        packet.resize(0);
        packet.putBuffer(outside, 8);
        manager->memcpy(outside, packet.getBuffer(), 8);
        EXPECT_EQ(counting.copies, 0);
        CPacket other(8, 0);
        other.resize(0);
        other.putBuffer(packet.getBuffer(), 8);
        EXPECT_EQ(counting.copies, 1);
        manager->dumpNodes();
        EXPECT_EQ(log.count("CPacketManager dump: SYS Policy\n"), 1U);
    }
    EXPECT_EQ(manager->getFreeSize(), 4096U);
}

TEST(Packet, SubPacketsShareTheBytesAndKeepThemAlive) {
    CPacketManager* manager = configure(CPacketManager::PolicyPool);
    CPacket grandchild;
    {
        const CPacket parent(1000, 0);
        CPacket child(parent, 100, 200, 9);
        EXPECT_EQ(bytesOf(child), bytesOf(parent) + 100);
        fill(child, 9);
        grandchild = CPacket(child, 150, 50, 0);
        EXPECT_TRUE(child.resize(10));
        char tail[300] = "tail";
        EXPECT_EQ(child.putBuffer(tail, 300), 190U);
        EXPECT_STREQ(bytesOf(parent) + 110, "tail");
        bytesOf(parent)[299] = 'z';
    }
    EXPECT_EQ(grandchild.size(), 50U);
    EXPECT_EQ(bytesOf(grandchild)[49], 'z');
    EXPECT_EQ(manager->getFreeSize(), 0x200000U - 2048);
    grandchild.reset();
    EXPECT_EQ(manager->getFreeSize(), 0x200000U);
}

TEST(Packet, RefusesSizesThatNoBlockOrParentHas) {
    CountingOperator counting;
    configure(CPacketManager::PolicySystem, {}, &counting);
    LogCapture log(4);
    for (const size_t size : {SIZE_MAX, SIZE_MAX - 200, size_t{UINT32_MAX} + 1})
        EXPECT_FALSE(CPacket(size, 0).valid());
    EXPECT_FALSE(CPacket(1, SIZE_MAX - 100).valid());
    EXPECT_EQ(log.count("NO enough"), 4U);
    EXPECT_EQ(counting.lastSize, 0U);

    const CPacket parent(100, 0);
    for (const auto& [offset, size] : {std::pair<size_t, size_t>(100, 0), {99, 2}, {50, SIZE_MAX - 10}})
        EXPECT_FALSE(CPacket(parent, offset, size, 0).valid());
    EXPECT_FALSE(CPacket(CPacket(), 0, 0, 0).valid());
    EXPECT_EQ(log.count("create() offset or size is invalid!! huge_size(100), offset(99), size(2)\n"), 1U);
    EXPECT_EQ(log.count("invalid!! huge_size(0), offset(0), size(0)\n"), 1U);
    EXPECT_FALSE(CPacket(parent, 0, 1, SIZE_MAX).valid());
    EXPECT_EQ(log.count("malloc failured!"), 1U);
    EXPECT_TRUE(CPacket(parent, 99, 0, 0).valid());
    EXPECT_EQ(CPacket(parent, 0, 100, 0).putBuffer(bytesOf(parent), 1), 0U);
}

TEST(Packet, ForeignBytesNeedNoPoolAndTheirDeleterHearsTheSizeInUse) {
    configure(CPacketManager::PolicyNoPool);
    LogCapture log(6);
    EXPECT_FALSE(CPacket(100, 0).valid());
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.count("tracepoint:\n"), 1U);

    Deletions deletions;
    char buffer[100];
    CPacket packet(buffer, 100, 5, deletions.deleter());
    EXPECT_EQ(packet.getBuffer(), buffer);
    EXPECT_EQ(packet.getExtraSize(), 5U);
    fill(packet, 5);
    packet.resize(60);
    packet = CPacket(packet, 10, 10, 0);
    EXPECT_TRUE(packet.valid() && deletions.told.empty());
    packet.reset();
    CPacket(buffer, 100, deletions.deleter()).reset();
    CPacket(buffer, 100, CPacket::Deleter()).reset();
    EXPECT_EQ(deletions.told, (decltype(deletions.told){{buffer, 60}, {buffer, 100}}));
}

TEST(Packet, LateBufferIsTakenOverAndItsDeleterHearsTheCapacity) {
    Deletions deletions;
    char buffers[2][50];
    CPacket packet(40U, deletions.deleter(), &deletions, 3);
    EXPECT_EQ(packet.getBuffer(), nullptr);
    EXPECT_EQ(packet.size(), 40U);
    std::memset(packet.getExtraData(), 1, 3);
    EXPECT_TRUE(CPacket(packet, 10, 10, 0).valid());
    EXPECT_EQ(packet.putBuffer(buffers[0], 50), 50U);
    EXPECT_EQ(packet.putBuffer(buffers[1], 20), 20U);
    EXPECT_EQ(packet.getBuffer(), buffers[1]);
    EXPECT_EQ(packet.size(), 20U);
    EXPECT_EQ(packet.capacity(), 40U);
    packet.reset();
    // The second one was given no buffer, so there is nothing to give back.
    CPacket(40U, deletions.deleter(), &deletions, 0).reset();
    EXPECT_EQ(deletions.told, (decltype(deletions.told){{&deletions, 40}}));
}

TEST(Packet, HandlesShareOnePacket) {
    Deletions deletions;
    char buffer[10];
    CSharePacketHelper* helper = CSharePacketHelper::instance();
    CPacket a(buffer, 10, deletions.deleter());
    CPacket b(a);
    b = a;
    CPacket c = helper->toOriginalPacket(helper->toDescribePacket(a));
    a.reset();
    b.resize(4);
    EXPECT_EQ(c.size(), 4U);
    b = CPacket();
    EXPECT_TRUE(deletions.told.empty());
    c = CPacket(buffer, 10, CPacket::Deleter());
    EXPECT_EQ(deletions.told.size(), 1U);
    EXPECT_EQ(helper->initSharePacket(nullptr), 0);
}

TEST(Packet, CountsAndPoolHoldUnderEightThreads) {
    CPacketManager* manager = configure(CPacketManager::PolicyPool);
    const CPacket shared(4000, 0);
    onThreads(8, [&shared](unsigned seed) {
        std::mt19937 random(seed);
        const char mark = static_cast<char>(seed);
        std::vector<CPacket> packets(16);
        for (int step = 0; step < 5000; ++step) {
            CPacket& packet = packets[random() % packets.size()];
            const CPacket& other = packets[random() % packets.size()];
            // Only this thread writes to what it made: another mark means that two packets overlap.
            if (packet.getExtraSize() == 1) {
                EXPECT_EQ(bytesOf(packet)[packet.size() - 1], mark);
            }
            const auto form = random() % 4;
            packet = form == 0   ? CPacket(1 + random() % 9000, 1)
                     : form == 1 ? other
                     : form == 2 ? CPacket(shared, random() % 4000, 1, 4)
                                 : CPacket(other, 0, other.size(), other.getExtraSize());
            if (form == 0 && packet.valid()) std::memset(packet.getBuffer(), mark, packet.size());
        }
    });
    EXPECT_EQ(manager->getFreeSize(), 0x200000U - 8192);
}

TEST(PacketDeathTest, StopsAtARecordOfNoKind) {
    OldPacketInternal packet(static_cast<OldPacketInternal::Kind>(7), {}, {});
    EXPECT_DEATH(packet.release(),
                 "assertion \\(0\\) failed in .*: PacketInternal::destroy\\(\\): unreachable!");
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
