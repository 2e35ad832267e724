#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Tovra::Fundo::Detail {

// A constant text of at most seven characters, which is copied as one word.
class ShortText {
public:
    template <size_t N>
    constexpr ShortText(const char (&text)[N]) : m_length(N - 1) {
        static_assert(N <= sizeof m_text, "a word holds seven characters");
        for (size_t i = 0; i < N; ++i)
            m_text[i] = text[i];
    }
    const char* data() const { return m_text; }
    size_t length() const { return m_length; }
    static constexpr size_t kSize = 8;

private:
    char m_text[kSize] = {};
    size_t m_length;
};

// Appends to a bounded text as a chain of snprintf calls with the room left would, at a fraction of the
// cost. What does not fit is cut.
class TextAppender {
public:
    // The size counts the terminator and is at least 1.
    TextAppender(char* text, size_t size) : m_begin(text), m_at(text), m_last(text + size - 1) {}
    TextAppender(const TextAppender&) = delete;
    TextAppender& operator=(const TextAppender&) = delete;

    // Terminates the text. @return its length
    size_t finish() {
        *m_at = '\0';
        return static_cast<size_t>(m_at - m_begin);
    }

    TextAppender& bytes(const char* from, size_t count) {
        const size_t fitting = std::min(count, room());
        std::memcpy(m_at, from, fitting);
        m_at += fitting;
        return *this;
    }

    // A null text shows as printf shows it.
    TextAppender& text(const char* from) {
        if (from == nullptr) from = "(null)";
        return bytes(from, std::strlen(from));
    }

    TextAppender& literal(const ShortText& from) {
        if (room() < ShortText::kSize) return bytes(from.data(), from.length());
        std::memcpy(m_at, from.data(), ShortText::kSize);
        m_at += from.length();
        return *this;
    }

    // Two digits, for 0 to 99.
    TextAppender& pair(int value) {
        const auto tens = static_cast<char>(value / 10);
        const char digits[] = {static_cast<char>('0' + tens), static_cast<char>('0' + value - tens * 10)};
        return bytes(digits, sizeof digits);
    }

    // A decimal number, filled up on the left to a width of 10 at most.
    TextAppender& number(int value, int width = 0, char fill = '0') {
        char digits[12];
        char* const end = digits + sizeof digits;
        char* at = end;
        unsigned rest = value < 0 ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value);
        do {
            *--at = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        if (value < 0) *--at = '-';
        while (end - at < width)
            *--at = fill;
        return bytes(at, static_cast<size_t>(end - at));
    }

private:
    size_t room() const { return static_cast<size_t>(m_last - m_at); }

    char* m_begin;
    char* m_at;
    char* m_last;  // where the terminator goes at the latest
};

}  // namespace Tovra::Fundo::Detail
