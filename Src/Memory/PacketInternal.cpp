#include "Memory/Detail/PacketInternal.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo3/Report.h"
#include "Memory/Arithmetic.h"
#include "Memory/OldPacketInternal.h"
#include "Memory/PacketManagerInternal.h"

// How packets are made. All sums saturate, so a size near the top of its type ends as one that no allocator
// has instead of wrapping to a small block.

namespace Tovra::Memory {

static constexpr char kSource[] = "Src/Memory/Packet";

namespace {

using Kind = OldPacketInternal::Kind;

size_t roundUp(size_t size, size_t align) { return saturatedSum(size, align - 1) & ~(align - 1); }

// Extra area and record; see the layout at the record.
size_t tailSize(const PacketManagerInternal& manager, size_t ext) {
    return roundUp(saturatedSum(ext, kRecordSize), manager.alignSize());
}

// The record's place in a block with a tail.
void* recordIn(void* block, size_t blockSize) {
    const uintptr_t earliest = reinterpret_cast<uintptr_t>(block) + blockSize - kRecordSize;
    const size_t step = -earliest % alignof(OldPacketInternal);
    return static_cast<unsigned char*>(block) + (blockSize - kRecordSize + step);
}

void* allocateTail(size_t tail) {
    void* block = tail <= kMaxBytes ? std::malloc(tail) : nullptr;
    if (block == nullptr) {
        FUNDO_REPORT_STATIC(Fundo::Detail::kError, "PacketInternal::create(): malloc failured! size(%zu)\n",
                            tail);
    }
    return block;
}

// Data, extra area and record in one block.
PacketInternal* createInBlock(PacketManagerInternal& manager, size_t size, size_t ext) {
    const size_t tail = tailSize(manager, ext);
    size_t blockSize = saturatedSum(roundUp(size, manager.alignSize()), tail);
    const bool possible = size <= UINT32_MAX && blockSize <= kMaxBytes;
    auto* block = static_cast<unsigned char*>(possible ? manager.malloc(&blockSize) : nullptr);
    if (block == nullptr) {
        Fundo::logInfo("PacketInternal::create(): NO enough, need size(%zu) ext(%zu)\n", size, ext);
        return nullptr;
    }
    const size_t room = blockSize - tail;
    return new (recordIn(block, blockSize))
        OldPacketInternal(Kind::own, {block, size, std::min<size_t>(room, UINT32_MAX)}, {block + room, ext});
}

// The data alone in a block of the pool.
PacketInternal* createBesideData(PacketManagerInternal& manager, size_t size, size_t ext) {
    void* data = nullptr;
    size_t capacity = size;
    if (size != 0) {
        data = size <= UINT32_MAX ? manager.malloc(&capacity) : nullptr;
        if (data == nullptr) {
            Fundo::logInfo("PacketInternal::create(): 2 NO enough, need size(%zu) ext(%zu)\n", size, ext);
            return nullptr;
        }
    }
    const size_t tail = tailSize(manager, ext);
    void* block = allocateTail(tail);
    if (block == nullptr) {
        manager.free(data);
        return nullptr;
    }
    return new (recordIn(block, tail))
        OldPacketInternal(Kind::own, {data, size, std::min<size_t>(capacity, UINT32_MAX)}, {block, ext});
}

// A packet whose bytes are the caller's; its extra area has a block of its own, which may fail unnoticed.
OldPacketInternal* createAround(void* buffer, size_t size, size_t ext) {
    PacketManagerInternal::instance();
    void* extra = ext != 0 && ext <= kMaxBytes ? std::malloc(ext) : nullptr;
    auto* packet = new (std::nothrow) OldPacketInternal(Kind::callers, {buffer, size, size}, {extra, ext});
    if (packet == nullptr) std::free(extra);
    return packet;
}

}  // namespace

PacketInternal* PacketInternal::create(size_t size, size_t ext) {
    PacketManagerInternal& manager = *PacketManagerInternal::instance();
    switch (manager.policy()) {
        case CPacketManager::PolicySystem:
        case CPacketManager::PolicyPool:
            return createInBlock(manager, size, ext);
        case CPacketManager::PolicyPoolData:
            return createBesideData(manager, size, ext);
        default:
            FUNDO_REPORT(Fundo::Detail::kDebug, "tracepoint:\n");
            return nullptr;
    }
}

PacketInternal* PacketInternal::create(const CPacket& parent, size_t offset, size_t size, size_t ext) {
    const size_t whole = parent.size();
    if (offset >= whole || size > whole - offset) {
        FUNDO_REPORT_STATIC(
            Fundo::Detail::kWarn,
            "PacketInternal::create() offset or size is invalid!! huge_size(%zu), offset(%zu), "
            "size(%zu)\n",
            whole, offset, size);
        return nullptr;
    }
    const size_t tail = tailSize(*PacketManagerInternal::instance(), ext);
    void* block = allocateTail(tail);
    if (block == nullptr) return nullptr;
    // A late-buffer parent may still be without bytes.
    auto* data = static_cast<unsigned char*>(parent.getBuffer());
    if (data != nullptr) data += offset;
    return new (recordIn(block, tail)) OldPacketInternal(parent, {data, size, size}, {block, ext});
}

PacketInternal* PacketInternal::create(void* buffer, size_t size, const Deleter& deleter) {
    return create(buffer, size, 0, deleter);
}

PacketInternal* PacketInternal::create(void* buffer, size_t size, size_t ext, const Deleter& deleter) {
    OldPacketInternal* packet = createAround(buffer, size, ext);
    if (packet != nullptr) packet->setDeleter(deleter);
    return packet;
}

PacketInternal* PacketInternal::create(size_t size, const Deleter& deleter, void* arg, size_t ext) {
    OldPacketInternal* packet = createAround(nullptr, size, ext);
    if (packet != nullptr) packet->setLate(deleter, arg);
    return packet;
}

}  // namespace Tovra::Memory
