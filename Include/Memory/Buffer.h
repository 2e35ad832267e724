#pragma once

#include <cstddef>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Memory {

/// A growing byte buffer in one heap block. One thread uses it at a time.
///
/// Growth is exact unless setIncreasedSize() gives a step: a loop of small appends sets one. If memory is
/// short, an operation logs at level 4 ("CBuffer putbuffer ReMalloc fail:\n" and the like) and leaves the
/// buffer as it was; nothing throws. A change of the capacity moves the bytes.
class FUNDO_API CBuffer {
public:
    /// An empty buffer without a block.
    CBuffer() = default;
    /// Frees the block.
    ~CBuffer();
    CBuffer(const CBuffer&) = delete;
    CBuffer& operator=(const CBuffer&) = delete;

    /// Appends bytes, which may lie in this buffer. @return size, or 0 if memory is short
    size_t putBuffer(unsigned char* data, size_t size);
    /// The first byte; null if no bytes are in use. Valid until the buffer grows.
    void* getBuffer() const;
    /// Bytes in use.
    size_t size() const;
    /// Bytes the block has room for; 0 without a block.
    size_t capacity() const;
    /// Sets the bytes in use; new ones are not initialised. Growing beyond the capacity rounds up to the
    /// step, and size() is then the rounded value.
    void resize(size_t size);
    /// Makes room for exactly that many bytes in all, whatever the step; never shrinks.
    void reserve(size_t size);
    /// Frees the block; the step is forgotten.
    void reset();
    /// Sets the step that growth is rounded up to, in bytes; 0 means exact growth. Without a block, one of
    /// that capacity is made.
    void setIncreasedSize(size_t step);

private:
    struct Block;

    static Block* allocate(size_t capacity, const char* failure);
    bool grow(size_t capacity, const char* failure);

    Block* m_block = nullptr;
};

}  // namespace Tovra::Memory
