#pragma once

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Memory::Detail {

struct MemPoolInternal;

/// A pool of objects of one size. What is given back is handed out next, while it is warm; memory goes back
/// to the system only with the pool. Any thread may call any operation.
///
/// Objects lie one behind another: their alignment is what the object's size leaves of the heap's.
class FUNDO_API CMemPool {
public:
    /// Makes an empty pool; the first block comes with the first malloc().
    /// @param objectSize      bytes an object; less than 8 counts as 8
    /// @param objectsPerBlock objects that are taken from the heap at once; 0 counts as 1
    CMemPool(unsigned int objectSize, unsigned int objectsPerBlock);
    /// Frees all blocks, also those whose objects are still out.
    ~CMemPool();
    CMemPool(const CMemPool&) = delete;
    CMemPool& operator=(const CMemPool&) = delete;

    /// An object's memory, not initialised. A new block hands out its objects in ascending order.
    /// @throw std::bad_alloc if the heap has no room for a new block
    void* malloc();
    /// Takes an object back. The pointer is not checked: it must come from this pool and must not be null.
    void free(void* object);

private:
    MemPoolInternal* m_internal;
};

}  // namespace Tovra::Memory::Detail
