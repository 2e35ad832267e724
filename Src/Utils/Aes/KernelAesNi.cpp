// The AES kernel by the AES instructions, a block a register.
#include "Utils/CpuFeatures.h"

#if FUNDO_X86_64

#define FUNDO_AES_TARGET __attribute__((target("aes,sse4.1")))
#include "Utils/Aes/KernelX86.h"

namespace Tovra::Utils::AES {
namespace {

struct Lane128 {
    static constexpr std::size_t kBlocks = 1;
    static constexpr std::size_t kFlight = 8;

    using Vec = __m128i;

    static FUNDO_AES_INLINE Vec load(const void* p) { return _mm_loadu_si128(static_cast<const Vec*>(p)); }
    static FUNDO_AES_INLINE void store(void* p, Vec x) { _mm_storeu_si128(static_cast<Vec*>(p), x); }
    static FUNDO_AES_INLINE Vec mix(Vec a, Vec b) { return _mm_xor_si128(a, b); }
    static FUNDO_AES_INLINE Vec add(Vec a, Vec b) { return _mm_add_epi64(a, b); }
    static FUNDO_AES_INLINE Vec shuffle(Vec x, Vec order) { return _mm_shuffle_epi8(x, order); }

    static FUNDO_AES_INLINE Vec broadcast(__m128i block) { return block; }
    static FUNDO_AES_INLINE __m128i firstBlock(Vec x) { return x; }
    static FUNDO_AES_INLINE __m128i lastBlock(Vec x) { return x; }
    static FUNDO_AES_INLINE Vec indices() { return _mm_setzero_si128(); }
    static FUNDO_AES_INLINE Vec shiftIn(Vec last, Vec) { return last; }

    template <bool Inverse>
    static FUNDO_AES_INLINE Vec round(Vec x, Vec key) {
        return Inverse ? _mm_aesdec_si128(x, key) : _mm_aesenc_si128(x, key);
    }
    template <bool Inverse>
    static FUNDO_AES_INLINE Vec lastRound(Vec x, Vec key) {
        return Inverse ? _mm_aesdeclast_si128(x, key) : _mm_aesenclast_si128(x, key);
    }

    static FUNDO_AES_INLINE Vec fromByte(std::uint8_t byte) { return _mm_cvtsi32_si128(byte); }
    static FUNDO_AES_INLINE std::uint8_t firstByte(Vec x) {
        return static_cast<std::uint8_t>(_mm_cvtsi128_si32(x));
    }
    // Drops the first byte of the window and appends the first byte of x.
    static FUNDO_AES_INLINE Vec pushed(Vec window, Vec x) { return _mm_alignr_epi8(x, window, 1); }
};

}  // namespace

constexpr Kernel kAesNiKernel = makeKernel<X86<Lane128>>("AES-NI");

}  // namespace Tovra::Utils::AES

#endif
