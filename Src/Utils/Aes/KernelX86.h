// What the kernels by the AES instructions share, whatever the width of their registers.
//
// L names a register of one or more blocks and its instructions; counters are kept as integers, least
// significant byte first, and turned round on the way into the cipher.
#pragma once

#include <immintrin.h>

#include "Utils/Aes/KernelModes.h"

namespace Tovra::Utils::AES {
namespace {

template <class L>
struct X86 : L {
    using Vec = typename L::Vec;
    using Counter = Vec;
    static constexpr bool kInRow = true;

    static FUNDO_AES_INLINE Vec key(const Schedule& schedule, int round) {
        return L::broadcast(block(schedule.key(round)));
    }

    static FUNDO_AES_INLINE Vec loadLast(const std::uint8_t* chain) { return L::broadcast(block(chain)); }
    static FUNDO_AES_INLINE void storeLast(std::uint8_t* chain, Vec last) { put(chain, L::lastBlock(last)); }

    static FUNDO_AES_INLINE Counter loadCounter(const std::uint8_t* chain) {
        return L::add(L::broadcast(_mm_shuffle_epi8(block(chain), reversal())), L::indices());
    }
    static FUNDO_AES_INLINE void storeCounter(std::uint8_t* chain, Counter counter) {
        put(chain, _mm_shuffle_epi8(L::firstBlock(counter), reversal()));
    }
    static FUNDO_AES_INLINE Counter advanced(Counter counter, std::size_t vectors) {
        return L::add(counter, L::broadcast(_mm_set_epi64x(0, static_cast<long long>(vectors * L::kBlocks))));
    }
    static FUNDO_AES_INLINE Vec counterBlocks(Counter counter, std::size_t vector) {
        return L::shuffle(advanced(counter, vector), L::broadcast(reversal()));
    }

private:
    static FUNDO_AES_INLINE __m128i block(const void* p) {
        return _mm_loadu_si128(static_cast<const __m128i*>(p));
    }
    static FUNDO_AES_INLINE void put(void* p, __m128i x) { _mm_storeu_si128(static_cast<__m128i*>(p), x); }
    static FUNDO_AES_INLINE __m128i reversal() {
        return _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    }
};

}  // namespace
}  // namespace Tovra::Utils::AES
