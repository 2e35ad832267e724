#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include "Fundo/Fundo3/Detail/PlatformAssert.h"

namespace Tovra::Fundo {

/// The shell with the standard string's operations over a storage policy. Operations mean what they mean
/// there; a position out of range throws std::out_of_range. Growth is to the exact size asked for.
///
/// No locks; c_str() writes the terminator, so even const access from two threads is a race.
template <typename E, class T, class A, class Storage>
class flex_string : private Storage {
    static constexpr char kHeader[] = "./Include/Fundo/Fundo3/Detail/flex_string_shell";
    using View = std::basic_string_view<E, T>;

    // What may be one of a pair of positions: a literal 0 is a count there, never a null pointer.
    template <typename I>
    using IfPosition = std::enable_if_t<std::is_convertible_v<I, const E*> && !std::is_integral_v<I>>;

public:
    using value_type = E;
    using traits_type = T;
    using size_type = size_t;
    using iterator = E*;
    using const_iterator = const E*;
    static constexpr size_type npos = static_cast<size_type>(-1);

    flex_string() noexcept = default;
    flex_string(const E* text) : Storage(text, T::length(text)) {}
    flex_string(const E* text, size_type n) : Storage(text, n) {}
    template <typename I, typename = IfPosition<I>>
    flex_string(const E* first, I last) : Storage(first, distance(first, last)) {}
    flex_string(size_type n, E c) { Storage::resize(n, c); }
    flex_string(const std::basic_string<E, T>& text) : Storage(text.data(), text.size()) {}
    flex_string(const flex_string&) = default;
    flex_string(flex_string&&) noexcept = default;
    flex_string& operator=(const flex_string&) = default;
    flex_string& operator=(flex_string&&) noexcept = default;
    flex_string& operator=(const E* text) { return assign(text); }
    flex_string& operator=(const std::basic_string<E, T>& text) { return assign(text.data(), text.size()); }
    ~flex_string() = default;

    iterator begin() { return Storage::begin(); }
    iterator end() { return Storage::end(); }
    const_iterator begin() const { return Storage::begin(); }
    const_iterator end() const { return Storage::end(); }
    size_type size() const { return Storage::size(); }
    size_type length() const { return Storage::size(); }
    size_type capacity() const { return Storage::capacity(); }
    bool empty() const { return size() == 0; }
    const E* c_str() const { return Storage::c_str(); }
    const E* data() const { return Storage::c_str(); }
    operator View() const { return view(); }

    E& operator[](size_type pos) { return begin()[pos]; }
    const E& operator[](size_type pos) const { return begin()[pos]; }
    E& at(size_type pos) { return begin()[index(pos)]; }
    const E& at(size_type pos) const { return begin()[index(pos)]; }
    E& back() { return end()[-1]; }
    const E& back() const { return end()[-1]; }

    void reserve(size_type n) { Storage::reserve(n); }
    void resize(size_type n, E c = E()) { Storage::resize(n, c); }
    void clear() { Storage::resize(0, E()); }
    void swap(flex_string& other) noexcept { Storage::swap(other); }
    void push_back(E c) { Storage::append(&c, &c + 1); }

    flex_string& append(const E* s, size_type n) {
        if (!IsAliasedRange(s, s + n)) {
            Storage::append(s, s + n);
            return *this;
        }
        // Growing may move the characters that are being appended.
        const auto offset = s - begin();
        Storage::reserve(size() + n);
        const E* moved = begin() + offset;
        Storage::append(moved, moved + n);
        return *this;
    }
    flex_string& append(View text) { return append(text.data(), text.size()); }
    flex_string& operator+=(View text) { return append(text.data(), text.size()); }
    flex_string& operator+=(E c) {
        push_back(c);
        return *this;
    }

    flex_string& assign(const E* s, size_type n) {
        if (size() >= n) {
            if (n != 0) std::memmove(begin(), s, n * sizeof(E));
            if (size() != n) resize(n, E());
            return *this;
        }
        const size_type fitting = size();
        if (IsAliasedRange(s, s + n)) return *this = flex_string(s, n);
        if (fitting != 0) std::memmove(begin(), s, fitting * sizeof(E));
        return append(s + fitting, n - fitting);
    }
    flex_string& assign(const E* text) { return assign(text, T::length(text)); }
    template <typename I, typename = IfPosition<I>>
    flex_string& assign(const E* first, I last) {
        return assign(first, distance(first, last));
    }

    flex_string& erase(size_type pos = 0, size_type n = npos) {
        n = std::min(n, size() - within(pos, size()));
        if (n == 0) return *this;
        E* const gap = begin() + pos;
        std::memmove(gap, gap + n, (size() - pos - n) * sizeof(E));
        resize(size() - n, E());
        return *this;
    }
    template <typename I, typename = IfPosition<I>>
    iterator erase(const_iterator first, I last) {
        const size_type pos = distance(begin(), first);
        erase(pos, distance(first, last));
        return begin() + pos;
    }

