// What an AES kernel does, and which one does it here.
//
// A kernel runs a mode over whole blocks and keeps the chain that continues it; the byte-wise ends of the
// stream modes lie above (Modes.cpp). All kernels are made from one description of the modes (KernelModes.h).
#pragma once

#include <cstddef>
#include <cstdint>

#include "Utils/Aes.h"
#include "Utils/CpuFeatures.h"

namespace Tovra::Utils::AES {

inline constexpr std::size_t kBlockSize = 16;

// Round keys of the direction that the operation's cipher runs in, in the byte order of FIPS 197.
struct Schedule {
    explicit Schedule(const aes_context& context)
        : keys(reinterpret_cast<const std::uint8_t*>(context.rk)), rounds(context.nr) {}

    const std::uint8_t* key(int round) const { return keys + kBlockSize * static_cast<std::size_t>(round); }

    const std::uint8_t* keys;
    int rounds;
};

enum Operation : std::size_t {
    kEcbEncrypt,
    kEcbDecrypt,
    kCbcEncrypt,
    kCbcDecrypt,
    kCfb128Encrypt,
    kCfb128Decrypt,
    kCfb8Encrypt,
    kCfb8Decrypt,
    kCtr,
    kOperations
};

// count is in blocks, in CFB8 in bytes. chain is 16 bytes: the last cipher text or, in kCtr, the counter; ECB
// ignores it. A counter is left with its low 64 bits advanced; they do not wrap before the last of the count,
// and a carry is the caller's.
using Run = void (*)(const Schedule& schedule, const std::uint8_t* in, std::uint8_t* out, std::size_t count,
                     std::uint8_t* chain);

struct Kernel {
    const char* name;
    Run run[kOperations];
};

extern const Kernel kPortableKernel;
#if FUNDO_X86_64
extern const Kernel kAesNiKernel;
extern const Kernel kVaes256Kernel;
extern const Kernel kVaes512Kernel;
#endif

// The fastest kernel for that many blocks that do not wait for one another; 1 for the serial modes.
const Kernel& kernelFor(std::size_t blocks);

}  // namespace Tovra::Utils::AES
