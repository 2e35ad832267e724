// SHA-1's compression: eighty steps unrolled, or four at a time by the processor's instructions.
#include "Utils/Sha1/Sha1Kernels.h"

#include <utility>

#include "Utils/BlockFeed.h"
#include "Utils/ByteOrder.h"

#if FUNDO_X86_64
#include <immintrin.h>

#define FUNDO_SHA __attribute__((target("sha,sse4.1")))
#endif

#define FUNDO_INLINE __attribute__((always_inline)) inline

namespace Tovra::Utils::Sha1 {
namespace {

FUNDO_INLINE uint32_t rotated(uint32_t value, unsigned bits) { return value << bits | value >> (32 - bits); }

// The last sixteen words of the message schedule go round in w.
template <size_t Step>
FUNDO_INLINE uint32_t word(uint32_t (&w)[16], const uint8_t* block) {
    uint32_t& slot = w[Step % 16];
    if (Step < 16)
        slot = loadBig32(block + 4 * (Step % 16));
    else
        slot = rotated(w[(Step + 13) % 16] ^ w[(Step + 8) % 16] ^ w[(Step + 2) % 16] ^ slot, 1);
    return slot;
}

// The registers a to e change places instead of values.
template <size_t Step>
FUNDO_INLINE void step(uint32_t (&r)[5], uint32_t (&w)[16], const uint8_t* block) {
    const uint32_t a = r[(80 - Step) % 5], c = r[(82 - Step) % 5], d = r[(83 - Step) % 5];
    uint32_t& b = r[(81 - Step) % 5];
    uint32_t& e = r[(84 - Step) % 5];
    e += word<Step>(w, block);
    if (Step < 20)
        e += (d ^ (b & (c ^ d))) + 0x5A827999u;
    else if (Step < 40)
        e += (b ^ c ^ d) + 0x6ED9EBA1u;
    else if (Step < 60)
        e += (b & c) + (d & (b ^ c)) + 0x8F1BBCDCu;
    else
        e += (b ^ c ^ d) + 0xCA62C1D6u;
    e += rotated(a, 5);
    b = rotated(b, 30);
}

template <size_t... Steps>
FUNDO_INLINE void allSteps(uint32_t (&r)[5], const uint8_t* block, std::index_sequence<Steps...>) {
    uint32_t w[16];
    (step<Steps>(r, w, block), ...);
}

}  // namespace

void compressPortable(uint32_t* state, const uint8_t* data, size_t blocks) {
    for (; blocks != 0; --blocks, data += kBlock) {
        uint32_t r[5] = {state[0], state[1], state[2], state[3], state[4]};
        allSteps(r, data, std::make_index_sequence<80>());
        for (size_t i = 0; i < 5; ++i)
            state[i] += r[i];
    }
}

#if FUNDO_X86_64

namespace {

constexpr int kReversed = 0x1B;  // the first word highest, as the instructions want it

struct Registers {
    __m128i abcd;
    __m128i e;  // in the highest word; in the others what the next group does not look at
};

// Four steps. The first four groups take their words from the block, the others from the four groups before.
template <size_t Group>
FUNDO_SHA FUNDO_INLINE void group(Registers& r, __m128i (&w)[4], const uint8_t* block) {
    __m128i& words = w[Group % 4];
    const __m128i& next = w[(Group + 1) % 4];
    if (Group < 4) {
        const __m128i order = _mm_set_epi64x(0x0001020304050607, 0x08090a0b0c0d0e0f);
        const auto* source = reinterpret_cast<const __m128i*>(block + 16 * (Group % 4));
        words = _mm_shuffle_epi8(_mm_loadu_si128(source), order);
    } else {
        const __m128i mixed = _mm_xor_si128(_mm_sha1msg1_epu32(words, next), w[(Group + 2) % 4]);
        words = _mm_sha1msg2_epu32(mixed, w[(Group + 3) % 4]);
    }
    const __m128i sum = Group == 0 ? _mm_add_epi32(r.e, words) : _mm_sha1nexte_epu32(r.e, words);
    r.e = r.abcd;
    r.abcd = _mm_sha1rnds4_epu32(r.abcd, sum, static_cast<int>(Group / 5));
}

template <size_t... Groups>
FUNDO_SHA FUNDO_INLINE void allGroups(Registers& r, const uint8_t* block, std::index_sequence<Groups...>) {
    __m128i w[4];
    (group<Groups>(r, w, block), ...);
}

}  // namespace

FUNDO_SHA void compressSha(uint32_t* state, const uint8_t* data, size_t blocks) {
    auto* first = reinterpret_cast<__m128i*>(state);
    Registers r{_mm_shuffle_epi32(_mm_loadu_si128(first), kReversed),
                _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0)};
    for (; blocks != 0; --blocks, data += kBlock) {
        const Registers before = r;
        allGroups(r, data, std::make_index_sequence<20>());
        r.abcd = _mm_add_epi32(r.abcd, before.abcd);
        r.e = _mm_sha1nexte_epu32(r.e, before.e);
    }
    _mm_storeu_si128(first, _mm_shuffle_epi32(r.abcd, kReversed));
    state[4] = static_cast<uint32_t>(_mm_extract_epi32(r.e, 3));
}

#endif

Compress kernel() {
#if FUNDO_X86_64
    if (Cpu::has(Cpu::kSha)) return compressSha;
#endif
    return compressPortable;
}

}  // namespace Tovra::Utils::Sha1
