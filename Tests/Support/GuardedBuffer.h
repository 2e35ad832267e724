#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace Tests {

/// Bytes that end right before an inaccessible page and, when size is a multiple of the page, begin right
/// after one: a read or a write beyond them ends the process.
class CGuardedBuffer {
public:
    explicit CGuardedBuffer(std::size_t size)
        : m_size(size), m_page(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))) {
        m_inner = (size + m_page - 1) / m_page * m_page;
        void* region = ::mmap(nullptr, m_inner + 2 * m_page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (region == MAP_FAILED) throw std::bad_alloc();
        m_region = static_cast<std::uint8_t*>(region);
        if (m_inner != 0 && ::mprotect(m_region + m_page, m_inner, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
    }
    /// A copy of bytes.
    CGuardedBuffer(const void* bytes, std::size_t size) : CGuardedBuffer(size) {
        if (size != 0) std::memcpy(data(), bytes, size);
    }
    ~CGuardedBuffer() { ::munmap(m_region, m_inner + 2 * m_page); }
    CGuardedBuffer(const CGuardedBuffer&) = delete;
    CGuardedBuffer& operator=(const CGuardedBuffer&) = delete;

    /// The first byte; data() + size() is not accessible.
    std::uint8_t* data() const { return m_region + m_page + m_inner - m_size; }
    /// The same bytes as text.
    char* text() const { return reinterpret_cast<char*>(data()); }
    std::size_t size() const { return m_size; }

private:
    std::size_t m_size;
    std::size_t m_page;
    std::size_t m_inner = 0;
    std::uint8_t* m_region = nullptr;
};

}  // namespace Tests
