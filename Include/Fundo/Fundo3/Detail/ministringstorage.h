#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#include "Fundo/Fundo3/Detail/PlatformAssert.h"

namespace Tovra::Fundo {

/// The smallest storage: one pointer, null for an empty string, to a malloc block.
template <typename E, class A>
class MiniStringStorage {
    static constexpr char kHeader[] = "./Include/Fundo/Fundo3/Detail/ministringstorage";

    struct Data {
        size_t size;
        size_t capacity;
    };

public:
    MiniStringStorage() noexcept = default;
    MiniStringStorage(const E* text, size_t n) { append(text, text + n); }
    MiniStringStorage(const MiniStringStorage& other) : MiniStringStorage(other.begin(), other.size()) {}
    MiniStringStorage& operator=(const MiniStringStorage& other) {
        MiniStringStorage copy(other);
        swap(copy);
        return *this;
    }
    ~MiniStringStorage() {
        FUNDO_PLATFORM_ASSERT(begin() <= end(), kHeader);
        std::free(m_data);
    }

    E* begin() const { return m_data != nullptr ? reinterpret_cast<E*>(m_data + 1) : empty(); }
    E* end() const { return begin() + size(); }
    size_t size() const { return m_data != nullptr ? m_data->size : 0; }
    size_t capacity() const { return m_data != nullptr ? m_data->capacity : 0; }
    const E* c_str() const {
        if (m_data != nullptr) *end() = E();
        return begin();
    }

    void reserve(size_t n) {
        if (n <= capacity()) return;
        const size_t kept = size();
        auto* grown = static_cast<Data*>(std::realloc(m_data, sizeof(Data) + (n + 1) * sizeof(E)));
        if (grown == nullptr) throw std::bad_alloc();
        m_data = grown;
        *m_data = {kept, n};
    }

    void append(const E* b, const E* e) {
        const auto count = static_cast<size_t>(e - b);
        if (count == 0) return;
        reserve(size() + count);
        std::memmove(end(), b, count * sizeof(E));
        m_data->size += count;
    }

    void resize(size_t n, E c) {
        reserve(n);
        for (size_t i = size(); i < n; ++i)
            begin()[i] = c;
        if (m_data != nullptr) m_data->size = n;
    }

    void swap(MiniStringStorage& other) noexcept {
        Data* mine = m_data;
        m_data = other.m_data;
        other.m_data = mine;
    }

private:
    static E* empty() {
        static E s_terminator[1] = {};
        return s_terminator;
    }

    Data* m_data = nullptr;
};

}  // namespace Tovra::Fundo
