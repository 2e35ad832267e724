#include "Fundo/MemPool.h"

#include "Memory/MemPool.h"

struct CMemPool::MemPoolInternal {
    Tovra::Memory::Detail::CMemPool m_pool;
};

CMemPool::CMemPool(unsigned int objectSize, unsigned int objectsPerBlock)
    : m_internal(new MemPoolInternal{{objectSize, objectsPerBlock}}) {}

CMemPool::~CMemPool() { delete m_internal; }

void* CMemPool::alloc() { return m_internal->m_pool.malloc(); }

void CMemPool::free(void* object) { m_internal->m_pool.free(object); }
