// The AES kernel by the vector form of the AES instructions with AVX-512, four blocks a register.
#include "Utils/CpuFeatures.h"

#if FUNDO_X86_64

#define FUNDO_AES_TARGET __attribute__((target("vaes,aes,avx512f,avx512bw,avx512vl")))
#include "Utils/Aes/KernelX86.h"

namespace Tovra::Utils::AES {
namespace {

// The masks are full: GCC 12 takes the plain forms for reads of uninitialised registers.
struct Lane512 {
    static constexpr std::size_t kBlocks = 4;
    static constexpr std::size_t kFlight = 8;

    using Vec = __m512i;

    static FUNDO_AES_INLINE Vec load(const void* p) { return _mm512_loadu_si512(p); }
    static FUNDO_AES_INLINE void store(void* p, Vec x) { _mm512_storeu_si512(p, x); }
    static FUNDO_AES_INLINE Vec mix(Vec a, Vec b) { return _mm512_xor_si512(a, b); }
    static FUNDO_AES_INLINE Vec add(Vec a, Vec b) { return _mm512_add_epi64(a, b); }
    static FUNDO_AES_INLINE Vec shuffle(Vec x, Vec order) { return _mm512_shuffle_epi8(x, order); }

    static FUNDO_AES_INLINE Vec broadcast(__m128i block) {
        return _mm512_maskz_broadcast_i32x4(0xffff, block);
    }
    static FUNDO_AES_INLINE __m128i firstBlock(Vec x) { return _mm512_maskz_extracti32x4_epi32(0xf, x, 0); }
    static FUNDO_AES_INLINE __m128i lastBlock(Vec x) { return _mm512_maskz_extracti32x4_epi32(0xf, x, 3); }
    static FUNDO_AES_INLINE Vec indices() { return _mm512_set_epi64(0, 3, 0, 2, 0, 1, 0, 0); }
    static FUNDO_AES_INLINE Vec shiftIn(Vec last, Vec data) {
        return _mm512_maskz_alignr_epi64(0xff, data, last, 6);
    }

    template <bool Inverse>
    static FUNDO_AES_INLINE Vec round(Vec x, Vec key) {
        return Inverse ? _mm512_aesdec_epi128(x, key) : _mm512_aesenc_epi128(x, key);
    }
    template <bool Inverse>
    static FUNDO_AES_INLINE Vec lastRound(Vec x, Vec key) {
        return Inverse ? _mm512_aesdeclast_epi128(x, key) : _mm512_aesenclast_epi128(x, key);
    }
};

}  // namespace

constexpr Kernel kVaes512Kernel = makeKernel<X86<Lane512>>("VAES-512");

}  // namespace Tovra::Utils::AES

#endif
