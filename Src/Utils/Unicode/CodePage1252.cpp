// Code page 1252, the one single-byte charset with values of all widths on the way back.
#include "Utils/Unicode.h"
#include "Utils/Unicode/Utf8Forms.h"

namespace Tovra::Utils {

namespace {

constexpr unsigned short s_places80To9f[32] = {
#include "Utils/Unicode/Charts/CodePage1252.inc"
};

constexpr bool isPlaced(uint32_t byte) { return byte >= 0x80 && byte < 0xa0; }

constexpr uint32_t codePointOf(unsigned char byte) {
    return isPlaced(byte) ? s_places80To9f[byte - 0x80U] : byte;
}

constexpr bool isUndefined(unsigned char byte) { return isPlaced(byte) && codePointOf(byte) == byte; }

// The byte of a code point; -1 for none.
int byteOf(uint32_t codePoint) {
    // Contract: the last place is never searched, U+00FF has no byte.
    if (codePoint < 0xff && !isPlaced(codePoint)) return static_cast<int>(codePoint);
    for (int place = 0; place < 32; ++place)
        if (s_places80To9f[place] == codePoint) return 0x80 + place;
    return -1;
}

// The code point of a sequence and its length, 0 if a byte does not fit. Over-long forms are read like
// others.
int readSequence(const unsigned char* s, uint32_t& codePoint) {
    const int length = *s < 0x80 ? 1 : get_utf8_size(*s);
    if (length < 0) return 0;
    codePoint = length == 1 ? *s : *s & (0x7fU >> length);
    for (int i = 1; i < length; ++i) {
        if (!Detail::isContinuation(s[i])) return 0;
        codePoint = codePoint << 6 | (s[i] & 0x3fU);
    }
    return length;
}

}  // namespace

int cp1252_to_utf8(unsigned char* dst, int dstLen, const unsigned char* src, int srcLen) {
    if (src == nullptr || srcLen < 1) return -1;
    int defined = 0;
    int needed = srcLen;
    for (; defined < srcLen && !isUndefined(src[defined]); ++defined)
        needed += Detail::utf8Length(codePointOf(src[defined])) - 1;
    if (needed > dstLen) return needed;
    for (int i = 0; i < srcLen; ++i) {
        const uint32_t codePoint = i < defined ? codePointOf(src[i]) : 0;
        const int length = Detail::utf8Length(codePoint);
        Detail::writeUtf8(dst, codePoint, length);
        dst += length;
    }
    return 0;
}

int utf8_to_cp1252(const unsigned char* src, int srcLen, unsigned char* dst, int) {
    int written = 0;
    // Contract: a sequence that begins inside is read to its end, though it may pass srcLen.
    for (int at = 0; at < srcLen;) {
        uint32_t codePoint = 0;
        const int length = readSequence(src + at, codePoint);
        if (length == 0) break;
        const int byte = byteOf(codePoint);
        if (byte >= 0) dst[written++] = static_cast<unsigned char>(byte);
        at += length;
    }
    return written;
}

}  // namespace Tovra::Utils
