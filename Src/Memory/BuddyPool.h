#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Fundo/Fundo3/Mutex.h"
#include "Memory/PacketManager.h"

namespace Tovra::Memory {

// Binary buddy allocator over one region.
//
//   1. A block of order k is 2^k chunks and starts at a chunk number divisible by 2^k.
//   2. The buddy of the block at chunk i is the block at i ^ 2^k; both free means one block of order k + 1.
//   3. All state lies in the node table, one node a chunk, so the region holds payload alone and no block
//      carries a header.
//
//      node.order   0        inside a block
//                   k + 1    first chunk of a free block of order k, and the head of list k
//                   ~k       first chunk of an allocated block of order k
//
// A chunk count that is no power of two starts as blocks of its binary digits, largest first: each is aligned
// to its own size, and a buddy past the last chunk ends a merge.
//
// Any thread may call any operation. Under the address sanitizer free blocks are poisoned.
class BuddyPool {
public:
    // Takes the region from the operator, and asserts that there is one.
    BuddyPool(const CPacketManager::PoolParameter& param, const CPacketManager::MemoryOperator& memop);
    ~BuddyPool() { close(); }
    BuddyPool(const BuddyPool&) = delete;
    BuddyPool& operator=(const BuddyPool&) = delete;

    // Gives the region back. From then on there is no free space, and what is freed is ignored.
    void close();

    // Makes *size the size really granted. Logs and gives null if there is no free block.
    void* malloc(size_t* size);
    void free(void* pointer);

    bool holds(const void* pointer) const {
        return reinterpret_cast<uintptr_t>(pointer) - reinterpret_cast<uintptr_t>(m_alignedBuffer) <
               m_totalSize;
    }
    void* origin() const { return m_pOriginBuffer; }
    size_t size() const { return m_totalSize; }
    size_t freeSize();
    void printNodeInfo();

private:
    struct ChunkNode {
        int32_t index;
        int32_t order;
        unsigned char* address;
        ChunkNode* prev;
        ChunkNode* next;
    };

    // A split walks over nodes at distances of powers of two. Side by side in the table they would share a
    // few cache sets, and large pools would be slow; so the table has gaps that spread them.
    static size_t slot(size_t index) { return index + (index >> 7) + (index >> 14) + (index >> 21); }

    void allocateRegion(size_t chunkSize);
    void carve();
    unsigned orderOf(size_t size) const;
    ChunkNode* take(unsigned order);
    ChunkNode* split(unsigned from, unsigned to);
    ChunkNode* node(size_t index) { return &m_chunks[slot(index)]; }
    void merge(size_t index);
    void insertNode(ChunkNode* node, unsigned order);
    void deleteNode(ChunkNode* node);
    void checkAllocated(const void* pointer, size_t index);
    size_t blockSize(unsigned order) const { return size_t{1} << order << m_chunkShift; }

    void* m_pOriginBuffer = nullptr;  // what the operator gave
    unsigned char* m_alignedBuffer = nullptr;
    const size_t m_totalSize;
    const unsigned m_chunkShift;
    const size_t m_chunkCount;
    unsigned m_orderCount;               // 0 once closed
    uint32_t m_filled = 0;               // bit k: list k is not empty
    std::vector<ChunkNode> m_chunks;     // by slot()
    std::vector<ChunkNode> m_freeLists;  // heads of circular lists that work as stacks
    Fundo::CMutex m_mutex;
    const CPacketManager::MemoryOperator m_memop;
};

}  // namespace Tovra::Memory
