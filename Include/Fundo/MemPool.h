#pragma once

#include "Fundo/Fundo3/Export.h"

/// Tovra::Memory::Detail::CMemPool under its old names: a pool of objects of one size. Any thread may call
/// any operation.
class FUNDO_API CMemPool {
public:
    /// Makes an empty pool.
    /// @param objectSize      bytes an object; less than 8 counts as 8
    /// @param objectsPerBlock objects that are taken from the heap at once; 0 counts as 1
    CMemPool(unsigned int objectSize, unsigned int objectsPerBlock);
    /// Frees all blocks, also those whose objects are still out.
    ~CMemPool();
    CMemPool(const CMemPool&) = delete;
    CMemPool& operator=(const CMemPool&) = delete;

    /// An object's memory, not initialised.
    /// @throw std::bad_alloc if the heap has no room for a new block
    void* alloc();
    /// Takes an object of this pool back; null is not allowed.
    void free(void* object);

private:
    struct MemPoolInternal;
    MemPoolInternal* m_internal;
};