    flex_string& insert(size_type pos, const E* s, size_type n) {
        FUNDO_PLATFORM_ASSERT(pos <= size(), kHeader);
        return ReplaceImpl(begin() + pos, begin() + pos, s, s + n);
    }
    flex_string& insert(size_type pos, View text) { return insert(pos, text.data(), text.size()); }

    flex_string& replace(size_type pos, size_type n1, const E* s, size_type n2) {
        n1 = std::min(n1, size() - within(pos, size()));
        return ReplaceImpl(begin() + pos, begin() + pos + n1, s, s + n2);
    }
    flex_string& replace(size_type pos, size_type n, View text) {
        return replace(pos, n, text.data(), text.size());
    }

    flex_string substr(size_type pos = 0, size_type n = npos) const {
        return flex_string(begin() + within(pos, size()), std::min(n, size() - pos));
    }
    int compare(View other) const { return view().compare(other); }
    size_type find(View text, size_type pos = 0) const { return view().find(text, pos); }
    size_type find(E c, size_type pos = 0) const { return view().find(c, pos); }
    size_type rfind(View text, size_type pos = npos) const { return view().rfind(text, pos); }
    size_type rfind(E c, size_type pos = npos) const { return view().rfind(c, pos); }
    size_type find_first_of(View text, size_type pos = 0) const { return view().find_first_of(text, pos); }
    size_type find_last_of(View text, size_type pos = npos) const { return view().find_last_of(text, pos); }

    friend flex_string operator+(const flex_string& left, View right) {
        flex_string sum;
        sum.reserve(left.size() + right.size());
        sum.append(left.begin(), left.size());
        sum.append(right.data(), right.size());
        return sum;
    }
    friend flex_string operator+(const flex_string& left, const E* right) { return left + View(right); }
    friend bool operator==(const flex_string& a, const flex_string& b) { return a.view() == b.view(); }
    friend bool operator==(const flex_string& a, const E* b) { return a.view() == b; }
    friend bool operator==(const E* a, const flex_string& b) { return b == a; }
    friend bool operator!=(const flex_string& a, const flex_string& b) { return !(a == b); }
    friend bool operator!=(const flex_string& a, const E* b) { return !(a == b); }
    friend bool operator!=(const E* a, const flex_string& b) { return !(b == a); }
    friend bool operator<(const flex_string& a, const flex_string& b) { return a.view() < b.view(); }
    friend bool operator>(const flex_string& a, const flex_string& b) { return b < a; }
    friend bool operator<=(const flex_string& a, const flex_string& b) { return !(b < a); }
    friend bool operator>=(const flex_string& a, const flex_string& b) { return !(a < b); }
    friend std::basic_ostream<E>& operator<<(std::basic_ostream<E>& out, const flex_string& text) {
        return out << text.view();
    }

private:
    View view() const { return View(begin(), size()); }

    static size_type distance(const E* first, const E* last) { return static_cast<size_type>(last - first); }

    static size_type within(size_type pos, size_type limit) {
        if (pos > limit) throw std::out_of_range("");
        return pos;
    }

    size_type index(size_type pos) const {
        if (pos >= size()) throw std::out_of_range("");
        return pos;
    }

    // Whether a range lies inside this string.
    bool IsAliasedRange(const E* first, const E* last) const {
        const std::less_equal<const E*> le{};
        return first != last && le(begin(), first) && le(first, end());
    }

    flex_string& ReplaceImpl(const E* i1, const E* i2, const E* s1, const E* s2) {
        FUNDO_PLATFORM_ASSERT(i1 <= i2, kHeader);
        FUNDO_PLATFORM_ASSERT(begin() <= i1 && i1 <= end(), kHeader);
        FUNDO_PLATFORM_ASSERT(begin() <= i2 && i2 <= end(), kHeader);
        const auto n1 = i2 - i1;
        FUNDO_PLATFORM_ASSERT(n1 >= 0, kHeader);
        const auto n2 = s2 - s1;
        FUNDO_PLATFORM_ASSERT(n2 >= 0, kHeader);
        const auto pos = static_cast<size_type>(i1 - begin());
        if (n2 <= n1 && !IsAliasedRange(s1, s2)) {
            if (n2 != 0) std::memmove(begin() + pos, s1, static_cast<size_type>(n2) * sizeof(E));
            return erase(pos + static_cast<size_type>(n2), static_cast<size_type>(n1 - n2));
        }
        flex_string whole;
        whole.reserve(size() - static_cast<size_type>(n1) + static_cast<size_type>(n2));
        whole.append(begin(), pos);
        whole.append(s1, static_cast<size_type>(n2));
        whole.append(i2, static_cast<size_type>(end() - i2));
        swap(whole);
        return *this;
    }
};

}  // namespace Tovra::Fundo

/// Hashes as the text's view does.
template <typename E, class T, class A, class Storage>
struct std::hash<Tovra::Fundo::flex_string<E, T, A, Storage>> {
    size_t operator()(const Tovra::Fundo::flex_string<E, T, A, Storage>& text) const noexcept {
        return std::hash<std::basic_string_view<E, T>>()(text);
    }
};
