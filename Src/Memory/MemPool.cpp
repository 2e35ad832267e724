#include "Memory/MemPool.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "Fundo/Fundo3/Mutex.h"
#include "Fundo3/MutexGuard.h"

// A free object's first word is the address of the next free one. Objects need not be whole words long, so
// that word may lie at any address and is copied, never dereferenced in place.

namespace Tovra::Memory::Detail {

namespace {

// What a block begins with; its objects follow.
struct BlockHeader {
    unsigned char* first;
    unsigned char* next;
};

void setLink(void* object, const void* next) { std::memcpy(object, &next, sizeof next); }

void* linkOf(const void* object) {
    void* next;
    std::memcpy(&next, object, sizeof next);
    return next;
}

}  // namespace

struct MemPoolInternal {
    unsigned char* blocks = nullptr;  // newest first
    unsigned int objectSize;
    unsigned int objectsPerBlock;
    void* freeList = nullptr;
    Fundo::CMutex mutex;

    MemPoolInternal(unsigned int size, unsigned int count)
        : objectSize(std::max(size, 8U)), objectsPerBlock(std::max(count, 1U)) {
        static_assert(sizeof(void*) <= 8, "a free object holds a link");
    }

    void addBlock() {
        auto* block = new unsigned char[sizeof(BlockHeader) + size_t{objectsPerBlock} * objectSize];
        const BlockHeader header{block + sizeof(BlockHeader), blocks};
        std::memcpy(block, &header, sizeof header);
        blocks = block;

        unsigned char* object = header.first;
        for (unsigned int i = 1; i < objectsPerBlock; ++i, object += objectSize)
            setLink(object, object + objectSize);
        setLink(object, nullptr);
        freeList = header.first;
    }
};

CMemPool::CMemPool(unsigned int objectSize, unsigned int objectsPerBlock)
    : m_internal(new MemPoolInternal(objectSize, objectsPerBlock)) {}

CMemPool::~CMemPool() {
    for (unsigned char* block = m_internal->blocks; block != nullptr;) {
        BlockHeader header;
        std::memcpy(&header, block, sizeof header);
        delete[] block;
        block = header.next;
    }
    delete m_internal;
}

void* CMemPool::malloc() {
    const Fundo::Detail::MutexGuard guard(m_internal->mutex);
    if (m_internal->freeList == nullptr) m_internal->addBlock();
    void* object = m_internal->freeList;
    m_internal->freeList = linkOf(object);
    return object;
}

void CMemPool::free(void* object) {
    const Fundo::Detail::MutexGuard guard(m_internal->mutex);
    setLink(object, m_internal->freeList);
    m_internal->freeList = object;
}

}  // namespace Tovra::Memory::Detail
