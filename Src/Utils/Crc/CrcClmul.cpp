// CRC by folding with carry-less multiplication.
//
// A register of 128 bits stands for a polynomial of the bytes in it, the first byte highest. To carry it D
// bits on, its halves are multiplied by the remainders of x^(D + 64) and x^D; the sum is congruent to the
// carried register and still fits, so it is XORed onto the bytes that lie there:
//
//     (low half * x^(D + 64))  ^  (high half * x^D)  ^  the 16 bytes D bits further on
//
// In reflected bit order a product comes out one place too high, so the constants hold x^(D + 63) and
// x^(D - 1). Many registers are folded side by side and onto each other at the end; the last 16 bytes that
// remain are congruent to all the data before, and the portable kernel takes the remainder.
#include "Utils/Crc/CrcKernels.h"

#if FUNDO_X86_64
#include <immintrin.h>

namespace Tovra::Utils::Crc {
namespace {

constexpr size_t kRegister = 16;
constexpr size_t kWide = 64;
constexpr size_t kLanes = 4;  // registers, narrow or wide, in flight

// x^exponent modulo the polynomial, reflected, in the high half of 64 bits.
constexpr int64_t power(uint32_t polynomial, size_t exponent) {
    uint32_t value = 0x80000000u;
    for (size_t i = 0; i < exponent; ++i)
        value = (value >> 1) ^ ((value & 1u) != 0 ? polynomial : 0);
    return static_cast<int64_t>(static_cast<uint64_t>(value) << 32);
}

// What the halves of a register are multiplied by to carry it over some bytes.
struct Keys {
    int64_t low;
    int64_t high;
};

template <uint32_t Polynomial, size_t Bytes>
constexpr Keys kKeys{power(Polynomial, 8 * Bytes + 63), power(Polynomial, 8 * Bytes - 1)};

FUNDO_CLMUL inline __m128i load(const uint8_t* data) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(data));
}

template <uint32_t Polynomial, size_t Bytes>
FUNDO_CLMUL inline __m128i fold(__m128i value, __m128i onto) {
    constexpr Keys keys = kKeys<Polynomial, Bytes>;
    const __m128i by = _mm_set_epi64x(keys.high, keys.low);
    const __m128i low = _mm_clmulepi64_si128(value, by, 0x00);
    const __m128i high = _mm_clmulepi64_si128(value, by, 0x11);
    return _mm_xor_si128(_mm_xor_si128(low, high), onto);
}

template <uint32_t Polynomial, size_t Bytes>
FUNDO_VCLMUL inline __m512i foldWide(__m512i value, __m512i onto) {
    constexpr Keys keys = kKeys<Polynomial, Bytes>;
    constexpr int kXorOfThree = 0x96;
    const __m512i by =
        _mm512_set_epi64(keys.high, keys.low, keys.high, keys.low, keys.high, keys.low, keys.high, keys.low);
    const __m512i low = _mm512_clmulepi64_epi128(value, by, 0x00);
    const __m512i high = _mm512_clmulepi64_epi128(value, by, 0x11);
    return _mm512_ternarylogic_epi64(low, high, onto, kXorOfThree);
}

}  // namespace

template <uint32_t Polynomial>
uint32_t updateClmul(uint32_t crc, const uint8_t* data, size_t length) {
    constexpr size_t kGroup = kRegister * kLanes;
    if (length < kGroup) return updatePortable<Polynomial>(crc, data, length);
    __m128i lane[kLanes];
    for (size_t i = 0; i < kLanes; ++i)
        lane[i] = load(data + kRegister * i);
    lane[0] = _mm_xor_si128(lane[0], _mm_cvtsi32_si128(static_cast<int>(crc)));
    for (data += kGroup, length -= kGroup; length >= kGroup; data += kGroup, length -= kGroup) {
        for (size_t i = 0; i < kLanes; ++i)
            lane[i] = fold<Polynomial, kGroup>(lane[i], load(data + kRegister * i));
    }
    for (size_t i = 1; i < kLanes; ++i)
        lane[i] = fold<Polynomial, kRegister>(lane[i - 1], lane[i]);
    __m128i sum = lane[kLanes - 1];
    for (; length >= kRegister; data += kRegister, length -= kRegister)
        sum = fold<Polynomial, kRegister>(sum, load(data));
    uint8_t bytes[kRegister];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), sum);
    return updatePortable<Polynomial>(updatePortable<Polynomial>(0, bytes, sizeof bytes), data, length);
}

template <uint32_t Polynomial>
uint32_t updateVector(uint32_t crc, const uint8_t* data, size_t length) {
    constexpr size_t kGroup = kWide * kLanes;
    if (length < kGroup) return updateClmul<Polynomial>(crc, data, length);
    __m512i lane[kLanes];
    for (size_t i = 0; i < kLanes; ++i)
        lane[i] = _mm512_loadu_si512(data + kWide * i);
    lane[0] = _mm512_xor_si512(lane[0], _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(crc))));
    for (data += kGroup, length -= kGroup; length >= kGroup; data += kGroup, length -= kGroup) {
        for (size_t i = 0; i < kLanes; ++i)
            lane[i] = foldWide<Polynomial, kGroup>(lane[i], _mm512_loadu_si512(data + kWide * i));
    }
    for (size_t i = 1; i < kLanes; ++i)
        lane[i] = foldWide<Polynomial, kWide>(lane[i - 1], lane[i]);
    __m512i sum = lane[kLanes - 1];
    for (; length >= kWide; data += kWide, length -= kWide)
        sum = foldWide<Polynomial, kWide>(sum, _mm512_loadu_si512(data));
    uint8_t bytes[kWide];
    _mm512_storeu_si512(bytes, sum);
    return updatePortable<Polynomial>(updateClmul<Polynomial>(0, bytes, sizeof bytes), data, length);
}

template uint32_t updateClmul<kIeee32>(uint32_t, const uint8_t*, size_t);
template uint32_t updateClmul<kAnsi16>(uint32_t, const uint8_t*, size_t);
template uint32_t updateVector<kIeee32>(uint32_t, const uint8_t*, size_t);
template uint32_t updateVector<kAnsi16>(uint32_t, const uint8_t*, size_t);

}  // namespace Tovra::Utils::Crc

#endif
