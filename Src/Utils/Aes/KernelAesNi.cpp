// The AES kernel by the AES instructions, a block a register.
#include "Utils/CpuFeatures.h"

#if FUNDO_X86_64

#include <immintrin.h>

#define FUNDO_AES_TARGET __attribute__((target("aes,sse4.1")))
#include "Utils/Aes/KernelModes.h"

namespace Tovra::Utils::AES {
namespace {

struct AesNi {
    static constexpr std::size_t kBlocks = 1;
    static constexpr std::size_t kFlight = 8;

    using Vec = __m128i;
    using Counter = __m128i;  // as an integer, least significant byte first

    static FUNDO_AES_INLINE Vec load(const void* p) { return _mm_loadu_si128(static_cast<const Vec*>(p)); }
    static FUNDO_AES_INLINE void store(void* p, Vec x) { _mm_storeu_si128(static_cast<Vec*>(p), x); }
    static FUNDO_AES_INLINE Vec key(const Schedule& schedule, int round) { return load(schedule.key(round)); }
    static FUNDO_AES_INLINE Vec mix(Vec a, Vec b) { return _mm_xor_si128(a, b); }

    template <bool Inverse>
    static FUNDO_AES_INLINE Vec round(Vec x, Vec key) {
        return Inverse ? _mm_aesdec_si128(x, key) : _mm_aesenc_si128(x, key);
    }
    template <bool Inverse>
    static FUNDO_AES_INLINE Vec lastRound(Vec x, Vec key) {
        return Inverse ? _mm_aesdeclast_si128(x, key) : _mm_aesenclast_si128(x, key);
    }

    static FUNDO_AES_INLINE Vec loadLast(const std::uint8_t* chain) { return load(chain); }
    static FUNDO_AES_INLINE void storeLast(std::uint8_t* chain, Vec last) { store(chain, last); }
    static FUNDO_AES_INLINE Vec shiftIn(Vec last, Vec) { return last; }

    static FUNDO_AES_INLINE Vec reversed(Vec x) {
        return _mm_shuffle_epi8(x, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    }
    static FUNDO_AES_INLINE Counter loadCounter(const std::uint8_t* chain) { return reversed(load(chain)); }
    static FUNDO_AES_INLINE void storeCounter(std::uint8_t* chain, Counter counter) {
        store(chain, reversed(counter));
    }
    static FUNDO_AES_INLINE Counter advanced(Counter counter, std::size_t n) {
        return _mm_add_epi64(counter, _mm_set_epi64x(0, static_cast<long long>(n)));
    }
    static FUNDO_AES_INLINE Vec counterBlocks(Counter counter, std::size_t i) {
        return reversed(advanced(counter, i));
    }

    static FUNDO_AES_INLINE Vec fromByte(std::uint8_t byte) { return _mm_cvtsi32_si128(byte); }
    static FUNDO_AES_INLINE std::uint8_t firstByte(Vec x) {
        return static_cast<std::uint8_t>(_mm_cvtsi128_si32(x));
    }
    // Drops the first byte of the window and appends the first byte of x.
    static FUNDO_AES_INLINE Vec pushed(Vec window, Vec x) { return _mm_alignr_epi8(x, window, 1); }
};

}  // namespace

const Kernel kAesNiKernel = makeKernel<AesNi>("AES-NI");

}  // namespace Tovra::Utils::AES

#endif
