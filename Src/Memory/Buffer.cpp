#include "Memory/Buffer.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Fundo/Fundo3/PrintLog.h"
#include "Memory/Arithmetic.h"

namespace Tovra::Memory {

// Stands at the start of the heap block; the bytes follow.
struct CBuffer::Block {
    void* block;
    size_t size;
    size_t capacity;
    size_t increasedSize;

    unsigned char* data() { return reinterpret_cast<unsigned char*>(this + 1); }
};

namespace {

// Up to a multiple of the step, if there is one.
size_t roundUp(size_t size, size_t step) {
    const size_t over = step == 0 ? 0 : size % step;
    return over == 0 ? size : saturatedSum(size, step - over);
}

}  // namespace

CBuffer::~CBuffer() { reset(); }

CBuffer::Block* CBuffer::allocate(size_t capacity, const char* failure) {
    const size_t bytes = saturatedSum(sizeof(Block), capacity);
    auto* block = bytes <= kMaxBytes ? static_cast<Block*>(std::malloc(bytes)) : nullptr;
    if (block == nullptr) {
        Fundo::logInfo("%s", failure);
        return nullptr;
    }
    *block = {block, 0, capacity, 0};
    return block;
}

// Moves what is in use to a larger block.
bool CBuffer::grow(size_t capacity, const char* failure) {
    Block* block = allocate(capacity, failure);
    if (block == nullptr) return false;
    block->size = m_block->size;
    block->increasedSize = m_block->increasedSize;
    std::memcpy(block->data(), m_block->data(), m_block->size);
    std::free(m_block->block);
    m_block = block;
    return true;
}

size_t CBuffer::putBuffer(unsigned char* data, size_t size) {
    if (m_block == nullptr) {
        m_block = allocate(size, " CBuffer putbuffer Malloc fail:\n");
        if (m_block == nullptr) return 0;
    }
    if (m_block->capacity - m_block->size < size) {
        // The appended bytes may lie in the block that the growth frees.
        const uintptr_t offset =
            reinterpret_cast<uintptr_t>(data) - reinterpret_cast<uintptr_t>(m_block->data());
        const bool own = offset < m_block->size;
        const size_t need = roundUp(saturatedSum(m_block->size, size), m_block->increasedSize);
        if (!grow(need, "CBuffer putbuffer ReMalloc fail:\n")) return 0;
        if (own) data = m_block->data() + offset;
    }
    if (size != 0) std::memcpy(m_block->data() + m_block->size, data, size);
    m_block->size += size;
    return size;
}

void* CBuffer::getBuffer() const { return size() == 0 ? nullptr : m_block->data(); }

size_t CBuffer::size() const { return m_block == nullptr ? 0 : m_block->size; }

size_t CBuffer::capacity() const { return m_block == nullptr ? 0 : m_block->capacity; }

void CBuffer::resize(size_t size) {
    if (m_block == nullptr) {
        m_block = allocate(size, " CBuffer resize Malloc fail:\n");
        if (m_block == nullptr) return;
    }
    if (m_block->capacity < size) {
        // Contract: after growth the whole of the rounded block counts as in use.
        size = roundUp(size, m_block->increasedSize);
        if (!grow(size, " CBuffer resize ReMalloc fail:\n")) return;
    }
    m_block->size = size;
}

void CBuffer::reserve(size_t size) {
    if (m_block == nullptr) {
        // Contract: the text of resize() here.
        m_block = allocate(size, " CBuffer resize Malloc fail:\n");
    } else if (m_block->capacity < size) {
        grow(size, " CBuffer reserve Malloc fail:\n");
    }
}

void CBuffer::reset() {
    if (m_block != nullptr) std::free(m_block->block);
    m_block = nullptr;
}

void CBuffer::setIncreasedSize(size_t step) {
    if (m_block == nullptr) m_block = allocate(step, " CBuffer setIncreasedSize Malloc fail:\n");
    if (m_block != nullptr) m_block->increasedSize = step;
}

}  // namespace Tovra::Memory
