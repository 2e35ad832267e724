// The ways to advance the register of a reflected CRC.
//
// A register has 32 bits. A CRC of 16 bits runs in its low half: with a polynomial whose reflected form has
// no bit above the sixteenth, the high half stays zero, and the work is the same.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Utils/CpuFeatures.h"

namespace Tovra::Utils::Crc {

constexpr uint32_t kIeee32 = 0xEDB88320u;
constexpr uint32_t kAnsi16 = 0xA001u;

// The register behind the data; each takes any length.
using Update = uint32_t (*)(uint32_t crc, const uint8_t* data, size_t length);

template <uint32_t Polynomial>
uint32_t updatePortable(uint32_t crc, const uint8_t* data, size_t length);

#if FUNDO_X86_64
// A template takes its target from the first declaration.
#define FUNDO_CLMUL __attribute__((target("pclmul,sse4.1")))
#define FUNDO_VCLMUL __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,vpclmulqdq,pclmul")))

// Carry-less multiplication; needs kClmul.
template <uint32_t Polynomial>
FUNDO_CLMUL uint32_t updateClmul(uint32_t crc, const uint8_t* data, size_t length);

// Its vector form; needs kVclmul512 and kClmul.
template <uint32_t Polynomial>
FUNDO_VCLMUL uint32_t updateVector(uint32_t crc, const uint8_t* data, size_t length);
#endif

// The fastest way on this processor for a length.
template <uint32_t Polynomial>
Update kernelFor(size_t length);

}  // namespace Tovra::Utils::Crc
