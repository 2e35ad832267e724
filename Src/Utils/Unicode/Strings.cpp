// Texts between UTF-8 and units: runs by vectors, what lies between them by single characters.
#include "Utils/Unicode/Strings.h"

#include <cstring>

#include "Utils/Unicode.h"
#include "Utils/Unicode/Runs.h"
#include "Utils/Unicode/Utf8Forms.h"

namespace Tovra::Utils {

namespace {

size_t sizeOf(const unsigned char* begin, const unsigned char* end) {
    return static_cast<size_t>(end - begin);
}

// Appends one unit that is not ASCII; one that passes the limit is dropped.
void appendLong(unsigned char*& dst, unsigned short unit, int& maxlen) {
    const int length = Detail::writeUnit(dst, unit, maxlen);
    maxlen -= length > 0 ? length : 1;
    if (length > 0) dst += length;
}

// Whole blocks from the start of one; src then stands at a unit that ended them.
void encodeBlocks(unsigned char*& dst, const unsigned short*& src, int& maxlen) {
    constexpr size_t kUnlimited = static_cast<size_t>(-1);
    const size_t ascii = Detail::narrowAscii(dst, src, kUnlimited);
    dst += ascii;
    src += ascii;
    const size_t triples = Detail::encodeTriples(dst, src, static_cast<size_t>(maxlen) / 3);
    dst += 3 * triples;
    src += triples;
    maxlen -= static_cast<int>(3 * triples);
}

}  // namespace

namespace Detail {

size_t decodeUtf8(unsigned short* dst, const unsigned char*& src, const unsigned char* stop,
                  const unsigned char* end) {
    unsigned short* out = dst;
    while (src < stop) {
        if (*src < 0x80) {
            const size_t run = widenAscii(out, src, sizeOf(src, stop));
            out += run;
            src += run;
            while (src < stop && *src < 0x80)
                *out++ = *src++;
            continue;
        }
        if (const size_t run = decodeTriples(out, src, sizeOf(src, stop)); run != 0) {
            out += run;
            src += 3 * run;
            continue;
        }
        const int length = readUnit(out, src, static_cast<int>(end - src));
        out += length > 0 ? 1 : 0;
        src += length > 0 ? length : 1;
    }
    return static_cast<size_t>(out - dst);
}

size_t encodeUtf8(unsigned char* dst, const unsigned short* src, int& maxlen) {
    unsigned char* out = dst;
    while (maxlen > 0) {
        if (isBlockStart(src)) encodeBlocks(out, src, maxlen);
        // The limit ends the text before the next unit is looked at.
        if (maxlen < 1 || *src == 0) break;
        do {
            const unsigned short unit = *src++;
            if (unit < 0x80) {
                *out++ = static_cast<unsigned char>(unit);
            } else {
                appendLong(out, unit, maxlen);
            }
        } while (maxlen > 0 && *src != 0 && !isBlockStart(src));
    }
    return static_cast<size_t>(out - dst);
}

}  // namespace Detail

int utf8_mbstowcs(unsigned short* dst, const unsigned char* src, int n) {
    if (n < 1) return 0;
    const unsigned char* end = src + strnlen(reinterpret_cast<const char*>(src), static_cast<size_t>(n));
    return static_cast<int>(Detail::decodeUtf8(dst, src, end, end));
}

int utf8_wcstombs(unsigned char* dst, const unsigned short* src, int maxlen) {
    return static_cast<int>(Detail::encodeUtf8(dst, src, maxlen));
}

}  // namespace Tovra::Utils
