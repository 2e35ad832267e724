// Multiplication in the field of GCM, SP 800-38D: polynomials over GF(2) modulo x^128 + x^7 + x^2 + x + 1.
//
// The standard writes the coefficient of x^0 as the first bit of the first byte. Read as a big-endian number
// a block is therefore its polynomial mirrored; the carry-less product of two mirrored numbers is the
// mirrored product one place too low, and is reduced from its low half upwards.
#include "Utils/Aes.h"
#include "Utils/ByteOrder.h"
#include "Utils/CpuFeatures.h"

#if FUNDO_X86_64
#include <immintrin.h>
#endif

namespace Tovra::Utils::AES {
namespace {

struct Wide {
    std::uint64_t high, low;
};

using Multiply = Wide (*)(std::uint64_t, std::uint64_t);

constexpr Wide operator^(Wide a, Wide b) { return {a.high ^ b.high, a.low ^ b.low}; }
constexpr Wide shiftedRight(Wide a, unsigned n) { return {a.high >> n, a.low >> n | a.high << (64 - n)}; }

// Without branches on the factors, which may be secret.
Wide multiplyPortable(std::uint64_t a, std::uint64_t b) {
    Wide sum{0, 0};
    for (unsigned i = 0; i < 64; ++i) {
        const std::uint64_t taken = 0 - (b >> i & 1);
        sum = sum ^ Wide { i == 0 ? 0 : (a & taken) >> (64 - i), (a & taken) << i };
    }
    return sum;
}

#if FUNDO_X86_64
__attribute__((target("pclmul,sse4.1"))) Wide multiplyByInstruction(std::uint64_t a, std::uint64_t b) {
    const __m128i product = _mm_clmulepi64_si128(_mm_cvtsi64_si128(static_cast<long long>(a)),
                                                 _mm_cvtsi64_si128(static_cast<long long>(b)), 0);
    return {static_cast<std::uint64_t>(_mm_extract_epi64(product, 1)),
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(product))};
}
#endif

Multiply multiply() {
#if FUNDO_X86_64
    if (Cpu::has(Cpu::kClmul)) return multiplyByInstruction;
#endif
    return multiplyPortable;
}

// x * (1 + x + x^2 + x^7) in mirrored order, without what falls off the end.
Wide folded(Wide x) { return x ^ shiftedRight(x, 1) ^ shiftedRight(x, 2) ^ shiftedRight(x, 7); }

}  // namespace

void aesni_gcm_mult(unsigned char c[16], const unsigned char a[16], const unsigned char b[16]) {
    const Multiply times = multiply();
    const Wide x{loadBig64(a), loadBig64(a + 8)};
    const Wide y{loadBig64(b), loadBig64(b + 8)};
    Wide high = times(x.high, y.high);
    Wide low = times(x.low, y.low);
    const Wide middle = times(x.high, y.low) ^ times(x.low, y.high);
    high.low ^= middle.high;
    low.high ^= middle.low;

    high = {high.high << 1 | high.low >> 63, high.low << 1 | low.high >> 63};
    low = {low.high << 1 | low.low >> 63, low.low << 1};
    // What falls off the upper word of the low half comes back into its lower one first.
    low.high ^= low.low << 63 ^ low.low << 62 ^ low.low << 57;
    const Wide result = high ^ folded(low);
    storeBig64(c, result.high);
    storeBig64(c + 8, result.low);
}

}  // namespace Tovra::Utils::AES
