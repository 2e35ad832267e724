// Vectors of sixteen bytes; see the header.
//
// A sequence of three bytes is spread over the four bytes of a lane, last byte lowest, and back:
//
//     1110aaaa 10bbbbbb 10cccccc   <->   00000000 1110aaaa 10bbbbbb 10cccccc   <->   aaaabbbb bbcccccc
//
// four lanes, that is twelve bytes of text, at a time.
#include "Utils/Unicode/Runs.h"

#include "Utils/CpuFeatures.h"

#if FUNDO_X86_64
#include <immintrin.h>
#endif

namespace Tovra::Utils::Detail {

#if FUNDO_X86_64

namespace {

__m128i load(const unsigned char* src) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(src)); }

void store(void* dst, __m128i bytes) { _mm_storeu_si128(static_cast<__m128i*>(dst), bytes); }

// Reads what may lie behind the end of the text, which the sanitizers would not have.
__attribute__((no_sanitize("address", "thread"))) __m128i loadBlock(const unsigned short* src) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(src));
}

bool allSet(__m128i mask) { return _mm_movemask_epi8(mask) == 0xffff; }

// Whether all units are from 1 to 0x7F.
bool isAscii(__m128i units) {
    const __m128i positive = _mm_cmpgt_epi16(units, _mm_setzero_si128());
    return allSet(_mm_and_si128(positive, _mm_cmplt_epi16(units, _mm_set1_epi16(0x80))));
}

// How many of four lanes at the front are sequences of three bytes and not over-long.
unsigned leadingTriples(unsigned formBits, unsigned longBits) {
    unsigned lanes = 0;
    while (lanes < 4 && (formBits >> (3 * lanes) & 7U) == 7U && (longBits >> lanes & 1U) != 0)
        ++lanes;
    return lanes;
}

__attribute__((target("ssse3"))) size_t decodeTriplesSsse3(unsigned short* dst, const unsigned char* src,
                                                           size_t size) {
    constexpr char kNone = -1;
    const __m128i mask =
        _mm_setr_epi8(-16, -64, -64, -16, -64, -64, -16, -64, -64, -16, -64, -64, 0, 0, 0, 0);
    const __m128i form =
        _mm_setr_epi8(-32, -128, -128, -32, -128, -128, -32, -128, -128, -32, -128, -128, 0, 0, 0, 0);
    const __m128i spread = _mm_setr_epi8(2, 1, 0, kNone, 5, 4, 3, kNone, 8, 7, 6, kNone, 11, 10, 9, kNone);
    const __m128i gather = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 0, 1, 4, 5, 8, 9, 12, 13);
    size_t taken = 0;
    for (; size >= 16; size -= 12, src += 12, taken += 4) {
        const __m128i bytes = load(src);
        const __m128i formed = _mm_cmpeq_epi8(_mm_and_si128(bytes, mask), form);
        const __m128i lanes = _mm_shuffle_epi8(bytes, spread);
        const __m128i low = _mm_and_si128(lanes, _mm_set1_epi32(0x3f));
        const __m128i middle = _mm_and_si128(_mm_srli_epi32(lanes, 2), _mm_set1_epi32(0xfc0));
        const __m128i high = _mm_and_si128(_mm_srli_epi32(lanes, 4), _mm_set1_epi32(0xf000));
        const __m128i values = _mm_or_si128(_mm_or_si128(low, middle), high);
        const __m128i isLong = _mm_cmpgt_epi32(values, _mm_set1_epi32(0x7ff));
        const __m128i units = _mm_shuffle_epi8(values, gather);
        if (allSet(_mm_and_si128(formed, isLong))) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + taken), units);
            continue;
        }
        const unsigned count =
            leadingTriples(static_cast<unsigned>(_mm_movemask_epi8(formed)),
                           static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(isLong))));
        unsigned short front[8];
        store(front, units);
        for (unsigned i = 0; i < count; ++i)
            dst[taken + i] = front[i];
        return taken + count;
    }
    return taken;
}

// The sequences of the four low units, in the low twelve bytes; 0 above.
__attribute__((target("ssse3"))) inline __m128i sequences(__m128i lanes) {
    constexpr char kNone = -1;
    const __m128i pack = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, kNone, kNone, kNone, kNone);
    const __m128i first = _mm_srli_epi32(lanes, 12);
    const __m128i second = _mm_and_si128(_mm_slli_epi32(lanes, 2), _mm_set1_epi32(0x3f00));
    const __m128i third = _mm_and_si128(_mm_slli_epi32(lanes, 16), _mm_set1_epi32(0x3f0000));
    const __m128i marks = _mm_set1_epi32(0x8080e0);
    return _mm_shuffle_epi8(_mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, marks)), pack);
}

__attribute__((target("ssse3"))) size_t encodeTriplesSsse3(unsigned char* dst, const unsigned short* src,
                                                           size_t limit) {
    const __m128i zero = _mm_setzero_si128();
    size_t taken = 0;
    for (; limit - taken >= kBlockUnits; taken += kBlockUnits, dst += 3 * kBlockUnits) {
        const __m128i units = loadBlock(src + taken);
        const __m128i isShort = _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(-0x800)), zero);
        if (_mm_movemask_epi8(isShort) != 0) break;
        const __m128i low = sequences(_mm_unpacklo_epi16(units, zero));
        const __m128i high = sequences(_mm_unpackhi_epi16(units, zero));
        store(dst, _mm_or_si128(low, _mm_slli_si128(high, 12)));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + 16), _mm_srli_si128(high, 4));
    }
    return taken;
}

}  // namespace

size_t widenAscii(unsigned short* dst, const unsigned char* src, size_t size) {
    const __m128i zero = _mm_setzero_si128();
    size_t taken = 0;
    for (; size - taken >= 16; taken += 16) {
        const __m128i bytes = load(src + taken);
        if (_mm_movemask_epi8(bytes) != 0) break;
        store(dst + taken, _mm_unpacklo_epi8(bytes, zero));
        store(dst + taken + 8, _mm_unpackhi_epi8(bytes, zero));
    }
    return taken;
}

size_t narrowAscii(unsigned char* dst, const unsigned short* src, size_t limit) {
    size_t taken = 0;
    for (; limit - taken >= kBlockUnits; taken += kBlockUnits) {
        const __m128i units = loadBlock(src + taken);
        if (!isAscii(units)) break;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + taken), _mm_packus_epi16(units, units));
    }
    return taken;
}

size_t decodeTriples(unsigned short* dst, const unsigned char* src, size_t size) {
    return Cpu::has(Cpu::kSsse3) ? decodeTriplesSsse3(dst, src, size) : 0;
}

size_t encodeTriples(unsigned char* dst, const unsigned short* src, size_t limit) {
    return Cpu::has(Cpu::kSsse3) ? encodeTriplesSsse3(dst, src, limit) : 0;
}

#else

size_t widenAscii(unsigned short*, const unsigned char*, size_t) { return 0; }
size_t narrowAscii(unsigned char*, const unsigned short*, size_t) { return 0; }
size_t decodeTriples(unsigned short*, const unsigned char*, size_t) { return 0; }
size_t encodeTriples(unsigned char*, const unsigned short*, size_t) { return 0; }

#endif

}  // namespace Tovra::Utils::Detail
