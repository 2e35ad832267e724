// The compression function of SHA-1 over whole blocks of 64 bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Utils/CpuFeatures.h"

namespace Tovra::Utils::Sha1 {

using Compress = void (*)(uint32_t* state, const uint8_t* data, size_t blocks);

void compressPortable(uint32_t* state, const uint8_t* data, size_t blocks);
#if FUNDO_X86_64
// Needs kSha.
void compressSha(uint32_t* state, const uint8_t* data, size_t blocks);
#endif

// The faster one on this processor.
Compress kernel();

}  // namespace Tovra::Utils::Sha1
