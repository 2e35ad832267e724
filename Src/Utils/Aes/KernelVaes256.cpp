// The AES kernel by the vector form of the AES instructions with AVX2, two blocks a register.
#include "Utils/CpuFeatures.h"

#if FUNDO_X86_64

#define FUNDO_AES_TARGET __attribute__((target("vaes,aes,avx2")))
#include "Utils/Aes/KernelX86.h"

namespace Tovra::Utils::AES {
namespace {

struct Lane256 {
    static constexpr std::size_t kBlocks = 2;
    static constexpr std::size_t kFlight = 8;

    using Vec = __m256i;

    static FUNDO_AES_INLINE Vec load(const void* p) { return _mm256_loadu_si256(static_cast<const Vec*>(p)); }
    static FUNDO_AES_INLINE void store(void* p, Vec x) { _mm256_storeu_si256(static_cast<Vec*>(p), x); }
    static FUNDO_AES_INLINE Vec mix(Vec a, Vec b) { return _mm256_xor_si256(a, b); }
    static FUNDO_AES_INLINE Vec add(Vec a, Vec b) { return _mm256_add_epi64(a, b); }
    static FUNDO_AES_INLINE Vec shuffle(Vec x, Vec order) { return _mm256_shuffle_epi8(x, order); }

    static FUNDO_AES_INLINE Vec broadcast(__m128i block) { return _mm256_broadcastsi128_si256(block); }
    static FUNDO_AES_INLINE __m128i firstBlock(Vec x) { return _mm256_castsi256_si128(x); }
    static FUNDO_AES_INLINE __m128i lastBlock(Vec x) { return _mm256_extracti128_si256(x, 1); }
    static FUNDO_AES_INLINE Vec indices() { return _mm256_set_epi64x(0, 1, 0, 0); }
    static FUNDO_AES_INLINE Vec shiftIn(Vec last, Vec data) {
        return _mm256_permute2x128_si256(last, data, 0x21);
    }

    template <bool Inverse>
    static FUNDO_AES_INLINE Vec round(Vec x, Vec key) {
        return Inverse ? _mm256_aesdec_epi128(x, key) : _mm256_aesenc_epi128(x, key);
    }
    template <bool Inverse>
    static FUNDO_AES_INLINE Vec lastRound(Vec x, Vec key) {
        return Inverse ? _mm256_aesdeclast_epi128(x, key) : _mm256_aesenclast_epi128(x, key);
    }
};

}  // namespace

constexpr Kernel kVaes256Kernel = makeKernel<X86<Lane256>>("VAES-256");

}  // namespace Tovra::Utils::AES

#endif
