#include "Memory/BuddyPool.h"

#include <sanitizer/asan_interface.h>

#include "Fundo/Fundo3/Detail/PlatformAssert.h"
#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo3/MutexGuard.h"
#include "Fundo3/Report.h"
#include "Memory/Arithmetic.h"

namespace Tovra::Memory {

static constexpr char kSource[] = "Src/Memory/PacketManager";

namespace {

using Fundo::Detail::MutexGuard;

#ifdef FUNDO_DEBUG_CHECKS
constexpr bool kCatchMisuse = true;
#else
constexpr bool kCatchMisuse = false;
#endif

constexpr char kFreeFunction[] = "void Tovra::Memory::PacketManagerInternal::Pool_Free(void *)";

}  // namespace

BuddyPool::BuddyPool(const CPacketManager::PoolParameter& param, const CPacketManager::MemoryOperator& memop)
    : m_totalSize(param.totalSize),
      m_chunkShift(floorLog2(param.chunkSize)),
      m_chunkCount(param.totalSize / param.chunkSize),
      m_orderCount(m_chunkCount == 0 ? 1 : floorLog2(m_chunkCount) + 1),
      m_memop(memop) {
    allocateRegion(param.chunkSize);
    carve();
    Fundo::logInfo("CPacketManager: malloc total(%zu) pagesize(%zu)blockCount (%d) ManagermentSize(%zu)\n",
                   m_totalSize, param.chunkSize, static_cast<int>(m_chunkCount),
                   (m_orderCount + m_chunkCount) * sizeof(ChunkNode));
    Fundo::logInfo("                AddrRange(%p-%p)\n", static_cast<void*>(m_alignedBuffer),
                   static_cast<void*>(m_alignedBuffer + m_totalSize));
}

// One chunk more than the pool has pays for the alignment.
void BuddyPool::allocateRegion(size_t chunkSize) {
    // Chunk numbers have 32 bits, signed.
    const bool countable = m_chunkCount < INT32_MAX;
    m_pOriginBuffer = countable ? m_memop.malloc((m_chunkCount + 1) * chunkSize) : nullptr;
    FUNDO_PLATFORM_ASSERT(NULL != m_pOriginBuffer, kSource);
    const uintptr_t origin = reinterpret_cast<uintptr_t>(m_pOriginBuffer);
    const uintptr_t aligned = (origin + chunkSize - 1) & (~chunkSize + 1);
    m_alignedBuffer = static_cast<unsigned char*>(m_pOriginBuffer) + (aligned - origin);
    ASAN_POISON_MEMORY_REGION(m_alignedBuffer, m_totalSize);
}

void BuddyPool::carve() {
    m_chunks.resize(slot(m_chunkCount));
    for (size_t i = 0; i < m_chunkCount; ++i)
        *node(i) = {static_cast<int32_t>(i), 0, m_alignedBuffer + (i << m_chunkShift), nullptr, nullptr};

    m_freeLists.resize(m_orderCount);
    size_t next = 0;
    for (unsigned order = m_orderCount; order-- > 0;) {
        ChunkNode& head = m_freeLists[order];
        head = {0, static_cast<int32_t>(order) + 1, nullptr, &head, &head};
        if ((m_chunkCount >> order & 1) == 0) continue;
        insertNode(node(next), order);
        next += size_t{1} << order;
    }
}

void BuddyPool::close() {
    void* region;
    {
        const MutexGuard guard(m_mutex);
        region = m_pOriginBuffer;
        m_pOriginBuffer = nullptr;
        m_orderCount = 0;
    }
    if (region == nullptr) return;
    ASAN_UNPOISON_MEMORY_REGION(m_alignedBuffer, m_totalSize);
    m_memop.free(region);
}

// The least order whose blocks hold that many bytes. A size of 0 wraps to an order that no pool has.
unsigned BuddyPool::orderOf(size_t size) const {
    const size_t halves = (size - 1) >> (m_chunkShift - 1);
    return halves == 0 ? 0 : floorLog2(halves);
}

void* BuddyPool::malloc(size_t* size) {
    const unsigned order = orderOf(*size);
    ChunkNode* block = take(order);
    if (block == nullptr) {
        Fundo::logInfo("CPacket No Free Space\n");
        return nullptr;
    }
    *size = blockSize(order);
    ASAN_UNPOISON_MEMORY_REGION(block->address, *size);
    return block->address;
}

BuddyPool::ChunkNode* BuddyPool::take(unsigned order) {
    const MutexGuard guard(m_mutex);
    if (order >= m_orderCount) return nullptr;
    const uint32_t fitting = m_filled >> order;
    if (fitting == 0) return nullptr;
    return split(order + static_cast<unsigned>(__builtin_ctz(fitting)), order);
}

// Serves from the top end of the block; the remainders stay free at its low end.
BuddyPool::ChunkNode* BuddyPool::split(unsigned from, unsigned to) {
    ChunkNode* block = m_freeLists[from].next;
    deleteNode(block);
    size_t index = static_cast<size_t>(block->index);
    while (from > to) {
        --from;
        insertNode(block, from);
        index += size_t{1} << from;
        block = node(index);
    }
    block->order = ~static_cast<int32_t>(to);
    return block;
}

void BuddyPool::free(void* pointer) {
    if (pointer == nullptr) return;
    const intptr_t offset = reinterpret_cast<intptr_t>(pointer) - reinterpret_cast<intptr_t>(m_alignedBuffer);
    const intptr_t id = offset >> m_chunkShift;
    FUNDO_ASSERT_IN(id >= 0, kFreeFunction);
    const size_t index = static_cast<size_t>(id);
    const MutexGuard guard(m_mutex);
    if (m_orderCount == 0) return;
    if (kCatchMisuse) checkAllocated(pointer, index);
    ASAN_POISON_MEMORY_REGION(pointer, blockSize(static_cast<unsigned>(~node(index)->order)));
    merge(index);
}

void BuddyPool::merge(size_t index) {
    ChunkNode* block = node(index);
    unsigned code = static_cast<unsigned>(-block->order);
    while (code < m_orderCount) {
        const size_t half = size_t{1} << (code - 1);
        const size_t other = index ^ half;
        if (other >= m_chunkCount) break;
        ChunkNode* buddy = node(other);
        if (buddy->order != static_cast<int32_t>(code)) break;
        deleteNode(buddy);
        block->order = 0;
        if (other < index) block = buddy;
        index &= ~half;
        ++code;
    }
    insertNode(block, code - 1);
}

void BuddyPool::insertNode(ChunkNode* node, unsigned order) {
    ChunkNode* head = &m_freeLists[order];
    node->order = static_cast<int32_t>(order) + 1;
    node->prev = head;
    node->next = head->next;
    head->next->prev = node;
    head->next = node;
    m_filled |= uint32_t{1} << order;
}

void BuddyPool::deleteNode(ChunkNode* node) {
    // Both neighbours are the same node only if it is the head of a list that gets empty.
    if (node->prev == node->next) m_filled &= ~(uint32_t{1} << (node->order - 1));
    node->prev->next = node->next;
    node->next->prev = node->prev;
    node->order = 0;
}

void BuddyPool::checkAllocated(const void* pointer, size_t index) {
    const char* misuse = nullptr;
    if (index >= m_chunkCount) {
        misuse = "pointer above the pool";
    } else if (node(index)->order > 0) {
        misuse = "block freed twice";
    } else if (node(index)->order == 0 || node(index)->address != pointer) {
        misuse = "pointer inside a block, or a block freed twice";
    }
    if (misuse == nullptr) return;
    Fundo::Detail::assertionFailedMsg("allocated", misuse, kFreeFunction, kSource, __LINE__);
}

size_t BuddyPool::freeSize() {
    const MutexGuard guard(m_mutex);
    size_t size = 0;
    for (unsigned order = 0; order < m_orderCount; ++order) {
        const ChunkNode* head = &m_freeLists[order];
        for (const ChunkNode* node = head->next; node != head; node = node->next)
            size += blockSize(order);
    }
    return size;
}

void BuddyPool::printNodeInfo() {
    const auto address = [](const ChunkNode* node) { return static_cast<const void*>(node); };
    const MutexGuard guard(m_mutex);
    for (unsigned order = 0; order < m_orderCount; ++order) {
        const ChunkNode* head = &m_freeLists[order];
        Fundo::logInfo("BufferList id:%d, order(%d) head(%p), headpre(%p)next(%p)\n", static_cast<int>(order),
                       head->order, address(head), address(head->prev), address(head->next));
        for (const ChunkNode* node = head->next; node != head; node = node->next) {
            Fundo::logInfo("bufflist(%d)id: %d, realIdx(%d)self(%p)order(%d) pre(%p), next(%p)\n",
                           static_cast<int>(order), 0, node->index, address(node), node->order,
                           address(node->prev), address(node->next));
        }
    }
}

}  // namespace Tovra::Memory
