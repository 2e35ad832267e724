#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

#include "Fundo/Fundo3/Detail/PlatformAssert.h"

namespace Tovra::Fundo {

/// Keeps up to threshold characters in the object itself and longer strings in a Storage that lies in its
/// first bytes.
///
///   last byte   meaning
///   32          large: the first bytes are the storage
///   0 to 31     small: 31 minus the size, so a full string's last byte is its terminator
template <class Storage, unsigned threshold, typename Align = char*>
class SmallStringOpt {
    static constexpr char kHeader[] = "./Include/Fundo/Fundo3/Detail/smallstringopt";
    using E = char;

    enum { maxSmallString = threshold, magic = maxSmallString + 1 };

public:
    SmallStringOpt() noexcept { setSmallSize(0); }

    SmallStringOpt(const E* text, size_t n) {
        if (n <= maxSmallString) {
            if (n != 0) std::memcpy(buf_, text, n);
            setSmallSize(n);
            return;
        }
        makeLarge(n, n);
        std::memcpy(storage().begin(), text, n);
    }

    SmallStringOpt(const SmallStringOpt& other) {
        if (other.Small()) {
            std::memcpy(buf_, other.buf_, sizeof buf_);
            return;
        }
        ::new (static_cast<void*>(buf_)) Storage(other.storage());
        buf_[maxSmallString] = magic;
    }

    SmallStringOpt(SmallStringOpt&& other) noexcept { take(other); }

    SmallStringOpt& operator=(const SmallStringOpt& other) {
        if (this == &other) return *this;
        const size_t n = other.size();
        if (n > maxSmallString && capacity() > n) {
            // A capacity above 32 means that this string is large.
            if (size() > n) resize(n, E());
            std::memcpy(begin(), other.begin(), size());
            append(other.begin() + size(), other.begin() + n);
            return *this;
        }
        SmallStringOpt copy(other);
        swap(copy);
        return *this;
    }

    SmallStringOpt& operator=(SmallStringOpt&& other) noexcept {
        if (this == &other) return *this;
        destroy();
        take(other);
        return *this;
    }

    ~SmallStringOpt() { destroy(); }

    E* begin() const { return Small() ? buf_ : storage().begin(); }
    E* end() const { return begin() + size(); }
    size_t size() const {
        FUNDO_PLATFORM_ASSERT(!Small() || maxSmallString >= buf_[maxSmallString], kHeader);
        return Small() ? static_cast<size_t>(maxSmallString - buf_[maxSmallString]) : storage().size();
    }
    size_t capacity() const { return Small() ? static_cast<size_t>(maxSmallString) : storage().capacity(); }
    const E* c_str() const {
        if (!Small()) return storage().c_str();
        buf_[maxSmallString - buf_[maxSmallString]] = E();
        return buf_;
    }

    void reserve(size_t res_arg) {
        if (Small()) {
            if (res_arg <= maxSmallString) return;
            SmallStringOpt large;
            large.makeLarge(0, res_arg);
            large.append(begin(), end());
            swap(large);
        } else {
            storage().reserve(res_arg);
        }
        FUNDO_PLATFORM_ASSERT(capacity() >= res_arg, kHeader);
    }

    void append(const E* b, const E* e) {
        if (b == e) return;
        if (!Small()) {
            storage().append(b, e);
            return;
        }
        const auto count = static_cast<size_t>(e - b);
        const size_t n = size();
        if (n + count <= maxSmallString) {
            std::memmove(buf_ + n, b, count);
            setSmallSize(n + count);
            return;
        }
        SmallStringOpt large;
        large.makeLarge(0, n + count);
        large.storage().append(buf_, buf_ + n);
        large.storage().append(b, e);
        swap(large);
    }

    void resize(size_t n, E c) {
        if (n > maxSmallString) {
            if (Small()) reserve(n);
            storage().resize(n, c);
            return;
        }
        if (!Small()) {
            toSmall(n, c);
            return;
        }
        const size_t old = size();
        if (n > old) std::memset(buf_ + old, c, n - old);
        setSmallSize(n);
    }

    void swap(SmallStringOpt& other) noexcept {
        E kept[sizeof buf_];
        std::memcpy(kept, buf_, sizeof buf_);
        std::memcpy(buf_, other.buf_, sizeof buf_);
        std::memcpy(other.buf_, kept, sizeof buf_);
    }

private:
    bool Small() const { return buf_[maxSmallString] != magic; }

    void setSmallSize(size_t n) { buf_[maxSmallString] = static_cast<E>(maxSmallString - n); }

    Storage& storage() const { return *std::launder(reinterpret_cast<Storage*>(buf_)); }

    void makeLarge(size_t size, size_t capacity) {
        ::new (static_cast<void*>(buf_)) Storage(size, capacity);
        buf_[maxSmallString] = magic;
    }

    // The large string's first characters, filled up, move into the object; the storage is freed.
    void toSmall(size_t n, E c) {
        const size_t kept = size() < n ? size() : n;
        SmallStringOpt small(begin(), kept);
        small.resize(n, c);
        swap(small);
    }

    // Leaves the other string empty.
    void take(SmallStringOpt& other) noexcept {
        std::memcpy(buf_, other.buf_, sizeof buf_);
        other.setSmallSize(0);
    }

    void destroy() {
        if (!Small()) storage().~Storage();
    }

    union {
        mutable E buf_[maxSmallString + 1];
        Align align_;
    };
};

}  // namespace Tovra::Fundo
