// The single-byte charsets: one implementation over a table for each, made by the compiler from the upper
// half of the published chart. 0 is unassigned in all tables.
#include <cstring>

#include "Utils/Unicode.h"
#include "Utils/Unicode/Utf8Forms.h"

namespace Tovra::Utils {

namespace {

// A byte's UTF-8; no length if it is unassigned.
struct Sequence {
    unsigned char bytes[3];
    unsigned char length;
};

struct Chart {
    unsigned short upper[128];
};

constexpr size_t pagesOf(const Chart& chart) {
    bool used[256] = {true};
    for (const unsigned short unit : chart.upper)
        used[unit >> 8] = true;
    size_t pages = 0;
    for (const bool isUsed : used)
        pages += isUsed ? 1 : 0;
    return pages;
}

template <size_t Pages>
struct Charset {
    constexpr explicit Charset(const Chart& chart) {
        unsigned char count = 0;
        for (unsigned byte = 1; byte < 256; ++byte) {
            const unsigned unit = byte < 128 ? byte : chart.upper[byte - 128];
            if (unit == 0) continue;
            charset2uni[byte] = static_cast<unsigned short>(unit);
            utf8[byte].length = static_cast<unsigned char>(Detail::utf8Length(unit));
            Detail::writeUtf8(utf8[byte].bytes, unit, utf8[byte].length);
            unsigned char& page = page_uni2charset[unit >> 8];
            if (page == 0) page = ++count;
            pages[page - 1][unit & 0xff] = static_cast<unsigned char>(byte);
        }
    }

    unsigned short charset2uni[256] = {};
    Sequence utf8[256] = {};
    unsigned char page_uni2charset[256] = {};  // by high byte, from 1; 0 for none
    unsigned char pages[Pages][256] = {};      // by low byte
};

template <size_t Pages>
int unitToByte(const Charset<Pages>& charset, unsigned short unit, unsigned char* out, int boundlen) {
    if (boundlen < 1) return -1;
    const unsigned page = charset.page_uni2charset[unit >> 8];
    if (page == 0) return -1;
    const unsigned char byte = charset.pages[page - 1][unit & 0xff];
    if (byte == 0) return -1;
    *out = byte;
    return 1;
}

template <size_t Pages>
int byteToUnit(const Charset<Pages>& charset, const unsigned char* s, unsigned short* out) {
    *out = charset.charset2uni[*s];
    return *out != 0 ? 1 : -1;
}

// Where a conversion stands.
struct Progress {
    unsigned char* dst;
    int room;
    const unsigned char* src;
    int left;

    void advance(int written, int read) {
        dst += written;
        room -= written;
        src += read;
        left -= read;
    }
};

bool isRefused(const unsigned char* dst, int dstLen, const unsigned char* src, int srcLen) {
    return dst == nullptr || src == nullptr || srcLen <= 0 || dstLen < srcLen;
}

// Sixteen bytes at a time while any result fits. A sequence is stored with its padding, which the next one
// overwrites; so it is put together aside, and what lies behind it in the destination stays.
void convertBlocks(const Sequence* utf8, Progress& progress) {
    constexpr int kBlock = 16;
    while (progress.left >= kBlock && progress.room >= 3 * kBlock) {
        unsigned char sequences[3 * kBlock + sizeof(Sequence)];
        unsigned char* end = sequences;
        for (int i = 0; i < kBlock; ++i) {
            const Sequence& sequence = utf8[progress.src[i]];
            std::memcpy(end, &sequence, sizeof sequence);
            end += sequence.length;
        }
        std::memcpy(progress.dst, sequences, static_cast<size_t>(end - sequences));
        progress.advance(static_cast<int>(end - sequences), kBlock);
    }
}

// char_to_utf8() by a table.
int textToUtf8(const Sequence* utf8, unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen) {
    if (isRefused(dst, dstLen, src, srcLen)) return -1;
    Progress progress{dst, dstLen, src, srcLen};
    convertBlocks(utf8, progress);
    while (progress.left > 0) {
        const Sequence& sequence = utf8[*progress.src];
        if (sequence.length > progress.room) break;
        std::memcpy(progress.dst, sequence.bytes, sequence.length);
        progress.advance(sequence.length, 1);
    }
    dstLen = static_cast<int>(progress.dst - dst);
    srcLen = static_cast<int>(progress.src - src);
    return 0;
}

}  // namespace

int char_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen,
                 int (*toUnit)(const unsigned char*, int, unsigned short*)) {
    if (isRefused(dst, dstLen, src, srcLen)) return -1;
    Progress progress{dst, dstLen, src, srcLen};
    while (progress.left > 0) {
        unsigned short unit = 0;
        int length = 0;
        if (toUnit(progress.src, 1, &unit) >= 0) {
            length = Detail::writeUnit(progress.dst, unit, progress.room);
            if (length < 1) break;
        }
        progress.advance(length, 1);
    }
    dstLen = static_cast<int>(progress.dst - dst);
    srcLen = static_cast<int>(progress.src - src);
    return 0;
}

#define FUNDO_CHARSET(X, ...)                                                                                \
    static constexpr Chart s_chart_##X = {{__VA_ARGS__}};                                                    \
    static constexpr Charset<pagesOf(s_chart_##X)> s_##X(s_chart_##X);                                       \
    int X##_uni2char(unsigned short uni, unsigned char* out, int boundlen) {                                 \
        return unitToByte(s_##X, uni, out, boundlen);                                                        \
    }                                                                                                        \
    int X##_char2uni(const unsigned char* s, int, unsigned short* out) { return byteToUnit(s_##X, s, out); } \
    int X##_to_utf8(unsigned char* dst, int& dstLen, const unsigned char* src, int& srcLen) {                \
        return textToUtf8(s_##X.utf8, dst, dstLen, src, srcLen);                                             \
    }

#include "Utils/Unicode/Charts/SingleByte.inc"

}  // namespace Tovra::Utils
