// Key expansion of FIPS 197, and the schedule of the equivalent inverse cipher.
//
// Both are written once over the two steps that the instructions can do: the S-box on a word, and inverse
// MixColumns on a round key. Schedules have the byte order of FIPS 197 whichever did them.
#include <cstring>

#include "Utils/Aes.h"
#include "Utils/Aes/Tables.h"
#include "Utils/ByteOrder.h"
#include "Utils/CpuFeatures.h"
#include "Utils/Wipe.h"

#if FUNDO_X86_64
#include <immintrin.h>
#endif

namespace Tovra::Utils::AES {
namespace {

using SubstituteWord = std::uint32_t (*)(std::uint32_t);
using UnmixKey = void (*)(std::uint8_t* out, const std::uint8_t* in);

// By way of the S-box, since the reverse tables begin with its inverse.
void unmixPortable(std::uint8_t* out, const std::uint8_t* in) {
    for (std::size_t i = 0; i < 4; ++i) {
        std::uint32_t column = 0;
        for (unsigned row = 0; row < 4; ++row)
            column ^= kTables.reverseRounds[row][kTables.forward[in[4 * i + row]]];
        storeLittle32(out + 4 * i, column);
    }
}

#if FUNDO_X86_64
__attribute__((target("aes,sse4.1"))) std::uint32_t substituteByInstruction(std::uint32_t word) {
    const __m128i words = _mm_set1_epi32(static_cast<int>(word));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_aeskeygenassist_si128(words, 0)));
}

__attribute__((target("aes,sse4.1"))) void unmixByInstruction(std::uint8_t* out, const std::uint8_t* in) {
    const __m128i key = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_aesimc_si128(key));
}
#endif

SubstituteWord substituteWord() {
#if FUNDO_X86_64
    if (Cpu::has(Cpu::kAes)) return substituteByInstruction;
#endif
    return substituted;
}

UnmixKey unmixKey() {
#if FUNDO_X86_64
    if (Cpu::has(Cpu::kAes)) return unmixByInstruction;
#endif
    return unmixPortable;
}

int roundsFor(size_t bits) {
    return bits == 128 || bits == 192 || bits == 256 ? static_cast<int>(bits / 32) + 6 : -1;
}

}  // namespace

int aesni_setkey_enc(unsigned char* rk, const unsigned char* key, size_t bits) {
    const int rounds = roundsFor(bits);
    if (rounds < 0) return -1;
    const SubstituteWord substitute = substituteWord();
    const size_t keyWords = bits / 32;
    const size_t words = 4 * (static_cast<size_t>(rounds) + 1);
    std::memcpy(rk, key, 4 * keyWords);
    std::uint8_t constant = 1;
    std::uint32_t word = loadLittle32(rk + 4 * (keyWords - 1));
    for (size_t i = keyWords; i < words; ++i) {
        if (i % keyWords == 0) {
            word = substitute(rotatedLeft(word, 24)) ^ constant;
            constant = doubled(constant);
        } else if (keyWords == 8 && i % 8 == 4) {
            word = substitute(word);
        }
        word ^= loadLittle32(rk + 4 * (i - keyWords));
        storeLittle32(rk + 4 * i, word);
    }
    return 0;
}

void aesni_inverse_key(unsigned char* inverse, const unsigned char* forward, int nr) {
    const UnmixKey unmix = unmixKey();
    const size_t last = static_cast<size_t>(nr);
    std::memcpy(inverse, forward + 16 * last, 16);
    for (size_t i = 1; i < last; ++i)
        unmix(inverse + 16 * i, forward + 16 * (last - i));
    std::memcpy(inverse + 16 * last, forward, 16);
}

void aes_init(aes_context* ctx) { *ctx = {}; }

void aes_free(aes_context* ctx) {
    if (ctx != nullptr) wipe(ctx, sizeof *ctx);
}

int aes_setkey_enc(aes_context* ctx, const unsigned char* key, unsigned int keybits) {
    if (aesni_setkey_enc(reinterpret_cast<unsigned char*>(ctx->buf), key, keybits) != 0) return -1;
    ctx->nr = roundsFor(keybits);
    ctx->rk = ctx->buf;
    return 0;
}

int aes_setkey_dec(aes_context* ctx, const unsigned char* key, unsigned int keybits) {
    aes_context forward = {};
    if (aes_setkey_enc(&forward, key, keybits) != 0) return -1;
    ctx->nr = forward.nr;
    ctx->rk = ctx->buf;
    aesni_inverse_key(reinterpret_cast<unsigned char*>(ctx->buf),
                      reinterpret_cast<const unsigned char*>(forward.buf), forward.nr);
    wipe(&forward, sizeof forward);
    return 0;
}

}  // namespace Tovra::Utils::AES
