// The one place that asks the processor what it can do.
//
// A kernel that needs an extension asks has() for it and has a portable twin; restrictTo() lets a test or a
// benchmark run the twin on any machine. Kernels ask at each call, so a restriction acts at once.
#pragma once

#include <atomic>

#if defined(__x86_64__)
#define FUNDO_X86_64 1
#endif

namespace Tovra::Utils::Cpu {

// Sets of instructions, one bit each; names that stand for more than one extension name what the kernels
// need.
enum Feature : unsigned {
    kPortable = 0,
    kSsse3 = 1u << 0,
    kAvx2 = 1u << 1,
    kAvx512 = 1u << 2,     ///< F, BW, DQ and VL
    kAes = 1u << 3,        ///< AES-NI and SSE4.1
    kVaes256 = 1u << 4,    ///< VAES with AVX2
    kVaes512 = 1u << 5,    ///< VAES with AVX-512
    kClmul = 1u << 6,      ///< PCLMULQDQ and SSE4.1
    kVclmul512 = 1u << 7,  ///< VPCLMULQDQ with AVX-512
    kSha = 1u << 8,        ///< SHA-1 and SHA-256 instructions, SSE4.1
    kVbmi = 1u << 9,       ///< AVX-512 VBMI
    kAll = ~0u
};

namespace Detail {

// The features that may not be used; kUnasked until the processor has been asked.
constexpr unsigned kUnasked = 1u << 31;
extern std::atomic<unsigned> s_refused;

unsigned askOnce();

}  // namespace Detail

// Whether the processor and the system have all of the features and no restriction forbids them. Inline,
// since it is asked for each block of a short message.
inline bool has(unsigned features) {
    unsigned refused = Detail::s_refused.load(std::memory_order_relaxed);
    if ((refused & Detail::kUnasked) != 0) refused = Detail::askOnce();
    return (features & refused) == 0;
}

// ECX of CPUID leaf 1, for callers that ask by its bits; the bit of a forbidden feature is clear. 0 on other
// architectures.
unsigned basicWord();

// From now on only these features are used, of those that the processor has: kPortable forbids all, kAll
// lifts the restriction. Answers the former restriction.
unsigned restrictTo(unsigned features);

// Restricts for the length of a scope.
class CRestriction {
public:
    explicit CRestriction(unsigned features) : m_former(restrictTo(features)) {}
    ~CRestriction() { restrictTo(m_former); }
    CRestriction(const CRestriction&) = delete;
    CRestriction& operator=(const CRestriction&) = delete;

private:
    unsigned m_former;
};

}  // namespace Tovra::Utils::Cpu
