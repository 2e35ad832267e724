#pragma once

#include <cstddef>
#include <cstring>
#include <functional>
#include <new>

#include "Fundo/Fundo3/Detail/PlatformAssert.h"
#include "Fundo/Fundo3/Export.h"

namespace Tovra::Fundo {

/// Holds the one empty record that all empty heap strings share. It is never freed nor written to.
template <typename E, class A>
class SimpleStringStorage {
protected:
    /// What a heap string points to: one block with room for the capacity and a terminator.
    struct Data {
        E* pEnd_;       ///< one behind the last character
        E* pEndOfMem_;  ///< one behind the capacity
        E buffer_[1];   ///< the characters, from here on
    };

    static Data emptyString_;
};

template <>
FUNDO_API SimpleStringStorage<char, std::allocator<char>>::Data
    SimpleStringStorage<char, std::allocator<char>>::emptyString_;

/// Characters on the heap behind a single pointer. Every reallocation is to the exact size asked for.
template <typename E, class A>
class AllocatorStringStorage : private SimpleStringStorage<E, A> {
    using Base = SimpleStringStorage<E, A>;
    using Data = typename Base::Data;
    static constexpr char kHeader[] = "./Include/Fundo/Fundo3/Detail/allocatorstringstorage";

public:
    AllocatorStringStorage() noexcept : pData_(&Base::emptyString_) {}

    /// @param cap 0 gives the shared empty record
    AllocatorStringStorage(size_t size, size_t cap) { Init(size, cap); }

    /// A copy has a capacity of the source's size.
    AllocatorStringStorage(const AllocatorStringStorage& other) {
        Init(other.size(), other.size());
        if (size() != 0) std::memcpy(pData_->buffer_, other.pData_->buffer_, size() * sizeof(E));
    }

    AllocatorStringStorage& operator=(const AllocatorStringStorage&) = delete;

    ~AllocatorStringStorage() {
        if (pData_->pEndOfMem_ != chars()) ::operator delete(pData_);
    }

    E* begin() const { return chars(); }
    E* end() const { return pData_->pEnd_; }
    size_t size() const { return static_cast<size_t>(pData_->pEnd_ - chars()); }
    size_t capacity() const { return static_cast<size_t>(pData_->pEndOfMem_ - chars()); }

    const E* c_str() const {
        if (pData_ != &Base::emptyString_) *pData_->pEnd_ = E();
        return chars();
    }

    void reserve(size_t n) {
        if (n <= capacity()) return;
        AllocatorStringStorage larger(size(), n);
        std::memcpy(larger.pData_->buffer_, chars(), size() * sizeof(E));
        swap(larger);
    }

    void append(const E* b, const E* e) {
        const auto count = static_cast<size_t>(e - b);
        if (size() + count > capacity()) {
            const std::less_equal<const E*> le{};
            FUNDO_PLATFORM_ASSERT(!(le(begin(), &*b) && le(&*b, end())), kHeader);
            reserve(size() + count);
        }
        if (count == 0) return;
        std::memmove(pData_->pEnd_, b, count * sizeof(E));
        pData_->pEnd_ += count;
    }

    void resize(size_t n, E c) {
        reserve(n);
        for (E* at = pData_->pEnd_; at < chars() + n; ++at)
            *at = c;
        if (pData_ != &Base::emptyString_) pData_->pEnd_ = chars() + n;
    }

    void swap(AllocatorStringStorage& other) noexcept {
        Data* mine = pData_;
        pData_ = other.pData_;
        other.pData_ = mine;
    }

private:
    void Init(size_t size, size_t cap) {
        FUNDO_PLATFORM_ASSERT(size <= cap, kHeader);
        pData_ = &Base::emptyString_;
        if (cap == 0) return;
        pData_ = static_cast<Data*>(::operator new(sizeof(Data) + cap * sizeof(E)));
        pData_->pEnd_ = chars() + size;
        pData_->pEndOfMem_ = chars() + cap;
    }

    // By address, since the record's own array is declared with one element.
    E* chars() const {
        return reinterpret_cast<E*>(reinterpret_cast<char*>(pData_) + offsetof(Data, buffer_));
    }

    Data* pData_;
};

}  // namespace Tovra::Fundo
