// UTF-8 by rows: one for each length of a sequence, and a zero row at the end.
#pragma once

#include <cstdint>

namespace Tovra::Utils::Detail {

struct Utf8Row {
    uint32_t cmask;  // the mask of the lead byte
    uint32_t cval;   // its value under the mask
    uint32_t shift;  // bits below the lead byte
    uint32_t lmask;  // the largest value of that length
    uint32_t lval;   // the smallest value that needs it
};

inline constexpr Utf8Row utf8_table[] = {
    {0x80, 0x00, 0, 0x7f, 0},
    {0xe0, 0xc0, 6, 0x7ff, 0x80},
    {0xf0, 0xe0, 12, 0xffff, 0x800},
    {0xf8, 0xf0, 18, 0x1fffff, 0x10000},
    {0xfc, 0xf8, 24, 0x3ffffff, 0x200000},
    {0xfe, 0xfc, 30, 0x7fffffff, 0x4000000},
    {},
};

constexpr bool isContinuation(unsigned char byte) { return (byte & 0xc0) == 0x80; }

// The length of the sequence for a value of up to 31 bits.
constexpr int utf8Length(uint32_t value) {
    int length = 1;
    while (utf8_table[length - 1].lmask < value)
        ++length;
    return length;
}

// Writes the sequence of a length that utf8Length() gave.
constexpr void writeUtf8(unsigned char* out, uint32_t value, int length) {
    const Utf8Row& row = utf8_table[length - 1];
    *out++ = static_cast<unsigned char>(row.cval | value >> row.shift);
    for (uint32_t shift = row.shift; shift > 0;) {
        shift -= 6;
        *out++ = static_cast<unsigned char>(0x80 | (value >> shift & 0x3f));
    }
}

// utf8_mbtowc() and utf8_wctomb(), which the exported names would hide from the compiler.
inline int readUnit(unsigned short* out, const unsigned char* s, int n) {
    const unsigned char lead = *s;
    uint32_t value = lead;
    int count = 1;
    for (const Utf8Row* row = utf8_table; row->cmask != 0; ++row, ++count) {
        if ((lead & row->cmask) == row->cval) {
            value &= row->lmask;
            if (value < row->lval) return -1;
            *out = static_cast<unsigned short>(value);
            return count;
        }
        if (count >= n) return -1;
        const unsigned next = *++s ^ 0x80U;
        if (next > 63) return -1;
        value = value << 6 | next;
    }
    return -1;
}

inline int writeUnit(unsigned char* s, unsigned short wc, int maxlen) {
    if (s == nullptr) return 0;
    if (maxlen == 0) return -1;
    const int length = utf8Length(wc);
    // Contract: a negative room does not limit.
    if (maxlen > 0 && maxlen < length) return -1;
    writeUtf8(s, wc, length);
    return length;
}

// The length that a lead byte tells; 0 if no sequence begins so.
constexpr int sequenceLength(unsigned char lead) {
    int length = 1;
    for (const Utf8Row* row = utf8_table; row->cmask != 0; ++row, ++length)
        if ((lead & row->cmask) == row->cval) return length;
    return 0;
}

}  // namespace Tovra::Utils::Detail
