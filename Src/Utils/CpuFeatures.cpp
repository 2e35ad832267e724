// What the processor can do, asked once; see the header.
#include "Utils/CpuFeatures.h"

#if FUNDO_X86_64
#include <cpuid.h>
#endif

namespace Tovra::Utils::Cpu {
namespace {

#if FUNDO_X86_64

// Which register states the system saves when it switches threads; an extension without it is not usable.
unsigned savedStates() {
    unsigned low = 0, high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

bool all(unsigned word, unsigned bits) { return (word & bits) == bits; }

unsigned ask() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0) return kPortable;
    const unsigned basic = c;
    const unsigned states = all(basic, bit_OSXSAVE) ? savedStates() : 0;
    unsigned extended = 0, extended2 = 0;
    if (__get_cpuid_count(7, 0, &a, &b, &c, &d) != 0) {
        extended = b;
        extended2 = c;
    }
    const bool vectors = all(states, 0x06) && all(basic, bit_AVX) && all(extended, bit_AVX2);
    const bool wide = vectors && all(states, 0xe6) &&
                      all(extended, bit_AVX512F | bit_AVX512BW | bit_AVX512DQ | bit_AVX512VL);
    unsigned features = kPortable;
    const auto add = [&features](Feature feature, bool present) {
        if (present) features |= feature;
    };
    add(kSsse3, all(basic, bit_SSSE3));
    add(kAvx2, vectors);
    add(kAvx512, wide);
    add(kAes, all(basic, bit_AES | bit_SSE4_1));
    add(kVaes256, vectors && all(basic, bit_AES) && all(extended2, bit_VAES));
    add(kVaes512, wide && all(basic, bit_AES) && all(extended2, bit_VAES));
    add(kClmul, all(basic, bit_PCLMUL | bit_SSE4_1));
    add(kVclmul512, wide && all(basic, bit_PCLMUL) && all(extended2, bit_VPCLMULQDQ));
    add(kSha, all(extended, bit_SHA) && all(basic, bit_SSE4_1 | bit_SSSE3));
    add(kVbmi, wide && all(extended2, bit_AVX512VBMI));
    return features;
}

unsigned askBasicWord() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    return __get_cpuid(1, &a, &b, &c, &d) != 0 ? c : 0;
}

unsigned forbiddenBits() {
    return (has(kAes) ? 0u : bit_AES) | (has(kClmul) ? 0u : bit_PCLMUL) | (has(kSsse3) ? 0u : bit_SSSE3);
}

#else

unsigned ask() { return kPortable; }
unsigned askBasicWord() { return 0; }
unsigned forbiddenBits() { return 0; }

#endif

unsigned present() {
    static const unsigned s_present = ask();
    return s_present;
}

}  // namespace

namespace Detail {

// Initialised by the compiler, so that other sources' initialisers may ask and restrict.
std::atomic<unsigned> s_refused{kUnasked};

unsigned askOnce() {
    const unsigned lacking = ~present() & ~kUnasked;
    unsigned refused = kUnasked;
    const bool first = s_refused.compare_exchange_strong(refused, lacking, std::memory_order_relaxed);
    return first ? lacking : refused;
}

}  // namespace Detail

unsigned basicWord() {
    static const unsigned s_word = askBasicWord();
    return s_word & ~forbiddenBits();
}

unsigned restrictTo(unsigned features) {
    const unsigned refused = ~(features & present()) & ~Detail::kUnasked;
    Detail::askOnce();
    return ~Detail::s_refused.exchange(refused, std::memory_order_relaxed);
}

}  // namespace Tovra::Utils::Cpu
