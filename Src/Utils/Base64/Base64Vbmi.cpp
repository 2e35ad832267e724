// Base64 by AVX-512 VBMI: 48 bytes, 64 characters a step.
//
// Here a look-up of 64 or 128 bytes is one instruction, and so is picking eight fields of any offset out of
// 64 bits, so the transforms are what the standard says.
#include "Utils/Base64/Base64Kernels.h"

#if FUNDO_X86_64
#include <immintrin.h>

#define FUNDO_VBMI __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi")))
// What is read ahead of the end of a text lies within its last page but outside of its object.
#define FUNDO_READS_AHEAD __attribute__((no_sanitize("address", "thread")))

namespace Tovra::Utils::Base64 {
namespace {

constexpr size_t kBytes = 48;
constexpr size_t kLetters = 64;
constexpr uint8_t kHighBit = 0x80;
// The forms without a mask start from an undefined register, which one compiler warns of.
constexpr __mmask64 kAll64 = ~0ull;

struct Wide {
    uint8_t at[64];
};

// Which byte goes where, for each group of a step: group * stride + places[i].
constexpr Wide makeOrder(unsigned groups, unsigned from, unsigned to, const unsigned* places) {
    Wide order{};
    for (unsigned group = 0; group < groups; ++group) {
        for (unsigned i = 0; i < to; ++i)
            order.at[group * to + i] = static_cast<uint8_t>(group * from + places[i]);
    }
    return order;
}

// Three bytes become a word in which each value is a run of bits; four values of a word become three bytes.
constexpr unsigned kSpreadPlaces[] = {1, 0, 2, 1};
constexpr unsigned kPackPlaces[] = {2, 1, 0};
constexpr Wide kSpread = makeOrder(16, 3, 4, kSpreadPlaces);
constexpr Wide kPack = makeOrder(16, 4, 3, kPackPlaces);

// Half of the values by character, those outside of the alphabet marked by the high bit.
constexpr Wide makeValuesFrom(unsigned first) {
    Wide values{};
    for (unsigned i = 0; i < 64; ++i)
        values.at[i] = pr2six.of[first + i] == kOutside ? kHighBit : pr2six.of[first + i];
    return values;
}
constexpr Wide kLowValues = makeValuesFrom(0);
constexpr Wide kHighValues = makeValuesFrom(64);

FUNDO_VBMI inline void encodeStep(char* coded, const char* data) {
    constexpr __mmask64 kRead = (1ull << kBytes) - 1;
    constexpr long long kFields = 0x3036242a1016040a;  // first bit of each value in a pair of words
    const __m512i bytes = _mm512_maskz_loadu_epi8(kRead, data);
    const __m512i words = _mm512_maskz_permutexvar_epi8(kAll64, _mm512_loadu_si512(kSpread.at), bytes);
    const __m512i values = _mm512_maskz_multishift_epi64_epi8(kAll64, _mm512_set1_epi64(kFields), words);
    _mm512_storeu_si512(coded, _mm512_maskz_permutexvar_epi8(kAll64, values, _mm512_loadu_si512(basis_64)));
}

FUNDO_VBMI size_t encode(char* coded, const char* data, size_t length) {
    if (length < kBytes) return 0;
    encodeStep(coded, data);
    size_t done = bytesToAlign<kLetters>(coded);
    for (coded += done / 3 * 4; length - done >= kBytes; done += kBytes, coded += kLetters)
        encodeStep(coded, data + done);
    return done;
}

// The values of a step; false if a character is outside of the alphabet.
FUNDO_VBMI inline bool toValues(__m512i text, __m512i& values) {
    values =
        _mm512_permutex2var_epi8(_mm512_loadu_si512(kLowValues.at), text, _mm512_loadu_si512(kHighValues.at));
    // Either mark: a character beyond 127 has looked up another's value.
    return _mm512_movepi8_mask(_mm512_or_si512(text, values)) == 0;
}

FUNDO_VBMI FUNDO_READS_AHEAD size_t decode(char* data, const char* coded) {
    constexpr __mmask64 kWritten = (1ull << kBytes) - 1;
    const __m512i pack = _mm512_loadu_si512(kPack.at);
    const char* text = coded;
    while (size_t steps = readableSteps<kLetters>(text)) {
        for (; steps != 0; --steps, text += kLetters, data += kBytes) {
            __m512i values;
            if (!toValues(_mm512_loadu_si512(text), values)) return static_cast<size_t>(text - coded);
            const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
            const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
            _mm512_mask_storeu_epi8(data, kWritten, _mm512_maskz_permutexvar_epi8(kAll64, pack, groups));
        }
    }
    return static_cast<size_t>(text - coded);
}

FUNDO_VBMI FUNDO_READS_AHEAD size_t measure(const char* coded) {
    const char* text = coded;
    while (size_t steps = readableSteps<kLetters>(text)) {
        for (; steps != 0; --steps, text += kLetters) {
            __m512i values;
            if (!toValues(_mm512_loadu_si512(text), values)) return static_cast<size_t>(text - coded);
        }
    }
    return static_cast<size_t>(text - coded);
}

}  // namespace

const Kernel kVbmiKernel = {encode, decode, measure};

}  // namespace Tovra::Utils::Base64

#endif
