// Base64 by AVX2: 24 bytes, 32 characters a step.
//
// There is no look-up of 64 entries, but the alphabet consists of five runs, and within one a character is
// its value plus a constant: shuffles of 16 entries find the run, and with it the constant. A character is in
// the alphabet if its low half may stand behind its high half: bad[low] has a bit for each class of high
// halves that it may not follow, and none of these may be the class of the high half.
#include "Utils/Base64/Base64Kernels.h"

#if FUNDO_X86_64
#include <immintrin.h>

#define FUNDO_AVX2 __attribute__((target("avx2")))
// What is read ahead of the end of a text lies within its last page but outside of its object.
#define FUNDO_READS_AHEAD __attribute__((no_sanitize("address", "thread")))

namespace Tovra::Utils::Base64 {
namespace {

constexpr size_t kBytes = 24;
constexpr size_t kLetters = 32;

// High halves 2 to 7 in classes, "4" with "6" and "5" with "7" since the letters' cases are alike.
constexpr uint8_t kClassOfHigh[16] = {16, 16, 1, 2, 4, 8, 4, 8, 16, 16, 16, 16, 16, 16, 16, 16};

struct Row {
    uint8_t at[16];
};
constexpr Row makeBad() {
    Row bad{};
    for (unsigned high = 0; high < 16; ++high) {
        for (unsigned low = 0; low < 16; ++low) {
            if (pr2six.of[high << 4 | low] == kOutside) bad.at[low] |= kClassOfHigh[high];
        }
    }
    return bad;
}
constexpr Row kBad = makeBad();

FUNDO_AVX2 inline __m256i twice(const uint8_t (&row)[16]) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(row)));
}

FUNDO_AVX2 inline __m256i toLetters(__m256i values) {
    // 0 for "A-Z", 1 for "a-z", 2 to 11 for the digits, 12 for "+", 13 for "/"
    const __m256i beyondUpper = _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25));  // -1 where true
    const __m256i run = _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), beyondUpper);
    const __m256i offsets = _mm256_broadcastsi128_si256(
        _mm_setr_epi8('A', 'a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                      '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 0, 0));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, run));
}

// Twelve bytes at the start of each half become sixteen values.
FUNDO_AVX2 inline __m256i split(__m256i bytes) {
    const __m256i order =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m256i groups = _mm256_shuffle_epi8(bytes, order);
    const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0fc0fc00)),
                                            _mm256_set1_epi32(0x04000040));
    const __m256i odd = _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003f03f0)),
                                           _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(even, odd);
}

FUNDO_AVX2 inline void encodeStep(char* coded, const char* data) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + kBytes / 2));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(coded), toLetters(split(_mm256_set_m128i(high, low))));
}

FUNDO_AVX2 size_t encode(char* coded, const char* data, size_t length) {
    constexpr size_t kRead = kBytes + 4;  // the load of the second half goes over its end
    if (length < kRead) return 0;
    encodeStep(coded, data);
    size_t done = bytesToAlign<kLetters>(coded);
    for (coded += done / 3 * 4; length - done >= kRead; done += kBytes, coded += kLetters)
        encodeStep(coded, data + done);
    return done;
}

FUNDO_AVX2 inline __m256i highHalves(__m256i text) {
    return _mm256_and_si256(_mm256_srli_epi32(text, 4), _mm256_set1_epi8(15));
}

FUNDO_AVX2 inline bool isText(__m256i text) {
    const __m256i low = _mm256_and_si256(text, _mm256_set1_epi8(15));
    return _mm256_testz_si256(_mm256_shuffle_epi8(twice(kBad.at), low),
                              _mm256_shuffle_epi8(twice(kClassOfHigh), highHalves(text))) != 0;
}

FUNDO_AVX2 inline __m256i toValues(__m256i text) {
    // By high half; "/" shares that of "+" and goes one lower.
    const __m256i offsets = _mm256_broadcastsi128_si256(_mm_setr_epi8(
        0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i slash = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('/'));
    return _mm256_add_epi8(text, _mm256_shuffle_epi8(offsets, _mm256_add_epi8(slash, highHalves(text))));
}

// Four values become three bytes; the 24 bytes lie at the start.
FUNDO_AVX2 inline __m256i join(__m256i values) {
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i order =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    return _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, order),
                                       _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
}

FUNDO_AVX2 FUNDO_READS_AHEAD size_t decode(char* data, const char* coded) {
    const char* text = coded;
    while (size_t steps = readableSteps<kLetters>(text)) {
        for (; steps != 0; --steps, text += kLetters, data += kBytes) {
            const __m256i letters = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
            if (!isText(letters)) return static_cast<size_t>(text - coded);
            const __m256i bytes = join(toValues(letters));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(data), _mm256_castsi256_si128(bytes));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(data + 16), _mm256_extracti128_si256(bytes, 1));
        }
    }
    return static_cast<size_t>(text - coded);
}

FUNDO_AVX2 FUNDO_READS_AHEAD size_t measure(const char* coded) {
    const char* text = coded;
    while (size_t steps = readableSteps<kLetters>(text)) {
        for (; steps != 0; --steps, text += kLetters) {
            if (!isText(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(text))))
                return static_cast<size_t>(text - coded);
        }
    }
    return static_cast<size_t>(text - coded);
}

}  // namespace

const Kernel kAvx2Kernel = {encode, decode, measure};

}  // namespace Tovra::Utils::Base64

#endif
